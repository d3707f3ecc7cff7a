// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The columns of area scaling.

#pragma once

#include "rows/area/axis.h"
#include "rows/blend/columns.h"
#include "rows/elements.h"
#include "rows/taps/columns.h"

namespace ox::rows {

/// The columns of a plane that is scaled by a table of weights.
class AreaColumns : public Columns<AreaColumns> {
  public:
    /// @param axis its weights must outlive the columns
    /// @param up true blends two neighbours; false sums all samples of a cell
    /// @throws std::bad_alloc
    void plan(RowPlan const& row, Element element, AreaAxis const& axis, bool up);

  private:
    template <class Direction>
    struct PlainLoops;
    bool compile(Element element, bool up);

    RowPlan _row;
    AreaAxis _axis{};
    ByteBlend _blend;
    ByteTaps _taps;
};

}  // namespace ox::rows
