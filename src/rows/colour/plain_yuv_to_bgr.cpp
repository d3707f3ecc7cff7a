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

template <YuvLayout layout>
constexpr YuvToBgr* convert = convertRow<stepsOf(layout)>;

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

template <YuvLayout layout>
constexpr ConvertRow* luma = takeLuma<stepsOf(layout).luma>;

}  // namespace

std::array<YuvToBgr*, yuvLayouts> const plainYuvToBgr{
    convert<YuvLayout::HalfPlanes>, convert<YuvLayout::PairsUv>,    convert<YuvLayout::PairsVu>,
    convert<YuvLayout::PackedYuyv>, convert<YuvLayout::PackedUyvy>, convert<YuvLayout::FullPlanes>,
    convert<YuvLayout::PackedYuv>};

std::array<ConvertRow*, yuvLayouts> const plainLuma{
    luma<YuvLayout::HalfPlanes>, luma<YuvLayout::PairsUv>,    luma<YuvLayout::PairsVu>,
    luma<YuvLayout::PackedYuyv>, luma<YuvLayout::PackedUyvy>, luma<YuvLayout::FullPlanes>,
    luma<YuvLayout::PackedYuv>};

void takePlainYuvToBgrRoutines(ColourRoutines& routines) {
    routines.yuv_to_bgr = plainYuvToBgr;
    routines.luma = plainLuma;
}

}  // namespace ox::rows
