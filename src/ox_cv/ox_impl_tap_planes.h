/// @file
/// Rows of bytes summed by vector code: as they are, or each channel as a plane of its own.

#pragma once

#include <cstdint>

#include "ox_core/ox_buffer.h"
#include "ox_core/ox_impl_place.h"
#include "rows/taps/axis.h"

namespace ox::impl {

/// Sums the weighted pixels of rows, which may be of several channels. Taps behind the end of a row
/// add nothing; sums are clamped to bytes.
class TapPlanes {
  public:
    /// @param channels interleaved in a row, 1 to 4
    /// @param src_pixels of a row
    /// @param here the owner's place, for failures
    /// @return false if there is no vector code for it
    /// @throws Exception `StatusCapacityExceeded`
    bool plan(rows::TapAxis const& axis, std::size_t channels, std::uint64_t src_pixels,
              Place here);

    void sum(unsigned char const* src, unsigned char* dst);

  private:
    rows::TapProgram _program;
    /// Whether the program takes interleaved rows, and no room behind them.
    bool _as_it_is = false;
    std::size_t _channels = 0;
    std::size_t _src_pixels = 0;
    std::size_t _dst_pixels = 0;
    Buffer _src_planes;  ///< with zeros behind the pixels
    Buffer _dst_planes;
};

}  // namespace ox::impl
