// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/kernel_model.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

#include "simd/float_bits.h"

namespace kernel_model {

using Simd::Bytes;
using Simd::ConstBytes;
using std::size_t;

namespace {

template <class Work>
void forEachPixel(size_t width, size_t height, Work const& work) {
    for (size_t y = 0; y < height; ++y) {
        for (size_t x = 0; x < width; ++x) {
            work(x, y);
        }
    }
}

std::uint8_t clampToByte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// Formulas whose results are bytes without a clamp.
std::uint8_t asByte(int value) {
    return static_cast<std::uint8_t>(value);
}

struct Bgr {
    int b;
    int g;
    int r;
};

struct Yuv {
    int y;
    int u;
    int v;
};

Bgr pixelAt(ConstBytes pixel) {
    return {pixel[0], pixel[1], pixel[2]};
}

// Of 14 fractional bits, rounded.
int weighted(Bgr colour, Bgr weights) {
    return (weights.b * colour.b + weights.g * colour.g + weights.r * colour.r + 8192) >> 14;
}

std::uint8_t lumaOf(Bgr colour) {
    return asByte(weighted(colour, {1606, 8258, 4211}) + 16);
}

std::uint8_t uOf(Bgr colour) {
    return asByte(weighted(colour, {7193, -4768, -2425}) + 128);
}

std::uint8_t vOf(Bgr colour) {
    return asByte(weighted(colour, {-1163, -6029, 7193}) + 128);
}

// Of 13 fractional bits, rounded.
Bgr limitedToBgr(Yuv colour) {
    int const y = 9535 * (colour.y - 16);
    int const u = colour.u - 128;
    int const v = colour.v - 128;
    return {(y + 16531 * u + 4096) >> 13, (y - 3203 * u - 6660 * v + 4096) >> 13,
            (y + 13074 * v + 4096) >> 13};
}

void store(Bytes pixel, Bgr colour) {
    pixel[0] = clampToByte(colour.b);
    pixel[1] = clampToByte(colour.g);
    pixel[2] = clampToByte(colour.r);
}

// The upper byte of 16 bits that saturate.
int upperByte(int value) {
    return std::clamp(value, 0, 65535) >> 8;
}

Bgr directToBgr(Yuv colour) {
    int const c = 298 * std::max(colour.y - 16, 0);
    int const u = colour.u - 128;
    int const v = colour.v - 128;
    return {upperByte(c + 128 + 516 * u), upperByte(c + 128 - 208 * v - 100 * u),
            upperByte(c + 128 + 409 * v)};
}

// The mean of a square of four samples, rounded.
int meanOf(ConstBytes corner, size_t stride) {
    return (corner[0] + corner[3] + corner[stride] + corner[stride + 3] + 2) >> 2;
}

// To 32 bits, saturated, of which a byte keeps the lowest eight; a NaN gives 0.
std::uint8_t truncatedByte(float number) {
    double const limited = std::clamp<double>(std::isnan(number) ? 0 : number, 0, 4294967295.0);
    return static_cast<std::uint8_t>(static_cast<std::uint32_t>(limited));
}

// The magnitude of a half, out of that of a float that isn't a NaN. Exact until `toInteger`, which
// rounds or truncates units of the last place.
// @param largest what lies above is infinite
template <class ToInteger>
std::uint32_t halfMagnitude(double magnitude, double largest, ToInteger const& toInteger) {
    if (magnitude > largest) {
        return 0x7C00;
    }
    int const exponent = std::max(magnitude > 0 ? std::ilogb(magnitude) : -14, -14);
    auto const units = static_cast<std::uint32_t>(toInteger(std::ldexp(magnitude, 10 - exponent)));
    return (static_cast<std::uint32_t>(exponent + 14) << 10) + units;
}

std::uint32_t payloadOf(std::uint32_t bits) {
    return (bits & 0x7FFFFF) >> 13;
}

}  // namespace

void base::SwapRedBlue(ConstBytes src, size_t width, size_t height, size_t src_stride, Bytes dst,
                       size_t dst_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        for (size_t channel = 0; channel < 3; ++channel) {
            dst[y * dst_stride + 3 * x + channel] = src[y * src_stride + 3 * x + 2 - channel];
        }
    });
}

void base::SplitThreePlanes(ConstBytes src, size_t src_stride, size_t width, size_t height,
                            Bytes dst0, size_t dst0_stride, Bytes dst1, size_t dst1_stride,
                            Bytes dst2, size_t dst2_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        dst0[y * dst0_stride + x] = src[y * src_stride + 3 * x];
        dst1[y * dst1_stride + x] = src[y * src_stride + 3 * x + 1];
        dst2[y * dst2_stride + x] = src[y * src_stride + 3 * x + 2];
    });
}

void base::MergeThreePlanes(ConstBytes src0, size_t src0_stride, ConstBytes src1,
                            size_t src1_stride, ConstBytes src2, size_t src2_stride, size_t width,
                            size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        dst[y * dst_stride + 3 * x] = src0[y * src0_stride + x];
        dst[y * dst_stride + 3 * x + 1] = src1[y * src1_stride + x];
        dst[y * dst_stride + 3 * x + 2] = src2[y * src2_stride + x];
    });
}

void base::SplitTwoPlanes(ConstBytes src, size_t src_stride, size_t width, size_t height,
                          Bytes dst0, size_t dst0_stride, Bytes dst1, size_t dst1_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        dst0[y * dst0_stride + x] = src[y * src_stride + 2 * x];
        dst1[y * dst1_stride + x] = src[y * src_stride + 2 * x + 1];
    });
}

void base::MergeTwoPlanes(ConstBytes src0, size_t src0_stride, ConstBytes src1, size_t src1_stride,
                          size_t width, size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        dst[y * dst_stride + 2 * x] = src0[y * src0_stride + x];
        dst[y * dst_stride + 2 * x + 1] = src1[y * src1_stride + x];
    });
}

void base::ConvertBgrToGray(ConstBytes bgr, size_t width, size_t height, size_t bgr_stride,
                            Bytes gray, size_t gray_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        Bgr const colour = pixelAt(bgr + y * bgr_stride + 3 * x);
        gray[y * gray_stride + x] = asByte(weighted(colour, {1868, 9617, 4899}));
    });
}

void base::ExpandGrayToBgr(ConstBytes gray, size_t width, size_t height, size_t gray_stride,
                           Bytes bgr, size_t bgr_stride) {
    forEachPixel(width, height, [&](size_t x, size_t y) {
        std::fill_n(bgr + y * bgr_stride + 3 * x, 3, gray[y * gray_stride + x]);
    });
}

void base::ScaleBytesToFloats(ConstBytes src, size_t count, float const* lower, float const* upper,
                              float* dst) {
    float const scale = (*upper - *lower) / 255.0F;
    for (size_t i = 0; i < count; ++i) {
        ox::test::storeFloat(dst, i, std::fma(scale, static_cast<float>(src[i]), *lower));
    }
}

void base::ScaleFloatsToBytes(float const* src, size_t count, float const* lower,
                              float const* upper, Bytes dst) {
    float const range = *upper - *lower;
    float const scale = 255.0F / range;
    for (size_t i = 0; i < count; ++i) {
        float const x = ox::test::loadFloat(src, i);
        float const raised = x > *lower ? x : *lower;
        dst[i] = truncatedByte(*upper > raised ? (raised - *lower) * scale : range * scale);
    }
}

void neon::ScaleFloatsToBytes(float const* src, size_t count, float const* lower,
                              float const* upper, Bytes dst) {
    float const scale = 255.0F / (*upper - *lower);
    bool const ordered = !std::isnan(*lower) && !std::isnan(*upper);
    for (size_t i = 0; i < count; ++i) {
        float const x = ox::test::loadFloat(src, i);
        float const cut = std::min(std::max(x, *lower), *upper);
        dst[i] =
            ordered && !std::isnan(x) ? truncatedByte((cut - *lower) * scale) : std::uint8_t{0};
    }
}

void base::ConvertBgrToI420(ConstBytes bgr, size_t width, size_t height, size_t bgr_stride, Bytes y,
                            size_t y_stride, Bytes u, size_t u_stride, Bytes v, size_t v_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        y[row * y_stride + column] = lumaOf(pixelAt(bgr + row * bgr_stride + 3 * column));
    });
    forEachPixel(width / 2, height / 2, [&](size_t column, size_t row) {
        ConstBytes const corner = bgr + 2 * row * bgr_stride + 6 * column;
        Bgr const mean{meanOf(corner, bgr_stride), meanOf(corner + 1, bgr_stride),
                       meanOf(corner + 2, bgr_stride)};
        u[row * u_stride + column] = uOf(mean);
        v[row * v_stride + column] = vOf(mean);
    });
}

void base::ConvertI420ToBgr(ConstBytes y, size_t y_stride, ConstBytes u, size_t u_stride,
                            ConstBytes v, size_t v_stride, size_t width, size_t height, Bytes bgr,
                            size_t bgr_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        store(bgr + row * bgr_stride + 3 * column,
              limitedToBgr({y[row * y_stride + column], u[row / 2 * u_stride + column / 2],
                            v[row / 2 * v_stride + column / 2]}));
    });
}

void base::ConvertI420ToRgb(ConstBytes y, size_t y_stride, ConstBytes u, size_t u_stride,
                            ConstBytes v, size_t v_stride, size_t width, size_t height, Bytes rgb,
                            size_t rgb_stride) {
    ConvertI420ToBgr(y, y_stride, u, u_stride, v, v_stride, width, height, rgb, rgb_stride);
    forEachPixel(width, height, [&](size_t column, size_t row) {
        Bytes const pixel = rgb + row * rgb_stride + 3 * column;
        std::swap(pixel[0], pixel[2]);
    });
}

void base::ConvertBgrToYuv444(ConstBytes bgr, size_t width, size_t height, size_t bgr_stride,
                              Bytes y, size_t y_stride, Bytes u, size_t u_stride, Bytes v,
                              size_t v_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        Bgr const colour = pixelAt(bgr + row * bgr_stride + 3 * column);
        y[row * y_stride + column] = lumaOf(colour);
        u[row * u_stride + column] = uOf(colour);
        v[row * v_stride + column] = vOf(colour);
    });
}

void base::ConvertYuv444ToBgr(ConstBytes y, size_t y_stride, ConstBytes u, size_t u_stride,
                              ConstBytes v, size_t v_stride, size_t width, size_t height, Bytes bgr,
                              size_t bgr_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        store(bgr + row * bgr_stride + 3 * column,
              limitedToBgr({y[row * y_stride + column], u[row * u_stride + column],
                            v[row * v_stride + column]}));
    });
}

void base::ConvertNv12ToBgr(ConstBytes y, size_t y_stride, ConstBytes uv, size_t uv_stride,
                            size_t width, size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        ConstBytes const shared = uv + row / 2 * uv_stride + column / 2 * 2;
        Bytes const pixel = dst + row * dst_stride + 3 * column;
        store(pixel, limitedToBgr({y[row * y_stride + column], shared[0], shared[1]}));
    });
}

void base::ConvertNv12ToRgb(ConstBytes y, size_t y_stride, ConstBytes uv, size_t uv_stride,
                            size_t width, size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        ConstBytes const shared = uv + row / 2 * uv_stride + column / 2 * 2;
        Bytes const pixel = dst + row * dst_stride + 3 * column;
        store(pixel, limitedToBgr({y[row * y_stride + column], shared[0], shared[1]}));
        std::swap(pixel[0], pixel[2]);
    });
}

void base::ConvertNv21ToBgr(ConstBytes y, size_t y_stride, ConstBytes uv, size_t uv_stride,
                            size_t width, size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        ConstBytes const shared = uv + row / 2 * uv_stride + column / 2 * 2;
        Bytes const pixel = dst + row * dst_stride + 3 * column;
        store(pixel, limitedToBgr({y[row * y_stride + column], shared[1], shared[0]}));
    });
}

void base::ConvertNv21ToRgb(ConstBytes y, size_t y_stride, ConstBytes uv, size_t uv_stride,
                            size_t width, size_t height, Bytes dst, size_t dst_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        ConstBytes const shared = uv + row / 2 * uv_stride + column / 2 * 2;
        Bytes const pixel = dst + row * dst_stride + 3 * column;
        store(pixel, limitedToBgr({y[row * y_stride + column], shared[1], shared[0]}));
        std::swap(pixel[0], pixel[2]);
    });
}

void base::ConvertBgrToNv12(ConstBytes bgr, size_t width, size_t height, size_t bgr_stride, Bytes y,
                            size_t y_stride, Bytes uv, size_t uv_stride) {
    size_t const chroma = width / 2;
    std::vector<unsigned char> u(chroma * (height / 2) + 1);
    std::vector<unsigned char> v(u.size());
    ConvertBgrToI420(bgr, width, height, bgr_stride, y, y_stride, u.data(), chroma, v.data(),
                     chroma);
    forEachPixel(chroma, height / 2, [&](size_t column, size_t row) {
        uv[row * uv_stride + 2 * column] = u[row * chroma + column];
        uv[row * uv_stride + 2 * column + 1] = v[row * chroma + column];
    });
}

void base::ConvertNv12ToBgrDirectly(ConstBytes y, size_t y_stride, ConstBytes uv, size_t uv_stride,
                                    size_t width, size_t height, Bytes bgr, size_t bgr_stride) {
    forEachPixel(width, height, [&](size_t column, size_t row) {
        ConstBytes const shared = uv + row / 2 * uv_stride + column / 2 * 2;
        store(bgr + row * bgr_stride + 3 * column,
              directToBgr({y[row * y_stride + column], shared[0], shared[1]}));
    });
}

void base::FloatsToHalves(float const* src, size_t count, std::uint16_t* dst) {
    for (size_t i = 0; i < count; ++i) {
        float const number = ox::test::loadFloat(src, i);
        std::uint32_t const magnitude =
            std::isnan(number)
                ? 0x7C00 | std::max(payloadOf(ox::test::bitsOf(number)), std::uint32_t{1})
                : halfMagnitude(std::fabs(number), 65504, [](double x) { return std::trunc(x); });
        ox::test::storeHalf(dst, i, (std::signbit(number) ? 0x8000 : 0) | magnitude);
    }
}

void neon::FloatsToHalves(float const* src, size_t count, std::uint16_t* dst) {
    for (size_t i = 0; i < count; ++i) {
        float const number = ox::test::loadFloat(src, i);
        std::uint32_t const magnitude =
            std::isnan(number)
                ? 0x7E00 | payloadOf(ox::test::bitsOf(number))
                : halfMagnitude(std::fabs(number), 65535, [](double x) { return std::rint(x); });
        ox::test::storeHalf(dst, i, (std::signbit(number) ? 0x8000 : 0) | magnitude);
    }
}

namespace {

std::uint32_t floatOfHalf(std::uint32_t half_bits, std::uint32_t nan_bits) {
    std::uint32_t const sign = (half_bits & 0x8000) << 16;
    std::uint32_t const exponent = half_bits >> 10 & 31;
    std::uint32_t const fraction = half_bits & 1023;
    if (exponent == 31) {
        return sign | 0x7F800000 | fraction << 13 | (fraction != 0 ? nan_bits : 0);
    }
    std::uint32_t const units = exponent == 0 ? fraction : fraction + 1024;
    int const place = static_cast<int>(std::max(exponent, std::uint32_t{1})) - 25;
    return sign | ox::test::bitsOf(std::ldexp(static_cast<float>(units), place));
}

}  // namespace

void base::HalvesToFloats(std::uint16_t const* src, size_t count, float* dst) {
    for (size_t i = 0; i < count; ++i) {
        ox::test::storeBits(dst, i, floatOfHalf(ox::test::loadHalf(src, i), 0));
    }
}

void neon::HalvesToFloats(std::uint16_t const* src, size_t count, float* dst) {
    for (size_t i = 0; i < count; ++i) {
        ox::test::storeBits(dst, i, floatOfHalf(ox::test::loadHalf(src, i), 0x400000));
    }
}

void base::AddConstantFloats(float const* value, float* data, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        ox::test::storeFloat(data, i, ox::test::loadFloat(data, i) + *value);
    }
}

void base::AccumulateScaledFloats(float const* src, size_t count, float const* value, float* dst) {
    for (size_t i = 0; i < count; ++i) {
        float const sum =
            std::fma(*value, ox::test::loadFloat(src, i), ox::test::loadFloat(dst, i));
        ox::test::storeFloat(dst, i, sum);
    }
}

void base::MultiplyFloats(float const* value, float* data, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        float zero = 0.0F;
        float const number = ox::test::loadFloat(data, i);
        AccumulateScaledFloats(&number, 1, value, &zero);
        ox::test::storeFloat(data, i, zero);
    }
}

}  // namespace kernel_model
