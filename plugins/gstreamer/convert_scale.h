// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The element `oxconvertscale`.

#pragma once

#include <gst/gst.h>

G_BEGIN_DECLS

GST_ELEMENT_REGISTER_DECLARE(oxconvertscale)

G_END_DECLS
