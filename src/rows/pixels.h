// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows that are made of whole pixels of a source row.

#pragma once

#include <vector>

#include "rows/elements.h"
#include "vector/gather.h"

namespace ox::rows {

/// Vector code that copies pixels.
class GatheredPixels {
  public:
    /// @param offsets byte of each pixel in the source row, never falling
    /// @return false if there is no vector code for it
    bool compile(std::vector<std::int32_t> const& offsets, std::size_t pixel_bytes,
                 std::size_t row_bytes);
    void run(std::uint8_t const* src, std::uint8_t* dst) { _copy(_program, src, dst); }

  private:
    vector::PixelProgram _program;
    vector::CopyPixels* _copy = nullptr;
};

/// The columns of nearest neighbour scaling.
class NearestColumns : public Columns<NearestColumns> {
  public:
    /// @param table source element of each destination element; must outlive the columns
    /// @throws std::bad_alloc
    void plan(RowPlan const& row, Element element, std::vector<std::uint16_t> const& table);

  private:
    struct PlainLoops;
    bool compile(Element element, std::vector<std::uint16_t> const& table);

    RowPlan _row;
    std::uint16_t const* _table = nullptr;
    GatheredPixels _pixels;
};

}  // namespace ox::rows
