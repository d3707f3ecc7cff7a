// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Taps of an axis as numbers.
#pragma once

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "ox_cv/ox_impl_scale_data.h"

namespace ox::test {

using Taps = std::vector<int>;

// Where a destination index begins, and its row.
using Source = std::pair<int, int>;
using Sources = std::vector<Source>;

template <class Weight>
struct ScaleDataOf : impl::ScaleData<Weight> {
    ScaleDataOf() = default;
    template <class Kernel>
    ScaleDataOf(Kernel kernel, int src_size, int dst_size) {
        this->reuse(kernel, src_size, dst_size);
    }

    Sources starts() const {
        Sources all;
        for (impl::ScaleSource const& source : this->sources()) {
            all.emplace_back(source.src_start, source.kernel_index);
        }
        return all;
    }

    Taps row(int index, int taps) const {
        Weight const* const weights = this->kernels().row(index);
        return Taps(weights, weights + taps);
    }

    void expectEmpty() const {
        EXPECT_TRUE(this->sources().empty());
        EXPECT_EQ(this->srcSize(), 0);
        EXPECT_EQ(this->dstSize(), 0);
    }
};

using Bytes8 = ScaleDataOf<signed char>;
using Words16 = ScaleDataOf<short>;

}  // namespace ox::test
