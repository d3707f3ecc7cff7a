// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "routes.h"

#include <algorithm>
#include <string>
#include <utility>

#include "failure.h"
#include "ox_core/ox_exception.h"
#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_impl_rules.h"
#include "parse.h"
#include "vector_limits.h"

namespace oxcv {

namespace {

/// What the library says to a pair that its pipeline doesn't convert.
std::string refusalOf(ox::FrameFormat src, ox::FrameFormat dst) {
    ox::Frame source;
    source.reuse(src, {2, 2}, ox::DeviceContext(), 0);
    try {
        ox::FormatConverter().reuse(source, dst);
    } catch (ox::Exception const& refusal) {
        return refusal.what();
    }
    return "there is no such pair";
}

std::vector<ox::FrameFormat> listFormats() {
    std::vector<ox::FrameFormat> formats;
    for (std::size_t i = 0; i < ox::impl::formatTable.size(); ++i) {
        if (ox::impl::formatTable[i].plane_count > 0) {
            formats.push_back(static_cast<ox::FrameFormat>(i));
        }
    }
    return formats;
}

/// The way between planes R, G, B and floats: as packed pixels, red first and then blue first, or
/// the other way round. Empty if one of them is something else.
std::vector<ox::FrameFormat> orderedRoute(ox::FrameFormat src, ox::FrameFormat dst) {
    if (src == ox::FRAME_RGB_PLANAR && isColourOfFloats(dst)) {
        return {ox::FRAME_RGB24, ox::FRAME_BGR24, dst};
    }
    if (isColourOfFloats(src) && dst == ox::FRAME_RGB_PLANAR) {
        return {ox::FRAME_BGR24, ox::FRAME_RGB24, dst};
    }
    return {};
}

bool isWay(ox::FrameFormat src, std::vector<ox::FrameFormat> const& route, ox::Size size,
           Converts converts) {
    ox::FrameFormat from = src;
    return !route.empty() && std::all_of(route.begin(), route.end(), [&](ox::FrameFormat next) {
        return converts(std::exchange(from, next), next, size);
    });
}

/// Formats to go through, the best first: the library's widest crossing is `FRAME_BGR24`.
std::vector<ox::FrameFormat> crossings() {
    std::vector<ox::FrameFormat> formats = allFormats();
    auto const bgr = std::find(formats.begin(), formats.end(), ox::FRAME_BGR24);
    std::rotate(formats.begin(), bgr, bgr + 1);
    return formats;
}

}  // namespace

std::vector<ox::FrameFormat> const& allFormats() {
    static std::vector<ox::FrameFormat> const formats = listFormats();
    return formats;
}

bool convertsInPipeline(ox::FrameFormat src, ox::FrameFormat dst, ox::Size /*size*/) {
    return ox::impl::pipelineConverts(src, dst);
}

std::vector<ox::FrameFormat> findRoute(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size,
                                       Converts converts) {
    if (src == dst) {
        return {};
    }
    if (converts(src, dst, size)) {
        return {dst};
    }
    for (ox::FrameFormat const crossing : crossings()) {
        if (converts(src, crossing, size) && converts(crossing, dst, size)) {
            return {crossing, dst};
        }
    }
    if (auto route = orderedRoute(src, dst); isWay(src, route, size, converts)) {
        return route;
    }
    throw Failure("no way from " + shortName(src) + " to " + shortName(dst) + ": " +
                  refusalOf(src, dst));
}

}  // namespace oxcv
