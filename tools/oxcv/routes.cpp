#include "routes.h"

#include <algorithm>
#include <string>
#include <utility>

#include "failure.h"
#include "ox_core/ox_exception.h"
#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"
#include "parse.h"
#include "vector_limits.h"

namespace oxcv {

namespace {

/// Large enough for every conversion and scaler that exists.
constexpr ox::Size trialSize{8, 8};
constexpr ox::Size trialScaledSize{6, 6};

ox::Frame blankFrame(ox::FrameFormat format, ox::Size size) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    frame.setZero();
    return frame;
}

/// Always by a new converter: a used one remembers things about earlier destinations, and takes
/// pairs then that don't exist.
void tryConversion(ox::FrameFormat src, ox::FrameFormat dst) {
    ox::Frame const source = blankFrame(src, trialSize);
    ox::Frame target = blankFrame(dst, trialSize);
    ox::FormatConverter converter;
    converter.reuse(source, dst);
    ox::produceFrame(converter, target);
}

template <class Attempt>
bool succeeds(Attempt attempt) {
    try {
        attempt();
        return true;
    } catch (ox::Exception const&) {
        return false;
    }
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
    return src == dst || succeeds([&] { tryConversion(src, dst); });
}

bool scalesInPipeline(ox::FrameFormat format, ox::ResizeMethod method) {
    return succeeds([&] {
        ox::Frame const source = blankFrame(format, trialSize);
        ox::Frame target = blankFrame(format, trialScaledSize);
        ox::Scaler scaler;
        scaler.reuse(source, trialScaledSize, static_cast<ox::ScaleMethod>(method));
        ox::produceFrame(scaler, target);
    });
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
    std::string const what = "no way from " + shortName(src) + " to " + shortName(dst);
    try {
        tryConversion(src, dst);
    } catch (ox::Exception const& refusal) {
        throw Failure(what + ": " + refusal.what());
    }
    throw Failure(what);
}

}  // namespace oxcv
