// Rows among gray and the YUV formats, which differ only in where their samples lie.

#include <algorithm>

#include "ox_cv/ox_impl_format_converter.h"

namespace ox {

namespace {

using Byte = unsigned char;

/// A run of samples in a plane's row.
struct Samples {
    Byte* first;
    std::int64_t step;   ///< bytes
    std::int64_t count;  ///< that may be written
};

/// The first `count` samples of a destination plane, less where a stale record leaves the row.
Samples destination(RowData& dst, ImplFormatConverter const& context, int plane, int offset,
                    int step, std::int64_t count) {
    if (context.dst_limited) {
        std::int64_t const room = std::max<std::int64_t>(context.dst_limits[plane] - offset, 0);
        count = std::min(count, (room + step - 1) / step);
    }
    return {count > 0 ? dst[plane] + offset : nullptr, step, count};
}

Samples lumaDestination(RowData& dst, ImplFormatConverter const& context, int width) {
    FormatInfo const& info = context.dst;
    return destination(dst, context, info.y_plane, info.y_offset, info.y_step,
                       dst[info.y_plane] != nullptr ? width : 0);
}

Samples chromaDestination(RowData& dst, ImplFormatConverter const& context, bool u, int width) {
    FormatInfo const& info = context.dst;
    std::int64_t const groups = (std::int64_t{width} + info.x_subsampling - 1) / info.x_subsampling;
    return destination(dst, context, u ? info.u_plane : info.v_plane,
                       u ? info.u_offset : info.v_offset, u ? info.u_step : info.v_step, groups);
}

void copySamples(Byte const* src, int src_step, Samples dst) {
    for (std::int64_t i = 0; i < dst.count; ++i) {
        dst.first[i * dst.step] = src[i * src_step];
    }
}

bool hasChroma(RowData const& dst, FormatInfo const& info) {
    return dst[info.u_plane] != nullptr && dst[info.v_plane] != nullptr;
}

/// Chroma rows of the source that a destination row is averaged from.
struct ChromaRows {
    Byte const* row[2];
    std::int64_t step;
};

/// The truncated mean over the pixels of each destination group, in `Rows` rows; a last group that
/// is cut by the row's end has a single column.
template <int SrcPixels, int DstPixels, int Rows>
void averageChroma(ChromaRows src, Samples dst, std::int64_t width) {
    auto const sumPixels = [&](std::int64_t pixel, std::int64_t pixels) {
        unsigned sum = 0;
        for (int k = 0; k < Rows; ++k) {
            for (std::int64_t x = pixel; x < pixel + pixels; ++x) {
                sum += src.row[k][x / SrcPixels * src.step];
            }
        }
        return sum;
    };
    std::int64_t const whole = std::min(width / DstPixels, dst.count);
    for (std::int64_t i = 0; i < whole; ++i) {
        unsigned const sum = sumPixels(i * DstPixels, DstPixels);
        dst.first[i * dst.step] = static_cast<Byte>(sum / (DstPixels * Rows));
    }
    if (whole < dst.count) {
        dst.first[whole * dst.step] = static_cast<Byte>(sumPixels(whole * DstPixels, 1) / Rows);
    }
}

using AverageFunction = void (*)(ChromaRows, Samples, std::int64_t);

/// Indexed by the subsampling of source and destination and by the number of rows, each less 1.
constexpr AverageFunction averageTable[2][2][2] = {
    {{averageChroma<1, 1, 1>, averageChroma<1, 1, 2>},
     {averageChroma<1, 2, 1>, averageChroma<1, 2, 2>}},
    {{averageChroma<2, 1, 1>, averageChroma<2, 1, 2>},
     {averageChroma<2, 2, 1>, averageChroma<2, 2, 2>}},
};

}  // namespace

void yuvToGray(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    FormatInfo const& info = context->src;
    if (dst[0] != nullptr) {
        copySamples((*rows[0])[info.y_plane] + info.y_offset, info.y_step, {dst[0], 1, width});
    }
}

void grayToYuv(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    copySamples((*rows[0])[0], 1, lumaDestination(dst, *context, width));
    if (!hasChroma(dst, context->dst)) {
        return;
    }
    for (bool const u : {true, false}) {
        // 0 and not 128: a gray picture comes out greenish, on purpose.
        Samples const chroma = chromaDestination(dst, *context, u, width);
        for (std::int64_t i = 0; i < chroma.count; ++i) {
            chroma.first[i * chroma.step] = 0;
        }
    }
}

void yuvToYuv(RowData const* const* rows, RowData& dst, int width,
              ImplFormatConverter const* context) {
    FormatInfo const& from = context->src;
    FormatInfo const& to = context->dst;
    if (to.x_subsampling <= 0) {
        return;  // no destination has been described yet
    }
    copySamples((*rows[0])[from.y_plane] + from.y_offset, from.y_step,
                lumaDestination(dst, *context, width));
    if (!hasChroma(dst, to)) {
        return;
    }
    int const row_count = to.y_subsampling == 2 && rows[1] != nullptr ? 2 : 1;
    AverageFunction const average =
        averageTable[from.x_subsampling - 1][to.x_subsampling - 1][row_count - 1];
    for (bool const u : {true, false}) {
        int const plane = u ? from.u_plane : from.v_plane;
        int const offset = u ? from.u_offset : from.v_offset;
        ChromaRows const src{
            {(*rows[0])[plane] + offset, row_count == 2 ? (*rows[1])[plane] + offset : nullptr},
            u ? from.u_step : from.v_step};
        average(src, chromaDestination(dst, *context, u, width), width);
    }
}

}  // namespace ox
