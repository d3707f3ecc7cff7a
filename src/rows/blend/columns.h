// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Two samples blended, along a row and across rows: how an axis is described and compiled, the
/// routines, the arithmetic of bilinear scaling, which defines the bytes (16.16 weights,
/// truncation, no rounding), the columns, and both directions.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "rows/coordinates.h"
#include "rows/elements.h"
#include "rows/pixels.h"
#include "vector/windows.h"

namespace ox::rows {

/// The two source pixels of a destination pixel. `left` and `right` never fall from pixel to pixel.
struct PixelPair {
    std::int32_t left;
    std::int32_t right;    ///< the next one, or `left` itself
    std::uint16_t weight;  ///< of `right`, of 2^16
};

/// How a row of bytes is blended.
struct BlendAxis {
    std::vector<PixelPair> pixels;  ///< of the result
    std::size_t channels = 0;       ///< 1 to 4
    std::size_t row_bytes = 0;      ///< of the source
};

struct BlendProgram;

/// left + ((right - left) * weight >> 16) of each entry.
using RunBlend = void(BlendProgram const& program, std::uint8_t const* src, std::uint8_t* dst);

/// The same for two rows, whose results are blended: upper + ((lower - upper) * weight >> 16).
using RunBlendRows = void(BlendProgram const& program, std::uint8_t const* upper,
                          std::uint8_t const* lower, std::uint16_t weight, std::uint8_t* dst);

/// The program that an axis is compiled to.
struct BlendProgram {
    RunBlend* run = nullptr;
    RunBlendRows* run_rows = nullptr;    ///< null where rows are blended by `BlendRows` alone
    std::vector<std::uint32_t> offsets;  ///< of each window: its first byte
    std::vector<vector::RegisterBytes> tables;
    std::size_t gathers = 0;  ///< of each block of entries
    std::size_t entries = 0;  ///< of the result: its samples
    bool of_64 = false;       ///< whether weights are pairs of bytes of 64ths, or of 2^16
};

/// @return false if the instruction set has no program for such an axis
/// @throws std::bad_alloc
using CompileBlend = bool(BlendAxis const& axis, BlendProgram& program);

/// upper + ((lower - upper) * weight >> 16) of each sample.
using BlendRows = void(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                       std::size_t samples, std::uint8_t* dst);

/// None is ever null.
struct BlendRoutines {
    CompileBlend* compile_blend;
    BlendRows* blend_rows;  ///< of bytes, any number of them
};

/// The plain loop for rows of bytes.
BlendRows blendPlainRows;

/// Enters the plain routines, which have no programs.
void takePlainBlendRoutines(BlendRoutines& routines);

/// Enters the vector routines of the instruction set in use, if it has any.
void takeBlendRoutines(BlendRoutines& routines);

/// (b f + a (65536 - f)) >> 16: the weights sum to one, so the result never leaves the sample.
template <class Sample>
inline Sample blend(Sample a, Sample b, std::uint32_t weight) {
    using Wide = Accumulator<Sample>;
    Wide const one = coordinateOne;
    return static_cast<Sample>((Wide{b} * weight + Wide{a} * (one - weight)) >> coordinateBits);
}

/// The two source elements of a destination element.
inline PixelPair pixelPair(std::int32_t coordinate, std::int64_t src_width) {
    std::int32_t const left = coordinate >> coordinateBits;
    return {left, left < src_width - 1 ? left + 1 : left,
            static_cast<std::uint16_t>(coordinate & coordinateMask)};
}

/// Vector code that blends the columns of a row of bytes.
class ByteBlend {
  public:
    /// @return false if there is no vector code for it
    /// @throws std::bad_alloc
    bool compile(BlendAxis const& axis);

    void run(std::uint8_t const* src, std::uint8_t* dst) {
        if (_copies) {
            _pixels.run(src, dst);
        } else {
            _program.run(_program, src, dst);
        }
    }

    bool hasProgram() const { return !_copies; }
    BlendProgram const& program() const { return _program; }

  private:
    bool _copies = false;    ///< whether every pixel is a copy of a source pixel
    GatheredPixels _pixels;  ///< used if `_copies`
    BlendProgram _program;
};

/// The columns of a plane that is scaled by 16.16 source coordinates.
class BlendColumns {
  public:
    /// @param table source coordinate of each destination element; must outlive the columns
    /// @throws std::bad_alloc
    void plan(RowPlan const& row, Element element, std::vector<std::int32_t> const& table);

    void run(std::uint8_t const* src, std::uint8_t* dst) {
        if (_plain_loop != nullptr) {
            _plain_loop(*this, src, dst);
        } else {
            _bytes.run(src, dst);
        }
    }

    /// Blends the columns of two rows, and then these.
    /// @return false if there is no routine that does both at once; nothing is done then
    bool runRows(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                 std::uint8_t* dst) const;

  private:
    struct PlainLoops;
    using PlainLoop = void(BlendColumns const&, std::uint8_t const* src, std::uint8_t* dst);
    bool compile(Element element);

    RowPlan _row;
    std::int32_t const* _table = nullptr;
    PlainLoop* _plain_loop = nullptr;  ///< null with vector code
    ByteBlend _bytes;
};

/// The routine for rows of such elements, whatever their number of channels.
BlendRows* chooseBlendRows(Element element);

/// Bilinear scaling in both directions. Columns are blended first, each to a truncated value; then
/// two such rows are blended. The last two rows of blended columns may be kept, because
/// neighbouring rows of an enlarged picture come from the same two source rows.
class BlendColumnsAndRows {
  public:
    /// As `BlendColumns::plan`.
    void plan(RowPlan const& row, Element element, std::vector<std::int32_t> const& table);

    /// Forgets the kept rows. To be called before another picture.
    /// @param shares_rows whether destination rows may have a source row in common
    void restart(bool shares_rows) {
        _kept = {-1, -1};
        _shares_rows = shares_rows;
    }

    /// A source row, and its number in the picture.
    struct Source {
        std::uint8_t const* row;
        std::int64_t number;
    };
    void run(Source upper, Source lower, std::uint16_t weight, std::uint8_t* dst);

  private:
    std::uint8_t const* keep(Source source, std::int64_t other);

    BlendColumns _columns;
    BlendRows* _blend_rows = nullptr;
    std::size_t _samples = 0;  ///< of a destination row
    bool _shares_rows = true;
    std::array<std::vector<std::uint8_t>, 2> _rows;
    std::array<std::int64_t, 2> _kept{-1, -1};  ///< numbers of the source rows of `_rows`
};

}  // namespace ox::rows
