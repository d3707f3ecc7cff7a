// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/tensor_chain.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <sstream>

#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_convolutional.h"

namespace ox::test {

namespace tensor_chain {

namespace {

Frame cleared(FrameFormat format, Size size) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(), 0);
    frame.setZero();
    return frame;
}

Frame converted(Frame const& src, FrameFormat format) {
    FormatConverter converter;
    converter.reuse(src, format);
    Frame frame = cleared(format, src.size());
    produceFrame(converter, frame);
    return frame;
}

Frame unpacked(Frame const& src) {
    switch (src.format()) {
        case FRAME_RGB24:
        case FRAME_BGR_PLANAR:
            return converted(src, FRAME_BGR24);
        case FRAME_RGB_PLANAR:
            return converted(converted(src, FRAME_RGB24), FRAME_BGR24);
        case FRAME_YUYV:
        case FRAME_UYVY:
            return converted(src, FRAME_NV16);
        default:
            return src;
    }
}

Frame scaled(TensorRecipe const& recipe, Frame const& src, Size size) {
    Frame frame = cleared(src.format(), size);
    if (recipe.kernel != nullptr) {
        ScalerConvolutional scaler;
        scaler.reuse(*recipe.kernel, src, size, recipe.precision);
        produceFrame(scaler, frame);
        return frame;
    }
    std::int64_t const w = src.width();
    std::int64_t const h = src.height();
    bool const halves = 2 * std::int64_t{size.width} <= w && 2 * std::int64_t{size.height} <= h;
    ScaleMethod const methods[]{OX_SCALE_NEAREST, OX_SCALE_BILINEAR, OX_SCALE_AREA,
                                halves ? OX_SCALE_AREA : OX_SCALE_BILINEAR};
    Scaler scaler;
    scaler.reuse(src, size, methods[recipe.method]);
    produceFrame(scaler, frame);
    return frame;
}

// The samples of a YUV frame, by planes, offsets in pairs, and pixels that share chroma.
struct Samples {
    int u_plane;
    int u_offset;
    int v_plane;
    int v_offset;
    int step;
    int columns;
    int rows;
};

Samples samplesOf(FrameFormat format) {
    switch (format) {
        case FRAME_I420:
            return {1, 0, 2, 0, 1, 2, 2};
        case FRAME_YV12:
            return {2, 0, 1, 0, 1, 2, 2};
        case FRAME_NV12:
            return {1, 0, 1, 1, 2, 2, 2};
        case FRAME_NV21:
            return {1, 1, 1, 0, 2, 2, 2};
        case FRAME_YV16:
            return {2, 0, 1, 0, 1, 2, 1};
        case FRAME_NV16:
            return {1, 0, 1, 1, 2, 2, 1};
        case FRAME_YUV444:
            return {0, 1, 0, 2, 3, 1, 1};
        default:
            return {1, 0, 2, 0, 1, 1, 1};
    }
}

int sampleAt(Frame const& frame, int plane, int row, int column) {
    return (frame.planeData(plane) + row * frame.layout().plane[plane].stride)[column];
}

struct Standard {
    double kr;
    double kb;
};

std::uint8_t clampedSum(double cy, double a, double b, std::array<int, 3> yuv, int zero) {
    auto const fixed = [](double factor) { return std::lround(factor * 16384.0); };
    long const sum =
        fixed(cy) * (yuv[0] - zero) + fixed(a) * (yuv[1] - 128) + fixed(b) * (yuv[2] - 128) + 8192;
    return static_cast<std::uint8_t>(std::clamp(sum >> 14, 0L, 255L));
}

Frame byMatrix(TensorRecipe const& recipe, Frame const& src) {
    constexpr Standard standards[]{{0.0, 0.0}, {0.299, 0.114}, {0.2126, 0.0722}, {0.2627, 0.0593}};
    auto const [kr, kb] = standards[recipe.matrix];
    double const kg = 1.0 - kr - kb;
    bool const limited = recipe.range == TENSOR_RANGE_LIMITED;
    double const cy = limited ? 255.0 / 219.0 : 1.0;
    double const cc = limited ? 255.0 / 224.0 : 1.0;
    int const zero = limited ? 16 : 0;
    Samples const at = samplesOf(src.format());
    Frame frame = cleared(FRAME_BGR24, src.size());
    for (int y = 0; y < src.height(); ++y) {
        for (int x = 0; x < src.width(); ++x) {
            int const row = y / at.rows;
            int const column = x / at.columns * at.step;
            int const luma = sampleAt(src, 0, y, src.format() == FRAME_YUV444 ? 3 * x : x);
            std::array<int, 3> const yuv{luma, sampleAt(src, at.u_plane, row, column + at.u_offset),
                                         sampleAt(src, at.v_plane, row, column + at.v_offset)};
            unsigned char* const bgr =
                frame.planeData(0) + y * frame.layout().plane[0].stride + std::int64_t{3} * x;
            bgr[0] = clampedSum(cy, 2.0 * (1.0 - kb) * cc, 0.0, yuv, zero);
            bgr[1] = clampedSum(cy, -2.0 * (1.0 - kb) * kb / kg * cc,
                                -2.0 * (1.0 - kr) * kr / kg * cc, yuv, zero);
            bgr[2] = clampedSum(cy, 0.0, 2.0 * (1.0 - kr) * cc, yuv, zero);
        }
    }
    return frame;
}

Frame coloured(TensorRecipe const& recipe, Frame const& src) {
    bool const is_yuv = src.format() >= FRAME_I420 && src.format() <= FRAME_YUV444_PLANAR;
    if (recipe.colour == TENSOR_COLOUR_GRAY) {
        return converted(src, FRAME_GRAY8);
    }
    return is_yuv && recipe.matrix != TENSOR_MATRIX_LIBRARY ? byMatrix(recipe, src)
                                                            : converted(src, FRAME_BGR24);
}

void writeElement(TensorRecipe const& recipe, int channel, int byte, std::uint8_t* dst) {
    float const difference = static_cast<float>(byte) - recipe.mean[channel];
    float const number = difference * recipe.scale[channel];
    if (recipe.element == TENSOR_FLOAT_32) {
        std::memcpy(dst, &number, sizeof number);
        return;
    }
    if (recipe.element == TENSOR_FLOAT_16) {
        float const numbers[4]{number, number, number, number};
        unsigned short halves[4];
        convertFp32ToFp16(numbers, 4, halves);
        std::memcpy(dst, halves, sizeof halves[0]);
        return;
    }
    bool const is_signed = recipe.element == TENSOR_INT_8;
    float const divided = number / recipe.quantScale;
    float const moved = std::nearbyint(divided) + static_cast<float>(recipe.zeroPoint);
    float const clamped =
        std::clamp(moved, is_signed ? -128.0F : 0.0F, is_signed ? 127.0F : 255.0F);
    *dst = static_cast<std::uint8_t>(static_cast<int>(clamped));
}

// round(extent * to / from) within [1, most].
int side(std::int64_t extent, std::int64_t to, std::int64_t from, std::int64_t most) {
    return static_cast<int>(
        std::clamp((2 * extent * to + from) / (2 * from), std::int64_t{1}, most));
}

Rect innerOf(TensorRecipe const& recipe, Rect read) {
    std::int64_t const w = read.width;
    std::int64_t const h = read.height;
    std::int64_t const W = recipe.width;
    std::int64_t const H = recipe.height;
    bool const centred = recipe.fit == TENSOR_FIT_LETTERBOX;
    Rect inner{0, 0, recipe.width, recipe.height};
    if (!centred && recipe.fit != TENSOR_FIT_LETTERBOX_TOP_LEFT) {
        return inner;
    }
    if (W * h <= w * H) {
        inner.height = side(h, W, w, H);
    } else {
        inner.width = side(w, H, h, W);
    }
    if (centred) {
        inner.x = (recipe.width - inner.width) / 2;
        inner.y = (recipe.height - inner.height) / 2;
    }
    return inner;
}

Rect croppedOf(TensorRecipe const& recipe, FrameFormat format, Rect read) {
    if (recipe.fit != TENSOR_FIT_CROP) {
        return read;
    }
    std::int64_t const w = read.width;
    std::int64_t const h = read.height;
    std::int64_t const W = recipe.width;
    std::int64_t const H = recipe.height;
    Rect kept = read;
    if (w * H >= h * W) {
        kept.width = side(h, W, H, w);
    } else {
        kept.height = side(w, H, W, h);
    }
    bool const is_420 = format >= FRAME_I420 && format <= FRAME_NV21;
    bool const is_422 = format >= FRAME_YV16 && format <= FRAME_NV16;
    int const x = (read.width - kept.width) / 2;
    int const y = (read.height - kept.height) / 2;
    kept.x += is_420 || is_422 ? x - x % 2 : x;
    kept.y += is_420 ? y - y % 2 : y;
    return kept;
}

}  // namespace

}  // namespace tensor_chain

std::size_t elementBytes(TensorDataType element) {
    return element == TENSOR_FLOAT_32 ? 4 : (element == TENSOR_FLOAT_16 ? 2 : 1);
}

ChainResult runChain(TensorRecipe const& recipe, Frame const& src, Rect region) {
    using namespace tensor_chain;
    bool const packed = src.format() == FRAME_YUYV || src.format() == FRAME_UYVY;
    Rect read = region;
    read.x -= packed ? read.x % 2 : 0;
    ChainResult result;
    result.source = croppedOf(recipe, src.format(), read);
    result.inner = innerOf(recipe, result.source);
    Rect const& inner = result.inner;
    Frame whole = src;
    Frame const picture = coloured(recipe, scaled(recipe, unpacked(getRegion(whole, result.source)),
                                                  {inner.width, inner.height}));
    int const channels = recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
    std::size_t const bytes = elementBytes(recipe.element);
    auto const pixels =
        static_cast<std::size_t>(recipe.width) * static_cast<std::size_t>(recipe.height);
    result.bytes.resize(pixels * static_cast<std::size_t>(channels) * bytes);
    for (int y = 0; y < recipe.height; ++y) {
        for (int x = 0; x < recipe.width; ++x) {
            bool const is_bar = x < inner.x || y < inner.y || x >= inner.x + inner.width ||
                                y >= inner.y + inner.height;
            for (int c = 0; c < channels; ++c) {
                int const from = recipe.colour == TENSOR_COLOUR_RGB ? 2 - c : c;
                int const byte =
                    is_bar ? recipe.bars[c]
                           : sampleAt(picture, 0, y - inner.y, channels * (x - inner.x) + from);
                auto const pixel = static_cast<std::size_t>(y * recipe.width + x);
                auto const channel = static_cast<std::size_t>(c);
                std::size_t const index =
                    recipe.layout == TENSOR_FORMAT_NCHW
                        ? channel * pixels + pixel
                        : pixel * static_cast<std::size_t>(channels) + channel;
                writeElement(recipe, c, byte, result.bytes.data() + index * bytes);
            }
        }
    }
    return result;
}

std::string describe(TensorRecipe const& recipe) {
    std::ostringstream text;
    text << recipe.width << "x" << recipe.height << ", fit " << recipe.fit << ", method "
         << recipe.method << (recipe.kernel != nullptr ? ", kernel" : "") << ", precision "
         << recipe.precision << ", colour " << recipe.colour << ", layout " << recipe.layout
         << ", element " << recipe.element << ", matrix " << recipe.matrix << ", range "
         << recipe.range;
    return text.str();
}

}  // namespace ox::test
