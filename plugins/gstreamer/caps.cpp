// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "caps.h"

#include <algorithm>
#include <climits>
#include <cmath>
#include <memory>

#include "colorimetry.h"
#include "ox_interop/ox_gstreamer.h"

namespace oxgst {

namespace {

constexpr char const* ratioField = "pixel-aspect-ratio";

using Structure = std::unique_ptr<GstStructure, void (*)(GstStructure*)>;

Structure copyOf(GstStructure const* structure) {
    return {gst_structure_copy(structure), gst_structure_free};
}

void append(GValue* list, GstVideoFormat format) {
    GValue name = G_VALUE_INIT;
    g_value_init(&name, G_TYPE_STRING);
    g_value_set_static_string(&name, gst_video_format_to_string(format));
    gst_value_list_append_and_take_value(list, &name);
}

bool isDeep(GstVideoFormat format) {
    return ox::interop::frameFormatOf(format) == ox::FRAME_C1_16U;
}

/// Caps with the formats that are converted into each other: either those of bytes, or the one of
/// 16 bits.
Structure groupOf(bool deep) {
    GValue formats = G_VALUE_INIT;
    g_value_init(&formats, GST_TYPE_LIST);
    for (auto const& pair : ox::interop::gstFormats()) {
        if (isDeep(pair.foreign) == deep) {
            append(&formats, pair.foreign);
        }
    }
    Structure group(gst_structure_new_empty("video/x-raw"), gst_structure_free);
    gst_structure_take_value(group.get(), "format", &formats);
    return group;
}

void openSize(GstStructure* structure) {
    gst_structure_set(structure, "width", GST_TYPE_INT_RANGE, 1, G_MAXINT16, "height",
                      GST_TYPE_INT_RANGE, 1, G_MAXINT16, nullptr);
}

/// What the properties ask of the source pad.
GstCaps* wishedCaps(Settings const& settings) {
    GstCaps* const caps = gst_caps_new_empty_simple("video/x-raw");
    if (settings.format != GST_VIDEO_FORMAT_UNKNOWN) {
        gst_caps_set_simple(caps, "format", G_TYPE_STRING,
                            gst_video_format_to_string(settings.format), nullptr);
    }
    if (settings.width > 0) {
        gst_caps_set_simple(caps, "width", G_TYPE_INT, settings.width, nullptr);
    }
    if (settings.height > 0) {
        gst_caps_set_simple(caps, "height", G_TYPE_INT, settings.height, nullptr);
    }
    return caps;
}

/// Both are consumed.
GstCaps* intersected(GstCaps* first, GstCaps* second) {
    GstCaps* const both = gst_caps_intersect_full(first, second, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(first);
    gst_caps_unref(second);
    return both;
}

/// What a conversion loses, most of all: colour, then exact samples, then chroma.
int lossOf(GstVideoFormatInfo const* from, GstVideoFormatInfo const* to) {
    if (from == to) {
        return 0;
    }
    int loss = 1;
    if (GST_VIDEO_FORMAT_INFO_IS_GRAY(to) && !GST_VIDEO_FORMAT_INFO_IS_GRAY(from)) {
        loss += 64;
    } else if (GST_VIDEO_FORMAT_INFO_IS_YUV(to) != GST_VIDEO_FORMAT_INFO_IS_YUV(from)) {
        loss += 16;
    }
    auto const of_chroma = [](guint before, guint after) {
        return after > before ? 4 : (after < before ? 2 : 0);  // fewer samples, or more for nothing
    };
    bool const both = !GST_VIDEO_FORMAT_INFO_IS_GRAY(from) && !GST_VIDEO_FORMAT_INFO_IS_GRAY(to);
    return !both ? loss
                 : loss +
                       of_chroma(GST_VIDEO_FORMAT_INFO_W_SUB(from, 1),
                                 GST_VIDEO_FORMAT_INFO_W_SUB(to, 1)) +
                       of_chroma(GST_VIDEO_FORMAT_INFO_H_SUB(from, 1),
                                 GST_VIDEO_FORMAT_INFO_H_SUB(to, 1));
}

struct Choice {
    GstStructure const* structure = nullptr;
    GstVideoFormat format = GST_VIDEO_FORMAT_UNKNOWN;
    int loss = INT_MAX;
};

void consider(Choice& best, GstStructure const* structure, GValue const* name,
              GstVideoFormatInfo const* from) {
    GstVideoFormat const format = gst_video_format_from_string(g_value_get_string(name));
    int const loss = lossOf(from, gst_video_format_get_info(format));
    if (loss < best.loss) {
        best = {structure, format, loss};
    }
}

/// The format that loses least; of equal ones the first.
Choice chooseFormat(GstCaps const* caps, GstVideoFormatInfo const* from) {
    Choice best;
    for (guint i = 0; i < gst_caps_get_size(caps); ++i) {
        GstStructure const* const structure = gst_caps_get_structure(caps, i);
        GValue const* const formats = gst_structure_get_value(structure, "format");
        if (formats == nullptr) {
            continue;
        }
        if (G_VALUE_HOLDS_STRING(formats)) {
            consider(best, structure, formats, from);
        } else {
            for (guint k = 0; k < gst_value_list_get_size(formats); ++k) {
                consider(best, structure, gst_value_list_get_value(formats, k), from);
            }
        }
    }
    return best;
}

/// A field that is fixed, or that has no choice.
bool isFixed(GstStructure const* structure, char const* field, int& value) {
    return gst_structure_get_int(structure, field, &value) != FALSE;
}

int rounded(double number) {
    return static_cast<int>(std::lround(std::fmin(std::fmax(number, 1.0), G_MAXINT16)));
}

double ratioOf(GstStructure const* structure) {
    int numerator = 1;
    int denominator = 1;
    gst_structure_get_fraction(structure, ratioField, &numerator, &denominator);
    return static_cast<double>(numerator) / denominator;
}

/// Fixes one side as near to a number as it goes, then the other by the ratio of the two.
/// @return whether the ratio is met
bool fixateSides(GstStructure* structure, char const* first, int wish, char const* second,
                 double second_over_first) {
    int side = wish;
    int other = 0;
    gst_structure_fixate_field_nearest_int(structure, first, wish);
    isFixed(structure, first, side);
    int const wanted = rounded(side * second_over_first);
    gst_structure_fixate_field_nearest_int(structure, second, wanted);
    isFixed(structure, second, other);
    return other == wanted;
}

/// What is read of the source, and the shape of its pixels.
struct Shape {
    ox::Size size;
    int ratio_numerator;
    int ratio_denominator;

    /// Of the picture as it is seen.
    double displayRatio() const {
        return static_cast<double>(size.width) * ratio_numerator /
               (static_cast<double>(size.height) * ratio_denominator);
    }
};

/// Fixes width and height: from the side that is fixed already, else from the height, else from the
/// width.
/// @return whether the ratio is met
bool fixateBothSides(GstStructure* out, ox::Size size, double width_over_height) {
    int width = 0;
    if (isFixed(out, "width", width)) {
        return fixateSides(out, "width", width, "height", 1.0 / width_over_height);
    }
    Structure const by_width = copyOf(out);
    if (fixateSides(out, "height", size.height, "width", width_over_height)) {
        return true;
    }
    if (!fixateSides(by_width.get(), "width", size.width, "height", 1.0 / width_over_height)) {
        return false;
    }
    for (char const* field : {"width", "height"}) {
        gst_structure_set_value(out, field, gst_structure_get_value(by_width.get(), field));
    }
    return true;
}

void fixateSize(GstStructure* out, Shape const& shape) {
    Structure const open = copyOf(out);
    GValue const* const ratios = gst_structure_get_value(open.get(), ratioField);
    if (ratios != nullptr) {
        gst_structure_fixate_field_nearest_fraction(out, ratioField, shape.ratio_numerator,
                                                    shape.ratio_denominator);
    }
    if (fixateBothSides(out, shape.size, shape.displayRatio() / ratioOf(out)) ||
        ratios == nullptr) {
        return;
    }
    // The sides don't keep the ratio, so pixels have to.
    int width = 1;
    int height = 1;
    isFixed(out, "width", width);
    isFixed(out, "height", height);
    int numerator = 1;
    int denominator = 1;
    gst_util_double_to_fraction(shape.displayRatio() * height / width, &numerator, &denominator);
    gst_structure_set_value(out, ratioField, ratios);
    gst_structure_fixate_field_nearest_fraction(out, ratioField, numerator, denominator);
}

bool sharesChroma(GstVideoFormatInfo const* a, GstVideoFormatInfo const* b) {
    return GST_VIDEO_FORMAT_INFO_IS_YUV(a) && GST_VIDEO_FORMAT_INFO_IS_YUV(b) &&
           GST_VIDEO_FORMAT_INFO_W_SUB(a, 1) == GST_VIDEO_FORMAT_INFO_W_SUB(b, 1) &&
           GST_VIDEO_FORMAT_INFO_H_SUB(a, 1) == GST_VIDEO_FORMAT_INFO_H_SUB(b, 1);
}

/// What caps mean that don't tell their colorimetry.
GstVideoColorimetry usualColorimetry(GstStructure const* structure, GstVideoFormat format) {
    int width = 1;
    int height = 1;
    isFixed(structure, "width", width);
    isFixed(structure, "height", height);
    GstVideoInfo info;
    gst_video_info_set_format(&info, format, static_cast<guint>(width), static_cast<guint>(height));
    return info.colorimetry;
}

/// Says what the source says, and what would be taken for something else.
void fixateColour(GstStructure* out, GstStructure const* in_caps, GstVideoInfo const& in,
                  GstVideoFormat format) {
    GstVideoFormatInfo const* const facts = gst_video_format_get_info(format);
    GValue const* const site = gst_structure_get_value(in_caps, "chroma-site");
    if (site != nullptr && sharesChroma(in.finfo, facts) &&
        !gst_structure_has_field(out, "chroma-site")) {
        gst_structure_set_value(out, "chroma-site", site);
    }
    GstVideoColorimetry const made = colorimetryOf(in, facts);
    GstVideoColorimetry const usual = usualColorimetry(out, format);
    std::unique_ptr<char, void (*)(gpointer)> const name(gst_video_colorimetry_to_string(&made),
                                                         g_free);
    if (name == nullptr || gst_structure_has_field(out, "colorimetry")) {
        gst_structure_fixate_field_string(out, "colorimetry", name.get());
    } else if (made.matrix != usual.matrix || made.range != usual.range ||
               (GST_VIDEO_FORMAT_INFO_IS_YUV(facts) &&
                gst_structure_has_field(in_caps, "colorimetry"))) {
        gst_structure_set(out, "colorimetry", G_TYPE_STRING, name.get(), nullptr);
    }
}

}  // namespace

GstCaps* templateCaps() {
    GstCaps* const caps = gst_caps_new_empty();
    for (bool const deep : {false, true}) {
        Structure group = groupOf(deep);
        openSize(group.get());
        gst_structure_set(group.get(), "framerate", GST_TYPE_FRACTION_RANGE, 0, 1, G_MAXINT, 1,
                          nullptr);
        gst_caps_append_structure(caps, group.release());
    }
    return caps;
}

GstCaps* otherCaps(Settings const& settings, GstPadDirection pad, GstCaps* caps) {
    GstCaps* const known = pad == GST_PAD_SRC
                               ? intersected(gst_caps_ref(caps), wishedCaps(settings))
                               : gst_caps_ref(caps);
    GstCaps* other = settings.crop.any() ? gst_caps_new_empty() : gst_caps_copy(known);
    for (guint i = 0; i < gst_caps_get_size(known); ++i) {
        GstStructure const* const structure = gst_caps_get_structure(known, i);
        for (bool const deep : {false, true}) {
            Structure const group = groupOf(deep);
            if (!gst_structure_can_intersect(structure, group.get())) {
                continue;
            }
            Structure open = copyOf(structure);
            openSize(open.get());
            gst_structure_set(open.get(), ratioField, GST_TYPE_FRACTION_RANGE, 1, G_MAXINT,
                              G_MAXINT, 1, nullptr);
            gst_structure_remove_fields(open.get(), "colorimetry", "chroma-site", nullptr);
            gst_structure_set_value(open.get(), "format",
                                    gst_structure_get_value(group.get(), "format"));
            other = gst_caps_merge_structure(other, open.release());
        }
    }
    gst_caps_unref(known);
    return pad == GST_PAD_SINK ? intersected(other, wishedCaps(settings)) : other;
}

GstCaps* fixatedCaps(Settings const& settings, GstPadDirection pad, GstCaps* caps, GstCaps* other) {
    GstVideoInfo in;
    if (gst_caps_is_empty(other) || gst_video_info_from_caps(&in, caps) == FALSE) {
        return gst_caps_fixate(other);
    }
    Choice const choice = chooseFormat(other, in.finfo);
    if (choice.structure == nullptr) {
        return gst_caps_fixate(other);
    }
    Structure out = copyOf(choice.structure);
    gst_caps_unref(other);
    gst_structure_set(out.get(), "format", G_TYPE_STRING, gst_video_format_to_string(choice.format),
                      nullptr);
    // Backwards the source's size isn't known, but then nothing says that it has to be larger.
    ox::Rect const region = regionOf(pad == GST_PAD_SINK ? settings.crop : Crop{}, in);
    ox::Size const read{std::max(region.width, 1), std::max(region.height, 1)};
    fixateSize(out.get(), {read, in.par_n, in.par_d});
    if (pad == GST_PAD_SINK) {
        fixateColour(out.get(), gst_caps_get_structure(caps, 0), in, choice.format);
    }
    GstCaps* const fixed = gst_caps_new_empty();
    gst_caps_append_structure(fixed, out.release());
    return gst_caps_fixate(fixed);
}

}  // namespace oxgst
