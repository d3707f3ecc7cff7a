/// @file
/// The routines that convert rows from one pixel format to another.

#pragma once

#include <array>

#include "rows/colour/floats.h"
#include "rows/colour/layouts.h"

namespace ox::rows {

struct ColourRoutines {
    std::array<YuvToBgr*, yuvLayouts> yuv_to_bgr;
    std::array<BgrToYuv*, yuvLayouts> bgr_to_yuv;
    BgrToGray* bgr_to_gray;
    PackedLuma* luma_of_yuyv;
    PackedLuma* luma_of_uyvy;
    std::size_t least_pixels;  ///< of those above
    BytesToFloats* bytes_to_floats;
    FloatsToLowBytes* floats_to_low_bytes;
    std::size_t least_floats;
};

// Each source puts in its own for the best instruction set, and none where that has no vector code.
void takeBgrToYuvRoutines(ColourRoutines& routines);
void takeFloatRoutines(ColourRoutines& routines);
void takeYuvToBgrRoutines(ColourRoutines& routines);

}  // namespace ox::rows
