// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The loops that define the bytes: each element is looked up.

#include <cstring>

#include "rows/tensor/routines.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;

template <std::size_t Bytes>
void storeElement(ChannelNumbers const& channel, Byte byte, Byte* dst) {
    std::memcpy(dst, channel.elements.data() + byte * Bytes, Bytes);
}

template <std::size_t Bytes>
void normaliseOne(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                  Byte* const* dst) {
    ChannelNumbers const& channel = *channels[0];
    Byte* const to = dst[0];
    for (std::size_t x = 0; x < pixels; ++x) {
        storeElement<Bytes>(channel, row[x], to + x * Bytes);
    }
}

/// @tparam Pixel bytes from a pixel's element to the next pixel's
template <std::size_t Bytes, std::size_t Pixel>
void normaliseThree(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                    std::array<Byte*, 3> dst) {
    for (std::size_t x = 0; x < pixels; ++x) {
        for (std::size_t c = 0; c < 3; ++c) {
            storeElement<Bytes>(*channels[c], row[3 * x + c], dst[c] + x * Pixel);
        }
    }
}

template <std::size_t Bytes>
void normalisePlanes(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                     Byte* const* dst) {
    normaliseThree<Bytes, Bytes>(row, pixels, channels, {dst[0], dst[1], dst[2]});
}

template <std::size_t Bytes>
void normalisePacked(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                     Byte* const* dst) {
    normaliseThree<Bytes, 3 * Bytes>(row, pixels, channels,
                                     {dst[0], dst[0] + Bytes, dst[0] + 2 * Bytes});
}

template <std::size_t Bytes>
void normaliseSwapped(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                      Byte* const* dst) {
    normaliseThree<Bytes, 3 * Bytes>(row, pixels, channels,
                                     {dst[0] + 2 * Bytes, dst[0] + Bytes, dst[0]});
}

/// In the order of `Channels`.
template <std::size_t Bytes>
constexpr std::array<NormaliseRow*, channelOrders> normaliseRows{
    normaliseOne<Bytes>, normalisePlanes<Bytes>, normalisePacked<Bytes>, normaliseSwapped<Bytes>};

template <YuvSteps steps>
void convertByMatrix(YuvSamples<Byte const> src, std::size_t width, YuvMatrix const& matrix,
                     Byte* bgr) {
    YuvMatrix const m = matrix;  // as far as the compiler knows, stores of bytes could change it
    for (std::size_t x = 0; x < width; ++x) {
        std::size_t const chroma = x / steps.pixels * steps.chroma;
        Byte const y = src.y[x * steps.luma];
        Byte const u = src.u[chroma];
        Byte const v = src.v[chroma];
        bgr[3 * x] = channelOf(m, m.blue, y, u, v);
        bgr[3 * x + 1] = channelOf(m, m.green, y, u, v);
        bgr[3 * x + 2] = channelOf(m, m.red, y, u, v);
    }
}

}  // namespace

void ChannelNumbers::fill(Number number) {
    for (std::size_t i = 0; i < 256; ++i) {
        float const value = normalised(static_cast<Byte>(i), mean, scale);
        Byte* const at = elements.data() + i * bytesOf(number);
        if (number == Number::Float) {
            std::memcpy(at, &value, sizeof value);
        } else if (number == Number::Half) {
            std::uint16_t const half = halfBitsOf(value);
            std::memcpy(at, &half, sizeof half);
        } else {
            bool const is_signed = number == Number::SignedByte;
            *at = static_cast<Byte>(quantised(value, quant_scale, zero_point,
                                              is_signed ? -128.0F : 0.0F,
                                              is_signed ? 127.0F : 255.0F));
        }
    }
    shift = elements[0];
    shifts = bytesOf(number) == 1;
    for (std::size_t i = 0; i < 256; ++i) {
        shifts = shifts && elements[i] == static_cast<Byte>(i + shift);
    }
}

constinit TensorRoutines const plainTensor{
    .normalise = {normaliseRows<1>, normaliseRows<1>, normaliseRows<2>, normaliseRows<4>},
    .matrix_to_bgr = byLayout([](auto layout) { return &convertByMatrix<stepsOf(layout)>; }),
};

}  // namespace ox::rows
