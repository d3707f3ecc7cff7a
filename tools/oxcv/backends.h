/// @file
/// The library's backends by name.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox_cv/ox_cv_backend.h"
#include "routes.h"

namespace oxcv {

/// What does the work, and which conversions it does in one step.
struct Backend {
    std::unique_ptr<ox::ICvBackend> operations;
    Converts converts;
};

/// The choices of `--backend`; the first one is the default.
std::vector<std::string> backendNames();

/// @param name one of `backendNames`
Backend makeBackend(std::string const& name);

}  // namespace oxcv
