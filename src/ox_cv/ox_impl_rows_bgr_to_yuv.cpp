// Rows of packed B,G,R to gray and to YUV: integer coefficients, no rounding beyond the constants.

#include "ox_cv/ox_impl_format_converter.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

using Byte = unsigned char;

constexpr std::int64_t pixelBytes = 3;

struct Gray {
    /// Weights of 256 in all without an offset: not the luma below, on purpose.
    static int term(int b, int g, int r) { return 28 * b + 152 * g + 76 * r; }
};

struct Luma {
    static int term(int b, int g, int r) { return 65 * r + 129 * g + 25 * b + 4096; }
};

/// Always positive, so that sums of terms can be shifted.
struct ChromaU {
    static int term(int b, int g, int r) { return 112 * b + 32768 - (74 * g + 38 * r); }
};

struct ChromaV {
    static int term(int b, int g, int r) { return 112 * r + 32768 - (94 * g + 18 * b); }
};

template <class Component>
int termAt(Byte const* row, std::int64_t pixel) {
    Byte const* const p = row + pixel * pixelBytes;
    return Component::term(p[0], p[1], p[2]);
}

/// One sample per group of `Columns` pixels in `Rows` rows: the sum of their terms over their
/// number; a last group that is cut by the row's end has a single column.
template <class Component, int Columns, int Rows>
void sampleRow(Byte const* upper, Byte const* lower, Byte* dst, int step, int width) {
    static_assert(Columns <= 2 && Rows <= 2);
    constexpr int columnShift = 8 + (Rows - 1);
    constexpr int groupShift = columnShift + (Columns - 1);
    auto const column = [=](std::int64_t pixel) {
        int const term = termAt<Component>(upper, pixel);
        return Rows == 2 ? term + termAt<Component>(lower, pixel) : term;
    };
    std::int64_t const groups = width / Columns;
    for (std::int64_t i = 0; i < groups; ++i) {
        int sum = column(i * Columns);
        if (Columns == 2) {
            sum += column(i * Columns + 1);
        }
        dst[i * step] = static_cast<Byte>(sum >> groupShift);
    }
    if (Columns == 2 && width % 2 != 0) {
        dst[groups * step] = static_cast<Byte>(column(width - 1) >> columnShift);
    }
}

/// One sample per group for each component whose address isn't null.
template <int LumaStep, int ChromaStep, int Columns>
struct SampleRows {
    using Samples = rows::YuvSamples<Byte>;

    /// Converts all pixels but the last few by vectors, if it can.
    /// @return how many are done
    static int convertByVectors(rows::BgrRows src, Samples dst, int width) {
        rows::Routines const& routines = rows::routines();
        auto const layout = rows::yuvLayoutOf(dst, LumaStep, ChromaStep, Columns);
        rows::BgrToYuv* const convert =
            routines.colour.bgr_to_yuv[static_cast<std::size_t>(layout)];
        bool const all = dst.y != nullptr && dst.u != nullptr && dst.v != nullptr;
        bool const luma_alone = LumaStep == 1 && Columns == 2 && dst.y != nullptr &&
                                dst.u == nullptr && dst.v == nullptr;
        int const pixels = width / Columns * Columns;
        if (convert == nullptr || !(all || luma_alone) ||
            pixels < static_cast<int>(routines.colour.least_pixels)) {
            return 0;
        }
        convert(src, static_cast<std::size_t>(pixels), dst);
        return pixels;
    }

    template <class Component, int Step, int Group>
    static void sample(rows::BgrRows src, Byte* dst, std::int64_t first, int width) {
        if (dst == nullptr || first == width) {
            return;
        }
        Byte const* const upper = src.upper + first * pixelBytes;
        Byte* const from = dst + first / Group * Step;
        auto const rest = static_cast<int>(width - first);
        if (Group == 2 && src.lower != nullptr) {
            sampleRow<Component, Group, 2>(upper, src.lower + first * pixelBytes, from, Step, rest);
        } else {
            sampleRow<Component, Group, 1>(upper, nullptr, from, Step, rest);
        }
    }

    static void convert(rows::BgrRows src, Samples dst, int width) {
        int const done = convertByVectors(src, dst, width);
        sample<Luma, LumaStep, 1>({src.upper, nullptr}, dst.y, done, width);
        sample<ChromaU, ChromaStep, Columns>(src, dst.u, done, width);
        sample<ChromaV, ChromaStep, Columns>(src, dst.v, done, width);
    }
};

/// Chroma of 4:2:0 takes the next row as well; the last row of an odd height stands alone.
rows::BgrRows twoRows(RowData const* const* rows) {
    return {(*rows[0])[0], rows[1] != nullptr ? (*rows[1])[0] : nullptr};
}

rows::BgrRows oneRow(RowData const* const* rows) {
    return {(*rows[0])[0], nullptr};
}

/// A sample's address in a plane that may get no row on this step.
Byte* at(Byte* plane, int offset) {
    return plane != nullptr ? plane + offset : nullptr;
}

}  // namespace

void bgr24ToGray(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    if (dst[0] == nullptr) {
        return;
    }
    Byte const* const src = (*rows[0])[0];
    rows::Routines const& routines = rows::routines();
    if (routines.colour.bgr_to_gray != nullptr &&
        width >= static_cast<int>(routines.colour.least_pixels)) {
        routines.colour.bgr_to_gray(src, static_cast<std::size_t>(width), dst[0]);
    } else {
        sampleRow<Gray, 1, 1>(src, nullptr, dst[0], 1, width);
    }
}

void bgr24ToYuv420Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    bool const chroma = dst[1] != nullptr && dst[2] != nullptr;
    SampleRows<1, 1, 2>::convert(twoRows(rows),
                                 {dst[0], chroma ? dst[context->dst.u_plane] : nullptr,
                                  chroma ? dst[context->dst.v_plane] : nullptr},
                                 width);
}

void bgr24ToYuv420SemiPlanar(RowData const* const* rows, RowData& dst, int width,
                             ImplFormatConverter const* context) {
    SampleRows<1, 2, 2>::convert(
        twoRows(rows),
        {dst[0], at(dst[1], context->dst.u_offset), at(dst[1], context->dst.v_offset)}, width);
}

void bgr24ToYv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    SampleRows<1, 1, 2>::convert(oneRow(rows), {dst[0], dst[2], dst[1]}, width);
}

void bgr24ToYuv422Packed(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    FormatInfo const& info = context->dst;
    SampleRows<2, 4, 2>::convert(
        oneRow(rows),
        {at(dst[0], info.y_offset), at(dst[0], info.u_offset), at(dst[0], info.v_offset)}, width);
    if (dst[0] != nullptr && width % 2 != 0) {
        dst[0][info.y_offset + std::int64_t{2} * width] = 0;  // a row is whole macro-pixels
    }
}

void bgr24ToNv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    SampleRows<1, 2, 2>::convert(oneRow(rows), {dst[0], dst[1], at(dst[1], 1)}, width);
}

void bgr24ToYuv444(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    SampleRows<3, 3, 1>::convert(oneRow(rows), {dst[0], at(dst[0], 1), at(dst[0], 2)}, width);
}

void bgr24ToYuv444Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    SampleRows<1, 1, 1>::convert(oneRow(rows), {dst[0], dst[1], dst[2]}, width);
}

}  // namespace ox
