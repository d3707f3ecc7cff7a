// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/nearest.h"

#include <algorithm>
#include <cstring>

#include "simd/kernels/kernels.h"
#include "simd/resizers/axis.h"
#include "simd/resizers/routines.h"

namespace Simd::Base {

namespace {

void fillByCentres(std::uint64_t src, std::uint64_t dst, std::int32_t* index) {
    float const scale = static_cast<float>(src) / static_cast<float>(dst);
    std::int64_t const last = static_cast<std::int64_t>(src) - 1;
    for (std::uint64_t i = 0; i < dst; ++i) {
        float const position = (static_cast<float>(i) + 0.5F) * scale;
        index[i] =
            rowOffset(std::max<std::int64_t>(std::min(truncatedPosition(position), last), 0), 1);
    }
}

/// i * src / dst, as a quotient and a remainder that are counted up, so that no product can wrap.
void fillByIntegers(std::uint64_t src, std::uint64_t dst, std::int32_t* index) {
    std::uint64_t quotient = 0;
    std::uint64_t remainder = 0;
    for (std::uint64_t i = 0; i < dst; ++i) {
        index[i] = rowOffset(static_cast<std::int64_t>(quotient), 1);
        quotient += src / dst;
        remainder += src % dst;
        if (remainder >= dst) {
            ++quotient;
            remainder -= dst;
        }
    }
}

using CopyRow = void (*)(std::uint8_t const* src, std::int32_t const* offsets, std::uint64_t width,
                         std::uint64_t pixel_size, std::uint8_t* dst);

void copyRow(std::uint8_t const* src, std::int32_t const* offsets, std::uint64_t width,
             std::uint64_t pixel_size, std::uint8_t* dst) {
    for (std::uint64_t x = 0; x < width; ++x) {
        std::memcpy(dst + x * pixel_size, src + offsets[x], pixel_size);
    }
}

/// The same with a size known at compile time: a copy is one or two loads and stores.
template <std::size_t known_size>
void copyRowOf(std::uint8_t const* src, std::int32_t const* offsets, std::uint64_t width,
               std::uint64_t /*pixel_size*/, std::uint8_t* dst) {
    for (std::uint64_t x = 0; x < width; ++x) {
        std::memcpy(dst + x * known_size, src + offsets[x], known_size);
    }
}

CopyRow chooseCopy(std::uint64_t pixel_size) {
    switch (pixel_size) {
        case 1:
            return copyRowOf<1>;
        case 2:
            return copyRowOf<2>;
        case 3:
            return copyRowOf<3>;
        case 4:
            return copyRowOf<4>;
        case 6:
            return copyRowOf<6>;
        case 8:
            return copyRowOf<8>;
        case 12:
            return copyRowOf<12>;
        default:
            return copyRow;
    }
}

}  // namespace

void fillNearest(ResizerMethod method, std::uint64_t src, std::uint64_t dst, std::int32_t* index) {
    if (method == ResizerMethodNearestInteger) {
        fillByIntegers(src, dst, index);
    } else {
        fillByCentres(src, dst, index);
    }
}

ResizerNearest::ResizerNearest(ResizerParam const& record) : Resizer(record) {}

void ResizerNearest::buildTables() {
    pixelSize = elementBytes(param.type) * param.channels;
    iy.Resize(param.dstH, param.align);
    ix.Resize(param.dstW, param.align);
    fillNearest(param.method, param.srcH, param.dstH, iy.data);
    fillNearest(param.method, param.srcW, param.dstW, ix.data);
    std::transform(ix.data, ix.data + param.dstW, ix.data,
                   [this](std::int32_t index) { return rowOffset(index, pixelSize); });
    hasProgram = Neon::KernelsEnabled &&
                 Neon::resizeRoutines().gather.compile_pixels(
                     {ix.data, param.dstW, pixelSize, param.srcW * pixelSize}, program);
}

void ResizerNearest::Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
                         std::size_t dstStride) {
    if (param.srcW == 0 || param.srcH == 0) {
        return;
    }
    if (pixelSize == 0) {
        buildTables();
    }
    CopyRow const copy = chooseCopy(pixelSize);
    copyNearestRows(iy.data, param.dstH, src, srcStride, dst, dstStride, param.dstW * pixelSize,
                    [&](std::uint8_t const* from, std::uint8_t* to) {
                        if (hasProgram) {
                            Neon::resizeRoutines().gather.copy_pixels(program, from, to);
                        } else {
                            copy(from, ix.data, param.dstW, pixelSize, to);
                        }
                    });
}

}  // namespace Simd::Base
