// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// A file that tells where the pictures of an array come from.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "output_file.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace oxcv {

/// The frames of a file that are in an array. They have one size, so one mapping.
struct MappedFile {
    std::string path;
    std::int64_t frames = 0;  ///< the first ones
    ox::PictureMapping mapping;
};

/// Writes a list in JSON of one object for each frame.
void writeMapping(OutputFile& file, std::vector<MappedFile> const& files);

}  // namespace oxcv
