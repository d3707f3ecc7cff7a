// Rows of packed B,G,R to gray and to YUV: integer coefficients, no rounding beyond the constants.

#include "rows/colour/formulas.h"
#include "rows/colour/plain.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;

/// One sample per group of `Columns` pixels in `Rows` rows: the sum of their terms over their
/// number; a last group that is cut by the row's end has a single column.
template <BgrFormula formula, std::size_t Columns, int Rows>
void sampleRow(BgrRows src, std::size_t width, Byte* dst, std::size_t step) {
    static_assert(Columns <= 2 && Rows <= 2);
    constexpr int columnShift = fractionBits + (Rows - 1);
    constexpr int groupShift = columnShift + static_cast<int>(Columns - 1);
    auto const column = [=](std::size_t pixel) {
        int const term = termOf(formula, src.upper + 3 * pixel);
        return Rows == 2 ? term + termOf(formula, src.lower + 3 * pixel) : term;
    };
    std::size_t const groups = width / Columns;
    for (std::size_t i = 0; i < groups; ++i) {
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

template <BgrFormula formula, YuvSteps steps>
void sampleChroma(BgrRows src, std::size_t width, Byte* dst) {
    if (dst == nullptr) {
        return;
    }
    if (steps.pixels == 2 && src.lower != nullptr) {
        sampleRow<formula, steps.pixels, 2>(src, width, dst, steps.chroma);
    } else {
        sampleRow<formula, steps.pixels, 1>(src, width, dst, steps.chroma);
    }
}

template <YuvSteps steps>
void convertRow(BgrRows src, std::size_t width, YuvSamples<Byte> dst) {
    if (dst.y != nullptr) {
        sampleRow<lumaOfBgr, 1, 1>(src, width, dst.y, steps.luma);
    }
    sampleChroma<uOfBgr, steps>(src, width, dst.u);
    sampleChroma<vOfBgr, steps>(src, width, dst.v);
}

}  // namespace

constinit std::array<BgrToYuv*, yuvLayouts> const plainBgrToYuv =
    byLayout([]<YuvLayout layout>() { return &convertRow<stepsOf(layout)>; });

void plainBgrToGray(Byte const* bgr, std::size_t width, Byte* gray) {
    sampleRow<grayOfBgr, 1, 1>({bgr, nullptr}, width, gray, 1);
}

void takePlainBgrToYuvRoutines(ColourRoutines& routines) {
    routines.bgr_to_yuv = plainBgrToYuv;
    routines.bgr_to_gray = plainBgrToGray;
}

}  // namespace ox::rows
