// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Planes of bytes in memory of exactly their size, rows from the top down or from the bottom up.
#pragma once

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

#include "fuzz/input.h"
#include "fuzz/targets.h"

namespace ox::fuzz {

struct PlaneSize {
    std::size_t row_bytes = 0;
    std::size_t rows = 0;
};

class Plane {
  public:
    static constexpr std::uint8_t poison = 0xA5;

    // Lead and gap are multiples of `unit`. Only where that is taken, rows may lie upside down.
    Plane(Input& input, PlaneSize size, std::size_t unit = 1, bool may_turn = false) : _size(size) {
        std::uint8_t const kind = input.byte();
        std::size_t const lead = kind % 2 == 0 ? 0 : std::size_t{input.byte()} % 16 * unit;
        _pitch = size.row_bytes + (kind % 4 < 2 ? 0 : std::size_t{input.byte()} % 70 * unit);
        _turned = may_turn && kind % 16 >= 12;
        _bytes = lead + (size.rows == 0 ? 0 : (size.rows - 1) * _pitch + size.row_bytes);
        _memory = std::make_unique<std::uint8_t[]>(_bytes);
        std::fill_n(_memory.get(), _bytes, poison);
        _first = _memory.get() + lead;
    }

    // Of the first row, and bytes from there to the next one, modulo 2^64.
    std::uint8_t* data() const { return _size.rows == 0 ? _first : row(0); }
    std::size_t stride() const { return _turned ? std::size_t{0} - _pitch : _pitch; }
    std::uint8_t* row(std::size_t y) const {
        return _first + (_turned ? _size.rows - 1 - y : y) * _pitch;
    }
    PlaneSize size() const { return _size; }

    void store(std::vector<std::uint8_t> const& bytes) const {
        for (std::size_t y = 0; y < _size.rows; ++y) {
            std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(y * _size.row_bytes),
                        _size.row_bytes, row(y));
        }
    }

    // Of the rows, without gaps.
    std::vector<std::uint8_t> bytes() const {
        std::vector<std::uint8_t> all;
        for (std::size_t y = 0; y < _size.rows; ++y) {
            all.insert(all.end(), row(y), row(y) + _size.row_bytes);
        }
        return all;
    }

    // Fails unless everything beside the rows is as it was.
    void expectUntouchedAround(char const* what) const {
        std::vector<bool> inside(_bytes);
        for (std::size_t y = 0; y < _size.rows; ++y) {
            std::fill_n(inside.begin() + (row(y) - _memory.get()), _size.row_bytes, true);
        }
        for (std::size_t i = 0; i < _bytes; ++i) {
            if (!inside[i] && _memory[i] != poison) {
                fail("%s: a byte beside the rows changed", what);
            }
        }
    }

  private:
    PlaneSize _size;
    std::size_t _pitch = 0;
    bool _turned = false;
    std::size_t _bytes = 0;
    std::unique_ptr<std::uint8_t[]> _memory;
    std::uint8_t* _first = nullptr;
};

// Fails at the first byte that differs.
inline void expectBytes(std::vector<std::uint8_t> const& got,
                        std::vector<std::uint8_t> const& wanted, char const* what) {
    auto const [a, b] = std::mismatch(got.begin(), got.end(), wanted.begin(), wanted.end());
    if (a != got.end() || b != wanted.end()) {
        fail("%s: byte %td of %zu is %d, not %d", what, a - got.begin(), wanted.size(),
             a == got.end() ? -1 : int{*a}, b == wanted.end() ? -1 : int{*b});
    }
}

// The same for floats, of which any NaN is as good as another.
inline void expectFloats(std::vector<std::uint8_t> const& got,
                         std::vector<std::uint8_t> const& wanted, char const* what) {
    std::vector<std::uint8_t> alike = wanted;
    for (std::size_t i = 0; i + sizeof(float) <= std::min(got.size(), alike.size());
         i += sizeof(float)) {
        float a = 0.0F;
        float b = 0.0F;
        std::memcpy(&a, &got[i], sizeof a);
        std::memcpy(&b, &alike[i], sizeof b);
        if (a != a && b != b) {
            std::memcpy(&alike[i], &a, sizeof a);
        }
    }
    expectBytes(got, alike, what);
}

}  // namespace ox::fuzz
