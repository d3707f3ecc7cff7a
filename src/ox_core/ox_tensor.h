// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Tensors: shared handles on blocks of numbers.

#pragma once

#include <cstdint>
#include <memory>

#include "ox_core/ox_api.h"
#include "ox_core/ox_buffer.h"
#include "ox_core/ox_device_context.h"

namespace ox {

/// The element types that the library works with; other values are passed on.
enum TensorDataType : std::uint32_t {
    TENSOR_DATA_TYPE_NONE = 0,
    TENSOR_UINT_8 = 1,
    TENSOR_INT_8 = 2,
    TENSOR_FLOAT_16 = 3,
    TENSOR_FLOAT_32 = 5,
};

/// Meaning of the dimensions. Tensors pass it on; `FrameToTensor` goes by it.
enum TensorFormat : std::uint32_t {
    TENSOR_FORMAT_NONE = 0,
    TENSOR_FORMAT_NCHW = 1,  ///< pictures, channels, rows, columns
    TENSOR_FORMAT_NHWC = 2,  ///< pictures, rows, columns, channels
};

/// Order of colour channels; only ever given as 0.
enum TensorChannelOrder : std::uint32_t {
    TENSOR_CHANNEL_ORDER_NONE = 0,
};

/// Up to four dimensions, or their strides in bytes.
struct TensorSize {
    std::uint64_t count = 0;  ///< how many of `values` are in use
    std::int32_t values[4]{};
};

/// Geometry of a tensor; copied by value.
class OX_API TensorLayout {
  public:
    /// No dimensions, no bytes.
    TensorLayout() = default;

    /// @param strides in bytes, one per dimension
    /// @throws Exception `StatusInvalidParameter` for more than four dimensions, strides of another
    ///         count, or negative values
    TensorLayout(TensorDataType data_type, TensorFormat format, TensorSize const& size,
                 TensorSize const& strides, TensorChannelOrder channel_order);

    TensorDataType dataType() const { return _data_type; }
    TensorFormat format() const { return _format; }
    TensorSize const& size() const { return _size; }
    TensorSize const& strides() const { return _strides; }
    TensorChannelOrder channelOrder() const { return _channel_order; }
    /// The largest product of a dimension and its stride.
    std::uint64_t totalBytes() const { return _total_bytes; }

  private:
    TensorDataType _data_type = TENSOR_DATA_TYPE_NONE;
    TensorFormat _format = TENSOR_FORMAT_NONE;
    TensorSize _size;
    TensorSize _strides;
    TensorChannelOrder _channel_order = TENSOR_CHANNEL_ORDER_NONE;
    std::uint64_t _total_bytes = 0;
};

/// A handle: a copy is a second handle on the same storage.
class OX_API Tensor {
  public:
    /// A tensor without storage.
    Tensor() = default;
    Tensor(Tensor const& other);
    /// Takes the handle over: `other` is then as newly made, and can be armed again by `reuse`.
    Tensor(Tensor&& other) noexcept;
    Tensor& operator=(Tensor const& other);
    /// The same; a tensor moved to itself keeps its storage.
    Tensor& operator=(Tensor&& other) noexcept;
    ~Tensor();

    bool initialized() const { return _buffer && _buffer->data != nullptr; }
    TensorLayout const& layout() const { return _layout; }
    /// Null if not initialized.
    unsigned char* data() const { return _buffer ? _buffer->data : nullptr; }
    /// The storage's context; the CPU's without storage.
    DeviceContext deviceContext() const;

    /// Makes this a tensor of that layout and context, with undefined contents. Storage is kept if
    /// it fits and no other handle shows it.
    /// @throws Exception `StatusCapacityExceeded`; the tensor then has no storage
    void reuse(TensorLayout const& layout, DeviceContext const& context);

  private:
    TensorLayout _layout;
    std::shared_ptr<Buffer> _buffer;
};

}  // namespace ox
