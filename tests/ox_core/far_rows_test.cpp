// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Rows that lie more than 32 bits apart.
#include <gtest/gtest.h>
#include <cstring>

#include "ox_core/ox_float_planes.h"
#include "ox_core/ox_frame.h"
#include "support/sparse_memory.h"

namespace ox::test {

namespace {

// Five rows, a gibibyte from one to the next. Memory is taken for what is touched only.
class FarRows : public ::testing::Test {
  protected:
    static constexpr int rows = 5;
    static constexpr int stride = 1 << 30;
    static constexpr std::size_t bytes = std::size_t{rows - 1} * stride + 64;

    unsigned char* row(int y) const { return _memory + std::int64_t{y} * stride; }

    Frame frame() const {
        FrameLayout layout(FRAME_GRAY8, {4, rows}, 1);
        layout.plane[0].stride = stride;
        return Frame::wrap(layout, &_memory);
    }

    void setFloats(int y, float const (&values)[3]) const {
        std::memcpy(row(y), values, sizeof values);
    }
    float number(int y, int x) const {
        float value = 0;
        std::memcpy(&value, row(y) + x * int{sizeof value}, sizeof value);
        return value;
    }

  private:
    SparseMemory _sparse{bytes};
    unsigned char* const _memory = _sparse.data();
};

TEST_F(FarRows, OfFrames) {
    Frame source;
    source.reuse(FRAME_GRAY8, {4, rows}, DeviceContext(), 0);
    FramePlane const& plane = source.layout().plane[0];
    std::memset(source.planeData(0), 7, plane.planeBytes);
    Frame target = frame();
    source.copyTo(target);
    EXPECT_EQ(target.planeData(0), row(0));
    for (int y = 0; y < rows; ++y) {
        EXPECT_EQ(row(y)[3], 7) << y;
        EXPECT_EQ(row(y)[4], 0) << y;
    }
    EXPECT_EQ(getRegion(target, {1, rows - 1, 1, 1}).planeData(0), row(rows - 1) + 1);
    target.setZero();
    EXPECT_EQ(row(rows - 1)[3], 0);
}

TEST_F(FarRows, OfFloats) {
    int const last = rows - 1;
    float const ones[3] = {1, 1, 1};
    float const values[3] = {2, 3, 4};
    setFloats(last, ones);
    addConstant_32f_C1(0.5F, row(0), stride, {0, last, 1, 1});
    mulConstant_32f_C1(5.0F, row(0), stride, {1, last, 1, 1});
    addConstant_32f_C3(values, row(0), stride, {0, last, 1, 1});
    mulConstant_32f_C3(values, row(0), stride, {0, last, 1, 1});
    EXPECT_EQ(number(last, 0), 7.0F);   // (1 + 0.5 + 2) x 2
    EXPECT_EQ(number(last, 1), 24.0F);  // (1 x 5 + 3) x 3
    EXPECT_EQ(number(last, 2), 20.0F);  // (1 + 4) x 4
    EXPECT_EQ(number(0, 0), 0.0F);
}

}  // namespace

}  // namespace ox::test
