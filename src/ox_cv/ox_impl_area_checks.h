/// @file
/// What the area scalers check alike.

#pragma once

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_scaler_area.h"

namespace ox::impl {

constexpr Place areaPlace{"src/ox_cv/ox_scaler_area"};

inline void checkPrecision(ScalerPrecision precision) {
    constexpr Place here = areaPlace;
    OX_ASSERT(precision == OX_SCALER_FIXED_POINT_8S || precision == OX_SCALER_FIXED_POINT_16S);
}

[[noreturn]] inline void throwUnsupportedArea(char const* name) {
    areaPlace.fail({StatusNotSupported, "produce"},
                   "Failure in %s::produce(...) : unsupported frame format.", name);
}

/// Before rows are summed, and behind that.
inline void refuseUnscalable(FrameFormat format, char const* name) {
    if (!isScalable(format)) {
        throwUnsupportedArea(name);
    }
}

inline void refuseWritten(FrameFormat format, char const* name) {
    if (!isScalableByArea(format)) {
        throwUnsupportedArea(name);
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
