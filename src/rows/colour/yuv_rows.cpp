// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/colour/yuv_rows.h"

#include <algorithm>
#include <array>
#include <limits>

#include "rows/colour/formulas.h"
#include "rows/rows_routines.h"
#include "vector/copy.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;
using Source = YuvSamples<Byte const>;
using Target = YuvSamples<Byte>;

/// Room for the samples of a run of pixels.
constexpr std::size_t mostPixels = 1024;
using Room = std::array<Byte, mostPixels>;

bool isPacked(YuvLayout layout) {
    return stepsOf(layout).luma != 1;
}

bool hasChromaPlanes(YuvLayout layout) {
    return layout == YuvLayout::HalfPlanes || layout == YuvLayout::FullPlanes;
}

void split(Byte const* pairs, std::size_t count, Byte* first, Byte* second) {
    Byte* const planes[]{first, second};
    routines().colour.split_two(pairs, count, planes);
}

void merge(Byte const* first, Byte const* second, std::size_t count, Byte* pairs) {
    Byte const* const planes[]{first, second};
    routines().colour.merge_two(planes, count, pairs);
}

/// The Y, U and V samples of a run, each contiguous: in the row itself, or copied into `room`.
/// @param pixels even where pixels share chroma; also in the functions below
Source gather(YuvLayout layout, Source src, std::size_t pixels, Target room) {
    Source const gathered{room.y, room.u, room.v};
    switch (layout) {
        case YuvLayout::PairsUv:
            split(src.u, pixels / 2, room.u, room.v);
            return {src.y, room.u, room.v};
        case YuvLayout::PairsVu:
            split(src.v, pixels / 2, room.v, room.u);
            return {src.y, room.u, room.v};
        case YuvLayout::PackedYuyv:
        case YuvLayout::PackedUyvy: {
            Room pairs;
            if (layout == YuvLayout::PackedYuyv) {
                split(src.y, pixels, room.y, pairs.data());
            } else {
                split(src.u, pixels, pairs.data(), room.y);
            }
            split(pairs.data(), pixels / 2, room.u, room.v);
            return gathered;
        }
        case YuvLayout::PackedYuv: {
            Byte* const planes[]{room.y, room.u, room.v};
            routines().colour.split_three(src.y, pixels, planes);
            return gathered;
        }
        default:
            return src;
    }
}

/// Does nothing if `gather` has put the samples there already.
void copy(Byte const* src, std::size_t count, Byte* dst) {
    if (dst != nullptr && dst != src) {
        vector::copyBytes(src, count, dst);
    }
}

void scatter(YuvLayout layout, Source run, std::size_t pixels, Target dst) {
    if (!isPacked(layout)) {
        copy(run.y, pixels, dst.y);
    }
    switch (layout) {
        case YuvLayout::PairsUv:
            return merge(run.u, run.v, pixels / 2, dst.u);
        case YuvLayout::PairsVu:
            return merge(run.v, run.u, pixels / 2, dst.v);
        case YuvLayout::PackedYuyv:
        case YuvLayout::PackedUyvy: {
            Room pairs;
            merge(run.u, run.v, pixels / 2, pairs.data());
            return layout == YuvLayout::PackedYuyv ? merge(run.y, pairs.data(), pixels, dst.y)
                                                   : merge(pairs.data(), run.y, pixels, dst.u);
        }
        case YuvLayout::PackedYuv: {
            Byte const* const planes[]{run.y, run.u, run.v};
            return routines().colour.merge_three(planes, pixels, dst.y);
        }
        default: {
            std::size_t const count = chromaCount(layout, pixels);
            copy(run.u, count, dst.u);
            copy(run.v, count, dst.v);
        }
    }
}

/// The truncated means of a[i] and b[i].
void averageRows(Byte const* a, Byte const* b, std::size_t count, Byte* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = static_cast<Byte>((a[i] + b[i]) / 2);
    }
}

/// The truncated means of two neighbours, or of two by two samples.
/// @param lower null for one row
void averagePairs(Byte const* upper, Byte const* lower, std::size_t count, Byte* dst) {
    if (lower == nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            dst[i] = static_cast<Byte>((upper[2 * i] + upper[2 * i + 1]) / 2);
        }
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        int const sum = upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1];
        dst[i] = static_cast<Byte>(sum / 4);
    }
}

/// Averages or repeats chroma, where the layouts share it differently or two rows become one.
void adapt(YuvWay way, Byte const* upper, Byte const* lower, std::size_t pixels, Byte* dst) {
    if (sharesChroma(way.from) == sharesChroma(way.to)) {
        averageRows(upper, lower, chromaCount(way.to, pixels), dst);
    } else if (sharesChroma(way.to)) {
        averagePairs(upper, lower, pixels / 2, dst);
    } else {
        merge(upper, upper, pixels / 2, dst);
    }
}

/// Whether the bytes of packed pixels are luma and `PairsUv` in turn.
bool alternates(YuvLayout layout) {
    return layout == YuvLayout::PackedYuyv || layout == YuvLayout::PackedUyvy;
}

/// Takes packed pixels apart into luma and pairs.
void splitAlternating(YuvLayout from, Source src, std::size_t pixels, Target dst) {
    if (from == YuvLayout::PackedYuyv) {
        split(src.y, pixels, dst.y, dst.u);
    } else {
        split(src.u, pixels, dst.u, dst.y);
    }
}

void convertRun(YuvWay way, YuvRows src, std::size_t pixels, Target dst) {
    if (way.splits && src.lower.u == nullptr && dst.y != nullptr) {
        return splitAlternating(way.from, src.upper, pixels, dst);
    }
    std::array<Room, 3> parts;
    std::array<Room, 3> lower_parts;
    std::array<Room, 2> means;
    Target room{parts[0].data(), parts[1].data(), parts[2].data()};
    Target adapted{nullptr, means[0].data(), means[1].data()};
    bool const two_rows = src.lower.u != nullptr;
    bool const adapts = two_rows || sharesChroma(way.from) != sharesChroma(way.to);
    if (!isPacked(way.to) && dst.y != nullptr) {
        room.y = dst.y;
    }
    if (hasChromaPlanes(way.to)) {
        (adapts ? adapted : room).u = dst.u;
        (adapts ? adapted : room).v = dst.v;
    }
    Source run = gather(way.from, src.upper, pixels, room);
    if (adapts) {
        Source below;
        if (two_rows) {
            below = gather(way.from, src.lower, pixels,
                           {lower_parts[0].data(), lower_parts[1].data(), lower_parts[2].data()});
        }
        adapt(way, run.u, below.u, pixels, adapted.u);
        adapt(way, run.v, below.v, pixels, adapted.v);
        run = {run.y, adapted.u, adapted.v};
    }
    scatter(way.to, run, pixels, dst);
}

// NOLINTBEGIN(clang-analyzer-core.NullDereference): chroma is in both rows, or the caller takes
// luma alone; luma is in the source where the destination has it.
Byte meanOf(Byte const* upper, Byte const* lower) {
    return lower == nullptr ? *upper : static_cast<Byte>((*upper + *lower) / 2);
}

/// A pixel that shares its chroma with no other.
void convertPixel(YuvRows src, Target dst) {
    if (dst.y != nullptr) {
        *dst.y = *src.upper.y;
    }
    *dst.u = meanOf(src.upper.u, src.lower.u);
    *dst.v = meanOf(src.upper.v, src.lower.v);
}
// NOLINTEND(clang-analyzer-core.NullDereference)

/// Calls visit(first, pixels) for the runs of all pixels but the last of an odd width.
/// @return how many pixels these are
template <class Visitor>
std::size_t forEachRun(std::size_t width, std::size_t most, Visitor visit) {
    std::size_t const pixels = width / 2 * 2;
    for (std::size_t first = 0; first < pixels;) {
        std::size_t const count = std::min(pixels - first, most);
        visit(first, count);
        first += count;
    }
    return pixels;
}

}  // namespace

YuvWay yuvWay(YuvLayout from, YuvLayout to) {
    // Where chroma is both taken apart and put together, it needs room in between.
    bool const splits = alternates(from) && to == YuvLayout::PairsUv;
    bool const apart = !hasChromaPlanes(from) && !hasChromaPlanes(to);
    bool const pairs_of_pairs = stepsOf(from).luma == 2 || stepsOf(to).luma == 2;
    bool const needs_room =
        !splits && (apart || pairs_of_pairs || sharesChroma(from) != sharesChroma(to));
    return {from, to, needs_room ? mostPixels : std::numeric_limits<std::size_t>::max(), splits};
}

void convertYuv(YuvWay way, YuvRows src, std::size_t width, Target dst) {
    if (dst.u == nullptr) {
        if (dst.y != nullptr) {
            routines().colour.luma[indexOf(way.from)](src.upper.y, width, dst.y);
        }
        return;
    }
    auto const rowsAt = [&](std::size_t x) {
        return YuvRows{samplesAt(way.from, src.upper, x), samplesAt(way.from, src.lower, x)};
    };
    bool const needs_room = src.lower.u != nullptr || (isPacked(way.from) && dst.y == nullptr);
    std::size_t const most = needs_room ? mostPixels : way.run;
    std::size_t const done = forEachRun(width, most, [&](std::size_t first, std::size_t pixels) {
        convertRun(way, rowsAt(first), pixels, samplesAt(way.to, dst, first));
    });
    if (done < width) {
        convertPixel(rowsAt(done), samplesAt(way.to, dst, done));
    }
}

void grayToYuv(YuvLayout to, Byte const* gray, std::size_t width, Target dst) {
    if (dst.u == nullptr) {
        return copy(gray, width, dst.y);
    }
    Room chroma;
    std::fill_n(chroma.begin(), std::min(width, mostPixels), chromaOfGray);
    std::size_t const done =
        forEachRun(width, mostPixels, [&](std::size_t first, std::size_t pixels) {
            scatter(to, {gray + first, chroma.data(), chroma.data()}, pixels,
                    samplesAt(to, dst, first));
        });
    if (done < width) {
        convertPixel({{gray + done, &chromaOfGray, &chromaOfGray}, {}}, samplesAt(to, dst, done));
    }
}

void copySamples(Byte const* src, std::int64_t src_step, StridedSamples dst) {
    for (std::int64_t i = 0; i < dst.count; ++i) {
        dst.first[i * dst.step] = src[i * src_step];
    }
}

void averageChroma(ChromaRows src, std::int64_t width, std::int64_t group, StridedSamples dst) {
    unsigned const rows = src.lower != nullptr ? 2 : 1;
    for (std::int64_t i = 0; i < dst.count; ++i) {
        std::int64_t const end = std::min((i + 1) * group, width);
        unsigned sum = 0;
        for (std::int64_t x = i * group; x < end; ++x) {
            std::int64_t const sample = x / src.pixels * src.step;
            sum += src.upper[sample] + (rows == 2 ? src.lower[sample] : 0U);
        }
        // The last group of an odd width has one column.
        dst.first[i * dst.step] =
            static_cast<Byte>(sum >> (end - i * group == 2 ? rows : rows - 1));
    }
}

}  // namespace ox::rows
