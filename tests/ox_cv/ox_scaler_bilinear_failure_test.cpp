// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/scaler_rows.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test {

namespace {

// Bad sources are told of before bad sizes.
template <class Scaler>
void expectRefusals(std::string const& frame_text, std::string const& size_text,
                    std::vector<Size> const& bad_sizes) {
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    ClaimingProducer producer = ClaimingProducer::ofSize({4, 4});
    ClaimingProducer flat = ClaimingProducer::ofSize({4, 0});
    Scaler scaler;
    expectException(StatusAssertionFailed, "Assertion failed: " + frame_text, [&] {
        arm(scaler, emptyFrame(), {0, 0});
    });
    expectException(StatusAssertionFailed, "Assertion failed: !src_producer.layout().size.empty()",
                    [&] {
                        arm(scaler, flat, {0, 0});
                    });
    for (Size const size : bad_sizes) {
        expectException(StatusAssertionFailed, "Assertion failed: " + size_text,
                        [&] { arm(scaler, src.frame(), size); });
        expectException(StatusAssertionFailed, "Assertion failed: " + size_text,
                        [&] { arm(scaler, producer, size); });
    }
    EXPECT_FALSE(scaler.initialized());
}

TEST(ScalerBilinearX, RefusesBadArguments) {
    expectRefusals<ScalerBilinearX>("src_frame.initialized()", "0 < dst_width", {{0, 1}, {-1, 1}});
}

TEST(ScalerBilinearY, RefusesBadArguments) {
    expectRefusals<ScalerBilinearY>("!src_frame.size().empty()", "0 < dst_height",
                                    {{1, 0}, {1, -1}});
}

TEST(ScalerBilinearXY, RefusesBadArguments) {
    expectRefusals<ScalerBilinearXY>("src_frame.initialized()", "!dst_size.empty()",
                                     {{0, 1}, {1, 0}, {-1, 1}, {1, -1}});
}

// A source of that size is refused, and the scaler serves a small one before and after.
template <class Scaler>
void expectOutOfReach(Size size, std::string const& text, Bytes const& means) {
    TestFrame const small = grayPicture({{0, 100}, {100, 200}});
    ClaimingProducer large = ClaimingProducer::ofSize(size);
    Scaler scaler;
    for (int pass = 0; pass < 2; ++pass) {
        arm(scaler, small.frame(), {1, 1});
        EXPECT_EQ(bytesOf(pump(scaler), 0, 0), means);
        expectException(StatusAssertionFailed, "Assertion failed: " + text, [&] {
            arm(scaler, large, {1, 1});
        });
        EXPECT_FALSE(scaler.initialized());
    }
}

TEST(ScalerBilinear, RefusesSidesThatCoordinatesCannotHold) {
    for (int const side : {32768, 40000, 65536}) {
        expectOutOfReach<ScalerBilinearX>(
            {side, 1}, "_src_xs[dst_width - 1] < (src_size.width << SHIFT)", {50});
        expectOutOfReach<ScalerBilinearY>(
            {1, side}, "_src_ys[dst_height - 1] < (src_layout.size.height << SHIFT)", {50, 150});
        expectOutOfReach<ScalerBilinearXY>(
            {side, side}, "_src_xs[dst_size.width - 1] < (src_size.width << SHIFT)", {100});
        expectOutOfReach<ScalerBilinearXY>(
            {4, side}, "_src_ys[dst_size.height - 1] < (src_size.height << SHIFT)", {100});
    }
}

TEST(ScalerBilinear, RefusesRegionsWithoutPixels) {
    TestFrame src = ramp(FRAME_GRAY8, {4, 4});
    Frame const thin = getRegion(src.frame(), {1, 1, 0, 2});
    Frame const flat = getRegion(src.frame(), {1, 1, 2, 0});
    ScalerBilinearX across;
    expectException(StatusAssertionFailed,
                    "Assertion failed: _src_xs[dst_width - 1] < (src_size.width << SHIFT)",
                    [&] { across.reuse(thin, 2); });
    expectException(StatusOutOfRange, windowSizeOutOfRange, [&] { across.reuse(flat, 3); });
    EXPECT_FALSE(across.initialized());
    ScalerBilinearY down;
    for (Frame const* const region : {&thin, &flat}) {
        expectException(StatusAssertionFailed, "Assertion failed: !src_frame.size().empty()",
                        [&] { down.reuse(*region, 2); });
    }
    ScalerBilinearXY both;
    expectException(StatusAssertionFailed,
                    "Assertion failed: _src_ys[dst_size.height - 1] < (src_size.height << SHIFT)",
                    [&] {
                        both.reuse(flat, {3, 3});
                    });
}

// Frames limit the window to their height, producers don't.
TEST(ScalerBilinear, ProducersNeedTwoRowsOrFour) {
    TestFrame const flat = ramp(FRAME_GRAY8, {2, 1});
    TestFrame const short_420 = ramp(FRAME_I420, {2, 3});
    for (TestFrame const* src : {&flat, &short_420}) {
        ProbeProducer probe(src->frame());
        ScalerBilinearY down;
        ScalerBilinearXY both;
        expectException(StatusOutOfRange, windowSizeOutOfRange, [&] { down.reuse(probe, 2); });
        expectException(StatusOutOfRange, windowSizeOutOfRange, [&] { both.reuse(probe, {2, 2}); });
        EXPECT_FALSE(down.initialized());
        EXPECT_FALSE(both.initialized());
    }
}

TEST(ScalerBilinear, NullPlanesAreSkipped) {
    TestFrame const src = ramp(FRAME_BGR_PLANAR, {2, 2});
    ScalerBilinearXY scaler;
    scaler.reuse(src.frame(), {1, 1});
    unsigned char g = 99;
    RowData row{{nullptr, &g, nullptr, nullptr}};
    scaler.produce(row);
    EXPECT_EQ(g, 0);  // the mean of 0 and 1 in the upper row
}

}  // namespace

}  // namespace ox::test
