/// @file
/// Vector routines for the row loops of the pipeline: raw rows, without frames. Each gives the
/// bytes of the plain loop that it stands in for.

#pragma once

#include <array>

#include "rows/blend/axis.h"
#include "rows/colour/floats.h"
#include "rows/colour/layouts.h"
#include "rows/taps/axis.h"
#include "vector/row_program.h"

namespace ox::rows {

/// The routines of an instruction set; null where there is no vector code.
struct Routines {
    CompileTaps* compile_taps;
    SumTaps* sum_taps;
    SumRows* sum_rows;
    CompileBlend* compile_blend;
    BlendColumns* blend_columns;
    BlendRows* blend_rows;
    std::size_t least_row_bytes;  ///< of `sum_rows` and `blend_rows`
    std::array<YuvToBgr*, yuvLayouts> yuv_to_bgr;
    std::array<BgrToYuv*, yuvLayouts> bgr_to_yuv;
    BgrToGray* bgr_to_gray;
    PackedLuma* luma_of_yuyv;
    PackedLuma* luma_of_uyvy;
    std::size_t least_pixels;             ///< of the colour routines
    Simd::CompilePixels* compile_pixels;  ///< whole pixels, gathered
    Simd::CopyPixels* copy_pixels;
    BytesToFloats* bytes_to_floats;
    FloatsToLowBytes* floats_to_low_bytes;
    std::size_t least_floats;
};

/// Those of the best instruction set of this processor.
Routines const& routines();

/// The same, looked up anew: for tests, which try one instruction set after another.
Routines findRoutines();

/// Takes these from now on. For tests and benchmarks, and not while rows are on their way: what is
/// armed may go on with what it has chosen.
void useRoutines(Routines const& wanted);

}  // namespace ox::rows
