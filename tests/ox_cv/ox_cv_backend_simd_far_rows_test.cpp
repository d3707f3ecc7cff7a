// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Rows that lie further apart than 32 bits tell: nothing goes the ways that take strides as such.
#include <gtest/gtest.h>
#include <cstring>

#include "model/vector_colour.h"
#include "ox_cv/backend_simd_frames.h"
#include "support/sparse_memory.h"

namespace ox::test {

namespace {

// Two rows, three gibibytes from one to the next. Memory is taken for what is touched only.
class CvBackendSimdFarRows : public testing::Test {
  protected:
    static constexpr std::int64_t stride = std::int64_t{3} << 30;
    static constexpr std::size_t bytes = std::size_t{stride} + 4096;
    static constexpr int apart = 1024;  // bytes from plane to plane

    // A frame with an image's pixels.
    Frame frameOf(model::Image const& image) const {
        FrameLayout layout(formatOf(image.geometry()), sizeOf(image.geometry()), 1);
        unsigned char* addresses[4]{};
        for (int p = 0; p < layout.planeCount; ++p) {
            layout.plane[p].stride = stride;
            addresses[p] = _memory + p * apart;
        }
        Frame frame = Frame::wrap(layout, addresses);
        PlacedImage const placed(image);
        placed.frame().copyTo(frame);
        return frame;
    }

    Random random;
    CvBackendSimd backend;

  private:
    SparseMemory _sparse{bytes};
    unsigned char* const _memory = _sparse.data();
};

TEST_F(CvBackendSimdFarRows, Nv12ToBgr) {
    model::Image const picture = drawImage(random, {model::Nv12, 20, 2});
    model::Image const expected = model::vectorColour(picture, model::Bgr24);
    PlacedImage dst(expected);
    fill(dst.frame(), 77);
    backend.colorCvt(frameOf(picture), dst.frame(), {});
    EXPECT_TRUE(dst.holds(expected));
    Frame far = frameOf(model::makeImage(model::Bgr24, 20, 2, 77));
    backend.colorCvt(PlacedImage(picture).frame(), far, {});
    EXPECT_TRUE(sameImage(imageOf(far), expected));
}

TEST_F(CvBackendSimdFarRows, BytesToFloats) {
    model::Image const picture = drawImage(random, {model::Bgr24, 20, 2});
    Frame far = frameOf(model::makeImage(model::Bgr32f, 20, 2, 77));
    backend.colorCvt(PlacedImage(picture).frame(), far, {});
    EXPECT_TRUE(sameImage(imageOf(far), model::vectorColour(picture, model::Bgr32f)));
}

TEST_F(CvBackendSimdFarRows, Arithmetic) {
    Frame far = frameOf(model::makeImage(model::Gray32f, 20, 2, 0));
    backend.add(far, 3.0F, {});
    backend.mul(far, 0.5F, {});
    for (int y = 0; y < 2; ++y) {
        float last = 0;
        std::memcpy(&last, rowOf(far, 0, y) + 19 * sizeof last, sizeof last);
        EXPECT_EQ(last, 1.5F);
    }
}

}  // namespace

}  // namespace ox::test
