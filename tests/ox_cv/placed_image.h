// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Model images in memory whose every byte is watched, each plane placed on its own.
#pragma once

#include <array>
#include <memory>
#include <vector>

#include "ox_cv/model_bridge.h"

namespace ox::test {

struct PlanePlacement {
    std::size_t lead = 0;  // bytes before the first row
    std::size_t gap = 0;   // bytes from a row's end to the start of the next
    Guard guard = Guard::None;
};

using Placements = std::array<PlanePlacement, 4>;

// The same for all planes.
Placements everywhere(PlanePlacement placement);
// Tight, with equal gaps, or each plane otherwise; at the ends of pages and misaligned at times.
Placements drawPlacements(Random& random);

// A library frame with a model image's pixels, and poison elsewhere.
class PlacedImage {
  public:
    explicit PlacedImage(model::Image const& image, Placements const& placements = {});

    Frame& frame() { return _frame; }
    Frame const& frame() const { return _frame; }

    // The bytes of a plane from its lead to its last row's end.
    std::vector<std::uint8_t> memoryOf(int plane) const;
    // Where the frame's pixels start in a plane's memory.
    std::size_t leadOf(int plane) const { return _planes[static_cast<std::size_t>(plane)].lead; }

    // Whether all memory is as if the frame had been made of this image.
    testing::AssertionResult holds(model::Image const& expected) const;
    // Whether nothing was written before a plane's memory or behind it.
    bool untouchedAround() const;

  private:
    struct PlaneMemory {
        std::unique_ptr<GuardedMemory> memory;
        std::size_t lead;
        std::size_t stride;
    };

    std::vector<PlaneMemory> _planes;
    Frame _frame;
};

// The pixels of any frame of the library.
model::Image imageOf(Frame const& frame);
testing::AssertionResult sameImage(model::Image const& got, model::Image const& expected);

// Bytes of any value; floats mostly around 0 to 255, with every kind of outlier.
model::Image drawPicture(Random& random, model::Geometry geometry);
// Such a float.
float drawFloat(Random& random);

}  // namespace ox::test
