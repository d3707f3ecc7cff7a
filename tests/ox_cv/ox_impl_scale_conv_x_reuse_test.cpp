// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the horizontal pass keeps from one source for the next, on purpose, and what it refuses.
#include <gtest/gtest.h>

#include <vector>

#include "ox_cv/scale_x_rows.h"

namespace ox::test {

namespace {

constexpr char badWidth[] =
    "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.";

template <class Weight>
class ScaleXReuse : public ScaleXTest<Weight> {};

using Weights = testing::Types<signed char, short>;
TYPED_TEST_SUITE(ScaleXReuse, Weights);

TYPED_TEST(ScaleXReuse, StartsUnarmed) {
    this->expectUnarmed();
    EXPECT_EQ(this->scaler.layout().planeCount, 0);
}

TYPED_TEST(ScaleXReuse, RefusesSourcesWithoutPlanes) {
    ClaimingProducer producer = ClaimingProducer::withoutPlanes();
    auto const text = "Failure in ScaleX::reuse(...) : source frame is not initialized.";
    expectException(StatusNotInitialized, text, [&] { this->scaler.reuse(this->box, Frame(), 2); });
    expectException(StatusNotInitialized, text,
                    [&] { this->scaler.reuse(this->box, producer, 2); });
    this->expectUnarmed();
}

TYPED_TEST(ScaleXReuse, PassesFailuresOn) {
    TestFrame const src = ramp(FRAME_I420, {40, 1});
    TestKernel nothing(2.0F, [](float) { return 0.0F; });
    for (int const width : {0, -1, 41}) {
        expectException(StatusOutOfRange, badWidth,
                        [&] { this->scaler.reuse(this->box, src.frame(), width); });
    }
    expectException(StatusOutOfRange,
                    "Failure in ScaleData::reuse(...), scale factor is out of range.",
                    [&] { this->scaler.reuse(this->box, src.frame(), 1); });
    expectException(StatusNullPointer,
                    "Failure in computeWeights(...): Kernel has zero weight sum.",
                    [&] { this->scaler.reuse(nothing, src.frame(), 20); });
    ClaimingProducer flat = ClaimingProducer::ofSize({4, 0});
    expectException(StatusOutOfRange, windowSizeOutOfRange,
                    [&] { this->scaler.reuse(this->box, flat, 2); });
    this->expectUnarmed();
}

// Half the weights, so that one sees which ones are in use.
class DarkKernel : public TestKernel {
  public:
    DarkKernel() : TestKernel(2.0F, [this](float x) { return dark && x > 0 ? 0.0F : 1.0F; }) {}
    DarkKernel(DarkKernel const&) = delete;
    DarkKernel& operator=(DarkKernel const&) = delete;
    bool dark = false;
};

// Means of {0, 100, 200, 0} in pairs; then, since the filter's right half is 0, little is left of
// the second sample.
TYPED_TEST(ScaleXReuse, AFilterIsKnownByItsAddress) {
    TestFrame const src = grayPicture({{0, 100, 200, 0}});
    DarkKernel kernel;
    DarkKernel other;
    kernel.dark = false;
    this->scaler.reuse(kernel, src.frame(), 2);
    EXPECT_EQ(rowsOf(pump(this->scaler)), (Rows{{50, 100}}));
    kernel.dark = true;
    other.dark = true;
    this->scaler.reuse(kernel, src.frame(), 2);
    EXPECT_EQ(rowsOf(pump(this->scaler)), (Rows{{50, 100}}));
    EXPECT_EQ(kernel.scales.size(), 1U);
    this->scaler.reuse(other, src.frame(), 2);
    EXPECT_EQ(rowsOf(pump(this->scaler)), rowsOf(this->across(src.frame(), other, 2)));
    EXPECT_NE(rowsOf(pump(this->scaler)), (Rows{{50, 100}}));
}

TYPED_TEST(ScaleXReuse, AnotherSizeKeepsWeightsAndLayout) {
    TestFrame const src = grayPicture({{0, 100, 200, 0}});
    TestFrame const larger =
        grayPicture({{1, 3, 5, 7, 200, 200}, {9, 9, 9, 9, 9, 9}, {8, 8, 8, 8, 8, 8}});
    this->armedRows(src, 2);
    EXPECT_EQ(this->armedRows(larger, 2), (Rows{{2, 6}}));
    EXPECT_EQ(this->scaler.layout().size, (Size{2, 1}));
    this->scaler.reuse(this->box, larger.frame(), 2);
    EXPECT_TRUE(this->scaler.next());  // its rows are those of the source
    EXPECT_TRUE(this->scaler.next());
    EXPECT_FALSE(this->scaler.next());
    EXPECT_EQ(this->armedRows(larger, 3), (Rows{{2, 6, 200}, {9, 9, 9}, {8, 8, 8}}));
}

TYPED_TEST(ScaleXReuse, TapsBehindANarrowerSourceAddNothing) {
    TestFrame const src = grayPicture({{1, 2, 3, 4, 5, 6, 7, 8}});
    TestFrame const narrow = grayPicture({{10, 20, 30, 40, 50}});
    this->armedRows(src, 4);
    EXPECT_EQ(this->armedRows(narrow, 4), (Rows{{15, 35, 25, 0}}));
    ProbeProducer probe(narrow.frame());
    this->scaler.reuse(this->box, probe, 4);
    EXPECT_EQ(rowsOf(pump(this->scaler)), (Rows{{15, 35, 25, 0}}));
    EXPECT_EQ(this->armedRows(src, 4), (Rows{{1, 3, 5, 7}}));
}

TYPED_TEST(ScaleXReuse, TapsBehindFewerWordsAddNothing) {
    TestFrame const src(FRAME_C1_16U, {8, 1});
    TestFrame const narrow(FRAME_C1_16U, {5, 1}, {2, Guard::AtEnd});
    setSamples<std::uint16_t>(narrow, 0, {1000, 2000, 3000, 4000, 5000});
    this->scaler.reuse(this->box, src.frame(), 4);
    this->scaler.reuse(this->box, narrow.frame(), 4);
    EXPECT_EQ(samplesOf<std::uint16_t>(pump(this->scaler), 0),
              (std::vector<std::uint16_t>{1500, 3500, 2500, 0}));
}

// A row of 11 bytes that claims four pixels of three.
class ShortRow : public ClaimingProducer {
  public:
    ShortRow() : ClaimingProducer(layoutOf11()) {}
    void produce(RowData& row) override {
        for (int i = 0; i < 11; ++i) {
            row[0][i] = static_cast<unsigned char>(10 * (i + 1));
        }
    }

  private:
    static FrameLayout layoutOf11() {
        FrameLayout layout(FRAME_BGR24, {4, 1}, 64);
        layout.plane[0].rowBytes = 11;
        return layout;
    }
};

TYPED_TEST(ScaleXReuse, APixelMayEndBehindTheRow) {
    ShortRow src;
    this->scaler.reuse(this->box, src, 2);
    EXPECT_EQ(rowsOf(pump(this->scaler)), (Rows{{25, 35, 45, 85, 95, 45}}));
}

TYPED_TEST(ScaleXReuse, AnotherFormatOrWidthRebuilds) {
    TestFrame const gray = grayPicture({{0, 100, 200, 0}});
    TestFrame const pairs = picture(FRAME_C2_8U, {4, 1}, {{{0, 1, 2, 3, 4, 5, 6, 7}}});
    EXPECT_EQ(this->armedRows(gray, 2), (Rows{{50, 100}}));
    EXPECT_EQ(this->armedRows(pairs, 2), (Rows{{1, 2, 5, 6}}));
    EXPECT_EQ(this->armedRows(gray, 2), (Rows{{50, 100}}));
    EXPECT_EQ(this->armedRows(gray, 1), (Rows{{75}}));
    EXPECT_EQ(this->armedRows(gray, 4), (Rows{{0, 100, 200, 0}}));
}

// The last weight of the last row, 20, is left over from the row before. It belongs to an eleventh
// sample: 84 / 64 of the others' value where there is one.
TEST(ScaleXBorder, CarriedWeightsCountInAWiderSourceOnly) {
    TestKernel kernel(4.75F);
    TestFrame const src = grayPicture({Bytes(10, 64)});
    TestFrame const wider = grayPicture({Bytes(11, 64)});
    impl::ScaleX<signed char> scaler;
    scaler.reuse(kernel, src.frame(), 8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{Bytes(8, 64)}));
    scaler.reuse(kernel, wider.frame(), 8);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{64, 64, 64, 64, 64, 64, 64, 84}}));
}

TYPED_TEST(ScaleXReuse, AFailureLeavesItUnarmedAndToBeRebuilt) {
    TestFrame const src = grayPicture({{0, 100, 200, 0}});
    ClaimingProducer none = ClaimingProducer::withoutPlanes();
    ClaimingProducer flat = ClaimingProducer::ofSize({4, 0});
    TestKernel kernel(2.0F);
    auto const expectRebuilt = [&] {
        this->expectUnarmed();
        std::size_t const asked = kernel.scales.size();
        this->scaler.reuse(kernel, src.frame(), 2);
        EXPECT_EQ(kernel.scales.size(), asked + 1);
        EXPECT_EQ(rowsOf(pump(this->scaler)), (Rows{{50, 100}}));
    };
    this->scaler.reuse(kernel, src.frame(), 2);
    EXPECT_ANY_THROW(this->scaler.reuse(kernel, src.frame(), 5));
    expectRebuilt();
    EXPECT_ANY_THROW(this->scaler.reuse(kernel, none, 2));
    expectRebuilt();
    EXPECT_ANY_THROW(this->scaler.reuse(kernel, flat, 2));  // after a rebuild that was skipped
    expectRebuilt();
}

}  // namespace

}  // namespace ox::test
