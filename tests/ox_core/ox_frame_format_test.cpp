// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame_format.h"

#include <gtest/gtest.h>

#include <string>
#include <type_traits>

#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(std::is_same_v<std::underlying_type_t<FrameFormat>, std::uint32_t>);
static_assert(std::is_convertible_v<FrameFormat, unsigned>);

struct Named {
    FrameFormat format;
    unsigned value;
    char const* name;
};

constexpr Named names[] = {
    {FRAME_FORMAT_NONE, 0, "FRAME_FORMAT_NONE"},
    {FRAME_GRAY8, 1, "FRAME_GRAY8"},
    {FRAME_RGB24, 2, "FRAME_RGB24"},
    {FRAME_RGB_PLANAR, 3, "FRAME_RGB_PLANAR"},
    {FRAME_BGR24, 4, "FRAME_BGR24"},
    {FRAME_BGR_PLANAR, 5, "FRAME_BGR_PLANAR"},
    {FRAME_I420, 6, "FRAME_I420"},
    {FRAME_YV12, 7, "FRAME_YV12"},
    {FRAME_NV12, 8, "FRAME_NV12"},
    {FRAME_NV21, 9, "FRAME_NV21"},
    {FRAME_YV16, 10, "FRAME_YV16"},
    {FRAME_YUYV, 11, "FRAME_YUYV"},
    {FRAME_UYVY, 12, "FRAME_UYVY"},
    {FRAME_NV16, 13, "FRAME_NV16"},
    {FRAME_YUV444, 14, "FRAME_YUV444"},
    {FRAME_YUV444_PLANAR, 15, "FRAME_YUV444_PLANAR"},
    {FRAME_C2_8U, 16, "FRAME_C2_8U"},
    {FRAME_C3_8U, 17, "FRAME_C3_8U"},
    {FRAME_C4_8U, 18, "FRAME_C4_8U"},
    {FRAME_C1_16U, 19, "FRAME_C1_16U"},
    {FRAME_C1_32U, 20, "FRAME_C1_32U"},
    {FRAME_GRAY_32F, 24, "FRAME_GRAY_32F"},
    {FRAME_BGR_32F, 25, "FRAME_BGR_32F"},
    {FRAME_BGR_32F_PLANAR, 26, "FRAME_BGR_32F_PLANAR"},
};

TEST(FrameFormat, ValuesAndNamesAreFixed) {
    for (Named const& named : names) {
        EXPECT_EQ(unsigned{named.format}, named.value);
        EXPECT_STREQ(toString(named.format), named.name);
    }
}

TEST(FrameFormat, ValuesWithoutAFormatAreUnknown) {
    for (FrameFormat const format : unknownFormats()) {
        if (format != FRAME_FORMAT_NONE) {
            EXPECT_STREQ(toString(format), "unknown") << format;
        }
    }
}

}  // namespace

}  // namespace ox::test
