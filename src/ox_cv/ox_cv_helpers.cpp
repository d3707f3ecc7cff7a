// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_helpers.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <limits>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_impl_rules.h"
#include "ox_cv/ox_packed_422_resizer.h"
#include "simd/simd.h"

namespace ox {

namespace {

/// Clears what the direct path from `FRAME_NV12` to `FRAME_BGR24` doesn't write, so that no byte of
/// old storage is handed out.
void clearUnwritten(Frame const& src, Frame& dst) {
    int const written = dst.width() / impl::directColumns * impl::directColumns;
    if (src.format() == FRAME_NV12 && dst.format() == FRAME_BGR24 && written < dst.width()) {
        getRegion(dst, {written, 0, dst.width() - written, dst.height()}).setZero();
    }
}

constexpr impl::Place here{"src/ox_cv/ox_cv_helpers"};

struct ByteRange {
    std::uintptr_t begin;
    std::uintptr_t end;
};

/// Addresses from a plane's first byte to behind its last one.
ByteRange rangeOf(Frame const& frame, int plane) {
    FramePlane const& p = frame.layout().plane[plane];
    auto const begin = reinterpret_cast<std::uintptr_t>(frame.planeData(plane));
    auto const rows = static_cast<std::uint64_t>(p.height);
    return {begin, rows == 0
                       ? begin
                       : begin + (rows - 1) * static_cast<std::uint64_t>(p.stride) + p.rowBytes};
}

bool overlap(Frame const& a, Frame const& b) {
    for (int i = 0; i < a.layout().planeCount; ++i) {
        for (int j = 0; j < b.layout().planeCount; ++j) {
            ByteRange const first = rangeOf(a, i);
            ByteRange const second = rangeOf(b, j);
            if (first.begin < second.end && second.begin < first.end) {
                return true;
            }
        }
    }
    return false;
}

/// `source`, or a copy of it if it shares pixels with `dst`.
Frame apartFrom(Frame const& dst, Frame const& source) {
    if (!overlap(source, dst)) {
        return source;
    }
    Frame copy;
    source.copyTo(copy);
    return copy;
}

/// The region that makes `colorCvt` choose its path by the strides of `source`, even for a copy
/// with other strides. A region over the whole frame rules out the direct path.
Rect regionByStrides(Frame const& source) {
    return source.format() == FRAME_NV12 && !impl::hasDirectStrides(source.layout())
               ? Rect{0, 0, source.width(), source.height()}
               : Rect{};
}

/// Strides of elements of twice the size.
TensorSize doubled(TensorSize strides) {
    for (std::uint64_t i = 0; i < strides.count; ++i) {
        std::int32_t& stride = strides.values[i];
        if (stride > std::numeric_limits<std::int32_t>::max() / 2) {
            here.fail({StatusCapacityExceeded, "tensorFp16ToFp32"}, "Stride %d is too large.",
                      stride);
        }
        stride *= 2;
    }
    return strides;
}

}  // namespace

Rect const& emptyRoi() {
    static Rect const roi;
    return roi;
}

Frame const& emptyFrame() {
    static Frame const frame;
    return frame;
}

bool invertAffineTransform(float const* matrix, float* inverse) {
    // Copied, since the two may be the same memory.
    float const m0 = matrix[0];
    float const m1 = matrix[1];
    float const m3 = matrix[3];
    float const m4 = matrix[4];
    double const m2 = matrix[2];
    double const m5 = matrix[5];

    float const determinant = std::fma(m0, m4, -(m1 * m3));
    double const scale = determinant != 0.0F ? 1.0 / double{determinant} : 0.0;
    double const a11 = double{m4} * scale;
    double const a22 = double{m0} * scale;
    double const a12 = -double{m1} * scale;
    double const a21 = -double{m3} * scale;
    double const b1 = std::fma(-a11, m2, -(m5 * a12));
    double const b2 = std::fma(-a21, m2, -(m5 * a22));

    double const result[6] = {a11, a12, b1, a21, a22, b2};
    std::transform(result, result + 6, inverse,
                   [](double number) { return static_cast<float>(number); });
    return determinant != 0.0F;
}

void colorConvert(Frame const& src, FrameFormat format, Frame& dst) {
    if (!src.initialized() || format == FRAME_FORMAT_NONE) {
        dst.clear();
        return;
    }
    // `dst` may be the only other handle on these pixels, or `src` itself.
    Frame const source = src;  // NOLINT(performance-unnecessary-copy-initialization)
    if (source.format() == format) {
        source.copyTo(dst);
        return;
    }
    CvBackendSimd backend;
    dst.reuse(format, source.size(), DeviceContext(), 0);
    Frame const pixels = apartFrom(dst, source);
    clearUnwritten(pixels, dst);
    backend.colorCvt(pixels, dst, regionByStrides(source));
}

void resizeFrame(Frame const& src, Size const& size, Frame& dst, ResizeMethod method) {
    if (!src.initialized() || size.width <= 0 || size.height <= 0) {
        dst.clear();
        return;
    }
    Frame const source = src;  // NOLINT(performance-unnecessary-copy-initialization): as above
    if (source.size() == size) {
        source.copyTo(dst);
        return;
    }
    CvBackendSimd backend;
    backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
    dst.reuse(source.format(), size, DeviceContext(), 0);
    if (source.size().empty()) {
        dst.setZero();  // there is nothing to resample
    }
    backend.resize(apartFrom(dst, source), dst, Rect{}, Rect{});
}

void resizePacked422(ICvBackend& backend, Frame const& src, Frame& dst) {
    Packed422Resizer().resize(backend, src, dst);
}

void tensorFp16ToFp32(Tensor const& src, Tensor& dst) {
    OX_ASSERT(src.initialized() && src.layout().dataType() == TENSOR_FLOAT_16);
    OX_ASSERT(src.deviceContext() == DeviceContext::cpuContext() &&
              src.deviceContext() == dst.deviceContext());
    Tensor const source = src;  // NOLINT(performance-unnecessary-copy-initialization): as above
    TensorLayout const& layout = source.layout();
    // The channel order isn't taken over, on purpose.
    dst.reuse(TensorLayout(TENSOR_FLOAT_32, layout.format(), layout.size(),
                           doubled(layout.strides()), TENSOR_CHANNEL_ORDER_NONE),
              DeviceContext());
    convertFp16ToFp32(static_cast<unsigned short const*>(static_cast<void const*>(source.data())),
                      layout.totalBytes() / 2, static_cast<float*>(static_cast<void*>(dst.data())));
}

void convertFp16ToFp32(unsigned short const* src, unsigned long count, float* dst) {
    Simd::HalvesToFloats(src, count, dst);
}

void convertFp32ToFp16(float const* src, unsigned long count, unsigned short* dst) {
    Simd::FloatsToHalves(src, count, dst);
}

}  // namespace ox
