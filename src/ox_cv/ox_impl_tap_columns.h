/// @file
/// The row loops of the horizontal pass of convolutional scaling.

#pragma once

#include <cstdint>
#include <vector>

#include "ox_cv/ox_impl_scale_data.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_impl_tap_planes.h"

namespace ox::impl {

/// Sums the rows of one plane. A sum is divided by the weights' unit, truncated and clamped to what
/// the channel holds; sums wrap in 32 bits, those of 32-bit channels are of 64 bits. Taps behind
/// the end of a source row add nothing.
/// @tparam Weight `signed char` or `short`
template <class Weight>
class TapColumns {
  public:
    /// Picks the loop for a plane. Everything is computed anew.
    /// @param data must outlive the loops and stay as it is
    /// @param element of the plane; without channels, there is no loop
    /// @param row_bytes of the source
    /// @throws Exception `StatusCapacityExceeded`
    void plan(ScaleData<Weight> const& data, ScaleElement element, std::uint64_t row_bytes);
    void clear();

    /// False before `plan`, and for a plane that doesn't exist.
    explicit operator bool() const { return _sum != nullptr; }
    std::uint64_t rowBytes() const { return _row_bytes; }

    void sum(unsigned char const* src, unsigned char* dst) { _sum(*this, src, dst); }

  private:
    using Sum = void (*)(TapColumns& columns, unsigned char const* src, unsigned char* dst);
    struct PlainLoops;
    static void sumByVectors(TapColumns& columns, unsigned char const* src, unsigned char* dst);

    void fillAxis();

    ScaleData<Weight> const* _data = nullptr;
    std::uint64_t _row_bytes = 0;
    Sum _sum = nullptr;
    TapPlanes _planes;    ///< of the vector loop
    rows::TapAxis _axis;  ///< what they are planned by; a member so that its memory stays
};

extern template class TapColumns<signed char>;
extern template class TapColumns<short>;

}  // namespace ox::impl
