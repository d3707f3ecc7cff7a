// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler.h"

#include <gtest/gtest.h>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler {

namespace {

constexpr ScaleMethod methods[] = {OX_SCALE_NEAREST, OX_SCALE_BILINEAR, OX_SCALE_AREA};
constexpr auto unknown = static_cast<ScaleMethod>(9);
constexpr char unknownText[] = "Failure in Scaler::reuse(...) : parameter 'method' is invalid 9.";

Frame scaledBy(Frame const& src, Size size, ScaleMethod method) {
    Scaler scaler;
    scaler.reuse(src, size, method);
    return pump(scaler);
}

TEST(Scaler, MethodsHaveTheirNumbers) {
    EXPECT_EQ(OX_SCALE_NEAREST, 0U);
    EXPECT_EQ(OX_SCALE_BILINEAR, 1U);
    EXPECT_EQ(OX_SCALE_AREA, 2U);
    EXPECT_EQ(OX_SCALER_FIXED_POINT_8S, 8U);
    EXPECT_EQ(OX_SCALER_FIXED_POINT_16S, 16U);
}

// The sense is opposite to that of all other classes.
TEST(Scaler, IsInitializedUntilItIsArmed) {
    TestFrame const src = ramp(FRAME_GRAY8, {2, 2});
    for (Size const size : {Size{2, 2}, Size{1, 1}}) {
        Scaler scaler;
        EXPECT_TRUE(scaler.initialized());
        scaler.reuse(src.frame(), size, OX_SCALE_NEAREST);
        EXPECT_FALSE(scaler.initialized());
    }
}

TEST(Scaler, ForwardsNothingBeforeTheFirstReuse) {
    constexpr char text[] = "Scaler is not initialized. Call Scaler::reuse(...) first.";
    TestFrame const src = ramp(FRAME_GRAY8, {2, 2});
    Scaler scaler;
    RowData row{};
    for (int pass = 0; pass < 2; ++pass) {
        expectException(StatusNotInitialized, text, [&] { scaler.layout(); });
        expectException(StatusNotInitialized, text, [&] { scaler.produce(row); });
        expectException(StatusNotInitialized, text, [&] { scaler.next(); });
        // a refused method arms nothing
        expectException(StatusInvalidParameter, unknownText, [&] {
            scaler.reuse(src.frame(), {1, 1}, unknown);
        });
        EXPECT_TRUE(scaler.initialized());
    }
}

TEST(Scaler, EqualSizesAreCopiedByAnyMethod) {
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {5, 3});
        for (ScaleMethod const method : {OX_SCALE_NEAREST, OX_SCALE_BILINEAR, OX_SCALE_AREA,
                                         unknown, static_cast<ScaleMethod>(0xFFFFFFFFU)}) {
            EXPECT_TRUE(samePixels(scaledBy(src.frame(), {5, 3}, method), src.frame()));
            ProbeProducer probe(src.frame());
            Scaler scaler;
            scaler.reuse(probe, {5, 3}, method);
            EXPECT_TRUE(samePixels(pump(scaler), src.frame()));
        }
    }
}

// Each concrete scaler refuses FRAME_RGB24 under its own name, where it has to compute.
TEST(Scaler, PicksByMethodAndAxes) {
    struct {
        ScaleMethod method;
        Size size;
        char const* name;
    } const cases[] = {
        {OX_SCALE_NEAREST, {3, 4}, "ScalerNearestNeighbor"},
        {OX_SCALE_NEAREST, {3, 3}, "ScalerNearestNeighbor"},
        {OX_SCALE_BILINEAR, {3, 4}, "ScalerBilinearX"},
        {OX_SCALE_BILINEAR, {4, 3}, "ScalerBilinearY"},
        {OX_SCALE_BILINEAR, {3, 3}, "ScalerBilinearXY"},
        {OX_SCALE_BILINEAR, {9, 9}, "ScalerBilinearXY"},
        {OX_SCALE_AREA, {3, 4}, "ScalerAreaX"},
        {OX_SCALE_AREA, {4, 3}, "ScalerAreaY"},
        {OX_SCALE_AREA, {3, 3}, "ScalerAreaY"},
    };
    TestFrame const src = ramp(FRAME_RGB24, {4, 4});
    for (auto const& each : cases) {
        Scaler scaler;
        scaler.reuse(src.frame(), each.size, each.method);
        expectException(
            StatusNotSupported,
            std::string("Failure in ") + each.name + "::produce(...) : unsupported frame format.",
            [&] { pump(scaler); });
    }
}

// The last link of the chain, before it asks the first one for a row.
TEST(Scaler, AreaInBothAxesRefusesFormatsByItsLastLink) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {4, 4});
        ProbeProducer probe(src.frame());
        Scaler scaler;
        scaler.reuse(probe, {3, 3}, OX_SCALE_AREA);
        expectException(StatusNotSupported,
                        "Failure in ScalerAreaY::produce(...) : unsupported frame format.",
                        [&] { pump(scaler); });
        EXPECT_EQ(probe.produceCalls(), 0);
        EXPECT_EQ(probe.nextCalls(), 0);
    }
}

TEST(Scaler, NearestPassesAnyFormatWhileTheWidthStays) {
    TestFrame const src = ramp(FRAME_RGB24, {2, 4});
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {2, 2}, OX_SCALE_NEAREST)),
              (Rows{bytesOf(src.frame(), 0, 1), bytesOf(src.frame(), 0, 3)}));
}

TEST(Scaler, EachMethodsPixels) {
    TestFrame const src = grayPicture({{0, 100, 20, 60}, {10, 30, 70, 40}});
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {2, 1}, OX_SCALE_NEAREST)), (Rows{{30, 40}}));
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {2, 1}, OX_SCALE_BILINEAR)), (Rows{{35, 47}}));
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {1, 2}, OX_SCALE_BILINEAR)), (Rows{{60}, {50}}));
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {1, 2}, OX_SCALE_AREA)), (Rows{{45}, {37}}));
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {4, 1}, OX_SCALE_AREA)), (Rows{{5, 65, 45, 50}}));
}

// Columns first, each truncated: 1 and 1, then 1. Rows first would give 0 and 1, then 0.
TEST(Scaler, AreaInBothAxesChainsColumnsAndRows) {
    TestFrame const src = grayPicture({{1, 1}, {0, 2}});
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {1, 1}, OX_SCALE_AREA)), (Rows{{1}}));
    TestFrame const flat = grayPicture({{255, 255, 255}, {255, 255, 255}, {255, 255, 255}});
    // weights of 16 bits: 255 x 32767 / 32768 is 254; that of 254 is 253
    EXPECT_EQ(rowsOf(scaledBy(flat.frame(), {2, 2}, OX_SCALE_AREA)),
              (Rows{{255, 254}, {254, 253}}));
}

TEST(Scaler, AreaScalesUp) {
    TestFrame const src = grayPicture({{0, 100}, {50, 151}});
    // columns {0, 50, 100} and {50, 100, 151}; the middle row is their mean
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {3, 3}, OX_SCALE_AREA)),
              (Rows{{0, 50, 100}, {25, 75, 125}, {50, 100, 151}}));
    EXPECT_EQ(rowsOf(scaledBy(src.frame(), {3, 1}, OX_SCALE_AREA)), (Rows{{25, 75, 125}}));
}

TEST(Scaler, BilinearAcrossStopsAtTheSourcesLastRow) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 3});
    Scaler scaler;
    scaler.reuse(src.frame(), {2, 3}, OX_SCALE_BILINEAR);
    EXPECT_TRUE(scaler.next());
    EXPECT_TRUE(scaler.next());
    EXPECT_FALSE(scaler.next());
}

TEST(Scaler, KeepsTheProducerContract) {
    for (ScaleMethod const method : methods) {
        for (Size const size : {Size{4, 5}, Size{9, 6}, Size{6, 7}}) {
            TestFrame const src = ramp(FRAME_I420, {6, 6});
            Scaler scaler;
            auto const rearm = [&]() -> IRowProducer& {
                // a chain's second window doesn't skip rows that it counted in an earlier stream
                scaler.reuse(src.frame(), size, method);
                return scaler;
            };
            Skips const skips = method == OX_SCALE_AREA ? Skips::None : Skips::Any;
            Frame const rows = checkProducer({rearm, FRAME_I420, size, skips});
            EXPECT_TRUE(samePixels(rows, scaledBy(src.frame(), size, method)));
            src.expectGapsUntouched();
        }
    }
}

TEST(Scaler, ScalesProducers) {
    for (ScaleMethod const method : methods) {
        for (Size const size : {Size{3, 6}, Size{6, 5}, Size{4, 8}}) {
            TestFrame const src = ramp(FRAME_BGR24, {6, 6});
            ProbeProducer probe(src.frame());
            Scaler scaler;
            scaler.reuse(probe, size, method);
            EXPECT_TRUE(samePixels(pump(scaler), scaledBy(src.frame(), size, method)));
        }
    }
}

TEST(Scaler, ServesMethodsAndSourcesInTurn) {
    Scaler scaler;
    for (int pass = 0; pass < 2; ++pass) {
        for (FrameFormat const format : {FRAME_GRAY8, FRAME_NV12, FRAME_C1_16U}) {
            for (ScaleMethod const method : methods) {
                for (Size const size :
                     {Size{3, 4}, Size{4, 3}, Size{3, 3}, Size{4, 4}, Size{6, 6}}) {
                    TestFrame const src = ramp(format, {4, 4});
                    scaler.reuse(src.frame(), size, method);
                    EXPECT_TRUE(samePixels(pump(scaler), scaledBy(src.frame(), size, method)))
                        << describe(format, size) << " by " << method;
                }
            }
        }
    }
}

TEST(Scaler, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {6, 6});
    for (ScaleMethod const method : methods) {
        Scaler scaler;
        Frame dst;
        scaler.reuse(src.frame(), {4, 4}, method);
        produceFrame(scaler, dst);
        std::uint64_t const calls = allocationCalls();
        scaler.reuse(src.frame(), {4, 4}, method);
        produceFrame(scaler, dst);
        EXPECT_EQ(allocationCalls(), calls);
    }
}

TEST(Scaler, RefusesUnknownMethods) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer producer = ClaimingProducer::ofSize({4, 4});
    Scaler scaler;
    for (Size const size : {Size{3, 4}, Size{4, 3}, Size{8, 8}}) {
        expectException(StatusInvalidParameter, unknownText,
                        [&] { scaler.reuse(src.frame(), size, unknown); });
        expectException(StatusInvalidParameter, unknownText,
                        [&] { scaler.reuse(producer, size, unknown); });
    }
    expectException(StatusInvalidParameter,
                    "Failure in Scaler::reuse(...) : parameter 'method' is invalid 3.", [&] {
                        scaler.reuse(src.frame(), {1, 1}, static_cast<ScaleMethod>(3));
                    });
    expectException(StatusInvalidParameter,
                    "Failure in Scaler::reuse(...) : parameter 'method' is invalid 4294967295.",
                    [&] {
                        scaler.reuse(src.frame(), {1, 1}, static_cast<ScaleMethod>(0xFFFFFFFFU));
                    });
}

TEST(Scaler, RefusedMethodLeavesTheScalerThatWasArmed) {
    TestFrame const src = grayPicture({{1, 2}, {3, 4}});
    Scaler scaler;
    scaler.reuse(src.frame(), {1, 1}, OX_SCALE_NEAREST);
    expectException(StatusInvalidParameter, unknownText, [&] {
        scaler.reuse(src.frame(), {3, 3}, unknown);
    });
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().size, (Size{1, 1}));
    EXPECT_EQ(rowsOf(pump(scaler)), (Rows{{4}}));
}

TEST(Scaler, RefusedMethodClearsTheCopier) {
    TestFrame const src = grayPicture({{1, 2}, {3, 4}});
    Scaler scaler;
    scaler.reuse(src.frame(), {2, 2}, OX_SCALE_NEAREST);
    expectException(StatusInvalidParameter, unknownText, [&] {
        scaler.reuse(src.frame(), {3, 3}, unknown);
    });
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().planeCount, 0);
    EXPECT_EQ(scaler.layout().size, (Size{0, 0}));
    EXPECT_FALSE(scaler.next());
    unsigned char bytes[2] = {99, 99};
    RowData row{{bytes, nullptr, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(bytes[0], 99);
}

TEST(Scaler, RefusesBadArguments) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer producer = ClaimingProducer::ofSize({4, 4});
    ClaimingProducer thin = ClaimingProducer::ofSize({0, 4});
    Scaler scaler;
    expectException(StatusAssertionFailed, "Assertion failed: src_frame.initialized()", [&] {
        scaler.reuse(emptyFrame(), {0, 0}, unknown);
    });
    expectException(StatusAssertionFailed, "Assertion failed: !src_producer.layout().size.empty()",
                    [&] {
                        scaler.reuse(thin, {0, 0}, unknown);
                    });
    for (Size const size : {Size{0, 4}, Size{4, 0}, Size{-4, 4}, Size{4, -4}}) {
        expectException(StatusAssertionFailed, "Assertion failed: !dst_size.empty()",
                        [&] { scaler.reuse(src.frame(), size, unknown); });
        expectException(StatusAssertionFailed, "Assertion failed: !dst_size.empty()",
                        [&] { scaler.reuse(producer, size, unknown); });
    }
    EXPECT_TRUE(scaler.initialized());
}

TEST(Scaler, ConcreteFailuresPass) {
    TestFrame const flat = ramp(FRAME_GRAY8, {2, 1});
    ProbeProducer probe(flat.frame());
    TestFrame const wide(FRAME_GRAY8, {32768, 1});
    Scaler scaler;
    expectException(StatusOutOfRange, windowSizeOutOfRange, [&] {
        scaler.reuse(probe, {2, 2}, OX_SCALE_BILINEAR);
    });
    expectException(StatusAssertionFailed,
                    "Assertion failed: _src_xs[dst_width - 1] < (src_size.width << SHIFT)", [&] {
                        scaler.reuse(wide.frame(), {1, 1}, OX_SCALE_BILINEAR);
                    });
    for (ScaleMethod const method : methods) {
        for (Size const size : {Size{2, 4}, Size{4, 2}, Size{2, 2}}) {
            ClaimingProducer producer = ClaimingProducer::withoutPlanes();
            expectException(StatusInputNotInitialized, "Row producer is not initialized.",
                            [&] { scaler.reuse(producer, size, method); });
        }
    }
    EXPECT_TRUE(scaler.initialized());
}

TEST(Scaler, AreaAcrossRefusesLongSamplesBeforeRowsAreSummed) {
    TestFrame const src = ramp(FRAME_C1_32U, {4, 4});
    Scaler scaler;
    scaler.reuse(src.frame(), {2, 2}, OX_SCALE_AREA);
    expectException(StatusNotSupported,
                    "Failure in ScalerAreaX::produce(...) : unsupported frame format.",
                    [&] { pump(scaler); });
}

}  // namespace

}  // namespace ox::test::scaler
