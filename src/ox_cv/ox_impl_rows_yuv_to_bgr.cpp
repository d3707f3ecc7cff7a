// Rows of YUV to packed B,G,R. The coefficients are not the inverse of those from BGR, and not
// those of `NV12toBGR_neon`, on purpose. Chroma isn't interpolated.

#include <algorithm>

#include "ox_cv/ox_impl_format_converter.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

using Byte = unsigned char;

/// The integer part of 24.8 fixed point, limited to a byte.
Byte clampByte(int value) {
    return static_cast<Byte>(std::clamp(value, 0, 65535) >> 8);
}

void storeBgr(Byte* dst, Byte y, Byte u, Byte v) {
    int const luma = (y - 16) * 297;
    int const cu = u - 128;
    int const cv = v - 128;
    dst[0] = clampByte(luma + 516 * cu);
    dst[1] = clampByte(luma - 207 * cv - 100 * cu);
    dst[2] = clampByte(luma + 408 * cv);
}

using Samples = rows::YuvSamples<Byte const>;

/// Converts all pixels but the last few by vectors, if it can.
/// @return how many are done
template <int LumaStep, int ChromaStep, int PixelsPerChroma>
int convertByVectors(Samples src, Byte* dst, int width) {
    rows::Routines const& routines = rows::routines();
    auto const layout = rows::yuvLayoutOf(src, LumaStep, ChromaStep, PixelsPerChroma);
    rows::YuvToBgr* const convert = routines.colour.yuv_to_bgr[static_cast<std::size_t>(layout)];
    int const pixels = width / PixelsPerChroma * PixelsPerChroma;
    if (convert == nullptr || pixels < static_cast<int>(routines.colour.least_pixels)) {
        return 0;
    }
    convert(src, static_cast<std::size_t>(pixels), dst);
    return pixels;
}

/// Where the samples of a row begin, and the bytes between them.
template <int LumaStep, int ChromaStep, int PixelsPerChroma>
void row(Byte const* y, Byte const* u, Byte const* v, Byte* dst, int width) {
    if (dst == nullptr) {
        return;
    }
    int const converted =
        convertByVectors<LumaStep, ChromaStep, PixelsPerChroma>({y, u, v}, dst, width);
    for (std::int64_t x = converted; x < width; ++x) {
        std::int64_t const chroma = x / PixelsPerChroma * ChromaStep;
        storeBgr(dst + 3 * x, y[x * LumaStep], u[chroma], v[chroma]);
    }
}

}  // namespace

void yuv420PlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    RowData const& src = *rows[0];
    row<1, 1, 2>(src[0], src[context->src.u_plane], src[context->src.v_plane], dst[0], width);
}

void yuv420SemiPlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                             ImplFormatConverter const* context) {
    RowData const& src = *rows[0];
    row<1, 2, 2>(src[0], src[1] + context->src.u_offset, src[1] + context->src.v_offset, dst[0],
                 width);
}

void yv16ToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    row<1, 1, 2>(src[0], src[2], src[1], dst[0], width);
}

void yuv422PackedToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    Byte const* const src = (*rows[0])[0];
    FormatInfo const& info = context->src;
    row<2, 4, 2>(src + info.y_offset, src + info.u_offset, src + info.v_offset, dst[0], width);
}

void nv16ToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    row<1, 2, 2>(src[0], src[1], src[1] + 1, dst[0], width);
}

void yuv444ToBgr24(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    row<3, 3, 1>(src, src + 1, src + 2, dst[0], width);
}

void yuv444PlanarToBgr24(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    RowData const& src = *rows[0];
    row<1, 1, 1>(src[0], src[1], src[2], dst[0], width);
}

}  // namespace ox
