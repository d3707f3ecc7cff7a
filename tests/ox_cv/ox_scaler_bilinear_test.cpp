// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_bilinear.h"

#include <gtest/gtest.h>

#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_bilinear {

namespace {

constexpr Size changed{2, 2};  // of a source of four by four, by the axes that a class scales

Rows acrossOf(Rows const& rows, int width) {
    return rowsOf(scaled<ScalerBilinearX>(grayPicture(rows).frame(), {width, 0}));
}

Rows downOf(Rows const& rows, int height) {
    return rowsOf(scaled<ScalerBilinearY>(grayPicture(rows).frame(), {0, height}));
}

// Whether planes 1 and 2 have the next chroma row in the window of the vertical classes.
bool blendsChromaRows(FrameFormat format) {
    return format >= FRAME_I420 && format <= FRAME_NV21;
}

template <class Scaler>
class ScalerBilinear : public testing::Test {};

struct Names {
    template <class Scaler>
    static std::string GetName(int) {
        return std::is_same_v<Scaler, ScalerBilinearX>   ? "X"
               : std::is_same_v<Scaler, ScalerBilinearY> ? "Y"
                                                         : "XY";
    }
};

template <class Scaler>
std::string unsupported() {
    return "Failure in ScalerBilinear" + Names::GetName<Scaler>(0) +
           "::produce(...) : unsupported frame format.";
}

using Classes = testing::Types<ScalerBilinearX, ScalerBilinearY, ScalerBilinearXY>;
TYPED_TEST_SUITE(ScalerBilinear, Classes, Names);

TYPED_TEST(ScalerBilinear, StartsUninitialized) {
    TypeParam scaler;
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().planeCount, 0);
    EXPECT_FALSE(scaler.next());
    RowData row{};
    expectStatus(StatusAssertionFailed, [&] { scaler.produce(row); });
}

TYPED_TEST(ScalerBilinear, KeepsTheProducerContract) {
    for (FrameFormat const format : {FRAME_YV12, FRAME_NV21, FRAME_BGR24, FRAME_YUV444_PLANAR}) {
        TestFrame const src = ramp(format, {7, 7});
        TypeParam scaler;
        Size size{};
        auto const rearm = [&]() -> IRowProducer& {
            arm(scaler, src.frame(), {10, 4});
            size = scaler.layout().size;
            return scaler;
        };
        rearm();
        Frame const rows = checkProducer({rearm, format, size});
        EXPECT_TRUE(samePixels(rows, scaled<TypeParam>(src.frame(), {10, 4})));
        src.expectGapsUntouched();
    }
}

TYPED_TEST(ScalerBilinear, ProduceRefusesOtherFormats) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {4, 4});
        TypeParam scaler;
        arm(scaler, src.frame(), changed);
        EXPECT_EQ(scaler.layout().format, format);
        expectException(StatusNotSupported, unsupported<TypeParam>(), [&] { pump(scaler); });
    }
    for (FrameFormat const format : unknownFormats()) {
        ClaimingProducer src = ClaimingProducer::ofFormat(format);
        TypeParam scaler;
        arm(scaler, src, changed);
        RowData row{};
        expectException(StatusNotSupported, unsupported<TypeParam>(), [&] { scaler.produce(row); });
    }
}

TYPED_TEST(ScalerBilinear, ServesFormatsInTurn) {
    TypeParam scaler;
    for (int pass = 0; pass < 2; ++pass) {
        for (Size const size : {changed, changed, Size{3, 5}}) {
            for (FrameFormat const format :
                 {FRAME_GRAY8, FRAME_I420, FRAME_C4_8U, FRAME_NV16, FRAME_BGR24}) {
                TestFrame const src = ramp(format, {4, 4});
                arm(scaler, src.frame(), size);
                EXPECT_TRUE(samePixels(pump(scaler), scaled<TypeParam>(src.frame(), size)));
            }
        }
    }
}

TYPED_TEST(ScalerBilinear, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {4, 4});
    TypeParam scaler;
    Frame dst;
    arm(scaler, src.frame(), changed);
    produceFrame(scaler, dst);
    std::uint64_t const calls = allocationCalls();
    arm(scaler, src.frame(), changed);
    produceFrame(scaler, dst);
    EXPECT_EQ(allocationCalls(), calls);
}

TYPED_TEST(ScalerBilinear, PassesTheWindowsFailureOn) {
    ClaimingProducer producer = ClaimingProducer::withoutPlanes();
    TypeParam scaler;
    expectException(StatusInputNotInitialized, "Row producer is not initialized.",
                    [&] { arm(scaler, producer, changed); });
    EXPECT_FALSE(scaler.initialized());
}

TYPED_TEST(ScalerBilinear, WindowOfAProducerLosesNoRow) {
    TestFrame const src = ramp(FRAME_I420, {4, 8});
    ProbeProducer probe(src.frame());
    TypeParam scaler;
    arm(scaler, probe, {6, 4});
    Frame const rows = pump(scaler);
    EXPECT_TRUE(samePixels(rows, scaled<TypeParam>(src.frame(), {6, 4})));
    EXPECT_TRUE(probe.skipped().empty());
}

TEST(ScalerBilinearX, WeighsBySixteenths) {
    EXPECT_EQ(acrossOf({{0, 200}}, 4), (Rows{{0, 50, 150, 200}}));  // at -1/4, 1/4, 3/4, 5/4
    EXPECT_EQ(acrossOf({{1, 2, 4, 7}}, 2), (Rows{{1, 5}}));         // 1.5 and 5.5
    EXPECT_EQ(acrossOf({{255, 255}}, 5), (Rows{{255, 255, 255, 255, 255}}));
}

// Coordinates 21845, 131071 and 240297 in width 5, of which chroma of width 3 takes the first two.
TEST(ScalerBilinearX, ChromaUsesTheFirstCoordinates) {
    TestFrame const src =
        picture(FRAME_I420, {5, 1}, {{{0, 30, 60, 90, 120}}, {{0, 90, 180}}, {{180, 180, 180}}});
    // 29.9995 and 179.999; luma at 1/3 - 1/196608, 1 + 65535/65536, 3.6666
    EXPECT_EQ(planesOf(scaled<ScalerBilinearX>(src.frame(), {3, 0})),
              (std::vector<Rows>{{{9, 59, 109}}, {{29, 179}}, {{180, 180}}}));
}

// At 1.5: chroma of width 2 ends at column 1.
TEST(ScalerBilinearX, RightEdgeIsThePlanesOwn) {
    TestFrame const src = picture(FRAME_NV16, {4, 1}, {{{0, 10, 20, 30}}, {{50, 60, 70, 80}}});
    EXPECT_EQ(planesOf(scaled<ScalerBilinearX>(src.frame(), {1, 0})),
              (std::vector<Rows>{{{15}}, {{70, 80}}}));
}

// Coordinates 0, 32767 and 76457 over elements 10 20 30 and 200, of which bytes 4 and 5 are those
// of the first: 104.997 in byte 3. At the right edge element 1 blends with itself.
TEST(ScalerBilinearX, MacroPixelElementsEndWithTheRow) {
    TestFrame const src = picture(FRAME_YUYV, {2, 1}, {{{10, 20, 30, 200}}});
    EXPECT_EQ(rowsOf(scaled<ScalerBilinearX>(src.frame(), {3, 0})),
              (Rows{{10, 20, 30, 104, 20, 30, 200, 20}}));
}

TEST(ScalerBilinearX, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 1});
        std::vector<Rows> expected;
        for (Bytes const& row : halved.averaged) {
            expected.push_back({row});
        }
        EXPECT_EQ(planesOf(scaled<ScalerBilinearX>(src.frame(), {2, 0})), expected);
    }
}

TEST(ScalerBilinearX, WideSamplesDoNotOverflow) {
    TestFrame const words(FRAME_C1_16U, {2, 1}, {1, Guard::AtEnd});
    setSamples<std::uint16_t>(words, 0, {0, 65535});
    EXPECT_EQ(samplesOf<std::uint16_t>(scaled<ScalerBilinearX>(words.frame(), {4, 0}), 0),
              (std::vector<std::uint16_t>{0, 16383, 49151, 65535}));
    TestFrame const longs(FRAME_C1_32U, {2, 1}, {1, Guard::AtEnd});
    setSamples<std::uint32_t>(longs, 0, {0, 0xFFFFFFFF});
    EXPECT_EQ(samplesOf<std::uint32_t>(scaled<ScalerBilinearX>(longs.frame(), {4, 0}), 0),
              (std::vector<std::uint32_t>{0, 0x3FFFFFFF, 0xBFFFFFFF, 0xFFFFFFFF}));
}

TEST(ScalerBilinearX, CopiesAnyFormatWhileTheWidthStays) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {4, 3});
        EXPECT_TRUE(samePixels(scaled<ScalerBilinearX>(src.frame(), {4, 0}), src.frame()));
    }
}

TEST(ScalerBilinearX, StopsAtTheSourcesLastRow) {
    TestFrame const src = grayPicture({{0, 10}, {20, 30}, {40, 50}});
    ScalerBilinearX scaler;
    scaler.reuse(src.frame(), 1);
    EXPECT_TRUE(scaler.next());
    EXPECT_TRUE(scaler.next());
    EXPECT_FALSE(scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(byte, 45);
}

TEST(ScalerBilinearY, WeighsBySixteenths) {
    EXPECT_EQ(downOf({{0, 200}, {200, 0}}, 4), (Rows{{0, 200}, {50, 150}, {150, 50}, {200, 0}}));
    EXPECT_EQ(downOf({{1}, {2}, {4}, {7}}, 2), (Rows{{1}, {5}}));
    EXPECT_EQ(downOf({{77, 88}}, 3), (Rows{{77, 88}, {77, 88}, {77, 88}}));
}

TEST(ScalerBilinearY, StaysAtTheLastRow) {
    TestFrame const src = grayPicture({{1}, {2}, {4}, {7}});
    ScalerBilinearY scaler;
    scaler.reuse(src.frame(), 2);
    EXPECT_TRUE(scaler.next());
    unsigned char byte = 0;
    RowData row{{&byte, nullptr, nullptr, nullptr}};
    for (int i = 0; i < 2; ++i) {
        EXPECT_FALSE(scaler.next());
        scaler.produce(row);
        EXPECT_EQ(byte, 5);
    }
}

// Rows 0 and 1, 2 and 3 of a ramp are 10 and 50 above row 0 in the mean. Planes 1 and 2 blend in
// 4:2:0 formats only, and take the upper row elsewhere.
TEST(ScalerBilinearY, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 4});
        Frame const result = scaled<ScalerBilinearY>(src.frame(), {0, 2});
        Bytes const luma = bytesOf(src.frame(), 0, 0);
        EXPECT_EQ(rowsOf(result, 0), (Rows{plus(luma, 10), plus(luma, 50)}));
        for (int plane = 1; plane < result.layout().planeCount; ++plane) {
            Bytes const first = bytesOf(src.frame(), plane, 0);
            EXPECT_EQ(rowsOf(result, plane), blendsChromaRows(halved.format)
                                                 ? (Rows{plus(first, 10)})
                                                 : (Rows{first, plus(first, 40)}));
        }
    }
}

TEST(ScalerBilinearY, CopiesAnyFormatWhileTheHeightStays) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {3, 4});
        EXPECT_TRUE(samePixels(scaled<ScalerBilinearY>(src.frame(), {0, 4}), src.frame()));
    }
}

// Rows 1/4 and 7/4: the window has three rows, so chroma row 1, at window row 2, is in reach of
// window row 0 alone.
TEST(ScalerBilinearY, ChromaOfThreeRows) {
    TestFrame const src =
        picture(FRAME_I420, {1, 3}, {{{0}, {40}, {80}}, {{0}, {100}}, {{100}, {0}}});
    EXPECT_EQ(planesOf(scaled<ScalerBilinearY>(src.frame(), {0, 2})),
              (std::vector<Rows>{{{10}, {70}}, {{25}}, {{75}}}));
}

// Rows 10922, 98303 and 185684. The chroma of the last belongs to window row 2 of 4: no row is left
// below it.
TEST(ScalerBilinearY, ChromaAtTheBottomIsNotBlended) {
    TestFrame const src = picture(
        FRAME_NV12, {2, 4}, {{{0, 0}, {60, 60}, {120, 120}, {180, 180}}, {{0, 240}, {240, 0}}});
    // 9.999, 89.999, 169.999; chroma 39.997 and 200.002
    EXPECT_EQ(planesOf(scaled<ScalerBilinearY>(src.frame(), {0, 3})),
              (std::vector<Rows>{{{9, 9}, {89, 89}, {169, 169}}, {{39, 200}, {240, 0}}}));
}

// Both planes of the destination have one row, so the window has two.
TEST(ScalerBilinearY, OneRowOf420IsNotTakenForSubsampled) {
    TestFrame const src = picture(FRAME_I420, {1, 4}, {{{0}, {10}, {20}, {30}}, {{50}, {90}}});
    Frame const result = scaled<ScalerBilinearY>(src.frame(), {0, 1});
    EXPECT_EQ(rowsOf(result, 0), (Rows{{15}}));
    EXPECT_EQ(rowsOf(result, 1), (Rows{{50}}));  // frame row 1 shows chroma row 0
}

// Rows 2.5 and 8.5.
TEST(ScalerBilinearY, PassesRowsByThatItDoesNotNeed) {
    TestFrame const src = ramp(FRAME_GRAY8, {1, 12});
    ProbeProducer probe(src.frame());
    ScalerBilinearY scaler;
    scaler.reuse(probe, 2);
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{50}, {170}}));
    EXPECT_EQ(probe.produced(), (std::vector<int>{2, 3, 8, 9}));
    EXPECT_EQ(probe.skipped(), (std::vector<int>{0, 1, 4, 5, 6, 7}));
}

TEST(ScalerBilinearXY, BlendsColumnsBeforeRows) {
    auto const middle = [](Rows const& rows) {
        return rowsOf(scaled<ScalerBilinearXY>(grayPicture(rows).frame(), {1, 1}));
    };
    EXPECT_EQ(middle({{1, 1}, {0, 2}}), (Rows{{1}}));  // 1 and 1; rows first, 0 and 1, give 0
    EXPECT_EQ(middle({{0, 1}, {2, 1}}), (Rows{{0}}));  // 0 and 1, though the four have mean 1
}

TEST(ScalerBilinearXY, WeighsBothAxes) {
    TestFrame const src = grayPicture({{0, 160}, {80, 240}});
    // columns 0, 1/4, 3/4, 1 and the same rows
    EXPECT_EQ(
        rowsOf(scaled<ScalerBilinearXY>(src.frame(), {4, 4})),
        (Rows{{0, 40, 120, 160}, {20, 60, 140, 180}, {60, 100, 180, 220}, {80, 120, 200, 240}}));
}

// Rows that are doubled need no tables, and mustn't take those of another picture.
TEST(ScalerBilinearXY, DoublesRowsBehindOtherPictures) {
    Random random(3);
    for (int const width : {21, 40, 70, 140}) {
        for (FrameFormat const format : {FRAME_GRAY8, FRAME_C2_8U}) {
            SCOPED_TRACE(describe(format, {width, 59}));
            ScalerBilinearXY scaler;
            TestFrame const before(FRAME_C4_8U, {width, 59}, random);
            scaler.reuse(before.frame(), {2 * width + 1, 8});
            pump(scaler);
            TestFrame const src(format, {width, 59}, random);
            scaler.reuse(src.frame(), {2 * width, 8});
            EXPECT_TRUE(
                samePixels(pump(scaler), scaled<ScalerBilinearXY>(src.frame(), {2 * width, 8})));
        }
    }
}

TEST(ScalerBilinearXY, ElementsOfEachFormat) {
    for (HalvedFormat const& halved : halvedFormats()) {
        SCOPED_TRACE(toString(halved.format));
        TestFrame const src = ramp(halved.format, {4, 4});
        Frame const result = scaled<ScalerBilinearXY>(src.frame(), {2, 2});
        Bytes const luma = halved.averaged[0];
        EXPECT_EQ(rowsOf(result, 0), (Rows{plus(luma, 10), plus(luma, 50)}));
        for (int plane = 1; plane < result.layout().planeCount; ++plane) {
            Bytes const first = halved.averaged[static_cast<std::size_t>(plane)];
            EXPECT_EQ(rowsOf(result, plane), blendsChromaRows(halved.format)
                                                 ? (Rows{plus(first, 10)})
                                                 : (Rows{first, plus(first, 40)}));
        }
    }
}

TEST(ScalerBilinearXY, HasNoWayAroundForEqualSizes) {
    TestFrame const gray = ramp(FRAME_GRAY8, {3, 3});
    EXPECT_TRUE(samePixels(scaled<ScalerBilinearXY>(gray.frame(), {3, 3}), gray.frame()));
    TestFrame const rgb = ramp(FRAME_RGB24, {3, 3});
    expectException(StatusNotSupported, unsupported<ScalerBilinearXY>(), [&] {
        scaled<ScalerBilinearXY>(rgb.frame(), {3, 3});
    });
}

}  // namespace

}  // namespace ox::test::scaler_bilinear
