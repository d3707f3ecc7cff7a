// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The options of `oxcv tensor`.

#pragma once

#include "commands.h"

namespace CLI {
class App;
}

namespace oxcv {

/// Adds the command, which fills `options` and then runs.
void addTensor(CLI::App& app, TensorOptions& options);

}  // namespace oxcv
