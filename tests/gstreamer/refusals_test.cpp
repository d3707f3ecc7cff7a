// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What oxconvertscale doesn't do comes as an error on the bus, with the library's words where they
// are its.
#include <gtest/gtest.h>

#include <string>

#include "gstreamer/fixture.h"
#include "ox_interop/ox_gstreamer.h"
#include "support/test_frame.h"

namespace ox::test::gst_refusals {

namespace {

using namespace ox::test::gst;

// The error that a frame ends with.
std::string refusal(std::string const& line, std::string const& in, std::string const& out) {
    std::string const all = "video/x-raw, framerate=30/1, " + in;
    Element element(line);
    element.setCaps(all, "video/x-raw, " + out);
    GstBuffer* const buffer =
        gst_buffer_new_allocate(nullptr, infoOf(capsFrom(all).get()).size, nullptr);
    GstFlowReturn const flow = gst_harness_push(element.harness(), buffer);
    EXPECT_TRUE(flow == GST_FLOW_NOT_NEGOTIATED || flow == GST_FLOW_ERROR) << flow;
    return element.error();
}

class GstRefusals : public Gst {};

TEST_F(GstRefusals, FiltersThatEnlarge) {
    EXPECT_EQ(refusal("oxconvertscale filter=box", "format=NV12, width=32, height=32",
                      "format=I420, width=64, height=64"),
              "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.");
    EXPECT_EQ(refusal("oxconvertscale filter=box", "format=NV12, width=32, height=32",
                      "format=BGR, width=64, height=64"),
              "Failure in ScaleData::reuse(...), parameter 'dst_size' is out of range.");
}

TEST_F(GstRefusals, OneRowOfHalfHighChroma) {
    EXPECT_EQ(refusal("oxconvertscale", "format=BGR, width=32, height=1",
                      "format=I420, width=32, height=1"),
              "Parameter 'window_size' is out of range.");
}

TEST_F(GstRefusals, CropsThatLeaveNothing) {
    EXPECT_EQ(refusal("oxconvertscale left=16 right=16", "format=NV12, width=32, height=32",
                      "format=BGR, width=32, height=32"),
              "nothing is left of the picture by the crop");
    EXPECT_EQ(refusal("oxconvertscale top=32", "format=NV12, width=32, height=32", "format=BGR"),
              "nothing is left of the picture by the crop");
    EXPECT_EQ(refusal("oxconvertscale top=40", "format=NV12, width=32, height=32",
                      "format=NV12, width=32, height=32"),
              "nothing is left of the picture by the crop");
}

TEST_F(GstRefusals, OtherColorimetry) {
    EXPECT_EQ(refusal("oxconvertscale", "format=NV12, width=32, height=32, colorimetry=bt601",
                      "format=I420, colorimetry=bt709"),
              "the colorimetry would be bt601, and the caps want bt709");
    EXPECT_EQ(refusal("oxconvertscale", "format=NV12, width=32, height=32, colorimetry=bt601",
                      "format=NV12, colorimetry=bt709"),
              "the colorimetry would be bt601, and the caps want bt709");
    EXPECT_EQ(refusal("oxconvertscale", "format=BGR, width=32, height=32",
                      "format=I420, colorimetry=bt709"),
              "the colorimetry would be bt601, and the caps want bt709");
    EXPECT_EQ(refusal("oxconvertscale", "format=GRAY8, width=32, height=32, colorimetry=bt601",
                      "format=BGR"),
              "colours and gray of the limited range are converted to nothing else");
    EXPECT_EQ(refusal("oxconvertscale", "format=NV12, width=32, height=32, colorimetry=smpte240m",
                      "format=BGR"),
              "Failure in colourOf(...) : no recipe has the caps' matrix.");
}

TEST_F(GstRefusals, FieldsOfInterlacedVideo) {
    std::string const in = "format=NV12, width=32, height=32, interlace-mode=interleaved";
    std::string const why = "the fields of interlaced video would be mixed: deinterlace it first";
    EXPECT_EQ(refusal("oxconvertscale", in, "height=16"), why);
    EXPECT_EQ(refusal("oxconvertscale", in, "format=BGR"), why);
    EXPECT_EQ(refusal("oxconvertscale top=2", in, "height=32"), why);
}

// Rows that overlap are no frame.
TEST_F(GstRefusals, StridesBelowARow) {
    Element element;
    element.setCaps("video/x-raw, format=BGR, width=32, height=32, framerate=30/1",
                    "video/x-raw, format=RGB");
    GstBuffer* const buffer = gst_buffer_new_allocate(nullptr, 32 * 96, nullptr);
    gsize offsets[GST_VIDEO_MAX_PLANES]{};
    gint strides[GST_VIDEO_MAX_PLANES]{64};
    gst_buffer_add_video_meta_full(buffer, GST_VIDEO_FRAME_FLAG_NONE, GST_VIDEO_FORMAT_BGR, 32, 32,
                                   1, offsets, strides);
    element.push(buffer, GST_FLOW_ERROR);
    EXPECT_EQ(element.error(),
              "Failure in Frame::wrap(...) : stride is smaller than the row's bytes.");
}

// After a refusal the element takes what it can.
TEST_F(GstRefusals, GoesOnAfterwards) {
    Element element("oxconvertscale left=40");
    element.setCaps("video/x-raw, format=NV12, width=32, height=32, framerate=30/1",
                    "video/x-raw, format=NV12, width=16, height=16");
    TestFrame const source(FRAME_NV12, {32, 32});
    element.push(source.frame(), GST_FLOW_NOT_NEGOTIATED);
    EXPECT_NE(element.error(), "");
    g_object_set(element.element(), "left", 0, nullptr);
    EXPECT_NE(element.push(source.frame()), nullptr);
    EXPECT_EQ(element.error(), "");
    g_object_set(element.element(), "filter", 5, "left", 31, nullptr);
    element.push(source.frame(), GST_FLOW_ERROR);
    EXPECT_NE(element.error(), "");
    g_object_set(element.element(), "filter", 0, nullptr);
    EXPECT_NE(element.push(source.frame()), nullptr);
}

}  // namespace

}  // namespace ox::test::gst_refusals
