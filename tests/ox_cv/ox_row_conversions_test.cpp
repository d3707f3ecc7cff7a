// The functions that turn one row into another, on numbers worked out by hand.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "ox_cv/ox_impl_format_converter.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

using Bytes = std::vector<int>;
using Planes = std::vector<Bytes>;

constexpr int untouched = GuardedMemory::poison;

// One row of a format, at the end of its memory.
class TestRow {
  public:
    TestRow(FrameFormat format, int width)
        : _frame(format, {width, 1}, Placement{0, Guard::AtEnd}) {
        fill(_frame.frame(), untouched);
        for (int plane = 0; plane < planes(); ++plane) {
            row[plane] = _frame.row(plane, 0);
        }
    }

    TestRow(FrameFormat format, int width, Planes const& bytes) : TestRow(format, width) {
        for (int plane = 0; plane < planes(); ++plane) {
            fill(_frame.frame(), plane, {bytes[static_cast<std::size_t>(plane)]});
        }
    }

    int planes() const { return _frame.layout().planeCount; }

    Planes bytes() const {
        Planes result;
        for (int plane = 0; plane < planes(); ++plane) {
            result.push_back(bytesOf(_frame.frame(), plane, 0));
        }
        return result;
    }

    RowData row{};

  private:
    TestFrame _frame;
};

struct Input {
    FrameFormat format;
    Planes upper;
    Planes lower;  // none: there is no such row
};

// The row of `dst` that comes out; planes in `nulls` are not asked for.
Planes convert(Input const& input, int width, FrameFormat dst, Bytes const& nulls = {}) {
    ImplFormatConverter context;
    int window = 0;
    context.reuse(input.format, dst, width, &window);
    TestRow const upper(input.format, width, input.upper);
    TestRow const lower(input.format, width, input.lower.empty() ? input.upper : input.lower);
    RowData const* const rows[2] = {&upper.row, input.lower.empty() ? nullptr : &lower.row};
    TestRow target(dst, width);
    RowData row = target.row;
    for (int const plane : nulls) {
        row[plane] = nullptr;
    }
    context.produce(rows, row);
    return target.bytes();
}

Planes convert(FrameFormat src, Planes const& bytes, int width, FrameFormat dst,
               Bytes const& nulls = {}) {
    return convert(Input{src, bytes, {}}, width, dst, nulls);
}

Planes floats(std::vector<float> const& values) {
    std::vector<unsigned char> bytes(values.size() * sizeof(float));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return {Bytes(bytes.begin(), bytes.end())};
}

// Two rows of three pixels. Their terms:
//
//     B, G, R          Y    CU      CV
//     10, 20, 30       34   31268   34068
//     200, 100, 50     98   45868   25368
//     0, 0, 255        80   23078   61328
//
//     255, 0, 0        40   61328   28178
//     0, 255, 0       144   13898    8798
//     1, 2, 3          17   32618   32898
Planes const upperBgr{{10, 20, 30, 200, 100, 50, 0, 0, 255}};
Planes const lowerBgr{{255, 0, 0, 0, 255, 0, 1, 2, 3}};
Bytes const upperLuma{34, 98, 80};

struct Row {
    FrameFormat format;
    Planes planes;
};

TEST(BgrToYuv, OneRow) {
    Row const rows[] = {
        {FRAME_I420, {upperLuma, {150, 90}, {116, 239}}},
        {FRAME_YV12, {upperLuma, {116, 239}, {150, 90}}},
        {FRAME_NV12, {upperLuma, {150, 116, 90, 239}}},
        {FRAME_NV21, {upperLuma, {116, 150, 239, 90}}},
        {FRAME_YV16, {upperLuma, {116, 239}, {150, 90}}},
        {FRAME_YUYV, {{34, 150, 98, 116, 80, 90, 0, 239}}},
        {FRAME_UYVY, {{150, 34, 116, 98, 90, 80, 239, 0}}},
        {FRAME_NV16, {upperLuma, {150, 116, 90, 239}}},
        {FRAME_YUV444, {{34, 122, 133, 98, 179, 99, 80, 90, 239}}},
        {FRAME_YUV444_PLANAR, {upperLuma, {122, 179, 90}, {133, 99, 239}}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(BgrToYuv, ChromaOfTwoRows) {
    Row const rows[] = {
        {FRAME_I420, {upperLuma, {148, 108}, {94, 184}}},
        {FRAME_YV12, {upperLuma, {94, 184}, {148, 108}}},
        {FRAME_NV12, {upperLuma, {148, 94, 108, 184}}},
        {FRAME_NV21, {upperLuma, {94, 148, 184, 108}}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(BgrToYuv, ASinglePixel) {
    Planes const pixel{{10, 20, 30}};
    Planes const below{{255, 0, 0}};
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_YUYV), (Planes{{34, 122, 0, 133}}));
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_UYVY), (Planes{{122, 34, 133, 0}}));
    EXPECT_EQ(convert(FRAME_BGR24, pixel, 1, FRAME_I420), (Planes{{34}, {122}, {133}}));
    // (31268 + 61328) >> 9, (34068 + 28178) >> 9
    EXPECT_EQ(convert({FRAME_BGR24, pixel, below}, 1, FRAME_NV12), (Planes{{34}, {180, 121}}));
}

TEST(BgrToYuv, WhiteAndBlack) {
    Planes const white{Bytes(6, 255)};
    Planes const black{Bytes(6, 0)};
    EXPECT_EQ(convert({FRAME_BGR24, white, white}, 2, FRAME_I420),
              (Planes{{234, 234}, {128}, {128}}));
    EXPECT_EQ(convert({FRAME_BGR24, black, black}, 2, FRAME_I420),
              (Planes{{16, 16}, {128}, {128}}));
    EXPECT_EQ(convert(FRAME_BGR24, white, 2, FRAME_YUV444),
              (Planes{{234, 128, 128, 234, 128, 128}}));
}

TEST(BgrToYuv, TheLongestSumsStayPositive) {
    // U of blue and V of red are as large as they get, U of yellow and V of cyan as small.
    Planes const blue{{255, 0, 0, 255, 0, 0}};
    Planes const yellow{{0, 255, 255, 0, 255, 255}};
    Planes const cyan{{255, 255, 0, 255, 255, 0}};
    EXPECT_EQ(convert({FRAME_BGR24, blue, blue}, 2, FRAME_I420), (Planes{{40, 40}, {239}, {110}}));
    EXPECT_EQ(convert({FRAME_BGR24, yellow, yellow}, 2, FRAME_I420)[1], Bytes{16});
    EXPECT_EQ(convert({FRAME_BGR24, cyan, cyan}, 2, FRAME_I420)[2], Bytes{16});
}

TEST(BgrToYuv, RowsWithoutChromaHaveLumaOnly) {
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {1, 2}),
              (Planes{upperLuma, none2, none2}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_NV12, {1}),
              (Planes{upperLuma, Bytes(4, untouched)}));
    // One chroma plane alone isn't written either.
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {1}),
              (Planes{upperLuma, none2, none2}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_YV12, {2}),
              (Planes{upperLuma, none2, none2}));
}

TEST(BgrToYuv, NullPlanesAreSkipped) {
    Bytes const none(3, untouched);
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_I420, {0}),
              (Planes{none, {148, 108}, {94, 184}}));
    EXPECT_EQ(convert({FRAME_BGR24, upperBgr, lowerBgr}, 3, FRAME_NV12, {0}),
              (Planes{none, {148, 94, 108, 184}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YV16, {0, 1}),
              (Planes{none, none2, {150, 90}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YV16, {2}),
              (Planes{upperLuma, {116, 239}, none2}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_NV16, {1}),
              (Planes{upperLuma, Bytes(4, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUV444_PLANAR, {1}),
              (Planes{upperLuma, none, {133, 99, 239}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUYV, {0}), (Planes{Bytes(8, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_YUV444, {0}), (Planes{Bytes(9, untouched)}));
}

TEST(BgrToGray, WeightsOfItsOwn) {
    // 5600 >> 8, 24600 >> 8, 19380 >> 8: not the luma of the YUV formats.
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_GRAY8), (Planes{{21, 96, 75}}));
    EXPECT_EQ(convert(FRAME_BGR24, {{255, 255, 255, 0, 0, 0}}, 2, FRAME_GRAY8), (Planes{{255, 0}}));
    EXPECT_EQ(convert(FRAME_BGR24, upperBgr, 3, FRAME_GRAY8, {0}), (Planes{Bytes(3, untouched)}));
}

TEST(GrayToBgr, TheByteThreeTimes) {
    EXPECT_EQ(convert(FRAME_GRAY8, {{0, 77, 255}}, 3, FRAME_BGR24),
              (Planes{{0, 0, 0, 77, 77, 77, 255, 255, 255}}));
    EXPECT_EQ(convert(FRAME_GRAY8, {{0, 77, 255}}, 3, FRAME_BGR24, {0}),
              (Planes{Bytes(9, untouched)}));
}

// Chroma is 0 and not 128: gray comes out greenish.
TEST(GrayToYuv, ChromaIsZero) {
    Bytes const gray{1, 2, 3};
    Bytes const zero2(2, 0);
    Bytes const zero4(4, 0);
    Row const rows[] = {
        {FRAME_I420, {gray, zero2, zero2}},
        {FRAME_YV12, {gray, zero2, zero2}},
        {FRAME_NV12, {gray, zero4}},
        {FRAME_NV21, {gray, zero4}},
        {FRAME_YV16, {gray, zero2, zero2}},
        {FRAME_YUYV, {{1, 0, 2, 0, 3, 0, untouched, 0}}},
        {FRAME_UYVY, {{0, 1, 0, 2, 0, 3, 0, untouched}}},
        {FRAME_NV16, {gray, zero4}},
        {FRAME_YUV444, {{1, 0, 0, 2, 0, 0, 3, 0, 0}}},
        {FRAME_YUV444_PLANAR, {gray, Bytes(3, 0), Bytes(3, 0)}},
    };
    for (Row const& expected : rows) {
        EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, expected.format), expected.planes)
            << toString(expected.format);
    }
}

TEST(GrayToYuv, RowsWithoutChromaHaveLumaOnly) {
    Bytes const gray{1, 2, 3};
    Bytes const none2(2, untouched);
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {1, 2}), (Planes{gray, none2, none2}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {2}), (Planes{gray, none2, none2}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_NV21, {1}),
              (Planes{gray, Bytes(4, untouched)}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_I420, {0}),
              (Planes{Bytes(3, untouched), {0, 0}, {0, 0}}));
    EXPECT_EQ(convert(FRAME_GRAY8, {gray}, 3, FRAME_YUYV, {0}), (Planes{Bytes(8, untouched)}));
}

// One picture in every format: Y 100, 16, 235; the first two pixels have U 90 and V 200, the third
// 128 and 128. The 77 is the luma of a pixel that isn't there.
std::vector<Row> yuvRows(int missing) {
    Bytes const luma{100, 16, 235};
    return {
        {FRAME_I420, {luma, {90, 128}, {200, 128}}},
        {FRAME_YV12, {luma, {200, 128}, {90, 128}}},
        {FRAME_NV12, {luma, {90, 200, 128, 128}}},
        {FRAME_NV21, {luma, {200, 90, 128, 128}}},
        {FRAME_YV16, {luma, {200, 128}, {90, 128}}},
        {FRAME_YUYV, {{100, 90, 16, 200, 235, 128, missing, 128}}},
        {FRAME_UYVY, {{90, 100, 200, 16, 128, 235, 128, missing}}},
        {FRAME_NV16, {luma, {90, 200, 128, 128}}},
        {FRAME_YUV444, {{100, 90, 200, 16, 90, 200, 235, 128, 128}}},
        {FRAME_YUV444_PLANAR, {luma, {90, 90, 128}, {200, 200, 128}}},
    };
}

TEST(YuvToBgr, EveryFormat) {
    for (Row const& source : yuvRows(77)) {
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_BGR24),
                  (Planes{{20, 54, 212, 0, 0, 114, 254, 254, 254}}))
            << toString(source.format);
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_BGR24, {0}),
                  (Planes{Bytes(9, untouched)}));
    }
}

TEST(YuvToBgr, Limits) {
    auto const bgr = [](int y, int u, int v) {
        return convert(FRAME_YUV444, {{y, u, v}}, 1, FRAME_BGR24)[0];
    };
    EXPECT_EQ(bgr(16, 128, 128), (Bytes{0, 0, 0}));
    EXPECT_EQ(bgr(15, 128, 128), (Bytes{0, 0, 0}));
    EXPECT_EQ(bgr(17, 128, 128), (Bytes{1, 1, 1}));
    EXPECT_EQ(bgr(235, 128, 128), (Bytes{254, 254, 254}));
    EXPECT_EQ(bgr(236, 128, 128), (Bytes{255, 255, 255}));
    EXPECT_EQ(bgr(237, 128, 128), (Bytes{255, 255, 255}));
    EXPECT_EQ(bgr(255, 255, 255), (Bytes{255, 124, 255}));
    EXPECT_EQ(bgr(0, 0, 0), (Bytes{0, 134, 0}));
}

TEST(YuvToGray, TakesTheLuma) {
    for (Row const& source : yuvRows(77)) {
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_GRAY8), (Planes{{100, 16, 235}}))
            << toString(source.format);
        EXPECT_EQ(convert(source.format, source.planes, 3, FRAME_GRAY8, {0}),
                  (Planes{Bytes(3, untouched)}));
    }
}

TEST(YuvToYuv, EveryPair) {
    for (Row const& source : yuvRows(77)) {
        for (Row const& expected : yuvRows(untouched)) {
            EXPECT_EQ(convert(source.format, source.planes, 3, expected.format), expected.planes)
                << toString(source.format) << " to " << toString(expected.format);
        }
    }
}

TEST(YuvToYuv, ChromaIsTheTruncatedMeanOfAGroup) {
    Planes const upper{{1, 2, 3}, {10, 13, 7}, {255, 254, 1}};
    Planes const lower{{4, 5, 6}, {1, 2, 4}, {255, 253, 2}};
    EXPECT_EQ(convert(FRAME_YUV444_PLANAR, upper, 3, FRAME_NV16),
              (Planes{{1, 2, 3}, {11, 254, 7, 1}}));
    EXPECT_EQ(convert({FRAME_YUV444_PLANAR, upper, lower}, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {6, 5}, {254, 1}}));
    EXPECT_EQ(convert(FRAME_YUV444_PLANAR, upper, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {11, 7}, {254, 1}}));
}

TEST(YuvToYuv, PairsOfTwoRows) {
    Planes const upper{{1, 2, 3}, {100, 102}, {10, 20}};  // V, U
    Planes const lower{{4, 5, 6}, {103, 105}, {13, 21}};
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 3, FRAME_NV12),
              (Planes{{1, 2, 3}, {11, 101, 20, 103}}));
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 3, FRAME_NV21),
              (Planes{{1, 2, 3}, {101, 11, 103, 20}}));
}

TEST(YuvToYuv, FullHeightDestinationsReadOneRow) {
    Planes const upper{{1, 2}, {100}, {10}};
    Planes const lower{{4, 5}, {103}, {13}};
    EXPECT_EQ(convert({FRAME_YV16, upper, lower}, 2, FRAME_NV16), (Planes{{1, 2}, {10, 100}}));
}

TEST(YuvToYuv, SubsampledChromaIsRepeated) {
    EXPECT_EQ(convert(FRAME_NV12, {{1, 2, 3}, {10, 20, 11, 21}}, 3, FRAME_YUV444),
              (Planes{{1, 10, 20, 2, 10, 20, 3, 11, 21}}));
}

TEST(YuvToYuv, ALoneColumnCountsItsOwnSamples) {
    // Both rows of a 4:2:0 pair show the same chroma; the last group holds two samples, not four.
    Planes const row{{1, 2, 3}, {10, 20, 11, 21}};
    EXPECT_EQ(convert({FRAME_NV12, row, row}, 3, FRAME_I420),
              (Planes{{1, 2, 3}, {10, 11}, {20, 21}}));
}

TEST(YuvToYuv, RowsWithoutChromaHaveLumaOnly) {
    for (Row const& source : yuvRows(77)) {
        for (Row const& target : yuvRows(untouched)) {
            if (target.planes.size() == 1) {
                continue;
            }
            Planes const got = convert(source.format, source.planes, 3, target.format, {1});
            EXPECT_EQ(got[0], (Bytes{100, 16, 235}));
            for (std::size_t plane = 1; plane < got.size(); ++plane) {
                EXPECT_EQ(got[plane], Bytes(got[plane].size(), untouched));
            }
            Planes const chroma = convert(source.format, source.planes, 3, target.format, {0});
            EXPECT_EQ(chroma[0], Bytes(3, untouched));
            EXPECT_EQ(chroma[1], target.planes[1]);
        }
    }
}

TEST(PackedAndPlanar, Bytes) {
    Planes const packed{{1, 2, 3, 4, 5, 6}};
    Planes const planes{{1, 4}, {2, 5}, {3, 6}};
    Planes const swapped{{3, 2, 1, 6, 5, 4}};
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_PLANAR), planes);
    EXPECT_EQ(convert(FRAME_BGR_PLANAR, planes, 2, FRAME_BGR24), packed);
    EXPECT_EQ(convert(FRAME_RGB_PLANAR, planes, 2, FRAME_RGB24), packed);
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_RGB24), swapped);
    EXPECT_EQ(convert(FRAME_RGB24, packed, 2, FRAME_BGR24), swapped);
}

TEST(PackedAndPlanar, NullPlanesAreSkipped) {
    Planes const packed{{1, 2, 3, 4, 5, 6}};
    Bytes const none(2, untouched);
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_PLANAR, {0, 2}),
              (Planes{none, {2, 5}, none}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_RGB24, {0}), (Planes{Bytes(6, untouched)}));
    EXPECT_EQ(convert(FRAME_BGR_PLANAR, {{1, 2}, {1, 2}, {1, 2}}, 2, FRAME_BGR24, {0}),
              (Planes{Bytes(6, untouched)}));
}

TEST(Floats, BytesBecomeFloatsOfTheSameValue) {
    Planes const packed{{0, 1, 127, 128, 254, 255}};
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F), floats({0, 1, 127, 128, 254, 255}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F_PLANAR),
              (Planes{floats({0, 128})[0], floats({1, 254})[0], floats({127, 255})[0]}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F_PLANAR, {1}),
              (Planes{floats({0, 128})[0], Bytes(8, untouched), floats({127, 255})[0]}));
    EXPECT_EQ(convert(FRAME_BGR24, packed, 2, FRAME_BGR_32F, {0}), (Planes{Bytes(24, untouched)}));
}

// Floats wrap at 256 and saturate at 32 bits.
TEST(Floats, TruncateAndKeepTheLowByte) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    struct {
        std::vector<float> values;
        Bytes bytes;
    } const cases[] = {
        {{-1.0F, 255.9F, 256.0F}, {0, 255, 0}},
        {{300.7F, 0.99F, -0.5F}, {44, 0, 0}},
        {{511.5F, 65535.0F, 65536.0F}, {255, 255, 0}},
        {{4294967040.0F, 4294967296.0F, 1e20F}, {0, 255, 255}},
        {{infinity, -infinity, nan}, {255, 0, 0}},
        {{-nan, std::numeric_limits<float>::denorm_min(), -0.0F}, {0, 0, 0}},
        {{2147483648.0F, 2147483904.0F, 16777215.0F}, {0, 0, 255}},
        {{-256.5F, -1e20F, 1.0F}, {0, 0, 1}},
    };
    for (auto const& c : cases) {
        EXPECT_EQ(convert(FRAME_BGR_32F, floats(c.values), 1, FRAME_BGR24), (Planes{c.bytes}));
    }
    EXPECT_EQ(convert(FRAME_BGR_32F, floats({1, 2, 3}), 1, FRAME_BGR24, {0}),
              (Planes{Bytes(3, untouched)}));
}

// Source and destination rows in the middle of nowhere, at odd addresses.
TEST(Floats, RowsNeedNoAlignment) {
    unsigned char bytes[3] = {1, 2, 3};
    unsigned char memory[1 + 12];
    unsigned char back[3]{};
    RowData const source{{bytes, nullptr, nullptr, nullptr}};
    RowData middle{{memory + 1, nullptr, nullptr, nullptr}};
    RowData target{{back, nullptr, nullptr, nullptr}};
    RowData const* const first[2] = {&source, nullptr};
    RowData const* const second[2] = {&middle, nullptr};
    bgr24ToBgr32f(first, middle, 1, nullptr);
    bgr32fToBgr24(second, target, 1, nullptr);
    EXPECT_EQ(Bytes(back, back + 3), (Bytes{1, 2, 3}));
}

}  // namespace

}  // namespace ox::test
