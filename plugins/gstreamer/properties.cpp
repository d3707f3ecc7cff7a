// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "properties.h"

#include <vector>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_interop/ox_gstreamer.h"

namespace oxgst {

namespace {

enum Property : guint {
    PropertyFormat = 1,
    PropertyWidth,
    PropertyHeight,
    PropertyLeft,
    PropertyTop,
    PropertyRight,
    PropertyBottom,
    PropertyMethod,
    PropertyFilter,
};

constexpr auto readableAndWritable = static_cast<GParamFlags>(
    G_PARAM_READWRITE | G_PARAM_STATIC_STRINGS | GST_PARAM_MUTABLE_PLAYING);

constexpr GEnumValue methods[]{
    {ox::TENSOR_METHOD_NEAREST, "The nearest sample", "nearest-neighbour"},
    {ox::TENSOR_METHOD_BILINEAR, "Two samples blended along each axis", "bilinear"},
    {ox::TENSOR_METHOD_AREA, "The mean of what a pixel covers", "area"},
    {ox::TENSOR_METHOD_AUTOMATIC, "Area where both sides shrink to half or less, else bilinear",
     "automatic"},
    {0, nullptr, nullptr}};

constexpr GEnumValue filters[]{
    {static_cast<int>(Filter::None), "No filter: the method counts", "none"},
    {static_cast<int>(Filter::Box), "The mean of the samples", "box"},
    {static_cast<int>(Filter::Triangle), "Linear, widened by the reduction", "triangle"},
    {static_cast<int>(Filter::Mitchell), "Mitchell and Netravali's cubic", "mitchell"},
    {static_cast<int>(Filter::CatmullRom), "Catmull and Rom's cubic", "catmull-rom"},
    {static_cast<int>(Filter::Lanczos3), "Lanczos with three lobes, the sharpest", "lanczos3"},
    {0, nullptr, nullptr}};

/// The formats that are converted, by the names that caps have for them.
GType formatType() {
    static GType const type = [] {
        static std::vector<GEnumValue> values{
            {GST_VIDEO_FORMAT_UNKNOWN, "What downstream takes that loses least", "unknown"}};
        for (auto const& pair : ox::interop::gstFormats()) {
            char const* const name = gst_video_format_to_string(pair.foreign);
            values.push_back({pair.foreign, name, name});
        }
        values.push_back({0, nullptr, nullptr});
        return g_enum_register_static("OxConvertScaleFormat", values.data());
    }();
    return type;
}

/// The number that a property of a whole number stands for; null for the others.
int* numberOf(Settings& settings, guint id) {
    switch (id) {
        case PropertyWidth:
            return &settings.width;
        case PropertyHeight:
            return &settings.height;
        case PropertyLeft:
            return &settings.crop.left;
        case PropertyTop:
            return &settings.crop.top;
        case PropertyRight:
            return &settings.crop.right;
        case PropertyBottom:
            return &settings.crop.bottom;
        default:
            return nullptr;
    }
}

void installNumber(GObjectClass* object_class, guint id, char const* name, char const* nick,
                   char const* blurb) {
    g_object_class_install_property(
        object_class, id,
        g_param_spec_int(name, nick, blurb, 0, G_MAXINT16, 0, readableAndWritable));
}

GType methodType() {
    static GType const type = g_enum_register_static("OxConvertScaleMethod", methods);
    return type;
}

GType filterType() {
    static GType const type = g_enum_register_static("OxConvertScaleFilter", filters);
    return type;
}

/// Lets documents of the plugin have the type.
void markAsApi(GType type) {
    gst_type_mark_as_plugin_api(type, static_cast<GstPluginAPIFlags>(0));
}

}  // namespace

void installProperties(GObjectClass* object_class) {
    g_object_class_install_property(
        object_class, PropertyFormat,
        g_param_spec_enum("format", "Format",
                          "Format of the result (unknown: what downstream takes that loses least)",
                          formatType(), GST_VIDEO_FORMAT_UNKNOWN, readableAndWritable));
    markAsApi(formatType());
    markAsApi(methodType());
    markAsApi(filterType());
    installNumber(object_class, PropertyWidth, "width", "Width",
                  "Width of the result (0: what downstream takes, next to the cropped source's)");
    installNumber(object_class, PropertyHeight, "height", "Height",
                  "Height of the result (0: what downstream takes, next to the cropped source's)");
    installNumber(object_class, PropertyLeft, "left", "Left",
                  "Pixels of the source to leave out at the left");
    installNumber(object_class, PropertyTop, "top", "Top",
                  "Pixels of the source to leave out at the top");
    installNumber(object_class, PropertyRight, "right", "Right",
                  "Pixels of the source to leave out at the right");
    installNumber(object_class, PropertyBottom, "bottom", "Bottom",
                  "Pixels of the source to leave out at the bottom");
    g_object_class_install_property(
        object_class, PropertyMethod,
        g_param_spec_enum("method", "Method", "How pictures are scaled", methodType(),
                          ox::TENSOR_METHOD_AUTOMATIC, readableAndWritable));
    g_object_class_install_property(
        object_class, PropertyFilter,
        g_param_spec_enum("filter", "Filter",
                          "Filter that takes the place of the method; it only reduces, to a 32nd "
                          "at most",
                          filterType(), static_cast<int>(Filter::None), readableAndWritable));
}

bool setProperty(Settings& settings, guint id, GValue const* value) {
    if (int* const number = numberOf(settings, id); number != nullptr) {
        *number = g_value_get_int(value);
        return true;
    }
    switch (id) {
        case PropertyFormat:
            settings.format = static_cast<GstVideoFormat>(g_value_get_enum(value));
            return true;
        case PropertyMethod:
            settings.method = static_cast<ox::TensorMethod>(g_value_get_enum(value));
            return true;
        case PropertyFilter:
            settings.filter = static_cast<Filter>(g_value_get_enum(value));
            return true;
        default:
            return false;
    }
}

bool getProperty(Settings const& settings, guint id, GValue* value) {
    Settings copy = settings;
    if (int const* const number = numberOf(copy, id); number != nullptr) {
        g_value_set_int(value, *number);
        return true;
    }
    switch (id) {
        case PropertyFormat:
            g_value_set_enum(value, settings.format);
            return true;
        case PropertyMethod:
            g_value_set_enum(value, static_cast<int>(settings.method));
            return true;
        case PropertyFilter:
            g_value_set_enum(value, static_cast<int>(settings.filter));
            return true;
        default:
            return false;
    }
}

std::shared_ptr<ox::IKernel> makeKernel(Filter filter) {
    switch (filter) {
        case Filter::Box:
            return std::make_shared<ox::BoxKernel>();
        case Filter::Triangle:
            return std::make_shared<ox::TriangleKernel>();
        case Filter::Mitchell:
            return std::make_shared<ox::MitchellNetravaliKernel>();
        case Filter::CatmullRom:
            return std::make_shared<ox::CatmullRomKernel>();
        case Filter::Lanczos3:
            return std::make_shared<ox::Lanczos3Kernel>();
        default:
            return nullptr;
    }
}

}  // namespace oxgst
