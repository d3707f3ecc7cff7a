// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Affine warps of whole planes, one destination pixel at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace model {

enum WarpFlag : std::uint32_t {
    WarpNonByte = 1,
    WarpBilinear = 2,
    WarpTransparent = 4,
};

using Matrix = std::array<float, 6>;

struct Warp {
    Matrix matrix{1, 0, 0, 0, 1, 0};  // source to destination
    std::uint32_t flags = 0;
    std::optional<std::array<std::uint8_t, 4>> border;
};

// A plane without gaps.
struct Pixels {
    int width = 0;
    int height = 0;
    int channels = 1;  // bytes of a pixel
    std::vector<std::uint8_t> bytes;

    std::size_t rowBytes() const { return static_cast<std::size_t>(width * channels); }
    std::size_t indexOf(int x, int y) const {
        return static_cast<std::size_t>(y) * rowBytes() + static_cast<std::size_t>(x * channels);
    }
};

Pixels makePixels(int width, int height, int channels, std::uint8_t fill);

// Destination to source. Zeros in the linear part stand for a matrix that has no inverse.
Matrix inverseOf(Matrix const& matrix);

// Whether no such warp can be made. The source's rows and stride count, not its width.
bool warpIsRefused(Warp const& warp, std::uint64_t channels, std::uint64_t rows,
                   std::uint64_t stride);

// Whether all numbers that decide which pixels are covered are finite. What a warp of others
// gives isn't fixed.
bool warpIsFinite(Warp const& warp, Pixels const& src);

// Only for warps that aren't refused.
void warpPlane(Warp const& warp, Pixels const& src, Pixels& dst);

}  // namespace model
