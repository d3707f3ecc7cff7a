// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What ScalerAreaX and ScalerAreaY share: how they are armed, what they keep, what they refuse.
#include <gtest/gtest.h>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/scaler_rows.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test::scaler_area_reuse {

namespace {

constexpr ScalerPrecision bits8 = OX_SCALER_FIXED_POINT_8S;
constexpr ScalerPrecision bits16 = OX_SCALER_FIXED_POINT_16S;
constexpr Size halves{2, 2};  // of a source of four by four

template <class Scaler>
class ScalerArea : public testing::Test {
  protected:
    static constexpr bool across = std::is_same_v<Scaler, ScalerAreaX>;

    static std::string unsupported() {
        return std::string("Failure in ScalerArea") + (across ? "X" : "Y") +
               "::produce(...) : unsupported frame format.";
    }

    // Four samples along the axis.
    static TestFrame line(Bytes const& samples) {
        Rows rows{samples};
        if (!across) {
            rows = {{samples[0]}, {samples[1]}, {samples[2]}, {samples[3]}};
        }
        return grayPicture(rows);
    }

    static Bytes samplesAlong(Frame const& frame) {
        Bytes samples;
        for (Bytes const& row : rowsOf(frame)) {
            samples.insert(samples.end(), row.begin(), row.end());
        }
        return samples;
    }
};

struct Names {
    template <class Scaler>
    static std::string GetName(int) {
        return std::is_same_v<Scaler, ScalerAreaX> ? "X" : "Y";
    }
};

using Classes = testing::Types<ScalerAreaX, ScalerAreaY>;
TYPED_TEST_SUITE(ScalerArea, Classes, Names);

TYPED_TEST(ScalerArea, StartsUninitialized) {
    TypeParam scaler;
    EXPECT_FALSE(scaler.initialized());
    EXPECT_EQ(scaler.layout().planeCount, 0);
    EXPECT_FALSE(scaler.next());
    RowData row{};
    expectStatus(StatusAssertionFailed, [&] { scaler.produce(row); });
}

TYPED_TEST(ScalerArea, KeepsTheProducerContract) {
    for (FrameFormat const format : {FRAME_I420, FRAME_NV12, FRAME_C4_8U, FRAME_YUV444_PLANAR}) {
        for (Size const wanted : {Size{3, 4}, Size{10, 11}}) {
            TestFrame const src = ramp(format, {7, 7});
            TypeParam scaler;
            auto const rearm = [&]() -> IRowProducer& {
                arm(scaler, src.frame(), wanted);
                return scaler;
            };
            rearm();
            Frame const rows = checkProducer({rearm, format, scaler.layout().size});
            rearm();
            TestFrame again(format, rows.size());
            produceFrame(scaler, again.frame());
            EXPECT_TRUE(samePixels(again.frame(), rows));
            src.expectGapsUntouched();
        }
    }
}

TYPED_TEST(ScalerArea, ProduceRefusesOtherFormats) {
    for (FrameFormat const format : unscalableFormats()) {
        TestFrame const src = ramp(format, {4, 4});
        TypeParam scaler;
        arm(scaler, src.frame(), halves);
        expectException(StatusNotSupported, this->unsupported(), [&] { pump(scaler); });
    }
    for (FrameFormat const format : unknownFormats()) {
        ClaimingProducer src = ClaimingProducer::ofFormat(format);
        TypeParam scaler;
        arm(scaler, src, halves);
        RowData row{};
        expectException(StatusNotSupported, this->unsupported(), [&] { scaler.produce(row); });
    }
}

TYPED_TEST(ScalerArea, WritesLongSamplesAndThenRefusesThem) {
    TestFrame const src(FRAME_C1_32U, {4, 4}, {3, Guard::AtEnd});
    for (int y = 0; y < 4; ++y) {
        setSamples<std::uint32_t>(src, y, {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFF});
    }
    TypeParam scaler;
    arm(scaler, src.frame(), halves);
    Size const size = scaler.layout().size;
    TestFrame dst(FRAME_C1_32U, size, {3, Guard::AtEnd});
    expectException(StatusNotSupported, this->unsupported(),
                    [&] { produceFrame(scaler, dst.frame()); });
    EXPECT_EQ(samplesOf<std::uint32_t>(dst.frame(), 0),
              std::vector<std::uint32_t>(static_cast<std::size_t>(size.width), 0xFFFFFFFF));
    EXPECT_EQ(bytesOf(dst.frame(), 0, 1), Bytes(dst.layout().plane[0].rowBytes, 0));
    dst.expectGapsUntouched();
}

// Weights of 16384 under a shift of 7: 128 times the sum, in a byte.
TYPED_TEST(ScalerArea, WeightsOutliveAChangeOfPrecision) {
    TestFrame const src = this->line({1, 2, 3, 5});
    TestFrame const other = this->line({1, 0, 0, 0});
    TypeParam scaler;
    arm(scaler, src.frame(), halves, bits16);
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{1, 4}));
    arm(scaler, src.frame(), halves, bits8);
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{384 - 256, 0}));
    arm(scaler, other.frame(), halves, bits8);
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{128, 0}));
    arm(scaler, src.frame(), {1, 1}, bits8);                  // another table
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{2}));  // 11 x 32 / 128
    arm(scaler, src.frame(), halves, bits8);
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{1, 4}));
    arm(scaler, src.frame(), halves, bits16);  // weights of 64 under a shift of 15
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{0, 0}));
}

TYPED_TEST(ScalerArea, ServesFormatsInTurn) {
    TypeParam scaler;
    for (int pass = 0; pass < 2; ++pass) {
        for (Size const size : {halves, halves, Size{6, 3}}) {
            for (FrameFormat const format :
                 {FRAME_GRAY8, FRAME_I420, FRAME_YUYV, FRAME_NV16, FRAME_BGR24, FRAME_C1_16U}) {
                TestFrame const src = ramp(format, {4, 4});
                arm(scaler, src.frame(), size);
                EXPECT_TRUE(samePixels(pump(scaler), scaled<TypeParam>(src.frame(), size)));
            }
        }
    }
}

TYPED_TEST(ScalerArea, AllocatesNothingForFramesOfAKind) {
    TestFrame const src = ramp(FRAME_NV12, {4, 4});
    TypeParam scaler;
    Frame dst;
    arm(scaler, src.frame(), halves);
    produceFrame(scaler, dst);
    std::uint64_t const calls = allocationCalls();
    arm(scaler, src.frame(), halves);
    produceFrame(scaler, dst);
    EXPECT_EQ(allocationCalls(), calls);
}

TYPED_TEST(ScalerArea, WindowOfAProducerLosesNoRow) {
    for (FrameFormat const format : {FRAME_I420, FRAME_NV12}) {
        for (Size const size : {Size{6, 4}, Size{3, 3}, Size{6, 12}}) {
            TestFrame const src = ramp(format, {4, 8});
            ProbeProducer probe(src.frame());
            TypeParam scaler;
            arm(scaler, probe, size);
            EXPECT_TRUE(samePixels(pump(scaler), scaled<TypeParam>(src.frame(), size)));
            EXPECT_TRUE(probe.skipped().empty());
        }
    }
}

TYPED_TEST(ScalerArea, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_YUV444_PLANAR, {4, 4});
    TypeParam scaler;
    arm(scaler, src.frame(), {1, 1});
    // row 0, or all four rows; 1.5 loses its fraction
    Bytes const expected = TestFixture::across ? Bytes{1} : Bytes{30, 31, 32, 33};
    unsigned char u[4] = {99, 99, 99, 99};
    RowData row{{nullptr, u, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(Bytes(u, u + expected.size()), expected);
}

TYPED_TEST(ScalerArea, RefusesBadArguments) {
    bool const wide = TestFixture::across;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer producer = ClaimingProducer::ofSize({4, 4});
    ClaimingProducer flat = ClaimingProducer::ofSize({4, 0});
    auto const bad = static_cast<ScalerPrecision>(9);
    std::string const side =
        wide ? "Assertion failed: 0 < dst_width" : "Assertion failed: 0 < dst_height";
    TypeParam scaler;
    expectException(StatusAssertionFailed, "Assertion failed: src_frame.initialized()", [&] {
        arm(scaler, emptyFrame(), {0, 0}, bad);
    });
    expectException(StatusAssertionFailed, "Assertion failed: !src_producer.layout().size.empty()",
                    [&] {
                        arm(scaler, flat, {0, 0}, bad);
                    });
    for (int const extent : {0, -1}) {
        expectException(StatusAssertionFailed, side, [&] {
            arm(scaler, src.frame(), {extent, extent}, bad);
        });
        expectException(StatusAssertionFailed, side, [&] {
            arm(scaler, producer, {extent, extent}, bad);
        });
    }
    for (unsigned const precision : {0U, 7U, 9U, 15U, 17U, 32U}) {
        auto const text =
            "Assertion failed: precision == OX_SCALER_FIXED_POINT_8S || precision == "
            "OX_SCALER_FIXED_POINT_16S";
        auto const value = static_cast<ScalerPrecision>(precision);
        expectException(StatusAssertionFailed, text,
                        [&] { arm(scaler, src.frame(), halves, value); });
        expectException(StatusAssertionFailed, text, [&] { arm(scaler, producer, halves, value); });
    }
    EXPECT_FALSE(scaler.initialized());
}

TYPED_TEST(ScalerArea, PassesTheWindowsFailureOn) {
    ClaimingProducer producer = ClaimingProducer::withoutPlanes();
    TestFrame const src = this->line({1, 2, 3, 5});
    TypeParam scaler;
    arm(scaler, src.frame(), halves);
    expectException(StatusInputNotInitialized, "Row producer is not initialized.", [&] {
        arm(scaler, producer, {1, 1});
    });
    EXPECT_FALSE(scaler.initialized());
    arm(scaler, src.frame(), halves);
    EXPECT_EQ(this->samplesAlong(pump(scaler)), (Bytes{1, 4}));
}

// There is nothing to divide by.
TYPED_TEST(ScalerArea, RefusesRegionsWithoutPixels) {
    TestFrame src = ramp(FRAME_GRAY8, {4, 4});
    TypeParam scaler;
    for (Rect const rect : {TestFixture::across ? Rect{1, 1, 0, 2} : Rect{1, 1, 2, 0}, Rect{}}) {
        Frame const region = getRegion(src.frame(), rect);
        std::string const name = TestFixture::across ? "ScalerAreaX" : "ScalerAreaY";
        expectException(StatusInvalidParameter,
                        "Failure in " + name + "::reuse(...) : source is empty.", [&] {
                            arm(scaler, region, {3, 3});
                        });
        EXPECT_FALSE(scaler.initialized());
    }
}

}  // namespace

}  // namespace ox::test::scaler_area_reuse
