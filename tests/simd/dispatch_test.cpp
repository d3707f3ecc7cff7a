// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which routine runs.
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "simd/float_bits.h"
#include "simd/kernel_model.h"
#include "simd/vector_targets.h"

namespace ox::test {
namespace {

// Calls `action` with each kernel that goes by its size.
template <class Action>
void forEachKernel(Action const& action) {
    auto const act = [&]([[maybe_unused]] auto const& record) {
        if constexpr (requires { record.threshold; }) {
            action(record);
        }
    };
    std::apply([&](auto const&... records) { (act(records), ...); }, Simd::kernels);
}

TEST(Dispatch, TakesTheVectorRoutineFromTheThresholdOn) {
    forEachKernel([](auto const& record) {
        std::size_t const threshold = kernel_model::modelOf(record).threshold;
        EXPECT_EQ(record.routine(0), record.base) << record.name;
        EXPECT_EQ(record.routine(threshold - 1), record.base) << record.name;
        EXPECT_EQ(record.routine(threshold), record.neon.get()) << record.name;
        EXPECT_EQ(record.routine(threshold + 1), record.neon.get()) << record.name;
        EXPECT_EQ(record.routine(SIZE_MAX), record.neon.get()) << record.name;
        // Without vector code most are the scalar routines.
        if (hasVectors(testTargets().front())) {
            EXPECT_NE(record.base, record.neon.get()) << record.name;
        }
    });
}

TEST(Dispatch, TakesTheScalarRoutineWhileTheSwitchIsOff) {
    forEachKernel([](auto const& record) {
        {
            VectorRoutinesOff const off;
            EXPECT_EQ(record.routine(record.threshold), record.base) << record.name;
            EXPECT_EQ(record.routine(SIZE_MAX), record.base) << record.name;
        }
        EXPECT_EQ(record.routine(record.threshold), record.neon.get()) << record.name;
    });
}

int scalarCalls = 0;

void countScalarCall(Simd::ConstBytes, std::size_t, std::size_t, std::size_t, Simd::Bytes,
                     std::size_t) {
    ++scalarCalls;
}

TEST(Dispatch, CallsWhatItsWidthTells) {
    constexpr Simd::Kernel<Simd::PlaneToPlane> kernel{"counted", countScalarCall,
                                                      Simd::Neon::SwapRedBlue, 16};
    std::vector<unsigned char> const src(48 * 20);
    std::vector<unsigned char> dst(48 * 20);
    kernel(src.data(), 16, 20, 48, dst.data(), 48);
    EXPECT_EQ(scalarCalls, 0);
    kernel(src.data(), 15, 20, 48, dst.data(), 48);
    EXPECT_EQ(scalarCalls, 1);
    VectorRoutinesOff const off;
    kernel(src.data(), 16, 20, 48, dst.data(), 48);
    EXPECT_EQ(scalarCalls, 2);
}

TEST(Dispatch, IsEnabledFromTheStart) {
    EXPECT_TRUE(Simd::Neon::KernelsEnabled);
}

TEST(Dispatch, FollowsTheChosenInstructionSet) {
    for (VectorTarget const& target : vectorTargets()) {
        UsedTarget const used(target.name.c_str());
        EXPECT_EQ(Simd::SwapRedBlue.routine(16), target.routines.SwapRedBlue) << target.name;
    }
    EXPECT_EQ(Simd::SwapRedBlue.routine(16), vectorTargets()[0].routines.SwapRedBlue);
}

// 65505 is infinite by the scalar routine and 65504 by the vector routine.
TEST(Dispatch, HalvesDependOnTheCount) {
    float const floats[]{65505.0F, 65505.0F, 65505.0F, 65505.0F};
    std::uint16_t halves[4]{1, 2, 3, 4};
    Simd::FloatsToHalves(floats, 0, halves);
    EXPECT_EQ(halves[0], 1);
    Simd::FloatsToHalves(floats, 3, halves);
    EXPECT_EQ(halves[0], 0x7C00);
    EXPECT_EQ(halves[2], 0x7C00);
    EXPECT_EQ(halves[3], 4);
    Simd::FloatsToHalves(floats, 4, halves);
    EXPECT_EQ(halves[0], 0x7BFF);
    EXPECT_EQ(halves[3], 0x7BFF);
    VectorRoutinesOff const off;
    Simd::FloatsToHalves(floats, 4, halves);
    EXPECT_EQ(halves[0], 0x7C00);
}

// A signalling NaN stays one by the scalar routine.
TEST(Dispatch, NaNsDependOnTheCount) {
    std::uint16_t const halves[]{0x7C01, 0x7C01, 0x7C01, 0x7C01};
    float floats[4]{};
    Simd::HalvesToFloats(halves, 3, floats);
    EXPECT_EQ(loadAs<std::uint32_t>(floats, 0), 0x7F802000U);
    Simd::HalvesToFloats(halves, 4, floats);
    EXPECT_EQ(loadAs<std::uint32_t>(floats, 0), 0x7FC02000U);
}

// Kernels of this test alone, with a first use of their own; `family` holds them apart.

template <int family>
void scalarRoutine(int* calls) {
    *calls += 1;
}

void vectorRoutine(int* calls) {
    *calls += 100;
}

struct CountedRoutine {
    mutable std::atomic<int> gets{0};

    auto get() const {
        ++gets;
        std::this_thread::yield();
        return &vectorRoutine;
    }
};

CountedRoutine countedRoutine;

struct Counted : Simd::Shape<0, void(int*)> {};

template <int family>
using CountedKernel = Simd::FirstUseKernel<Counted, &scalarRoutine<family>, &countedRoutine>;

TEST(Dispatch, FirstUseResolvesOnceFromManyThreads) {
    constexpr CountedKernel<0> kernel{"counted"};
    std::atomic<int> waiting{4};
    int calls[4]{};
    std::vector<std::thread> threads;
    for (int& own : calls) {
        threads.emplace_back([&] {
            --waiting;
            while (waiting > 0) {
                std::this_thread::yield();
            }
            kernel(&own);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(countedRoutine.gets, 1);
    for (int const own : calls) {
        EXPECT_EQ(own, 100);
    }
}

TEST(Dispatch, FirstUseKeepsItsChoice) {
    constexpr CountedKernel<1> first_off{"first off"};
    constexpr CountedKernel<2> first_on{"first on"};
    int calls_off = 0;
    int calls_on = 0;
    first_on(&calls_on);
    {
        VectorRoutinesOff const off;
        first_on(&calls_on);
        first_off(&calls_off);
    }
    first_off(&calls_off);
    EXPECT_EQ(calls_on, 200);
    EXPECT_EQ(calls_off, 2);
}

// The kernels themselves, for the first time where each test is a process of its own.
TEST(Dispatch, TwoThreadsMayUseFloatKernelsFirst) {
    auto const work = [] {
        constexpr std::size_t count = 5;
        float const two = 2.0F;
        float const src[count]{1.0F, 2.0F, 3.0F, 4.0F, 5.0F};
        float data[count]{1.0F, 2.0F, 3.0F, 4.0F, 5.0F};
        Simd::AddConstantFloats(&two, data, count);
        Simd::AccumulateScaledFloats(src, count, &two, data);
        for (std::size_t i = 0; i < count; ++i) {
            EXPECT_EQ(data[i], 3 * src[i] + 2);
        }
    };
    std::thread first(work);
    std::thread second(work);
    first.join();
    second.join();
    EXPECT_EQ(Simd::AddConstantFloats.routine(), vectorTargets()[0].routines.AddConstantFloats);
    EXPECT_EQ(Simd::AccumulateScaledFloats.routine(),
              vectorTargets()[0].routines.AccumulateScaledFloats);
}

}  // namespace
}  // namespace ox::test
