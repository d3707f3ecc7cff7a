#include "backends.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "failure.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "vector_backend.h"

namespace oxcv {

namespace {

struct BackendChoice {
    char const* name;
    Backend (*make)();
};

Backend makePipeline() {
    return {std::make_unique<ox::CvBackendBase>(), convertsInPipeline};
}

bool convertsSomewhere(ox::FrameFormat src, ox::FrameFormat dst, ox::Size size) {
    return VectorBackend::converts(src, dst, size) || convertsInPipeline(src, dst, size);
}

Backend makeVector() {
    return {std::make_unique<VectorBackend>(), convertsSomewhere};
}

constexpr std::array choices{
    BackendChoice{"base", makePipeline},
    BackendChoice{"simd", makeVector},
};

}  // namespace

std::vector<std::string> backendNames() {
    std::vector<std::string> names;
    std::transform(choices.begin(), choices.end(), std::back_inserter(names),
                   [](BackendChoice const& choice) { return choice.name; });
    return names;
}

Backend makeBackend(std::string const& name) {
    auto const* const choice = std::find_if(choices.begin(), choices.end(),
                                            [&](BackendChoice const& c) { return name == c.name; });
    if (choice == choices.end()) {
        throw UsageError("there is no backend '" + name + "'");
    }
    return choice->make();
}

}  // namespace oxcv
