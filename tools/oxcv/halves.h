// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Floats in half precision, as arrays store them.

#pragma once

#include <cstdint>

#include "byte_source.h"
#include "output_file.h"
#include "ox_core/ox_frame.h"

namespace oxcv {

/// Frames of floats, packed or in planes, that are stored as halves.
class Halves {
  public:
    /// Reads what follows in the source, as `readFrame` does.
    bool read(ByteSource& source, ox::FrameFormat format, ox::Size size, std::int64_t number,
              ox::Frame& frame);
    /// Writes numbers rounded to nearest, ties to even; from 65520 on they are infinite.
    void write(OutputFile& file, ox::Frame const& frame);

  private:
    ox::Frame _words;  ///< the halves, all planes below each other
};

}  // namespace oxcv
