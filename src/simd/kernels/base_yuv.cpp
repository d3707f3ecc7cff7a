// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/kernels/formulas.h"
#include "simd/kernels/kernels.h"

namespace Simd::Base {

namespace {

Bgr load(ConstBytes pixel) {
    return {pixel[0], pixel[1], pixel[2]};
}

/// Byte offsets of the channels in a packed pixel.
struct BlueFirst {
    static constexpr int b = 0;
    static constexpr int r = 2;
};

struct RedFirst {
    static constexpr int b = 2;
    static constexpr int r = 0;
};

struct FineMatrix {
    static Bgr terms(std::uint8_t u, std::uint8_t v) { return chromaTerms(u, v); }
    static std::uint8_t channel(std::uint8_t y, int term) { return channelOf(y, term); }
};

struct DirectMatrix {
    static Bgr terms(std::uint8_t u, std::uint8_t v) { return directChromaTerms(u, v); }
    static std::uint8_t channel(std::uint8_t y, int term) { return directChannelOf(y, term); }
};

template <class Matrix, class Order>
void store(Bytes pixel, std::uint8_t y, Bgr terms) {
    pixel[Order::b] = Matrix::channel(y, terms.b);
    pixel[1] = Matrix::channel(y, terms.g);
    pixel[Order::r] = Matrix::channel(y, terms.r);
}

/// A row of chroma at half the columns, as two planes or as pairs.
struct PlanarChroma {
    ConstBytes u;
    std::size_t u_stride;
    ConstBytes v;
    std::size_t v_stride;

    std::uint8_t uAt(std::size_t x) const { return u[x]; }
    std::uint8_t vAt(std::size_t x) const { return v[x]; }
    void next() {
        u += stepOf(u_stride);
        v += stepOf(v_stride);
    }
};

template <bool v_first>
struct PairedChroma {
    ConstBytes uv;
    std::size_t stride;

    std::uint8_t uAt(std::size_t x) const { return uv[2 * x + (v_first ? 1 : 0)]; }
    std::uint8_t vAt(std::size_t x) const { return uv[2 * x + (v_first ? 0 : 1)]; }
    void next() { uv += stepOf(stride); }
};

/// Pairs of columns and of rows; a last odd one is left alone.
template <class Matrix, class Order, class Chroma>
void convert420(ConstBytes y, std::size_t y_stride, Chroma chroma, std::size_t width,
                std::size_t height, Bytes dst, std::size_t dst_stride) {
    auto const luma_step = stepOf(y_stride);
    auto const dst_step = stepOf(dst_stride);
    for (std::size_t row = 0; row < height / 2; ++row) {
        for (std::size_t x = 0; x < width / 2; ++x) {
            Bgr const terms = Matrix::terms(chroma.uAt(x), chroma.vAt(x));
            for (std::ptrdiff_t side = 0; side < 2; ++side) {
                ConstBytes const luma = y + side * luma_step + 2 * x;
                Bytes const pixels = dst + side * dst_step + 6 * x;
                store<Matrix, Order>(pixels, luma[0], terms);
                store<Matrix, Order>(pixels + 3, luma[1], terms);
            }
        }
        y += 2 * luma_step;
        chroma.next();
        dst += 2 * dst_step;
    }
}

/// The rounded means of two by two pixels.
Bgr average(ConstBytes top, ConstBytes bottom) {
    auto const mean = [&](int c) {
        return (top[c] + top[c + 3] + bottom[c] + bottom[c + 3] + 2) >> 2;
    };
    return {mean(0), mean(1), mean(2)};
}

/// Where chroma goes: `step` bytes from one sample to the next.
struct ChromaTarget {
    Bytes u;
    std::size_t u_stride;
    Bytes v;
    std::size_t v_stride;
    std::size_t step;
};

void convertTo420(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                  Bytes y, std::size_t y_stride, ChromaTarget chroma) {
    for (std::size_t row = 0; row < height / 2; ++row) {
        for (std::size_t x = 0; x < width / 2; ++x) {
            ConstBytes const top = bgr + 6 * x;
            ConstBytes const bottom = top + stepOf(bgr_stride);
            y[2 * x] = lumaOf(load(top));
            y[2 * x + 1] = lumaOf(load(top + 3));
            y[y_stride + 2 * x] = lumaOf(load(bottom));
            y[y_stride + 2 * x + 1] = lumaOf(load(bottom + 3));
            Bgr const mean = average(top, bottom);
            chroma.u[chroma.step * x] = uOf(mean);
            chroma.v[chroma.step * x] = vOf(mean);
        }
        bgr += 2 * stepOf(bgr_stride);
        y += 2 * stepOf(y_stride);
        chroma.u += chroma.u_stride;
        chroma.v += chroma.v_stride;
    }
}

}  // namespace

void ConvertBgrToI420(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes y, std::size_t y_stride, Bytes u, std::size_t u_stride, Bytes v,
                      std::size_t v_stride) {
    convertTo420(bgr, width, height, bgr_stride, y, y_stride,
                 ChromaTarget{u, u_stride, v, v_stride, 1});
}

void ConvertBgrToNv12(ConstBytes bgr, std::size_t width, std::size_t height, std::size_t bgr_stride,
                      Bytes y, std::size_t y_stride, Bytes uv, std::size_t uv_stride) {
    convertTo420(bgr, width, height, bgr_stride, y, y_stride,
                 ChromaTarget{uv, uv_stride, uv + 1, uv_stride, 2});
}

void ConvertBgrToYuv444(ConstBytes bgr, std::size_t width, std::size_t height,
                        std::size_t bgr_stride, Bytes y, std::size_t y_stride, Bytes u,
                        std::size_t u_stride, Bytes v, std::size_t v_stride) {
    for (std::size_t row = 0; row < height; ++row, bgr += stepOf(bgr_stride), y += stepOf(y_stride),
                     u += stepOf(u_stride), v += stepOf(v_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            Bgr const pixel = load(bgr + 3 * x);
            y[x] = lumaOf(pixel);
            u[x] = uOf(pixel);
            v[x] = vOf(pixel);
        }
    }
}

void ConvertI420ToBgr(ConstBytes y, std::size_t y_stride, ConstBytes u, std::size_t u_stride,
                      ConstBytes v, std::size_t v_stride, std::size_t width, std::size_t height,
                      Bytes bgr, std::size_t bgr_stride) {
    convert420<FineMatrix, BlueFirst>(y, y_stride, PlanarChroma{u, u_stride, v, v_stride}, width,
                                      height, bgr, bgr_stride);
}

void ConvertI420ToRgb(ConstBytes y, std::size_t y_stride, ConstBytes u, std::size_t u_stride,
                      ConstBytes v, std::size_t v_stride, std::size_t width, std::size_t height,
                      Bytes rgb, std::size_t rgb_stride) {
    convert420<FineMatrix, RedFirst>(y, y_stride, PlanarChroma{u, u_stride, v, v_stride}, width,
                                     height, rgb, rgb_stride);
}

void ConvertNv12ToBgr(ConstBytes y, std::size_t y_stride, ConstBytes uv, std::size_t uv_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    convert420<FineMatrix, BlueFirst>(y, y_stride, PairedChroma<false>{uv, uv_stride}, width,
                                      height, dst, dst_stride);
}

void ConvertNv12ToRgb(ConstBytes y, std::size_t y_stride, ConstBytes uv, std::size_t uv_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    convert420<FineMatrix, RedFirst>(y, y_stride, PairedChroma<false>{uv, uv_stride}, width, height,
                                     dst, dst_stride);
}

void ConvertNv21ToBgr(ConstBytes y, std::size_t y_stride, ConstBytes uv, std::size_t uv_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    convert420<FineMatrix, BlueFirst>(y, y_stride, PairedChroma<true>{uv, uv_stride}, width, height,
                                      dst, dst_stride);
}

void ConvertNv21ToRgb(ConstBytes y, std::size_t y_stride, ConstBytes uv, std::size_t uv_stride,
                      std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    convert420<FineMatrix, RedFirst>(y, y_stride, PairedChroma<true>{uv, uv_stride}, width, height,
                                     dst, dst_stride);
}

void ConvertNv12ToBgrDirectly(ConstBytes y, std::size_t y_stride, ConstBytes uv,
                              std::size_t uv_stride, std::size_t width, std::size_t height,
                              Bytes bgr, std::size_t bgr_stride) {
    convert420<DirectMatrix, BlueFirst>(y, y_stride, PairedChroma<false>{uv, uv_stride}, width,
                                        height, bgr, bgr_stride);
}

void ConvertYuv444ToBgr(ConstBytes y, std::size_t y_stride, ConstBytes u, std::size_t u_stride,
                        ConstBytes v, std::size_t v_stride, std::size_t width, std::size_t height,
                        Bytes bgr, std::size_t bgr_stride) {
    for (std::size_t row = 0; row < height; ++row, y += stepOf(y_stride), u += stepOf(u_stride),
                     v += stepOf(v_stride), bgr += stepOf(bgr_stride)) {
        for (std::size_t x = 0; x < width; ++x) {
            store<FineMatrix, BlueFirst>(bgr + 3 * x, y[x], chromaTerms(u[x], v[x]));
        }
    }
}

}  // namespace Simd::Base
