// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Meeting place of the library and the plain model: the same pixels on both sides.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "model/stream.h"
#include "support/test_frame.h"

namespace ox::test {

// A library frame with a model image's pixels. A format without planes gives an empty frame.
class BridgedFrame {
  public:
    explicit BridgedFrame(model::Image const& image, Placement placement = {});

    Frame& frame() { return _held ? _held->frame() : _empty; }
    Frame const& frame() const { return _held ? _held->frame() : _empty; }

    // Compares the pixels with those of an image of the same geometry, and fails the test if bytes
    // between or around the rows changed.
    testing::AssertionResult holds(model::Image const& expected) const;

  private:
    std::optional<TestFrame> _held;
    Frame _empty;
};

// What an operation of the library came to, in the model's terms.
model::Outcome outcomeOf(std::function<void()> const& operation);

// Whether two operations came to the same, by status and text.
testing::AssertionResult agree(model::Outcome const& got, model::Outcome const& wanted);

std::string describe(model::Geometry const& geometry);
Size sizeOf(model::Geometry const& geometry);
FrameFormat formatOf(model::Geometry const& geometry);

model::Image drawImage(Random& random, model::Geometry geometry);
// Guard pages cost more than small pictures do: most draws go without.
Placement drawPlacement(Random& random);
bool oneIn(Random& random, int count);
// The number of cases a sweep draws: fewer where every instruction is emulated.
int draws(int count);

}  // namespace ox::test
