// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The loops that define the bytes. Chroma isn't interpolated.

#include <algorithm>
#include <cstring>

#include "rows/colour/formulas.h"
#include "rows/colour/routines.h"
#include "vector/copy.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;

/// One sample per group of `Columns` pixels in `Rows` rows: the mean of the pixels' terms. A last
/// group that is cut by the row's end has a single column.
template <BgrFormula formula, std::size_t Columns, int Rows>
void sampleRow(BgrRows src, std::size_t width, Byte* dst, std::size_t step) {
    static_assert(Columns <= 2 && Rows <= 2);
    constexpr int columnShift = fractionBits + (Rows - 1);
    constexpr int groupShift = columnShift + static_cast<int>(Columns - 1);
    auto const column = [=](std::size_t pixel) {
        int const term = termOf(formula, src.upper + 3 * pixel);
        return Rows == 2 ? term + termOf(formula, src.lower + 3 * pixel) : term;
    };
    std::size_t const groups = width / Columns;
    for (std::size_t i = 0; i < groups; ++i) {
        int sum = column(i * Columns);
        if (Columns == 2) {
            sum += column(i * Columns + 1);
        }
        dst[i * step] = static_cast<Byte>(sum >> groupShift);
    }
    if (Columns == 2 && width % 2 != 0) {
        dst[groups * step] = static_cast<Byte>(column(width - 1) >> columnShift);
    }
}

template <BgrFormula formula, YuvSteps steps>
void sampleChroma(BgrRows src, std::size_t width, Byte* dst) {
    if (dst == nullptr) {
        return;
    }
    if (steps.pixels == 2 && src.lower != nullptr) {
        sampleRow<formula, steps.pixels, 2>(src, width, dst, steps.chroma);
    } else {
        sampleRow<formula, steps.pixels, 1>(src, width, dst, steps.chroma);
    }
}

template <YuvSteps steps>
void convertBgr(BgrRows src, std::size_t width, YuvSamples<Byte> dst) {
    if (dst.y != nullptr) {
        sampleRow<lumaOfBgr, 1, 1>(src, width, dst.y, steps.luma);
    }
    sampleChroma<uOfBgr, steps>(src, width, dst.u);
    sampleChroma<vOfBgr, steps>(src, width, dst.v);
}

void bgrToGray(Byte const* bgr, std::size_t width, Byte* gray) {
    sampleRow<grayOfBgr, 1, 1>({bgr, nullptr}, width, gray, 1);
}

template <YuvSteps steps>
void convertYuv(YuvSamples<Byte const> src, std::size_t width, Byte* bgr) {
    for (std::size_t x = 0; x < width; ++x) {
        std::size_t const chroma = x / steps.pixels * steps.chroma;
        Byte const y = src.y[x * steps.luma];
        Byte const u = src.u[chroma];
        Byte const v = src.v[chroma];
        bgr[3 * x] = channelOf(blueFactors, y, u, v);
        bgr[3 * x + 1] = channelOf(greenFactors, y, u, v);
        bgr[3 * x + 2] = channelOf(redFactors, y, u, v);
    }
}

template <std::size_t step>
void takeLuma(Byte const* y, std::size_t pixels, Byte* luma) {
    if constexpr (step == 1) {
        return vector::copyBytes(y, pixels, luma);
    }
    for (std::size_t x = 0; x < pixels; ++x) {
        luma[x] = y[x * step];
    }
}

/// Local copies of addresses. Stores of bytes can't change them, as far as the compiler knows.
template <std::size_t Channels, class Plane>
std::array<Plane*, Channels> copyOf(Plane* const* planes) {
    std::array<Plane*, Channels> copy{};
    std::copy_n(planes, Channels, copy.begin());
    return copy;
}

template <std::size_t Channels>
void splitRow(Byte const* row, std::size_t pixels, Byte* const* planes) {
    auto const to = copyOf<Channels>(planes);
    if (std::find(to.begin(), to.end(), nullptr) != to.end()) {
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

void grayToBgr(Byte const* gray, std::size_t pixels, Byte* bgr) {
    for (std::size_t x = 0; x < pixels; ++x) {
        std::memset(bgr + 3 * x, gray[x], 3);
    }
}

void swapRedBlue(Byte const* row, std::size_t pixels, Byte* dst) {
    for (std::size_t i = 0; i < 3 * pixels; i += 3) {
        Byte const first = row[i];
        dst[i] = row[i + 2];
        dst[i + 1] = row[i + 1];
        dst[i + 2] = first;
    }
}

void bytesToFloats(Byte const* src, std::size_t count, Byte* floats) {
    for (std::size_t i = 0; i < count; ++i) {
        float const value = src[i];
        std::memcpy(floats + i * sizeof value, &value, sizeof value);
    }
}

void floatsToLowBytes(Byte const* floats, std::size_t count, Byte* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        float value = 0;
        std::memcpy(&value, floats + i * sizeof value, sizeof value);
        dst[i] = lowByteOf(value);
    }
}

}  // namespace

constinit ColourRoutines const plainColour{
    .yuv_to_bgr = byLayout([](auto layout) { return &convertYuv<stepsOf(layout)>; }),
    .bgr_to_yuv = byLayout([](auto layout) { return &convertBgr<stepsOf(layout)>; }),
    .luma = byLayout([](auto layout) { return &takeLuma<stepsOf(layout).luma>; }),
    .bgr_to_gray = bgrToGray,
    .gray_to_bgr = grayToBgr,
    .swap_red_blue = swapRedBlue,
    .bytes_to_floats = bytesToFloats,
    .floats_to_low_bytes = floatsToLowBytes,
    .split_two = splitRow<2>,
    .split_three = splitRow<3>,
    .merge_two = mergeRow<2>,
    .merge_three = mergeRow<3>,
};

}  // namespace ox::rows
