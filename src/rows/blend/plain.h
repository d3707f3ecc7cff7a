/// @file
/// Bilinear arithmetic: 16.16 weights, truncation, no rounding. It defines the bytes.

#pragma once

#include "rows/blend/axis.h"
#include "rows/coordinates.h"
#include "rows/elements.h"

namespace ox::rows {

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

/// The plain loop for rows of bytes.
BlendRows blendPlainRows;

/// The routine for rows of such elements, whatever their number of channels.
BlendRows* chooseBlendRows(Element element);

}  // namespace ox::rows
