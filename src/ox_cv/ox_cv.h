// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// All of `libox_cv` but `ox_classic_kernels.h` and the C interface (`ox_cv_c.h`,
/// `ox_cv_c_tensor.h`), and all of `libox_core`, whose frames, formats and exceptions it works
/// with.

#pragma once

#include "ox_core/ox_core.h"
#include "ox_cv/ox_cv_backend.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_packed_422_resizer.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_row_index.h"
#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_row_reader.h"
#include "ox_cv/ox_row_window.h"
#include "ox_cv/ox_row_writer.h"
#include "ox_cv/ox_scale_kernel.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"
