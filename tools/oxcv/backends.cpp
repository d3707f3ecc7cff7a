#include "backends.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "failure.h"
#include "ox_cv/ox_cv_backend_base.h"

namespace oxcv {

namespace {

struct BackendChoice {
    char const* name;
    std::unique_ptr<ox::ICvBackend> (*make)();
};

template <class Backend>
std::unique_ptr<ox::ICvBackend> make() {
    return std::make_unique<Backend>();
}

/// Another backend needs no more than a line here.
constexpr std::array choices{
    BackendChoice{"base", make<ox::CvBackendBase>},
};

}  // namespace

std::vector<std::string> backendNames() {
    std::vector<std::string> names;
    std::transform(choices.begin(), choices.end(), std::back_inserter(names),
                   [](BackendChoice const& choice) { return choice.name; });
    return names;
}

std::unique_ptr<ox::ICvBackend> makeBackend(std::string const& name) {
    auto const* const choice = std::find_if(choices.begin(), choices.end(),
                                            [&](BackendChoice const& c) { return name == c.name; });
    if (choice == choices.end()) {
        throw UsageError("there is no backend '" + name + "'");
    }
    return choice->make();
}

}  // namespace oxcv
