// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every format by every method against the plain model, wherever the pixels lie.
#include <gtest/gtest.h>

#include <optional>

#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/resized_image.h"
#include "simd/vector_targets.h"

namespace ox::test::cv_backend_simd_resize_sweep {

namespace {

struct Whole {
    Size size;
    Rect region;  // empty where the whole frame is meant

    Size part() const { return region.empty() ? size : Size{region.width, region.height}; }
};

std::string describe(Whole const& whole) {
    return std::to_string(whole.size.width) + "x" + std::to_string(whole.size.height) + " at " +
           std::to_string(whole.region.x) + ", " + std::to_string(whole.region.y) + ", " +
           std::to_string(whole.part().width) + "x" + std::to_string(whole.part().height);
}

model::Image partOf(model::Image const& image, Rect region) {
    return region.empty() ? image
                          : model::crop(image, region.x, region.y, region.width, region.height);
}

// One backend for all calls.
class CvBackendSimdResizeSweep : public testing::Test {
  protected:
    // By both sets of classes, from random to random memory.
    void check(FrameFormat format, int method, Whole const& from, Whole const& to) {
        if (HasFailure()) {
            return;
        }
        auto const number = static_cast<int>(format);
        model::Image const picture =
            drawSamples(_random, {number, from.size.width, from.size.height});
        model::Image const before = drawImage(_random, {number, to.size.width, to.size.height});
        PlacedImage const src(picture, drawPlacesFor(format, _random));
        for (Kernels const kernels : {Kernels::Vector, Kernels::Scalar}) {
            model::Image expected = before;
            model::paste(resizedImage(partOf(picture, from.region), to.part(), method, kernels),
                         expected, to.region.x, to.region.y);
            PlacedImage dst(before, drawPlacesFor(format, _random));
            run(method, kernels, src, from.region, dst, to.region);
            EXPECT_TRUE(dst.holds(expected))
                << toString(format) << ", " << describe(from) << " to " << describe(to)
                << ", method " << method << (kernels == Kernels::Scalar ? ", scalar" : "");
            EXPECT_TRUE(src.holds(picture)) << "the source changed";
        }
    }

    // Calls visit(format, method) for all pairs that are served.
    template <class Visit>
    void forEachPair(Visit visit) {
        for (FrameFormat const format : resizedFormats()) {
            for (int const method : {0, 1, 2}) {
                if (method != 2 || !hasFloats(format)) {
                    visit(format, method);
                }
            }
        }
    }

    Size drawSize(int width, int height) {
        return {_random.between(1, width), _random.between(1, height)};
    }

    Whole drawWhole(int width, int height) {
        Whole whole{drawSize(width, height), {}};
        if (oneIn(_random, 2)) {
            whole.region = drawRegion(_random, whole.size);
        }
        return whole;
    }

    Random _random;

  private:
    void run(int method, Kernels kernels, PlacedImage const& src, Rect src_roi, PlacedImage& dst,
             Rect dst_roi) {
        std::optional<VectorRoutinesOff> off;
        if (kernels == Kernels::Scalar) {
            off.emplace();
        }
        _backend.setIntProperty(PropertyResizeMethod, method);
        _backend.resize(src.frame(), dst.frame(), src_roi, dst_roi);
    }

    CvBackendSimd _backend;
};

TEST_F(CvBackendSimdResizeSweep, SmallSizes) {
    forEachPair([&](FrameFormat format, int method) {
        for (int i = 0; i < draws(150); ++i) {
            check(format, method, drawWhole(5, 5), drawWhole(5, 5));
        }
    });
}

TEST_F(CvBackendSimdResizeSweep, Up) {
    forEachPair([&](FrameFormat format, int method) {
        for (int i = 0; i < draws(50); ++i) {
            check(format, method, {drawSize(20, 6), {}}, {drawSize(70, 12), {}});
        }
    });
}

TEST_F(CvBackendSimdResizeSweep, Down) {
    forEachPair([&](FrameFormat format, int method) {
        for (int i = 0; i < draws(50); ++i) {
            check(format, method, {drawSize(90, 20), {}}, {drawSize(30, 6), {}});
        }
    });
}

// Small frames of wide destinations: planes with a side of 1 come to the vector classes.
TEST_F(CvBackendSimdResizeSweep, NarrowToWide) {
    forEachPair([&](FrameFormat format, int method) {
        for (Size const size : {Size{2, 2}, Size{2, 5}, Size{5, 2}, Size{1, 3}, Size{3, 1}}) {
            check(format, method, {size, {}}, {{_random.between(30, 40), 5}, {}});
        }
    });
}

TEST_F(CvBackendSimdResizeSweep, Regions) {
    forEachPair([&](FrameFormat format, int method) {
        for (int i = 0; i < draws(50); ++i) {
            Size const src = drawSize(40, 12);
            Size const dst = drawSize(60, 12);
            check(format, method, {src, drawRegion(_random, src)}, {dst, drawRegion(_random, dst)});
        }
    });
}

// The vector class of bytes starts at 16 columns, and works in blocks.
TEST_F(CvBackendSimdResizeSweep, WidthsAroundWholeBlocks) {
    for (FrameFormat const format :
         {FRAME_GRAY8, FRAME_BGR24, FRAME_NV12, FRAME_C4_8U, FRAME_BGR_32F}) {
        for (int const middle : {16, 32, 64}) {
            for (int width = middle - 2; width <= middle + 2; ++width) {
                check(format, 1, {drawSize(80, 5), {}}, {{width, 4}, {}});
            }
        }
    }
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_resize_sweep
