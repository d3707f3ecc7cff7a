// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What `FrameToTensor` promises, by the library's own operations on whole frames, each by a new
// object into a cleared frame.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "ox_cv/ox_frame_to_tensor.h"

namespace ox::test {

// The bytes of a picture of a tensor, tightly packed.
struct ChainResult {
    std::vector<std::uint8_t> bytes;
    Rect source;
    Rect inner;
};

// @param region of `src`, with two positive sides
ChainResult runChain(TensorRecipe const& recipe, Frame const& src, Rect region);

std::size_t elementBytes(TensorDataType element);

std::string describe(TensorRecipe const& recipe);

}  // namespace ox::test
