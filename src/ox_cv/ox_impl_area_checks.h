// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the area scalers check alike.

#pragma once

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_scaler_area.h"

namespace ox::impl {

constexpr Place areaPlace{"src/ox_cv/ox_scaler_area"};

inline void checkPrecision(ScalerPrecision precision) {
    constexpr Place here = areaPlace;
    OX_ASSERT(precision == OX_SCALER_FIXED_POINT_8S || precision == OX_SCALER_FIXED_POINT_16S);
}

/// Refuses 32-bit samples, after their sums have been written.
inline void refuseWritten(FrameFormat format, char const* name) {
    if (!isScalableByArea(format)) {
        throwUnsupported(areaPlace, name);
    }
}

/// A region without columns or rows has nothing to weigh.
inline void checkSide(int src, char const* name) {
    if (src <= 0) {
        areaPlace.fail({StatusInvalidParameter, "reuse"},
                       "Failure in %s::reuse(...) : source is empty.", name);
    }
}

}  // namespace ox::impl
