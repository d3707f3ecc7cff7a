// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "frame_bytes.h"

#include <string>

#include "failure.h"

namespace oxcv {

namespace {

[[noreturn]] void throwTruncated(ByteSource const& source, std::int64_t number, std::uint64_t bytes,
                                 std::uint64_t wanted) {
    throw Failure(source.name() + ": frame " + std::to_string(number) + " is truncated: " +
                  std::to_string(bytes) + " of " + std::to_string(wanted) + " bytes");
}

/// Calls visit(row, bytes, plane) for each row of each plane until that returns false.
template <class Visitor>
void forEachRow(ox::Frame const& frame, PlaneOrder const& order, Visitor visit) {
    for (int index = 0; index < frame.layout().planeCount; ++index) {
        int const number = order[static_cast<std::size_t>(index)];
        ox::FramePlane const& plane = frame.layout().plane[number];
        for (std::int64_t y = 0; y < plane.height; ++y) {
            unsigned char* const row = frame.planeData(number) + y * plane.stride;
            if (!visit(row, plane.rowBytes, static_cast<std::size_t>(number))) {
                return;
            }
        }
    }
}

/// Bytes behind a row, up to the next one.
std::uint64_t gapBehind(std::uint64_t row_bytes, std::int32_t stride) {
    return stride == 0 ? 0 : static_cast<std::uint64_t>(stride) - row_bytes;
}

}  // namespace

std::uint64_t frameBytes(ox::FrameFormat format, ox::Size size, PlaneStrides const& strides) {
    ox::FrameLayout const layout(format, size, 1);
    std::uint64_t bytes = layout.totalBytes();
    for (int i = 0; i < layout.planeCount; ++i) {
        ox::FramePlane const& plane = layout.plane[i];
        bytes += gapBehind(plane.rowBytes, strides[static_cast<std::size_t>(i)]) *
                 static_cast<std::uint64_t>(plane.height);
    }
    return bytes;
}

bool readFrame(ByteSource& source, ox::FrameFormat format, ox::Size size, PlaneOrder const& order,
               std::int64_t number, ox::Frame& frame, PlaneStrides const& strides) {
    std::uint64_t const wanted = frameBytes(format, size, strides);
    if (source.peek(1).empty()) {
        source.check();
        return false;
    }
    // Checked before memory is allocated for a frame that a short source only claims to have.
    if (std::uint64_t const left = source.remaining().value_or(wanted); left < wanted) {
        throwTruncated(source, number, left, wanted);
    }
    frame.reuse(format, size, ox::DeviceContext(), 0);
    std::uint64_t taken = 0;
    forEachRow(frame, order, [&](unsigned char* row, std::uint64_t bytes, std::size_t plane) {
        std::uint64_t const gap = gapBehind(bytes, strides[plane]);
        std::uint64_t const got = source.read(row, bytes) + source.skip(gap);
        taken += got;
        return got == bytes + gap;
    });
    source.check();
    if (taken < wanted) {
        throwTruncated(source, number, taken, wanted);
    }
    return true;
}

void writeFrame(OutputFile& file, PlaneOrder const& order, ox::Frame const& frame) {
    forEachRow(frame, order, [&](unsigned char const* row, std::uint64_t bytes, std::size_t) {
        return file.write(row, bytes);
    });
    file.check();
}

std::optional<std::int64_t> countFrames(ByteSource const& source, std::uint64_t bytes_per_frame) {
    std::optional<std::uint64_t> const left = source.remaining();
    if (!left || *left % bytes_per_frame != 0) {
        return std::nullopt;
    }
    return static_cast<std::int64_t>(*left / bytes_per_frame);
}

}  // namespace oxcv
