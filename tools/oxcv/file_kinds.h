// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The parts of the table of file kinds, one set for each kind.

#pragma once

#include "image_io.h"

namespace oxcv {

/// Pictures hold one frame: `FRAME_GRAY8` and `FRAME_RGB24` or `FRAME_BGR24` as they are, others as
/// `FRAME_BGR24`.
ox::FrameFormat pictureFormat(ox::FrameFormat format);
/// Refuses a second frame in a picture.
void checkSingleFrame(OutputFile const& file, int frames_so_far);

/// Gray PNG files are read as `FRAME_GRAY8`, all others as `FRAME_BGR24`: palettes and depths of 1,
/// 2 and 4 bits are expanded, 16 bits are rounded to 8, alpha is dropped.
std::unique_ptr<FrameReader> makePngReader(std::unique_ptr<ByteSource>, InputRequest const&);
std::unique_ptr<FrameWriter> makePngWriter(OutputFile&, OutputRequest const&);

/// Gray JPEG files are read as `FRAME_GRAY8`, all others as `FRAME_BGR24`; a camera's note on how
/// to turn the picture isn't looked at.
std::unique_ptr<FrameReader> makeJpegReader(std::unique_ptr<ByteSource>, InputRequest const&);
std::unique_ptr<FrameWriter> makeJpegWriter(OutputFile&, OutputRequest const&);

/// YUV4MPEG2 streams of 8 bits: mono, 4:2:0, 4:2:2 and 4:4:4 are `FRAME_GRAY8`, `FRAME_I420`,
/// `FRAME_YV16` and `FRAME_YUV444_PLANAR`. Other YUV formats are stored with the same chroma, all
/// others as 4:2:0.
std::unique_ptr<FrameReader> makeY4mReader(std::unique_ptr<ByteSource>, InputRequest const&);
std::unique_ptr<FrameWriter> makeY4mWriter(OutputFile&, OutputRequest const&);
ox::FrameFormat y4mFormat(ox::FrameFormat format);

/// Arrays of bytes, 16-bit or 32-bit words, floats or halves, for all formats whose planes have the
/// frame's size; others are stored as `FRAME_BGR24`. A frame's shape is H x W, H x W x C or, for
/// planes, C x H x W; several frames have one more axis in front.
std::unique_ptr<FrameReader> makeNpyReader(std::unique_ptr<ByteSource>, InputRequest const&);
std::unique_ptr<FrameWriter> makeNpyWriter(OutputFile&, OutputRequest const&);
ox::FrameFormat npyFormat(ox::FrameFormat format);

/// Frames of any format one after another, their planes one after another, without gaps.
std::unique_ptr<FrameReader> makeRawReader(std::unique_ptr<ByteSource>, InputRequest const&);
std::unique_ptr<FrameWriter> makeRawWriter(OutputFile&, OutputRequest const&);
ox::FrameFormat rawFormat(ox::FrameFormat format);

}  // namespace oxcv
