// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every pair of formats, those that don't exist included, against the plain model.
#include <gtest/gtest.h>

#include "ox_cv/upstream.h"

namespace ox::test::conversion_sweep {
namespace {

constexpr std::uint8_t untouched = 0x3C;

// Runs conversions on one converter, as a caller with many frames would. It is made anew now and
// then, since it remembers the last YUV destination and its window the rows that it took.
class ConversionSweep : public testing::Test {
  protected:
    void run(model::Geometry src, int to, SourceKind kind) {
        Upstream upstream(src, kind, _random);
        model::Image expected = model::makeImage(to, src.width, src.height, untouched);
        BridgedFrame actual(expected, drawPlacement(_random));
        model::Outcome const wanted =
            model::drain([&] { _model->arm(upstream.armModel(), to); }, *_model, expected);
        model::Outcome const got = outcomeOf([&] {
            auto const format = static_cast<FrameFormat>(to);
            if (kind == SourceKind::Frame) {
                _library->reuse(upstream.frame(), format);
            } else {
                _library->reuse(upstream.armLibrary(), format);
            }
            produceFrame(*_library, actual.frame());
        });
        ASSERT_TRUE(agree(got, wanted)) << tell(src, to, kind);
        ASSERT_TRUE(actual.holds(expected)) << tell(src, to, kind);
        // After a refusal in mid-stream only a fresh object is of any use.
        if ((!got.ok && kind != SourceKind::Frame) || oneIn(_random, 4)) {
            renew();
        }
    }

    // Now and then behind a conversion to some YUV format, which may leave its traces.
    void runAfterAnother(model::Geometry src, int to) {
        if (oneIn(_random, 3)) {
            int const yuv = _random.between(model::I420, model::Yuv444Planar);
            run({model::Bgr24, _random.between(1, 9), _random.between(1, 9)}, yuv, drawKind());
        }
        if (!HasFailure()) {
            run(src, to, drawKind());
        }
    }

    SourceKind drawKind() {
        return oneIn(_random, 2) ? SourceKind::Frame
                                 : static_cast<SourceKind>(_random.between(1, 3));
    }

    static std::vector<int> destinations() {
        std::vector<int> formats;
        for (int format = 0; format <= 27; ++format) {
            formats.push_back(format);
        }
        formats.push_back(255);
        return formats;
    }

    Random _random{11};

  private:
    static std::string tell(model::Geometry src, int to, SourceKind kind) {
        return describe(src) + " to format " + std::to_string(to) + ", from a " + describe(kind);
    }

    void renew() {
        _library = std::make_unique<FormatConverter>();
        _model = std::make_unique<model::Converter>();
    }

    std::unique_ptr<FormatConverter> _library = std::make_unique<FormatConverter>();
    std::unique_ptr<model::Converter> _model = std::make_unique<model::Converter>();
};

TEST_F(ConversionSweep, SmallSizes) {
    for (FrameFormat const format : allFormats()) {
        auto const from = static_cast<int>(format);
        for (int const to : destinations()) {
            for (int i = 0; i < 81; i += emulated() ? 7 : 1) {
                runAfterAnother({from, 1 + i % 9, 1 + i / 9}, to);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_F(ConversionSweep, LargerSizes) {
    for (FrameFormat const format : allFormats()) {
        auto const from = static_cast<int>(format);
        for (int const to : destinations()) {
            for (int i = 0; i < draws(10); ++i) {
                runAfterAnother({from, _random.between(10, 64), _random.between(10, 64)}, to);
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

// Rows that vector code takes in several pieces, with and without a rest.
TEST_F(ConversionSweep, WideRows) {
    for (FrameFormat const format : allFormats()) {
        auto const from = static_cast<int>(format);
        for (int const to : destinations()) {
            int const width = emulated() ? 1027 : _random.between(1000, 2200);
            run({from, width, _random.between(2, 4)}, to, SourceKind::Frame);
            if (HasFailure()) {
                return;
            }
        }
    }
}

// All values of one channel against some of the others, so that each clamp and shift is met.
TEST_F(ConversionSweep, AllValues) {
    for (int const to : {model::Gray8, model::I420, model::Yuv444, model::Bgr32f}) {
        run({model::Bgr24, 256, emulated() ? 2 : 64}, to, SourceKind::Frame);
    }
    for (int const from : {model::I420, model::Nv21, model::Yuyv, model::Yuv444}) {
        run({from, 256, emulated() ? 2 : 64}, model::Bgr24, SourceKind::Frame);
    }
}

}  // namespace
}  // namespace ox::test::conversion_sweep
