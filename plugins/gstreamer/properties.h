// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The properties of `oxconvertscale`: their numbers, names and what they change.

#pragma once

#include <memory>

#include <gst/gst.h>

#include "ox_cv/ox_scale_kernel.h"
#include "settings.h"

namespace oxgst {

void installProperties(GObjectClass* object_class);

/// @return false for a number that isn't a property's
bool setProperty(Settings& settings, guint id, GValue const* value);
bool getProperty(Settings const& settings, guint id, GValue* value);

/// Null for `Filter::None`.
std::shared_ptr<ox::IKernel> makeKernel(Filter filter);

}  // namespace oxgst
