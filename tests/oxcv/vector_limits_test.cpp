// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vector backend doesn't do, read as a table.
#include "../../tools/oxcv/vector_limits.h"

#include <gtest/gtest.h>

#include "support/test_frame.h"

namespace oxcv::test {

namespace {

constexpr std::string_view noPair = "the vector backend doesn't convert this pair";
constexpr std::string_view oddSides = "the vector backend converts 4:2:0 frames of even sides only";
constexpr std::string_view redFirst = "the vector backend would take floats for red first";
constexpr std::string_view depth = "the vector backend scales channels of 8 and 32 bits only";
constexpr std::string_view integers = "the vector backend takes channels of 32 bits for floats";
constexpr std::string_view floatArea = "the vector backend doesn't scale floats by area";
constexpr std::string_view notBytes = "warps are for formats of 8 bits a channel";

}  // namespace

TEST(VectorLimits, Conversions) {
    struct Case {
        ox::FrameFormat src;
        ox::FrameFormat dst;
        ox::Size size;
        std::string_view reason;
    };
    for (auto const& [src, dst, size, reason] :
         {Case{ox::FRAME_NV12, ox::FRAME_BGR24, {4, 4}, {}},
          Case{ox::FRAME_NV12, ox::FRAME_BGR24, {5, 4}, oddSides},
          Case{ox::FRAME_NV21, ox::FRAME_RGB24, {4, 5}, oddSides},
          Case{ox::FRAME_I420, ox::FRAME_GRAY8, {1, 1}, oddSides},
          Case{ox::FRAME_BGR24, ox::FRAME_I420, {5, 5}, {}},
          Case{ox::FRAME_YUV444_PLANAR, ox::FRAME_BGR24, {5, 5}, {}},
          Case{ox::FRAME_BGR_32F_PLANAR, ox::FRAME_BGR24, {5, 5}, {}},
          Case{ox::FRAME_BGR_32F_PLANAR, ox::FRAME_RGB24, {5, 5}, redFirst},
          Case{ox::FRAME_RGB_PLANAR, ox::FRAME_BGR_32F, {5, 5}, redFirst},
          Case{ox::FRAME_YV12, ox::FRAME_BGR24, {4, 4}, noPair},
          Case{ox::FRAME_YV12, ox::FRAME_BGR24, {5, 5}, noPair},
          Case{ox::FRAME_GRAY8, ox::FRAME_NV12, {4, 4}, noPair},
          Case{ox::FRAME_C1_16U, ox::FRAME_GRAY8, {4, 4}, noPair},
          Case{ox::FRAME_I420, ox::FRAME_I420, {5, 5}, {}},
          Case{ox::FRAME_C1_16U, ox::FRAME_C1_16U, {5, 5}, {}}}) {
        EXPECT_EQ(whyNotConverted(src, dst, size), reason)
            << ox::toString(src) << " to " << ox::toString(dst) << " of width " << size.width;
    }
}

TEST(VectorLimits, Scaling) {
    for (ox::FrameFormat const format : ox::test::allFormats()) {
        int const bits = ox::FrameLayout(format, {2, 2}, 1).plane[0].bits;
        bool const counts = format == ox::FRAME_C1_32U;
        std::string_view const smooth = counts ? integers : std::string_view{};
        SCOPED_TRACE(ox::toString(format));
        EXPECT_EQ(whyNotScaled(format, ox::ResizeNearestNeighbour),
                  bits == 16 ? depth : std::string_view{});
        EXPECT_EQ(whyNotScaled(format, ox::ResizeBilinear), bits == 16 ? depth : smooth);
        std::string_view const area = counts ? integers : floatArea;
        std::string_view const deep_area = bits == 16 ? depth : area;
        EXPECT_EQ(whyNotScaled(format, ox::ResizeArea), bits == 8 ? std::string_view{} : deep_area);
    }
}

TEST(VectorLimits, Warps) {
    for (ox::FrameFormat const format : ox::test::allFormats()) {
        ox::FrameLayout const layout(format, {5, 3}, 1);
        EXPECT_EQ(whyNotWarped(layout), layout.plane[0].bits == 8 ? std::string_view{} : notBytes)
            << ox::toString(format);
    }
}

TEST(VectorLimits, WarpsEndAtFourGibibytes) {
    EXPECT_EQ(whyNotWarped(ox::FrameLayout(ox::FRAME_GRAY8, {65536, 65536}, 1)), "");
    EXPECT_EQ(whyNotWarped(ox::FrameLayout(ox::FRAME_GRAY8, {65536, 65537}, 1)),
              "warps are for planes of up to 4 GiB");
}

}  // namespace oxcv::test
