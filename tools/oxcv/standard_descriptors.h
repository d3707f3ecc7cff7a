// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Standard input, output and error, whatever the caller left open.

#pragma once

namespace oxcv {

/// Puts /dev/null onto standard descriptors that are closed. Otherwise a file opened later would
/// take such a number, and remarks for standard error would land in it. Standard input is opened
/// for writing only, the others for reading only, so that their use fails as with a closed
/// descriptor. To be called before any file is opened.
/// @throws Failure if there is no /dev/null
void openStandardDescriptors();

}  // namespace oxcv
