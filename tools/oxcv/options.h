// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The command line.

#pragma once

namespace oxcv {

/// Does what the command line asks for.
/// @return the exit status
/// @throws UsageError for a bad command line, and what the command throws
int runCommandLine(int argc, char** argv);

}  // namespace oxcv
