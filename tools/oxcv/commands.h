/// @file
/// The commands of the tool.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "image_io.h"
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

/// Prints what a file holds.
void printInfo(InputRequest const& input);

/// Prints the table of formats.
void printFormats(std::string const& backend);

}  // namespace oxcv
