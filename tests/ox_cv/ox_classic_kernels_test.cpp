// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The ready-made filters against values worked out by hand, or with fifty digits.
#include "ox_cv/ox_classic_kernels.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ox_cv/ox_scaler_convolutional.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

using Values = std::vector<std::pair<float, float>>;

// At two scales, on both sides.
void expectShape(IKernel& kernel, float radius, Values const& values) {
    for (float const scale : {1.0F, 4.0F}) {
        kernel.setScale(scale);
        EXPECT_EQ(kernel.aperture(), 2.0F * radius * scale);
        for (auto const& [t, expected] : values) {
            EXPECT_EQ(kernel.value(t * scale), expected) << t;
            EXPECT_EQ(kernel.value(-t * scale), expected) << -t;
        }
        EXPECT_EQ(kernel.value(radius * scale), 0.0F);
        EXPECT_EQ(kernel.value(-radius * scale - 1.0F), 0.0F);
    }
}

}  // namespace

TEST(ClassicKernels, Triangle) {
    TriangleKernel kernel;
    expectShape(kernel, 1.0F, {{0.0F, 1.0F}, {0.25F, 0.75F}, {0.5F, 0.5F}, {0.875F, 0.125F}});
}

TEST(ClassicKernels, MitchellNetravali) {
    MitchellNetravaliKernel kernel;
    expectShape(kernel, 2.0F,
                {{0.0F, 8.0F / 9.0F},
                 {0.5F, 77.0F / 144.0F},
                 {1.0F, 1.0F / 18.0F},
                 {1.5F, -5.0F / 144.0F}});
}

TEST(ClassicKernels, CatmullRom) {
    CatmullRomKernel kernel;
    expectShape(kernel, 2.0F,
                {{0.0F, 1.0F},
                 {0.25F, 0.8671875F},
                 {0.5F, 0.5625F},
                 {1.0F, 0.0F},
                 {1.5F, -0.0625F},
                 {1.75F, -0.0234375F}});
}

TEST(ClassicKernels, CubicsOfOnesOwn) {
    CubicKernel spline(1.0, 0.0);  // the cubic B-spline
    expectShape(spline, 2.0F, {{0.0F, 2.0F / 3.0F}, {1.0F, 1.0F / 6.0F}, {1.5F, 1.0F / 48.0F}});
}

// Every bit: weights must not depend on the system's sine.
TEST(ClassicKernels, Lanczos3) {
    Lanczos3Kernel kernel;
    expectShape(kernel, 3.0F,
                {{0.0F, 1.0F},
                 {0.25F, 0x1.c7b6dep-1F},
                 {0.5F, 0x1.374238p-1F},
                 {0.75F, 0x1.14aca4p-2F},
                 {1.25F, -0x1.101eaep-3F},
                 {1.5F, -0x1.14aca4p-3F},
                 {2.5F, 0x1.8e693ep-6F},
                 {2.75F, 0x1.e213f6p-8F},
                 {2.9375F, 0x1.d74d7ep-12F}});
    kernel.setScale(1.0F);
    for (float const zero : {1.0F, 2.0F}) {
        EXPECT_NEAR(kernel.value(zero), 0.0F, 1e-15F);
    }
}

// In both precisions; where the number of taps changes, borders carry weights over and don't.
TEST(ClassicKernels, FlatPicturesStayFlat) {
    TriangleKernel triangle;
    MitchellNetravaliKernel mitchell;
    CatmullRomKernel catmull_rom;
    Lanczos3Kernel lanczos;
    TestFrame source(FRAME_NV12, {60, 48});
    fill(source.frame(), 201);
    for (IKernel* const kernel :
         std::initializer_list<IKernel*>{&triangle, &mitchell, &catmull_rom, &lanczos}) {
        for (auto const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
            ScalerConvolutional scaler;
            scaler.reuse(*kernel, source.frame(), {20, 16}, precision);
            Frame result;
            produceFrame(scaler, result);
            EXPECT_TRUE(isFilledWith(result, 201));
        }
    }
}

}  // namespace ox::test
