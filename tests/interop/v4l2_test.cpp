// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames on V4L2's buffers: where its documents say that planes lie.
#include "ox_interop/ox_v4l2.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::v4l2 {

namespace {

using namespace ox::interop;

v4l2_format single(std::uint32_t fourcc, Size size, std::uint32_t stride, std::uint32_t bytes) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = static_cast<std::uint32_t>(size.width);
    format.fmt.pix.height = static_cast<std::uint32_t>(size.height);
    format.fmt.pix.pixelformat = fourcc;
    format.fmt.pix.bytesperline = stride;
    format.fmt.pix.sizeimage = bytes;
    return format;
}

v4l2_format several(std::uint32_t fourcc, Size size, std::vector<std::uint32_t> const& strides) {
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE;
    v4l2_pix_format_mplane& pix = format.fmt.pix_mp;
    pix.width = static_cast<std::uint32_t>(size.width);
    pix.height = static_cast<std::uint32_t>(size.height);
    pix.pixelformat = fourcc;
    pix.num_planes = static_cast<std::uint8_t>(strides.size());
    for (std::size_t i = 0; i < strides.size(); ++i) {
        pix.plane_fmt[i].bytesperline = strides[i];
    }
    return format;
}

// The letters of a fourcc, which its documents go by.
std::string lettersOf(std::uint32_t fourcc) {
    std::string letters;
    for (int i = 0; i < 4; ++i) {
        letters += static_cast<char>(fourcc >> 8 * i & 0x7f);
    }
    return letters;
}

struct Place {
    std::int64_t offset;
    std::int64_t stride;
};

class V4l2 : public testing::Test {
  protected:
    // Compares the planes of a frame in one buffer.
    void expectPlanes(v4l2_format const& format, FrameFormat expected,
                      std::vector<Place> const& places) {
        void* const buffers[]{bytes.data()};
        Frame const frame = frameOf(format, buffers);
        EXPECT_EQ(frame.format(), expected);
        ASSERT_EQ(frame.layout().planeCount, static_cast<int>(places.size()));
        for (int i = 0; i < frame.layout().planeCount; ++i) {
            Place const& place = places[static_cast<std::size_t>(i)];
            EXPECT_EQ(frame.planeData(i) - bytes.data(), place.offset) << "plane " << i;
            EXPECT_EQ(frame.layout().plane[i].stride, place.stride) << "plane " << i;
        }
    }

    std::vector<unsigned char> bytes = std::vector<unsigned char>(4096);
    std::vector<unsigned char> more = std::vector<unsigned char>(4096);
};

TEST_F(V4l2, FourccsAreThoseOfTheSamples) {
    struct {
        FrameFormat format;
        char const* letters;
    } const cases[]{{FRAME_GRAY8, "GREY"},  {FRAME_RGB24, "RGB3"},        {FRAME_BGR24, "BGR3"},
                    {FRAME_I420, "YU12"},   {FRAME_YV12, "YV12"},         {FRAME_NV12, "NV12"},
                    {FRAME_NV21, "NV21"},   {FRAME_YV16, "422P"},         {FRAME_YUYV, "YUYV"},
                    {FRAME_UYVY, "UYVY"},   {FRAME_NV16, "NV16"},         {FRAME_YUV444, "YUV3"},
                    {FRAME_C1_16U, "Y16 "}, {FRAME_YUV444_PLANAR, "YM24"}};
    for (auto const& [format, letters] : cases) {
        EXPECT_EQ(lettersOf(v4l2FormatOf(format)), letters);
        EXPECT_EQ(frameFormatOfV4l2(v4l2FormatOf(format)), format);
    }
    EXPECT_EQ(v4l2FormatOf(FRAME_BGR_32F), 0U);
    EXPECT_EQ(frameFormatOfV4l2(V4L2_PIX_FMT_MJPEG), FRAME_FORMAT_NONE);
    EXPECT_EQ(frameFormatOfV4l2(V4L2_PIX_FMT_NV12M), FRAME_NV12);
}

TEST_F(V4l2, PlanesOfABufferFollowOneAnother) {
    expectPlanes(single(V4L2_PIX_FMT_YUYV, {16, 8}, 40, 320), FRAME_YUYV, {{0, 40}});
    expectPlanes(single(V4L2_PIX_FMT_NV12, {16, 8}, 32, 384), FRAME_NV12, {{0, 32}, {256, 32}});
    expectPlanes(single(V4L2_PIX_FMT_NV16, {16, 8}, 32, 512), FRAME_NV16, {{0, 32}, {256, 32}});
    expectPlanes(single(V4L2_PIX_FMT_YUV420, {16, 8}, 32, 384), FRAME_I420,
                 {{0, 32}, {256, 16}, {320, 16}});
    expectPlanes(single(V4L2_PIX_FMT_YVU420, {16, 8}, 32, 384), FRAME_YV12,
                 {{0, 32}, {256, 16}, {320, 16}});
    // U comes before V in the buffer, and after it in the frame.
    expectPlanes(single(V4L2_PIX_FMT_YUV422P, {16, 8}, 32, 512), FRAME_YV16,
                 {{0, 32}, {384, 16}, {256, 16}});
    expectPlanes(single(V4L2_PIX_FMT_NV12, {16, 8}, 0, 0), FRAME_NV12, {{0, 16}, {128, 16}});
    expectPlanes(several(V4L2_PIX_FMT_NV12, {16, 8}, {32}), FRAME_NV12, {{0, 32}, {256, 32}});
}

TEST_F(V4l2, PlanesMayHaveBuffersOfTheirOwn) {
    std::vector<unsigned char> last(4096);
    void* const buffers[]{bytes.data(), more.data(), last.data()};
    Frame const pairs = frameOf(several(V4L2_PIX_FMT_NV12M, {16, 8}, {32, 48}), buffers);
    EXPECT_EQ(pairs.planeData(1), more.data());
    EXPECT_EQ(pairs.layout().plane[1].stride, 48);
    Frame const planes = frameOf(several(V4L2_PIX_FMT_YUV422M, {16, 8}, {32, 24, 16}), buffers);
    EXPECT_EQ(planes.format(), FRAME_YV16);
    EXPECT_EQ(planes.planeData(1), last.data());
    EXPECT_EQ(planes.layout().plane[1].stride, 16);
    EXPECT_EQ(planes.planeData(2), more.data());
    EXPECT_EQ(planes.layout().plane[2].stride, 24);
    expectException(StatusInvalidParameter,
                    "Failure in frameOf(...) : the format has another count of buffers.", [&] {
                        frameOf(several(V4L2_PIX_FMT_YUV420M, {16, 8}, {32, 16}), buffers);
                    });
}

TEST_F(V4l2, WhatIsNoFrameIsRefused) {
    void* const buffers[]{bytes.data()};
    auto const refused = [&](Status status, char const* text, v4l2_format const& format) {
        expectException(status, "Failure in " + std::string(text),
                        [&] { frameOf(format, buffers); });
    };
    refused(StatusNotSupported, "frameOf(...) : the fourcc has no counterpart.",
            single(V4L2_PIX_FMT_MJPEG, {16, 8}, 0, 100));
    refused(StatusInvalidParameter, "frameOf(...) : the planes are larger than sizeimage.",
            single(V4L2_PIX_FMT_NV12, {16, 8}, 32, 300));
    refused(StatusInvalidParameter, "Frame::wrap(...) : stride is smaller than the row's bytes.",
            single(V4L2_PIX_FMT_YUYV, {16, 8}, 30, 0));
    v4l2_format other = single(V4L2_PIX_FMT_NV12, {16, 8}, 0, 0);
    other.type = V4L2_BUF_TYPE_VBI_CAPTURE;
    refused(StatusInvalidParameter, "pictureOf(...) : the v4l2_format isn't one of video.", other);
    refused(StatusInvalidParameter, "pictureOf(...) : the v4l2_format isn't one of video.",
            several(V4L2_PIX_FMT_NV12, {16, 8}, {32, 32, 32, 32}));
    expectException(StatusNullPointer, "Failure in frameOf(...) : buffers is null.", [] {
        frameOf(single(V4L2_PIX_FMT_NV12, {16, 8}, 0, 0), nullptr);
    });
}

TEST_F(V4l2, ColourIsThatOfTheDevice) {
    v4l2_format format = single(V4L2_PIX_FMT_NV12, {16, 8}, 0, 0);
    format.fmt.pix.colorspace = V4L2_COLORSPACE_SRGB;
    EXPECT_EQ(colourOf(format).matrix, TENSOR_MATRIX_BT601);
    EXPECT_EQ(colourOf(format).range, TENSOR_RANGE_LIMITED);
    format.fmt.pix.colorspace = V4L2_COLORSPACE_REC709;
    EXPECT_EQ(colourOf(format).matrix, TENSOR_MATRIX_BT709);
    format.fmt.pix.colorspace = V4L2_COLORSPACE_JPEG;
    EXPECT_EQ(colourOf(format).matrix, TENSOR_MATRIX_BT601);
    EXPECT_EQ(colourOf(format).range, TENSOR_RANGE_FULL);
    v4l2_format planes = several(V4L2_PIX_FMT_NV12M, {16, 8}, {16, 16});
    planes.fmt.pix_mp.ycbcr_enc = V4L2_YCBCR_ENC_BT2020;
    planes.fmt.pix_mp.quantization = V4L2_QUANTIZATION_FULL_RANGE;
    EXPECT_EQ(colourOf(planes).matrix, TENSOR_MATRIX_BT2020);
    EXPECT_EQ(colourOf(planes).range, TENSOR_RANGE_FULL);
    planes.fmt.pix_mp.ycbcr_enc = V4L2_YCBCR_ENC_SMPTE240M;
    expectStatus(StatusNotSupported, [&] { colourOf(planes); });
}

}  // namespace

}  // namespace ox::test::v4l2
