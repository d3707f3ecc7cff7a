// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// All of `libox_core`.

#pragma once

#include "ox_core/ox_buffer.h"
#include "ox_core/ox_device_context.h"
#include "ox_core/ox_exception.h"
#include "ox_core/ox_float_planes.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_frame_format.h"
#include "ox_core/ox_frame_layout.h"
#include "ox_core/ox_geometry.h"
#include "ox_core/ox_status.h"
#include "ox_core/ox_tensor.h"
