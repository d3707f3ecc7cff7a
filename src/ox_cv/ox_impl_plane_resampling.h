/// @file
/// Resizing and warping of the vector backend: plane by plane, by an object for each.

#pragma once

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_backend.h"

namespace ox::impl {

/// @param src, dst of one format of 8 or 32 bits a channel; the latter are taken for floats, which
///        `ResizeArea` isn't for
void resizePlanes(Frame const& src, Frame const& dst, ResizeMethod method);

/// @param matrix six floats, from source to destination
/// @return false at the first plane that can't be warped, or for a matrix without an inverse; the
///         planes before it are written by then
bool warpPlanes(Frame const& src, Frame const& dst, float const* matrix, ResizeMethod method);

}  // namespace ox::impl
