// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#define PACKAGE "libox"

#include <gst/gst.h>

#include "convert_scale.h"

namespace {

gboolean registerElements(GstPlugin* plugin) {
    return GST_ELEMENT_REGISTER(oxconvertscale, plugin);
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, ox, "Exact image processing",
                  registerElements, OX_VERSION, "Apache 2.0", "libox", "https://example.org/libox")
