// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_tensor.h"

#include <algorithm>
#include <utility>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_storage.h"

namespace ox {

namespace {

constexpr std::uint64_t maxDimensions = 4;

bool valid(TensorSize const& size) {
    return size.count <= maxDimensions &&
           std::all_of(size.values, size.values + size.count, [](int value) { return value >= 0; });
}

}  // namespace

TensorLayout::TensorLayout(TensorDataType data_type, TensorFormat format, TensorSize const& size,
                           TensorSize const& strides, TensorChannelOrder channel_order)
    : _data_type(data_type),
      _format(format),
      _size(size),
      _strides(strides),
      _channel_order(channel_order) {
    if (!valid(size) || !valid(strides) || size.count != strides.count) {
        impl::Place{"src/ox_core/ox_tensor"}.fail(
            StatusInvalidParameter, "Failure in TensorLayout::TensorLayout(...) : invalid size.");
    }
    for (std::uint64_t i = 0; i < size.count; ++i) {
        auto const extent = static_cast<std::uint64_t>(size.values[i]);
        _total_bytes =
            std::max(_total_bytes, extent * static_cast<std::uint64_t>(strides.values[i]));
    }
}

Tensor::Tensor(Tensor const& other) = default;
Tensor& Tensor::operator=(Tensor const& other) = default;

Tensor::Tensor(Tensor&& other) noexcept
    : _layout(std::exchange(other._layout, TensorLayout())), _buffer(std::move(other._buffer)) {}

Tensor& Tensor::operator=(Tensor&& other) noexcept {
    Tensor taken(std::move(other));
    std::swap(_layout, taken._layout);
    _buffer.swap(taken._buffer);
    return *this;
}

Tensor::~Tensor() = default;

DeviceContext Tensor::deviceContext() const {
    return initialized() ? _buffer->context : DeviceContext();
}

void Tensor::reuse(TensorLayout const& layout, DeviceContext const& context) {
    TensorLayout const wanted = layout;  // `layout` may be this tensor's own
    std::shared_ptr<Buffer> storage = std::move(_buffer);
    *this = Tensor();
    _buffer = impl::takeStorage(storage, context, wanted.totalBytes());
    _layout = wanted;
}

}  // namespace ox
