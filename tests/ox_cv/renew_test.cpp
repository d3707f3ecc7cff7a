// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// `renew`: whatever an object has done before, it then does as a new one would, without allocating.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_impl_scale_conv_x.h"
#include "ox_cv/ox_impl_scale_conv_y.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_row_window.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/stages.h"
#include "ox_cv/test_kernels.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::renew {

namespace {

constexpr unsigned char untouched = 0xA5;

// What came out of a stream: a picture, or a failure.
struct Outcome {
    std::string failure;
    Frame picture;
};

template <class Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (Exception const& exception) {
        return std::to_string(exception.status) + " " + exception.what();
    }
    return "";
}

testing::AssertionResult same(Outcome const& got, Outcome const& expected) {
    if (got.failure != expected.failure) {
        return testing::AssertionFailure()
               << "got '" << got.failure << "', expected '" << expected.failure << "'";
    }
    return expected.failure.empty() ? samePixels(got.picture, expected.picture)
                                    : testing::AssertionSuccess();
}

enum class Over { Frame, Producer };

struct Stream {
    FrameFormat format;
    Size size;
    Target wanted;
    Over over = Over::Frame;
    int rows = 1000;  // that are drained at most
};

std::string describe(Stream const& stream) {
    return ox::test::describe(stream.format, stream.size) + " to " +
           ox::test::describe(stream.wanted.format, stream.wanted.size) +
           (stream.over == Over::Frame ? ", over a frame, " : ", over a producer, ") +
           std::to_string(stream.rows) + " rows";
}

void drain(IRowProducer& producer, Frame const& frame, int rows) {
    std::uint32_t masks[4]{};
    FrameLayout const& layout = frame.layout();
    for (int i = 0; i < layout.planeCount; ++i) {
        masks[i] = rowMask(layout.size.height, layout.plane[i].height);
    }
    for (int y = 0; y < std::min(layout.size.height, rows); ++y) {
        RowData row{};
        for (int i = 0; i < layout.planeCount; ++i) {
            auto const halved = static_cast<int>(masks[i]);
            row[i] = (y & halved) == 0 ? rowOf(frame, i, y >> halved) : nullptr;
        }
        producer.produce(row);
        producer.next();
    }
}

// A copier is a source that a window keeps rows of, and can be made for each stream.
Outcome run(Stage& stage, StageClass const& stage_class, Stream const& stream,
            Frame const& source) {
    Outcome outcome;
    Target const target = stage_class.targetFor(source.layout(), stream.wanted);
    outcome.picture.reuse(target.format, target.size, DeviceContext(), 0);
    fill(outcome.picture, untouched);
    RowCopier copier;
    outcome.failure = failureOf([&] {
        if (stream.over == Over::Frame) {
            stage.arm(source, target);
        } else {
            copier.reuse(source);
            stage.arm(copier, target);
        }
        drain(stage.producer(), outcome.picture, stream.rows);
    });
    return outcome;
}

std::vector<Over> sourcesOf(StageClass const& stage_class) {
    return stage_class.takes_producers ? std::vector<Over>{Over::Frame, Over::Producer}
                                       : std::vector<Over>{Over::Frame};
}

// Reductions by more than a window holds, on wide rows too; an enlargement of few rows.
struct Sides {
    Size src;
    Size dst;
};
constexpr Sides sides[] = {{{14, 18}, {6, 5}}, {{150, 9}, {70, 4}}, {{20, 6}, {45, 14}}};

class Renew : public testing::TestWithParam<StageClass> {
  protected:
    // The formats that a picture of that format may be asked for in.
    static std::vector<FrameFormat> targetsOf(FrameFormat format) {
        return GetParam().changes_format ? allFormats() : std::vector<FrameFormat>{format};
    }

    // Streams of every format and geometry, over each kind of source.
    template <class Check>
    static void forEachStream(Check check) {
        for (FrameFormat const format : allFormats()) {
            for (FrameFormat const target : targetsOf(format)) {
                for (Sides const& side : sides) {
                    for (Over const over : sourcesOf(GetParam())) {
                        check(Stream{format, side.src, {target, side.dst}, over});
                    }
                }
            }
        }
    }

    // What an object may have done before: the same, another format, other sizes; all or a part.
    static std::vector<Stream> predecessorsOf(Stream const& stream) {
        std::vector<Stream> result;
        for (Over const over : sourcesOf(GetParam())) {
            for (int const rows : {1000, 3}) {
                Stream same = stream;
                same.over = over;
                same.rows = rows;
                result.push_back(same);
                Stream other_size = same;
                other_size.size = {26, 16};
                other_size.wanted.size = {11, 6};
                result.push_back(other_size);
                Stream other_format = same;
                other_format.format = FRAME_I420;
                other_format.wanted.format = FRAME_NV12;
                result.push_back(other_format);
            }
        }
        return result;
    }
};

TEST_P(Renew, GivesANewObjectsBytes) {
    Random random;
    int done = 0;
    forEachStream([&](Stream const& stream) {
        TestFrame const source(stream.format, stream.size, random);
        Outcome const expected = run(*GetParam().make(), GetParam(), stream, source.frame());
        for (Stream const& before : predecessorsOf(stream)) {
            TestFrame const earlier(before.format, before.size, random);
            auto const stage = GetParam().make();
            run(*stage, GetParam(), before, earlier.frame());
            stage->renew();
            EXPECT_TRUE(same(run(*stage, GetParam(), stream, source.frame()), expected))
                << describe(stream) << "\nafter " << describe(before);
        }
        done += expected.failure.empty() ? 1 : 0;
    });
    EXPECT_GE(done, 10);
}

TEST_P(Renew, AllocatesNothingForTheSameGeometry) {
    Random random;
    int done = 0;
    forEachStream([&](Stream const& stream) {
        TestFrame const source(stream.format, stream.size, random);
        Target const target = GetParam().targetFor(source.layout(), stream.wanted);
        auto const stage = GetParam().make();
        if (!run(*stage, GetParam(), stream, source.frame()).failure.empty()) {
            return;
        }
        RowCopier copier;
        copier.reuse(source.frame());
        std::uint64_t const before = allocationCalls();
        stage->renew();
        if (stream.over == Over::Frame) {
            stage->arm(source.frame(), target);
        } else {
            stage->arm(copier, target);
        }
        EXPECT_EQ(allocationCalls(), before) << describe(stream);
        ++done;
    });
    EXPECT_GE(done, 10);
}

// Also for objects whose last `reuse` failed, and for those that never had one.
TEST_P(Renew, AnUnarmedObjectStaysAsItIs) {
    Random random;
    TestFrame const source(FRAME_NV12, {14, 18}, random);
    Stream const stream{FRAME_NV12, {14, 18}, {FRAME_I420, {6, 5}}};
    Outcome const expected = run(*GetParam().make(), GetParam(), stream, source.frame());
    auto const stage = GetParam().make();
    stage->renew();
    EXPECT_TRUE(same(run(*stage, GetParam(), stream, source.frame()), expected));
    EXPECT_NE(failureOf([&] { stage->arm(Frame(), stream.wanted); }), "");
    stage->renew();
    stage->renew();
    EXPECT_TRUE(same(run(*stage, GetParam(), stream, source.frame()), expected));
}

// What an object without a source answers.
std::string answersOf(IRowProducer& producer) {
    std::string layout = failureOf([&] {
        FrameLayout const& found = producer.layout();
        EXPECT_EQ(found.planeCount, 0);
        EXPECT_EQ(found.size, Size());
    });
    TestFrame const row(FRAME_BGR24, {200, 1});
    RowData data{};
    data[0] = row.row(0, 0);
    std::string const produce = failureOf([&] { producer.produce(data); });
    std::string const next = failureOf([&] { EXPECT_FALSE(producer.next()); });
    return layout + "|" + produce + "|" + next;
}

TEST_P(Renew, ARenewedObjectHasNoSource) {
    Random random;
    TestFrame const source(FRAME_I420, {14, 18}, random);
    std::string const expected = answersOf(GetParam().make()->producer());
    for (Over const over : sourcesOf(GetParam())) {
        auto const stage = GetParam().make();
        Stream const stream{FRAME_I420, {14, 18}, {FRAME_NV12, {6, 5}}, over, 2};
        EXPECT_EQ(run(*stage, GetParam(), stream, source.frame()).failure, "");
        stage->renew();
        EXPECT_EQ(answersOf(stage->producer()), expected);
    }
}

INSTANTIATE_TEST_SUITE_P(, Renew, testing::ValuesIn(stageClasses()),
                         [](auto const& parameter) { return std::string(parameter.param.name); });

template <class Link>
class RenewedLink : public testing::Test {};

using Links =
    testing::Types<FormatConverter, ScalerNearestNeighbor, ScalerBilinearX, ScalerBilinearY,
                   ScalerBilinearXY, ScalerAreaX, ScalerAreaY, scaleAreaXY, RowCopier>;
TYPED_TEST_SUITE(RenewedLink, Links);

void armAny(FormatConverter& link, Frame const& source) {
    link.reuse(source, FRAME_BGR24);
}
void armAny(RowCopier& link, Frame const& source) {
    link.reuse(source);
}
void armAny(auto& link, Frame const& source) {
    arm(link, source, {2, 2});
}

TYPED_TEST(RenewedLink, IsntInitialized) {
    TestFrame const source(FRAME_GRAY8, {4, 4});
    TypeParam link;
    armAny(link, source.frame());
    EXPECT_TRUE(link.initialized());
    link.renew();
    EXPECT_FALSE(link.initialized());
    armAny(link, source.frame());
    EXPECT_TRUE(link.initialized());
}

TEST(RenewedScaler, IsInitializedInTheOppositeSense) {
    TestFrame const source(FRAME_GRAY8, {4, 4});
    Scaler scaler;
    scaler.reuse(source.frame(), {2, 2}, OX_SCALE_AREA);
    EXPECT_FALSE(scaler.initialized());
    scaler.renew();
    EXPECT_TRUE(scaler.initialized());
}

TEST(RenewedScalerConvolutional, IsntInitialized) {
    TestFrame const source(FRAME_GRAY8, {4, 4});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    for (ScalerPrecision const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        scaler.reuse(kernel, source.frame(), {2, 2}, precision);
        EXPECT_TRUE(scaler.initialized());
        scaler.renew();
        EXPECT_FALSE(scaler.initialized());
    }
}

// A picture of 8 rows; row y of the one of that number is 100 * number + 10 y.
TestFrame picture(int number) {
    Rows rows;
    for (int y = 0; y < 8; ++y) {
        rows.push_back(Bytes(4, 100 * number + 10 * y));
    }
    return grayPicture(rows);
}

// The first column of what a chain yields.
Bytes columnOf(IRowProducer& producer) {
    Frame const frame = pump(producer);
    Bytes column;
    for (int y = 0; y < frame.height(); ++y) {
        column.push_back(*rowOf(frame, 0, y));
    }
    return column;
}

// Rows 2 and 6 of 8 are the nearest to those of 2.
TEST(RenewedChain, OfConverterAndScalerIsntShifted) {
    FormatConverter converter;
    Scaler scaler;
    auto const yield = [&](TestFrame const& source) {
        converter.reuse(source.frame(), FRAME_BGR24);
        scaler.reuse(converter, {4, 2}, OX_SCALE_NEAREST);
        return columnOf(scaler);
    };
    EXPECT_EQ(yield(picture(0)), (Bytes{20, 60}));
    // Without `renew` rows 0 and 1 come in their place: none are skipped.
    EXPECT_EQ(yield(picture(1)), (Bytes{100, 110}));
    scaler.renew();
    EXPECT_EQ(yield(picture(1)), (Bytes{120, 160}));
    converter.renew();
    scaler.renew();
    EXPECT_EQ(yield(picture(0)), (Bytes{20, 60}));
}

TEST(RenewedChain, OfTwoScalersIsntShifted) {
    Scaler first;
    Scaler second;
    auto const yield = [&](TestFrame const& source) {
        first.reuse(source.frame(), {2, 8}, OX_SCALE_NEAREST);
        second.reuse(first, {2, 2}, OX_SCALE_NEAREST);
        return columnOf(second);
    };
    EXPECT_EQ(yield(picture(0)), (Bytes{20, 60}));
    EXPECT_EQ(yield(picture(1)), (Bytes{100, 110}));
    first.renew();
    second.renew();
    EXPECT_EQ(yield(picture(1)), (Bytes{120, 160}));
}

// Every pair of links, one over the other, serves two pictures; the second is a new chain's.
TEST(RenewedChain, OfAnyTwoLinksGivesANewChainsBytes) {
    Random random;
    TestFrame const pictures[] = {{FRAME_NV12, {40, 36}, random}, {FRAME_NV12, {40, 36}, random}};
    for (StageClass const& lower : linkClasses()) {
        for (StageClass const& upper : linkClasses()) {
            auto const yield = [&](Stage& bottom, Stage& top, Frame const& source) {
                Target const wanted = lower.targetFor(source.layout(), {FRAME_I420, {20, 18}});
                bottom.arm(source, wanted);
                FrameLayout const layout = bottom.producer().layout();
                top.arm(bottom.producer(), upper.targetFor(layout, {FRAME_GRAY8, {8, 4}}));
                return pump(top.producer());
            };
            auto const bottom = lower.make();
            auto const top = upper.make();
            Frame const expected = yield(*lower.make(), *upper.make(), pictures[1].frame());
            yield(*bottom, *top, pictures[0].frame());
            std::uint64_t const before = allocationCalls();
            bottom->renew();
            top->renew();
            EXPECT_EQ(allocationCalls(), before);
            EXPECT_TRUE(samePixels(yield(*bottom, *top, pictures[1].frame()), expected))
                << upper.name << " over " << lower.name;
        }
    }
}

// A row of weights is known by its sides; the precision of before mustn't count.
TEST(RenewedScalerArea, BuildsWeightsForItsPrecision) {
    Random random;
    TestFrame const source(FRAME_BGR24, {70, 30}, random);
    ScalerAreaX x;
    ScalerAreaY y;
    for (ScalerPrecision const precision :
         {OX_SCALER_FIXED_POINT_16S, OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        x.renew();
        y.renew();
        arm(x, source.frame(), {33, 13}, precision);
        arm(y, source.frame(), {33, 13}, precision);
        EXPECT_TRUE(samePixels(pump(x), scaled<ScalerAreaX>(source.frame(), {33, 13}, precision)));
        EXPECT_TRUE(samePixels(pump(y), scaled<ScalerAreaY>(source.frame(), {33, 13}, precision)));
    }
}

// Without `renew` the weights of the first precision stay, as they always did.
TEST(RenewedScalerArea, KeepsWeightsUnderAnotherPrecisionWithoutIt) {
    TestFrame const source = grayPicture({{100, 100, 100, 100}});
    ScalerAreaX scaler;
    scaler.renew();
    arm(scaler, source.frame(), {2, 1}, OX_SCALER_FIXED_POINT_16S);
    arm(scaler, source.frame(), {2, 1}, OX_SCALER_FIXED_POINT_8S);
    // 2 weights of 16384 each: 3276800 >> 7 = 25600, whose low byte is 0.
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{0, 0}}));
}

// With the step of 4:2:0 chroma, three times the rows are wanted, which this source doesn't have.
TEST(RenewedScaleAreaXY, ForgetsTheStepOfChroma) {
    Random random;
    TestFrame const before(FRAME_I420, {4, 4}, random);
    TestFrame const source(FRAME_GRAY8, {4, 4}, random);
    scaleAreaXY scaler;
    auto const reuse = [&](TestFrame const& frame) {
        return failureOf([&] { arm(scaler, frame.frame(), {2, 2}); });
    };
    EXPECT_NE(reuse(before), "");
    EXPECT_NE(reuse(source), "");
    scaler.renew();
    EXPECT_EQ(reuse(source), "");
    EXPECT_TRUE(samePixels(pump(scaler), scaled<scaleAreaXY>(source.frame(), {2, 2})));
}

TEST(RenewedFormatConverter, RefusesWhatANewOneRefuses) {
    TestFrame const source(FRAME_NV12, {4, 4});
    FormatConverter converter;
    converter.reuse(source.frame(), FRAME_I420);
    converter.renew();
    EXPECT_NE(failureOf([&] { converter.reuse(source.frame(), FRAME_BGR_PLANAR); }), "");
}

// A filter of one pixel's width and one of three, of which the second weighs the left one alone.
TEST(RenewedScalerConvolutional, AsksAFilterOfTheSameAddressAgain) {
    TestFrame const source = grayPicture({{10, 20, 30, 40, 50}});
    TestKernel kernel(1.0F);
    for (ScalerPrecision const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        kernel = TestKernel(1.0F);
        ScalerConvolutional scaler;
        scaler.reuse(kernel, source.frame(), {5, 1}, precision);
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{10, 20, 30, 40, 50}}));
        kernel = TestKernel(1.0F, [](float) { return 0.0F; });
        scaler.reuse(kernel, source.frame(), {5, 1}, precision);
        EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{10, 20, 30, 40, 50}})) << "not asked";
        scaler.renew();
        EXPECT_NE(failureOf([&] {
                      scaler.reuse(kernel, source.frame(), {5, 1}, precision);
                  }),
                  "")
            << "a filter that is 0 everywhere";
    }
}

// The taps of planes that a format doesn't have count for the window, until they are forgotten.
TEST(RenewedScalerConvolutional, HasAWindowNoTallerThanItsFilter) {
    TestFrame const tall(FRAME_I420, {16, 16});
    TestFrame const low = grayPicture({{1, 2}, {3, 4}, {5, 6}});
    BoxKernel kernel;
    ScalerConvolutional scaler;
    scaler.reuse(kernel, tall.frame(), {4, 4}, OX_SCALER_FIXED_POINT_16S);
    auto const reuse = [&] {
        scaler.reuse(kernel, low.frame(), {2, 3}, OX_SCALER_FIXED_POINT_16S);
    };
    EXPECT_NE(failureOf(reuse), "");
    scaler.renew();
    EXPECT_EQ(failureOf(reuse), "");
}

// The second pass over a picture loses its first step down, unless it is forgotten.
TEST(RenewedScalerConvolutional, StartsAtTheTopAgain) {
    TestFrame const source = picture(0);
    BoxKernel kernel;
    ScalerConvolutional scaler;
    auto const yield = [&] {
        scaler.reuse(kernel, source.frame(), {4, 4}, OX_SCALER_FIXED_POINT_16S);
        return columnOf(scaler);
    };
    Bytes const first = yield();
    EXPECT_NE(yield(), first);
    scaler.renew();
    EXPECT_EQ(yield(), first);
}

// A producer of 8 rows; all bytes of row y are 10 (y + 1).
class NumberedRows : public IRowProducer {
  public:
    explicit NumberedRows(FrameFormat format) : _layout(format, {4, 8}, 0) {}
    FrameLayout const& layout() override { return _layout; }
    void produce(RowData& row) override {
        for (int i = 0; i < _layout.planeCount; ++i) {
            if (row[i] != nullptr) {
                std::fill_n(row[i], _layout.plane[i].rowBytes,
                            static_cast<unsigned char>(10 * (_row + 1)));
            }
        }
    }
    bool next() override { return ++_row < 8; }

  private:
    FrameLayout _layout;
    int _row = 0;
};

// The row at the window's top after a jump to row 4.
int topAfterAJump(RowWindow& window) {
    NumberedRows rows(FRAME_GRAY8);
    window.reuse(rows, 2);
    window.moveTo(4);
    return (*window.rowData(0))[0][0];
}

TEST(RenewedRowWindow, SkipsTheRowsOfAProducerAgain) {
    RowWindow window;
    EXPECT_EQ(topAfterAJump(window), 50);
    EXPECT_EQ(topAfterAJump(window), 10);  // the count of the first stream is past row 4
    window.renew();
    EXPECT_EQ(topAfterAJump(window), 50);
}

// Chroma of an odd row that was jumped to is an older slot: that of row 0 here.
TEST(RenewedRowWindow, ShowsZerosInItsRings) {
    RowWindow window;
    NumberedRows before(FRAME_I420);
    window.reuse(before, 2);
    window.rowData(0);
    window.moveTo(2);
    window.rowData(0);
    for (bool const renewed : {false, true}) {
        if (renewed) {
            window.renew();
        }
        NumberedRows rows(FRAME_I420);
        std::uint64_t const calls = allocationCalls();
        window.reuse(rows, 2);
        EXPECT_EQ(allocationCalls(), calls);
        window.moveTo(5);
        EXPECT_EQ((*window.rowData(0))[1][0], renewed ? 0 : 10);
    }
}

TEST(RenewedRowWindow, IsEmpty) {
    TestFrame const source(FRAME_I420, {4, 4});
    RowWindow window;
    window.reuse(source.frame(), 2);
    window.next();
    window.renew();
    EXPECT_FALSE(window.initialized());
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(window.windowSize(), 0);
    EXPECT_EQ(window.layout().planeCount, 0);
    EXPECT_FALSE(window.next());
    EXPECT_NE(failureOf([&] { window.rowData(0); }), "");
}

// The passes by themselves: weights that are kept for a source of another size go too.
template <class Pass, class Arm>
void expectRenewedPass(Arm arm) {
    Random random;
    TestFrame const wide(FRAME_NV12, {40, 40}, random);
    TestFrame const narrow(FRAME_NV12, {20, 20}, random);
    BoxKernel kernel;
    Pass used;
    Pass fresh;
    RowCopier copiers[3];
    copiers[0].reuse(wide.frame());
    arm(used, kernel, copiers[0]);
    pump(used);
    used.renew();
    copiers[1].reuse(narrow.frame());
    arm(used, kernel, copiers[1]);
    copiers[2].reuse(narrow.frame());
    arm(fresh, kernel, copiers[2]);
    EXPECT_EQ(used.layout().size, fresh.layout().size);
    EXPECT_TRUE(samePixels(pump(used), pump(fresh)));
}

template <class Weight>
void expectRenewedPasses() {
    expectRenewedPass<impl::ScaleX<Weight>>(
        [](auto& pass, IKernel& kernel, IRowProducer& source) { pass.reuse(kernel, source, 10); });
    expectRenewedPass<impl::ScaleY<Weight>>(
        [](auto& pass, IKernel& kernel, IRowProducer& source) { pass.reuse(kernel, source, 10); });
}

TEST(RenewedPasses, KeepNoWeights) {
    expectRenewedPasses<signed char>();
    expectRenewedPasses<short>();
}

}  // namespace

}  // namespace ox::test::renew
