// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_format_converter.h"

#include <gtest/gtest.h>

#include <array>
#include <cstddef>
#include <map>
#include <type_traits>
#include <utility>
#include <vector>

#include "ox_cv/refusal_texts.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(sizeof(FormatInfo) == 11 * sizeof(std::int32_t));
static_assert(offsetof(FormatInfo, x_subsampling) == 0 &&
              offsetof(FormatInfo, y_subsampling) == 4 && offsetof(FormatInfo, y_plane) == 8 &&
              offsetof(FormatInfo, v_plane) == 12 && offsetof(FormatInfo, u_plane) == 16 &&
              offsetof(FormatInfo, y_offset) == 20 && offsetof(FormatInfo, v_offset) == 24 &&
              offsetof(FormatInfo, u_offset) == 28 && offsetof(FormatInfo, y_step) == 32 &&
              offsetof(FormatInfo, v_step) == 36 && offsetof(FormatInfo, u_step) == 40);
static_assert(!std::is_polymorphic_v<ImplFormatConverter>);
static_assert(offsetof(ImplFormatConverter, src) == 0 && offsetof(ImplFormatConverter, dst) == 44 &&
              offsetof(ImplFormatConverter, width) == 88 &&
              offsetof(ImplFormatConverter, initialized) == 92 &&
              offsetof(ImplFormatConverter, function) == 96);
static_assert(std::is_same_v<ConversionFunction, void (*)(RowData const* const*, RowData&, int,
                                                          ImplFormatConverter const*)>);

using Info = std::array<int, 11>;

Info infoOf(FormatInfo const& info) {
    return {info.x_subsampling, info.y_subsampling, info.y_plane,  info.v_plane,
            info.u_plane,       info.y_offset,      info.v_offset, info.u_offset,
            info.y_step,        info.v_step,        info.u_step};
}

constexpr Info noInfo{};

std::map<FrameFormat, Info> const& infos() {
    static std::map<FrameFormat, Info> const table{
        {FRAME_I420, {2, 2, 0, 2, 1, 0, 0, 0, 1, 1, 1}},
        {FRAME_YV12, {2, 2, 0, 1, 2, 0, 0, 0, 1, 1, 1}},
        {FRAME_NV12, {2, 2, 0, 1, 1, 0, 1, 0, 1, 2, 2}},
        {FRAME_NV21, {2, 2, 0, 1, 1, 0, 0, 1, 1, 2, 2}},
        {FRAME_YV16, {2, 1, 0, 1, 2, 0, 0, 0, 1, 1, 1}},
        {FRAME_YUYV, {2, 1, 0, 0, 0, 0, 3, 1, 2, 4, 4}},
        {FRAME_UYVY, {2, 1, 0, 0, 0, 1, 2, 0, 2, 4, 4}},
        {FRAME_NV16, {2, 1, 0, 1, 1, 0, 1, 0, 1, 2, 2}},
        {FRAME_YUV444, {1, 1, 0, 0, 0, 0, 2, 1, 3, 3, 3}},
        {FRAME_YUV444_PLANAR, {1, 1, 0, 2, 1, 0, 0, 0, 1, 1, 1}},
    };
    return table;
}

bool isYuv(FrameFormat format) {
    return infos().count(format) != 0;
}

struct Choice {
    ConversionFunction function;
    int window;
};

// The pairs whose functions are promised. The model knows all that there are.
std::map<std::pair<FrameFormat, FrameFormat>, Choice> const& specials() {
    static std::map<std::pair<FrameFormat, FrameFormat>, Choice> const table{
        {{FRAME_GRAY8, FRAME_BGR24}, {grayToBgr24, 1}},
        {{FRAME_RGB24, FRAME_BGR24}, {swapRedBlue, 1}},
        {{FRAME_RGB_PLANAR, FRAME_RGB24}, {planarToPacked, 1}},
        {{FRAME_BGR_PLANAR, FRAME_BGR24}, {planarToPacked, 1}},
        {{FRAME_BGR24, FRAME_GRAY8}, {bgr24ToGray, 1}},
        {{FRAME_BGR24, FRAME_RGB24}, {swapRedBlue, 1}},
        {{FRAME_BGR24, FRAME_BGR_PLANAR}, {bgr24ToBgrPlanar, 1}},
        {{FRAME_BGR24, FRAME_I420}, {bgr24ToYuv420Planar, 2}},
        {{FRAME_BGR24, FRAME_YV12}, {bgr24ToYuv420Planar, 2}},
        {{FRAME_BGR24, FRAME_NV12}, {bgr24ToYuv420SemiPlanar, 2}},
        {{FRAME_BGR24, FRAME_NV21}, {bgr24ToYuv420SemiPlanar, 2}},
        {{FRAME_BGR24, FRAME_YV16}, {bgr24ToYv16, 1}},
        {{FRAME_BGR24, FRAME_YUYV}, {bgr24ToYuv422Packed, 1}},
        {{FRAME_BGR24, FRAME_UYVY}, {bgr24ToYuv422Packed, 1}},
        {{FRAME_BGR24, FRAME_NV16}, {bgr24ToNv16, 1}},
        {{FRAME_BGR24, FRAME_YUV444}, {bgr24ToYuv444, 1}},
        {{FRAME_BGR24, FRAME_YUV444_PLANAR}, {bgr24ToYuv444Planar, 1}},
        {{FRAME_BGR24, FRAME_BGR_32F}, {bgr24ToBgr32f, 1}},
        {{FRAME_BGR24, FRAME_BGR_32F_PLANAR}, {bgr24ToBgr32fPlanar, 1}},
        {{FRAME_BGR_32F, FRAME_BGR24}, {bgr32fToBgr24, 1}},
        {{FRAME_I420, FRAME_BGR24}, {yuv420PlanarToBgr24, 1}},
        {{FRAME_YV12, FRAME_BGR24}, {yuv420PlanarToBgr24, 1}},
        {{FRAME_NV12, FRAME_BGR24}, {yuv420SemiPlanarToBgr24, 1}},
        {{FRAME_NV21, FRAME_BGR24}, {yuv420SemiPlanarToBgr24, 1}},
        {{FRAME_YV16, FRAME_BGR24}, {yv16ToBgr24, 1}},
        {{FRAME_YUYV, FRAME_BGR24}, {yuv422PackedToBgr24, 1}},
        {{FRAME_UYVY, FRAME_BGR24}, {yuv422PackedToBgr24, 1}},
        {{FRAME_NV16, FRAME_BGR24}, {nv16ToBgr24, 1}},
        {{FRAME_YUV444, FRAME_BGR24}, {yuv444ToBgr24, 1}},
        {{FRAME_YUV444_PLANAR, FRAME_BGR24}, {yuv444PlanarToBgr24, 1}},
    };
    return table;
}

// Destinations of `yuvToYuv` that have no record: the window is what the record happens to hold.
bool isUndescribed(FrameFormat format) {
    return format == FRAME_RGB24 || format == FRAME_RGB_PLANAR || format == FRAME_BGR_PLANAR ||
           format == FRAME_BGR_32F || format == FRAME_BGR_32F_PLANAR;
}

// What a new context chooses; a null function for pairs that don't exist.
Choice expectedChoice(FrameFormat src, FrameFormat dst) {
    auto const special = specials().find({src, dst});
    if (special != specials().end()) {
        return special->second;
    }
    for (ConversionRecord const& added : conversionRecords()) {
        if (added.src == src && added.dst == dst) {
            return {added.function, added.window_size};
        }
    }
    if (src == FRAME_GRAY8 && isYuv(dst)) {
        return {grayToYuv, 1};
    }
    if (isYuv(src) && dst == FRAME_GRAY8) {
        return {yuvToGray, 1};
    }
    if (isYuv(src) && isYuv(dst)) {
        return {yuvToYuv, infos().at(dst)[1]};
    }
    if (isYuv(src) && isUndescribed(dst)) {
        return {yuvToYuv, 0};
    }
    return {nullptr, 0};
}

bool hasNoPlaceInAnyPair(FrameFormat format) {
    return !isYuv(format) && !isUndescribed(format) && format != FRAME_GRAY8 &&
           format != FRAME_BGR24;
}

Status expectedFailure(FrameFormat src, FrameFormat dst) {
    bool const unknown = hasNoPlaceInAnyPair(src) || hasNoPlaceInAnyPair(dst);
    return unknown || src == FRAME_BGR_32F_PLANAR ? StatusUnsupportedFormat : StatusNotSupported;
}

std::vector<FrameFormat> everyValue() {
    std::vector<FrameFormat> values = allFormats();
    for (FrameFormat const format : unknownFormats()) {
        values.push_back(format);
    }
    return values;
}

TEST(ImplFormatConverter, StartsAsZero) {
    ImplFormatConverter context;
    EXPECT_EQ(infoOf(context.src), noInfo);
    EXPECT_EQ(infoOf(context.dst), noInfo);
    EXPECT_EQ(context.width, 0);
    EXPECT_FALSE(context.initialized);
    EXPECT_EQ(context.function, nullptr);
    RowData row{};
    context.produce(nullptr, row);
}

TEST(ImplFormatConverter, MatrixOfPairs) {
    for (FrameFormat const src : everyValue()) {
        for (FrameFormat const dst : everyValue()) {
            SCOPED_TRACE(std::string(toString(src)) + " to " + toString(dst));
            Choice const expected = expectedChoice(src, dst);
            ImplFormatConverter context;
            int window = -7;
            if (expected.function == nullptr) {
                expectException(expectedFailure(src, dst), unsupportedPair,
                                [&] { context.reuse(src, dst, 5, &window); });
                EXPECT_EQ(context.function, nullptr);
                EXPECT_FALSE(context.initialized);
                continue;
            }
            context.reuse(src, dst, 5, &window);
            EXPECT_EQ(context.function, expected.function);
            EXPECT_EQ(window, expected.window);
            EXPECT_EQ(context.width, 5);
            EXPECT_TRUE(context.initialized);
            EXPECT_EQ(infoOf(context.src), isYuv(src) ? infos().at(src) : noInfo);
            EXPECT_EQ(infoOf(context.dst), isYuv(dst) ? infos().at(dst) : noInfo);
        }
    }
}

// Single pairs spelled out, for those who look for them.
TEST(ImplFormatConverter, PairsThatDoNotExist) {
    struct {
        FrameFormat src;
        FrameFormat dst;
        Status status;
    } const cases[] = {
        {FRAME_BGR24, FRAME_BGR24, StatusNotSupported},
        {FRAME_RGB24, FRAME_GRAY8, StatusNotSupported},
        {FRAME_RGB24, FRAME_NV12, StatusNotSupported},
        {FRAME_GRAY8, FRAME_GRAY8, StatusNotSupported},
        {FRAME_GRAY8, FRAME_RGB24, StatusNotSupported},
        {FRAME_RGB_PLANAR, FRAME_BGR24, StatusNotSupported},
        {FRAME_BGR_PLANAR, FRAME_RGB24, StatusNotSupported},
        {FRAME_BGR_32F, FRAME_GRAY8, StatusNotSupported},
        {FRAME_BGR24, FRAME_RGB_PLANAR, StatusNotSupported},
        {FRAME_GRAY8, FRAME_FORMAT_NONE, StatusUnsupportedFormat},
        {FRAME_RGB24, FRAME_C3_8U, StatusUnsupportedFormat},
        {FRAME_BGR24, FRAME_GRAY_32F, StatusUnsupportedFormat},
        {FRAME_C3_8U, FRAME_BGR24, StatusUnsupportedFormat},
        {FRAME_BGR_32F_PLANAR, FRAME_BGR24, StatusUnsupportedFormat},
        {FRAME_BGR_32F_PLANAR, FRAME_BGR_32F_PLANAR, StatusUnsupportedFormat},
    };
    for (auto const& pair : cases) {
        ImplFormatConverter context;
        int window = 0;
        expectException(pair.status, unsupportedPair,
                        [&] { context.reuse(pair.src, pair.dst, 5, &window); });
    }
}

TEST(ImplFormatConverter, WindowSizes) {
    auto const window = [](FrameFormat src, FrameFormat dst) {
        ImplFormatConverter context;
        int size = -1;
        context.reuse(src, dst, 5, &size);
        return size;
    };
    EXPECT_EQ(window(FRAME_I420, FRAME_NV12), 2);
    EXPECT_EQ(window(FRAME_I420, FRAME_YV16), 1);
    EXPECT_EQ(window(FRAME_YV16, FRAME_I420), 2);
    EXPECT_EQ(window(FRAME_BGR24, FRAME_NV21), 2);
    EXPECT_EQ(window(FRAME_NV12, FRAME_BGR24), 1);
    EXPECT_EQ(window(FRAME_GRAY8, FRAME_I420), 1);
    EXPECT_EQ(window(FRAME_NV12, FRAME_NV12), 2);
    EXPECT_EQ(window(FRAME_NV12, FRAME_BGR_PLANAR), 0);
}

TEST(ImplFormatConverter, NullWindowSizeChangesNothing) {
    ImplFormatConverter context;
    int window = 0;
    context.reuse(FRAME_GRAY8, FRAME_BGR24, 5, &window);
    expectException(StatusUnsupportedFormat,
                    "Failure in ImplFormatConverter::reuse(...) : Null pointer to window size.",
                    [&] { context.reuse(FRAME_I420, FRAME_NV12, 9, nullptr); });
    EXPECT_EQ(context.function, &grayToBgr24);
    EXPECT_EQ(context.width, 5);
    EXPECT_EQ(infoOf(context.src), noInfo);
}

TEST(ImplFormatConverter, ProducesNothingAfterAFailure) {
    ImplFormatConverter context;
    int window = 0;
    context.reuse(FRAME_GRAY8, FRAME_BGR24, 1, &window);
    expectStatus(StatusNotSupported, [&] { context.reuse(FRAME_RGB24, FRAME_GRAY8, 1, &window); });
    EXPECT_EQ(context.function, nullptr);
    unsigned char source = 1;
    unsigned char target[3] = {9, 9, 9};
    RowData const rows{{&source, nullptr, nullptr, nullptr}};
    RowData const* const window_rows[2] = {&rows, nullptr};
    RowData row{{target, nullptr, nullptr, nullptr}};
    context.produce(window_rows, row);
    EXPECT_EQ(target[0], 9);
    context.reuse(FRAME_GRAY8, FRAME_BGR24, 1, &window);
    context.produce(window_rows, row);
    EXPECT_EQ(target[0], 1);
}

// The record of a destination survives, and a YUV source going to a format without one uses it.
TEST(ImplFormatConverter, AStaleRecordIsUsedAsItIs) {
    for (auto const& [stale, info] : infos()) {
        for (FrameFormat const dst : {FRAME_RGB24, FRAME_RGB_PLANAR, FRAME_BGR_PLANAR,
                                      FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
            ImplFormatConverter context;
            int window = 0;
            context.reuse(FRAME_GRAY8, stale, 5, &window);
            context.reuse(FRAME_NV12, dst, 5, &window);
            EXPECT_EQ(context.function, &yuvToYuv);
            EXPECT_EQ(window, info[1]);
            EXPECT_EQ(infoOf(context.dst), info);
        }
    }
}

TEST(ImplFormatConverter, RecordsAreWrittenBeforeAPairIsRefused) {
    ImplFormatConverter context;
    int window = 0;
    expectStatus(StatusNotSupported, [&] { context.reuse(FRAME_RGB24, FRAME_I420, 5, &window); });
    EXPECT_EQ(infoOf(context.dst), infos().at(FRAME_I420));
    expectStatus(StatusUnsupportedFormat,
                 [&] { context.reuse(FRAME_NV21, FRAME_C2_8U, 5, &window); });
    EXPECT_EQ(infoOf(context.src), infos().at(FRAME_NV21));
    EXPECT_EQ(infoOf(context.dst), infos().at(FRAME_I420));
}

}  // namespace

}  // namespace ox::test
