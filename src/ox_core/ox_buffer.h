// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// A growable block of memory.

#pragma once

#include "ox_core/ox_api.h"
#include "ox_core/ox_device_context.h"

namespace ox {

/// Storage is 64-byte aligned, with at least 64 readable and writable bytes behind the last byte
/// asked for.
class OX_API Buffer {
  public:
    Buffer() = default;
    /// An empty buffer whose storage will be labelled with `device`.
    explicit Buffer(DeviceContext device);
    Buffer(Buffer const&) = delete;
    Buffer& operator=(Buffer const&) = delete;
    ~Buffer();

    /// Storage of at least `bytes` bytes; kept if it is large enough, with undefined contents
    /// otherwise.
    /// @param keep_contents true keeps the bytes that were last asked for
    /// @throws Exception `StatusCapacityExceeded`; the storage is then as before
    void resize(unsigned long bytes, bool keep_contents);

    /// Clears the bytes last asked for.
    void setZero();

    /// Gives up the storage; `data` becomes null.
    void clear();

    DeviceContext context;          ///< of the storage
    unsigned char* data = nullptr;  ///< null if empty

  private:
    unsigned long _bytes = 0;     ///< last asked for
    unsigned long _capacity = 0;  ///< usable without a new allocation
};

}  // namespace ox
