// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The part of the C interface that leads from frames to networks and back; `ox_cv_c.h` includes it
/// and says what holds for all functions.

#pragma once

#include <stdint.h>

#include "ox_core/ox_api.h"
#include "ox_cv/ox_cv_c.h"

#ifdef __cplusplus
extern "C" {
#endif

/// How a picture is fitted into a tensor.
enum {
    OX_FIT_STRETCH = 0,
    OX_FIT_LETTERBOX = 1,           ///< the whole picture, centred between bars
    OX_FIT_LETTERBOX_TOP_LEFT = 2,  ///< the same, with bars at the right and at the bottom
    OX_FIT_CROP = 3                 ///< the middle of the picture, as much as fills the tensor
};

/// The channels of a tensor, in their order.
enum { OX_COLOUR_BGR = 0, OX_COLOUR_RGB = 1, OX_COLOUR_GRAY = 2 };

/// The order of a tensor's dimensions.
enum {
    OX_LAYOUT_NCHW = 1,  ///< pictures, channels, rows, columns
    OX_LAYOUT_NHWC = 2   ///< pictures, rows, columns, channels
};

/// The elements of a tensor.
enum {
    OX_ELEMENT_UINT_8 = 1,
    OX_ELEMENT_INT_8 = 2,
    OX_ELEMENT_FLOAT_16 = 3,
    OX_ELEMENT_FLOAT_32 = 5
};

/// How YUV becomes colour.
enum {
    OX_MATRIX_LIBRARY = 0,  ///< BT.601, limited range, as the other operations
    OX_MATRIX_BT601 = 1,
    OX_MATRIX_BT709 = 2,
    OX_MATRIX_BT2020 = 3
};

/// What Y, U and V reach from and to; it counts only beside another matrix than the library's.
enum { OX_RANGE_LIMITED = 0, OX_RANGE_FULL = 1 };

/// What a network wants: `ox::TensorRecipe`. Fill it by `ox_recipe_init`, and then change fields.
/// Channels are counted in the tensor's order; gray takes the first entry of each three.
typedef struct ox_recipe {
    uint32_t struct_size;     ///< tells which fields there are; from `ox_recipe_init`
    int32_t width;            ///< of the tensor, in pixels: 0, so it has to be set
    int32_t height;           ///< the same
    int32_t fit;              ///< `OX_FIT_STRETCH`
    int32_t method;           ///< `OX_METHOD_AUTOMATIC`
    int32_t precision;        ///< of the filter: `OX_PRECISION_16`
    ox_filter const* filter;  ///< null; any other takes the place of `method`
    int32_t colour;           ///< `OX_COLOUR_RGB`
    int32_t layout;           ///< `OX_LAYOUT_NCHW`
    int32_t element;          ///< `OX_ELEMENT_FLOAT_32`
    float mean[3];            ///< 0: subtracted from bytes, 0 to 255
    float scale[3];           ///< 1: then multiplied by
    float quant_scale;        ///< 1: bytes of a tensor are divided by it
    int32_t zero_point;       ///< 0: the byte that stands for 0
    uint8_t bars[3];          ///< 0: a letterbox's, before mean and scale
    uint8_t reserved;         ///< 0
    int32_t matrix;           ///< `OX_MATRIX_LIBRARY`
    int32_t range;            ///< `OX_RANGE_LIMITED`
} ox_recipe;

/// Gives all fields the values that stand beside them.
/// @param struct_size `sizeof(ox_recipe)`
/// @return `OX_STATUS_INVALID_PARAMETER` for a size that this version of the library doesn't know
OX_API ox_status ox_recipe_init(ox_recipe* recipe, uint32_t struct_size);

/// The shape of a tensor whose elements follow one another.
typedef struct ox_tensor_info {
    int32_t sides[4];    ///< in the order of the recipe's layout
    int64_t strides[4];  ///< bytes from an element to the next one along each side
    uint64_t bytes;      ///< of all pictures
} ox_tensor_info;

/// What was read of a frame, and where it is in the tensor. Pixel i covers i to i + 1 of its axis.
typedef struct ox_mapping {
    ox_rect source;
    ox_rect inner;
} ox_mapping;

/// Fills tensors from frames: `ox::FrameToTensor`.
typedef struct ox_to_tensor ox_to_tensor;

/// @param recipe it and its filter are copied
/// @return `OX_STATUS_INVALID_PARAMETER`, with the name of the first field that is invalid;
///         `OX_STATUS_NULL_POINTER` for a callback that is null
OX_API ox_status ox_to_tensor_create(ox_recipe const* recipe, ox_to_tensor** to_tensor);

/// What a tensor of `batch` pictures needs.
/// @return `OX_STATUS_INVALID_PARAMETER` for a batch below 1, `OX_STATUS_CAPACITY_EXCEEDED` where a
///         stride is 2^31 and more
OX_API ox_status ox_to_tensor_get_info(ox_to_tensor const* to_tensor, int32_t batch,
                                       ox_tensor_info* info);

/// Fills a picture of a tensor: crops, scales, pads, converts and normalises. From the second frame
/// of equal geometry on nothing is allocated, unless there is a filter.
/// @param dst the picture's first element, with room for all of it; it needn't be aligned
/// @param row_stride bytes from row to row; 0 for rows that follow one another
/// @param channel_stride bytes from channel to channel; 0 for channels that follow one another. It
///        counts only for three channels with `OX_LAYOUT_NCHW`
/// @param mapping receives where the pixels come from; may be null
/// @return `OX_STATUS_NOT_SUPPORTED` for floats, 16 bits and formats without colour;
///         `OX_STATUS_OUT_OF_RANGE` for a region outside of the frame, and what `ox_reduce` returns
///         it for; `OX_STATUS_INVALID_PARAMETER` for a frame without pixels, or strides with which
///         rows or channels overlap
OX_API ox_status ox_to_tensor_run(ox_to_tensor* to_tensor, ox_frame const* src,
                                  ox_rect const* region, void* dst, int64_t row_stride,
                                  int64_t channel_stride, ox_mapping* mapping);

OX_API void ox_to_tensor_destroy(ox_to_tensor* to_tensor);

typedef struct ox_point {
    double x;
    double y;
} ox_point;

/// A box by its edges.
typedef struct ox_box {
    double left;
    double top;
    double right;
    double bottom;
} ox_box;

/// Points of a frame to the tensor's pixels, unclipped. `mapped` may be `points`.
OX_API ox_status ox_mapping_points_to_input(ox_mapping const* mapping, ox_point const* points,
                                            uint64_t count, ox_point* mapped);

/// Points of a tensor to the frame's pixels, unclipped. `mapped` may be `points`.
OX_API ox_status ox_mapping_points_to_source(ox_mapping const* mapping, ox_point const* points,
                                             uint64_t count, ox_point* mapped);

/// Boxes of a frame to the tensor's pixels, unclipped. `mapped` may be `boxes`.
OX_API ox_status ox_mapping_boxes_to_input(ox_mapping const* mapping, ox_box const* boxes,
                                           uint64_t count, ox_box* mapped);

/// Boxes of a tensor to the frame's pixels, unclipped. `mapped` may be `boxes`.
OX_API ox_status ox_mapping_boxes_to_source(ox_mapping const* mapping, ox_box const* boxes,
                                            uint64_t count, ox_box* mapped);

/// The rotation, scale and shift that take points nearest to other points: `ox::fitSimilarity`.
/// @param from, to x and y of `count` points, 2 and more
/// @param matrix receives two rows of three, for `ox_backend_warp_affine`; untouched after a
/// failure
/// @return `OX_STATUS_INVALID_PARAMETER` for fewer points, numbers that aren't finite, points that
///         are all the same, and where no turn is better than another
OX_API ox_status ox_fit_similarity(float const* from, float const* to, int32_t count,
                                   float* matrix);

#ifdef __cplusplus
}
#endif
