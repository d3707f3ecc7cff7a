// Producers of a caller's own whose layout doesn't agree with its format and size: whatever they
// claim, nothing outside their rows is read.

#include <gtest/gtest.h>

#include <cstring>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
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
