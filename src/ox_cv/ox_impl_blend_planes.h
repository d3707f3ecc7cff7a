/// @file
/// Bilinear rows of bytes by vector code.

#pragma once

#include <array>
#include <cstdint>

#include "ox_core/ox_buffer.h"
#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "rows/blend/axis.h"
#include "vector/row_program.h"

namespace ox::impl {

/// The columns of a plane, and the last two source rows that were blended: rows of an enlarged
/// picture come from the same two again and again.
class BlendPlane {
  public:
    /// @param here the owner's place, for failures
    /// @return false if there is no vector code for it
    /// @throws Exception `StatusCapacityExceeded`
    bool plan(rows::BlendAxis const& axis, Place here);

    /// Forgets the rows; before another picture.
    void restart() { _kept = {-1, -1}; }

    /// Blends the columns of a row.
    void columns(unsigned char const* src, unsigned char* dst);

    /// Blends the columns of two rows, and then these.
    /// @param upper_row, lower_row by which they are known
    void columnsAndRows(unsigned char const* upper, std::int64_t upper_row,
                        unsigned char const* lower, std::int64_t lower_row, std::uint32_t weight,
                        unsigned char* dst);

  private:
    bool planPixels(rows::BlendAxis const& axis, Place here);
    void blend(unsigned char const* src, unsigned char* dst);
    unsigned char const* keep(unsigned char const* src, std::int64_t row, std::int64_t other);

    bool _copies = false;  ///< whether every pixel is one of the source's
    rows::BlendProgram _program;
    Simd::RowProgram _pixels;  ///< stands in for it if so
    std::size_t _bytes = 0;    ///< of a destination row
    std::array<Buffer, 2> _rows;
    std::array<std::int64_t, 2> _kept{-1, -1};
};

/// The pixels of a plane that is scaled by 16.16 source coordinates.
/// @param axis receives them
/// @return false where elements don't all lie in the source row, or aren't bytes
/// @throws std::bad_alloc
bool describeBilinearBlend(RowPlan const& row, ScaleElement element, std::int32_t const* table,
                           rows::BlendAxis& axis);

/// Blends two rows of bytes by vector code.
/// @return false if it can't
bool blendRowsByVectors(unsigned char const* upper, unsigned char const* lower,
                        std::uint32_t weight, std::int64_t bytes, unsigned char* dst);

}  // namespace ox::impl
