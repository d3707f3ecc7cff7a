// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "gstreamer/fixture.h"

#include <vector>

#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_interop/ox_gstreamer.h"
#include "support/test_frame.h"

namespace ox::test::gst {

namespace {

bool isColour(FrameFormat format) {
    return format == FRAME_RGB24 || format == FRAME_BGR24 || format == FRAME_RGB_PLANAR ||
           format == FRAME_BGR_PLANAR;
}

Frame emptyFrameOf(FrameFormat format, Size size) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(), 0);
    frame.setZero();
    return frame;
}

Frame throughTensor(Frame const& source, FrameFormat format, Size size, Request const& request) {
    bool const is_planar = format == FRAME_RGB_PLANAR || format == FRAME_BGR_PLANAR;
    bool const is_red_first = format == FRAME_RGB24 || format == FRAME_RGB_PLANAR;
    TensorRecipe recipe;
    recipe.width = size.width;
    recipe.height = size.height;
    recipe.method = request.method;
    recipe.kernel = request.kernel;
    recipe.colour = format == FRAME_GRAY8 ? TENSOR_COLOUR_GRAY
                    : is_red_first        ? TENSOR_COLOUR_RGB
                                          : TENSOR_COLOUR_BGR;
    recipe.layout = is_planar ? TENSOR_FORMAT_NCHW : TENSOR_FORMAT_NHWC;
    recipe.element = TENSOR_UINT_8;
    recipe.matrix = request.matrix;
    recipe.range = request.range;
    FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    Frame result = emptyFrameOf(format, size);
    to_tensor.run(source, request.region, result.planeData(0), result.layout().plane[0].stride,
                  result.planeData(1) - result.planeData(0));
    return result;
}

Frame converted(Frame const& source, FrameFormat format) {
    FormatConverter converter;
    converter.reuse(source, format);
    Frame result = emptyFrameOf(format, source.size());
    produceFrame(converter, result);
    return result;
}

Frame scaled(Frame const& source, Size size, Request const& request) {
    if (source.size() == size) {
        return source;
    }
    Frame result = emptyFrameOf(source.format(), size);
    if (request.kernel != nullptr) {
        ScalerConvolutional scaler;
        scaler.reuse(*request.kernel, source, size, OX_SCALER_FIXED_POINT_16S);
        produceFrame(scaler, result);
        return result;
    }
    bool const is_halved = 2 * size.width <= source.width() && 2 * size.height <= source.height();
    ScaleMethod const method = request.method != TENSOR_METHOD_AUTOMATIC
                                   ? static_cast<ScaleMethod>(request.method)
                               : is_halved ? OX_SCALE_AREA
                                           : OX_SCALE_BILINEAR;
    Scaler scaler;
    scaler.reuse(source, size, method);
    produceFrame(scaler, result);
    return result;
}

}  // namespace

void Gst::SetUpTestSuite() {
    g_setenv("GST_REGISTRY_DISABLE", "yes", TRUE);
    gst_init(nullptr, nullptr);
    std::vector<std::string> files{OX_GSTREAMER_PLUGIN};
    for (char const* const name : {"coreelements", "videotestsrc", "png", "jpeg"}) {
        files.push_back(std::string(OX_GSTREAMER_PLUGINS "/libgst") + name + ".so");
    }
    for (std::string const& file : files) {
        GError* error = nullptr;
        GstPlugin* const plugin = gst_plugin_load_file(file.c_str(), &error);
        ASSERT_NE(plugin, nullptr) << file << ": " << (error == nullptr ? "?" : error->message);
        gst_object_unref(plugin);
    }
}

Caps capsFrom(std::string const& text) {
    return {gst_caps_from_string(text.c_str()), gst_caps_unref};
}

GstVideoInfo infoOf(GstCaps const* caps) {
    GstVideoInfo info;
    gst_video_info_init(&info);
    EXPECT_TRUE(gst_video_info_from_caps(&info, caps));
    return info;
}

MappedFrame::MappedFrame(GstVideoInfo const& info, GstBuffer* buffer) {
    EXPECT_TRUE(gst_video_frame_map(&_mapped, &info, buffer, GST_MAP_READ));
    _frame = interop::frameOf(_mapped);
}

MappedFrame::~MappedFrame() {
    gst_video_frame_unmap(&_mapped);
}

Element::Element(std::string const& line)
    : _harness(gst_harness_new_parse(line.c_str())),
      _element(gst_harness_find_element(_harness, "oxconvertscale")),
      _bus(gst_bus_new()) {
    gst_element_set_bus(_element, _bus);
}

Element::~Element() {
    gst_element_set_bus(_element, nullptr);
    gst_object_unref(_element);
    gst_harness_teardown(_harness);
    gst_object_unref(_bus);
}

void Element::setCaps(std::string const& in, std::string const& out) {
    gst_harness_set_sink_caps(_harness, capsFrom(out).release());
    setInput(in);
}

void Element::setInput(std::string const& caps) {
    gst_harness_set_src_caps(_harness, capsFrom(caps).release());
}

Buffer Element::push(GstBuffer* buffer, GstFlowReturn expected) {
    EXPECT_EQ(gst_harness_push(_harness, buffer), expected);
    return {gst_harness_try_pull(_harness), gst_buffer_unref};
}

Buffer Element::push(Frame const& frame, GstFlowReturn expected) {
    return push(interop::bufferOf(frame), expected);
}

GstVideoInfo Element::output() const {
    Caps const caps(gst_pad_get_current_caps(_harness->sinkpad), gst_caps_unref);
    return infoOf(caps.get());
}

Size Element::outputSize() const {
    GstVideoInfo const info = output();
    return {GST_VIDEO_INFO_WIDTH(&info), GST_VIDEO_INFO_HEIGHT(&info)};
}

std::string Element::error() {
    std::string first;
    while (GstMessage* const message = gst_bus_pop_filtered(_bus, GST_MESSAGE_ERROR)) {
        GError* error = nullptr;
        gst_message_parse_error(message, &error, nullptr);
        first = first.empty() ? error->message : first;
        g_error_free(error);
        gst_message_unref(message);
    }
    return first;
}

Frame byTheLibrary(Frame const& source, FrameFormat format, Size size, Request const& request) {
    Frame handle = source;
    Frame const region = request.region.width == 0 ? handle : getRegion(handle, request.region);
    if (format == FRAME_GRAY8 || isColour(format)) {
        Request same = request;
        same.kernel = region.size() == size ? nullptr : request.kernel;
        return throughTensor(source, format, size, same);
    }
    Frame picture = region;
    if (picture.format() == FRAME_RGB_PLANAR) {
        picture = converted(picture, FRAME_RGB24);
    }
    if (isColour(picture.format())) {
        picture = converted(picture, FRAME_BGR24);
    } else if (picture.format() == FRAME_YUYV || picture.format() == FRAME_UYVY) {
        picture = converted(picture, FRAME_NV16);
    }
    picture = scaled(picture, size, request);
    if (picture.format() == FRAME_GRAY8) {
        picture = converted(picture, FRAME_BGR24);
    }
    Frame const result = converted(picture, format);
    if (size.width % 2 != 0 && (format == FRAME_YUYV || format == FRAME_UYVY)) {
        int const unused = 2 * size.width + (format == FRAME_UYVY ? 1 : 0);
        for (int y = 0; y < size.height; ++y) {
            rowOf(result, 0, y)[unused] = rowOf(result, 0, y)[unused - 2];
        }
    }
    return result;
}

}  // namespace ox::test::gst
