// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_buffer.h"

#include <cstring>
#include <new>
#include <utility>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"

namespace ox {

namespace {

constexpr std::align_val_t storageAlignment{impl::defaultAlignment};
/// Vector code may load and store whole registers at a row's end.
constexpr unsigned long slackBytes = 64;

unsigned char* allocate(unsigned long bytes) {
    void* const storage = bytes <= impl::maxBytes
                              ? ::operator new(bytes + slackBytes, storageAlignment, std::nothrow)
                              : nullptr;
    if (storage == nullptr) {
        impl::Place{"src/ox_core/ox_buffer"}.fail(
            {StatusCapacityExceeded, "resize"},
            "Failure in Buffer::resize(...) : %lu bytes are not available.", bytes);
    }
    return static_cast<unsigned char*>(storage);
}

}  // namespace

Buffer::Buffer(DeviceContext device) : context(std::move(device)) {}

Buffer::~Buffer() {
    clear();
}

void Buffer::resize(unsigned long bytes, bool keep_contents) {
    if (data == nullptr || bytes > _capacity) {
        unsigned char* const storage = allocate(bytes);
        if (keep_contents && data != nullptr) {
            std::memcpy(storage, data, _bytes);
        }
        clear();
        data = storage;
        _capacity = bytes;
    }
    _bytes = bytes;
}

void Buffer::setZero() {
    if (data != nullptr) {
        std::memset(data, 0, _bytes);
    }
}

void Buffer::clear() {
    ::operator delete(data, storageAlignment);
    data = nullptr;
    _bytes = 0;
    _capacity = 0;
}

}  // namespace ox
