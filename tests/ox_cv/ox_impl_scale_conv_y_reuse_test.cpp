// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vertical pass keeps from one source for the next, on purpose, and what it refuses.
#include <gtest/gtest.h>

#include <vector>

#include "ox_cv/scale_y_rows.h"

namespace ox::test {

namespace {

constexpr char badHeight[] =
    "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.";

using RowNumbers = std::vector<int>;

template <class Weight>
class ScaleYReuse : public ScaleYTest<Weight> {};

using Weights = testing::Types<signed char, short>;
TYPED_TEST_SUITE(ScaleYReuse, Weights);

TYPED_TEST(ScaleYReuse, ASecondPassLosesItsFirstStep) {
    EXPECT_EQ(this->armedRows(eightRows, 4), column({15, 35, 55, 75}));
    EXPECT_EQ(this->armedRows(eightRows, 4), column({15, 15, 35, 55}));
    EXPECT_EQ(this->armedRows(eightRows, 4), column({15, 15, 35, 55}));
}

TYPED_TEST(ScaleYReuse, ARebuildDoesNotMendTheFirstStep) {
    BoxKernel other;
    this->armedRows(eightRows, 4);
    EXPECT_EQ(rowsOf(this->armed(grayPicture(eightRows), other, 4)), column({15, 15, 35, 55}));
}

// Two down from row 2, where the pass before stopped, instead of four from row 0.
TYPED_TEST(ScaleYReuse, TheFirstStepCountsFromTheRowBefore) {
    TestFrame const src = grayPicture(eightRows);
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 4);
    EXPECT_TRUE(this->scaler.next());
    EXPECT_EQ(this->armedRows(eightRows, 2), column({25, 45}));
}

// Rows begin at 0, 0, 1, 2, 3, 5, 6 and 5. Then 7, two below the last one, where a filter that
// never goes back would be one below.
TYPED_TEST(ScaleYReuse, ARowMayBeginAboveTheOneBefore) {
    TestKernel kernel(3.5F);
    this->armed(grayPicture(Rows(10, {0})), kernel, 8);
    TestFrame const src = grayPicture(Rows(12, {0}));
    ProbeProducer probe(src.frame());
    this->scaler.reuse(kernel, probe, 2);
    pump(this->scaler);
    EXPECT_EQ(probe.produced(), (RowNumbers{0, 1, 2, 3, 4, 5}));
}

// Chroma of the format before had four taps: the window keeps four rows, and stops at the fourth.
TYPED_TEST(ScaleYReuse, TheWindowCountsPlanesOfAnEarlierFormat) {
    this->armed(ramp(FRAME_I420, {1, 8}), this->box, 2);
    typename TestFixture::Scaler fresh;
    TestFrame const src = grayPicture(eightRows);
    ProbeProducer few(src.frame());
    fresh.reuse(this->box, few, 4);
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    fresh.produce(row);
    EXPECT_EQ(few.produced(), (RowNumbers{0, 1}));
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 4);
    EXPECT_EQ(this->sample(), 15);
    EXPECT_EQ(probe.produced(), (RowNumbers{0, 1, 2, 3}));
    TestFrame const low = grayPicture(column({1, 2, 3}));
    ProbeProducer rows(low.frame());
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { this->scaler.reuse(this->box, rows, 1); });
}

// With four rows of which two count, the window can't come down to rows 6 and 7.
TYPED_TEST(ScaleYReuse, ATallWindowEndsAboveTheLastRows) {
    TestFrame const src = ramp(FRAME_I420, {1, 8});
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 2);
    EXPECT_EQ(this->armedRows(eightRows, 4), column({15, 35, 55, 55}));
}

TYPED_TEST(ScaleYReuse, StartsUnarmed) {
    this->expectUnarmed();
    EXPECT_FALSE(this->scaler.next());
    EXPECT_EQ(this->scaler.layout().planeCount, 0);
}

TYPED_TEST(ScaleYReuse, PassesFailuresOn) {
    ClaimingProducer none = ClaimingProducer::withoutPlanes();
    ClaimingProducer src = ClaimingProducer::ofSize({4, 40});
    TestKernel nothing(2.0F, [](float) { return 0.0F; });
    expectException(StatusNotInitialized,
                    "Failure in ScaleY::reuse(...) : source frame is not initialized.",
                    [&] { this->scaler.reuse(this->box, none, 2); });
    for (int const height : {0, -1, 41}) {
        expectException(StatusOutOfRange, badHeight,
                        [&] { this->scaler.reuse(this->box, src, height); });
    }
    expectException(StatusOutOfRange,
                    "Failure in ScaleData::reuse(...), scale factor is out of range.",
                    [&] { this->scaler.reuse(this->box, src, 1); });
    expectException(StatusNullPointer,
                    "Failure in computeWeights(...): Kernel has zero weight sum.",
                    [&] { this->scaler.reuse(nothing, src, 20); });
    TestKernel tall(41.0F);
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { this->scaler.reuse(tall, src, 40); });
    this->expectUnarmed();
}

TYPED_TEST(ScaleYReuse, AFilterIsKnownByItsAddress) {
    TestFrame const src = grayPicture(column({0, 100, 200, 0}));
    TestKernel kernel = tapKernel({0.5F, 0.5F});
    TestKernel other = tapKernel({1.0F, 0.0F});
    EXPECT_EQ(rowsOf(this->armed(src, kernel, 2)), column({50, 100}));
    kernel.function = other.function;
    this->armed(src, kernel, 2);
    EXPECT_EQ(kernel.scales.size(), 1U);
    ProbeProducer probe(src.frame());
    this->scaler.reuse(kernel, probe, 2);
    EXPECT_EQ(this->sample(), 50);
    ProbeProducer again(src.frame());
    this->scaler.reuse(other, again, 2);
    EXPECT_EQ(this->sample(), 0);
}

// Four bytes wide: of a wider source four are taken, of a narrower one as many as there are.
TYPED_TEST(ScaleYReuse, AnotherWidthKeepsTheLayout) {
    auto const firstRow = [this](Rows const& rows) {
        TestFrame const src = grayPicture(rows);
        ProbeProducer probe(src.frame());
        this->scaler.reuse(this->box, probe, 1);
        EXPECT_EQ(this->scaler.layout().size, (Size{4, 1}));
        unsigned char bytes[6] = {99, 99, 99, 99, 99, 99};
        RowData row{{bytes, nullptr, nullptr, nullptr}};
        this->scaler.produce(row);
        return Bytes(bytes, bytes + 6);
    };
    EXPECT_EQ(firstRow({{0, 0, 0, 0}, {2, 4, 6, 8}}), (Bytes{1, 2, 3, 4, 99, 99}));
    EXPECT_EQ(firstRow({{1, 1, 1, 1, 1, 1}, {3, 5, 7, 9, 11, 13}}), (Bytes{2, 3, 4, 5, 99, 99}));
    EXPECT_EQ(firstRow({{5, 6}, {7, 8}}), (Bytes{6, 7, 99, 99, 99, 99}));
}

TYPED_TEST(ScaleYReuse, AnotherFormatOrHeightRebuilds) {
    EXPECT_EQ(this->armedRows({{2}, {4}}, 1), column({3}));
    EXPECT_EQ(this->armedRows({{2}, {4}, {9}}, 1), column({4}));
    EXPECT_EQ(this->armedRows({{2}, {4}, {9}}, 3), column({2, 4, 9}));
    TestFrame const pairs = picture(FRAME_C2_8U, {1, 3}, {{{2, 3}, {4, 5}, {9, 9}}});
    this->armed(pairs, this->box, 3);
    EXPECT_EQ(this->scaler.layout().format, FRAME_C2_8U);
}

TYPED_TEST(ScaleYReuse, AFailureLeavesItUnarmedAndToBeRebuilt) {
    TestFrame const src = grayPicture(column({0, 100, 200, 0}));
    ClaimingProducer none = ClaimingProducer::withoutPlanes();
    TestKernel kernel(2.0F);
    auto const expectRebuilt = [&] {
        this->expectUnarmed();
        std::size_t const asked = kernel.scales.size();
        ProbeProducer probe(src.frame());
        this->scaler.reuse(kernel, probe, 2);
        EXPECT_EQ(kernel.scales.size(), asked + 1);
        EXPECT_EQ(this->sample(), 50);
    };
    ProbeProducer probe(src.frame());
    this->scaler.reuse(kernel, probe, 2);
    EXPECT_ANY_THROW(this->scaler.reuse(kernel, probe, 5));
    expectRebuilt();
    EXPECT_ANY_THROW(this->scaler.reuse(kernel, none, 2));
    expectRebuilt();
}

}  // namespace

}  // namespace ox::test
