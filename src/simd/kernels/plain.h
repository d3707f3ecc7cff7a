/// @file
/// The results of the vector routines in plain loops: for processors that no vector code was
/// written for, builds without it, and rows shorter than a register.

#pragma once

#include "simd/kernels/neon.h"

namespace Simd::Plain {

/// NaN gives 0, whatever the range.
FloatsToBytes ScaleFloatsToBytes;
FloatsToHalfBits FloatsToHalves;
HalfBitsToFloats HalvesToFloats;

/// These, and for all other kernels the scalar routines.
Neon::Routines routines();

}  // namespace Simd::Plain
