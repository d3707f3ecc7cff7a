// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which buffers go through oxconvertscale as they are, and how it reads and writes the others.
#include <gtest/gtest.h>

#include <string>

#include "gstreamer/fixture.h"
#include "ox_interop/ox_gstreamer.h"
#include "support/test_frame.h"

namespace ox::test::gst_buffers {

namespace {

using namespace ox::test::gst;
using interop::capsOf;

std::string capsAt(FrameFormat format, Size size) {
    return capsOf(format, size) + ", framerate=30/1";
}

class GstBuffers : public Gst {};

TEST_F(GstBuffers, PassThroughWhereNothingChanges) {
    for (auto const& pair : interop::gstFormats()) {
        Element element("oxconvertscale method=area filter=lanczos3");
        element.setCaps("video/x-raw, framerate=30/1, width=33, height=17, format=" +
                            std::string(gst_video_format_to_string(pair.foreign)),
                        "video/x-raw");
        GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, 1 << 16, nullptr);
        EXPECT_EQ(element.push(buffer).get(), buffer);
    }
}

// Also of interlaced video, and of matrices that nothing is known of.
TEST_F(GstBuffers, PassThroughWhatCouldNotBeConverted) {
    Element element;
    element.setCaps(
        "video/x-raw, format=NV12, width=32, height=32, framerate=30/1, "
        "interlace-mode=interleaved, colorimetry=smpte240m",
        "video/x-raw");
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, 32 * 48, nullptr);
    EXPECT_EQ(element.push(buffer).get(), buffer);
}

TEST_F(GstBuffers, CropsChangeWhilePlaying) {
    Element element;
    Random random;
    TestFrame const source(FRAME_NV12, {64, 48}, random);
    element.setCaps(capsAt(FRAME_NV12, {64, 48}), capsOf(FRAME_NV12, {64, 48}));
    GstBuffer* const same = interop::bufferOf(source.frame());
    EXPECT_EQ(element.push(same).get(), same);
    g_object_set(element.element(), "left", 8, "bottom", 10, nullptr);
    GstBuffer* const other = interop::bufferOf(source.frame());
    Buffer const cropped = element.push(other);
    EXPECT_NE(cropped.get(), other);
    Request request;
    request.region = {8, 0, 56, 38};
    EXPECT_TRUE(samePixels(MappedFrame(element.output(), cropped.get()).frame(),
                           byTheLibrary(source.frame(), FRAME_NV12, {64, 48}, request)));
    g_object_set(element.element(), "left", 0, "bottom", 0, nullptr);
    GstBuffer* const again = interop::bufferOf(source.frame());
    EXPECT_EQ(element.push(again).get(), again);
}

// Neither the crop nor the method is in the caps, which stay the same.
TEST_F(GstBuffers, PropertiesChangeWithoutCaps) {
    Element element;
    Random random;
    TestFrame const source(FRAME_NV12, {64, 48}, random);
    std::string const caps = capsAt(FRAME_NV12, {64, 48}) + ", pixel-aspect-ratio=1/1";
    element.setCaps(caps, caps);
    GstBuffer* const same = interop::bufferOf(source.frame());
    EXPECT_EQ(element.push(same).get(), same);
    Request request;
    request.region = {16, 12, 32, 24};
    g_object_set(element.element(), "left", 16, "right", 16, "top", 12, "bottom", 12, nullptr);
    for (TensorMethod const method : {TENSOR_METHOD_BILINEAR, TENSOR_METHOD_NEAREST}) {
        request.method = method;
        g_object_set(element.element(), "method", static_cast<int>(method), nullptr);
        Buffer const scaled = element.push(source.frame());
        EXPECT_TRUE(samePixels(MappedFrame(element.output(), scaled.get()).frame(),
                               byTheLibrary(source.frame(), FRAME_NV12, {64, 48}, request)));
    }
    g_object_set(element.element(), "left", 0, "right", 0, "top", 0, "bottom", 0, nullptr);
    GstBuffer* const again = interop::bufferOf(source.frame());
    EXPECT_EQ(element.push(again).get(), again);
}

// Where the size is open, a crop changes it, from one buffer to the next.
TEST_F(GstBuffers, SizesFollowCrops) {
    Element element;
    TestFrame const source(FRAME_NV12, {64, 48});
    element.setCaps(capsAt(FRAME_NV12, {64, 48}), "video/x-raw");
    element.push(source.frame());
    EXPECT_EQ(element.outputSize(), (Size{64, 48}));
    g_object_set(element.element(), "left", 8, "top", 16, nullptr);
    element.push(source.frame());
    EXPECT_EQ(element.outputSize(), (Size{56, 32}));
    g_object_set(element.element(), "width", 28, nullptr);
    element.push(source.frame());
    EXPECT_EQ(element.outputSize(), (Size{28, 16}));
}

TEST_F(GstBuffers, CapsChangeMidStream) {
    Element element("oxconvertscale width=20 format=BGR");
    gst_harness_set_sink_caps(element.harness(), capsFrom("video/x-raw").release());
    struct {
        FrameFormat format;
        Size size;
        Size result;
    } const steps[]{{FRAME_NV12, {64, 48}, {20, 15}}, {FRAME_YUYV, {64, 48}, {20, 15}},
                    {FRAME_YUYV, {41, 61}, {20, 30}}, {FRAME_GRAY8, {20, 8}, {20, 8}},
                    {FRAME_BGR24, {20, 8}, {20, 8}},  {FRAME_NV12, {64, 48}, {20, 15}}};
    for (auto const& step : steps) {
        Random random;
        TestFrame const source(step.format, step.size, random);
        element.setInput(capsAt(step.format, step.size));
        Buffer const buffer = element.push(source.frame());
        ASSERT_NE(buffer, nullptr) << element.error();
        EXPECT_TRUE(samePixels(MappedFrame(element.output(), buffer.get()).frame(),
                               byTheLibrary(source.frame(), FRAME_BGR24, step.result)));
    }
}

// Answers the element's question about buffers with a pool of padded ones.
GstPadProbeReturn proposePaddedPool(GstPad* /*pad*/, GstPadProbeInfo* probe, gpointer /*data*/) {
    GstQuery* const query = GST_PAD_PROBE_INFO_QUERY(probe);
    if (GST_QUERY_TYPE(query) != GST_QUERY_ALLOCATION) {
        return GST_PAD_PROBE_OK;
    }
    GstCaps* caps = nullptr;
    gst_query_parse_allocation(query, &caps, nullptr);
    GstVideoInfo info = infoOf(caps);
    GstVideoAlignment padding;
    gst_video_alignment_reset(&padding);
    padding.padding_left = 32;
    padding.padding_right = 34;
    padding.padding_top = 4;
    padding.padding_bottom = 2;
    gst_video_info_align(&info, &padding);
    GstBufferPool* const pool = gst_video_buffer_pool_new();
    GstStructure* const config = gst_buffer_pool_get_config(pool);
    auto const size = static_cast<guint>(info.size);
    gst_buffer_pool_config_set_params(config, caps, size, 1, 0);
    gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_META);
    gst_buffer_pool_config_add_option(config, GST_BUFFER_POOL_OPTION_VIDEO_ALIGNMENT);
    gst_buffer_pool_config_set_video_alignment(config, &padding);
    EXPECT_TRUE(gst_buffer_pool_set_config(pool, config));
    gst_query_add_allocation_pool(query, pool, size, 1, 0);
    gst_query_add_allocation_meta(query, GST_VIDEO_META_API_TYPE, nullptr);
    gst_object_unref(pool);
    return GST_PAD_PROBE_HANDLED;
}

TEST_F(GstBuffers, RowsAreWrittenWhereDownstreamWantsThem) {
    for (FrameFormat const format : {FRAME_BGR24, FRAME_I420, FRAME_RGB_PLANAR, FRAME_NV12}) {
        Element element;
        GstPad* const pad = gst_element_get_static_pad(element.element(), "src");
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_QUERY_DOWNSTREAM, proposePaddedPool, nullptr,
                          nullptr);
        Random random;
        TestFrame const source(FRAME_NV12, {66, 50}, random, Placement{7});
        element.setCaps(capsAt(FRAME_NV12, {66, 50}), capsOf(format, {30, 22}));
        Buffer const buffer = element.push(source.frame());
        ASSERT_NE(buffer, nullptr) << element.error();
        MappedFrame const got(element.output(), buffer.get());
        FramePlane const& plane = got.frame().layout().plane[0];
        EXPECT_GE(plane.stride, static_cast<std::int64_t>(plane.rowBytes) + 66);
        EXPECT_TRUE(samePixels(got.frame(), byTheLibrary(source.frame(), format, {30, 22})));
        source.expectGapsUntouched();
        gst_object_unref(pad);
    }
}

// The source's pixels are read where they are: planes in memories of their own, read-only.
TEST_F(GstBuffers, PlanesAreReadWhereTheyAre) {
    Element element;
    Random random;
    TestFrame const source(FRAME_I420, {64, 48}, random, Placement{16, Guard::AtEnd});
    element.setCaps(capsAt(FRAME_I420, {64, 48}), capsOf(FRAME_BGR24, {64, 48}));
    GstBuffer* const buffer = interop::bufferOf(source.frame());
    EXPECT_EQ(gst_buffer_n_memory(buffer), 3U);
    for (guint i = 0; i < 3; ++i) {
        GST_MINI_OBJECT_FLAG_SET(gst_buffer_peek_memory(buffer, i), GST_MEMORY_FLAG_READONLY);
    }
    Buffer const kept(gst_buffer_ref(buffer), gst_buffer_unref);
    Buffer const result = element.push(buffer);
    EXPECT_EQ(gst_buffer_n_memory(kept.get()), 3U);
    EXPECT_TRUE(samePixels(MappedFrame(element.output(), result.get()).frame(),
                           byTheLibrary(source.frame(), FRAME_BGR24, {64, 48})));
}

TEST_F(GstBuffers, TimesAndRegionsComeAlong) {
    Element element;
    TestFrame const source(FRAME_NV12, {64, 48});
    element.setCaps(capsAt(FRAME_NV12, {64, 48}), capsOf(FRAME_NV12, {32, 12}));
    GstBuffer* const buffer = interop::bufferOf(source.frame());
    GST_BUFFER_PTS(buffer) = 5 * GST_SECOND;
    gst_buffer_add_video_region_of_interest_meta(buffer, "face", 8, 12, 20, 16);
    Buffer const result = element.push(buffer);
    EXPECT_EQ(GST_BUFFER_PTS(result.get()), 5 * GST_SECOND);
    auto const* const meta = gst_buffer_get_video_region_of_interest_meta_id(result.get(), 0);
    ASSERT_NE(meta, nullptr);
    EXPECT_EQ(meta->x, 4U);
    EXPECT_EQ(meta->y, 3U);
    EXPECT_EQ(meta->w, 10U);
    EXPECT_EQ(meta->h, 4U);
}

TEST_F(GstBuffers, PointersGoBackToTheSource) {
    Element element("oxconvertscale left=8 top=16");
    TestFrame const source(FRAME_NV12, {64, 48});
    element.setCaps(capsAt(FRAME_NV12, {64, 48}), capsOf(FRAME_NV12, {28, 64}));
    element.push(source.frame());
    gst_harness_push_upstream_event(
        element.harness(),
        gst_navigation_event_new_mouse_move(14.0, 32.0, GST_NAVIGATION_MODIFIER_NONE));
    GstEvent* event = nullptr;
    while ((event = gst_harness_try_pull_upstream_event(element.harness())) != nullptr) {
        double x = 0.0;
        double y = 0.0;
        bool const is_pointer = gst_navigation_event_get_coordinates(event, &x, &y) != FALSE;
        gst_event_unref(event);
        if (is_pointer) {
            EXPECT_EQ(x, 8.0 + 28.0);
            EXPECT_EQ(y, 16.0 + 16.0);
            return;
        }
    }
    FAIL() << "the event got lost";
}

}  // namespace

}  // namespace ox::test::gst_buffers
