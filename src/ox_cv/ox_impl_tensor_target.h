// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Where a picture lies in a tensor.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "ox_cv/ox_impl_tensor_recipe.h"

namespace ox::impl {

/// Memory of a picture.
struct TensorPlace {
    std::uint8_t* first = nullptr;
    std::int64_t row_stride = 0;      ///< bytes, as the other
    std::int64_t channel_stride = 0;  ///< counts only between planes
};

/// A picture of a tensor.
/// @throws Exception as `FrameToTensor::run`
TensorPlace placeIn(TensorRecipe const& recipe, Tensor const& tensor, std::int32_t index);

/// A picture in memory of the caller's.
/// @throws Exception as `FrameToTensor::run`
TensorPlace placeAt(TensorRecipe const& recipe, void* first, std::int64_t row_stride,
                    std::int64_t channel_stride);

/// The rows of a picture, from the first one on.
class TensorRows {
  public:
    /// @param channels the numbers of each channel, in the tensor's order
    TensorRows(TensorRecipe const& recipe, TensorPlace const& place,
               std::array<rows::ChannelNumbers, 3> const& channels);

    /// Writes bars from pixel `from` of the row up to pixel `to`.
    void writeBars(std::int32_t from, std::int32_t to) const;
    /// Writes whole rows of bars and moves on behind them.
    void writeBarRows(std::int32_t count);
    /// The row's element of each plane at a pixel; planes that don't exist repeat the last one.
    std::array<std::uint8_t*, 3> at(std::int32_t pixel) const;
    void next();

  private:
    std::int32_t _width;
    std::size_t _planes;
    std::size_t _pixel_bytes;  ///< in each plane
    std::int64_t _row_stride;
    std::array<std::uint8_t*, 3> _row{};
    /// A pixel of the bars for each plane.
    std::array<std::array<std::uint8_t, 3 * sizeof(float)>, 3> _bars{};
};

}  // namespace ox::impl
