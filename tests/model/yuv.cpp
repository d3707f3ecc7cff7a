// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/yuv.h"

namespace model {

bool isYuv(int format) {
    return format >= I420 && format <= Yuv444Planar;
}

YuvLayout yuvLayout(int format) {
    Samples const luma{0, 0, 1};
    Samples const second{1, 0, 1};
    Samples const third{2, 0, 1};
    Samples const even{1, 0, 2};
    Samples const odd{1, 1, 2};
    switch (format) {
        case I420:
            return {2, 2, luma, second, third};
        case Yv12:
            return {2, 2, luma, third, second};
        case Nv12:
            return {2, 2, luma, even, odd};
        case Nv21:
            return {2, 2, luma, odd, even};
        case Yv16:
            return {2, 1, luma, third, second};
        case Yuyv:
            return {2, 1, {0, 0, 2}, {0, 1, 4}, {0, 3, 4}};
        case Uyvy:
            return {2, 1, {0, 1, 2}, {0, 0, 4}, {0, 2, 4}};
        case Nv16:
            return {2, 1, luma, even, odd};
        case Yuv444:
            return {1, 1, {0, 0, 3}, {0, 1, 3}, {0, 2, 3}};
        default:
            return {1, 1, luma, second, third};
    }
}

int sampleAt(SourceRow const& row, Samples const& samples, int index) {
    return row[samples.plane][samples.offset + samples.step * static_cast<std::size_t>(index)];
}

void storeSample(Row const& row, Samples const& samples, int index, unsigned value) {
    std::size_t const place = samples.offset + samples.step * static_cast<std::size_t>(index);
    if (place < row[samples.plane].size()) {
        row[samples.plane][place] = static_cast<std::uint8_t>(value & 0xFF);
    }
}

}  // namespace model
