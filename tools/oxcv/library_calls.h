// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How the tool calls the library.

#pragma once

#include <new>
#include <string>

#include "failure.h"
#include "ox_core/ox_exception.h"
#include "ox_core/ox_frame.h"

namespace oxcv {

/// Gives a frame a format and a size. A new frame is cleared, because some conversions never write
/// the second sample of the last pair of pixels in rows of odd width.
inline void prepare(ox::Frame& frame, ox::FrameFormat format, ox::Size size) {
    if (frame.format() != format || frame.size() != size) {
        frame.reuse(format, size, ox::DeviceContext(), 0);
        frame.setZero();
    }
}

/// Calls the library. If that refuses, or memory is exhausted, the failure names the step or file.
template <class Call>
auto attempt(std::string const& what, Call call) {
    try {
        return call();
    } catch (ox::Exception const& refusal) {
        throw Failure(what + ": " + refusal.what());
    } catch (std::bad_alloc const&) {
        throw Failure(what + ": memory is exhausted");
    }
}

}  // namespace oxcv
