// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Nothing outside the rows is read or written, on small frames of every format: their planes end
// and begin at pages that fault, and what lies around their rows doesn't show in a result.
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/stages.h"
#include "support/test_frame.h"

namespace ox::test::memory_safety {

namespace {

constexpr int largest = 9;

// The same pixels in four places. A region has other pixels around it.
class Sources {
  public:
    Sources(FrameFormat format, Size size, Random& random)
        : _at_end(format, size, Placement{0, Guard::AtEnd}),
          _at_start(format, size, Placement{8, Guard::AtStart}),
          _around_end(format, larger(size, random), Placement{4, Guard::AtEnd}),
          _around_start(format, larger(size, random), Placement{0, Guard::AtStart}) {
        fillFloats(_at_end.frame(), random, -10.0F, 300.0F);
        fill(_around_end.frame(), random);
        fill(_around_start.frame(), random);
        Size const outer = _around_end.frame().size();
        frames = {
            _at_end.frame(), _at_start.frame(),
            getRegion(_around_end.frame(), {outer.width - size.width, outer.height - size.height,
                                            size.width, size.height}),
            getRegion(_around_start.frame(), {0, 0, size.width, size.height})};
        for (Frame& frame : frames) {
            _at_end.frame().copyTo(frame);
        }
    }

    std::vector<Frame> frames;

  private:
    static Size larger(Size size, Random& random) {
        return {size.width + random.between(1, 3), size.height + random.between(1, 3)};
    }

    TestFrame _at_end;
    TestFrame _at_start;
    TestFrame _around_end;
    TestFrame _around_start;
};

// What an operation came to: its pixels, or the text of its refusal.
struct Outcome {
    std::optional<TestFrame> frame;
    std::string refusal;
};

template <class Operation>
std::string refusalOf(Operation operation) {
    try {
        operation();
    } catch (Exception const& exception) {
        return exception.what();
    }
    return {};
}

Outcome run(Stage& stage, Frame const& source, Target const& target, Placement placement) {
    Outcome outcome;
    outcome.frame.emplace(target.format, target.size, placement);
    outcome.refusal = refusalOf([&] {
        stage.arm(source, target);
        produceFrame(stage.producer(), outcome.frame->frame());
    });
    outcome.frame->expectGapsUntouched();
    return outcome;
}

template <class Visitor>
void forEachSize(Visitor visit) {
    for (int width = 1; width <= largest; ++width) {
        for (int height = 1; height <= largest; ++height) {
            if (!emulated() || (width + height) % 3 == 0) {
                visit(Size{width, height});
            }
        }
    }
}

class MemorySafety : public testing::TestWithParam<StageClass> {
  protected:
    void checkSource(FrameFormat format, Size size) {
        Sources const sources(format, size, _random);
        if (GetParam().changes_format) {
            for (FrameFormat const wanted : allFormats()) {
                checkTarget(sources, {wanted, size});
            }
        } else {
            for (int draw = 0; draw < 6; ++draw) {
                // Some classes only scale down.
                Size const limit = draw % 2 == 0 ? size : Size{largest, largest};
                Size const wanted{_random.between(1, limit.width),
                                  _random.between(1, limit.height)};
                checkTarget(sources,
                            GetParam().targetFor(sources.frames[0].layout(), {format, wanted}));
            }
        }
    }

    int tried = 0;
    int finished = 0;

  private:
    void checkTarget(Sources const& sources, Target const& target) {
        SCOPED_TRACE(describe(sources.frames[0].format(), sources.frames[0].size()) + " to " +
                     describe(target.format, target.size));
        Outcome const first = runFresh(sources.frames[0], target, {0, Guard::AtEnd});
        ++tried;
        finished += first.refusal.empty() ? 1 : 0;
        for (std::size_t i = 1; i < sources.frames.size(); ++i) {
            Guard const guard = i % 2 == 0 ? Guard::AtEnd : Guard::AtStart;
            Outcome const other = runFresh(sources.frames[i], target, {4 * i, guard});
            EXPECT_EQ(other.refusal, first.refusal);
            EXPECT_TRUE(samePixels(other.frame->frame(), first.frame->frame()))
                << "the surroundings of a row show in a result";
        }
    }

    Outcome runFresh(Frame const& source, Target const& target, Placement placement) {
        if (GetParam().remembers) {
            stage->construct();
        }
        return run(*stage, source, target, placement);
    }

  protected:
    std::unique_ptr<Stage> stage = GetParam().make();

  private:
    Random _random;
};

TEST_P(MemorySafety, SmallFrames) {
    for (FrameFormat const format : allFormats()) {
        forEachSize([&](Size size) { checkSource(format, size); });
    }
    EXPECT_GT(finished, tried / 8) << "nearly everything was refused";
}

// One object for frames of all sizes, in an order that is none: what it keeps from one for the next
// may lead to other pixels, but not out of the rows.
TEST_P(MemorySafety, FramesInTurn) {
    Random random(2);
    auto const side = [&] { return random.between(1, largest); };
    int drawn = 0;
    for (int draw = 0; draw < 2000; ++draw) {
        // Few formats at a time, and few targets, so that something is kept.
        FrameFormat const format = draw % 8 < 5 ? FRAME_I420 : FRAME_GRAY8;
        TestFrame const source(format, {side(), side()}, random,
                               {static_cast<std::size_t>(draw % 3), Guard::AtEnd});
        Target const target = GetParam().targetFor(
            source.layout(), {FRAME_NV12, {random.between(1, 3), random.between(1, 3)}});
        refusalOf([&] {
            stage->arm(source.frame(), target);
            FrameLayout const layout = stage->producer().layout();
            TestFrame result(layout.format, layout.size, {0, Guard::AtEnd});
            produceFrame(stage->producer(), result.frame());
            result.expectGapsUntouched();
            ++drawn;
        });
    }
    EXPECT_GT(drawn, 400);
}

INSTANTIATE_TEST_SUITE_P(, MemorySafety, testing::ValuesIn(stageClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });

// All operations of the pipeline backend, with and without regions.
class BackendMemorySafety : public testing::Test {
  protected:
    template <class Operation>
    void check(FrameFormat format, Size size, Operation operation) {
        for (Guard const guard : {Guard::AtEnd, Guard::AtStart}) {
            TestFrame target(format, size,
                             Placement{static_cast<std::size_t>(random.between(0, 5)) * 4, guard});
            refusalOf([&] { operation(target.frame()); });
            target.expectGapsUntouched();
        }
    }

    Rect regionOf(Size size) {
        Rect const region{random.between(0, size.width - 1), random.between(0, size.height - 1), 0,
                          0};
        return {region.x, region.y, random.between(0, size.width - region.x),
                random.between(0, size.height - region.y)};
    }

    Random random;
    CvBackendBase backend;
};

TEST_F(BackendMemorySafety, SmallFrames) {
    for (FrameFormat const format : allFormats()) {
        forEachSize([&](Size size) {
            SCOPED_TRACE(describe(format, size));
            Sources const sources(format, size, random);
            FrameFormat const wanted =
                allFormats()[static_cast<std::size_t>(random.between(0, 22))];
            for (Frame const& source : sources.frames) {
                Rect const region = regionOf(size);
                Size const extent = region.empty() ? size : Size{region.width, region.height};
                Size const other{random.between(1, largest), random.between(1, largest)};
                check(FRAME_BGR24, extent,
                      [&](Frame& to) { backend.colorCvt(source, to, region); });
                check(wanted, extent, [&](Frame& to) { backend.colorCvt(source, to, region); });
                check(format, other,
                      [&](Frame& to) { backend.resize(source, to, region, regionOf(other)); });
                check(wanted, other, [&](Frame& to) { backend.convert(source, to, region); });
                check(format, other, [&](Frame& to) { backend.add(to, 1.0F, regionOf(other)); });
                check(format, other, [&](Frame& to) { backend.mul(to, 2.0F, regionOf(other)); });
            }
        });
    }
}

}  // namespace

}  // namespace ox::test::memory_safety
