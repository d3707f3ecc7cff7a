/// @file
/// Plain loops with the results of the vector routines: for processors and builds without vector
/// code, and for rows shorter than a register.

#pragma once

#include "simd/kernels/base.h"
#include "simd/kernels/neon.h"

namespace Simd::Plain {

// Kernels that aren't declared here: their scalar routine has the vector routine's results.
using namespace Base;

/// NaN gives 0, whatever the range.
FloatsToBytes::Function ScaleFloatsToBytes;
FloatsToHalfBits::Function FloatsToHalves;
HalfBitsToFloats::Function HalvesToFloats;

Neon::Routines routines();

}  // namespace Simd::Plain
