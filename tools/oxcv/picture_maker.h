// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// From a file's frames to pictures of an array.

#pragma once

#include <memory>
#include <optional>
#include <string>

#include "commands.h"
#include "ox_core/ox_tensor.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace oxcv {

/// Reads one file after another, and makes a picture of each frame. The memory of a frame and of a
/// picture is kept, so all files take no more than the largest.
class PictureMaker {
  public:
    /// @throws UsageError, Failure for a recipe that can't be
    explicit PictureMaker(TensorOptions const& options);

    /// Of an array of one picture.
    ox::TensorLayout const& layout() const { return _layout; }

    /// Opens a file in place of the one before.
    /// @throws UsageError, Failure
    void open(std::string const& path);
    /// Makes a picture of the next frame.
    /// @return false behind the last one
    /// @throws Failure
    bool next();
    void close() { _reader.reset(); }
    /// Of the open file, or the one that couldn't be opened; for messages.
    std::string const& name() const { return _name; }

    /// Of the open file.
    FrameReader const& reader() const { return *_reader; }
    /// The last picture.
    ox::Tensor const& picture() const { return _picture; }
    ox::PictureMapping const& mapping() const { return _mapping; }

  private:
    void useRange(ox::TensorRange range);

    TensorOptions const& _options;
    std::shared_ptr<ox::IKernel> _kernel;  ///< of its own: a kernel may have a state
    ox::TensorRecipe _recipe;
    ox::FrameToTensor _to_tensor;
    ox::TensorLayout _layout;
    std::string _name;  ///< of the open file
    std::unique_ptr<FrameReader> _reader;
    ox::Frame _frame;
    ox::Tensor _picture;
    ox::PictureMapping _mapping;
};

/// What an input is, by its path.
InputRequest requestFor(TensorOptions const& options, std::string const& path);

}  // namespace oxcv
