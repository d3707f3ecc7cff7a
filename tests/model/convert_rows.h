// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One row of a conversion.
#pragma once

#include "model/yuv.h"

namespace model {

// The source row that a destination row is made of, and the one below it.
struct RowPair {
    SourceRow upper;
    SourceRow lower;
    bool has_lower;
};

// Whether a format without YUV samples can become another.
bool canBecome(int from, int to);

// Makes a row of `width` pixels. `yuv` is the YUV format whose places are used where the
// destination is one, or is treated as one; 0 where neither.
void convertRow(int from, int to, int yuv, RowPair const& rows, int width, Row const& out);

}  // namespace model
