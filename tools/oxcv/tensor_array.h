// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The array that pictures are written to.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "output_file.h"
#include "ox_core/ox_tensor.h"

namespace oxcv {

/// Writes the pictures of an array one after another. Their number stands in front of them, unless
/// there is no header. In seekable outputs it is written at the end.
class TensorArray {
  public:
    /// @param one the layout of an array of one picture
    TensorArray(OutputFile& file, ox::TensorLayout const& one, bool has_header);

    /// Whether the number has to be known before the first picture.
    bool needsCount() const { return _has_header && !_file.seekable(); }
    /// How many pictures there will be, as far as known.
    void expect(std::optional<std::int64_t> pictures) { _expected = pictures; }

    /// @throws Failure, BrokenPipe
    void write(ox::Tensor const& picture);
    /// Completes the array behind the last picture.
    void finish();

  private:
    std::string header(std::int64_t pictures) const;

    OutputFile& _file;
    ox::TensorLayout _one;
    bool _has_header;
    std::optional<std::int64_t> _expected;
    std::int64_t _written = 0;
};

/// Refuses names that are another kind's, so that a forgotten output replaces no picture.
/// @throws UsageError
void checkArrayName(std::string const& path, bool has_header);

}  // namespace oxcv
