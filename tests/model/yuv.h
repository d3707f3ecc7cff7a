// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Where the samples of the YUV formats lie.
#pragma once

#include "model/image.h"

namespace model {

// Samples of one kind in a row: sample i is at byte offset + i * step of the plane.
struct Samples {
    std::size_t plane;
    std::size_t offset;
    std::size_t step;
};

struct YuvLayout {
    int columns;  // pixels of a row that share a chroma sample
    int rows;     // rows that share a chroma row
    Samples y;
    Samples u;
    Samples v;
};

bool isYuv(int format);
YuvLayout yuvLayout(int format);

// A sample for reading.
int sampleAt(SourceRow const& row, Samples const& samples, int index);

// Stores the low byte of a value. Planes without a row, and places behind a row's end, take
// nothing.
void storeSample(Row const& row, Samples const& samples, int index, unsigned value);

}  // namespace model
