// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "backends.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "failure.h"
#include "ox_cv/ox_impl_rules.h"
#include "parse.h"
#include "vector_limits.h"

namespace oxcv {

namespace {

bool convertsAnywhere(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size) {
    return whyNotConverted(src, dst, size).empty() || convertsInPipeline(src, dst, size);
}

bool scalesAnywhere(ox::FrameFormat format, ox::ResizeMethod method) {
    return whyNotScaled(format, method).empty() || ox::impl::pipelineScales(format, method);
}

struct BackendChoice {
    char const* name;
    Offer offer;
};

constexpr std::array backendChoices{
    BackendChoice{"simd", {true, convertsAnywhere, scalesAnywhere, true}},
    BackendChoice{"base", {false, convertsInPipeline, ox::impl::pipelineScales, false}},
};

}  // namespace

std::vector<std::string> backendNames() {
    std::vector<std::string> names;
    std::transform(backendChoices.begin(), backendChoices.end(), std::back_inserter(names),
                   [](BackendChoice const& choice) { return choice.name; });
    return names;
}

Offer const& offerOf(std::string const& name) {
    auto const* const choice = std::find_if(backendChoices.begin(), backendChoices.end(),
                                            [&](BackendChoice const& c) { return name == c.name; });
    if (choice == backendChoices.end()) {
        throw UsageError("there is no backend '" + name + "'");
    }
    return choice->offer;
}

Backend::Backend(std::string const& name, Notes& notes) : _offer(offerOf(name)), _notes(notes) {}

void Backend::setMethods(ox::ResizeMethod of_scaling, ox::ResizeMethod of_warps) {
    _vector.setIntProperty(ox::PropertyResizeMethod, static_cast<int>(of_scaling));
    _pipeline.setIntProperty(ox::PropertyResizeMethod, static_cast<int>(of_scaling));
    _vector.setIntProperty(ox::PropertyWarpMethod, static_cast<int>(of_warps));
}

ox::ICvBackend& Backend::forConversion(std::string const& step, ox::FrameFormat src,
                                       ox::FrameFormat dst, ox::Size size) {
    return choose(step, whyNotConverted(src, dst, size));
}

ox::ICvBackend& Backend::forScaling(std::string const& step, ox::FrameFormat format,
                                    ox::ResizeMethod method) {
    std::string_view const refusal = whyNotScaled(format, method);
    if (_offer.vectors && !_offer.scales(format, method)) {
        throw Failure(step + ": " + shortName(format) + ": " + std::string(refusal) +
                      ", nor does the pipeline");
    }
    return choose(step, refusal);
}

ox::ICvBackend& Backend::forWarp(std::string const& step, ox::FrameLayout const& layout) {
    std::string_view const refusal = whyNotWarped(layout);
    if (!refusal.empty()) {
        throw Failure(step + ": " + shortName(layout.format) + ": " + std::string(refusal));
    }
    return _vector;
}

ox::ICvBackend& Backend::forArithmetic() {
    return choose({}, {});
}

ox::ICvBackend& Backend::choose(std::string const& step, std::string_view refusal) {
    if (!_offer.vectors) {
        return _pipeline;
    }
    if (refusal.empty()) {
        return _vector;
    }
    leaveToPipeline(step, refusal);
    return _pipeline;
}

void Backend::leaveToPipeline(std::string const& step, std::string_view reason) {
    if (_offer.vectors) {
        _notes.say(step + ": done by the pipeline backend, since " + std::string(reason));
    }
}

}  // namespace oxcv
