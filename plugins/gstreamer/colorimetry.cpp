// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "colorimetry.h"

#include <memory>

namespace oxgst {

namespace {

constexpr GstVideoColorimetry grayOfColours{
    GST_VIDEO_COLOR_RANGE_0_255, GST_VIDEO_COLOR_MATRIX_BT601, GST_VIDEO_TRANSFER_UNKNOWN,
    GST_VIDEO_COLOR_PRIMARIES_UNKNOWN};

GstVideoColorimetry named(char const* name) {
    GstVideoColorimetry colorimetry;
    gst_video_colorimetry_from_string(&colorimetry, name);
    return colorimetry;
}

std::string nameOf(GstVideoColorimetry const& colorimetry) {
    std::unique_ptr<char, void (*)(gpointer)> const name(
        gst_video_colorimetry_to_string(&colorimetry), g_free);
    return name != nullptr ? name.get() : "unknown";
}

bool isLimited(GstVideoColorimetry const& colorimetry) {
    return colorimetry.range == GST_VIDEO_COLOR_RANGE_16_235;
}

/// What isn't said is taken for BT.601.
GstVideoColorMatrix matrixOf(GstVideoColorimetry const& colorimetry) {
    return colorimetry.matrix == GST_VIDEO_COLOR_MATRIX_UNKNOWN ? GST_VIDEO_COLOR_MATRIX_BT601
                                                                : colorimetry.matrix;
}

}  // namespace

GstVideoColorimetry colorimetryOf(GstVideoInfo const& in, GstVideoFormatInfo const* format) {
    GstVideoFormatInfo const* const from = in.finfo;
    bool const is_gray = GST_VIDEO_FORMAT_INFO_IS_GRAY(format);
    if (GST_VIDEO_FORMAT_INFO_IS_RGB(format)) {
        return GST_VIDEO_FORMAT_INFO_IS_RGB(from) ? in.colorimetry
                                                  : named(GST_VIDEO_COLORIMETRY_SRGB);
    }
    if (GST_VIDEO_FORMAT_INFO_IS_YUV(from) || (is_gray && GST_VIDEO_FORMAT_INFO_IS_GRAY(from))) {
        return in.colorimetry;
    }
    return is_gray ? grayOfColours : named(GST_VIDEO_COLORIMETRY_BT601);
}

std::string whyNotMeant(GstVideoInfo const& in, GstVideoInfo const& out) {
    GstVideoFormatInfo const* const from = in.finfo;
    bool const is_kind_kept =
        GST_VIDEO_FORMAT_INFO_FLAGS(from) == GST_VIDEO_FORMAT_INFO_FLAGS(out.finfo);
    if (!GST_VIDEO_FORMAT_INFO_IS_YUV(from) && isLimited(in.colorimetry) && !is_kind_kept) {
        return std::string("colours and gray of the limited range are converted to nothing else");
    }
    GstVideoColorimetry const made = colorimetryOf(in, out.finfo);
    if (made.range != out.colorimetry.range || matrixOf(made) != matrixOf(out.colorimetry)) {
        return "the colorimetry would be " + nameOf(made) + ", and the caps want " +
               nameOf(out.colorimetry);
    }
    return {};
}

}  // namespace oxgst
