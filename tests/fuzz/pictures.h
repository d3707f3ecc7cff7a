// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames with the pixels of the model's images, in memory of exactly their size: the address
// sanitizer sees what is read or written beside it.
#pragma once

#include <array>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fuzz/input.h"
#include "model/image.h"
#include "model/stream.h"
#include "ox_core/ox_frame.h"

namespace ox::fuzz {

// What destinations hold before they are written.
constexpr std::uint8_t untouched = 0x3C;

// How planes lie in memory: bytes before the first row, and between a row's end and the next row.
struct Place {
    std::size_t lead = 0;
    std::size_t gap = 0;
};
using Places = std::array<Place, 4>;

// All tight, all alike, or each in its own way.
Places drawPlaces(Input& input, std::size_t unit = 1);

class Picture {
  public:
    explicit Picture(model::Image const& image, Places const& places = {});

    // Not initialized for an image without planes.
    Frame& frame() { return _frame; }
    Frame const& frame() const { return _frame; }

    // Fails unless all pixels are those of the image, and nothing beside them changed.
    void expect(model::Image const& expected, char const* what) const;
    // Fails unless its memory is that of another one of the same places.
    void expectAs(Picture const& other, char const* what) const;

  private:
    struct Memory {
        std::unique_ptr<unsigned char[]> bytes;
        std::size_t size = 0;
        std::size_t lead = 0;
        std::size_t stride = 0;
    };

    std::array<Memory, 4> _memory;
    Frame _frame;
};

// A format of all that have a name; rarely, a number that is none.
int drawFormat(Input& input);
int drawNamedFormat(Input& input);
// Mostly small: an input should take no longer than it has to.
int drawSide(Input& input);
model::Geometry drawGeometry(Input& input);
model::Image drawImage(Input& input, model::Geometry geometry);
// Empty for the whole of it.
Rect drawRegion(Input& input, Size whole);

FrameFormat formatOf(int format);

// What an operation of the library came to.
model::Outcome outcomeOf(std::function<void()> const& operation);
void expectAlike(model::Outcome const& got, model::Outcome const& wanted, char const* what);

}  // namespace ox::fuzz
