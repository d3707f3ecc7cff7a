// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_scale_kernel_builder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

constexpr char innerRowsFull[] =
    "Failure in ScaleKernelBuilder::addInnerKernel(...), buffer has already filled";
constexpr char borderRowsFull[] =
    "Failure in ScaleKernelBuilder::addBorderKernel(...), buffer has already filled";

template <class Weight>
class ScaleKernelBuilder : public testing::Test {
  protected:
    std::vector<Weight> rowOf(int index) const {
        Weight const* const row = builder.row(index);
        return std::vector<Weight>(row, row + aperture);
    }

    void reuse(int taps) {
        aperture = taps;
        builder.reuse(taps);
    }

    int aperture = 0;
    impl::ScaleKernelBuilder<Weight> builder;
};

using Weights = testing::Types<signed char, short>;
TYPED_TEST_SUITE(ScaleKernelBuilder, Weights);

TYPED_TEST(ScaleKernelBuilder, RefusesRowsWithoutWeights) {
    for (int const taps : {0, -1, std::numeric_limits<int>::min()}) {
        expectException(StatusOutOfRange, "Parameter 'aperture' is out of range.",
                        [&] { this->builder.reuse(taps); });
    }
}

TYPED_TEST(ScaleKernelBuilder, StartsWithoutRoom) {
    TypeParam const weight = 1;
    EXPECT_EQ(this->builder.findInnerKernel(0.0F), -1);
    expectException(StatusAssertionFailed, innerRowsFull,
                    [&] { this->builder.addInnerKernel(&weight, 0.0F); });
    expectException(StatusAssertionFailed, borderRowsFull,
                    [&] { this->builder.addBorderKernel(&weight); });
}

TYPED_TEST(ScaleKernelBuilder, RowsBeginAtMultiplesOf64Bytes) {
    struct {
        int taps;
        std::uint64_t stride[2];
    } const cases[] = {{1, {64, 64}},   {3, {64, 64}},    {32, {64, 64}},  {33, {64, 128}},
                       {64, {64, 128}}, {65, {128, 192}}, {66, {128, 192}}};
    for (auto const& each : cases) {
        this->reuse(each.taps);
        EXPECT_EQ(this->builder.rowStride(), each.stride[sizeof(TypeParam) - 1]) << each.taps;
        EXPECT_EQ(this->builder.rowCount(), 16);
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(this->builder.row(0)) % 64, 0U);
        EXPECT_EQ(reinterpret_cast<unsigned char const*>(this->builder.row(17)),
                  reinterpret_cast<unsigned char const*>(this->builder.row(0)) +
                      17 * this->builder.rowStride());
    }
}

TYPED_TEST(ScaleKernelBuilder, InnerRowsAreTheFirst16) {
    using Row = std::vector<TypeParam>;
    this->reuse(2);
    Row const border{100, 101};
    EXPECT_EQ(this->builder.addBorderKernel(border.data()), 16);
    for (int i = 0; i < 16; ++i) {
        Row const row{static_cast<TypeParam>(i), static_cast<TypeParam>(-i)};
        EXPECT_EQ(this->builder.addInnerKernel(row.data(), static_cast<float>(i)), i);
    }
    expectException(StatusAssertionFailed, innerRowsFull,
                    [&] { this->builder.addInnerKernel(border.data(), 16.0F); });
    EXPECT_EQ(this->builder.findInnerKernel(16.0F), -1);
    Row const last{102, 103};
    EXPECT_EQ(this->builder.addBorderKernel(last.data()), 17);
    for (int i = 0; i < 16; ++i) {
        Row const row{static_cast<TypeParam>(i), static_cast<TypeParam>(-i)};
        EXPECT_EQ(this->rowOf(i), row);
        EXPECT_EQ(this->builder.findInnerKernel(static_cast<float>(i)), i);
    }
    EXPECT_EQ(this->rowOf(16), border);
    EXPECT_EQ(this->rowOf(17), last);
}

TYPED_TEST(ScaleKernelBuilder, HasAsManyBorderRowsAsWeights) {
    this->reuse(3);
    TypeParam const row[] = {1, 2, 3};
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(this->builder.addBorderKernel(row), 16 + i);
    }
    expectException(StatusAssertionFailed, borderRowsFull,
                    [&] { this->builder.addBorderKernel(row); });
    EXPECT_EQ(this->builder.addInnerKernel(row, 0.0F), 0);
}

TYPED_TEST(ScaleKernelBuilder, FindsPhasesCloserThanAThousandth) {
    TypeParam const row[] = {1};
    this->reuse(1);
    EXPECT_EQ(this->builder.findInnerKernel(0.5F), -1);
    this->builder.addInnerKernel(row, 0.25F);
    this->builder.addInnerKernel(row, 0.5F);
    for (float const phase : {0.5F, 0.5005F, 0.4995F, 0.50099F, 0.49901F}) {
        EXPECT_EQ(this->builder.findInnerKernel(phase), 1) << phase;
    }
    for (float const phase : {0.502F, 0.498F, 0.50101F, 0.49899F, 0.0F, 0.75F}) {
        EXPECT_EQ(this->builder.findInnerKernel(phase), -1) << phase;
    }
}

TYPED_TEST(ScaleKernelBuilder, TheFirstPhaseInReachCounts) {
    TypeParam const row[] = {1};
    this->reuse(1);
    this->builder.addInnerKernel(row, 0.5F);
    this->builder.addInnerKernel(row, 0.5008F);
    EXPECT_EQ(this->builder.findInnerKernel(0.5008F), 0);
    EXPECT_EQ(this->builder.findInnerKernel(0.5012F), 1);
}

// The float nearest to a thousandth lies above it. The second pair is 0.000999999997 apart, which
// as a float is that number again.
TYPED_TEST(ScaleKernelBuilder, DistancesAreFloats) {
    TypeParam const row[] = {1};
    this->reuse(1);
    this->builder.addInnerKernel(row, 0.0F);
    EXPECT_EQ(this->builder.findInnerKernel(0.001F), -1);
    EXPECT_EQ(this->builder.findInnerKernel(std::nextafter(0.001F, 0.0F)), 0);
    this->reuse(1);
    this->builder.addInnerKernel(row, 0x1.a36e2ep-14F);
    EXPECT_EQ(this->builder.findInnerKernel(0x1.205bcp-10F), -1);
}

TYPED_TEST(ScaleKernelBuilder, ReuseEmptiesTheTable) {
    TypeParam const row[] = {7, 8, 9};
    this->reuse(2);
    for (int i = 0; i < 16; ++i) {
        this->builder.addInnerKernel(row, 0.5F);
    }
    this->builder.addBorderKernel(row);
    this->reuse(3);
    EXPECT_EQ(this->builder.findInnerKernel(0.5F), -1);
    EXPECT_EQ(this->builder.addInnerKernel(row, 0.5F), 0);
    EXPECT_EQ(this->builder.addBorderKernel(row), 16);
    EXPECT_EQ(this->rowOf(16), (std::vector<TypeParam>{7, 8, 9}));
}

TYPED_TEST(ScaleKernelBuilder, ReportsWhatTheBufferReports) {
    unsigned long const bytes = 17 * 64;
    std::string const text =
        "Failed to allocate kernel data due to: Failure in Buffer::resize(...) : " +
        std::to_string(bytes) + " bytes are not available.";
    TypeParam const row[] = {5};
    expectException(StatusCapacityExceeded, text, [&] {
        FailingAllocation const failing(1);
        this->builder.reuse(1);
    });
    this->reuse(1);
    EXPECT_EQ(this->builder.addInnerKernel(row, 0.0F), 0);
    EXPECT_EQ(this->rowOf(0), std::vector<TypeParam>{5});
    expectStatus(StatusCapacityExceeded,
                 [&] { this->builder.reuse(std::numeric_limits<int>::max()); });
}

TYPED_TEST(ScaleKernelBuilder, AddsWithoutAllocations) {
    TypeParam const row[] = {1, 2};
    this->reuse(2);
    std::uint64_t const calls = allocationCalls();
    for (int i = 0; i < 16; ++i) {
        this->builder.addInnerKernel(row, static_cast<float>(i) / 16);
    }
    this->builder.addBorderKernel(row);
    this->reuse(2);
    this->builder.addInnerKernel(row, 0.0F);
    EXPECT_EQ(allocationCalls(), calls);
}

}  // namespace

}  // namespace ox::test
