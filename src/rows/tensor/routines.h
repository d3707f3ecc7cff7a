// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The routines that fill rows of a tensor. All take rows of any width, 0 included. Rows of a
/// tensor needn't be aligned.

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "rows/colour/layouts.h"
#include "rows/tensor/formulas.h"

namespace ox::rows {

/// What the elements of a tensor are.
enum class Number { Byte, SignedByte, Half, Float };
constexpr std::size_t numbers = 4;

constexpr std::size_t indexOf(Number number) {
    return static_cast<std::size_t>(number);
}

constexpr std::size_t bytesOf(Number number) {
    constexpr std::array<std::size_t, numbers> bytes{1, 1, 2, 4};
    return bytes[indexOf(number)];
}

/// Where the channels of a pixel go.
enum class Channels {
    One,      ///< gray
    Planes,   ///< three channels, a plane each
    Packed,   ///< three channels side by side, in the source's order
    Swapped,  ///< the same, the third channel first
};
constexpr std::size_t channelOrders = 4;

constexpr std::size_t indexOf(Channels channels) {
    return static_cast<std::size_t>(channels);
}

/// What becomes of the bytes of a channel.
struct ChannelNumbers {
    float mean = 0.0F;
    float scale = 1.0F;
    float quant_scale = 1.0F;  ///< of bytes, as `zero_point`
    float zero_point = 0.0F;
    bool shifts = false;  ///< whether elements are bytes, each `shift` above its own, modulo 256
    std::uint8_t shift = 0;
    /// The element of each byte. Elements lie side by side in it.
    alignas(64) std::array<std::uint8_t, 256 * sizeof(float)> elements{};

    /// Computes the elements from what stands above them.
    void fill(Number number);
};

/// The channels of a source pixel, in its order; gray has one.
using PixelNumbers = std::array<ChannelNumbers const*, 3>;

/// Writes the numbers of `pixels` pixels.
/// @param row a byte for each channel
/// @param dst a row for each channel with `Channels::Planes`, else the first alone
using NormaliseRow = void(std::uint8_t const* row, std::size_t pixels, PixelNumbers const& channels,
                          std::uint8_t* const* dst);

/// To packed B,G,R.
using MatrixToBgr = void(YuvSamples<std::uint8_t const> src, std::size_t width,
                         YuvMatrix const& matrix, std::uint8_t* bgr);

/// No entry is ever null. A plain routine stays where there is no vector routine.
struct TensorRoutines {
    std::array<std::array<NormaliseRow*, channelOrders>, numbers> normalise;  ///< by `Number`
    std::array<MatrixToBgr*, yuvLayouts> matrix_to_bgr;
};

/// The loops that define the bytes; vector routines hand short rows and last pixels to them.
extern TensorRoutines const plainTensor;

// Each enters the vector routines of one source, for the instruction set in use, if it has any.
void takeMatrixRoutines(TensorRoutines& routines);
void takeNumberRoutines(TensorRoutines& routines);

}  // namespace ox::rows
