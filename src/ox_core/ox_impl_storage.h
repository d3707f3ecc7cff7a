// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Storage behind the shared handles.

#pragma once

#include <memory>

#include "ox_core/ox_buffer.h"

namespace ox::impl {

/// A buffer of `bytes` bytes labelled with `context`. `storage` is reused for its capacity if no
/// other handle shares it and the contexts are equal; else the buffer is new. `storage` is null
/// afterwards.
/// @throws Exception `StatusCapacityExceeded`
std::shared_ptr<Buffer> takeStorage(std::shared_ptr<Buffer>& storage, DeviceContext const& context,
                                    std::uint64_t bytes);

}  // namespace ox::impl
