/// @file
/// The two questions about rows of subsampled planes.

#pragma once

#include <cstdint>

namespace ox::impl {

/// Whether a plane of that mask moves on to its next row after frame row `row`.
constexpr bool movesOnAfter(std::int32_t row, std::uint32_t mask) {
    auto const bits = static_cast<std::uint32_t>(row);
    return (mask | bits) == bits;
}

/// Whether a plane of that mask has a row of its own at frame row `row`.
constexpr bool hasRowAt(std::int32_t row, std::uint32_t mask) {
    return (static_cast<std::uint32_t>(row) & mask) == 0;
}

/// The text of `RowReader` and `RowWriter`.
constexpr char cursorNotInitialized[] =
    "Failure in RowWriter::RowWriter(...) : frame is not initialized.";

}  // namespace ox::impl
