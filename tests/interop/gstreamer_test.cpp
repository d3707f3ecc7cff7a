// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames and GStreamer's buffers on each other's memory; GStreamer says where its samples lie.
#include "ox_interop/ox_gstreamer.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "interop/samples.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::gstreamer {

namespace {

using namespace ox::interop;

using Buffer = std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)>;

GstVideoInfo infoOf(GstVideoFormat format, Size size) {
    GstVideoInfo info;
    gst_video_info_init(&info);
    gst_video_info_set_format(&info, format, static_cast<guint>(size.width),
                              static_cast<guint>(size.height));
    return info;
}

class Mapped {
  public:
    Mapped(GstVideoInfo info, Buffer const& buffer) {
        EXPECT_TRUE(gst_video_frame_map(&frame, &info, buffer.get(), GST_MAP_READ));
    }
    Mapped(Mapped const&) = delete;
    Mapped& operator=(Mapped const&) = delete;
    ~Mapped() { gst_video_frame_unmap(&frame); }

    GstVideoFrame frame;
};

void expectSameSamples(Frame const& frame, GstVideoFrame const& other) {
    char const* const name = gst_video_format_to_string(GST_VIDEO_FRAME_FORMAT(&other));
    std::vector<Component> const components = componentsOf(frame.format());
    ASSERT_EQ(GST_VIDEO_FRAME_N_COMPONENTS(&other), components.size()) << name;
    EXPECT_EQ(GST_VIDEO_FRAME_WIDTH(&other), frame.width());
    EXPECT_EQ(GST_VIDEO_FRAME_HEIGHT(&other), frame.height());
    for (std::size_t c = 0; c < components.size(); ++c) {
        FramePlane const& plane = frame.layout().plane[components[c].plane];
        EXPECT_EQ(GST_VIDEO_FRAME_COMP_DATA(&other, c), firstSample(frame, components[c]))
            << name << ", component " << c;
        EXPECT_EQ(GST_VIDEO_FRAME_COMP_PSTRIDE(&other, c), components[c].step) << name;
        EXPECT_EQ(GST_VIDEO_FRAME_COMP_STRIDE(&other, c), plane.stride) << name;
        EXPECT_EQ(GST_VIDEO_FRAME_COMP_DEPTH(&other, c), plane.bits) << name;
    }
}

class GStreamer : public testing::Test {
  protected:
    // Without plugins there is nothing to look for on the disk.
    static void SetUpTestSuite() {
        g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
        gst_init(nullptr, nullptr);
    }
};

TEST_F(GStreamer, FramesLieOnMappedBuffers) {
    int formats = 0;
    for (auto const& pair : gstFormats()) {
        GstVideoInfo const info = infoOf(pair.foreign, {34, 18});
        Buffer const buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr), gst_buffer_unref);
        Mapped const mapped(info, buffer);
        Frame const frame = frameOf(mapped.frame);
        EXPECT_EQ(frame.format(), frameFormatOf(pair.foreign));
        expectSameSamples(frame, mapped.frame);
        ++formats;
    }
    EXPECT_EQ(formats, 17);
}

TEST_F(GStreamer, BuffersLieOnFrames) {
    for (FrameFormat const format : allFormats()) {
        if (videoFormatOf(format) == GST_VIDEO_FORMAT_UNKNOWN) {
            continue;
        }
        Random random;
        TestFrame const source(format, {34, 17}, random, Placement{12});
        Buffer const buffer(bufferOf(source.frame()), gst_buffer_unref);
        Mapped const mapped(infoOf(videoFormatOf(format), {34, 17}), buffer);
        expectSameSamples(source.frame(), mapped.frame);
    }
}

TEST_F(GStreamer, BuffersKeepStorageAlive) {
    std::int64_t const live = liveAllocations();
    Frame frame;
    frame.reuse(FRAME_YV16, {32, 16}, DeviceContext(), 0);
    fill(frame, 77);
    unsigned char const* const bytes = frame.planeData(2);
    Buffer buffer(bufferOf(frame), gst_buffer_unref);
    frame.clear();
    EXPECT_EQ(bytes[15], 77);
    EXPECT_GT(liveAllocations(), live);
    buffer.reset();
    EXPECT_EQ(liveAllocations(), live);
}

TEST_F(GStreamer, CapsAreUnderstood) {
    std::string const text = capsOf(FRAME_NV12, {640, 480});
    EXPECT_EQ(text, "video/x-raw, format=(string)NV12, width=(int)640, height=(int)480");
    GstCaps* const caps = gst_caps_from_string((text + ", framerate=(fraction)30/1").c_str());
    ASSERT_NE(caps, nullptr);
    GstVideoInfo info;
    EXPECT_TRUE(gst_video_info_from_caps(&info, caps));
    EXPECT_EQ(frameFormatOf(GST_VIDEO_INFO_FORMAT(&info)), FRAME_NV12);
    EXPECT_EQ(GST_VIDEO_INFO_WIDTH(&info), 640);
    EXPECT_EQ(GST_VIDEO_INFO_HEIGHT(&info), 480);
    gst_caps_unref(caps);
}

TEST_F(GStreamer, FormatsWithoutCounterpartsAreRefused) {
    EXPECT_EQ(frameFormatOf(GST_VIDEO_FORMAT_P010_10LE), FRAME_FORMAT_NONE);
    EXPECT_EQ(videoFormatOf(FRAME_BGR_32F), GST_VIDEO_FORMAT_UNKNOWN);
    TestFrame const floats(FRAME_BGR_32F, {4, 4});
    expectException(StatusNotSupported,
                    "Failure in bufferOf(...) : the frame's format has no counterpart.",
                    [&] { bufferOf(floats.frame()); });
    expectException(StatusNotSupported,
                    "Failure in capsOf(...) : the frame's format has no counterpart.", [&] {
                        capsOf(FRAME_BGR_32F, {4, 4});
                    });
    GstVideoInfo const info = infoOf(GST_VIDEO_FORMAT_RGBA, {4, 4});
    Buffer const buffer(gst_buffer_new_allocate(nullptr, info.size, nullptr), gst_buffer_unref);
    Mapped const mapped(info, buffer);
    expectException(StatusNotSupported,
                    "Failure in frameOf(...) : the video frame's format has no counterpart.",
                    [&] { frameOf(mapped.frame); });
}

TEST_F(GStreamer, ColourIsThatOfTheCaps) {
    auto const colour = [](char const* text) {
        GstVideoInfo info = infoOf(GST_VIDEO_FORMAT_NV12, {16, 16});
        EXPECT_TRUE(gst_video_colorimetry_from_string(&info.colorimetry, text));
        return colourOf(info);
    };
    EXPECT_EQ(colour("bt601").matrix, TENSOR_MATRIX_BT601);
    EXPECT_EQ(colour("bt709").matrix, TENSOR_MATRIX_BT709);
    EXPECT_EQ(colour("bt709").range, TENSOR_RANGE_LIMITED);
    EXPECT_EQ(colour("bt2020").matrix, TENSOR_MATRIX_BT2020);
    EXPECT_EQ(colour("1:4:0:0").range, TENSOR_RANGE_FULL);
    expectStatus(StatusNotSupported, [&] { colour("smpte240m"); });
}

}  // namespace

}  // namespace ox::test::gstreamer
