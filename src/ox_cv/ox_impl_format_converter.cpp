// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_format_converter.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_impl_format_converter"};
/// Nearly all failures have this text; callers tell them apart by status.
constexpr char unsupportedFormat[] =
    "Failure in ImplFormatConverter::get_context(...) : unsupported format.";

/// Fields as in `FormatInfo`, from `FRAME_I420` on.
constexpr std::array<FormatInfo, 10> yuvTable{{
    {2, 2, 0, 2, 1, 0, 0, 0, 1, 1, 1},  // FRAME_I420
    {2, 2, 0, 1, 2, 0, 0, 0, 1, 1, 1},  // FRAME_YV12
    {2, 2, 0, 1, 1, 0, 1, 0, 1, 2, 2},  // FRAME_NV12
    {2, 2, 0, 1, 1, 0, 0, 1, 1, 2, 2},  // FRAME_NV21
    {2, 1, 0, 1, 2, 0, 0, 0, 1, 1, 1},  // FRAME_YV16
    {2, 1, 0, 0, 0, 0, 3, 1, 2, 4, 4},  // FRAME_YUYV
    {2, 1, 0, 0, 0, 1, 2, 0, 2, 4, 4},  // FRAME_UYVY
    {2, 1, 0, 1, 1, 0, 1, 0, 1, 2, 2},  // FRAME_NV16
    {1, 1, 0, 0, 0, 0, 2, 1, 3, 3, 3},  // FRAME_YUV444
    {1, 1, 0, 2, 1, 0, 0, 0, 1, 1, 1},  // FRAME_YUV444_PLANAR
}};

constexpr bool isYuv(FrameFormat format) {
    return format >= FRAME_I420 && format <= FRAME_YUV444_PLANAR;
}

constexpr FormatInfo const& yuvInfo(FrameFormat format) {
    return yuvTable[static_cast<std::size_t>(format - FRAME_I420)];
}

constexpr std::array<rows::YuvLayout, yuvTable.size()> layoutTable = [] {
    using enum rows::YuvLayout;
    return std::array{HalfPlanes, HalfPlanes, PairsUv, PairsVu,   HalfPlanes,
                      PackedYuyv, PackedUyvy, PairsUv, PackedYuv, FullPlanes};
}();
static_assert(std::ranges::equal(yuvTable, layoutTable, {}, yuvLayoutOf));

/// The records repeat the subsampling of the table of formats.
constexpr bool agreesWithFacts(FrameFormat format) {
    impl::FormatFacts const& facts = impl::factsOf(format);
    bool const half_width = facts.planes[1].half_width || facts.pixel_group == 2;
    return yuvInfo(format).x_subsampling == (half_width ? 2 : 1) &&
           yuvInfo(format).y_subsampling == (facts.planes[1].half_height ? 2 : 1);
}
static_assert(agreesWithFacts(FRAME_I420) && agreesWithFacts(FRAME_YV12) &&
              agreesWithFacts(FRAME_NV12) && agreesWithFacts(FRAME_NV21) &&
              agreesWithFacts(FRAME_YV16) && agreesWithFacts(FRAME_YUYV) &&
              agreesWithFacts(FRAME_UYVY) && agreesWithFacts(FRAME_NV16) &&
              agreesWithFacts(FRAME_YUV444) && agreesWithFacts(FRAME_YUV444_PLANAR));

/// Formats that pass without a record, as sources and as destinations.
constexpr bool hasNoInfo(FrameFormat format) {
    return (format >= FRAME_GRAY8 && format <= FRAME_BGR_PLANAR) || format == FRAME_BGR_32F ||
           format == FRAME_BGR_32F_PLANAR;
}

/// `chooseConversion` adds the functions that serve many pairs.
constexpr ConversionRecord conversionTable[] = {
    {FRAME_GRAY8, FRAME_BGR24, grayToBgr24, 1},
    {FRAME_RGB24, FRAME_BGR24, swapRedBlue, 1},
    {FRAME_RGB_PLANAR, FRAME_RGB24, planarToPacked, 1},
    {FRAME_BGR_PLANAR, FRAME_BGR24, planarToPacked, 1},
    {FRAME_BGR24, FRAME_GRAY8, bgr24ToGray, 1},
    {FRAME_BGR24, FRAME_RGB24, swapRedBlue, 1},
    {FRAME_BGR24, FRAME_BGR_PLANAR, bgr24ToBgrPlanar, 1},
    {FRAME_BGR24, FRAME_I420, bgr24ToYuv420Planar, 2},
    {FRAME_BGR24, FRAME_YV12, bgr24ToYuv420Planar, 2},
    {FRAME_BGR24, FRAME_NV12, bgr24ToYuv420SemiPlanar, 2},
    {FRAME_BGR24, FRAME_NV21, bgr24ToYuv420SemiPlanar, 2},
    {FRAME_BGR24, FRAME_YV16, bgr24ToYv16, 1},
    {FRAME_BGR24, FRAME_YUYV, bgr24ToYuv422Packed, 1},
    {FRAME_BGR24, FRAME_UYVY, bgr24ToYuv422Packed, 1},
    {FRAME_BGR24, FRAME_NV16, bgr24ToNv16, 1},
    {FRAME_BGR24, FRAME_YUV444, bgr24ToYuv444, 1},
    {FRAME_BGR24, FRAME_YUV444_PLANAR, bgr24ToYuv444Planar, 1},
    {FRAME_BGR24, FRAME_BGR_32F, bgr24ToBgr32f, 1},
    {FRAME_BGR24, FRAME_BGR_32F_PLANAR, bgr24ToBgr32fPlanar, 1},
    {FRAME_BGR_32F, FRAME_BGR24, bgr32fToBgr24, 1},
    {FRAME_I420, FRAME_BGR24, yuv420PlanarToBgr24, 1},
    {FRAME_YV12, FRAME_BGR24, yuv420PlanarToBgr24, 1},
    {FRAME_NV12, FRAME_BGR24, yuv420SemiPlanarToBgr24, 1},
    {FRAME_NV21, FRAME_BGR24, yuv420SemiPlanarToBgr24, 1},
    {FRAME_YV16, FRAME_BGR24, yv16ToBgr24, 1},
    {FRAME_YUYV, FRAME_BGR24, yuv422PackedToBgr24, 1},
    {FRAME_UYVY, FRAME_BGR24, yuv422PackedToBgr24, 1},
    {FRAME_NV16, FRAME_BGR24, nv16ToBgr24, 1},
    {FRAME_YUV444, FRAME_BGR24, yuv444ToBgr24, 1},
    {FRAME_YUV444_PLANAR, FRAME_BGR24, yuv444PlanarToBgr24, 1},
};

/// The one decision about a pair of formats that have passed `getFormatInfo`.
/// @param dst_y_subsampling of the destination's record, which may be a stale one
/// @return a null function if the pair doesn't exist
ConversionRecord chooseConversion(FrameFormat src, FrameFormat dst, int dst_y_subsampling) {
    auto const* const record =
        std::find_if(std::begin(conversionTable), std::end(conversionTable),
                     [=](ConversionRecord const& r) { return r.src == src && r.dst == dst; });
    if (record != std::end(conversionTable)) {
        return *record;
    }
    if (src == FRAME_GRAY8 && isYuv(dst)) {
        return {src, dst, grayToYuv, 1};
    }
    if (isYuv(src) && dst == FRAME_GRAY8) {
        return {src, dst, yuvToGray, 1};
    }
    return {src, dst, isYuv(src) ? yuvToYuv : nullptr, dst_y_subsampling};
}

}  // namespace

std::span<ConversionRecord const> conversionRecords() {
    return conversionTable;
}

bool hasConversion(FrameFormat src, FrameFormat dst) {
    ConversionRecord const record =
        chooseConversion(src, dst, isYuv(dst) ? yuvInfo(dst).y_subsampling : 0);
    return record.function != nullptr && record.window_size > 0;
}

void ImplFormatConverter::getFormatInfo(FrameFormat format, FormatInfo& info) const {
    if (isYuv(format)) {
        info = yuvInfo(format);
    } else if (!hasNoInfo(format)) {
        here.fail({StatusUnsupportedFormat, "getFormatInfo"}, "%s", unsupportedFormat);
    }
}

/// Limits writing to the row's bytes: a record of another format may describe longer rows.
void ImplFormatConverter::limitStaleRecord(FrameFormat dst_format, int row_width) {
    dst_limited = !isYuv(dst_format);
    if (dst_limited) {
        FrameLayout const row(dst_format, {row_width, 1}, 1);
        for (int i = 0; i < 4; ++i) {
            dst_limits[i] = static_cast<std::int64_t>(row.plane[i].rowBytes);
        }
    }
}

void ImplFormatConverter::get_context(FrameFormat src_format, FrameFormat dst_format,
                                      int* window_size) {
    getFormatInfo(src_format, src);
    getFormatInfo(dst_format, dst);
    ConversionRecord const conversion = chooseConversion(src_format, dst_format, dst.y_subsampling);
    if (conversion.function == nullptr) {
        // Only the float planes have no row of their own in the table of pairs.
        Status const status =
            src_format == FRAME_BGR_32F_PLANAR ? StatusUnsupportedFormat : StatusNotSupported;
        here.fail(status, "%s", unsupportedFormat);
    }
    function = conversion.function;
    *window_size = conversion.window_size;
}

void ImplFormatConverter::findJoints(FrameFormat src_format, FrameFormat dst_format,
                                     int row_width) {
    auto const shares = [](FrameFormat format, FormatInfo const& info, auto subsampling) {
        return isYuv(format) && info.*subsampling == 2;
    };
    bool const src_rows = shares(src_format, src, &FormatInfo::y_subsampling);
    bool const dst_rows = shares(dst_format, dst, &FormatInfo::y_subsampling);
    bool const whole_pairs =
        row_width % 2 == 0 || !(shares(src_format, src, &FormatInfo::x_subsampling) ||
                                shares(dst_format, dst, &FormatInfo::x_subsampling));
    bool const limited = function == yuvToYuv && dst_limited;
    joins_rows = whole_pairs && !limited && !dst_rows && (!src_rows || function == yuvToGray);
    joins_planes = whole_pairs && function == yuvToYuv && src_rows && dst_rows;
}

void ImplFormatConverter::reuse(FrameFormat src_format, FrameFormat dst_format, int row_width,
                                int* window_size) {
    if (window_size == nullptr) {
        here.fail(StatusUnsupportedFormat,
                  "Failure in ImplFormatConverter::reuse(...) : Null pointer to window size.");
    }
    function = nullptr;
    get_context(src_format, dst_format, window_size);
    limitStaleRecord(dst_format, row_width);
    findJoints(src_format, dst_format, row_width);
    bool const by_layouts = function == yuvToYuv && !dst_limited;
    yuv_way = by_layouts ? rows::yuvWay(yuvLayoutOf(src), yuvLayoutOf(dst)) : rows::YuvWay{};
    width = row_width;
    initialized = true;
}

void ImplFormatConverter::produce(RowData const* const* rows, RowData& row) const {
    // A caller's own producer may claim a negative width, which the row loops don't expect.
    if (function != nullptr && width > 0) {
        function(rows, row, width, this);
    }
}

}  // namespace ox
