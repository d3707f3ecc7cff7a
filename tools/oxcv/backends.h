/// @file
/// The library's backends by name.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox_cv/ox_cv_backend.h"

namespace oxcv {

/// The choices of `--backend`; the first one is the default.
std::vector<std::string> backendNames();

/// @param name one of `backendNames`
std::unique_ptr<ox::ICvBackend> makeBackend(std::string const& name);

}  // namespace oxcv
