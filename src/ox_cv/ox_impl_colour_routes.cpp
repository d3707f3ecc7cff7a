// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_colour_routes.h"

#include <algorithm>
#include <iterator>

#include "ox_cv/ox_impl_planes.h"
#include "ox_cv/ox_impl_rules.h"
#include "simd/simd.h"

namespace ox::impl {

namespace {

using enum ColourRoute;

constexpr ColourRouteRecord records[] = {
    {FRAME_GRAY8, FRAME_BGR24, ExpandGray},
    {FRAME_RGB24, FRAME_RGB_PLANAR, SplitPixels},
    {FRAME_RGB24, FRAME_BGR24, SwapRedBlue},
    {FRAME_RGB24, FRAME_BGR_32F, BytesToFloats},
    {FRAME_RGB24, FRAME_BGR_32F_PLANAR, TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_RGB_PLANAR, FRAME_RGB24, MergePixels},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F, TwoSteps, FRAME_RGB24},
    {FRAME_RGB_PLANAR, FRAME_BGR_32F_PLANAR, BytesToFloats},
    {FRAME_BGR24, FRAME_GRAY8, BgrToGray},
    {FRAME_BGR24, FRAME_RGB24, SwapRedBlue},
    {FRAME_BGR24, FRAME_BGR_PLANAR, SplitPixels},
    {FRAME_BGR24, FRAME_I420, BgrToI420},
    {FRAME_BGR24, FRAME_NV12, BgrToNv12},
    {FRAME_BGR24, FRAME_YUV444, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_BGR24, FRAME_YUV444_PLANAR, BgrToYuv444},
    {FRAME_BGR24, FRAME_BGR_32F, BytesToFloats},
    {FRAME_BGR24, FRAME_BGR_32F_PLANAR, TwoSteps, FRAME_BGR_PLANAR},
    {FRAME_BGR_PLANAR, FRAME_BGR24, MergePixels},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F, TwoSteps, FRAME_BGR24},
    {FRAME_BGR_PLANAR, FRAME_BGR_32F_PLANAR, BytesToFloats},
    {FRAME_I420, FRAME_GRAY8, CopyLuma},
    {FRAME_I420, FRAME_RGB24, I420ToPacked},
    {FRAME_I420, FRAME_BGR24, I420ToPacked},
    {FRAME_I420, FRAME_NV12, MergeChroma},
    {FRAME_NV12, FRAME_GRAY8, CopyLuma},
    {FRAME_NV12, FRAME_RGB24, SemiPlanarToPacked},
    {FRAME_NV12, FRAME_BGR24, SemiPlanarToPacked},
    {FRAME_NV12, FRAME_I420, SplitChroma},
    {FRAME_NV12, FRAME_NV21, ExchangeChroma},
    {FRAME_NV21, FRAME_GRAY8, CopyLuma},
    {FRAME_NV21, FRAME_RGB24, SemiPlanarToPacked},
    {FRAME_NV21, FRAME_BGR24, SemiPlanarToPacked},
    {FRAME_NV21, FRAME_I420, SplitChroma},
    {FRAME_NV21, FRAME_NV12, ExchangeChroma},
    {FRAME_YUV444, FRAME_GRAY8, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_BGR24, TwoSteps, FRAME_YUV444_PLANAR},
    {FRAME_YUV444, FRAME_YUV444_PLANAR, SplitPixels},
    {FRAME_YUV444_PLANAR, FRAME_GRAY8, CopyLuma},
    {FRAME_YUV444_PLANAR, FRAME_BGR24, Yuv444ToBgr},
    {FRAME_YUV444_PLANAR, FRAME_YUV444, MergePixels},
    {FRAME_BGR_32F, FRAME_RGB24, FloatsToBytes},
    {FRAME_BGR_32F, FRAME_BGR24, FloatsToBytes},
    {FRAME_BGR_32F, FRAME_RGB_PLANAR, TwoSteps, FRAME_RGB24},
    {FRAME_BGR_32F, FRAME_BGR_PLANAR, TwoSteps, FRAME_BGR24},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB_PLANAR, FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR_PLANAR, FloatsToBytes},
    {FRAME_BGR_32F_PLANAR, FRAME_RGB24, TwoSteps, FRAME_RGB_PLANAR},
    {FRAME_BGR_32F_PLANAR, FRAME_BGR24, TwoSteps, FRAME_BGR_PLANAR},
};

void copyPlane(PlaneView src, PlaneView dst, std::size_t width, std::size_t height) {
    Simd::CopyPlaneRows(src.data, src.stride, width, height, 1, dst.data, dst.stride);
}

/// Luma's rows are those of the frame.
void copyLuma(Frame const& region, Frame const& dst) {
    PlaneView const luma = planeOf(region, 0);
    copyPlane(luma, planeOf(dst, 0), luma.width, luma.height);
}

template <class Kernel>
void runPacked(Kernel const& kernel, Frame const& region, Frame const& dst) {
    PlaneView const from = planeOf(region, 0);
    PlaneView const to = planeOf(dst, 0);
    kernel(from.data, from.width, from.height, from.stride, to.data, to.stride);
}

void splitPixels(Frame const& region, Frame const& dst) {
    PlaneView const pixels = planeOf(region, 0);
    PlaneView const a = planeOf(dst, 0);
    PlaneView const b = planeOf(dst, 1);
    PlaneView const c = planeOf(dst, 2);
    Simd::SplitThreePlanes(pixels.data, pixels.stride, pixels.width, pixels.height, a.data,
                           a.stride, b.data, b.stride, c.data, c.stride);
}

/// Three planes to packed pixels; chroma may be of half size.
template <class Kernel>
void mergePlanes(Kernel const& kernel, Frame const& region, Frame const& dst) {
    PlaneView const a = planeOf(region, 0);
    PlaneView const b = planeOf(region, 1);
    PlaneView const c = planeOf(region, 2);
    PlaneView const to = planeOf(dst, 0);
    kernel(a.data, a.stride, b.data, b.stride, c.data, c.stride, a.width, a.height, to.data,
           to.stride);
}

/// Converts `width` by `height` pixels.
template <class Kernel>
void bgrToPlanes(Kernel const& kernel, PlaneView bgr, std::size_t width, std::size_t height,
                 PlaneView y, PlaneView u, PlaneView v) {
    kernel(bgr.data, width, height, bgr.stride, y.data, y.stride, u.data, u.stride, v.data,
           v.stride);
}

void bgrToYuv444(Frame const& region, Frame const& dst) {
    PlaneView const y = planeOf(dst, 0);
    bgrToPlanes(Simd::ConvertBgrToYuv444, planeOf(region, 0), y.width, y.height, y, planeOf(dst, 1),
                planeOf(dst, 2));
}

/// The planes of chroma in the order of the pairs of a semi-planar format.
struct ChromaPlanes {
    PlaneView first;
    PlaneView second;

    ChromaPlanes fromRow(std::size_t row) const {
        return {first.fromRow(row), second.fromRow(row)};
    }
};

ChromaPlanes chromaOf(Frame const& planar, FrameFormat semi_planar) {
    bool const v_first = semi_planar == FRAME_NV21;
    return {planeOf(planar, v_first ? 2 : 1), planeOf(planar, v_first ? 1 : 2)};
}

/// @param width, height in pairs
void splitPairs(PlaneView pairs, ChromaPlanes planes, std::size_t width, std::size_t height) {
    Simd::SplitTwoPlanes(pairs.data, pairs.stride, width, height, planes.first.data,
                         planes.first.stride, planes.second.data, planes.second.stride);
}

void mergePairs(ChromaPlanes planes, PlaneView pairs, std::size_t width, std::size_t height) {
    Simd::MergeTwoPlanes(planes.first.data, planes.first.stride, planes.second.data,
                         planes.second.stride, width, height, pairs.data, pairs.stride);
}

std::size_t half(int side) {
    return static_cast<std::size_t>(side) / 2;
}

void splitChroma(Frame const& region, Frame const& dst) {
    copyLuma(region, dst);
    splitPairs(planeOf(region, 1), chromaOf(dst, region.format()), half(region.width()),
               half(region.height()));
}

void mergeChroma(Frame const& region, Frame const& dst) {
    copyLuma(region, dst);
    mergePairs(chromaOf(region, dst.format()), planeOf(dst, 1), half(region.width()),
               half(region.height()));
}

void exchangeChroma(Frame const& region, Frame const& dst) {
    copyLuma(region, dst);
    PlaneView const from = planeOf(region, 1);
    PlaneView const to = planeOf(dst, 1);
    for (std::size_t y = 0; y < half(region.height()); ++y) {
        unsigned char const* const src_row = from.fromRow(y).data;
        unsigned char* const dst_row = to.fromRow(y).data;
        for (std::size_t x = 0; x < 2 * half(region.width()); x += 2) {
            dst_row[x] = src_row[x + 1];
            dst_row[x + 1] = src_row[x];
        }
    }
}

/// Converts between bytes and floats of the same values, plane by plane. Where the rows of both
/// frames follow one another, a plane is converted in one call.
/// @param bytes the one of the two frames that has bytes
template <class Kernel>
void convertFloats(Kernel const& kernel, Frame const& region, Frame const& dst,
                   Frame const& bytes) {
    float const lower = 0.0F;
    float const upper = 255.0F;
    bool const contiguous = isContiguous(region) && isContiguous(dst);
    for (int i = 0; i < region.layout().planeCount; ++i) {
        PlaneView const from = planeOf(region, i);
        PlaneView const to = planeOf(dst, i);
        std::size_t const samples = from.width * region.layout().plane[i].channels;
        std::size_t const rows = contiguous ? 1 : from.height;
        std::size_t const count =
            contiguous ? static_cast<std::size_t>(bytes.layout().plane[i].planeBytes) : samples;
        for (std::size_t y = 0; y < rows; ++y) {
            kernel(from.fromRow(y), count, &lower, &upper, to.fromRow(y));
        }
    }
}

void semiPlanarToPacked(Frame const& region, Frame const& dst) {
    bool const red_first = dst.format() == FRAME_RGB24;
    auto const& nv12 = red_first ? Simd::ConvertNv12ToRgb : Simd::ConvertNv12ToBgr;
    auto const& nv21 = red_first ? Simd::ConvertNv21ToRgb : Simd::ConvertNv21ToBgr;
    auto const& kernel = region.format() == FRAME_NV12 ? nv12 : nv21;
    PlaneView const y = planeOf(region, 0);
    PlaneView const uv = planeOf(region, 1);
    PlaneView const to = planeOf(dst, 0);
    kernel(y.data, y.stride, uv.data, uv.stride, y.width, y.height, to.data, to.stride);
}

/// The kernel from planes to packed pixels of that format.
auto const& i420Kernel(FrameFormat packed) {
    return packed == FRAME_RGB24 ? Simd::ConvertI420ToRgb : Simd::ConvertI420ToBgr;
}

void toFloats(Frame const& region, Frame const& dst) {
    auto const kernel = [](PlaneView from, std::size_t count, float const* lower,
                           float const* upper, PlaneView to) {
        Simd::ScaleBytesToFloats(from.data, count, lower, upper, floatsAt(to.data));
    };
    convertFloats(kernel, region, dst, region);
}

void fromFloats(Frame const& region, Frame const& dst) {
    auto const kernel = [](PlaneView from, std::size_t count, float const* lower,
                           float const* upper, PlaneView to) {
        Simd::ScaleFloatsToBytes(floatsAt(from.data), count, lower, upper, to.data);
    };
    convertFloats(kernel, region, dst, dst);
}

/// Chroma isn't averaged here: two by two pixels take the chroma of the top left one, on purpose.
void convertStrip(Frame const& region, Frame& dst, Rect strip, Frame& scratch) {
    if (strip.empty()) {
        return;
    }
    convertBgrToYuv444(selectRegion(region, strip), scratch);
    Frame const part = getRegion(dst, strip);
    PlaneView const luma = planeOf(scratch, 0);
    copyPlane(luma, planeOf(part, 0), luma.width, luma.height);
    bool const pairs = part.format() == FRAME_NV12;
    PlaneView const u = planeOf(part, 1);
    for (std::size_t y = 0; y < u.height; ++y) {
        unsigned char const* const u_row = planeOf(scratch, 1).fromRow(2 * y).data;
        unsigned char const* const v_row = planeOf(scratch, 2).fromRow(2 * y).data;
        unsigned char* const u_out = u.fromRow(y).data;
        unsigned char* const v_out = pairs ? u_out + 1 : planeOf(part, 2).fromRow(y).data;
        std::size_t const step = pairs ? 2 : 1;
        for (std::size_t x = 0; x < u.width; ++x) {
            u_out[step * x] = u_row[2 * x];
            v_out[step * x] = v_row[2 * x];
        }
    }
}

/// The 4:2:0 kernels take pairs of columns and rows; the last odd ones are converted apart.
void convertOddEdges(Frame const& region, Frame& dst, Frame& scratch) {
    int const even_width = region.width() / 2 * 2;
    int const even_height = region.height() / 2 * 2;
    if (even_width != region.width()) {
        convertStrip(region, dst, {even_width, 0, 1, even_height}, scratch);
    }
    if (even_height != region.height()) {
        convertStrip(region, dst, {0, even_height, region.width(), 1}, scratch);
    }
}

void bgrToI420(Frame const& region, Frame& dst, Frame& scratch) {
    bgrToPlanes(Simd::ConvertBgrToI420, planeOf(region, 0), 2 * half(region.width()),
                2 * half(region.height()), planeOf(dst, 0), planeOf(dst, 1), planeOf(dst, 2));
    convertOddEdges(region, dst, scratch);
}

void bgrToNv12(Frame const& region, Frame& dst, Frame& scratch) {
    PlaneView const bgr = planeOf(region, 0);
    PlaneView const y = planeOf(dst, 0);
    PlaneView const uv = planeOf(dst, 1);
    Simd::ConvertBgrToNv12(bgr.data, 2 * half(region.width()), 2 * half(region.height()),
                           bgr.stride, y.data, y.stride, uv.data, uv.stride);
    convertOddEdges(region, dst, scratch);
}

/// Routes of one step.
void convertDirectly(ColourRoute route, Frame const& region, Frame& dst, Frame& scratch) {
    switch (route) {
        case Unsupported:
        case TwoSteps:
            return;
        case CopyLuma:
            return copyLuma(region, dst);
        case ExpandGray:
            return runPacked(Simd::ExpandGrayToBgr, region, dst);
        case SwapRedBlue:
            return runPacked(Simd::SwapRedBlue, region, dst);
        case SplitPixels:
            return splitPixels(region, dst);
        case MergePixels:
            return mergePlanes(Simd::MergeThreePlanes, region, dst);
        case SplitChroma:
            return splitChroma(region, dst);
        case MergeChroma:
            return mergeChroma(region, dst);
        case ExchangeChroma:
            return exchangeChroma(region, dst);
        case BgrToGray:
            return runPacked(Simd::ConvertBgrToGray, region, dst);
        case BgrToI420:
            return bgrToI420(region, dst, scratch);
        case BgrToNv12:
            return bgrToNv12(region, dst, scratch);
        case BgrToYuv444:
            return bgrToYuv444(region, dst);
        case I420ToPacked:
            return mergePlanes(i420Kernel(dst.format()), region, dst);
        case SemiPlanarToPacked:
            return semiPlanarToPacked(region, dst);
        case Yuv444ToBgr:
            return mergePlanes(Simd::ConvertYuv444ToBgr, region, dst);
        case BytesToFloats:
            return toFloats(region, dst);
        case FloatsToBytes:
            return fromFloats(region, dst);
    }
}

}  // namespace

ColourRouteRecord colourRoute(FrameFormat src, FrameFormat dst) {
    auto const* const record =
        std::find_if(std::begin(records), std::end(records),
                     [&](ColourRouteRecord const& r) { return r.src == src && r.dst == dst; });
    return record == std::end(records) ? ColourRouteRecord{src, dst} : *record;
}

void convertBgrToYuv444(Frame const& src, Frame& dst) {
    dst.reuse(FRAME_YUV444_PLANAR, src.size(), DeviceContext(), 0);
    bgrToYuv444(src, dst);
}

bool convertColours(Frame const& src, Frame& dst, Frame& scratch) {
    ColourRouteRecord const record = colourRoute(src.format(), dst.format());
    if (record.route == ColourRoute::TwoSteps) {
        scratch.reuse(record.through, src.size(), DeviceContext(), 0);
        return convertColours(src, scratch, scratch) && convertColours(scratch, dst, scratch);
    }
    convertDirectly(record.route, src, dst, scratch);
    return record.route != ColourRoute::Unsupported;
}

}  // namespace ox::impl
