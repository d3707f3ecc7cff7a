// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The one table of facts per format; layouts, row masks, scalers, tests and tools read it.

#pragma once

#include <array>
#include <cstddef>

#include "ox_core/ox_frame_format.h"

namespace ox::impl {

struct PlaneFacts {
    std::uint16_t channels = 0;  ///< interleaved channels a pixel
    std::uint16_t bits = 0;      ///< bits a channel
    bool half_width = false;     ///< half the frame's columns, rounded up
    bool half_height = false;    ///< half the frame's rows, rounded up
};

struct FormatFacts {
    char const* name = "unknown";
    int plane_count = 0;
    /// Pixels that can't be split in a row: 2 where two pixels share a packed chroma sample. A row
    /// is then made of whole groups.
    int pixel_group = 1;
    std::array<PlaneFacts, 3> planes{};
};

namespace facts {

constexpr PlaneFacts full{1, 8};
constexpr PlaneFacts quarter{1, 8, true, true};
constexpr PlaneFacts quarterPair{2, 8, true, true};
constexpr PlaneFacts half{1, 8, true, false};
constexpr PlaneFacts halfPair{2, 8, true, false};

constexpr FormatFacts packed(char const* name, std::uint16_t channels, std::uint16_t bits) {
    return {name, 1, 1, {PlaneFacts{channels, bits}}};
}

constexpr FormatFacts planar(char const* name, PlaneFacts first, PlaneFacts others) {
    return {name, 3, 1, {first, others, others}};
}

constexpr FormatFacts semiPlanar(char const* name, PlaneFacts pair) {
    return {name, 2, 1, {full, pair}};
}

constexpr FormatFacts macroPixels(char const* name) {
    return {name, 1, 2, {PlaneFacts{2, 8}}};
}

constexpr PlaneFacts floats{1, 32};

}  // namespace facts

/// Indexed by `FrameFormat`.
inline constexpr std::array formatTable{
    FormatFacts{"FRAME_FORMAT_NONE"},
    facts::packed("FRAME_GRAY8", 1, 8),
    facts::packed("FRAME_RGB24", 3, 8),
    facts::planar("FRAME_RGB_PLANAR", facts::full, facts::full),
    facts::packed("FRAME_BGR24", 3, 8),
    facts::planar("FRAME_BGR_PLANAR", facts::full, facts::full),
    facts::planar("FRAME_I420", facts::full, facts::quarter),
    facts::planar("FRAME_YV12", facts::full, facts::quarter),
    facts::semiPlanar("FRAME_NV12", facts::quarterPair),
    facts::semiPlanar("FRAME_NV21", facts::quarterPair),
    facts::planar("FRAME_YV16", facts::full, facts::half),
    facts::macroPixels("FRAME_YUYV"),
    facts::macroPixels("FRAME_UYVY"),
    facts::semiPlanar("FRAME_NV16", facts::halfPair),
    facts::packed("FRAME_YUV444", 3, 8),
    facts::planar("FRAME_YUV444_PLANAR", facts::full, facts::full),
    facts::packed("FRAME_C2_8U", 2, 8),
    facts::packed("FRAME_C3_8U", 3, 8),
    facts::packed("FRAME_C4_8U", 4, 8),
    facts::packed("FRAME_C1_16U", 1, 16),
    facts::packed("FRAME_C1_32U", 1, 32),
    FormatFacts{},
    FormatFacts{},
    FormatFacts{},
    facts::packed("FRAME_GRAY_32F", 1, 32),
    facts::packed("FRAME_BGR_32F", 3, 32),
    facts::planar("FRAME_BGR_32F_PLANAR", facts::floats, facts::floats),
};
static_assert(formatTable.size() == FRAME_BGR_32F_PLANAR + 1);

/// Facts of any value; those without a format have no planes.
constexpr FormatFacts const& factsOf(FrameFormat format) {
    auto const index = static_cast<std::size_t>(format);
    return formatTable[index < formatTable.size() ? index : 0];
}

/// 4:2:0: the chroma planes have half the frame's rows.
constexpr bool isVerticallySubsampled(FrameFormat format) {
    return factsOf(format).planes[1].half_height;
}

/// Whether a plane of that `rowMask` moves on to its next row after frame row `row`.
constexpr bool movesOnAfter(std::int32_t row, std::uint32_t mask) {
    auto const bits = static_cast<std::uint32_t>(row);
    return (mask | bits) == bits;
}

/// Whether a plane of that `rowMask` has a row of its own at frame row `row`.
constexpr bool hasRowAt(std::int32_t row, std::uint32_t mask) {
    return (static_cast<std::uint32_t>(row) & mask) == 0;
}

}  // namespace ox::impl
