// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_tensor_target.h"

#include <algorithm>
#include <cstring>

#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_tensor_target"};

[[noreturn]] void refuse(Status status, char const* text) {
    here.fail({status, "run"}, "Failure in FrameToTensor::run(...) : %s.", text);
}

/// The bytes of a picture.
struct Extent {
    std::int64_t element;
    std::int64_t row;     ///< of each plane
    std::int64_t height;  ///< in rows
    bool has_planes;
};

Extent extentOf(TensorRecipe const& recipe) {
    auto const element = static_cast<std::int64_t>(rows::bytesOf(numberOf(recipe)));
    bool const has_planes = hasPlanes(recipe);
    return {element, element * recipe.width * (has_planes ? 1 : channelsOf(recipe)), recipe.height,
            has_planes};
}

/// Bytes from a plane's first one to its last one, and one more.
std::int64_t planeBytes(Extent const& extent, std::int64_t row_stride) {
    return (extent.height - 1) * row_stride + extent.row;
}

std::int64_t pictureBytes(Extent const& extent, TensorPlace const& place) {
    return planeBytes(extent, place.row_stride) +
           (extent.has_planes ? 2 * place.channel_stride : 0);
}

/// Whether the planes follow one another, or else their rows in turn.
bool arePlanesApart(Extent const& extent, TensorPlace const& place) {
    return place.channel_stride >= planeBytes(extent, place.row_stride) ||
           (place.channel_stride >= extent.row &&
            place.row_stride >= 2 * place.channel_stride + extent.row);
}

bool areStridesValid(Extent const& extent, TensorPlace const& place) {
    auto const valid = [&](std::int64_t stride, std::int64_t count) {
        return stride >= extent.row && stride % extent.element == 0 &&
               stride <= static_cast<std::int64_t>(maxBytes) / 4 / count;
    };
    return valid(place.row_stride, extent.height) &&
           (!extent.has_planes ||
            (valid(place.channel_stride, 1) && arePlanesApart(extent, place)));
}

bool hasShape(TensorLayout const& layout, TensorLayout const& wanted) {
    return layout.dataType() == wanted.dataType() && layout.format() == wanted.format() &&
           layout.size().count == wanted.size().count &&
           std::equal(layout.size().values + 1, layout.size().values + 4, wanted.size().values + 1);
}

/// What each stride of a tensor is for.
struct Dimensions {
    int row;
    int channel;
};

constexpr Dimensions dimensionsOf(TensorFormat format) {
    return format == TENSOR_FORMAT_NCHW ? Dimensions{2, 1} : Dimensions{1, 3};
}

/// Whether the elements of a pixel and of a row follow one another, as in `wanted`.
bool areRowsTight(TensorLayout const& layout, TensorLayout const& wanted) {
    int const first = dimensionsOf(layout.format()).row + 1;
    return std::equal(layout.strides().values + first, layout.strides().values + 4,
                      wanted.strides().values + first);
}

/// Fills memory with a pixel. What is copied stays short, so that it is read from the first cache.
void repeatPixel(std::uint8_t const* pixel, std::size_t pixel_bytes, std::uint8_t* dst,
                 std::size_t bytes) {
    constexpr std::size_t most_bytes = 4096;
    if (std::count(pixel, pixel + pixel_bytes, *pixel) ==
        static_cast<std::ptrdiff_t>(pixel_bytes)) {
        std::memset(dst, *pixel, bytes);
        return;
    }
    std::memcpy(dst, pixel, std::min(pixel_bytes, bytes));
    std::size_t const most = most_bytes / pixel_bytes * pixel_bytes;
    for (std::size_t done = pixel_bytes; done < bytes;) {
        std::size_t const count = std::min({done, bytes - done, most});
        std::memcpy(dst + done, dst, count);
        done += count;
    }
}

}  // namespace

TensorPlace placeIn(TensorRecipe const& recipe, Tensor const& tensor, std::int32_t index) {
    if (!tensor.initialized()) {
        refuse(StatusInputNotInitialized, "'dst' has no storage");
    }
    if (tensor.deviceContext() != DeviceContext::cpuContext()) {
        refuse(StatusInvalidParameter, "'dst' isn't on the CPU");
    }
    TensorLayout const& layout = tensor.layout();
    TensorLayout const wanted = layoutOf(recipe, 1);
    if (!hasShape(layout, wanted)) {
        refuse(StatusInvalidParameter, "'dst' has another type, format or size than the recipe");
    }
    Extent const extent = extentOf(recipe);
    std::int32_t const* const strides = layout.strides().values;
    Dimensions const dimensions = dimensionsOf(layout.format());
    TensorPlace place{tensor.data(), strides[dimensions.row], strides[dimensions.channel]};
    std::int32_t const batch = layout.size().values[0];
    if (!areRowsTight(layout, wanted) || !areStridesValid(extent, place) ||
        strides[0] % extent.element != 0 ||
        (batch > 1 && strides[0] < pictureBytes(extent, place))) {
        refuse(StatusInvalidParameter, "'dst' has strides that don't fit the recipe");
    }
    if (index < 0 || index >= batch) {
        refuse(StatusOutOfRange, "parameter 'index' is out of range");
    }
    std::int64_t const start = std::int64_t{index} * strides[0];
    // The storage has as many bytes as the largest of a dimension and its stride.
    if (start + pictureBytes(extent, place) > static_cast<std::int64_t>(layout.totalBytes())) {
        refuse(StatusInvalidParameter, "'dst' has strides that don't fit the recipe");
    }
    place.first += start;
    return place;
}

TensorPlace placeAt(TensorRecipe const& recipe, void* first, std::int64_t row_stride,
                    std::int64_t channel_stride) {
    if (first == nullptr) {
        refuse(StatusNullPointer, "'dst' is null");
    }
    TensorPlace const place{static_cast<std::uint8_t*>(first), row_stride, channel_stride};
    if (!areStridesValid(extentOf(recipe), place)) {
        refuse(StatusInvalidParameter, "strides don't fit the recipe");
    }
    return place;
}

TensorRows::TensorRows(TensorRecipe const& recipe, TensorPlace const& place,
                       std::array<rows::ChannelNumbers, 3> const& channels)
    : _width(recipe.width), _planes(hasPlanes(recipe) ? 3 : 1), _row_stride(place.row_stride) {
    std::size_t const bytes = rows::bytesOf(numberOf(recipe));
    auto const count = static_cast<std::size_t>(channelsOf(recipe));
    _pixel_bytes = bytes * count / _planes;
    for (std::size_t c = 0; c < count; ++c) {
        std::size_t const plane = _planes == 1 ? 0 : c;
        std::size_t const offset = _planes == 1 ? c * bytes : 0;
        std::memcpy(_bars[plane].data() + offset,
                    channels[c].elements.data() + bytes * recipe.bars[c], bytes);
    }
    for (std::size_t p = 0; p < _row.size(); ++p) {
        auto const plane = static_cast<std::int64_t>(std::min(p, _planes - 1));
        _row[p] = place.first + (plane == 0 ? 0 : plane * place.channel_stride);
    }
}

void TensorRows::writeBars(std::int32_t from, std::int32_t to) const {
    if (from >= to) {
        return;
    }
    auto const count = static_cast<std::size_t>(to - from);
    for (std::size_t p = 0; p < _planes; ++p) {
        std::uint8_t* const first = _row[p] + static_cast<std::size_t>(from) * _pixel_bytes;
        repeatPixel(_bars[p].data(), _pixel_bytes, first, count * _pixel_bytes);
    }
}

void TensorRows::writeBarRows(std::int32_t count) {
    std::size_t const row_bytes = static_cast<std::size_t>(_width) * _pixel_bytes;
    if (_row_stride != static_cast<std::int64_t>(row_bytes)) {
        for (; count > 0; --count, next()) {
            writeBars(0, _width);
        }
        return;
    }
    for (std::size_t p = 0; p < _row.size(); ++p) {
        std::size_t const bytes = static_cast<std::size_t>(count) * row_bytes;
        if (p < _planes) {
            repeatPixel(_bars[p].data(), _pixel_bytes, _row[p], bytes);
        }
        _row[p] += bytes;
    }
}

std::array<std::uint8_t*, 3> TensorRows::at(std::int32_t pixel) const {
    std::size_t const offset = static_cast<std::size_t>(pixel) * _pixel_bytes;
    return {_row[0] + offset, _row[1] + offset, _row[2] + offset};
}

void TensorRows::next() {
    for (std::uint8_t*& row : _row) {
        row += _row_stride;
    }
}

}  // namespace ox::impl
