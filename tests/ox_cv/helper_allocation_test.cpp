// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Helpers, frames, tensors and drained producers whose k-th allocation fails, for every k.

#include <gtest/gtest.h>

#include <functional>

#include "ox_cv/ox_cv.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::helper_allocation {
namespace {

// Calls `operation` until none of its allocations fails. Each failure is a refusal that leaks
// nothing, and behind it `operation` does what it does elsewhere.
// @param operation makes its results anew
// @param check of the results
void failEach(std::function<void()> const& operation, std::function<void()> const& check) {
    std::uint64_t k = 0;
    for (bool struck = true; struck; ++k) {
        SCOPED_TRACE(k + 1);
        bool refused = false;
        std::int64_t const before = liveAllocations();
        {
            FailingAllocation const failing(k + 1);
            try {
                operation();
            } catch (Exception const& refusal) {
                refused = true;
                EXPECT_EQ(refusal.status, StatusCapacityExceeded) << refusal.what();
            }
            struck = failing.struck();
        }
        EXPECT_EQ(refused, struck);
        if (refused) {
            EXPECT_LE(liveAllocations(), before + 2) << "but for a frame's storage";
            operation();
        }
        check();
        ASSERT_LT(k, 200U);
    }
    EXPECT_GT(k, 1U) << "something is allocated";
}

class HelperAllocation : public testing::Test {
  protected:
    Random random{7};
    TestFrame bgr{FRAME_BGR24, {37, 20}, random};
    TestFrame yuyv{FRAME_YUYV, {36, 20}, random};

    // Expects the same of a call on memory that is always there.
    void expectSame(std::function<void(Frame&)> const& operation) {
        Frame expected;
        operation(expected);
        Frame dst;
        failEach(
            [&] {
                dst.clear();
                operation(dst);
            },
            [&] { EXPECT_TRUE(samePixels(dst, expected)); });
    }
};

TEST_F(HelperAllocation, OfColours) {
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_I420, FRAME_NV12, FRAME_BGR_32F}) {
        SCOPED_TRACE(toString(format));
        expectSame([&](Frame& dst) { colorConvert(bgr.frame(), format, dst); });
    }
}

TEST_F(HelperAllocation, OfScaling) {
    for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear}) {
        expectSame([&](Frame& dst) { resizeFrame(bgr.frame(), {20, 11}, dst, method); });
    }
}

TEST_F(HelperAllocation, OfWarps) {
    float const matrix[2][3]{{0.75F, 0.25F, 3}, {-0.25F, 1.5F, 7}};
    for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear}) {
        expectSame([&](Frame& dst) {
            CvBackendSimd backend;
            backend.setIntProperty(PropertyWarpMethod, static_cast<int>(method));
            dst.reuse(FRAME_BGR24, {30, 30}, DeviceContext(), 0);
            dst.setZero();
            backend.warpAffine(bgr.frame(), dst, matrix, emptyRoi(), false);
        });
    }
}

TEST_F(HelperAllocation, OfPacked422) {
    CvBackendBase backend;
    expectSame([&](Frame& dst) {
        dst.reuse(FRAME_YUYV, {18, 10}, DeviceContext(), 0);
        resizePacked422(backend, yuyv.frame(), dst);
    });
}

TEST_F(HelperAllocation, OfRegionsAndCopies) {
    Frame frame = bgr.frame();
    expectSame([&](Frame& dst) { getRegion(frame, {3, 4, 20, 10}).copyTo(dst); });
}

TEST_F(HelperAllocation, OfDrainedChains) {
    expectSame([&](Frame& dst) {
        Scaler scaler;
        scaler.reuse(bgr.frame(), {20, 11}, OX_SCALE_AREA);
        FormatConverter converter;
        converter.reuse(scaler, FRAME_NV12);
        produceFrame(converter, dst);
    });
}

TEST_F(HelperAllocation, OfTensors) {
    TensorSize shape;
    shape.count = 1;
    shape.values[0] = 9;
    TensorSize strides;
    strides.count = 1;
    strides.values[0] = 1;
    Tensor halves;
    halves.reuse(TensorLayout(TENSOR_FLOAT_16, TENSOR_FORMAT_NONE, shape, strides,
                              TENSOR_CHANNEL_ORDER_NONE),
                 DeviceContext());
    for (int i = 0; i < 9; ++i) {
        reinterpret_cast<unsigned short*>(halves.data())[i] =
            static_cast<unsigned short>(0x3C00 + i);
    }
    Tensor floats;
    failEach(
        [&] {
            floats = Tensor();
            tensorFp16ToFp32(halves, floats);
        },
        [&] { EXPECT_EQ(reinterpret_cast<float const*>(floats.data())[0], 1.0F); });
}

}  // namespace
}  // namespace ox::test::helper_allocation
