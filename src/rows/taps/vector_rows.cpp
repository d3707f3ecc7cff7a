// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/taps/vector_rows.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/taps/axis.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

/// Takes two rows at a time: their bytes, interleaved as words, are multiplied by the two weights.
HWY_INLINE V8 sumBlock(RowTaps const& taps, std::size_t x) {
    Tag8 const d;
    FourSums sums = NoFourSums();
    std::size_t k = 0;
    for (; k + 1 < taps.count; k += 2) {
        sums = AddTwoRows(sums, hn::LoadU(d, taps.rows[k] + x), hn::LoadU(d, taps.rows[k + 1] + x),
                          taps.weights[k], taps.weights[k + 1]);
    }
    if (k < taps.count) {
        sums = AddTwoRows(sums, hn::LoadU(d, taps.rows[k] + x), hn::Zero(d), taps.weights[k], 0);
    }
    return BytesOf(sums, taps.shift);
}

void sumRows(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst) {
    if (bytes < blockBytes) {
        return sumPlainRows(taps, bytes, dst);
    }
    walkBlocks(bytes, blockBytes,
               [&](std::size_t x) HWY_ATTR { hn::StoreU(sumBlock(taps, x), Tag8(), dst + x); });
}

#endif

void takeRoutines([[maybe_unused]] TapRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.sum_rows = sumRows;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeTapRowRoutines(TapRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
