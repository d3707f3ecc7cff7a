// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <string>

#include "backends.h"
#include "commands.h"
#include "failure.h"
#include "ox_core/ox_impl_format_facts.h"
#include "routes.h"
#include "vector_limits.h"
#include "working_formats.h"

namespace oxcv {

namespace {

char letterOf(std::size_t index) {
    return static_cast<char>('a' + index);
}

std::string chromaOf(ox::FrameFormat format) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    bool const half_height = facts.planes[1].half_height;
    bool const half_width = facts.planes[1].half_width || facts.pixel_group == 2;
    bool const full = format == ox::FRAME_YUV444 || format == ox::FRAME_YUV444_PLANAR;
    if (half_width) {
        return half_height ? "4:2:0" : "4:2:2";
    }
    return full ? "4:4:4" : "-";
}

/// "nba", with a dot for each method that the format can't be scaled by.
std::string scalersOf(ox::FrameFormat format, Scales scales) {
    std::string letters;
    letters += scales(format, ox::ResizeNearestNeighbour) ? 'n' : '.';
    letters += scales(format, ox::ResizeBilinear) ? 'b' : '.';
    letters += scales(format, ox::ResizeArea) ? 'a' : '.';
    return letters;
}

/// 'w' for a format that is warped as it is, 'c' for one that is converted first.
char warpOf(ox::FrameFormat format, bool warps) {
    bool const possible = warps && whyNotWarped(ox::FrameLayout(format, {2, 2}, 1)).empty();
    char const way = formatToWarpIn(format, format) == format ? 'w' : 'c';
    return possible ? way : '.';
}

/// Library calls from one format to another: '=' for none, '.' if there is no way.
char stepsBetween(ox::FrameFormat src, ox::FrameFormat dst, Converts converts) {
    try {
        std::size_t const steps = findRoute(src, dst, {2, 2}, converts).size();
        return steps == 0 ? '=' : static_cast<char>('0' + steps);
    } catch (Failure const&) {
        return '.';
    }
}

void printHead() {
    std::printf("    format            planes  chroma  bits  scales  warps  to:");
    for (std::size_t i = 0; i < allFormats().size(); ++i) {
        std::printf(" %c", letterOf(i));
    }
    std::printf("\n");
}

void printRow(std::size_t index, Offer const& offer) {
    ox::FrameFormat const format = allFormats()[index];
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    std::printf("%c   %-18s%6d  %-6s%6d  %-6s  %-5c     ", letterOf(index),
                shortName(format).c_str(), facts.plane_count, chromaOf(format).c_str(),
                facts.planes[0].bits, scalersOf(format, offer.scales).c_str(),
                warpOf(format, offer.warps));
    for (ox::FrameFormat const dst : allFormats()) {
        std::printf(" %c", stepsBetween(format, dst, offer.converts));
    }
    std::printf("\n");
}

}  // namespace

void printFormats(std::string const& backend) {
    Offer const& offer = offerOf(backend);
    printHead();
    for (std::size_t i = 0; i < allFormats().size(); ++i) {
        printRow(i, offer);
    }
    std::printf(
        "\nbits    of a channel\n"
        "scales  by n nearest, b bilinear, a area\n"
        "warps   w as it is, c as BGR24 and back\n"
        "to      = the same, 1 to 3 conversions, . no way\n"
        "\n"
        "Floats are 0 to 255 in the order B, G, R, whatever the other format's is.\n"
        "YUYV and UYVY are scaled as NV16.\n");
}

}  // namespace oxcv
