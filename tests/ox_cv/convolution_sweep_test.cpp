// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Scaling by filters, and its two passes, against the plain model, byte for byte.
#include <algorithm>
#include <cmath>

#include "ox_cv/convolution_sweep.h"

namespace ox::test {
namespace {

// Light in the upper left quarter alone, or everywhere else.
model::Image partlyLit(bool light_first, Random& random) {
    model::Image image = model::makeImage(model::Nv12, 640, 640, 0);
    for (model::Plane& plane : image.planes) {
        for (std::size_t i = 0; i < plane.bytes.size(); ++i) {
            bool const first = i % plane.row_bytes < plane.row_bytes / 2 &&
                               i / plane.row_bytes < static_cast<std::size_t>(plane.rows) / 2;
            if (first == light_first) {
                plane.bytes[i] = random.byte() | 0xF0;
            }
        }
    }
    return image;
}

TEST_P(ConvolutionSweep, SmallSizes) {
    for (FrameFormat const format : allFormats()) {
        for (int size = 0; size < 81; ++size) {
            for (int i = 0; i < draws(6); ++i) {
                runAlone(drawCase(format, {1 + size % 9, 1 + size / 9}));
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
    EXPECT_GT(_drained, draws(1000));
}

TEST_P(ConvolutionSweep, LargerSizes) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(40); ++i) {
            runAlone(drawCase(format, drawSize(10, 80)));
            if (HasFatalFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(_drained, draws(300));
}

// Long rows and tall columns: all that a vector loop has of blocks and rests.
TEST_P(ConvolutionSweep, LongSides) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(24); ++i) {
            int const side = _random.between(81, 700);
            int const other = _random.between(10, 40);
            runAlone(drawCase(format, oneIn(_random, 3) ? Size{other, side} : Size{side, other}));
            if (HasFatalFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(_drained, draws(150));
}

// One object on its way through frames that mostly differ in a thing or two: kept weights, stale
// ones and refusals in between.
TEST_P(ConvolutionSweep, Reuse) {
    for (int i = 0; i < 4; ++i) {
        makeFilter();
    }
    std::size_t chosen = 0;
    ConvolutionCase c = drawCase(FRAME_NV12, {20, 20});
    for (int i = 0; i < draws(6000); ++i) {
        if (oneIn(_random, 3)) {
            chosen = _random.next() % _filters.size();
        }
        if (oneIn(_random, 20)) {
            auto const& shapes = oneIn(_random, 4) ? refusedFilters() : usualFilters();
            _filters[chosen]->shape = shapes[_random.next() % shapes.size()];
        }
        c = changed(c);
        run(*_filters[chosen], c);
        if (HasFatalFailure()) {
            return;
        }
    }
    EXPECT_GT(_drained, draws(1000));
}

TEST_P(ConvolutionSweep, RefusedFilters) {
    for (FilterShape const& shape : refusedFilters()) {
        for (int i = 0; i < draws(20); ++i) {
            FilterPair filter(shape);
            run(filter, drawCase(FRAME_I420, drawSize(1, 120)));
            if (HasFatalFailure()) {
                return;
            }
            // A refusal leaves the object fit for the next use.
            run(makeFilter(), drawCase(FRAME_NV12, drawSize(20, 40)));
            if (HasFatalFailure()) {
                return;
            }
        }
    }
    EXPECT_GT(_drained, draws(50));
}

// The widest rows and the tallest columns, and the strongest reduction.
TEST_P(ConvolutionSweep, Limits) {
    Size const sources[] = {{8192, 3}, {8193, 3}, {3, 8192}, {3, 8193}, {1000, 34}, {65, 64}};
    for (Size const& src : sources) {
        for (int const factor : {1, 16, 17, 32, 33}) {
            for (int const precision : {8, 16}) {
                FilterPair filter(usualFilters()[0]);
                ConvolutionCase c{
                    {oneIn(_random, 2) ? model::Gray8 : model::Nv12, src.width, src.height},
                    {src, precision},
                    SourceKind::Copier};
                c.target.size.width = std::max(1, src.width / factor);
                c.target.size.height = std::max(1, src.height / factor);
                run(filter, c);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
    EXPECT_GT(_drained, 10);
}

// Weights far beyond what they sum up to: light on one part of a picture and none elsewhere drives
// sums beyond 32 bits, in which they wrap. And large weights that are all negative.
TEST_P(ConvolutionSweep, LargeWeights) {
    FilterPair step({"step", [](float) { return 600.0F; },
                     [](float x, float) { return x < 0.0F ? 1.0F : -0.9982F; }});
    FilterPair hole({"hole", [](float) { return 600.0F; },
                     [](float x, float) { return std::fabs(x) < 1.0F ? -30.0F : 1.0F; }});
    for (bool const light_first : {true, false}) {
        model::Image const image = partlyLit(light_first, _random);
        BridgedFrame const frame(image);
        for (FilterPair* const filter : {&step, &hole}) {
            RowCopier library;
            library.reuse(frame.frame());
            model::Copy modelled;
            modelled.arm(image);
            runOver(modelled, library, *filter, {{40, 40}, 16});
            ASSERT_FALSE(HasFatalFailure());
        }
    }
}

// Sources without planes, with sizes and precisions that would be refused as well.
TEST_P(ConvolutionSweep, SourcesWithoutPlanes) {
    struct Nothing : model::Stream {
        model::Geometry geometry() const override { return {}; }
        void read(int, model::Row const&) override {}
    };
    FilterPair filter(usualFilters().front());
    for (Size const& size : {Size{1, 1}, Size{0, 1}, Size{1, -1}}) {
        for (int const precision : {8, 12, 16}) {
            Nothing modelled;
            RowCopier library;
            runOver(modelled, library, filter, {size, precision});
            if (GetParam().takes_frames) {
                run(filter, {{0, 1, 1}, {size, precision}, SourceKind::Frame});
            }
            ASSERT_FALSE(HasFatalFailure());
        }
    }
    EXPECT_EQ(_drained, 0);
}

TEST_P(ConvolutionSweep, NewObjects) {
    _subject = GetParam().make();
    expectUnarmed();
    model::Outcome const wanted = model::attempt([&] { _subject->modelled().geometry(); });
    model::Outcome const got = outcomeOf([&] { _subject->library().layout(); });
    EXPECT_TRUE(agree(got, wanted));
}

INSTANTIATE_TEST_SUITE_P(Classes, ConvolutionSweep, testing::ValuesIn(convolutionClasses()),
                         [](auto const& chosen) { return std::string(chosen.param.name); });

}  // namespace
}  // namespace ox::test
