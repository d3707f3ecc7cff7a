/// @file
/// The results of the vector routines in plain loops: for processors that no vector code was
/// written for, builds without it, and rows shorter than a register.

#pragma once

#include "simd/kernels/base.h"
#include "simd/kernels/neon.h"

namespace Simd::Plain {

// What isn't declared here is found there: the scalar routine has the vector routine's results.
using namespace Base;

/// NaN gives 0, whatever the range.
FloatsToBytes::Function ScaleFloatsToBytes;
FloatsToHalfBits::Function FloatsToHalves;
HalfBitsToFloats::Function HalvesToFloats;

Neon::Routines routines();

}  // namespace Simd::Plain
