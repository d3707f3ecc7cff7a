// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_conv_y.h"

#include <gtest/gtest.h>

#include <vector>

#include "ox_cv/scale_y_rows.h"

namespace ox::test::scale_conv_y {

namespace {

constexpr char unsupported[] = "Failure in ScaleY::produce(...) : unsupported frame format.";

using RowNumbers = std::vector<int>;

template <class Weight>
class ScaleY : public ScaleYTest<Weight> {};

using Weights = testing::Types<signed char, short>;
TYPED_TEST_SUITE(ScaleY, Weights);

TYPED_TEST(ScaleY, SumsAreTruncated) {
    EXPECT_EQ(this->armedRows({{1, 10}, {2, 20}, {4, 30}, {7, 41}}, 2), (Rows{{1, 15}, {5, 35}}));
}

// One part short of a unit, in both precisions.
TYPED_TEST(ScaleY, NothingIsRounded) {
    for (int const width : {1, 100}) {
        auto const row = [=](int sample) { return Bytes(static_cast<std::size_t>(width), sample); };
        TestFrame const src = grayPicture({row(1), row(0), row(2)});
        EXPECT_EQ(rowsOf(this->down(src, this->box, 1)), Rows{row(0)});
    }
}

TYPED_TEST(ScaleY, EqualHeightsAreIdentities) {
    TestFrame const src = ramp(FRAME_NV12, {3, 5});
    EXPECT_TRUE(samePixels(this->down(src, this->box, 5), src.frame()));
}

TYPED_TEST(ScaleY, SumsAreClamped) {
    TestKernel kernel = tapKernel({1.5F, -0.5F});
    TestFrame const src = grayPicture(column({100, 255, 0, 200, 255, 0, 9, 26}));
    EXPECT_EQ(rowsOf(this->down(src, kernel, 4)), column({22, 0, 255, 0}));
}

// Rows long enough for whole vectors, with some bytes left over.
TYPED_TEST(ScaleY, LongRowsAreAlike) {
    TestKernel kernel = tapKernel({1.5F, -0.5F});
    TestFrame const src(FRAME_GRAY8, {211, 4}, {3, Guard::AtEnd});
    Bytes const pairs[] = {{100, 255}, {0, 200}, {255, 0}, {9, 26}, {7, 1}};
    Bytes const sums{22, 0, 255, 0, 10};
    Rows expected(2);
    for (int x = 0; x < 211; ++x) {
        auto const pair = static_cast<std::size_t>(x % 5);
        auto const next = static_cast<std::size_t>((x + 1) % 5);
        src.row(0, 0)[x] = static_cast<unsigned char>(pairs[pair][0]);
        src.row(0, 1)[x] = static_cast<unsigned char>(pairs[pair][1]);
        src.row(0, 2)[x] = static_cast<unsigned char>(pairs[next][0]);
        src.row(0, 3)[x] = static_cast<unsigned char>(pairs[next][1]);
        expected[0].push_back(sums[pair]);
        expected[1].push_back(sums[next]);
    }
    EXPECT_EQ(rowsOf(this->down(src, kernel, 2)), expected);
}

// Half-height chroma counts each of its rows twice: the first two taps are those of row 0.
TYPED_TEST(ScaleY, BytesOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        FrameFormat const format = halved.format;
        if (format == FRAME_BGR_PLANAR || format == FRAME_C1_16U || format == FRAME_C1_32U) {
            continue;
        }
        SCOPED_TRACE(toString(format));
        TestFrame const src = ramp(format, {4, 4});
        Frame const result = this->down(src, this->box, 2);
        for (int plane = 0; plane < result.layout().planeCount; ++plane) {
            Bytes const first = bytesOf(src.frame(), plane, 0);
            bool const half = result.layout().plane[plane].height == 1;
            EXPECT_EQ(rowsOf(result, plane),
                      half ? Rows{first} : (Rows{plus(first, 10), plus(first, 50)}));
        }
    }
}

TYPED_TEST(ScaleY, ChromaRunsAtLumasPace) {
    TestFrame const src =
        picture(FRAME_NV12, {1, 8}, {{}, {{0, 1}, {40, 41}, {80, 81}, {200, 201}}});
    EXPECT_EQ(rowsOf(this->down(src, this->box, 4), 1), (Rows{{0, 1}, {80, 81}}));
}

// Three taps at rows 0 and 6: chroma rows 0, 0, 1 and 3, 3, 4.
TYPED_TEST(ScaleY, ChromaOfThreeTaps) {
    TestFrame const src =
        picture(FRAME_I420, {1, 12}, {{}, column({0, 96, 9, 60, 120, 9}), column(Bytes(6, 7))});
    Frame const result = this->down(src, this->box, 4);
    // 21, 22 and 21 of 64: 31.5 and 79.7; or 5461, 5462 and 5461 of 16384
    EXPECT_EQ(rowsOf(result, 1), column({31, 79}));
    EXPECT_EQ(rowsOf(result, 2), column({7, 7}));
}

// The filter's rows are 1, 2 and 5, 6. The first two are taken from the top all the same.
TYPED_TEST(ScaleY, TheFirstRowIsTakenFromTheTop) {
    TestFrame const src = grayPicture(eightRows);
    ProbeProducer probe(src.frame());
    TestKernel kernel(1.0F);
    this->scaler.reuse(kernel, probe, 2);
    EXPECT_EQ(probe.produceCalls(), 0);
    EXPECT_EQ(rowsOf(pump(this->scaler)), column({15, 65}));
    EXPECT_EQ(probe.produced(), (RowNumbers{0, 1, 5, 6}));
    EXPECT_EQ(probe.skipped(), (RowNumbers{2, 3, 4}));
}

// Windows of six rows end at row 4, the last row's five taps begin at 5: its weights, 0, 0, 13, 23,
// 28 and 20 from the row before, are one row too high and add up to 84.
TEST(ScaleYBorder, CarriedWeightsCount) {
    TestKernel kernel(4.75F);
    auto const down = [&](Bytes const& samples) {
        TestFrame const src = grayPicture(column(samples));
        ProbeProducer probe(src.frame());
        impl::ScaleY<signed char> scaler;
        scaler.reuse(kernel, probe, 8);
        return rowsOf(pump(scaler));
    };
    EXPECT_EQ(down(Bytes(10, 64)), column({64, 64, 64, 64, 64, 64, 64, 84}));
    EXPECT_EQ(down({0, 0, 0, 0, 0, 0, 0, 0, 0, 64}), column({0, 0, 0, 0, 0, 3, 20, 20}));
    EXPECT_EQ(down({0, 0, 0, 0, 0, 0, 64, 0, 0, 0}), column({0, 0, 0, 10, 13, 14, 13, 13}));
}

// Its weights, 13, 25 and 26 of 64 or as much of 16384, are those of the first row reversed.
TYPED_TEST(ScaleY, StaysAtTheLastRow) {
    TestFrame const src = grayPicture(column({0, 0, 0, 0, 128}));
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 2);
    EXPECT_TRUE(this->scaler.next());
    int const last = sizeof(TypeParam) == 1 ? 52 : 51;  // 51.2
    EXPECT_EQ(this->sample(), last);
    for (int i = 0; i < 3; ++i) {
        EXPECT_FALSE(this->scaler.next());
        EXPECT_EQ(this->sample(), last);
    }
}

TYPED_TEST(ScaleY, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_I420, {1, 4});
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 2);
    RowData none{};
    this->scaler.produce(none);
    EXPECT_EQ(probe.produceCalls(), 0);
    unsigned char v[2] = {99, 99};
    RowData row{{nullptr, nullptr, v, nullptr}};
    this->scaler.produce(row);
    EXPECT_EQ(Bytes(v, v + 2), (Bytes{0, 99}));
}

TYPED_TEST(ScaleY, LayoutHasTheSourcesWidth) {
    TestFrame const src = ramp(FRAME_NV12, {5, 7});
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 5);
    FrameLayout const& layout = this->scaler.layout();
    EXPECT_TRUE(this->scaler.initialized());
    EXPECT_EQ(layout.format, FRAME_NV12);
    EXPECT_EQ(layout.size, (Size{5, 5}));
    EXPECT_EQ(layout.plane[1].width, 3);
    EXPECT_EQ(layout.plane[1].height, 3);
    EXPECT_EQ(layout.plane[0].stride, 64);
}

TYPED_TEST(ScaleY, RefusesOtherFormatsBeforeAnyRow) {
    std::vector<FrameFormat> formats = unscalableFormats();
    formats.insert(formats.end(), {FRAME_BGR_PLANAR, FRAME_C1_16U, FRAME_C1_32U});
    for (FrameFormat const format : formats) {
        TestFrame const src = ramp(format, {4, 4});
        ProbeProducer probe(src.frame());
        this->scaler.reuse(this->box, probe, 2);
        expectException(StatusNotSupported, unsupported, [&] { pump(this->scaler); });
        EXPECT_EQ(probe.produceCalls(), 0);
    }
}

}  // namespace

}  // namespace ox::test::scale_conv_y
