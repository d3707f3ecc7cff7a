// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The kernel layer: whole planes of pixels, without frames and without exceptions.

#pragma once

#include "simd/kernels/kernels.h"
#include "simd/parallel.h"
#include "simd/processor_figures.h"
#include "simd/resizers/resizer.h"
#include "simd/warps/warp_affine.h"
#include "vector/aligned_array.h"
