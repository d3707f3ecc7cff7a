// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/frame_to_tensor.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "model/yuv.h"

namespace model {

namespace {

void require(Outcome const& outcome) {
    if (!outcome.ok) {
        refuse(outcome.status, outcome.text);
    }
}

Image convertedTo(Image const& src, int format) {
    Image result = makeImage(format, src.width, src.height, 0);
    require(convert(src, result));
    return result;
}

// The source in the format that it is scaled in.
Image scalableForm(Image const& src) {
    switch (src.format) {
        case Rgb24:
        case BgrPlanar:
            return convertedTo(src, Bgr24);
        case RgbPlanar:
            return convertedTo(convertedTo(src, Rgb24), Bgr24);
        case Yuyv:
        case Uyvy:
            return convertedTo(src, Nv16);
        default:
            return src;
    }
}

Region regionOf(Geometry src, Region region) {
    if (region.whole()) {
        return {0, 0, src.width, src.height};
    }
    bool const inside = region.x >= 0 && region.y >= 0 &&
                        std::int64_t{region.x} + region.width <= src.width &&
                        std::int64_t{region.y} + region.height <= src.height;
    if (!inside) {
        refuse(OutOfRange, "");
    }
    if (src.format == Yuyv || src.format == Uyvy) {
        region.x = region.x / 2 * 2;
    }
    return region;
}

// The quotient rounded to nearest, halves up, within 1 and a limit.
int sideOf(std::int64_t numerator, std::int64_t divisor, std::int64_t most) {
    return static_cast<int>(
        std::clamp((2 * numerator + divisor) / (2 * divisor), std::int64_t{1}, most));
}

void placeInLetterbox(TensorRecipe const& recipe, TensorMapping& mapping) {
    std::int64_t const src_w = mapping.width;
    std::int64_t const src_h = mapping.height;
    std::int64_t const dst_w = recipe.width;
    std::int64_t const dst_h = recipe.height;
    if (dst_w * src_h <= src_w * dst_h) {
        mapping.inner_height = sideOf(src_h * dst_w, src_w, dst_h);
    } else {
        mapping.inner_width = sideOf(src_w * dst_h, src_h, dst_w);
    }
    if (recipe.centred) {
        mapping.left = (recipe.width - mapping.inner_width) / 2;
        mapping.top = (recipe.height - mapping.inner_height) / 2;
    }
}

// Half of what is left over, from where samples of all planes begin.
int cropOffset(int side, int cropped, bool shares_chroma) {
    int const offset = (side - cropped) / 2;
    return shares_chroma ? offset / 2 * 2 : offset;
}

void cutToAspect(TensorRecipe const& recipe, int format, TensorMapping& mapping) {
    std::int64_t const src_w = mapping.width;
    std::int64_t const src_h = mapping.height;
    std::int64_t const dst_w = recipe.width;
    std::int64_t const dst_h = recipe.height;
    bool const too_wide = src_w * dst_h >= src_h * dst_w;
    int const width = too_wide ? sideOf(src_h * dst_w, dst_h, src_w) : mapping.width;
    int const height = too_wide ? mapping.height : sideOf(src_w * dst_h, dst_w, src_h);
    bool const yuv = isYuv(format);
    mapping.x0 += cropOffset(mapping.width, width, yuv && yuvLayout(format).columns == 2);
    mapping.y0 += cropOffset(mapping.height, height, yuv && yuvLayout(format).rows == 2);
    mapping.width = width;
    mapping.height = height;
}

int methodNumber(TensorMethod method, TensorMapping const& mapping) {
    if (method != TensorMethod::Automatic) {
        return static_cast<int>(method);
    }
    bool const halves = 2 * std::int64_t{mapping.inner_width} <= mapping.width &&
                        2 * std::int64_t{mapping.inner_height} <= mapping.height;
    return static_cast<int>(halves ? TensorMethod::Area : TensorMethod::Bilinear);
}

Image scaledToInner(TensorRecipe const& recipe, TensorMapping const& mapping, Image const& src) {
    Image result = makeImage(src.format, mapping.inner_width, mapping.inner_height, 0);
    if (recipe.filter) {
        Convolution scaler;
        auto const arm = [&] {
            scaler.arm(*recipe.filter, src, result.width, result.height, recipe.precision);
        };
        require(drain(arm, scaler, result));
    } else {
        require(Facade().run(src, result, methodNumber(recipe.method, mapping)));
    }
    return result;
}

int roundedQuotient(std::int64_t numerator, std::int64_t divisor) {
    std::int64_t const magnitude = numerator < 0 ? -numerator : numerator;
    auto const rounded = static_cast<int>((2 * magnitude + divisor) / (2 * divisor));
    return numerator < 0 ? -rounded : rounded;
}

Image byMatrix(Image const& src, MatrixWeights const& weights) {
    Image result = makeImage(Bgr24, src.width, src.height, 0);
    YuvLayout const layout = yuvLayout(src.format);
    MatrixWeights::Chroma const channels[]{weights.blue, weights.green, weights.red};
    for (int y = 0; y < src.height; ++y) {
        SourceRow const row = src.shown(y);
        Row const out = result.writable(y);
        for (int x = 0; x < src.width; ++x) {
            int const luma = weights.luma * (sampleAt(row, layout.y, x) - weights.offset);
            int const u = sampleAt(row, layout.u, x / layout.columns) - 128;
            int const v = sampleAt(row, layout.v, x / layout.columns) - 128;
            for (std::size_t c = 0; c < 3; ++c) {
                int const sum = luma + channels[c].u * u + channels[c].v * v + 8192;
                out[0][3 * static_cast<std::size_t>(x) + c] =
                    static_cast<std::uint8_t>(std::clamp(sum >> 14, 0, 255));
            }
        }
    }
    return result;
}

// The pixels as bytes, gray or blue first.
Image inColour(TensorRecipe const& recipe, Image const& src) {
    bool const gray = recipe.colour == TensorColour::Gray;
    if (!gray && isYuv(src.format) && recipe.matrix != YuvMatrix::Library) {
        return byMatrix(src, matrixWeights(recipe.matrix, recipe.range));
    }
    return convertedTo(src, gray ? Gray8 : Bgr24);
}

// The picture with its bars, as bytes in the order of the tensor's channels.
class PaddedPicture {
  public:
    PaddedPicture(TensorRecipe const& recipe, TensorMapping const& mapping, Image const& inner)
        : _recipe(recipe), _mapping(mapping), _inner(inner) {}

    std::uint8_t at(int x, int y, int channel) const {
        int const column = x - _mapping.left;
        int const row = y - _mapping.top;
        if (column < 0 || column >= _inner.width || row < 0 || row >= _inner.height) {
            return _recipe.bars[static_cast<std::size_t>(channel)];
        }
        int const stored = _recipe.colour == TensorColour::Rgb ? 2 - channel : channel;
        int const channels = _recipe.colour == TensorColour::Gray ? 1 : 3;
        Plane const& plane = _inner.planes[0];
        return plane.bytes[static_cast<std::size_t>(row) * plane.row_bytes +
                           static_cast<std::size_t>(channels * column + stored)];
    }

  private:
    TensorRecipe const& _recipe;
    TensorMapping const& _mapping;
    Image const& _inner;
};

float normalised(TensorRecipe const& recipe, std::uint8_t byte, std::size_t channel) {
    float const difference = static_cast<float>(byte) - recipe.mean[channel];
    return difference * recipe.scale[channel];
}

int quantised(TensorRecipe const& recipe, float value) {
    bool const is_signed = recipe.element == TensorElement::SignedByte;
    float const whole = nearestWhole(value / recipe.quant_scale);
    float const shifted = whole + static_cast<float>(recipe.zero_point);
    return static_cast<int>(
        std::clamp(shifted, is_signed ? -128.0F : 0.0F, is_signed ? 127.0F : 255.0F));
}

template <class Value>
void append(std::vector<std::uint8_t>& bytes, Value value) {
    std::uint8_t raw[sizeof value];
    std::memcpy(raw, &value, sizeof value);
    bytes.insert(bytes.end(), std::begin(raw), std::end(raw));
}

void appendElement(TensorRecipe const& recipe, float value, std::vector<std::uint8_t>& bytes) {
    switch (recipe.element) {
        case TensorElement::Float:
            append(bytes, value);
            break;
        case TensorElement::Half:
            append(bytes, nearestHalf(value));
            break;
        default:
            bytes.push_back(static_cast<std::uint8_t>(quantised(recipe, value) & 0xFF));
    }
}

std::vector<std::uint8_t> elementsOf(TensorRecipe const& recipe, PaddedPicture const& picture) {
    std::vector<std::uint8_t> bytes;
    int const channels = recipe.colour == TensorColour::Gray ? 1 : 3;
    auto const add = [&](int x, int y, int c) {
        appendElement(recipe, normalised(recipe, picture.at(x, y, c), static_cast<std::size_t>(c)),
                      bytes);
    };
    bool const planes = recipe.layout == TensorLayout::Nchw;
    for (int plane = 0; plane < (planes ? channels : 1); ++plane) {
        for (int y = 0; y < recipe.height; ++y) {
            for (int x = 0; x < recipe.width; ++x) {
                for (int c = 0; c < (planes ? 1 : channels); ++c) {
                    add(x, y, planes ? plane : c);
                }
            }
        }
    }
    return bytes;
}

}  // namespace

bool isTensorSource(int format) {
    return format >= Gray8 && format <= Yuv444Planar;
}

TensorMapping tensorMapping(TensorRecipe const& recipe, Geometry src, Region region) {
    Region const read = regionOf(src, region);
    TensorMapping mapping{read.x, read.y, read.width,   read.height,
                          0,      0,      recipe.width, recipe.height};
    if (recipe.fit == TensorFit::Letterbox) {
        placeInLetterbox(recipe, mapping);
    } else if (recipe.fit == TensorFit::Crop) {
        cutToAspect(recipe, src.format, mapping);
    }
    return mapping;
}

// From the shares of red and blue in luma, in units of 1/10000, and the steps of full luma and
// chroma.
MatrixWeights matrixWeights(YuvMatrix matrix, YuvRange range) {
    bool const bt601 = matrix == YuvMatrix::Bt601;
    bool const bt709 = matrix == YuvMatrix::Bt709;
    std::int64_t const red = bt601 ? 2990 : bt709 ? 2126 : 2627;
    std::int64_t const blue = bt601 ? 1140 : bt709 ? 722 : 593;
    std::int64_t const green = 10000 - red - blue;
    bool const full = range == YuvRange::Full;
    std::int64_t const luma_steps = full ? 255 : 219;
    std::int64_t const chroma_steps = full ? 255 : 224;

    // 2 (1 - share) * other / green, where the weight of the share's own channel has no quotient.
    auto const chroma = [&](std::int64_t share, std::int64_t numerator, std::int64_t divisor) {
        return roundedQuotient(2 * (10000 - share) * numerator * 255 * 16384,
                               10000 * divisor * chroma_steps);
    };
    return {roundedQuotient(255 * 16384, luma_steps),
            full ? 0 : 16,
            {chroma(blue, 1, 1), 0},
            {chroma(blue, -blue, green), chroma(red, -red, green)},
            {0, chroma(red, 1, 1)}};
}

std::uint16_t nearestHalf(float value) {
    auto const bits = std::bit_cast<std::uint32_t>(value);
    std::uint32_t const sign = bits >> 16 & 0x8000U;
    std::uint32_t const magnitude = bits & 0x7FFFFFFFU;
    std::uint32_t const exponent = magnitude >> 23;
    // `count` bits are lost; a carry goes on into the exponent, up to infinity.
    auto const rounded = [&](std::uint32_t number, std::uint32_t count) {
        std::uint32_t const kept = number >> count;
        std::uint32_t const lost = number & ((1U << count) - 1);
        std::uint32_t const half = 1U << (count - 1);
        bool const up = lost > half || (lost == half && kept % 2 == 1);
        return static_cast<std::uint16_t>(sign | (up ? kept + 1 : kept));
    };
    if (exponent >= 143) {  // 2^16 and more
        return static_cast<std::uint16_t>(sign | 0x7C00U);
    }
    if (exponent >= 113) {  // exponents of halves are less by 112
        return rounded(magnitude - (112U << 23), 13);
    }
    if (exponent < 102) {  // less than half of the smallest half, 2^-24
        return static_cast<std::uint16_t>(sign);
    }
    return rounded((magnitude & 0x7FFFFFU) | 0x800000U, 126 - exponent);
}

float nearestWhole(float value) {
    if (!(value > -8388608.0F && value < 8388608.0F)) {
        return value;  // such floats have no fraction
    }
    int const toward_zero = static_cast<int>(value);
    float const rest = value - static_cast<float>(toward_zero);
    bool const odd = toward_zero % 2 != 0;
    int step = 0;
    if (rest > 0.5F || (rest == 0.5F && odd)) {
        step = 1;
    } else if (rest < -0.5F || (rest == -0.5F && odd)) {
        step = -1;
    }
    return static_cast<float>(toward_zero + step);
}

TensorPicture frameToTensor(TensorRecipe const& recipe, Image const& src, Region region) {
    TensorPicture result;
    result.outcome = attempt([&] {
        if (!isTensorSource(src.format)) {
            refuse(NotSupported, "");
        }
        TensorMapping const mapping = tensorMapping(recipe, src.geometry(), region);
        Image const read =
            crop(scalableForm(src), mapping.x0, mapping.y0, mapping.width, mapping.height);
        Image const inner = inColour(recipe, scaledToInner(recipe, mapping, read));
        result.bytes = elementsOf(recipe, PaddedPicture(recipe, mapping, inner));
        result.mapping = mapping;
    });
    return result;
}

}  // namespace model
