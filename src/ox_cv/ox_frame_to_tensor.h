// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// From a camera's frame to a network's input, in one pass; and back with what the network found.

#pragma once

#include <cstdint>
#include <memory>

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_geometry.h"
#include "ox_core/ox_tensor.h"
#include "ox_cv/ox_scale_kernel.h"
#include "ox_cv/ox_scaler_area.h"

namespace ox {

/// How a picture is fitted into a tensor.
enum TensorFit : std::uint32_t {
    TENSOR_FIT_STRETCH = 0,             ///< the sides are scaled each by its own factor
    TENSOR_FIT_LETTERBOX = 1,           ///< the whole picture, centred between bars
    TENSOR_FIT_LETTERBOX_TOP_LEFT = 2,  ///< the same, with bars at the right and at the bottom
    TENSOR_FIT_CROP = 3,                ///< the middle of the picture, as much as fills the tensor
};

/// How a picture is scaled. The first three have the numbers of `ScaleMethod`.
enum TensorMethod : std::uint32_t {
    TENSOR_METHOD_NEAREST = 0,
    TENSOR_METHOD_BILINEAR = 1,
    TENSOR_METHOD_AREA = 2,
    TENSOR_METHOD_AUTOMATIC = 3,  ///< area where both sides shrink to half or less, else bilinear
};

/// The channels of a tensor, in their order.
enum TensorColour : std::uint32_t {
    TENSOR_COLOUR_BGR = 0,
    TENSOR_COLOUR_RGB = 1,
    TENSOR_COLOUR_GRAY = 2,
};

/// How YUV becomes colour.
enum TensorMatrix : std::uint32_t {
    TENSOR_MATRIX_LIBRARY = 0,  ///< as `FormatConverter` does it
    TENSOR_MATRIX_BT601 = 1,
    TENSOR_MATRIX_BT709 = 2,
    TENSOR_MATRIX_BT2020 = 3,  ///< with constant coefficients for Y ("non-constant luminance")
};

/// What Y, U and V reach from and to; it counts only beside another matrix than the library's.
enum TensorRange : std::uint32_t {
    TENSOR_RANGE_LIMITED = 0,  ///< Y from 16 to 235, chroma from 16 to 240
    TENSOR_RANGE_FULL = 1,     ///< 0 to 255
};

/// What a network wants. Channels are counted in the tensor's order; gray takes the first entry of
/// each three.
struct TensorRecipe {
    std::int32_t width = 0;  ///< of the tensor, in pixels
    std::int32_t height = 0;
    TensorFit fit = TENSOR_FIT_STRETCH;
    TensorMethod method = TENSOR_METHOD_AUTOMATIC;
    /// Takes the place of `method` unless it is null. It must live while the recipe is used.
    IKernel* kernel = nullptr;
    ScalerPrecision precision = OX_SCALER_FIXED_POINT_16S;  ///< of the weights of `kernel`
    TensorColour colour = TENSOR_COLOUR_RGB;
    TensorFormat layout = TENSOR_FORMAT_NCHW;  ///< or `TENSOR_FORMAT_NHWC`
    TensorDataType element = TENSOR_FLOAT_32;  ///< or any other that has a name
    float mean[3]{0.0F, 0.0F, 0.0F};           ///< subtracted from bytes, 0 to 255
    float scale[3]{1.0F, 1.0F, 1.0F};          ///< then multiplied by
    float quantScale = 1.0F;                   ///< of `TENSOR_UINT_8` and `TENSOR_INT_8`, as:
    std::int32_t zeroPoint = 0;                ///< the byte that stands for 0
    std::uint8_t bars[3]{0, 0, 0};             ///< a letterbox's, before mean and scale
    TensorMatrix matrix = TENSOR_MATRIX_LIBRARY;
    TensorRange range = TENSOR_RANGE_LIMITED;
};

/// A box of a picture, by its edges.
struct PictureBox {
    double left = 0.0;
    double top = 0.0;
    double right = 0.0;
    double bottom = 0.0;
};

/// Where the pixels of a tensor come from. Pixel i covers i to i + 1 of its axis, so 0 is the left
/// edge of the first pixel and 0.5 its middle. All of it is computed in double, in the order
/// written here; nothing is clipped.
struct OX_API PictureMapping {
    Rect source;  ///< what was read of the frame, x0, y0, w, h
    Rect inner;   ///< where it is in the tensor, left, top, innerW, innerH

    /// left + (x - x0) * innerW / w
    double toInputX(double x) const;
    /// top + (y - y0) * innerH / h
    double toInputY(double y) const;
    /// x0 + (x - left) * w / innerW
    double toSourceX(double x) const;
    /// y0 + (y - top) * h / innerH
    double toSourceY(double y) const;
    /// A box by its four edges, from the frame to the tensor.
    PictureBox toInput(PictureBox const& box) const;
    /// From the tensor to the frame.
    PictureBox toSource(PictureBox const& box) const;
};

/// Fills tensors from frames: crops, scales, pads, converts and normalises, row by row while the
/// pixels are in the cache, straight into the tensor.
///
///     TensorRecipe recipe;
///     recipe.width = recipe.height = 640;
///     recipe.fit = TENSOR_FIT_LETTERBOX;
///     recipe.scale[0] = recipe.scale[1] = recipe.scale[2] = 1.0F / 255.0F;
///     FrameToTensor to_tensor;
///     to_tensor.reuse(recipe);
///     Tensor input;
///     input.reuse(to_tensor.layout(1), DeviceContext::cpuContext());
///     PictureMapping const mapping = to_tensor.run(camera_frame, emptyRoi(), input, 0);
///     PictureBox const found = mapping.toSource(box_of_the_network);
///
/// # What is read
///
/// `FRAME_GRAY8`, `FRAME_RGB24`, `FRAME_RGB_PLANAR`, `FRAME_BGR24`, `FRAME_BGR_PLANAR` and all YUV
/// formats, from `FRAME_I420` to `FRAME_YUV444_PLANAR`, in any geometry and by each method.
///
/// A region without two positive sides, as `emptyRoi()`, is the whole frame. It is read as
/// `getRegion` narrows a frame: chroma that two pixels share begins at x / 2, and at y / 2 for
/// 4:2:0, rounded down. So from an odd origin on, luma and chroma are half a chroma sample apart;
/// even origins avoid that. `FRAME_YUYV` and `FRAME_UYVY` can't be cut apart: their region begins
/// at x rounded down to even and keeps its width, and the mapping says so.
///
/// # Where it goes
///
/// Let w x h be what is read, W x H the recipe's size. Divisions of whole numbers cut off.
/// - `TENSOR_FIT_STRETCH`: w x h goes to innerW x innerH = W x H.
/// - `TENSOR_FIT_LETTERBOX`: if W * h <= w * H then innerW = W and innerH = (2 * h * W + w) /
///   (2 * w), at least 1 and at most H; else innerH = H and innerW = (2 * w * H + h) / (2 * h), at
///   least 1 and at most W. Small pictures are enlarged. left = (W - innerW) / 2, top = (H -
///   innerH) / 2. With `TENSOR_FIT_LETTERBOX_TOP_LEFT` both are 0.
/// - `TENSOR_FIT_CROP`: if w * H >= h * W then ch = h and cw = (2 * h * W + H) / (2 * H), at
///   least 1 and at most w; else cw = w and ch = (2 * w * H + W) / (2 * W), at least 1 and at most
///   h. Only cw x ch is read, from ((w - cw) / 2, (h - ch) / 2) on, counted from the region's
///   origin. Each offset is rounded down to even if pixels share chroma along its axis. It goes to
///   W x H.
///
/// # Which bytes
///
/// The same as by these steps, each with new objects, into frames that are cleared first:
/// 1. `FRAME_RGB24` and the planar formats become `FRAME_BGR24` (`FRAME_RGB_PLANAR` through
///    `FRAME_RGB24`), `FRAME_YUYV` and `FRAME_UYVY` become `FRAME_NV16`, whose samples are theirs.
/// 2. `Scaler` scales that to innerW x innerH, or `ScalerConvolutional` if the recipe has a kernel,
///    also where the size stays. `TENSOR_METHOD_AUTOMATIC` is `OX_SCALE_AREA` if 2 * innerW <= w
///    and 2 * innerH <= h, with w and h of the rectangle that is read in the end, else
///    `OX_SCALE_BILINEAR`. Odd sizes of 4:2:0 stay odd.
/// 3. `FormatConverter` makes `FRAME_BGR24` of it, or `FRAME_GRAY8` for `TENSOR_COLOUR_GRAY`: the Y
///    of YUV formats as it is, and of colours what `FRAME_BGR24` gives.
/// 4. Channels are put into the recipe's order. Around the picture are bars of the recipe's colour.
/// 5. v = (float(byte) - mean) * scale for each byte, the bars' too, each operation rounded once to
///    float. This is the number with `TENSOR_FLOAT_32`. With `TENSOR_FLOAT_16` it is rounded to the
///    nearest half, ties to even, however few there are; from 65520 on halves are infinite. With
///    `TENSOR_UINT_8` and `TENSOR_INT_8`, v / quantScale is rounded to float, then to the nearest
///    whole number, ties to even; float(zeroPoint) is added; the sum is clamped to 0 to 255, or to
///    -128 to 127.
///
/// With another matrix than the library's, the third step is this for colours of YUV formats. Each
/// pixel has the chroma sample that `FormatConverter` gives it, nothing is interpolated, and each
/// channel is (cy * (Y - o) + a * (U - 128) + b * (V - 128) + 8192) >> 14, clamped to 0 to 255:
///
/// | matrix, range | o | cy | B: a | G: a | G: b | R: b |
/// |---|---|---|---|---|---|---|
/// | BT.601, limited | 16 | 19077 | 33050 | -6419 | -13320 | 26149 |
/// | BT.601, full | 0 | 16384 | 29032 | -5638 | -11700 | 22970 |
/// | BT.709, limited | 16 | 19077 | 34610 | -3494 | -8731 | 29372 |
/// | BT.709, full | 0 | 16384 | 30402 | -3069 | -7670 | 25802 |
/// | BT.2020, limited | 16 | 19077 | 35091 | -3069 | -10657 | 27503 |
/// | BT.2020, full | 0 | 16384 | 30825 | -2696 | -9361 | 24160 |
///
/// (B has no b, R no a.) The table is computed from Kr, Kb of 0.299, 0.114; 0.2126, 0.0722; 0.2627,
/// 0.0593; and 255 / 219 for Y, 255 / 224 for chroma in the limited range.
///
/// No byte depends on what the object did before, nor on the processor. The kernel is asked anew
/// for each picture, so it may change between two.
///
/// # Memory and threads
///
/// From the second picture of equal geometry on nothing is allocated. What is held beside the
/// recipe is tables for a row and a column, the source rows that a row of the tensor needs, and two
/// rows of packed pixels. An object serves one thread at a time.
class OX_API FrameToTensor {
  public:
    FrameToTensor();
    FrameToTensor(FrameToTensor const&) = delete;
    FrameToTensor& operator=(FrameToTensor const&) = delete;
    ~FrameToTensor();

    /// Takes a recipe.
    /// @throws Exception `StatusInvalidParameter`, which names the first field, in their order,
    ///         that is invalid: a side below 1, an enumerator without a name, a number that isn't
    ///         finite, a `quantScale` that isn't above 0. The former recipe is then kept
    void reuse(TensorRecipe const& recipe);

    /// True once there is a recipe.
    bool initialized() const;

    /// The layout of a tensor of so many pictures, tightly packed: {batch, channels, height, width}
    /// or {batch, height, width, channels}, with 1 or 3 channels.
    /// @throws Exception `StatusNotInitialized` without a recipe; `StatusInvalidParameter` for a
    ///         batch below 1; `StatusCapacityExceeded` where a stride is 2^31 and more
    TensorLayout layout(std::int32_t batch) const;

    /// Fills picture `index` of a tensor, and nothing else.
    /// @param region of `src`
    /// @param dst has the type, the format and the sides that `layout` gives, and any batch.
    ///        Strides may be larger if they are multiples of an element and neither rows nor
    ///        channels overlap; elements of a row (for `TENSOR_FORMAT_NHWC`: all channels of it)
    ///        follow one another. It is never made anew, and has no byte in common with `src`
    /// @throws Exception, in this order, before anything is written: `StatusNotInitialized` without
    ///         a recipe; `StatusInputNotInitialized` for a `src` that isn't initialized;
    ///         `StatusNotSupported` for its format; `StatusInvalidParameter` if it has no pixels or
    ///         isn't on the CPU; `StatusOutOfRange` for a region outside of it;
    ///         `StatusInputNotInitialized` for a `dst` without storage; `StatusInvalidParameter` if
    ///         it isn't on the CPU, or for another type, format, size or strides than above;
    ///         `StatusOutOfRange` for an index outside its batch; then what `Scaler::reuse`, or
    ///         `ScalerConvolutional::reuse` and the kernel throw (`StatusOutOfRange` where a
    ///         plane's side grows, shrinks by more than 32 or has more than 8192 samples, or where
    ///         the kernel is wider than a plane is high);
    ///         `StatusCapacityExceeded` if memory is exhausted
    PictureMapping run(Frame const& src, Rect region, Tensor& dst, std::int32_t index);

    /// Fills a picture in memory of the caller's.
    /// @param dst of the first element; it needn't be aligned
    /// @param row_stride bytes from row to row
    /// @param channel_stride bytes from channel to channel; it counts only for three channels with
    ///        `TENSOR_FORMAT_NCHW`
    /// @throws Exception the same; for the destination `StatusNullPointer` for null, then
    ///         `StatusInvalidParameter` for strides that aren't multiples of an element, or with
    ///         which rows or channels overlap
    PictureMapping run(Frame const& src, Rect region, void* dst, std::int64_t row_stride,
                       std::int64_t channel_stride);

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

/// The similarity (a rotation, one scale, a shift) that takes points nearest to other points, by
/// the sum of squared distances. Five points of a face and where they are in a network's input give
/// the matrix for `ICvBackend::warpAffine`, whose pixels have whole coordinates in their middles.
///
/// In double, with sums from the first point on: the means (mx, my) of `from` and (mu, mv) of `to`;
/// for each point x, y, u, v less their means, the sums of x * x + y * y to s, of x * u + y * v to
/// p and of x * v - y * u to q; a = p / s, b = q / s; then
///
///     a  -b  mu - (a * mx - b * my)
///     b   a  mv - (b * mx + a * my)
///
/// each rounded to float.
/// @param from, to `count` points, x and y
/// @param matrix receives two rows of three numbers
/// @throws Exception `StatusNullPointer` for null; `StatusInvalidParameter` for fewer than two
///         points, for points that aren't finite, where all points of `from` or all of `to` are the
///         same, where no turn is better than another (p * p + q * q is at most 1e-20 * s * t, with
///         t the sum of u * u + v * v, as for a square and its mirror image), and where a number
///         comes out as infinite. `matrix` is untouched then
OX_API void fitSimilarity(float const (*from)[2], float const (*to)[2], std::int32_t count,
                          float (*matrix)[3]);

}  // namespace ox
