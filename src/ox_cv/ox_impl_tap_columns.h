/// @file
/// The row loops of the horizontal pass of convolutional scaling.

#pragma once

#include <cstdint>
#include <vector>

#include "ox_core/ox_buffer.h"
#include "ox_cv/ox_impl_scale_data.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "rows/rows_routines.h"

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

    void arrangeWeights();
    void planVectors(std::uint32_t channels);
    void planTail(std::uint32_t channels);

    ScaleData<Weight> const* _data = nullptr;
    std::uint64_t _row_bytes = 0;
    Sum _sum = nullptr;

    // Of the vector loop. The last pixels, whose windows would leave the row, are summed out of a
    // copy of its end, with zeros behind, into memory of their own.
    rows::TapShape _shape{};
    rows::ColumnTaps _taps{};
    std::vector<rows::TapStart> _starts;
    Buffer _weights;
    std::size_t _whole = 0;          ///< pixels before the last ones
    std::uint64_t _tail_begin = 0;   ///< byte of the row that the copy begins with
    std::uint64_t _tail_copied = 0;  ///< bytes of the row that are copied
    std::uint64_t _tail_dst_bytes = 0;
    std::uint64_t _whole_dst_bytes = 0;
    Buffer _tail_src;
    Buffer _tail_dst;
};

extern template class TapColumns<signed char>;
extern template class TapColumns<short>;

}  // namespace ox::impl
