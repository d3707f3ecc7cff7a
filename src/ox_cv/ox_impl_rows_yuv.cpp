// Rows among gray and the YUV formats, which differ only in where their samples lie.

#include <algorithm>
#include <cstring>

#include "ox_cv/ox_impl_format_converter.h"
#include "rows/colour/runs.h"
#include "rows/rows_routines.h"

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

/// A sample of a plane's row; none of a plane without a row.
Byte* sampleAt(RowData const& row, int plane, int offset) {
    return row[plane] != nullptr ? row[plane] + offset : nullptr;
}

rows::YuvSamples<Byte const> samplesOf(RowData const& row, FormatInfo const& info) {
    return {sampleAt(row, info.y_plane, info.y_offset), sampleAt(row, info.u_plane, info.u_offset),
            sampleAt(row, info.v_plane, info.v_offset)};
}

/// How the samples of a row lie, by its record.
template <class AnyByte>
rows::YuvLayout layoutOf(rows::YuvSamples<AnyByte> row, FormatInfo const& info) {
    return rows::yuvLayoutOf(row, info.y_step, info.u_step, info.x_subsampling);
}

/// Chroma that a run is to be written with.
struct RunChroma {
    rows::YuvRun::Room u;
    rows::YuvRun::Room v;
};

/// Averages or repeats the chroma of a run for a layout that shares it otherwise, or in two rows.
void adaptChroma(rows::YuvLayout from, rows::YuvLayout to, rows::YuvRun& run,
                 rows::YuvRun const* lower, std::size_t pixels, RunChroma& room) {
    auto const adapt = [&](Byte const* upper, Byte const* below, Byte* dst) {
        if (sharesChroma(from) == sharesChroma(to)) {
            rows::averageRows(upper, below, sharesChroma(from) ? pixels / 2 : pixels, dst);
        } else if (sharesChroma(to)) {
            rows::averagePairs(upper, below, pixels / 2, dst);
        } else {
            rows::repeatSamples(upper, pixels / 2, dst);
        }
    };
    if (sharesChroma(from) == sharesChroma(to) && lower == nullptr) {
        return;
    }
    adapt(run.u, lower != nullptr ? lower->u : nullptr, room.u.data());
    adapt(run.v, lower != nullptr ? lower->v : nullptr, room.v.data());
    run.u = room.u.data();
    run.v = room.v.data();
}

/// Calls visit(first, pixels) for the runs of all pixels but the last of an odd width.
/// @return how many pixels these are
template <class Visitor>
int forEachRun(int width, Visitor visit) {
    constexpr int most = static_cast<int>(rows::YuvRun::mostPixels);
    int const pixels = std::max(width, 0) / 2 * 2;
    for (int first = 0; first < pixels; first += most) {
        visit(static_cast<std::size_t>(first),
              static_cast<std::size_t>(std::min(pixels - first, most)));
    }
    return pixels;
}

/// A row of YUV pixels in runs, from layout to layout.
struct RunConversion {
    rows::YuvLayout from;
    rows::YuvLayout to;
    rows::YuvSamples<Byte const> upper;
    rows::YuvSamples<Byte const> lower;  ///< null: one row
    rows::YuvSamples<Byte> dst;
    bool chroma;

    void convert(std::size_t first, std::size_t pixels) const {
        rows::YuvRun run;
        rows::YuvRun below;
        RunChroma room;
        rows::gatherRun(from, samplesAt(from, upper, first), pixels, chroma, run);
        if (chroma) {
            bool const two_rows = lower.u != nullptr;
            if (two_rows) {
                rows::gatherRun(from, samplesAt(from, lower, first), pixels, true, below);
            }
            adaptChroma(from, to, run, two_rows ? &below : nullptr, pixels, room);
        }
        rows::scatterRun(to, run, pixels, chroma, samplesAt(to, dst, first));
    }
};

/// The samples of a destination row by layout, with null for those that get no row; all null where
/// a stale record limits the row, or one plane of chroma gets a row and the other none.
rows::YuvSamples<Byte> layoutDestination(RowData const& dst, ImplFormatConverter const& context) {
    FormatInfo const& to = context.dst;
    bool const chroma = hasChroma(dst, to);
    bool const no_chroma = dst[to.u_plane] == nullptr && dst[to.v_plane] == nullptr;
    if (context.dst_limited || !(chroma || no_chroma)) {
        return {nullptr, nullptr, nullptr};
    }
    return {sampleAt(dst, to.y_plane, to.y_offset),
            chroma ? sampleAt(dst, to.u_plane, to.u_offset) : nullptr,
            chroma ? sampleAt(dst, to.v_plane, to.v_offset) : nullptr};
}

/// Converts all pixels but the last of an odd width by layouts, if that can be done.
/// @return how many are done
int convertByLayouts(RowData const* const* rows, RowData const& dst, int width,
                     ImplFormatConverter const& context, bool two_rows) {
    FormatInfo const& from = context.src;
    auto const target = layoutDestination(dst, context);
    auto const source = samplesOf(*rows[0], from);
    RunConversion row{layoutOf(source, from), layoutOf(target, context.dst), source, {}, target,
                      target.u != nullptr};
    // The two rows of a source with half-height planes show the same chroma.
    bool const two_chroma_rows = two_rows && (*rows[1])[from.u_plane] != (*rows[0])[from.u_plane];
    int const pixels = std::max(width, 0) / 2 * 2;
    if ((target.y != nullptr || target.u != nullptr) && !two_chroma_rows &&
        rows::copyPlanes(row.from, row.to, source, static_cast<std::size_t>(pixels), target)) {
        return pixels;
    }
    if (target.y == nullptr) {
        return 0;
    }
    if (two_chroma_rows) {
        row.lower = samplesOf(*rows[1], from);
    }
    return forEachRun(width,
                      [&](std::size_t first, std::size_t count) { row.convert(first, count); });
}

/// 0 and not 128: a gray picture comes out greenish, on purpose.
constexpr Byte grayChroma = 0;

/// As `convertByLayouts`.
int writeGrayRuns(Byte const* src, RowData const& dst, int width,
                  ImplFormatConverter const& context) {
    auto const target = layoutDestination(dst, context);
    if (target.y == nullptr) {
        return 0;
    }
    rows::YuvLayout const layout = layoutOf(target, context.dst);
    rows::YuvRun run;
    run.room[0].fill(grayChroma);
    run.u = run.room[0].data();
    run.v = run.room[0].data();
    return forEachRun(width, [&](std::size_t first, std::size_t pixels) {
        run.y = src + first;
        rows::scatterRun(layout, run, pixels, target.u != nullptr,
                         samplesAt(layout, target, first));
    });
}

rows::PackedLuma* packedLumaOf(rows::YuvLayout layout) {
    rows::Routines const& routines = rows::routines();
    switch (layout) {
        case rows::YuvLayout::PackedYuyv:
            return routines.colour.luma_of_yuyv;
        case rows::YuvLayout::PackedUyvy:
            return routines.colour.luma_of_uyvy;
        default:
            return nullptr;
    }
}

/// Copies the luma of all pixels, or of all but the last of an odd width.
/// @return how many are done
int copyLuma(rows::YuvSamples<Byte const> src, FormatInfo const& info, Byte* dst, int width) {
    rows::YuvLayout const layout = layoutOf(src, info);
    auto const pixels = static_cast<std::size_t>(std::max(width, 0));
    if (info.y_step == 1) {
        std::memcpy(dst, src.y, pixels);
        return width;
    }
    rows::PackedLuma* const packed_luma = packedLumaOf(layout);
    if (packed_luma != nullptr && pixels >= rows::routines().colour.least_pixels) {
        packed_luma(src.y - info.y_offset, pixels, dst);
        return width;
    }
    return forEachRun(width, [&](std::size_t first, std::size_t count) {
        rows::YuvRun run;
        rows::gatherRun(layout, samplesAt(layout, src, first), count, false, run);
        std::memcpy(dst + first, run.y, count);
    });
}

Samples after(Samples samples, std::int64_t count) {
    return {samples.first + count * samples.step, samples.step, samples.count - count};
}

}  // namespace

void yuvToGray(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    if (dst[0] == nullptr) {
        return;
    }
    FormatInfo const& info = context->src;
    int const done = copyLuma(samplesOf(*rows[0], info), info, dst[0], width);
    copySamples((*rows[0])[info.y_plane] + info.y_offset + std::int64_t{done} * info.y_step,
                info.y_step, {dst[0] + done, 1, width - done});
}

void grayToYuv(RowData const* const* rows, RowData& dst, int width,
               ImplFormatConverter const* context) {
    Byte const* const src = (*rows[0])[0];
    int const done = writeGrayRuns(src, dst, width, *context);
    if (done == width) {
        return;
    }
    copySamples(src + done, 1, after(lumaDestination(dst, *context, width), done));
    if (!hasChroma(dst, context->dst)) {
        return;
    }
    for (bool const u : {true, false}) {
        Samples const chroma =
            after(chromaDestination(dst, *context, u, width), done / context->dst.x_subsampling);
        for (std::int64_t i = 0; i < chroma.count; ++i) {
            chroma.first[i * chroma.step] = grayChroma;
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
    int const row_count = to.y_subsampling == 2 && rows[1] != nullptr ? 2 : 1;
    int const done = convertByLayouts(rows, dst, width, *context, row_count == 2);
    if (done == width) {
        return;
    }
    copySamples((*rows[0])[from.y_plane] + from.y_offset + std::int64_t{done} * from.y_step,
                from.y_step, after(lumaDestination(dst, *context, width), done));
    if (!hasChroma(dst, to)) {
        return;
    }
    AverageFunction const average =
        averageTable[from.x_subsampling - 1][to.x_subsampling - 1][row_count - 1];
    for (bool const u : {true, false}) {
        int const plane = u ? from.u_plane : from.v_plane;
        std::int64_t const step = u ? from.u_step : from.v_step;
        std::int64_t const offset =
            (u ? from.u_offset : from.v_offset) + done / from.x_subsampling * step;
        ChromaRows const src{
            {(*rows[0])[plane] + offset, row_count == 2 ? (*rows[1])[plane] + offset : nullptr},
            step};
        average(src, after(chromaDestination(dst, *context, u, width), done / to.x_subsampling),
                width - done);
    }
}

}  // namespace ox
