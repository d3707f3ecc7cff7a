/// @file
/// The kernel layer: whole planes of pixels, without frames and without exceptions.

#pragma once

#include "simd/simd_aligned_array.h"
#include "simd/simd_kernels.h"
#include "simd/simd_parallel.h"
#include "simd/simd_processor_figures.h"
#include "simd/simd_resizer.h"
#include "simd/simd_warp_affine.h"
