// Rows among gray, packed, planar and float channels.

#include <algorithm>
#include <cstring>

#include "rows/colour/formulas.h"
#include "rows/colour/plain.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;

/// Copies of addresses, which stores of bytes can't change.
template <std::size_t Channels, class Plane>
std::array<Plane*, Channels> copyOf(Plane* const* planes) {
    std::array<Plane*, Channels> copy{};
    std::copy_n(planes, Channels, copy.begin());
    return copy;
}

template <std::size_t Channels>
void splitRow(Byte const* row, std::size_t pixels, Byte* const* planes) {
    auto const to = copyOf<Channels>(planes);
    if (hasNull(planes, Channels)) {
        for (std::size_t i = 0; i < pixels * Channels; ++i) {
            if (to[i % Channels] != nullptr) {
                to[i % Channels][i / Channels] = row[i];
            }
        }
        return;
    }
    for (std::size_t x = 0; x < pixels; ++x) {
        for (std::size_t c = 0; c < Channels; ++c) {
            to[c][x] = row[x * Channels + c];
        }
    }
}

template <std::size_t Channels>
void mergeRow(Byte const* const* planes, std::size_t pixels, Byte* row) {
    auto const from = copyOf<Channels>(planes);
    for (std::size_t x = 0; x < pixels; ++x) {
        for (std::size_t c = 0; c < Channels; ++c) {
            row[x * Channels + c] = from[c][x];
        }
    }
}

}  // namespace

void plainSplitTwo(Byte const* row, std::size_t pixels, Byte* const* planes) {
    splitRow<2>(row, pixels, planes);
}

void plainSplitThree(Byte const* row, std::size_t pixels, Byte* const* planes) {
    splitRow<3>(row, pixels, planes);
}

void plainMergeTwo(Byte const* const* planes, std::size_t pixels, Byte* row) {
    mergeRow<2>(planes, pixels, row);
}

void plainMergeThree(Byte const* const* planes, std::size_t pixels, Byte* row) {
    mergeRow<3>(planes, pixels, row);
}

void plainGrayToBgr(Byte const* gray, std::size_t pixels, Byte* bgr) {
    for (std::size_t x = 0; x < pixels; ++x) {
        std::memset(bgr + 3 * x, gray[x], 3);
    }
}

void plainSwapRedBlue(Byte const* row, std::size_t pixels, Byte* dst) {
    for (std::size_t i = 0; i < 3 * pixels; i += 3) {
        Byte const first = row[i];
        dst[i] = row[i + 2];
        dst[i + 1] = row[i + 1];
        dst[i + 2] = first;
    }
}

void plainBytesToFloats(Byte const* src, std::size_t count, Byte* floats) {
    for (std::size_t i = 0; i < count; ++i) {
        float const value = src[i];
        std::memcpy(floats + i * sizeof value, &value, sizeof value);
    }
}

void plainFloatsToLowBytes(Byte const* floats, std::size_t count, Byte* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        float value = 0;
        std::memcpy(&value, floats + i * sizeof value, sizeof value);
        dst[i] = lowByteOf(value);
    }
}

void takePlainChannelRoutines(ColourRoutines& routines) {
    routines.gray_to_bgr = plainGrayToBgr;
    routines.swap_red_blue = plainSwapRedBlue;
    routines.bytes_to_floats = plainBytesToFloats;
    routines.floats_to_low_bytes = plainFloatsToLowBytes;
    routines.split_two = plainSplitTwo;
    routines.split_three = plainSplitThree;
    routines.merge_two = plainMergeTwo;
    routines.merge_three = plainMergeThree;
}

}  // namespace ox::rows
