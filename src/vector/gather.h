// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows whose pixels are pixels of a source row, gathered by vector code.

#pragma once

#include <cstdint>

#include "vector/aligned_array.h"
#include "vector/dispatch.h"

namespace ox::vector {

/// Which pixels of a source row a row is made of.
struct PixelColumns {
    std::int32_t const* offset;  ///< byte of each pixel in the source row, never falling
    std::uint64_t width;         ///< pixels of the result
    std::uint64_t pixel_size;    ///< bytes
    std::uint64_t row_bytes;     ///< of the source
};

/// The program that `PixelColumns` are compiled to. A step permutes the bytes of a window.
struct PixelProgram {
    Simd::AlignedArray<std::int32_t> offsets;  ///< of each step: its window, its first result byte
    Simd::AlignedArray<std::uint8_t> places;   ///< of each step: its bytes' places in the window
    Simd::AlignedArray<std::uint8_t>
        scratch;  ///< a row for the steps that would store past its end
    std::uint64_t steps = 0;
    std::uint64_t step_bytes = 0;  ///< the most that a step has
    std::uint64_t dst_bytes = 0;   ///< of the result
};

/// @return false if the instruction set has no program for such columns, or there is no memory
using CompilePixels = bool(PixelColumns const& columns, PixelProgram& program);
using CopyPixels = void(PixelProgram& program, std::uint8_t const* src, std::uint8_t* dst);

struct GatherRoutines {
    CompilePixels* compile_pixels = noProgram;
    CopyPixels* copy_pixels = neverRun;
};

/// Enters the vector routines of the instruction set in use, if it has any.
void takeGatherRoutines(GatherRoutines& routines);

}  // namespace ox::vector
