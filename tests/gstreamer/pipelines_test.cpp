// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// oxconvertscale between other elements: what comes out is what the library makes of what goes in.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "gstreamer/fixture.h"
#include "ox_interop/ox_gstreamer.h"
#include "support/test_frame.h"

namespace ox::test::gst_pipelines {

namespace {

using namespace ox::test::gst;

// A buffer that passed a pad, with the caps of that moment.
struct Passed {
    GstVideoInfo info;
    Buffer buffer;
};

GstPadProbeReturn remember(GstPad* pad, GstPadProbeInfo* probe, gpointer passed) {
    Caps const caps(gst_pad_get_current_caps(pad), gst_caps_unref);
    static_cast<std::vector<Passed>*>(passed)->push_back(
        {infoOf(caps.get()),
         Buffer(gst_buffer_ref(GST_PAD_PROBE_INFO_BUFFER(probe)), gst_buffer_unref)});
    return GST_PAD_PROBE_OK;
}

class Pipeline {
  public:
    // Runs to the end; the element is called "ox".
    explicit Pipeline(std::string const& line) {
        GError* error = nullptr;
        GstElement* const pipeline = gst_parse_launch(line.c_str(), &error);
        EXPECT_EQ(error, nullptr) << error->message;
        GstElement* const element = gst_bin_get_by_name(GST_BIN(pipeline), "ox");
        listen(element, "sink", in);
        listen(element, "src", out);
        gst_object_unref(element);
        gst_element_set_state(pipeline, GST_STATE_PLAYING);
        GstBus* const bus = gst_element_get_bus(pipeline);
        GstMessage* const message = gst_bus_timed_pop_filtered(
            bus, 20 * GST_SECOND, static_cast<GstMessageType>(GST_MESSAGE_EOS | GST_MESSAGE_ERROR));
        EXPECT_NE(message, nullptr) << "no end: " << line;
        if (message != nullptr && GST_MESSAGE_TYPE(message) == GST_MESSAGE_ERROR) {
            GError* failure = nullptr;
            gst_message_parse_error(message, &failure, nullptr);
            ADD_FAILURE() << line << ": " << failure->message;
            g_error_free(failure);
        }
        if (message != nullptr) {
            gst_message_unref(message);
        }
        gst_element_set_state(pipeline, GST_STATE_NULL);
        gst_object_unref(bus);
        gst_object_unref(pipeline);
    }

    std::vector<Passed> in;
    std::vector<Passed> out;

  private:
    static void listen(GstElement* element, char const* name, std::vector<Passed>& passed) {
        GstPad* const pad = gst_element_get_static_pad(element, name);
        gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, remember, &passed, nullptr);
        gst_object_unref(pad);
    }
};

// Expects so many buffers, each as the library makes it.
void expectAsTheLibrary(std::string const& line, std::size_t count, Request request = {}) {
    SCOPED_TRACE(line);
    Pipeline const pipeline(line);
    ASSERT_EQ(pipeline.in.size(), count);
    ASSERT_EQ(pipeline.out.size(), count);
    for (std::size_t i = 0; i < count; ++i) {
        MappedFrame const source(pipeline.in[i].info, pipeline.in[i].buffer.get());
        MappedFrame const result(pipeline.out[i].info, pipeline.out[i].buffer.get());
        interop::ColourMeaning const colour = interop::colourOf(pipeline.in[i].info);
        request.matrix = colour.matrix;
        request.range = colour.range;
        EXPECT_TRUE(samePixels(result.frame(), byTheLibrary(source.frame(), result.frame().format(),
                                                            result.frame().size(), request)));
    }
}

std::string const data = OX_EXAMPLE_DATA "/";

class GstPipelines : public Gst {};

TEST_F(GstPipelines, TestPictures) {
    for (char const* const from : {"NV12", "I420", "YUY2", "BGR", "GRAY8"}) {
        expectAsTheLibrary(
            std::string("videotestsrc num-buffers=3 pattern=snow ! video/x-raw, format=") + from +
                ", width=321, height=179 ! oxconvertscale name=ox ! video/x-raw, "
                "format={RGB, NV12}, width=107, height=59 ! fakesink",
            3);
    }
}

// The decoder says full range and writes into padded buffers.
TEST_F(GstPipelines, PhotographOfJpeg) {
    expectAsTheLibrary("filesrc location=" + data +
                           "rocket.jpg ! jpegdec ! oxconvertscale name=ox ! "
                           "video/x-raw, format=BGR, width=213 ! fakesink",
                       1);
    expectAsTheLibrary("filesrc location=" + data +
                           "rocket.jpg ! jpegdec ! oxconvertscale name=ox width=160 height=107 ! "
                           "video/x-raw, format=NV12 ! fakesink",
                       1);
}

TEST_F(GstPipelines, PhotographOfPng) {
    Request request;
    request.region = {51, 0, 300, 300};
    expectAsTheLibrary("filesrc location=" + data +
                           "chelsea.png ! pngdec ! oxconvertscale name=ox left=51 right=100 ! "
                           "video/x-raw, format=I420, width=111, height=111 ! fakesink",
                       1, request);
}

// There and back: an encoder takes what comes out, and the first element passes everything.
TEST_F(GstPipelines, BetweenEncoderAndDecoder) {
    expectAsTheLibrary(
        "videotestsrc num-buffers=2 ! video/x-raw, format=RGB, width=97, height=61 "
        "! oxconvertscale ! pngenc ! pngdec ! oxconvertscale name=ox ! "
        "video/x-raw, format=YUY2, height=40 ! fakesink",
        2);
    expectAsTheLibrary(
        "videotestsrc num-buffers=2 ! video/x-raw, format=BGR, width=97, height=61 "
        "! oxconvertscale name=ox width=64 ! jpegenc ! fakesink",
        2);
}

TEST_F(GstPipelines, QueuesAndSeveralElements) {
    expectAsTheLibrary(
        "videotestsrc num-buffers=5 ! video/x-raw, format=UYVY, width=200, "
        "height=100 ! oxconvertscale width=150 ! queue ! oxconvertscale name=ox ! "
        "video/x-raw, format=RGB, width=75 ! queue ! fakesink",
        5);
}

}  // namespace

}  // namespace ox::test::gst_pipelines
