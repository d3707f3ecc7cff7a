// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What oxconvertscale negotiates.
#include <gtest/gtest.h>

#include <string>

#include "gstreamer/fixture.h"

namespace ox::test::gst_caps {

namespace {

using namespace ox::test::gst;

// The caps that come out for those that go in.
GstVideoInfo negotiated(std::string const& in, std::string const& out,
                        std::string const& line = "oxconvertscale") {
    Element element(line);
    element.setCaps("video/x-raw, framerate=30/1, " + in, "video/x-raw" + out);
    GstBuffer* const buffer = gst_harness_create_buffer(
        element.harness(), infoOf(capsFrom("video/x-raw, framerate=30/1, " + in).get()).size);
    Buffer const result = element.push(buffer);
    EXPECT_NE(result, nullptr) << in << " to " << out << ": " << element.error();
    return element.output();
}

std::string formatFor(std::string const& in, std::string const& out) {
    GstVideoInfo const info = negotiated("format=" + in + ", width=64, height=48", out);
    return GST_VIDEO_INFO_NAME(&info);
}

struct Shape {
    Size size;
    int numerator;
    int denominator;

    bool operator==(Shape const& other) const {
        return size == other.size && numerator == other.numerator &&
               denominator == other.denominator;
    }
};

std::ostream& operator<<(std::ostream& out, Shape const& shape) {
    return out << shape.size.width << "x" << shape.size.height << " of pixels " << shape.numerator
               << ":" << shape.denominator;
}

Shape shapeFor(std::string const& in, std::string const& out,
               std::string const& line = "oxconvertscale") {
    GstVideoInfo const info = negotiated("format=NV12, " + in, out, line);
    return {{GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info)},
            GST_VIDEO_INFO_PAR_N(&info),
            GST_VIDEO_INFO_PAR_D(&info)};
}

std::string colorimetryFor(std::string const& in, std::string const& out) {
    GstVideoInfo const info = negotiated(in, out);
    std::unique_ptr<char, decltype(&g_free)> const name(
        gst_video_colorimetry_to_string(&info.colorimetry), g_free);
    return name == nullptr ? "" : name.get();
}

class GstCaps_ : public Gst {};

TEST_F(GstCaps_, FormatsThatLoseLeast) {
    EXPECT_EQ(formatFor("NV12", ""), "NV12");
    EXPECT_EQ(formatFor("NV12", ", format={BGR, GRAY8, YUY2, I420}"), "I420");
    EXPECT_EQ(formatFor("NV12", ", format={BGR, GRAY8, YUY2}"), "YUY2");
    EXPECT_EQ(formatFor("NV12", ", format={GRAY8, RGB, BGR}"), "RGB");
    EXPECT_EQ(formatFor("YUY2", ", format={I420, Y444, NV16}"), "NV16");
    EXPECT_EQ(formatFor("YUY2", ", format={I420, Y444}"), "Y444");
    EXPECT_EQ(formatFor("BGR", ", format={GRAY8, NV12, Y444}"), "Y444");
    EXPECT_EQ(formatFor("BGR", ", format={GRAY8, NV12, RGB}"), "RGB");
    EXPECT_EQ(formatFor("GRAY8", ", format={NV12, RGB}"), "RGB");
    EXPECT_EQ(formatFor("GRAY16_LE", ""), "GRAY16_LE");
}

TEST_F(GstCaps_, SizesKeepThePicturesShape) {
    std::string const hd = "width=1920, height=1080";
    EXPECT_EQ(shapeFor(hd, ""), (Shape{{1920, 1080}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, ", width=640"), (Shape{{640, 360}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, ", height=480"), (Shape{{853, 480}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, ", width=[16, 1280], height=[16, 1024]"), (Shape{{1280, 720}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, ", width=[16, 4096], height=[16, 540]"), (Shape{{960, 540}, 1, 1}));
    // What the sides don't keep, pixels do, unless caps say how they are.
    EXPECT_EQ(shapeFor(hd, ", width=640, height=480"), (Shape{{640, 480}, 4, 3}));
    EXPECT_EQ(shapeFor(hd, ", width=640, height=480, pixel-aspect-ratio=1/1"),
              (Shape{{640, 480}, 1, 1}));
    // 720 x 576 of 16:15 is seen as 768 x 576.
    std::string const pal = "width=720, height=576, pixel-aspect-ratio=16/15";
    EXPECT_EQ(shapeFor(pal, ""), (Shape{{720, 576}, 16, 15}));
    EXPECT_EQ(shapeFor(pal, ", pixel-aspect-ratio=1/1"), (Shape{{768, 576}, 1, 1}));
    EXPECT_EQ(shapeFor(pal, ", height=288"), (Shape{{360, 288}, 16, 15}));
}

TEST_F(GstCaps_, PropertiesNarrowTheOutput) {
    std::string const hd = "width=1920, height=1080";
    EXPECT_EQ(shapeFor(hd, "", "oxconvertscale width=640"), (Shape{{640, 360}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, "", "oxconvertscale width=640 height=640"), (Shape{{640, 640}, 16, 9}));
    EXPECT_EQ(shapeFor(hd, "", "oxconvertscale left=420 right=420"), (Shape{{1080, 1080}, 1, 1}));
    EXPECT_EQ(shapeFor(hd, ", height=540", "oxconvertscale left=420 right=420"),
              (Shape{{540, 540}, 1, 1}));
    GstVideoInfo const info = negotiated("format=NV12, " + hd, "", "oxconvertscale format=BGR");
    EXPECT_EQ(GST_VIDEO_INFO_FORMAT(&info), GST_VIDEO_FORMAT_BGR);
}

TEST_F(GstCaps_, ColorimetryIsThatOfTheBytes) {
    std::string const hd = ", width=1280, height=720";
    // It isn't taken for another one because the picture has fewer rows.
    EXPECT_EQ(colorimetryFor("format=NV12" + hd, ", height=360"), "bt709");
    EXPECT_EQ(colorimetryFor("format=NV12" + hd, ", format=I420, height=360"), "bt709");
    EXPECT_EQ(colorimetryFor("format=NV12" + hd, ", format=GRAY8"), "bt709");
    EXPECT_EQ(colorimetryFor("format=NV12, colorimetry=bt2020" + hd, ", format=YUY2"), "bt2020");
    EXPECT_EQ(colorimetryFor("format=NV12" + hd, ", format=BGR"), "sRGB");
    EXPECT_EQ(colorimetryFor("format=BGR" + hd, ", format=NV12"), "bt601");
    EXPECT_EQ(colorimetryFor("format=BGR" + hd, ", format=GRAY8"), "1:4:0:0");
    EXPECT_EQ(colorimetryFor("format=GRAY8" + hd, ", format=NV12"), "bt601");
}

TEST_F(GstCaps_, WhatCanBeTakenForWhatIsWanted) {
    Element element("oxconvertscale width=640 format=NV12");
    gst_harness_set_sink_caps(element.harness(), capsFrom("video/x-raw").release());
    GstPad* const pad = gst_element_get_static_pad(element.element(), "sink");
    auto const takes = [&](char const* caps) {
        Caps const filter = capsFrom(caps);
        Caps const taken(gst_pad_query_caps(pad, filter.get()), gst_caps_unref);
        return gst_caps_is_empty(taken.get()) == FALSE;
    };
    EXPECT_TRUE(takes("video/x-raw, format=BGR, width=1920, height=1080"));
    EXPECT_TRUE(takes("video/x-raw, format=YUY2, width=3, height=32767"));
    EXPECT_FALSE(takes("video/x-raw, format=GRAY16_LE, width=1920, height=1080"));
    EXPECT_FALSE(takes("video/x-raw, format=RGBA, width=1920, height=1080"));
    EXPECT_FALSE(takes("video/x-raw(memory:DMABuf), format=NV12, width=64, height=48"));
    gst_object_unref(pad);
}

}  // namespace

}  // namespace ox::test::gst_caps
