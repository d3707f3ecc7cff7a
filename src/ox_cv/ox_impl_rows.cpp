// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The conversion functions: each hands the planes of a row to a routine of rows/colour.

#include <algorithm>

#include "ox_cv/ox_impl_format_converter.h"
#include "rows/colour/channels.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

using Byte = unsigned char;
using rows::YuvLayout;

rows::ColourRoutines const& colour() {
    return rows::routines().colour;
}

/// 0 for widths that aren't positive.
std::size_t pixelsOf(int width) {
    return static_cast<std::size_t>(std::max(width, 0));
}

/// The only plane of a row to the only plane of another.
void convertPlane(rows::ConvertRow* convert, RowData const* const* rows, RowData& dst,
                  std::size_t count) {
    if (dst[0] != nullptr) {
        convert((*rows[0])[0], count, dst[0]);
    }
}

/// A sample's address in a plane that may get no row on this step.
Byte* at(Byte* plane, int offset) {
    return plane != nullptr ? plane + offset : nullptr;
}

/// The first samples of a row.
/// @param row the planes of a source or of a destination
template <class AnyByte>
rows::YuvSamples<AnyByte> samplesOf(RowData const& row, FormatInfo const& info) {
    return {at(row[info.y_plane], info.y_offset), at(row[info.u_plane], info.u_offset),
            at(row[info.v_plane], info.v_offset)};
}

/// The same for a destination, with U and V either both or neither.
rows::YuvSamples<Byte> destinationOf(RowData const& row, FormatInfo const& info) {
    auto const samples = samplesOf<Byte>(row, info);
    return samples.u != nullptr && samples.v != nullptr
               ? samples
               : rows::YuvSamples<Byte>{samples.y, nullptr, nullptr};
}

void bgrToYuv(YuvLayout layout, rows::BgrRows src, rows::YuvSamples<Byte> dst, int width) {
    colour().bgr_to_yuv[indexOf(layout)](src, pixelsOf(width), dst);
}

void yuvToBgr(YuvLayout layout, rows::YuvSamples<Byte const> src, RowData& dst, int width) {
    if (dst[0] != nullptr) {
        colour().yuv_to_bgr[indexOf(layout)](src, pixelsOf(width), dst[0]);
    }
}

/// The rows that 4:2:0 chroma is averaged from: this row and the next. The last row of an odd
/// height stands alone.
rows::BgrRows twoRows(RowData const* const* rows) {
    return {(*rows[0])[0], rows[1] != nullptr ? (*rows[1])[0] : nullptr};
}

rows::BgrRows oneRow(RowData const* const* rows) {
    return {(*rows[0])[0], nullptr};
}

}  // namespace

void grayToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    convertPlane(colour().gray_to_bgr, rows, dst, pixelsOf(width));
}

void swapRedBlue(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    convertPlane(colour().swap_red_blue, rows, dst, pixelsOf(width));
}

void bgr24ToGray(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    convertPlane(colour().bgr_to_gray, rows, dst, pixelsOf(width));
}

void bgr24ToBgr32f(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    convertPlane(colour().bytes_to_floats, rows, dst, 3 * pixelsOf(width));
}

void bgr32fToBgr24(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    convertPlane(colour().floats_to_low_bytes, rows, dst, 3 * pixelsOf(width));
}

void bgr24ToBgrPlanar(RowData const* const* rows, RowData& dst, int width,
                      ImplFormatConverter const*) {
    colour().split_three((*rows[0])[0], pixelsOf(width), dst.plane);
}

void bgr24ToBgr32fPlanar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    rows::splitToFloats((*rows[0])[0], pixelsOf(width), dst.plane);
}

void planarToPacked(RowData const* const* rows, RowData& dst, int width,
                    ImplFormatConverter const*) {
    if (dst[0] != nullptr) {
        colour().merge_three((*rows[0]).plane, pixelsOf(width), dst[0]);
    }
}

void bgr24ToYuv420Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    bgrToYuv(YuvLayout::HalfPlanes, twoRows(rows), destinationOf(dst, context->dst), width);
}

void bgr24ToYuv420SemiPlanar(RowData const* const* rows, RowData& dst, int width,
                             ImplFormatConverter const* context) {
    FormatInfo const& info = context->dst;
    bgrToYuv(yuvLayoutOf(info), twoRows(rows),
             {dst[0], at(dst[1], info.u_offset), at(dst[1], info.v_offset)}, width);
}

void bgr24ToYv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    bgrToYuv(YuvLayout::HalfPlanes, oneRow(rows), {dst[0], dst[2], dst[1]}, width);
}

void bgr24ToYuv422Packed(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    FormatInfo const& info = context->dst;
    if (dst[0] == nullptr) {
        return;
    }
    bgrToYuv(yuvLayoutOf(info), oneRow(rows), samplesOf<Byte>(dst, info), width);
    if (width % 2 != 0) {
        dst[0][info.y_offset + std::int64_t{2} * width] = 0;  // a row is whole macro-pixels
    }
}

void bgr24ToNv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    bgrToYuv(YuvLayout::PairsUv, oneRow(rows), {dst[0], dst[1], at(dst[1], 1)}, width);
}

void bgr24ToYuv444(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    bgrToYuv(YuvLayout::PackedYuv, oneRow(rows), {dst[0], at(dst[0], 1), at(dst[0], 2)}, width);
}

void bgr24ToYuv444Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    bgrToYuv(YuvLayout::FullPlanes, oneRow(rows), {dst[0], dst[1], dst[2]}, width);
}

void yuv420PlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    yuvToBgr(YuvLayout::HalfPlanes, samplesOf<Byte const>(*rows[0], context->src), dst, width);
}

void yuv420SemiPlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                             ImplFormatConverter const* context) {
    FormatInfo const& info = context->src;
    yuvToBgr(yuvLayoutOf(info), samplesOf<Byte const>(*rows[0], info), dst, width);
}

void yv16ToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    yuvToBgr(YuvLayout::HalfPlanes, {src[0], src[2], src[1]}, dst, width);
}

void yuv422PackedToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    FormatInfo const& info = context->src;
    yuvToBgr(yuvLayoutOf(info), samplesOf<Byte const>(*rows[0], info), dst, width);
}

void nv16ToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    yuvToBgr(YuvLayout::PairsUv, {src[0], src[1], src[1] + 1}, dst, width);
}

void yuv444ToBgr24(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    yuvToBgr(YuvLayout::PackedYuv, {src, src + 1, src + 2}, dst, width);
}

void yuv444PlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    yuvToBgr(YuvLayout::FullPlanes, {src[0], src[1], src[2]}, dst, width);
}

void yuvToGray(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    FormatInfo const& info = context->src;
    if (dst[0] != nullptr) {
        colour().luma[indexOf(yuvLayoutOf(info))]((*rows[0])[info.y_plane] + info.y_offset,
                                                  pixelsOf(width), dst[0]);
    }
}

void grayToYuv(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    FormatInfo const& info = context->dst;
    rows::grayToYuv(yuvLayoutOf(info), (*rows[0])[0], pixelsOf(width), destinationOf(dst, info));
}

namespace {

/// The first `count` samples of a destination plane, or fewer if a stale record leaves the row.
rows::StridedSamples limited(Byte* first, std::int64_t step, std::int64_t count,
                             ImplFormatConverter const& context, int plane, int offset) {
    if (context.dst_limited) {
        std::int64_t const room = std::max<std::int64_t>(context.dst_limits[plane] - offset, 0);
        count = std::min(count, (room + step - 1) / step);
    }
    return {first, step, first != nullptr ? std::max<std::int64_t>(count, 0) : 0};
}

/// Converts by the records alone. A stale record belongs to another format than the row's.
void convertByRecords(rows::YuvRows src, rows::YuvSamples<Byte> dst, int width,
                      ImplFormatConverter const& context) {
    FormatInfo const& from = context.src;
    FormatInfo const& to = context.dst;
    rows::copySamples(src.upper.y, from.y_step,
                      limited(dst.y, to.y_step, width, context, to.y_plane, to.y_offset));
    std::int64_t const groups = (std::int64_t{width} + to.x_subsampling - 1) / to.x_subsampling;
    rows::averageChroma({src.upper.u, src.lower.u, from.u_step, from.x_subsampling}, width,
                        to.x_subsampling,
                        limited(dst.u, to.u_step, groups, context, to.u_plane, to.u_offset));
    rows::averageChroma({src.upper.v, src.lower.v, from.v_step, from.x_subsampling}, width,
                        to.x_subsampling,
                        limited(dst.v, to.v_step, groups, context, to.v_plane, to.v_offset));
}

}  // namespace

void yuvToYuv(RowData const* const* rows, RowData& dst, int width,
              ImplFormatConverter const* context) {
    FormatInfo const& from = context->src;
    FormatInfo const& to = context->dst;
    if (to.x_subsampling <= 0) {
        return;  // no destination has been described yet
    }
    auto const target = destinationOf(dst, to);
    rows::YuvRows src{samplesOf<Byte const>(*rows[0], from), {}};
    // The two rows of a source with half-height planes show the same chroma.
    if (target.u != nullptr && to.y_subsampling == 2 && rows[1] != nullptr &&
        (*rows[1])[from.u_plane] != (*rows[0])[from.u_plane]) {
        src.lower = samplesOf<Byte const>(*rows[1], from);
    }
    if (context->yuv_way.run != 0) {
        rows::convertYuv(context->yuv_way, src, pixelsOf(width), target);
    } else {
        convertByRecords(src, target, width, *context);
    }
}

}  // namespace ox
