// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/resizer.h"

#include "simd/resizers/bilinear.h"
#include "simd/resizers/byte_area.h"
#include "simd/resizers/byte_bicubic.h"
#include "simd/resizers/byte_bilinear.h"
#include "simd/resizers/nearest.h"

namespace Simd {

namespace {

constexpr std::uint64_t scalarAlign = 8;
constexpr std::uint64_t vectorAlign = 16;

/// The vertical pass of the vector class works on blocks of this many values. The last block
/// overlaps the one before, so a row needs at least one.
constexpr std::uint64_t leastByteBilinearWidth = 16;

bool isByteBilinear(ResizerParam const& param) {
    return param.type == ResizerTypeByte &&
           (param.method == ResizerMethodBilinear ||
            (param.method == ResizerMethodBicubic && (param.srcW == 2 || param.srcH == 2)));
}

bool isFloatBilinear(ResizerParam const& param) {
    return param.type == ResizerTypeFloat &&
           (param.method == ResizerMethodBilinear || param.method == ResizerMethodBilinearCorners ||
            param.method == ResizerMethodBilinearTopLeft);
}

bool halvesBothSides(ResizerParam const& param) {
    return param.dstW <= halfOf(param.srcW) && param.dstH <= halfOf(param.srcH);
}

Resizer* make(ResizerClass chosen, ResizerParam const& param) {
    switch (chosen) {
        case ResizerClass::none:
            break;
        case ResizerClass::nearest:
            return new Base::ResizerNearest(param);
        case ResizerClass::byteBilinear:
            return new Base::ResizerByteBilinear(param);
        case ResizerClass::shortBilinear:
            return new Base::ResizerShortBilinear(param);
        case ResizerClass::floatBilinear:
            return new Base::ResizerFloatBilinear(param);
        case ResizerClass::byteBicubic:
            return new Base::ResizerByteBicubic(param);
        case ResizerClass::byteArea2x2:
            return new Base::ResizerByteArea2x2(param);
        case ResizerClass::byteArea1x1:
            return new Base::ResizerByteArea1x1(param);
        case ResizerClass::vectorByteBilinear:
            return new Neon::ResizerByteBilinear(param);
        case ResizerClass::vectorShortBilinear:
            return new Neon::ResizerShortBilinear(param);
        case ResizerClass::vectorFloatBilinear:
            return new Neon::ResizerFloatBilinear(param);
        case ResizerClass::vectorByteArea1x1:
            return new Neon::ResizerByteArea1x1(param);
    }
    return nullptr;
}

}  // namespace

namespace Base {

ResizerClass chooseResizer(ResizerParam const& param) {
    ResizerMethod const method = param.method;
    if (param.srcW == 1 || param.srcH == 1 || method == ResizerMethodNearest ||
        method == ResizerMethodNearestInteger) {
        return ResizerClass::nearest;
    }
    if (isByteBilinear(param)) {
        return ResizerClass::byteBilinear;
    }
    if (param.type == ResizerTypeShort && method == ResizerMethodBilinear) {
        return ResizerClass::shortBilinear;
    }
    if (isFloatBilinear(param)) {
        return ResizerClass::floatBilinear;
    }
    if (param.type != ResizerTypeByte) {
        return ResizerClass::none;
    }
    if (method == ResizerMethodBicubic) {
        return ResizerClass::byteBicubic;
    }
    if (method == ResizerMethodAreaFast && halvesBothSides(param)) {
        return ResizerClass::byteArea2x2;
    }
    if (method == ResizerMethodArea || method == ResizerMethodAreaFast) {
        return ResizerClass::byteArea1x1;
    }
    return ResizerClass::none;
}

Resizer* CreateResizer(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t dstW,
                       std::uint64_t dstH, std::uint64_t channels, ResizerType type,
                       ResizerMethod method) {
    ResizerParam const param{type, method, srcW, srcH, dstW, dstH, channels, scalarAlign};
    return make(chooseResizer(param), param);
}

}  // namespace Base

namespace Neon {

ResizerClass chooseResizer(ResizerParam const& param) {
    if (isByteBilinear(param) && param.dstW >= leastByteBilinearWidth) {
        return ResizerClass::vectorByteBilinear;
    }
    if (param.type == ResizerTypeByte &&
        (param.method == ResizerMethodArea ||
         (param.method == ResizerMethodAreaFast && !halvesBothSides(param)))) {
        return ResizerClass::vectorByteArea1x1;
    }
    if (param.type == ResizerTypeShort && param.method == ResizerMethodBilinear &&
        param.channels == 1) {
        return ResizerClass::vectorShortBilinear;
    }
    if (isFloatBilinear(param)) {
        return ResizerClass::vectorFloatBilinear;
    }
    return Base::chooseResizer(param);
}

Resizer* CreateResizer(std::uint64_t srcW, std::uint64_t srcH, std::uint64_t dstW,
                       std::uint64_t dstH, std::uint64_t channels, ResizerType type,
                       ResizerMethod method) {
    ResizerParam const param{type, method, srcW, srcH, dstW, dstH, channels, vectorAlign};
    ResizerClass const chosen = chooseResizer(param);
    if (chosen == Base::chooseResizer(param)) {
        return Base::CreateResizer(srcW, srcH, dstW, dstH, channels, type, method);
    }
    return make(chosen, param);
}

}  // namespace Neon

}  // namespace Simd
