// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every scaler class against the plain model, byte for byte.
#include <gtest/gtest.h>

#include "ox_cv/scaler_subjects.h"
#include "ox_cv/upstream.h"
#include "rows/rows_routines.h"
#include "support/test_target.h"

namespace ox::test {
namespace {

constexpr std::uint8_t untouched = 0x3C;

struct Case {
    model::Geometry src;
    Size dst;
    int variant;
    SourceKind kind;
};

struct Side {
    int src;
    int dst;
};

struct Ratio {
    Side width;
    Side height;
};

std::string tell(Case const& c) {
    return describe(c.src) + " to " + std::to_string(c.dst.width) + "x" +
           std::to_string(c.dst.height) + ", variant " + std::to_string(c.variant) + ", from a " +
           describe(c.kind);
}

// Those of every instruction set, and none.
std::vector<rows::Routines> rowRoutines() {
    std::vector<rows::Routines> found{rows::plainRoutines()};
    for (char const* const target : testTargets()) {
        UsedTarget const used(target);
        found.push_back(rows::findRoutines());
    }
    return found;
}

// Takes routines while it lives.
class UsedRoutines {
  public:
    explicit UsedRoutines(rows::Routines const& routines) { rows::useRoutines(routines); }
    UsedRoutines(UsedRoutines const&) = delete;
    UsedRoutines& operator=(UsedRoutines const&) = delete;
    ~UsedRoutines() { rows::useRoutines(rows::findRoutines()); }
};

// Drives one class through its cases. The objects are kept from case to case, as a caller with many
// frames would, and now and then made anew.
class ScalerSweep : public testing::TestWithParam<ScalerClass> {
  protected:
    void run(Case c) {
        if (!_subject || oneIn(_random, 4)) {
            _subject = GetParam().make();
        }
        Upstream upstream(c.src, c.kind, _random);
        model::Image expected =
            model::makeImage(c.src.format, c.dst.width, c.dst.height, untouched);
        BridgedFrame actual(expected, drawPlacement(_random));

        model::Outcome const wanted =
            model::drain([&] { _subject->armModel(upstream.armModel(), c.dst, c.variant); },
                         _subject->modelled(), expected);
        model::Outcome const got = outcomeOf([&] {
            if (c.kind == SourceKind::Frame) {
                _subject->armLibrary(upstream.frame(), c.dst, c.variant);
            } else {
                _subject->armLibrary(upstream.armLibrary(), c.dst, c.variant);
            }
            produceFrame(_subject->library(), actual.frame());
        });
        ASSERT_TRUE(agree(got, wanted)) << tell(c);
        ASSERT_TRUE(actual.holds(expected)) << tell(c);
        // After a refusal in mid-stream only a fresh object is of any use.
        if (!got.ok && c.kind != SourceKind::Frame) {
            _subject.reset();
        }
    }

    // Sometimes again at once, with what the first use left behind.
    void runTwice(Case c) {
        run(c);
        if (!HasFailure() && oneIn(_random, 3)) {
            c.variant = _random.between(0, 2);
            run(c);
        }
    }

    Case drawCase(FrameFormat format, Size src, int largest) {
        Case c{{static_cast<int>(format), src.width, src.height},
               src,
               _random.between(0, 2),
               SourceKind::Frame};
        auto const other = [&](int side) {
            bool const down = oneIn(_random, 2) || !GetParam().takes_producers;
            return oneIn(_random, 8) ? side : _random.between(1, down ? side : largest);
        };
        if (GetParam().changes_width) {
            c.dst.width = other(src.width);
        }
        if (GetParam().changes_height) {
            c.dst.height = other(src.height);
        }
        if (GetParam().takes_producers) {
            SourceKind const kinds[] = {SourceKind::Frame,  SourceKind::Frame,
                                        SourceKind::Copier, SourceKind::Copier,
                                        SourceKind::Scaler, SourceKind::Converter};
            c.kind = kinds[_random.between(0, 5)];
        }
        return c;
    }

    // Sides that the class doesn't change keep their source's.
    static Case caseOf(FrameFormat format, Ratio const& ratio, int variant) {
        auto const& [width, height] = ratio;
        return {{static_cast<int>(format), width.src, height.src},
                {GetParam().changes_width ? width.dst : width.src,
                 GetParam().changes_height ? height.dst : height.src},
                variant,
                SourceKind::Frame};
    }

    // What is armed may go on with the routines that it has chosen.
    void renew() { _subject.reset(); }

    Random _random{7};

  private:
    std::unique_ptr<Subject> _subject;
};

TEST_P(ScalerSweep, SmallSizes) {
    for (FrameFormat const format : allFormats()) {
        for (int size = 0; size < 81; ++size) {
            for (int i = 0; i < draws(12); ++i) {
                runTwice(drawCase(format, {1 + size % 9, 1 + size / 9}, 12));
                if (HasFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_P(ScalerSweep, LargerSizes) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(30); ++i) {
            runTwice(drawCase(format, {_random.between(10, 64), _random.between(10, 64)}, 80));
            if (HasFailure()) {
                return;
            }
        }
    }
}

// Rows of several registers.
TEST_P(ScalerSweep, WideRows) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(6); ++i) {
            runTwice(drawCase(format, {_random.between(100, 400), _random.between(2, 12)}, 500));
            if (HasFailure()) {
                return;
            }
        }
    }
}

// Rows of several registers by every instruction set and without any, enlarged and reduced by plain
// ratios, where weights recur or vanish, and by odd ones.
TEST_P(ScalerSweep, RatiosOfEveryTarget) {
    constexpr Ratio ratios[]{{{130, 260}, {4, 8}},  {{130, 195}, {4, 6}}, {{131, 393}, {5, 15}},
                             {{100, 400}, {3, 12}}, {{97, 341}, {7, 25}}, {{129, 257}, {9, 17}},
                             {{96, 128}, {3, 4}},   {{300, 200}, {9, 6}}, {{301, 100}, {12, 4}},
                             {{640, 100}, {32, 5}}, {{337, 97}, {31, 9}}};
    for (rows::Routines const& routines : rowRoutines()) {
        UsedRoutines const used(routines);
        for (std::size_t i = 0; i < std::size(ratios); i += emulated() ? 3U : 1U) {
            for (FrameFormat const format :
                 {FRAME_GRAY8, FRAME_NV12, FRAME_I420, FRAME_BGR24, FRAME_C4_8U, FRAME_YUYV}) {
                for (int variant = 0; variant < 2 && !HasFailure(); ++variant) {
                    renew();
                    runTwice(caseOf(format, ratios[i], variant));
                }
            }
        }
    }
}

// Sizes that stay while the format changes.
TEST_P(ScalerSweep, ChangingFormats) {
    std::vector<FrameFormat> const formats = allFormats();
    auto const last = static_cast<int>(formats.size()) - 1;
    for (int i = 0; i < draws(1000); ++i) {
        Case c = drawCase(FRAME_NV12, {_random.between(1, 16), _random.between(1, 16)}, 16);
        for (int use = 0; use < 6; ++use) {
            auto const format = formats[static_cast<std::size_t>(_random.between(0, last))];
            c.src.format = static_cast<int>(format);
            run(c);
            if (HasFailure()) {
                return;
            }
        }
    }
}

// Up-scaling by the one class that only goes down, and methods that don't exist.
TEST_P(ScalerSweep, Refusals) {
    for (FrameFormat const format : allFormats()) {
        Case c = drawCase(format, {5, 4}, 9);
        if (GetParam().changes_width) {
            c.dst.width = 6;
        }
        if (GetParam().changes_height) {
            c.dst.height = 3;
        }
        c.variant = 8;
        run(c);
        if (HasFailure()) {
            return;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Classes, ScalerSweep, testing::ValuesIn(scalerClasses()),
                         [](auto const& chosen) { return std::string(chosen.param.name); });

}  // namespace
}  // namespace ox::test
