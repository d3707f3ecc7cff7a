// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "halves.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <vector>

#include "failure.h"
#include "frame_bytes.h"
#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_cv_helpers.h"

namespace oxcv {

namespace {

/// The library rounds only from four numbers on.
constexpr std::size_t leastRounded = 4;

/// A frame of words for the halves of one of floats.
/// @param name of the file
ox::Size sizeOfWords(std::string const& name, ox::FrameFormat format, ox::Size size) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    std::int64_t const width = std::int64_t{size.width} * facts.planes[0].channels;
    std::int64_t const height = std::int64_t{size.height} * facts.plane_count;
    if (std::max(width, height) > std::numeric_limits<std::int32_t>::max()) {
        throw Failure(name + ": the size is too large");
    }
    return {static_cast<std::int32_t>(width), static_cast<std::int32_t>(height)};
}

/// Calls visit(row of floats, row of halves, numbers) for each row of each plane.
template <class Visitor>
void forEachRow(ox::Frame const& floats, ox::Frame const& words, Visitor visit) {
    std::int64_t const stride = words.layout().plane[0].stride;
    unsigned char* halves = words.planeData(0);
    for (int index = 0; index < floats.layout().planeCount; ++index) {
        ox::FramePlane const& plane = floats.layout().plane[index];
        for (std::int64_t y = 0; y < plane.height; ++y, halves += stride) {
            visit(floats.planeData(index) + y * plane.stride, halves,
                  plane.rowBytes / sizeof(float));
        }
    }
}

}  // namespace

bool Halves::read(ByteSource& source, ox::FrameFormat format, ox::Size size, std::int64_t number,
                  ox::Frame& frame) {
    ox::Size const of_words = sizeOfWords(source.name(), format, size);
    if (!readFrame(source, ox::FRAME_C1_16U, of_words, planesInOrder, number, _words)) {
        return false;
    }
    frame.reuse(format, size, ox::DeviceContext(), 0);
    std::vector<unsigned short> from(static_cast<std::size_t>(of_words.width));
    std::vector<float> to(from.size());
    forEachRow(frame, _words, [&](unsigned char* floats, unsigned char* halves, std::size_t count) {
        std::memcpy(from.data(), halves, count * sizeof(from[0]));
        ox::convertFp16ToFp32(from.data(), count, to.data());
        std::memcpy(floats, to.data(), count * sizeof(to[0]));
    });
    return true;
}

void Halves::write(OutputFile& file, ox::Frame const& frame) {
    ox::Size const of_words = sizeOfWords(file.name(), frame.format(), frame.size());
    _words.reuse(ox::FRAME_C1_16U, of_words, ox::DeviceContext(), 0);
    std::vector<float> from(std::max(static_cast<std::size_t>(of_words.width), leastRounded));
    std::vector<unsigned short> to(from.size());
    forEachRow(frame, _words, [&](unsigned char* floats, unsigned char* halves, std::size_t count) {
        std::memcpy(from.data(), floats, count * sizeof(from[0]));
        ox::convertFp32ToFp16(from.data(), from.size(), to.data());
        std::memcpy(halves, to.data(), count * sizeof(to[0]));
    });
    writeFrame(file, planesInOrder, _words);
}

}  // namespace oxcv
