// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Single rows through the functions that convert them.
#pragma once

#include <cstring>
#include <vector>

#include "ox_cv/ox_impl_format_converter.h"
#include "support/test_frame.h"

namespace ox::test {

using Bytes = std::vector<int>;
using Planes = std::vector<Bytes>;

constexpr int untouched = GuardedMemory::poison;

// One row of a format, at the end of its memory.
class TestRow {
  public:
    TestRow(FrameFormat format, int width)
        : _frame(format, {width, 1}, Placement{0, Guard::AtEnd}) {
        fill(_frame.frame(), untouched);
        for (int plane = 0; plane < planes(); ++plane) {
            row[plane] = _frame.row(plane, 0);
        }
    }

    TestRow(FrameFormat format, int width, Planes const& bytes) : TestRow(format, width) {
        for (int plane = 0; plane < planes(); ++plane) {
            fill(_frame.frame(), plane, {bytes[static_cast<std::size_t>(plane)]});
        }
    }

    int planes() const { return _frame.layout().planeCount; }

    Planes bytes() const {
        Planes result;
        for (int plane = 0; plane < planes(); ++plane) {
            result.push_back(bytesOf(_frame.frame(), plane, 0));
        }
        return result;
    }

    RowData row{};

  private:
    TestFrame _frame;
};

struct Input {
    FrameFormat format;
    Planes upper;
    Planes lower;  // none: there is no such row
};

// The row of `dst` that comes out; planes in `nulls` are not asked for.
inline Planes convert(Input const& input, int width, FrameFormat dst, Bytes const& nulls = {}) {
    ImplFormatConverter context;
    int window = 0;
    context.reuse(input.format, dst, width, &window);
    TestRow const upper(input.format, width, input.upper);
    TestRow const lower(input.format, width, input.lower.empty() ? input.upper : input.lower);
    RowData const* const rows[2] = {&upper.row, input.lower.empty() ? nullptr : &lower.row};
    TestRow target(dst, width);
    RowData row = target.row;
    for (int const plane : nulls) {
        row[plane] = nullptr;
    }
    context.produce(rows, row);
    return target.bytes();
}

inline Planes convert(FrameFormat src, Planes const& bytes, int width, FrameFormat dst,
                      Bytes const& nulls = {}) {
    return convert(Input{src, bytes, {}}, width, dst, nulls);
}

inline Planes floats(std::vector<float> const& values) {
    std::vector<unsigned char> bytes(values.size() * sizeof(float));
    std::memcpy(bytes.data(), values.data(), bytes.size());
    return {Bytes(bytes.begin(), bytes.end())};
}

struct Row {
    FrameFormat format;
    Planes planes;
};

// One picture in every format: Y 100, 16, 235; the first two pixels have U 90 and V 200, the third
// 128 and 128. `missing` is the luma of a pixel that isn't there.
inline std::vector<Row> yuvRows(int missing) {
    Bytes const luma{100, 16, 235};
    return {
        {FRAME_I420, {luma, {90, 128}, {200, 128}}},
        {FRAME_YV12, {luma, {200, 128}, {90, 128}}},
        {FRAME_NV12, {luma, {90, 200, 128, 128}}},
        {FRAME_NV21, {luma, {200, 90, 128, 128}}},
        {FRAME_YV16, {luma, {200, 128}, {90, 128}}},
        {FRAME_YUYV, {{100, 90, 16, 200, 235, 128, missing, 128}}},
        {FRAME_UYVY, {{90, 100, 200, 16, 128, 235, 128, missing}}},
        {FRAME_NV16, {luma, {90, 200, 128, 128}}},
        {FRAME_YUV444, {{100, 90, 200, 16, 90, 200, 235, 128, 128}}},
        {FRAME_YUV444_PLANAR, {luma, {90, 90, 128}, {200, 200, 128}}},
    };
}

}  // namespace ox::test
