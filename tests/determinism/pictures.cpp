// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "determinism/pictures.h"

#include <cstring>

namespace ox::test {

namespace {

std::vector<FrameFormat> namedFormats() {
    std::vector<FrameFormat> named;
    for (std::uint32_t value = FRAME_GRAY8; value <= FRAME_BGR_32F_PLANAR; ++value) {
        auto const format = static_cast<FrameFormat>(value);
        if (std::strcmp(toString(format), "unknown") != 0) {
            named.push_back(format);
        }
    }
    return named;
}

}  // namespace

std::vector<FrameFormat> const& formats() {
    static std::vector<FrameFormat> const all = namedFormats();
    return all;
}

std::string nameOf(FrameFormat format) {
    return toString(format) + std::strlen("FRAME_");
}

Frame randomFrame(FrameFormat format, Size size, Random& random) {
    Frame frame;
    frame.reuse(format, size, DeviceContext(), random.between(0, 1) == 0 ? 1 : 64);
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        for (int y = 0; y < plane.height; ++y) {
            unsigned char* const row = frame.planeData(i) + y * plane.stride;
            for (std::uint64_t x = 0; x < plane.rowBytes; ++x) {
                row[x] = random.byte();
                if (format == FRAME_C1_32U && x % 4 == 3) {
                    row[x] &= 0xBF;  // the vector backend scales these as floats: none is NaN
                }
            }
        }
    }
    return frame;
}

void addFrame(Digest& digest, Frame const& frame) {
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        for (int y = 0; y < plane.height; ++y) {
            unsigned char const* const row = frame.planeData(i) + y * plane.stride;
            if (frame.format() >= FRAME_GRAY_32F) {
                digest.addFloats(row, plane.rowBytes / sizeof(float));
            } else {
                digest.addBytes(row, plane.rowBytes);
            }
        }
    }
}

float moderateFloat(Random& random) {
    auto const bits = static_cast<std::uint32_t>(random.next());
    std::uint32_t const exponent = 127U - 4U + (bits >> 28);  // from 1/16 to 2^12
    std::uint32_t const kept = (bits & 0x807FFFFFU) | (exponent << 23);
    float value = 0;
    std::memcpy(&value, &kept, sizeof value);
    return value;
}

}  // namespace ox::test
