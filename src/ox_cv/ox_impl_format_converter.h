// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// How a pair of pixel formats is converted, row by row.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "ox_core/ox_frame_format.h"
#include "ox_cv/ox_row_producer.h"
#include "rows/colour/yuv_rows.h"

namespace ox {

class ImplFormatConverter;

/// Where the samples of a YUV format lie.
struct FormatInfo {
    std::int32_t x_subsampling;  ///< pixels of a row that share a chroma sample
    std::int32_t y_subsampling;  ///< frame rows that share a chroma row
    std::int32_t y_plane;        ///< plane that holds Y
    std::int32_t v_plane;
    std::int32_t u_plane;
    std::int32_t y_offset;  ///< byte offset of the first Y in a row of its plane
    std::int32_t v_offset;
    std::int32_t u_offset;
    std::int32_t y_step;  ///< bytes from one Y sample to the next
    std::int32_t v_step;
    std::int32_t u_step;
};

static_assert(sizeof(FormatInfo) == 44 && offsetof(FormatInfo, y_subsampling) == 4 &&
              offsetof(FormatInfo, y_plane) == 8 && offsetof(FormatInfo, v_plane) == 12 &&
              offsetof(FormatInfo, u_plane) == 16 && offsetof(FormatInfo, y_offset) == 20 &&
              offsetof(FormatInfo, v_offset) == 24 && offsetof(FormatInfo, u_offset) == 28 &&
              offsetof(FormatInfo, y_step) == 32 && offsetof(FormatInfo, v_step) == 36 &&
              offsetof(FormatInfo, u_step) == 40);

/// Converts one row of `width` pixels. `rows` has as many entries as the window: the current source
/// row, and the row after it or null. Planes whose entry in `dst` is null get no row.
using ConversionFunction = void (*)(RowData const* const* rows, RowData& dst, int width,
                                    ImplFormatConverter const* context);

/// How the samples of a format lie.
constexpr rows::YuvLayout yuvLayoutOf(FormatInfo const& info) {
    using enum rows::YuvLayout;
    if (info.x_subsampling == 1) {
        return info.y_step == 1 ? FullPlanes : PackedYuv;
    }
    if (info.y_step == 2) {
        return info.y_offset < info.u_offset ? PackedYuyv : PackedUyvy;
    }
    if (info.u_step == 2) {
        return info.u_offset < info.v_offset ? PairsUv : PairsVu;
    }
    return HalfPlanes;
}

/// A pair of formats with a function of its own, and the number of source rows that the function
/// needs at once. Among YUV formats, and from gray to them, one function serves all pairs.
struct ConversionRecord {
    FrameFormat src;
    FrameFormat dst;
    ConversionFunction function;
    int window_size;
};
std::span<ConversionRecord const> conversionRecords();

/// Whether a new converter, which holds no stale record, has a function for two formats.
bool hasConversion(FrameFormat src, FrameFormat dst);

/// A chosen conversion. A new object is all zero.
class ImplFormatConverter {
  public:
    /// @param width pixels in a row
    /// @param window_size receives the number of source rows that `produce` needs
    /// @throws Exception `StatusUnsupportedFormat` for a null `window_size` or an unknown format,
    ///         `StatusNotSupported` for a pair that doesn't exist
    void reuse(FrameFormat src_format, FrameFormat dst_format, int width, int* window_size);

    /// Converts a row; does nothing after a failed `reuse`.
    void produce(RowData const* const* rows, RowData& dst) const;

    FormatInfo src{};
    /// The record of the destination. A destination without a record leaves the earlier one here.
    /// If its pair has no function of its own, a YUV source is then written by that stale record.
    /// This is on purpose.
    FormatInfo dst{};
    std::int32_t width = 0;
    bool initialized = false;
    ConversionFunction function = nullptr;
    /// Rows that follow one another in memory may be converted as one long row: each row is
    /// converted by itself, and no pixels of two rows share chroma.
    bool joins_rows = false;
    /// Luma and chroma are converted separately, each with rows joined as `joins_rows` says.
    bool joins_planes = false;
    /// `dst` is the record of another format and may reach past the row.
    bool dst_limited = false;
    /// Bytes of a destination row of each plane, if `dst_limited`.
    std::int64_t dst_limits[4]{};
    /// The way of `yuvToYuv`; without one it goes by the records alone.
    rows::YuvWay yuv_way;

  private:
    void getFormatInfo(FrameFormat format, FormatInfo& info) const;
    void get_context(FrameFormat src_format, FrameFormat dst_format, int* window_size);
    void limitStaleRecord(FrameFormat dst_format, int row_width);
    void findJoints(FrameFormat src_format, FrameFormat dst_format, int row_width);
};

// The conversion functions. Sums are 32-bit; stores keep the low 8 bits.

void grayToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void grayToYuv(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuvToGray(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuvToYuv(RowData const* const*, RowData&, int, ImplFormatConverter const*);

void bgr24ToGray(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYuv420Planar(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYuv420SemiPlanar(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYv16(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYuv422Packed(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToNv16(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYuv444(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToYuv444Planar(RowData const* const*, RowData&, int, ImplFormatConverter const*);

void yuv420PlanarToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuv420SemiPlanarToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yv16ToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuv422PackedToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void nv16ToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuv444ToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void yuv444PlanarToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);

void swapRedBlue(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToBgrPlanar(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void planarToPacked(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToBgr32f(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr24ToBgr32fPlanar(RowData const* const*, RowData&, int, ImplFormatConverter const*);
void bgr32fToBgr24(RowData const* const*, RowData&, int, ImplFormatConverter const*);

}  // namespace ox
