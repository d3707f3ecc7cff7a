// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Producers of a caller's own whose layout doesn't agree with its format and size: whatever they
// claim, nothing outside their rows is read.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_impl_format_converter.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"
#include "ox_cv/scaler_rows.h"
#include "support/exceptions.h"
#include "support/guarded_memory.h"

namespace ox::test {
namespace {

/// Yields rows of `row_bytes` bytes of `value`.
class Claiming : public IRowProducer {
  public:
    Claiming(FrameFormat format, Size size, std::uint64_t row_bytes, unsigned char value)
        : claimed(format, size, 64), _value(value) {
        for (FramePlane& plane : claimed.plane) {
            plane.rowBytes = row_bytes;
            plane.stride = static_cast<std::int64_t>(row_bytes);
        }
    }

    FrameLayout const& layout() override { return claimed; }
    bool next() override { return true; }
    void produce(RowData& rows) override {
        for (int i = 0; i < claimed.planeCount; ++i) {
            if (rows[i] != nullptr) {
                std::memset(rows[i], _value, claimed.plane[i].rowBytes);
            }
        }
    }

    FrameLayout claimed;

  private:
    unsigned char _value;
};

constexpr std::uint64_t longRow = 100;

template <class Scaler, class... Target>
void expectRowsOfTheNewSource(Scaler& scaler, FrameFormat format, Size size, Target... target) {
    Claiming longer(format, size, longRow, 50);
    scaler.reuse(longer, target...);
    TestFrame usual(format, size, {0, Guard::AtEnd});
    fill(usual.frame(), 200);
    scaler.reuse(usual.frame(), target...);
    EXPECT_TRUE(isFilledWith(pump(scaler), 200));
}

TEST(DisagreeingLayout, LongerRowsAreForgottenByAreaX) {
    ScalerAreaX scaler;
    expectRowsOfTheNewSource(scaler, FRAME_GRAY8, {3, 1}, 4, OX_SCALER_FIXED_POINT_16S);
}

TEST(DisagreeingLayout, LongerRowsAreForgottenByNearest) {
    ScalerNearestNeighbor scaler;
    expectRowsOfTheNewSource(scaler, FRAME_NV12, {2, 2}, Size{1, 2});
}

TEST(DisagreeingLayout, LongerRowsAreForgottenByBilinear) {
    ScalerBilinearX across;
    expectRowsOfTheNewSource(across, FRAME_NV12, {3, 4}, 5);
    ScalerBilinearXY both;
    expectRowsOfTheNewSource(both, FRAME_NV12, {3, 4}, Size{5, 6});
}

/// Rows are as wide as the size says, though the planes are claimed as before.
template <class Scaler, class... Target>
void expectRowsOfTheNewSize(Target... target) {
    Claiming wide(FRAME_GRAY8, {90, 4}, longRow, 50);
    Claiming narrow(FRAME_GRAY8, {5, 4}, longRow, 50);
    narrow.claimed.plane[0] = wide.claimed.plane[0];
    Scaler scaler;
    scaler.reuse(wide, target...);
    scaler.reuse(narrow, target...);
    GuardedMemory row(5, Guard::AtEnd);
    RowData dst;
    dst[0] = row.data();
    scaler.produce(dst);
    EXPECT_EQ(Bytes(row.data(), row.data() + row.size()), Bytes(5, 50));
    EXPECT_EQ(row.touched(), 0);
}

TEST(DisagreeingLayout, WiderRowsAreForgotten) {
    expectRowsOfTheNewSize<ScalerBilinearY>(3);
    expectRowsOfTheNewSize<ScalerAreaY>(2, OX_SCALER_FIXED_POINT_16S);
}

TEST(DisagreeingLayout, ShorterRowsGoOnWithZeros) {
    Claiming shorter(FRAME_GRAY8, {100000, 2}, 3, 200);
    ScalerNearestNeighbor scaler;
    scaler.reuse(shorter, {100000, 1});
    Frame const scaled = pump(scaler);
    EXPECT_EQ(scaled.planeData(0)[2], 200);
    EXPECT_EQ(scaled.planeData(0)[3], 0);
    EXPECT_EQ(scaled.planeData(0)[99999], 0);

    Claiming again(FRAME_GRAY8, {100000, 2}, 3, 200);
    FormatConverter converter;
    converter.reuse(again, FRAME_BGR24);
    Frame const converted = pump(converter);
    EXPECT_EQ(converted.planeData(0)[3 * 2 + 2], 200);
    EXPECT_EQ(converted.planeData(0)[3 * 99999], 0);
}

/// The first row that a scaler makes of rows that are shorter than one pixel.
template <class Scaler>
Bytes firstRowOfPartOfAPixel(Size size) {
    Claiming producer(FRAME_BGR24, {4, 4}, 2, 200);
    Scaler scaler;
    arm(scaler, producer, size);
    return bytesOf(pump(scaler), 0, 0);
}

// A pixel whose third byte is behind the row, and then nothing: no element is whole.
TEST(DisagreeingLayout, WithoutAWholeElementTheRestIsZero) {
    EXPECT_EQ(firstRowOfPartOfAPixel<ScalerNearestNeighbor>({5, 4}),
              (Bytes{200, 200, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // Coordinates 0, 45874, 98302: 200 x (65536 - 45874) >> 16 is 60.
    Bytes const blended{200, 200, 0, 60, 60, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(firstRowOfPartOfAPixel<ScalerBilinearX>({5, 4}), blended);
    EXPECT_EQ(firstRowOfPartOfAPixel<ScalerBilinearXY>({5, 3}), blended);
    // Cells are 4/5 of a column wide: the second takes a quarter of the first column.
    EXPECT_EQ(firstRowOfPartOfAPixel<ScalerAreaX>({5, 4}),
              (Bytes{200, 200, 0, 50, 50, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    // Downwards: halves, and nothing of the second column.
    EXPECT_EQ(firstRowOfPartOfAPixel<ScalerAreaX>({2, 4}), (Bytes{100, 100, 0, 0, 0, 0}));
}

// What stands before such a row in a ring happens to be zeros; here it doesn't.
TEST(DisagreeingLayout, WithoutAWholeElementNothingBeforeTheRowIsRead) {
    std::array<unsigned char, 32> memory;
    memory.fill(77);
    unsigned char const* const row = memory.data() + 16;
    rows::RowPlan plan;
    for (plan.src_samples = 0; plan.src_samples < 3; ++plan.src_samples) {
        for (int channel = 0; channel < 3; ++channel) {
            bool const is_inside = channel < plan.src_samples;
            rows::RowEnd const reader(plan);
            EXPECT_EQ((reader.sample<std::uint8_t, 3>(row, 0, channel)), is_inside ? 77 : 0);
            EXPECT_EQ((reader.sample<std::uint8_t, 3>(row, 1, channel)), 0);
        }
    }
    plan.src_samples = 0;
    EXPECT_EQ((rows::RowEnd(plan).sample<std::uint16_t, 1>(row, 0, 0)), 0);
    EXPECT_EQ((rows::RowEnd(plan).sample<std::uint32_t, 1>(row, 0, 0)), 0U);
}

/// The first row of a scaler that is asked for the width that four columns claim to have.
template <class Scaler>
Bytes firstRowOfClaimedWidth(int width) {
    Claiming producer(FRAME_BGR24, {4, 4}, 12, 200);
    producer.claimed.plane[0].width = width;
    Scaler scaler;
    arm(scaler, producer, Size{width, 4});
    return bytesOf(pump(scaler), 0, 0);
}

TEST(DisagreeingLayout, WiderRowsThanThereAreGoOnWithZeros) {
    for (int const width : {5, 22, 1000, 20000}) {
        SCOPED_TRACE(width);
        Bytes expected(static_cast<std::size_t>(3 * width));
        std::fill_n(expected.begin(), 12, 200);
        EXPECT_EQ(firstRowOfClaimedWidth<ScalerBilinearX>(width), expected);
        EXPECT_EQ(firstRowOfClaimedWidth<ScalerAreaX>(width), expected);
    }
}

/// Calls visit(converter) for each conversion that takes this producer.
template <class Visitor>
void forEachConversion(IRowProducer& producer, Visitor visit) {
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        FormatConverter converter;
        try {
            converter.reuse(producer, format);
        } catch (Exception const&) {
            continue;
        }
        visit(converter);
    }
}

TEST(DisagreeingLayout, WidthsBelowZeroAreNotConverted) {
    int conversions = 0;
    for (FrameFormat const format : allFormats()) {
        SCOPED_TRACE(toString(format));
        for (int const width : {-1, -2, -1000}) {
            Claiming producer(format, {width, 4}, 0, 200);
            forEachConversion(producer, [&](FormatConverter& converter) {
                std::array<unsigned char, 4096> memory{};
                unsigned char* const middle = memory.data() + memory.size() / 2;
                for (int row = 0; row < 4; ++row) {
                    RowData rows{middle, middle, middle, middle};
                    converter.produce(rows);
                    converter.next();
                }
                EXPECT_EQ(std::count(memory.begin(), memory.end(), 0), 4096);
                ++conversions;
            });
        }
    }
    // From gray to ten YUV formats, and from each of these to gray and to nine others.
    EXPECT_EQ(conversions, 3 * (static_cast<int>(conversionRecords().size()) + 10 + 10 * 10));
}

/// What a layout may say of a plane, beside the truth.
struct Claim {
    std::uint64_t row_bytes;
    int width;
    int height;
};

/// Drains links that take the producer, each into a frame in guarded memory.
template <class Scaler>
void drain(Claiming& producer, Size size) {
    Scaler scaler;
    try {
        arm(scaler, producer, size);
        TestFrame frame(scaler.layout().format, scaler.layout().size, {0, Guard::AtEnd});
        produceFrame(scaler, frame.frame());
    } catch (Exception const&) {
        return;  // refused, or not of a format that it takes
    }
}

void drainConvolution(Claiming& producer, Size size) {
    BoxKernel kernel;
    for (ScalerPrecision const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        ScalerConvolutional scaler;
        try {
            scaler.reuse(kernel, producer, size, precision);
            pump(scaler);
        } catch (Exception const&) {
            continue;
        }
    }
}

// Vector code has offsets of 32 bits; elements, by indices of 16 bits, don't reach that far.
TEST(DisagreeingLayout, LongRowsAreSeenAsFarAsElementsReach) {
    FrameLayout const dst(FRAME_BGR24, {5, 4}, 1);
    FrameLayout src = dst;
    for (std::uint64_t const bytes : {std::uint64_t{12} << 16, (std::uint64_t{1} << 32) + 5,
                                      std::uint64_t{1} << 63, ~std::uint64_t{0}}) {
        src.plane[0].rowBytes = bytes;
        rows::RowPlan const plan =
            impl::planRow(src, dst, 0, 5, [](std::int64_t cell) { return cell; });
        EXPECT_EQ(plan.src_samples, 12 << 16);
        EXPECT_EQ(plan.whole, 5);
    }
    // The element behind the last index is read with it.
    EXPECT_GE(impl::reachedBytes(1 << 30), (std::uint64_t{65536} + 1) * 4);
}

// Nothing is expected but that nothing outside rows and rings is touched, which memory in guarded
// pages and the address sanitizer see.
TEST(DisagreeingLayout, NothingOutsideRowsIsTouchedWhateverIsClaimed) {
    std::uint64_t const huge = std::uint64_t{1} << 63;
    for (FrameFormat const format : allFormats()) {
        for (Claim const claim :
             {Claim{0, 5, 4}, Claim{1, 5, 4}, Claim{2, 5, 4}, Claim{7, 5, 4}, Claim{3, 300, 4},
              Claim{200, 1, 4}, Claim{4, 0, 4}, Claim{4, -5, 4}, Claim{4, 5, 0}, Claim{4, 5, -4},
              Claim{4, 5, 1000}, Claim{huge, 5, 4}, Claim{huge - 1, 5, 4}}) {
            SCOPED_TRACE(testing::Message() << toString(format) << " claims " << claim.row_bytes
                                            << " bytes, " << claim.width << "x" << claim.height);
            Claiming producer(format, {5, 4}, claim.row_bytes, 200);
            for (FramePlane& plane : producer.claimed.plane) {
                plane.width = claim.width;
                plane.height = claim.height;
            }
            for (Size const size : {Size{5, 4}, Size{3, 4}, Size{5, 3}, Size{3, 3}, Size{9, 8},
                                    Size{300, 4}, Size{300, 2}, Size{70, 90}}) {
                drain<ScalerNearestNeighbor>(producer, size);
                drain<ScalerBilinearX>(producer, size);
                drain<ScalerBilinearY>(producer, size);
                drain<ScalerBilinearXY>(producer, size);
                drain<ScalerAreaX>(producer, size);
                drain<ScalerAreaY>(producer, size);
                drainConvolution(producer, size);
            }
            forEachConversion(producer, [](FormatConverter& converter) {
                if (converter.layout().plane[0].rowBytes < 100) {
                    pump(converter);
                }
            });
        }
    }
}

TEST(DisagreeingLayout, OtherPlanesAreRefused) {
    for (int const count : {-1, 1, 5}) {
        Claiming producer(FRAME_NV12, {4, 4}, 4, 1);
        producer.claimed.planeCount = count;
        RowWindow window;
        expectException(StatusInvalidParameter, "Row producer's planes aren't those of its format.",
                        [&] { window.reuse(producer, 1); });
        EXPECT_FALSE(window.initialized());
    }
}

}  // namespace
}  // namespace ox::test
