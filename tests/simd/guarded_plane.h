// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Planes of bytes whose gaps and surroundings are watched.
#pragma once

#include <algorithm>
#include <cstddef>

#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

struct PlaneSize {
    std::size_t row_bytes = 0;
    std::size_t rows = 0;
};

// Where a plane lies in memory.
struct PlanePlacement {
    std::size_t gap = 0;           // bytes from a row's end to the start of the next
    std::size_t misalignment = 0;  // of the first byte; only without protected pages
    Guard guard = Guard::None;
};

inline PlanePlacement drawPlanePlacement(Random& random) {
    constexpr std::size_t gaps[]{0, 1, 64};
    constexpr Guard guards[]{Guard::None, Guard::AtEnd, Guard::AtStart};
    return {gaps[random.between(0, 2)], static_cast<std::size_t>(random.between(0, 15)),
            guards[random.between(0, 2)]};
}

class GuardedPlane {
  public:
    explicit GuardedPlane(PlaneSize size, PlanePlacement placement = {})
        : _size(size),
          _stride(size.row_bytes + placement.gap),
          _offset(placement.guard == Guard::None ? placement.misalignment : 0),
          _memory(_offset + (size.rows == 0 ? 0 : (size.rows - 1) * _stride + size.row_bytes),
                  placement.guard) {}

    PlaneSize size() const { return _size; }
    std::size_t stride() const { return _stride; }
    unsigned char* data() const { return _memory.data() + _offset; }
    unsigned char* row(std::size_t y) const { return data() + y * _stride; }

    // Whether all bytes outside the rows are as they were.
    bool surroundingsUntouched() const {
        bool same = _memory.touched() == 0 && isPoison(_memory.data(), data());
        for (std::size_t y = 1; y < _size.rows; ++y) {
            same = same && isPoison(row(y - 1) + _size.row_bytes, row(y));
        }
        return same;
    }

  private:
    static bool isPoison(unsigned char const* from, unsigned char const* to) {
        return std::all_of(from, to,
                           [](unsigned char byte) { return byte == GuardedMemory::poison; });
    }

    PlaneSize _size;
    std::size_t _stride;
    std::size_t _offset;
    GuardedMemory _memory;
};

}  // namespace ox::test
