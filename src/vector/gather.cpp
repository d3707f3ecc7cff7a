// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/gather.h"

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "vector/gather.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <cstring>
#include <type_traits>

#include "vector/ops-inl.h"
#include "vector/windows.h"

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {
namespace {

#if HWY_TARGET != HWY_SCALAR

bool compilePixels(PixelColumns const& columns, PixelProgram& program) {
    std::uint64_t const size = columns.pixel_size;
    if (size == 0 || size > windowBytes / 2 || columns.row_bytes < windowBytes ||
        columns.width == 0) {
        return false;
    }
    // Whole pixels are copied: each counts as one entry.
    WindowPlan const plan{.window = windowBytes,
                          .row = columns.row_bytes,
                          .width = columns.width,
                          .channels = 1,
                          .reach = size,
                          .step_entries = windowBytes / size};
    auto const first = [&](std::uint64_t x) {
        return static_cast<std::uint64_t>(columns.offset[x]);
    };
    program.offsets.Resize(2 * plan.mostSteps(), windowBytes);
    program.places.Resize(windowBytes * plan.mostSteps(), windowBytes);
    program.dst_bytes = columns.width * size;
    program.scratch.Resize(program.dst_bytes + windowBytes, windowBytes);
    if (program.offsets.data == nullptr || program.places.data == nullptr ||
        program.scratch.data == nullptr) {
        return false;
    }
    std::int32_t* offset = program.offsets.data;
    std::uint8_t* places = program.places.data;
    std::uint64_t most_pixels = 0;
    program.steps = planSteps(plan, first, [&](WindowStep const& step) {
        *offset++ = static_cast<std::int32_t>(step.start);
        *offset++ = static_cast<std::int32_t>(step.pixel * size);
        std::memset(places, 0, windowBytes);
        for (std::uint64_t i = 0; i < step.entries; ++i) {
            std::uint64_t const place = first(step.pixel + i) - step.start;
            for (std::uint64_t byte = 0; byte < size; ++byte) {
                places[i * size + byte] = static_cast<std::uint8_t>(place + byte);
            }
        }
        places += windowBytes;
        most_pixels = std::max(most_pixels, step.entries);
    });
    program.step_bytes = most_pixels * size;
    return true;
}

/// The first bytes of a register, as many as `d` has.
template <class D, class V>
HWY_INLINE auto lowerPart(D d, V v) {
    if constexpr (std::is_same_v<hn::DFromV<V>, D>) {
        return v;
    } else {
        return lowerPart(d, hn::LowerHalf(v));
    }
}

/// Each step stores a whole register; the next step overwrites the bytes behind its own. Steps that
/// would store past the row's end store into the scratch row.
/// @tparam D of the registers, which may be the lower part of a window
template <class D>
HWY_INLINE void copySteps(D d, PixelProgram const& program, std::uint8_t const* src,
                          std::uint8_t* dst) {
    WindowTag const window;
    std::int32_t const* offset = program.offsets.data;
    std::int32_t const* const end = offset + 2 * program.steps;
    std::uint8_t const* places = program.places.data;
    auto const run = [&](std::uint8_t* to) HWY_ATTR {
        auto const bytes =
            PermuteWindow(hn::LoadU(window, src + offset[0]), hn::Load(window, places));
        hn::StoreU(lowerPart(d, bytes), d, to + offset[1]);
        offset += 2;
        places += windowBytes;
    };
    std::uint64_t const dst_bytes = program.dst_bytes;
    while (offset < end && static_cast<std::uint64_t>(offset[1]) + hn::Lanes(d) <= dst_bytes) {
        run(dst);
    }
    if (offset < end) {
        auto const rest = static_cast<std::uint64_t>(offset[1]);
        while (offset < end) {
            run(program.scratch.data);
        }
        std::memcpy(dst + rest, program.scratch.data + rest, dst_bytes - rest);
    }
}

/// Where pixels lie far apart, steps have few bytes, and short stores seldom straddle cache lines.
void copyPixels(PixelProgram& program, std::uint8_t const* src, std::uint8_t* dst) {
    hn::CappedTag<std::uint8_t, 16> const narrow;
    if (program.step_bytes <= hn::Lanes(narrow)) {
        copySteps(narrow, program, src, dst);
    } else {
        copySteps(WindowTag(), program, src, dst);
    }
}

#endif

void takeRoutines([[maybe_unused]] GatherRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.compile_pixels = compilePixels;
    routines.copy_pixels = copyPixels;
#endif
}

}  // namespace
}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::vector {

HWY_EXPORT(takeRoutines);

void takeGatherRoutines(GatherRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::vector
#endif  // HWY_ONCE
