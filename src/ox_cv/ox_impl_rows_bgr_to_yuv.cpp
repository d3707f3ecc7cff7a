// Rows of packed B,G,R to gray and to YUV: integer coefficients, no rounding beyond the constants.

#include "ox_cv/ox_impl_format_converter.h"

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

/// The same for a plane that may get no row on this step.
template <class Component, int Columns>
void samplePlane(Byte const* src, Byte* plane, int offset, int step, int width) {
    if (plane != nullptr) {
        sampleRow<Component, Columns, 1>(src, nullptr, plane + offset, step, width);
    }
}

/// Chroma of a 4:2:0 row; the last row of an odd height stands alone.
template <class Component>
void sampleQuarter(RowData const* const* rows, Byte* dst, int step, int width) {
    Byte const* const upper = (*rows[0])[0];
    if (rows[1] != nullptr) {
        sampleRow<Component, 2, 2>(upper, (*rows[1])[0], dst, step, width);
    } else {
        sampleRow<Component, 2, 1>(upper, nullptr, dst, step, width);
    }
}

}  // namespace

void bgr24ToGray(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    samplePlane<Gray, 1>((*rows[0])[0], dst[0], 0, 1, width);
}

void bgr24ToYuv420Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    samplePlane<Luma, 1>((*rows[0])[0], dst[0], 0, 1, width);
    if (dst[1] != nullptr && dst[2] != nullptr) {
        sampleQuarter<ChromaU>(rows, dst[context->dst.u_plane], 1, width);
        sampleQuarter<ChromaV>(rows, dst[context->dst.v_plane], 1, width);
    }
}

void bgr24ToYuv420SemiPlanar(RowData const* const* rows, RowData& dst, int width,
                             ImplFormatConverter const* context) {
    samplePlane<Luma, 1>((*rows[0])[0], dst[0], 0, 1, width);
    if (dst[1] != nullptr) {
        sampleQuarter<ChromaU>(rows, dst[1] + context->dst.u_offset, 2, width);
        sampleQuarter<ChromaV>(rows, dst[1] + context->dst.v_offset, 2, width);
    }
}

void bgr24ToYv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    samplePlane<Luma, 1>(src, dst[0], 0, 1, width);
    samplePlane<ChromaV, 2>(src, dst[1], 0, 1, width);
    samplePlane<ChromaU, 2>(src, dst[2], 0, 1, width);
}

void bgr24ToYuv422Packed(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const* context) {
    Byte const* const src = (*rows[0])[0];
    FormatInfo const& info = context->dst;
    samplePlane<Luma, 1>(src, dst[0], info.y_offset, 2, width);
    samplePlane<ChromaU, 2>(src, dst[0], info.u_offset, 4, width);
    samplePlane<ChromaV, 2>(src, dst[0], info.v_offset, 4, width);
    if (dst[0] != nullptr && width % 2 != 0) {
        dst[0][info.y_offset + std::int64_t{2} * width] = 0;  // a row is whole macro-pixels
    }
}

void bgr24ToNv16(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    samplePlane<Luma, 1>(src, dst[0], 0, 1, width);
    samplePlane<ChromaU, 2>(src, dst[1], 0, 2, width);
    samplePlane<ChromaV, 2>(src, dst[1], 1, 2, width);
}

void bgr24ToYuv444(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    samplePlane<Luma, 1>(src, dst[0], 0, 3, width);
    samplePlane<ChromaU, 1>(src, dst[0], 1, 3, width);
    samplePlane<ChromaV, 1>(src, dst[0], 2, 3, width);
}

void bgr24ToYuv444Planar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    samplePlane<Luma, 1>(src, dst[0], 0, 1, width);
    samplePlane<ChromaU, 1>(src, dst[1], 0, 1, width);
    samplePlane<ChromaV, 1>(src, dst[2], 0, 1, width);
}

}  // namespace ox
