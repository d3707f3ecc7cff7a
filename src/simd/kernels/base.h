/// @file
/// The scalar routines, which define the result of each kernel.

#pragma once

#include "simd/kernels/list.h"

namespace Simd::Base {

// `FloatsToHalves` truncates. `MultiplyFloats` gives what `AccumulateScaledFloats` makes of a copy
// of `data` and zeros: products, with +0 for -0.
#define OX_DECLARE(name, shape, ...) shape::Function name;
OX_KERNELS(OX_DECLARE)
#undef OX_DECLARE

}  // namespace Simd::Base
