// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Laws of geometry: what moves or repeats pixels doesn't change them.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "laws/law.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {
namespace {

template <class Operation>
void byEachBackend(Operation operation) {
    CvBackendBase base;
    operation(base);
    CvBackendSimd simd;
    operation(simd);
}

TEST(LawOfScaling, TheSameSizeIsACopy) {
    Law law(21);
    law.holds(800, [&] {
        FrameFormat const format = drawFormat(law.random);
        Size const size = drawSize(law.random);
        ResizeMethod const method = drawMethod(law.random);
        if (format == FRAME_C1_32U && method == ResizeBilinear) {
            return;  // taken for floats by vectors, on purpose, and some are NaN
        }
        law.tell(format, size, method);
        TestFrame const src = drawPicture(format, size, law.random);
        Outcome const copy = outcomeOf(format, size, [&](Frame& dst) { src.frame().copyTo(dst); });
        byEachBackend([&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            Outcome const scaled_picture = outcomeOf(format, size, [&](Frame& dst) {
                backend.resize(src.frame(), dst, emptyRoi(), emptyRoi());
            });
            if (scaled_picture.served) {
                law.expectSame(copy, scaled_picture);
            }
        });
    });
}

// By whole factors and back by nearest. Sides are even, as half-size chroma has factors of its own
// elsewhere. YUYV and UYVY are taken for formats of two, three and four channels, on purpose.
TEST(LawOfScaling, NearestThereAndBackIsACopy) {
    Law law(22);
    law.holds(800, [&] {
        FrameFormat const format = drawFormat(law.random);
        if (format == FRAME_YUYV || format == FRAME_UYVY) {
            return;
        }
        Size const size{2 * law.random.between(1, 20), 2 * law.random.between(1, 20)};
        Size const large{size.width * law.random.between(1, 5),
                         size.height * law.random.between(1, 5)};
        law.tell(format, size, large);
        TestFrame const src = drawPicture(format, size, law.random);
        Outcome const copy = outcomeOf(format, size, [&](Frame& dst) { src.frame().copyTo(dst); });
        byEachBackend([&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
            Outcome const back = outcomeOf(format, size, [&](Frame& dst) {
                TestFrame const between(format, large);
                Frame enlarged = between.frame();
                backend.resize(src.frame(), enlarged, emptyRoi(), emptyRoi());
                backend.resize(enlarged, dst, emptyRoi(), emptyRoi());
            });
            if (back.served) {
                law.expectSame(copy, back);
            }
        });
    });
}

TEST(LawOfScaling, FlatPicturesStayFlat) {
    Law law(23);
    law.holds(800, [&] {
        FrameFormat const format = drawByteFormat(law.random);
        Size const size = drawSize(law.random);
        Size const scaled_size = drawSize(law.random);
        auto const value = law.random.byte();
        auto const method = static_cast<int>(law.random.between(0, ResizeBilinear));
        law.tell(format, size, scaled_size, value);
        TestFrame const src(format, size);
        fill(src.frame(), value);
        Outcome const flat = outcomeOf(format, scaled_size, [&](Frame& dst) { fill(dst, value); });
        byEachBackend([&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, method);
            Outcome const scaled_picture = outcomeOf(format, scaled_size, [&](Frame& dst) {
                backend.resize(src.frame(), dst, emptyRoi(), emptyRoi());
            });
            if (scaled_picture.served) {
                law.expectSame(flat, scaled_picture);
            }
        });
    });
}

// On purpose: weights of area are cut off to whole numbers. Of white, columns of 10 x 1/10 are 253
// by vectors.
TEST(LawOfScaling, ExceptByArea) {
    TestFrame const src(FRAME_GRAY8, {100, 100});
    fill(src.frame(), 255);
    TestFrame dst(FRAME_GRAY8, {10, 10});
    CvBackendSimd backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeArea);
    backend.resize(src.frame(), dst.frame(), emptyRoi(), emptyRoi());
    EXPECT_EQ(bytesOf(dst.frame(), 0, 5)[5], 253);
}

TEST(LawOfWarps, AShiftByWholePixelsMovesThem) {
    Law law(24);
    law.holds(800, [&] {
        FrameFormat const format = drawByteFormat(law.random);
        Size const size = drawSize(law.random);
        int const right = law.random.between(-size.width, size.width);
        int const down = law.random.between(-size.height, size.height);
        int const method = law.random.between(0, ResizeBilinear);
        law.tell(format, size, right, down, method);
        TestFrame const src = drawPicture(format, size, law.random);
        auto const pixel = static_cast<int>(src.layout().plane[0].rowBytes) / size.width;
        Outcome const moved = outcomeOf(format, size, [&](Frame& dst) {
            fill(dst, 0);
            for (int y = std::max(0, down); y < std::min(size.height, size.height + down); ++y) {
                for (int x = std::max(0, right); x < std::min(size.width, size.width + right);
                     ++x) {
                    std::copy_n(rowOf(src.frame(), 0, y - down) + (x - right) * pixel, pixel,
                                rowOf(dst, 0, y) + x * pixel);
                }
            }
        });
        float const matrix[2][3]{{1, 0, static_cast<float>(right)},
                                 {0, 1, static_cast<float>(down)}};
        law.expectSame(moved, outcomeOf(format, size, [&](Frame& dst) {
                           CvBackendSimd backend;
                           backend.setIntProperty(PropertyWarpMethod, method);
                           backend.warpAffine(src.frame(), dst, matrix, emptyRoi(), false);
                       }));
    });
}

TEST(LawOfHalves, TwiceIsOnce) {
    Random random(25);
    for (int i = 0; i < drawCount; ++i) {
        std::vector<float> floats(static_cast<std::size_t>(random.between(1, 70)));
        for (float& value : floats) {
            value = random.real(-70000, 70000);
        }
        std::vector<unsigned short> once(floats.size());
        std::vector<unsigned short> twice(floats.size());
        convertFp32ToFp16(floats.data(), floats.size(), once.data());
        convertFp16ToFp32(once.data(), once.size(), floats.data());
        convertFp32ToFp16(floats.data(), floats.size(), twice.data());
        ASSERT_EQ(once, twice) << "draw " << i;
    }
}

}  // namespace
}  // namespace ox::test
