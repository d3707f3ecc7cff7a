// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames on DRM's buffers: fourccs, pitches, offsets.
#include "ox_interop/ox_drm.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "support/exceptions.h"

namespace ox::test::drm {

namespace {

using namespace ox::interop;

constexpr std::uint32_t fourcc(char const (&letters)[5]) {
    std::uint32_t number = 0;
    for (int i = 3; i >= 0; --i) {
        number = number << 8 | static_cast<unsigned char>(letters[i]);
    }
    return number;
}

TEST(Drm, FourccsAreThoseOfTheSamples) {
    // Packed ones are named from the highest byte on, so "RG24" has blue first.
    struct {
        FrameFormat format;
        std::uint32_t fourcc;
    } const cases[]{{FRAME_GRAY8, fourcc("R8  ")},  {FRAME_BGR24, fourcc("RG24")},
                    {FRAME_RGB24, fourcc("BG24")},  {FRAME_I420, fourcc("YU12")},
                    {FRAME_YV12, fourcc("YV12")},   {FRAME_NV12, fourcc("NV12")},
                    {FRAME_NV21, fourcc("NV21")},   {FRAME_YV16, fourcc("YV16")},
                    {FRAME_YUYV, fourcc("YUYV")},   {FRAME_UYVY, fourcc("UYVY")},
                    {FRAME_NV16, fourcc("NV16")},   {FRAME_YUV444, fourcc("VU24")},
                    {FRAME_C1_16U, fourcc("R16 ")}, {FRAME_YUV444_PLANAR, fourcc("YU24")}};
    for (auto const& [format, number] : cases) {
        EXPECT_EQ(drmFormatOf(format), number) << toString(format);
        EXPECT_EQ(frameFormatOfDrm(number), format);
    }
    EXPECT_EQ(drmFormatOf(FRAME_BGR_32F), 0U);
    EXPECT_EQ(frameFormatOfDrm(DRM_FORMAT_XRGB8888), FRAME_FORMAT_NONE);
}

TEST(Drm, FramesLieAtOffsets) {
    std::vector<unsigned char> bytes(4096);
    void* const maps[]{bytes.data(), bytes.data(), bytes.data()};
    std::uint32_t const pitches[]{64, 32, 40};
    std::uint32_t const offsets[]{16, 1000, 2000};
    Frame const frame =
        frameOfDrm(DRM_FORMAT_YUV422, DRM_FORMAT_MOD_LINEAR, {30, 8}, maps, pitches, offsets);
    EXPECT_EQ(frame.format(), FRAME_YV16);
    EXPECT_EQ(frame.planeData(0), bytes.data() + 16);
    EXPECT_EQ(frame.planeData(1), bytes.data() + 2000);  // V, which is DRM's last
    EXPECT_EQ(frame.planeData(2), bytes.data() + 1000);
    EXPECT_EQ(frame.layout().plane[0].stride, 64);
    EXPECT_EQ(frame.layout().plane[1].stride, 40);
    EXPECT_EQ(frame.layout().plane[2].stride, 32);
    expectException(
        StatusNotSupported, "Failure in frameOfDrm(...) : the modifier isn't linear.", [&] {
            frameOfDrm(DRM_FORMAT_NV12, I915_FORMAT_MOD_X_TILED, {30, 8}, maps, pitches, offsets);
        });
    expectException(
        StatusNotSupported, "Failure in frameOfDrm(...) : the fourcc has no counterpart.", [&] {
            frameOfDrm(DRM_FORMAT_XRGB8888, DRM_FORMAT_MOD_LINEAR, {30, 8}, maps, pitches, offsets);
        });
    void* const nothing[]{nullptr, nullptr};
    expectStatus(StatusNullPointer, [&] {
        frameOfDrm(DRM_FORMAT_NV12, DRM_FORMAT_MOD_LINEAR, {30, 8}, nothing, pitches, offsets);
    });
}

}  // namespace

}  // namespace ox::test::drm
