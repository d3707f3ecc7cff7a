// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Rows of YUV pixels from one layout to another.

#pragma once

#include <cstddef>
#include <cstdint>

#include "rows/colour/layouts.h"

namespace ox::rows {

/// How rows get from one layout to another. A new object describes no way.
struct YuvWay {
    YuvLayout from{};
    YuvLayout to{};
    std::size_t run = 0;  ///< pixels that are converted in one go
    /// Whether a row by itself is packed luma and pairs that only need to be taken apart.
    bool splits = false;
};
YuvWay yuvWay(YuvLayout from, YuvLayout to);

struct YuvRows {
    YuvSamples<std::uint8_t const> upper;
    /// The row whose chroma is averaged with the upper row's; null if there is none.
    YuvSamples<std::uint8_t const> lower;
};

/// Writes a row of any width. Chroma is the truncated mean over the pixels that share it. Without
/// an address for Y no luma is written, without addresses for U and V no chroma.
void convertYuv(YuvWay way, YuvRows src, std::size_t width, YuvSamples<std::uint8_t> dst);

/// The same with luma alone as source.
void grayToYuv(YuvLayout to, std::uint8_t const* gray, std::size_t width,
               YuvSamples<std::uint8_t> dst);

/// The samples of a plane's row that may be written, at any distance from one another.
struct StridedSamples {
    std::uint8_t* first;
    std::int64_t step;  ///< bytes
    std::int64_t count;
};

void copySamples(std::uint8_t const* src, std::int64_t src_step, StridedSamples dst);

/// Chroma of one or two rows.
struct ChromaRows {
    std::uint8_t const* upper;
    std::uint8_t const* lower;  ///< may be null
    std::int64_t step;
    std::int64_t pixels;  ///< that share a sample
};

/// The truncated mean of each `group` pixels. The row's end may cut the last group.
void averageChroma(ChromaRows src, std::int64_t width, std::int64_t group, StridedSamples dst);

}  // namespace ox::rows
