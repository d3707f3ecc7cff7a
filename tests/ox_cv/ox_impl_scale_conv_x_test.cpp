// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_conv_x.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "ox_cv/scale_x_rows.h"

namespace ox::test {

namespace {

constexpr char unsupported[] = "Failure in ScaleX::produce(...) : unsupported format.";

template <class Weight>
class ScaleX : public ScaleXTest<Weight> {};

using Weights = testing::Types<signed char, short>;
TYPED_TEST_SUITE(ScaleX, Weights);

bool isTaken(FrameFormat format) {
    return format != FRAME_BGR_PLANAR && format != FRAME_YUYV && format != FRAME_UYVY;
}

TYPED_TEST(ScaleX, SumsAreTruncated) {
    TestFrame const src = grayPicture({{1, 2, 4, 7}, {0, 255, 255, 255}});
    EXPECT_EQ(this->armedRows(src, 2), (Rows{{1, 5}, {127, 255}}));
}

// One part short of a unit, in both precisions.
TYPED_TEST(ScaleX, NothingIsRounded) {
    TestFrame const bytes = picture(FRAME_C3_8U, {3, 1}, {{{1, 1, 1, 0, 0, 0, 2, 2, 2}}});
    EXPECT_EQ(rowsOf(this->across(bytes.frame(), this->box, 1)), (Rows{{0, 0, 0}}));
    TestFrame const words(FRAME_C1_16U, {3, 1}, {2, Guard::AtEnd});
    setSamples<std::uint16_t>(words, 0, {1, 0, 2});
    EXPECT_EQ(samplesOf<std::uint16_t>(this->across(words.frame(), this->box, 1), 0),
              (std::vector<std::uint16_t>{0}));
}

TYPED_TEST(ScaleX, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        if (!isTaken(halved.format)) {
            continue;
        }
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 1});
        std::vector<Rows> expected;
        for (Bytes const& row : halved.averaged) {
            expected.push_back({row});
        }
        EXPECT_EQ(planesOf(this->across(src.frame(), this->box, 2)), expected);
    }
}

TYPED_TEST(ScaleX, EqualWidthsAreIdentities) {
    for (HalvedFormat const& format : halvedFormats()) {
        if (isTaken(format.format)) {
            TestFrame const src = ramp(format.format, {5, 3});
            EXPECT_TRUE(samePixels(this->across(src.frame(), this->box, 5), src.frame()));
        }
    }
}

TYPED_TEST(ScaleX, SumsAreClamped) {
    TestKernel kernel = tapKernel({1.5F, -0.5F});
    TestFrame const src = grayPicture({{100, 255, 0, 200, 255, 0, 9, 26}});
    EXPECT_EQ(rowsOf(this->across(src.frame(), kernel, 4)), (Rows{{22, 0, 255, 0}}));
    TestFrame const words(FRAME_C1_16U, {6, 1}, {2, Guard::AtEnd});
    setSamples<std::uint16_t>(words, 0, {65535, 0, 0, 65535, 40000, 20000});
    EXPECT_EQ(samplesOf<std::uint16_t>(this->across(words.frame(), kernel, 3), 0),
              (std::vector<std::uint16_t>{65535, 0, 50000}));
    TestFrame const longs(FRAME_C1_32U, {6, 1}, {4, Guard::AtEnd});
    setSamples<std::uint32_t>(longs, 0, {4294967295, 0, 0, 4294967295, 3000000000, 1000000000});
    EXPECT_EQ(samplesOf<std::uint32_t>(this->across(longs.frame(), kernel, 3), 0),
              (std::vector<std::uint32_t>{4294967295, 0, 4000000000}));
}

class ScaleXOfShorts : public ScaleXTest<short> {};

// Weights that nearly cancel are large. The 66 taps of about 31,960 that pixel 33 has on white add
// up to some 32,800 units.
TEST_F(ScaleXOfShorts, SumsOfThousandsAreClamped) {
    TestKernel kernel(132.0F, [](float x) { return x < 0 ? 1.0F : -(1.0F - 0.575F / 66); });
    Bytes row(134);
    std::fill_n(row.begin(), 67, std::uint8_t{255});
    TestFrame const src = grayPicture({row});
    EXPECT_EQ(rowsOf(across(src.frame(), kernel, 67)).front()[33], 255);
}

// Rows long enough for whole vectors, with some pixels left over.
TYPED_TEST(ScaleX, LongRowsAreAlike) {
    TestKernel kernel = tapKernel({1.5F, -0.5F});
    Bytes const pairs{100, 255, 0, 200, 255, 0, 9, 26};
    Bytes const sums{22, 0, 255, 0};
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_C2_8U, FRAME_BGR24, FRAME_C4_8U}) {
        SCOPED_TRACE(toString(format));
        TestFrame const src(format, {154, 1}, {3, Guard::AtEnd});
        int const channels = src.layout().plane[0].channels;
        Bytes expected;
        for (int x = 0; x < 154; ++x) {
            int const sample = pairs[static_cast<std::size_t>(x % 8)];
            std::fill_n(src.row(0, 0) + x * channels, channels, static_cast<unsigned char>(sample));
            if (x % 2 == 0) {
                expected.insert(expected.end(), static_cast<std::size_t>(channels),
                                sums[static_cast<std::size_t>(x / 2 % 4)]);
            }
        }
        EXPECT_EQ(rowsOf(this->across(src.frame(), kernel, 77)), (Rows{expected}));
    }
}

// 65535 x 49152 is beyond 31 bits, though not what is left of it after the last tap.
TYPED_TEST(ScaleX, SumsOfWordsWrapIn32Bits) {
    TestKernel kernel = tapKernel({1.5F, 1.5F, -2.0F});
    TestFrame const src(FRAME_C1_16U, {6, 1}, {2, Guard::AtEnd});
    setSamples<std::uint16_t>(src, 0, {65535, 65535, 0, 65535, 65535, 65535});
    std::uint16_t const wrapped = sizeof(TypeParam) == 1 ? 65535 : 0;
    EXPECT_EQ(samplesOf<std::uint16_t>(this->across(src.frame(), kernel, 2), 0),
              (std::vector<std::uint16_t>{wrapped, 65535}));
}

// 5 columns to 3, chroma's 3 to 2: its own weights are 2/3, 1/3 and the reverse.
TYPED_TEST(ScaleX, ChromaHasItsOwnWeights) {
    TestFrame const src =
        picture(FRAME_I420, {5, 1}, {{{9, 9, 9, 9, 9}}, {{0, 96, 0}}, {{96, 0, 192}}});
    bool const bytes = sizeof(TypeParam) == 1;  // 43 of 64, and 10923 of 16384: 129 and 128.004
    EXPECT_EQ(planesOf(this->across(src.frame(), this->box, 3)),
              (std::vector<Rows>{{{9, 9, 9}}, {{31, 31}}, {{64, bytes ? 129 : 128}}}));
}

TYPED_TEST(ScaleX, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_I420, {4, 2});
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

TYPED_TEST(ScaleX, PassesRowsOneForOne) {
    TestFrame const src = grayPicture({{0, 10}, {20, 30}, {40, 50}});
    ProbeProducer probe(src.frame());
    this->scaler.reuse(this->box, probe, 1);
    EXPECT_EQ(probe.produceCalls(), 0);
    EXPECT_TRUE(this->scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    this->scaler.produce(row);
    EXPECT_EQ(byte, 25);
    EXPECT_EQ(probe.produced(), (std::vector<int>{1}));
    EXPECT_EQ(probe.skipped(), (std::vector<int>{0}));
    EXPECT_TRUE(this->scaler.next());
    EXPECT_FALSE(this->scaler.next());
    this->scaler.produce(row);
    EXPECT_EQ(byte, 45);
}

TYPED_TEST(ScaleX, LayoutHasTheSourcesHeight) {
    TestFrame const src = ramp(FRAME_I420, {7, 5});
    this->scaler.reuse(this->box, src.frame(), 5);
    FrameLayout const& layout = this->scaler.layout();
    EXPECT_EQ(layout.format, FRAME_I420);
    EXPECT_EQ(layout.size, (Size{5, 5}));
    EXPECT_EQ(layout.plane[1].width, 3);
    EXPECT_EQ(layout.plane[1].height, 3);
    EXPECT_EQ(layout.plane[0].stride, 64);
}

TYPED_TEST(ScaleX, RefusesOtherFormats) {
    std::vector<FrameFormat> formats = unscalableFormats();
    formats.insert(formats.end(), {FRAME_BGR_PLANAR, FRAME_YUYV, FRAME_UYVY});
    for (FrameFormat const format : formats) {
        TestFrame const src = ramp(format, {4, 2});
        ProbeProducer probe(src.frame());
        this->scaler.reuse(this->box, probe, 2);
        expectException(StatusNotSupported, unsupported, [&] { pump(this->scaler); });
        RowData none{};
        expectException(StatusNotSupported, unsupported, [&] { this->scaler.produce(none); });
        EXPECT_EQ(probe.produceCalls(), 0);
    }
}

}  // namespace

}  // namespace ox::test
