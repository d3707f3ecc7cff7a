// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_impl_storage.h"

#include <new>
#include <utility>

#include "ox_core/ox_impl_place.h"

namespace ox::impl {

std::shared_ptr<Buffer> takeStorage(std::shared_ptr<Buffer>& storage, DeviceContext const& context,
                                    std::uint64_t bytes) {
    std::shared_ptr<Buffer> buffer = std::move(storage);
    storage.reset();
    if (buffer.use_count() != 1 || buffer->context != context) {
        buffer.reset();
        try {
            buffer = std::make_shared<Buffer>(context);
        } catch (std::bad_alloc const&) {
            Place{"src/ox_core/ox_frame"}.fail({StatusCapacityExceeded, "reuse"},
                                               "Failure in reuse(...) : memory is exhausted.");
        }
    }
    buffer->resize(bytes, false);
    return buffer;
}

}  // namespace ox::impl
