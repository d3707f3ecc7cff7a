// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The library's C interface: C99, and C++ alike. Bindings of other languages build on it.
///
///     ox_frame* camera = NULL;
///     if (ox_frame_wrap(OX_FRAME_NV12, 1920, 1080, planes, strides, 2, &camera) != OX_STATUS_OK) {
///         fprintf(stderr, "%s\n", ox_last_error());
///     }
///
/// # Handles
///
/// What a function with `create`, `wrap`, `region` or `copy` in its name gives belongs to the
/// caller, until the `destroy` of its type. The handle is null after a failure. `destroy` takes
/// null and does nothing then; every other function refuses null with `OX_STATUS_NULL_POINTER`,
/// unless it says that null is allowed. Structs and arrays are read during the call only.
///
/// # Failures
///
/// Functions that can fail return a status. No C++ exception leaves them. `ox_last_error` has the
/// text; it may name the C++ class and parameter that refused. Beside what each function says, all
/// return `OX_STATUS_CAPACITY_EXCEEDED` where memory is exhausted (but see `ox_backend`). A handle
/// can be used after any failure.
///
/// # Threads
///
/// A handle serves one thread at a time; a frame may be read by several. Different handles are
/// independent. Pixels that handles share aren't synchronised.
///
/// # Numbers
///
/// Sizes and positions are in pixels, strides in bytes. Enumerators are passed as `int32_t`; values
/// that have no name are refused. Each operation gives the bytes of the C++ one that it names.

#pragma once

#include <stdint.h>

#include "ox_core/ox_api.h"

#ifdef __cplusplus
extern "C" {
#endif

/// 0, or why a call failed. The numbers are those of the C++ `ox::Status`.
typedef int32_t ox_status;

enum {
    OX_STATUS_OK = 0,
    OX_STATUS_ASSERTION_FAILED = 2,
    OX_STATUS_NULL_POINTER = 4,
    OX_STATUS_OUT_OF_RANGE = 5,
    OX_STATUS_INVALID_PARAMETER = 6,
    OX_STATUS_NOT_INITIALIZED = 7,
    OX_STATUS_NOT_SUPPORTED = 8,
    OX_STATUS_INPUT_NOT_INITIALIZED = 14,
    OX_STATUS_CAPACITY_EXCEEDED = 19,
    OX_STATUS_UNSUPPORTED_FORMAT = 29,
    OX_STATUS_FOREIGN_EXCEPTION = -1  ///< a callback threw what isn't the library's
};

/// Pixel formats; `ox::FrameFormat` says how their samples lie.
enum {
    OX_FRAME_GRAY8 = 1,
    OX_FRAME_RGB24 = 2,
    OX_FRAME_RGB_PLANAR = 3,
    OX_FRAME_BGR24 = 4,
    OX_FRAME_BGR_PLANAR = 5,
    OX_FRAME_I420 = 6,
    OX_FRAME_YV12 = 7,
    OX_FRAME_NV12 = 8,
    OX_FRAME_NV21 = 9,
    OX_FRAME_YV16 = 10,
    OX_FRAME_YUYV = 11,
    OX_FRAME_UYVY = 12,
    OX_FRAME_NV16 = 13,
    OX_FRAME_YUV444 = 14,
    OX_FRAME_YUV444_PLANAR = 15,
    OX_FRAME_C2_8U = 16,
    OX_FRAME_C3_8U = 17,
    OX_FRAME_C4_8U = 18,
    OX_FRAME_C1_16U = 19,
    OX_FRAME_C1_32U = 20,
    OX_FRAME_GRAY_32F = 24,
    OX_FRAME_BGR_32F = 25,
    OX_FRAME_BGR_32F_PLANAR = 26
};

/// A rectangle of pixels. Functions take null for the whole frame, and a rectangle without two
/// positive sides as well.
typedef struct ox_rect {
    int32_t x;
    int32_t y;
    int32_t width;
    int32_t height;
} ox_rect;

/// A shared handle on pixels: `ox::Frame`.
typedef struct ox_frame ox_frame;
/// Whole-frame operations: `ox::CvBackendSimd` or `ox::CvBackendBase`. Where memory runs out inside
/// a resizer or a warp of the former, the process ends.
typedef struct ox_backend ox_backend;

/// The library's version, such as "0.1.0". Lives forever.
OX_API char const* ox_version(void);

/// The text of this thread's last call that failed; empty before the first one. It stays until the
/// thread's next failure, and is cut at 1023 bytes.
OX_API char const* ox_last_error(void);

/// A format's name in C++, such as "FRAME_NV12"; "unknown" for a number without one. Lives forever.
OX_API char const* ox_format_name(int32_t format);

/// A plane of a frame.
typedef struct ox_plane {
    int32_t width;        ///< pixels in a row of this plane
    int32_t height;       ///< rows of this plane
    int32_t channels;     ///< interleaved channels a pixel
    int32_t bits;         ///< a channel: 8, 16 or 32
    int64_t stride;       ///< bytes from a row's start to the next one's
    uint64_t row_bytes;   ///< bytes of pixels in a row
    unsigned char* data;  ///< of the first row; valid as long as the pixels
} ox_plane;

typedef struct ox_frame_info {
    int32_t format;
    int32_t width;
    int32_t height;
    int32_t plane_count;
    ox_plane planes[4];  ///< those past `plane_count` are zero
} ox_frame_info;

/// A frame with memory of its own, whose pixels are undefined.
/// @param alignment of strides, in bytes; 0 stands for 64
/// @return `OX_STATUS_INVALID_PARAMETER` for a size that is empty, `OX_STATUS_UNSUPPORTED_FORMAT`
OX_API ox_status ox_frame_create(int32_t format, int32_t width, int32_t height, uint64_t alignment,
                                 ox_frame** frame);

/// A frame on memory of the caller's, which has to outlive the handle and all regions of it. It is
/// written only where the frame is a destination.
/// @param planes `plane_count` addresses, in the order of the format
/// @param strides as many, in bytes; null for rows that follow one another
/// @param plane_count as the format has it
/// @return `OX_STATUS_INVALID_PARAMETER` for a format without planes, another count, a side below
///         zero, a stride smaller than the row's bytes; `OX_STATUS_NULL_POINTER` for a null address
OX_API ox_status ox_frame_wrap(int32_t format, int32_t width, int32_t height, void* const* planes,
                               int64_t const* strides, int32_t plane_count, ox_frame** frame);

/// A second handle on a frame's pixels, narrowed to a rectangle. Memory that the frame owns lives
/// as long as any handle on it. `ox::getRegion` says where chroma begins.
/// @param region null gives the whole; a side of 0 gives a frame without pixels
/// @return `OX_STATUS_OUT_OF_RANGE` unless the rectangle lies inside the frame
OX_API ox_status ox_frame_region(ox_frame const* frame, ox_rect const* region, ox_frame** part);

/// A frame with memory of its own and the same pixels.
OX_API ox_status ox_frame_copy(ox_frame const* frame, ox_frame** copy);

/// Sets all pixels to 0; bytes between rows stay.
OX_API ox_status ox_frame_set_zero(ox_frame* frame);

OX_API ox_status ox_frame_get_info(ox_frame const* frame, ox_frame_info* info);

OX_API void ox_frame_destroy(ox_frame* frame);

enum {
    OX_BACKEND_SIMD = 0,  ///< vector kernels on whole planes
    OX_BACKEND_BASE = 1   ///< the row pipeline: more formats, odd sizes; other bytes
};

/// Properties of a backend; each holds a method.
enum {
    OX_PROPERTY_RESIZE_METHOD = 1,
    OX_PROPERTY_WARP_METHOD = 2  ///< not of `OX_BACKEND_BASE`, which doesn't warp
};

/// Methods of scaling. The last one is for recipes alone.
enum {
    OX_METHOD_NEAREST = 0,
    OX_METHOD_BILINEAR = 1,  ///< at first
    OX_METHOD_AREA = 2,
    OX_METHOD_AUTOMATIC = 3  ///< area where both sides shrink to half or less, else bilinear
};

/// A backend, which keeps its buffers from call to call.
/// @return `OX_STATUS_INVALID_PARAMETER` for an unknown kind
OX_API ox_status ox_backend_create(int32_t kind, ox_backend** backend);

/// @return `OX_STATUS_NOT_SUPPORTED` for a property that the backend doesn't have;
///         `OX_STATUS_ASSERTION_FAILED` of `OX_BACKEND_SIMD` for an unknown method, which
///         `OX_BACKEND_BASE` refuses in the next resize
OX_API ox_status ox_backend_set_property(ox_backend* backend, int32_t property, int32_t value);

/// @return `OX_STATUS_NOT_SUPPORTED` for a property that the backend doesn't have
OX_API ox_status ox_backend_get_property(ox_backend const* backend, int32_t property,
                                         int32_t* value);

/// Scales a region to the destination's size, and converts it to its format: `convert` of
/// `ox::ICvBackend`, whose headers say which formats each backend takes, and which columns the
/// quick way from NV12 to BGR24 leaves unwritten. As in the following ones, the destination is a
/// frame that the caller made; it isn't made anew.
/// @return `OX_STATUS_ASSERTION_FAILED` for a size that doesn't fit, `OX_STATUS_OUT_OF_RANGE` for a
///         region outside of its frame, `OX_STATUS_NOT_SUPPORTED`, `OX_STATUS_UNSUPPORTED_FORMAT`
///         and others for pairs of formats that aren't done
OX_API ox_status ox_backend_convert(ox_backend* backend, ox_frame const* src, ox_rect const* region,
                                    ox_frame* dst);

/// Converts a region to the destination's format; the destination has the region's size.
/// @return as `ox_backend_convert`
OX_API ox_status ox_backend_convert_colour(ox_backend* backend, ox_frame const* src,
                                           ox_rect const* region, ox_frame* dst);

/// Scales a region to a region of a frame of the same format.
/// @return as `ox_backend_convert`
OX_API ox_status ox_backend_resize(ox_backend* backend, ox_frame const* src,
                                   ox_rect const* src_region, ox_frame* dst,
                                   ox_rect const* dst_region);

/// Scales YUYV or UYVY by their packing, which `ox_backend_resize` mixes luma and chroma of.
/// @return `OX_STATUS_INVALID_PARAMETER` for frames without pixels, `OX_STATUS_UNSUPPORTED_FORMAT`
///         for other formats
OX_API ox_status ox_backend_resize_packed_422(ox_backend* backend, ox_frame const* src,
                                              ox_frame* dst);

/// Warps a region into the whole of a frame of the same format; what it doesn't cover becomes 0.
/// @param matrix two rows of three: source pixel (x, y) goes to (m[0] x + m[1] y + m[2],
///        m[3] x + m[4] y + m[5])
/// @param invert other than 0 inverts the matrix first, which then leads from destination to source
/// @return `OX_STATUS_NOT_SUPPORTED` for `OX_BACKEND_BASE`, or for a matrix without an inverse
OX_API ox_status ox_backend_warp_affine(ox_backend* backend, ox_frame const* src,
                                        ox_rect const* region, ox_frame* dst, float const* matrix,
                                        int32_t invert);

/// Adds a value to floats, in place. `OX_BACKEND_BASE` takes of the region the size alone, on
/// purpose, and changes the block of that size at the top left.
OX_API ox_status ox_backend_add(ox_backend* backend, ox_frame* frame, ox_rect const* region,
                                float value);

/// Multiplies floats, in place; regions as in `ox_backend_add`. Other formats are refused, and
/// `OX_BACKEND_SIMD` clears their region before, on purpose.
OX_API ox_status ox_backend_multiply(ox_backend* backend, ox_frame* frame, ox_rect const* region,
                                     float value);

OX_API void ox_backend_destroy(ox_backend* backend);

/// Filters for `ox_reduce` and recipes; `ox_cv/ox_classic_kernels.h` has their formulas.
enum {
    OX_FILTER_CALLBACK = 0,
    OX_FILTER_BOX = 1,
    OX_FILTER_TRIANGLE = 2,
    OX_FILTER_MITCHELL_NETRAVALI = 3,
    OX_FILTER_CATMULL_ROM = 4,
    OX_FILTER_LANCZOS3 = 5
};

/// A filter. The callbacks are those of `OX_FILTER_CALLBACK`, and otherwise not looked at. The
/// `scale` that they get is the source's extent over the destination's, 1 to 32. The context isn't
/// looked at, and must live as long as what the filter is given to. Callbacks are called during
/// `ox_reduce` and `ox_to_tensor_run`, on the caller's thread.
typedef struct ox_filter {
    int32_t kind;
    /// The filter's value at a distance from its centre, in source pixels. It needn't have an
    /// integral of 1, but not of 0.
    float (*value)(void* context, float scale, float distance);
    /// Full width in source pixels.
    float (*aperture)(void* context, float scale);
    void* context;
} ox_filter;

/// Bits of the weights of filters.
enum {
    OX_PRECISION_8 = 8,  ///< up to 63 taps
    OX_PRECISION_16 = 16
};

/// Reduces a region to the size of a frame of the same format, by a filter:
/// `ox::ScalerConvolutional`, which says what formats it takes.
/// @return `OX_STATUS_INVALID_PARAMETER` for another format, an unknown filter or precision;
///         `OX_STATUS_NULL_POINTER` for a callback that is null, or a filter whose sum is about 0;
///         `OX_STATUS_OUT_OF_RANGE` where a side grows, shrinks by more than 32 or has more than
///         8192 samples, or where the filter is wider than the source is high;
///         `OX_STATUS_CAPACITY_EXCEEDED` for a filter that is too wide; `OX_STATUS_NOT_SUPPORTED`
///         for the format
OX_API ox_status ox_reduce(ox_frame const* src, ox_rect const* region, ox_frame* dst,
                           ox_filter const* filter, int32_t precision);

#ifdef __cplusplus
}
#endif

#include "ox_cv/ox_cv_c_tensor.h"
