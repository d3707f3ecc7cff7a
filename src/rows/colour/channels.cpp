#include "rows/colour/channels.h"

#include <cstring>

#include "simd/kernels/kernels.h"

namespace ox::rows {

void splitChannels(std::uint8_t const* row, std::size_t pixels, std::size_t channels,
                   std::uint8_t* const* planes) {
    switch (channels) {
        case 1:
            std::memcpy(planes[0], row, pixels);
            return;
        case 2:
            Simd::SplitTwoPlanes(row, 2 * pixels, pixels, 1, planes[0], pixels, planes[1], pixels);
            return;
        case 3:
            Simd::SplitThreePlanes(row, 3 * pixels, pixels, 1, planes[0], pixels, planes[1], pixels,
                                   planes[2], pixels);
            return;
        default:
            for (std::size_t i = 0; i < pixels; ++i) {
                for (std::size_t c = 0; c < channels; ++c) {
                    planes[c][i] = row[i * channels + c];
                }
            }
    }
}

void mergeChannels(std::uint8_t const* const* planes, std::size_t pixels, std::size_t channels,
                   std::uint8_t* row) {
    switch (channels) {
        case 1:
            std::memcpy(row, planes[0], pixels);
            return;
        case 2:
            Simd::MergeTwoPlanes(planes[0], pixels, planes[1], pixels, pixels, 1, row, 2 * pixels);
            return;
        case 3:
            Simd::MergeThreePlanes(planes[0], pixels, planes[1], pixels, planes[2], pixels, pixels,
                                   1, row, 3 * pixels);
            return;
        default:
            for (std::size_t i = 0; i < pixels; ++i) {
                for (std::size_t c = 0; c < channels; ++c) {
                    row[i * channels + c] = planes[c][i];
                }
            }
    }
}

void swapRedBlue(std::uint8_t const* row, std::size_t pixels, std::uint8_t* dst) {
    Simd::SwapRedBlue(row, pixels, 1, 3 * pixels, dst, 3 * pixels);
}

void repeatThrice(std::uint8_t const* row, std::size_t pixels, std::uint8_t* dst) {
    Simd::ExpandGrayToBgr(row, pixels, 1, pixels, dst, 3 * pixels);
}

}  // namespace ox::rows
