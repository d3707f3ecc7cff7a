// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What `oxconvertscale` takes and makes, in caps; no pixel is looked at.

#pragma once

#include <gst/video/video.h>

#include "settings.h"

namespace oxgst {

/// All formats and sizes.
/// @return the caller's reference
GstCaps* templateCaps();

/// What may be on the other pad when this one has `caps`: first the same, if nothing is cropped,
/// then every size and pixel aspect ratio in every format that is converted. Properties narrow the
/// source pad.
/// @param pad the one that has `caps`
/// @return the caller's reference
GstCaps* otherCaps(Settings const& settings, GstPadDirection pad, GstCaps* caps);

/// Decides what is still open on the other pad: the format that loses least, then the size next to
/// what is read that keeps the display aspect ratio, then the colorimetry that the bytes have.
/// @param caps fixed
/// @param other consumed
/// @return the caller's reference
GstCaps* fixatedCaps(Settings const& settings, GstPadDirection pad, GstCaps* caps, GstCaps* other);

}  // namespace oxgst
