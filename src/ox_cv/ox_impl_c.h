// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the sources of the C interface share: the handles, and the border that no exception
/// crosses.

#pragma once

#include <memory>

#include "ox_core/ox_frame.h"
#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_cv_c.h"
#include "ox_cv/ox_scale_kernel.h"

struct ox_frame {
    ox::Frame frame;
};

namespace ox::impl::c {

/// Keeps the text of the exception that is being handled, for `ox_last_error`.
/// @return its status
ox_status keepError() noexcept;

/// Runs the body of a C function.
template <class Body>
ox_status guarded(Body const& body) noexcept {
    try {
        body();
        return OX_STATUS_OK;
    } catch (...) {
        return keepError();
    }
}

/// Throws unless a parameter points to something.
void requireParameter(void const* pointer, char const* name);

/// Throws `StatusInvalidParameter`, with the value that has no meaning.
[[noreturn]] void refuseValue(char const* name, int value);

/// Runs the body of a C function that gives the caller a handle: the `std::unique_ptr` that `make`
/// returns.
template <class Handle, class Make>
ox_status give(Handle** handle, char const* name, Make const& make) noexcept {
    return guarded([&] {
        requireParameter(handle, name);
        *handle = nullptr;
        *handle = make().release();
    });
}

/// The frame behind a handle.
Frame const& frameOf(ox_frame const* handle, char const* name);
Frame& frameOf(ox_frame* handle, char const* name);

inline Rect rectOf(ox_rect const* rect) {
    return rect == nullptr ? Rect{} : Rect{rect->x, rect->y, rect->width, rect->height};
}

/// @throws Exception for an unknown kind, or without the callbacks
std::unique_ptr<IKernel> kernelOf(ox_filter const& filter);

}  // namespace ox::impl::c
