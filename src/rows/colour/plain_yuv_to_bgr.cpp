// Rows of YUV to packed B,G,R, and Y alone. Chroma isn't interpolated.

#include <cstring>

#include "rows/colour/formulas.h"
#include "rows/colour/plain.h"

namespace ox::rows {

namespace {

using Byte = std::uint8_t;

template <YuvSteps steps>
void convertRow(YuvSamples<Byte const> src, std::size_t width, Byte* bgr) {
    for (std::size_t x = 0; x < width; ++x) {
        std::size_t const chroma = x / steps.pixels * steps.chroma;
        Byte const y = src.y[x * steps.luma];
        Byte const u = src.u[chroma];
        Byte const v = src.v[chroma];
        bgr[3 * x] = channelOf(blueFactors, y, u, v);
        bgr[3 * x + 1] = channelOf(greenFactors, y, u, v);
        bgr[3 * x + 2] = channelOf(redFactors, y, u, v);
    }
}

template <std::size_t step>
void takeLuma(Byte const* y, std::size_t pixels, Byte* luma) {
    if constexpr (step == 1) {
        std::memcpy(luma, y, pixels);
        return;
    }
    for (std::size_t x = 0; x < pixels; ++x) {
        luma[x] = y[x * step];
    }
}

}  // namespace

constinit std::array<YuvToBgr*, yuvLayouts> const plainYuvToBgr =
    byLayout([]<YuvLayout layout>() { return &convertRow<stepsOf(layout)>; });

constinit std::array<ConvertRow*, yuvLayouts> const plainLuma =
    byLayout([]<YuvLayout layout>() { return &takeLuma<stepsOf(layout).luma>; });

void takePlainYuvToBgrRoutines(ColourRoutines& routines) {
    routines.yuv_to_bgr = plainYuvToBgr;
    routines.luma = plainLuma;
}

}  // namespace ox::rows
