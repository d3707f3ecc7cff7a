// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames as bytes one after another, as streams hold them.

#pragma once

#include <array>
#include <cstdint>

#include "byte_source.h"
#include "output_file.h"
#include "ox_core/ox_frame.h"

namespace oxcv {

/// Which plane comes first, second and third in a stream.
using PlaneOrder = std::array<int, 3>;
constexpr PlaneOrder planesInOrder{0, 1, 2};

/// Bytes from row to row of each plane; 0 for rows without gaps.
using PlaneStrides = std::array<std::int32_t, 3>;

/// Bytes of a frame.
/// @throws ox::Exception for a size of too many bytes
std::uint64_t frameBytes(ox::FrameFormat format, ox::Size size, PlaneStrides const& strides = {});

/// Reads what follows in the source as a frame of that format and size.
/// @param number of the frame, from 1 on, for messages
/// @param strides not smaller than rows
/// @return false at the source's end
/// @throws Failure if the source ends within the frame
bool readFrame(ByteSource& source, ox::FrameFormat format, ox::Size size, PlaneOrder const& order,
               std::int64_t number, ox::Frame& frame, PlaneStrides const& strides = {});

void writeFrame(OutputFile& file, PlaneOrder const& order, ox::Frame const& frame);

/// The number of frames left in the source; nothing if the rest has an unknown size, or isn't a
/// whole number of frames.
std::optional<std::int64_t> countFrames(ByteSource const& source, std::uint64_t bytes_per_frame);

}  // namespace oxcv
