// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

namespace {

constexpr Place here{"src/ox_cv/ox_impl_state"};

/// The low 32 bits.
constexpr std::int32_t wrapped(std::int64_t value) {
    return static_cast<std::int32_t>(value);
}

/// entry(position) for positions from `start` on, `step` apart.
template <class Entry, class MakeEntry>
void fillTable(std::vector<Entry>& table, std::int32_t count, std::int32_t start, std::int32_t step,
               MakeEntry make_entry) {
    resizeTable(table, count, here);
    std::int32_t position = start;
    for (Entry& entry : table) {
        entry = make_entry(position);
        position = wrapped(std::int64_t{position} + step);
    }
}

}  // namespace

void buildNearestTable(std::int32_t src, std::int32_t dst, std::vector<std::uint16_t>& table) {
    std::int32_t const step = coordinateStep(src, dst);
    fillTable(table, dst, step / 2, step, [](std::int32_t position) {
        return static_cast<std::uint16_t>(position >> coordinateBits);
    });
}

void buildBilinearTable(std::int32_t src, std::int32_t dst, std::vector<std::int32_t>& table) {
    std::int32_t const step = coordinateStep(src, dst);
    // The running position isn't clamped, only the entries are.
    fillTable(table, dst, wrapped(std::int64_t{step} - coordinateOne) / 2, step,
              [](std::int32_t position) { return std::max(position, 0); });
}

std::uint16_t buildAreaTable(std::int32_t src, std::int32_t dst, int shift,
                             std::vector<AreaWeight>& weights) {
    std::int32_t const one = 1 << shift;
    std::int32_t const ratio = wrapped(std::int64_t{dst} << shift) / src;
    resizeTable(weights, std::int64_t{dst} + 1, here);
    auto const full_weight = static_cast<std::uint16_t>(std::min(one, ratio));
    for (std::int32_t i = 0; i < dst; ++i) {
        auto const index = static_cast<std::int32_t>(std::int64_t{i} * src / dst);
        // The part of sample `index`, in destination cells, that lies in cell i.
        std::int32_t const overlap =
            wrapped(ratio * (std::int64_t{index} + 1) - (std::int64_t{i} << shift));
        weights[static_cast<std::size_t>(i)] = {
            static_cast<std::uint16_t>(index),
            static_cast<std::uint16_t>(std::clamp(overlap, 0, one))};
    }
    weights.back() = {static_cast<std::uint16_t>(src), full_weight};
    return full_weight;
}

}  // namespace ox::impl
