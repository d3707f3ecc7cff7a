// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The library's two roads to a result, each checked against plain loops.

#pragma once

#include <functional>

#include "operation.h"
#include "ox_cv/ox_cv_backend.h"
#include "pictures.h"

namespace ox::benchmarks {

/// Something that a backend does with two frames.
using Work = std::function<void(ICvBackend& backend, Frame const& src, Frame& dst)>;

/// Both backends that do the work. What they make is right if it is what they make without vector
/// code.
std::vector<Road> roadsOf(Picture const& src, Picture const& dst, Work const& work);

/// No vector code while it lives, in objects that are armed meanwhile.
class PlainLoops {
  public:
    PlainLoops();
    PlainLoops(PlainLoops const&) = delete;
    PlainLoops& operator=(PlainLoops const&) = delete;
    ~PlainLoops();
};

}  // namespace ox::benchmarks
