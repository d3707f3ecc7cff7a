// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The global allocation functions, replaced: they count, and can be made to fail. `posix_memalign`,
// which the kernels' tables come from, is counted only.
#pragma once

#include <cstdint>

namespace ox::test {

// Blocks from `operator new`, in any form, that weren't given back yet.
std::int64_t liveAllocations();
// How often any form of `operator new`, or `posix_memalign`, was called.
std::uint64_t allocationCalls();

// While it lives, the k-th call of `operator new` from its construction on fails, and so do all
// later ones; k counts from 1. Only calls of the thread that made it fail.
class FailingAllocations {
  public:
    explicit FailingAllocations(std::uint64_t k);
    FailingAllocations(FailingAllocations const&) = delete;
    FailingAllocations& operator=(FailingAllocations const&) = delete;
    ~FailingAllocations();

    // Whether a call has failed.
    bool struck() const;
};

// The same where only the k-th call fails.
class FailingAllocation {
  public:
    explicit FailingAllocation(std::uint64_t k);
    FailingAllocation(FailingAllocation const&) = delete;
    FailingAllocation& operator=(FailingAllocation const&) = delete;
    ~FailingAllocation();

    bool struck() const;
};

}  // namespace ox::test
