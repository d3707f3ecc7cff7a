// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The columns of scaling by weighted taps.

#pragma once

#include <cstdint>
#include <vector>

#include "rows/elements.h"
#include "rows/taps/axis.h"

namespace ox::rows {

/// Vector code that sums weighted pixels of rows of bytes. It takes interleaved rows, or each
/// channel as a plane of its own. Taps behind the end of a row add nothing. Sums are clamped to
/// bytes.
class ByteTaps {
  public:
    /// @return false if there is no vector code for it
    /// @throws std::bad_alloc
    bool compile(TapAxis const& axis, TapRow row);

    void run(std::uint8_t const* src, std::uint8_t* dst) {
        if (_as_it_is) {
            _program.run(_program, src, dst);
        } else {
            runByPlanes(src, dst);
        }
    }

  private:
    void runByPlanes(std::uint8_t const* src, std::uint8_t* dst);

    TapProgram _program;
    /// Whether the program takes interleaved rows as they are, without room behind their end.
    bool _as_it_is = false;
    std::size_t _channels = 0;
    std::size_t _src_pixels = 0;
    std::size_t _dst_pixels = 0;
    std::vector<std::uint8_t> _src_planes;
    std::vector<std::uint8_t> _dst_planes;
};

/// The columns of a plane that is scaled by a filter. A sum is divided by the weights' unit,
/// truncated and clamped to the channel's range. Sums wrap in 32 bits; sums of 32-bit channels have
/// 64 bits. Taps behind the end of a source row add nothing.
class TapColumns : public Columns<TapColumns> {
  public:
    /// The axis that `plan` goes by; to be filled before.
    TapAxis axis;

    /// @param src_samples of a source row
    /// @throws std::bad_alloc
    void plan(Element element, std::int64_t src_samples);

  private:
    struct PlainLoops;
    bool compile(Element element);

    std::int64_t _src_samples = 0;
    ByteTaps _bytes;
};

}  // namespace ox::rows
