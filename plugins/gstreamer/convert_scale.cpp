// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "convert_scale.h"

#include <exception>
#include <string>

#include <gst/video/gstvideofilter.h>
#include <gst/video/video.h>

#include "caps.h"
#include "colorimetry.h"
#include "frame_converter.h"
#include "ox_interop/ox_gstreamer.h"
#include "properties.h"

namespace {

using namespace oxgst;

struct State {
    Settings settings;       ///< under the object's lock
    bool is_changed = true;  ///< under the object's lock: `conversion` is older than `settings`
    Conversion conversion;   ///< this and what follows belong to the streaming thread
    FrameConverter converter;
};

struct OxConvertScale {
    GstVideoFilter parent;
    State* state;
};

struct OxConvertScaleClass {
    GstVideoFilterClass parent_class;
};

G_DEFINE_TYPE(OxConvertScale, ox_convert_scale, GST_TYPE_VIDEO_FILTER)

State& stateOf(gpointer object) {
    return *static_cast<OxConvertScale*>(object)->state;
}

Settings settingsOf(gpointer object) {
    GST_OBJECT_LOCK(object);
    Settings const settings = stateOf(object).settings;
    GST_OBJECT_UNLOCK(object);
    return settings;
}

// Properties.

void setElementProperty(GObject* object, guint id, GValue const* value, GParamSpec* spec) {
    State& state = stateOf(object);
    GST_OBJECT_LOCK(object);
    bool const is_known = setProperty(state.settings, id, value);
    state.is_changed = true;
    GST_OBJECT_UNLOCK(object);
    if (!is_known) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
        return;
    }
    gst_base_transform_reconfigure_src(GST_BASE_TRANSFORM(object));
}

void getElementProperty(GObject* object, guint id, GValue* value, GParamSpec* spec) {
    if (!getProperty(settingsOf(object), id, value)) {
        G_OBJECT_WARN_INVALID_PROPERTY_ID(object, id, spec);
    }
}

// Negotiation.

GstCaps* transformCaps(GstBaseTransform* transform, GstPadDirection direction, GstCaps* caps,
                       GstCaps* filter) {
    GstCaps* const other = otherCaps(settingsOf(transform), direction, caps);
    if (filter == nullptr) {
        return other;
    }
    GstCaps* const narrowed = gst_caps_intersect_full(filter, other, GST_CAPS_INTERSECT_FIRST);
    gst_caps_unref(other);
    return narrowed;
}

GstCaps* fixateCaps(GstBaseTransform* transform, GstPadDirection direction, GstCaps* caps,
                    GstCaps* other) {
    return fixatedCaps(settingsOf(transform), direction, caps, other);
}

bool changesNothing(Settings const& settings, GstVideoInfo const& in, GstVideoInfo const& out) {
    return !settings.crop.any() && GST_VIDEO_INFO_FORMAT(&in) == GST_VIDEO_INFO_FORMAT(&out) &&
           GST_VIDEO_INFO_WIDTH(&in) == GST_VIDEO_INFO_WIDTH(&out) &&
           GST_VIDEO_INFO_HEIGHT(&in) == GST_VIDEO_INFO_HEIGHT(&out) &&
           whyNotMeant(in, out).empty();
}

/// Whether rows of two fields would be taken for neighbours.
bool mixesFields(Crop const& crop, GstVideoInfo const& in, GstVideoInfo const& out) {
    return GST_VIDEO_INFO_IS_INTERLACED(&in) &&
           (crop.top != 0 || crop.bottom != 0 ||
            GST_VIDEO_INFO_HEIGHT(&in) != GST_VIDEO_INFO_HEIGHT(&out) ||
            GST_VIDEO_FORMAT_INFO_H_SUB(in.finfo, 1) != GST_VIDEO_FORMAT_INFO_H_SUB(out.finfo, 1));
}

/// Why there is no conversion; empty if there is one.
std::string whyNotConverted(Settings const& settings, GstVideoInfo const& in,
                            GstVideoInfo const& out) {
    ox::Rect const region = regionOf(settings.crop, in);
    if (region.width < 1 || region.height < 1) {
        return "nothing is left of the picture by the crop";
    }
    if (mixesFields(settings.crop, in, out)) {
        return "the fields of interlaced video would be mixed: deinterlace it first";
    }
    return whyNotMeant(in, out);
}

/// Brings the conversion up to date with the properties.
/// @return false, with an error on the bus, where there is none
bool configure(GstVideoFilter* filter) {
    State& state = stateOf(filter);
    GST_OBJECT_LOCK(filter);
    Settings const settings = state.settings;
    state.is_changed = false;
    GST_OBJECT_UNLOCK(filter);
    std::string why = whyNotConverted(settings, filter->in_info, filter->out_info);
    if (why.empty()) {
        try {
            state.conversion = {regionOf(settings.crop, filter->in_info), settings.method,
                                makeKernel(settings.filter),
                                GST_VIDEO_INFO_IS_RGB(&filter->out_info)
                                    ? ox::interop::colourOf(filter->in_info)
                                    : ox::interop::ColourMeaning{}};
            return true;
        } catch (std::exception const& exception) {
            why = exception.what();
        }
    }
    GST_OBJECT_LOCK(filter);
    state.is_changed = true;
    GST_OBJECT_UNLOCK(filter);
    GST_ELEMENT_ERROR(filter, STREAM, FORMAT, ("%s", why.c_str()), (nullptr));
    return false;
}

gboolean setInfo(GstVideoFilter* filter, GstCaps* /*in_caps*/, GstVideoInfo* in,
                 GstCaps* /*out_caps*/, GstVideoInfo* out) {
    bool const passes = changesNothing(settingsOf(filter), *in, *out);
    gst_base_transform_set_passthrough(GST_BASE_TRANSFORM(filter), passes);
    // The base class takes them over after this call.
    filter->in_info = *in;
    filter->out_info = *out;
    return passes || configure(filter);
}

/// A crop may have changed although the caps haven't.
void beforeTransform(GstBaseTransform* transform, GstBuffer* /*buffer*/) {
    GstVideoFilter const* const filter = GST_VIDEO_FILTER(transform);
    bool const passes = filter->negotiated != FALSE &&
                        changesNothing(settingsOf(transform), filter->in_info, filter->out_info);
    if (passes != (gst_base_transform_is_passthrough(transform) != FALSE)) {
        gst_base_transform_set_passthrough(transform, passes);
    }
}

// Buffers.

GstFlowReturn transformFrame(GstVideoFilter* filter, GstVideoFrame* in, GstVideoFrame* out) {
    State& state = stateOf(filter);
    GST_OBJECT_LOCK(filter);
    bool const is_changed = state.is_changed;
    GST_OBJECT_UNLOCK(filter);
    if (is_changed && !configure(filter)) {
        return GST_FLOW_NOT_NEGOTIATED;
    }
    try {
        ox::Frame source = ox::interop::frameOf(*in);
        ox::Frame result = ox::interop::frameOf(*out);
        state.converter.run(state.conversion, source, result);
        return GST_FLOW_OK;
    } catch (std::exception const& exception) {
        GST_ELEMENT_ERROR(filter, LIBRARY, FAILED, ("%s", exception.what()), (nullptr));
        return GST_FLOW_ERROR;
    }
}

/// Places in the picture are scaled, as long as nothing is cropped; what else depends on the
/// picture is left behind.
gboolean transformMeta(GstBaseTransform* transform, GstBuffer* out, GstMeta* meta, GstBuffer* in) {
    if (meta->info->api != GST_VIDEO_REGION_OF_INTEREST_META_API_TYPE) {
        return GST_BASE_TRANSFORM_CLASS(ox_convert_scale_parent_class)
            ->transform_meta(transform, out, meta, in);
    }
    GstVideoFilter* const filter = GST_VIDEO_FILTER(transform);
    if (!settingsOf(transform).crop.any()) {
        GstVideoMetaTransform sizes{&filter->in_info, &filter->out_info};
        meta->info->transform_func(out, meta, in, gst_video_meta_transform_scale_get_quark(),
                                   &sizes);
    }
    return FALSE;
}

/// Pointers upstream are those of the source.
gboolean handleSourceEvent(GstBaseTransform* transform, GstEvent* event) {
    GstVideoFilter const* const filter = GST_VIDEO_FILTER(transform);
    double x = 0.0;
    double y = 0.0;
    if (GST_EVENT_TYPE(event) == GST_EVENT_NAVIGATION && filter->negotiated != FALSE) {
        event = GST_EVENT(gst_mini_object_make_writable(GST_MINI_OBJECT(event)));
        if (gst_navigation_event_get_coordinates(event, &x, &y) != FALSE) {
            ox::PictureMapping const mapping{regionOf(settingsOf(transform).crop, filter->in_info),
                                             {0, 0, GST_VIDEO_INFO_WIDTH(&filter->out_info),
                                              GST_VIDEO_INFO_HEIGHT(&filter->out_info)}};
            gst_navigation_event_set_coordinates(event, mapping.toSourceX(x), mapping.toSourceY(y));
        }
    }
    return GST_BASE_TRANSFORM_CLASS(ox_convert_scale_parent_class)->src_event(transform, event);
}

// The class.

void finalize(GObject* object) {
    delete static_cast<OxConvertScale*>(static_cast<gpointer>(object))->state;
    G_OBJECT_CLASS(ox_convert_scale_parent_class)->finalize(object);
}

void ox_convert_scale_init(OxConvertScale* self) {
    self->state = new State;
    gst_base_transform_set_qos_enabled(GST_BASE_TRANSFORM(self), TRUE);
}

void addPadTemplate(GstElementClass* element_class, char const* name, GstPadDirection direction) {
    GstCaps* const caps = templateCaps();
    gst_element_class_add_pad_template(element_class,
                                       gst_pad_template_new(name, direction, GST_PAD_ALWAYS, caps));
    gst_caps_unref(caps);
}

void ox_convert_scale_class_init(OxConvertScaleClass* klass) {
    GObjectClass* const object_class = G_OBJECT_CLASS(klass);
    object_class->set_property = setElementProperty;
    object_class->get_property = getElementProperty;
    object_class->finalize = finalize;
    installProperties(object_class);

    GstElementClass* const element_class = GST_ELEMENT_CLASS(klass);
    gst_element_class_set_static_metadata(
        element_class, "Exact video converter and scaler", "Filter/Converter/Video/Scaler",
        "Crops, scales and converts video in one pass, with the same bytes on every processor",
        "The libox authors");
    addPadTemplate(element_class, "sink", GST_PAD_SINK);
    addPadTemplate(element_class, "src", GST_PAD_SRC);

    GstBaseTransformClass* const transform_class = GST_BASE_TRANSFORM_CLASS(klass);
    transform_class->transform_caps = transformCaps;
    transform_class->fixate_caps = fixateCaps;
    transform_class->before_transform = beforeTransform;
    transform_class->transform_meta = transformMeta;
    transform_class->src_event = handleSourceEvent;
    GstVideoFilterClass* const filter_class = GST_VIDEO_FILTER_CLASS(klass);
    filter_class->set_info = setInfo;
    filter_class->transform_frame = transformFrame;
}

}  // namespace

GST_ELEMENT_REGISTER_DEFINE(oxconvertscale, "oxconvertscale", GST_RANK_NONE,
                            ox_convert_scale_get_type())
