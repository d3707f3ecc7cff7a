// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A picture as a network's input: cropped, scaled, padded, converted and normalised, by whole
// frames.
#pragma once

#include "model/backend.h"
#include "model/convolution.h"

namespace model {

enum class TensorFit { Stretch, Letterbox, Crop };
enum class TensorMethod { Nearest, Bilinear, Area, Automatic };
enum class TensorColour { Bgr, Rgb, Gray };
enum class TensorLayout { Nchw, Nhwc };
enum class TensorElement { UnsignedByte, SignedByte, Half, Float };
enum class YuvMatrix { Library, Bt601, Bt709, Bt2020 };
enum class YuvRange { Limited, Full };

// Numbers in threes are in the order of the tensor's channels; gray takes the first.
struct TensorRecipe {
    int width = 0;
    int height = 0;
    TensorFit fit = TensorFit::Stretch;
    bool centred = true;  // of a letterbox; top left elsewhere
    TensorMethod method = TensorMethod::Automatic;
    Filter* filter = nullptr;  // instead of a method
    int precision = 16;        // of the filter's weights, in bits: 8 or 16
    TensorColour colour = TensorColour::Bgr;
    TensorLayout layout = TensorLayout::Nchw;
    TensorElement element = TensorElement::Float;
    std::array<float, 3> mean{0.0F, 0.0F, 0.0F};
    std::array<float, 3> scale{1.0F, 1.0F, 1.0F};
    float quant_scale = 1.0F;  // this and the zero point are for bytes
    int zero_point = 0;
    std::array<std::uint8_t, 3> bars{0, 0, 0};
    YuvMatrix matrix = YuvMatrix::Library;
    YuvRange range = YuvRange::Limited;  // counts beside a matrix of a standard
};

// How the rectangle that was read lies in the tensor's picture. Pixel i covers i to i + 1.
struct TensorMapping {
    int x0 = 0;
    int y0 = 0;
    int width = 0;
    int height = 0;
    int left = 0;
    int top = 0;
    int inner_width = 0;
    int inner_height = 0;
    bool operator==(TensorMapping const&) const = default;

    double toInputX(double x) const { return left + (x - x0) * inner_width / width; }
    double toInputY(double y) const { return top + (y - y0) * inner_height / height; }
    double toSourceX(double x) const { return x0 + (x - left) * width / inner_width; }
    double toSourceY(double y) const { return y0 + (y - top) * height / inner_height; }
};

struct TensorPicture {
    Outcome outcome;
    TensorMapping mapping;            // this and the bytes only where nothing was refused
    std::vector<std::uint8_t> bytes;  // of the elements, without gaps
};

// For recipes of sense: positive sizes, finite numbers, a positive quant_scale. What this refuses
// by itself has a status and no text.
TensorPicture frameToTensor(TensorRecipe const& recipe, Image const& src, Region region);

// Its parts.

// Whether a format is taken at all.
bool isTensorSource(int format);

// For a format that is taken. A region outside is refused.
TensorMapping tensorMapping(TensorRecipe const& recipe, Geometry src, Region region);

// A standard's matrix in units of 1/16384.
struct MatrixWeights {
    struct Chroma {
        int u;
        int v;
    };

    int luma;
    int offset;  // of luma
    Chroma blue;
    Chroma green;
    Chroma red;
};
MatrixWeights matrixWeights(YuvMatrix matrix, YuvRange range);

// To the nearest half or whole number, of two as near to the even one. Nothing is said of what is
// no number.
std::uint16_t nearestHalf(float value);
float nearestWhole(float value);

}  // namespace model
