// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames on memory of their own, whose every byte is watched.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_frame.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

struct Placement {
    std::size_t gap = 0;  // bytes from a row's end to the start of the next
    Guard guard = Guard::None;
};

// A frame that wraps memory with the given gaps. Pixels start as 0, everything else as poison.
class TestFrame {
  public:
    TestFrame(FrameFormat format, Size size, Placement placement = {});
    TestFrame(FrameFormat format, Size size, Random& random, Placement placement = {});

    Frame& frame() { return _frame; }
    Frame const& frame() const { return _frame; }
    FrameLayout const& layout() const { return _frame.layout(); }
    unsigned char* row(int plane, int y) const;

    // Fails the test for each plane with a changed byte outside its rows.
    void expectGapsUntouched(char const* file = __builtin_FILE(),
                             int line = __builtin_LINE()) const;

  private:
    Frame _frame;
    std::vector<std::unique_ptr<GuardedMemory>> _planes;
};

// Every format that has a name, and the three values between them that have none.
std::vector<FrameFormat> allFormats();
std::vector<FrameFormat> unknownFormats();

unsigned char* rowOf(Frame const& frame, int plane, int y);

// Pixels only.
void fill(Frame const& frame, unsigned char value);
void fill(Frame const& frame, Random& random);
void fill(Frame const& frame, int plane, std::vector<std::vector<int>> const& rows);
// Floats within `low` and `high`; any other format as `fill`.
void fillFloats(Frame const& frame, Random& random, float low, float high);

// Whether two frames have the same format, size and pixels; the first difference is told.
testing::AssertionResult samePixels(Frame const& got, Frame const& expected);
// Whether all pixels have that byte.
testing::AssertionResult isFilledWith(Frame const& frame, unsigned char value);
// The bytes of a plane's row.
std::vector<int> bytesOf(Frame const& frame, int plane, int y);

std::string describe(FrameFormat format, Size size);

}  // namespace ox::test
