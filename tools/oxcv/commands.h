// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The commands of the tool.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "image_io.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "step_runner.h"

namespace oxcv {

/// The most pixels of a frame, unless `--max-pixels` says otherwise.
constexpr std::int64_t usualMostPixels = 256'000'000;

struct ConvertOptions {
    InputRequest input;
    OutputRequest output;
    Steps steps;
    std::optional<std::int64_t> frames;         ///< stop after so many
    std::int64_t max_pixels = usualMostPixels;  ///< of a frame that is read
    std::string backend;
    bool verbose = false;
};

/// Takes frames from one file to another.
void convert(ConvertOptions options);

struct TensorOptions {
    std::vector<std::string> files;        ///< inputs, and the output at the end
    InputRequest input;                    ///< what each input is; without a path
    ox::TensorRecipe recipe;               ///< without a kernel
    std::string kernel;                    ///< a name, or empty
    std::optional<ox::TensorRange> range;  ///< takes the place of what inputs say
    ox::Rect roi;                          ///< empty: whole pictures
    std::string mapping;                   ///< a file's name, or empty
    bool raw = false;                      ///< no header in front of the array
    std::int64_t jobs = 1;
    bool keep_going = false;
    std::optional<std::int64_t> frames;  ///< of all inputs together
    std::int64_t max_pixels = usualMostPixels;
};

/// Takes pictures to one array, a network's input.
void makeTensor(TensorOptions const& options);

/// Prints what a file holds.
void printInfo(InputRequest const& input);

/// Prints the table of formats.
void printFormats(std::string const& backend);

}  // namespace oxcv
