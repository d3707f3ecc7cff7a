// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every conversion of the vector backend against the plain model, wherever the pixels lie.
#include <gtest/gtest.h>

#include "model/vector_colour.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"

namespace ox::test {

namespace {

struct Pair {
    int src;
    int dst;
};

std::vector<Pair> convertedPairs() {
    std::vector<Pair> pairs;
    std::transform(colourRoutes.begin(), colourRoutes.end(), std::back_inserter(pairs),
                   [](RoutedPair const& each) {
                       return Pair{static_cast<int>(each.src), static_cast<int>(each.dst)};
                   });
    return pairs;
}

bool takesSize(int src, int width, int height) {
    return !impl::needsEvenSides(static_cast<FrameFormat>(src)) ||
           (width % 2 == 0 && height % 2 == 0);
}

bool goesDirectly(Frame const& src, Pair pair, Rect roi) {
    FrameLayout const& layout = src.layout();
    return pair.src == model::Nv12 && pair.dst == model::Bgr24 && roi.empty() &&
           layout.plane[0].stride == layout.plane[1].stride;
}

// One backend for all calls, so that each meets the scratch frame of the one before.
class CvBackendSimdColourSweep : public testing::Test {
  protected:
    // Converts the region of a random picture, from random to random memory.
    void check(Pair pair, Size whole, Rect roi) {
        model::Image const picture = drawPicture(_random, {pair.src, whole.width, whole.height});
        PlacedImage const src(picture, drawPlacements(_random));
        model::Image const part =
            roi.empty() ? picture : model::crop(picture, roi.x, roi.y, roi.width, roi.height);
        model::Image const before = drawImage(_random, {pair.dst, part.width, part.height});
        model::Image expected = before;
        if (goesDirectly(src.frame(), pair, roi)) {
            model::vectorColourDirectly(part, expected);
        } else {
            expected = model::vectorColour(part, pair.dst);
        }
        PlacedImage dst(before, drawPlacements(_random));
        _backend.colorCvt(src.frame(), dst.frame(), roi);
        EXPECT_TRUE(dst.holds(expected)) << tell(src.frame(), dst.frame(), roi);
        EXPECT_TRUE(src.holds(picture)) << "the source changed";
    }

    void checkWhole(Pair pair, int width, int height) {
        if (takesSize(pair.src, width, height) && !HasFailure()) {
            check(pair, {width, height}, {});
        }
    }

    // A rectangle of any origin; only its own sides have to be even.
    void checkRegion(Pair pair, int width, int height) {
        if (takesSize(pair.src, width, height) && !HasFailure()) {
            int const x = _random.between(0, 5);
            int const y = _random.between(0, 3);
            Size const whole{x + width + _random.between(0, 3), y + height + _random.between(0, 2)};
            check(pair, whole, {x, y, width, height});
        }
    }

    Random& random() { return _random; }

  private:
    static std::string tell(Frame const& src, Frame const& dst, Rect roi) {
        std::string text = describe(src.format(), src.size()) + " to " +
                           describe(dst.format(), dst.size()) + ", region at " +
                           std::to_string(roi.x) + ", " + std::to_string(roi.y);
        for (Frame const* const frame : {&src, &dst}) {
            for (int p = 0; p < frame->layout().planeCount; ++p) {
                text += ", stride " + std::to_string(frame->layout().plane[p].stride);
            }
        }
        return text;
    }

    Random _random;
    CvBackendSimd _backend;
};

TEST_F(CvBackendSimdColourSweep, SmallSizes) {
    for (Pair const pair : convertedPairs()) {
        for (int height = 1; height <= 9; height += emulated() ? 3 : 1) {
            for (int width = 1; width <= 9; ++width) {
                checkWhole(pair, width, height);
                checkRegion(pair, width, height);
            }
        }
    }
}

// Blocks are 8, 16 or 32 pixels wide, and begin again at the row's end.
TEST_F(CvBackendSimdColourSweep, WidthsAroundWholeBlocks) {
    for (Pair const pair : convertedPairs()) {
        for (int const middle : {16, 32, 48, 64, 96, 128}) {
            for (int width = middle - 2; width <= middle + 2; ++width) {
                checkWhole(pair, width, random().between(1, 5));
                checkWhole(pair, width, 2);
                checkRegion(pair, width, random().between(1, 5));
                checkRegion(pair, width, 2);
            }
        }
    }
}

TEST_F(CvBackendSimdColourSweep, AnySizes) {
    for (Pair const pair : convertedPairs()) {
        for (int i = 0; i < draws(20); ++i) {
            int const width = random().between(1, 300);
            int const height = random().between(1, 20);
            bool const even = oneIn(random(), 2);
            checkWhole(pair, even ? width * 2 : width, even ? height * 2 : height);
            checkRegion(pair, even ? width * 2 : width, even ? height * 2 : height);
        }
    }
}

// The two formats of 4:2:0 that odd pictures can become.
TEST_F(CvBackendSimdColourSweep, OddSidesToHalfChroma) {
    for (int const dst : {int{model::I420}, int{model::Nv12}}) {
        for (int i = 0; i < draws(200); ++i) {
            int const odd = random().between(0, 70) * 2 + 1;
            int const any = random().between(1, 12);
            checkWhole({model::Bgr24, dst}, odd, any);
            checkWhole({model::Bgr24, dst}, any, odd);
            checkRegion({model::Bgr24, dst}, odd, any);
            checkRegion({model::Bgr24, dst}, any, odd);
        }
    }
}

// Strides that agree go directly, others don't, and a region never does.
TEST_F(CvBackendSimdColourSweep, Nv12ToBgr) {
    for (int i = 0; i < draws(300); ++i) {
        int const width = random().between(1, 45) * 2;
        checkWhole({model::Nv12, model::Bgr24}, width, random().between(1, 4) * 2);
        checkRegion({model::Nv12, model::Bgr24}, width, random().between(1, 4) * 2);
    }
}

TEST_F(CvBackendSimdColourSweep, EqualFormats) {
    for (FrameFormat const format : allFormats()) {
        int const number = static_cast<int>(format);
        for (int i = 0; i < draws(30); ++i) {
            Size const whole{random().between(1, 20), random().between(1, 7)};
            check({number, number}, whole, {});
            Rect roi{random().between(0, whole.width - 1), random().between(0, whole.height - 1), 0,
                     0};
            roi.width = random().between(1, whole.width - roi.x);
            roi.height = random().between(1, whole.height - roi.y);
            check({number, number}, whole, roi);
        }
    }
}

}  // namespace

}  // namespace ox::test
