// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Pictures of many files to one array, by several threads.

#pragma once

#include <cstdint>
#include <exception>
#include <optional>
#include <string>
#include <vector>

#include "commands.h"
#include "picture_maker.h"
#include "progress.h"
#include "tensor_array.h"
#include "tensor_mapping.h"
#include "turns.h"

namespace oxcv {

/// Each thread opens a file and makes its first picture, then waits until all files before are
/// written. It hands over its file's pictures in its turn. So memory is for a frame and a picture a
/// thread, and the array's bytes don't depend on how many threads there are.
class TensorRun {
  public:
    TensorRun(TensorOptions const& options, std::vector<std::string> const& inputs,
              TensorArray& array);

    /// @param maker of the calling thread
    /// @throws Failure, UsageError for the first file that fails, unless that is to be left out;
    ///         Failure, BrokenPipe for the output
    void run(PictureMaker& maker);

    /// What is in the array, in its order.
    std::vector<MappedFile> const& files() const { return _files; }
    /// How many files have failed, wholly or behind their first frames.
    std::size_t failures() const { return _failures; }

  private:
    void work(PictureMaker& maker) noexcept;
    void help() noexcept;
    void doFile(PictureMaker& maker, std::size_t item);
    void handOver(PictureMaker& maker, std::size_t item, std::exception_ptr failure);
    void leaveOut(std::exception_ptr const& failure);
    void expectFrames(std::optional<std::int64_t> of_first);
    bool reachedLimit() const { return _options.frames && _frames >= *_options.frames; }
    double fractionDone(FrameReader const& reader, std::size_t item) const;

    TensorOptions const& _options;
    std::vector<std::string> const& _inputs;
    TensorArray& _array;
    Turns _turns;
    // The rest belongs to the thread whose turn it is.
    Progress _progress;
    std::vector<MappedFile> _files;
    std::int64_t _frames = 0;
    std::size_t _failures = 0;
};

}  // namespace oxcv
