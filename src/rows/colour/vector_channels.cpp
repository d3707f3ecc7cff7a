// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_channels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "rows/colour/routines.h"
#include "vector/channels-inl.h"
#include "vector/floats-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

bool hasNull(Byte* const* planes, std::size_t count) {
    return std::find(planes, planes + count, nullptr) != planes + count;
}

void splitTwo(Byte const* row, std::size_t pixels, Byte* const* planes) {
    if (pixels < blockBytes || hasNull(planes, 2)) {
        return plainColour.split_two(row, pixels, planes);
    }
    splitTwoRow(row, pixels, planes[0], planes[1]);
}

void splitThree(Byte const* row, std::size_t pixels, Byte* const* planes) {
    if (pixels < blockBytes || hasNull(planes, 3)) {
        return plainColour.split_three(row, pixels, planes);
    }
    splitThreeRow(row, pixels, planes[0], planes[1], planes[2]);
}

void mergeTwo(Byte const* const* planes, std::size_t pixels, Byte* row) {
    if (pixels < blockBytes) {
        return plainColour.merge_two(planes, pixels, row);
    }
    mergeTwoRow(planes[0], planes[1], pixels, row);
}

void mergeThree(Byte const* const* planes, std::size_t pixels, Byte* row) {
    if (pixels < blockBytes) {
        return plainColour.merge_three(planes, pixels, row);
    }
    mergeThreeRow(planes[0], planes[1], planes[2], pixels, row);
}

void grayToBgr(Byte const* gray, std::size_t pixels, Byte* bgr) {
    if (pixels < blockBytes) {
        return plainColour.gray_to_bgr(gray, pixels, bgr);
    }
    repeatThriceRow(gray, pixels, bgr);
}

void swapRedBlue(Byte const* row, std::size_t pixels, Byte* dst) {
    swapRedBlueRow(row, pixels, dst);
}

constexpr std::size_t lanes = blockBytes / sizeof(float);

void convertBytes(Byte const* src, std::size_t count, Byte* floats) {
    if (count < lanes) {
        return plainColour.bytes_to_floats(src, count, floats);
    }
    widenBytes(src, count, floats, [](VF numbers) HWY_ATTR { return numbers; });
}

void convertFloats(Byte const* floats, std::size_t count, Byte* dst) {
    if (count < blockBytes) {
        return plainColour.floats_to_low_bytes(floats, count, dst);
    }
    walkShortBlocks(count, blockBytes, [&](std::size_t i) HWY_ATTR {
        Byte const* const source = floats + sizeof(float) * i;
        prefetch<4 * blockBytes, aheadOfFloats>(source);
        auto const quarter = [&](std::size_t k) HWY_ATTR {
            return hn::BitCast(BlockTagF32(), hn::LoadU(Tag8(), source + k * blockBytes));
        };
        hn::StoreU(LowBytesOfFour(quarter(0), quarter(1), quarter(2), quarter(3)), Tag8(), dst + i);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.split_two = splitTwo;
    routines.split_three = splitThree;
    routines.merge_two = mergeTwo;
    routines.merge_three = mergeThree;
    routines.gray_to_bgr = grayToBgr;
    routines.swap_red_blue = swapRedBlue;
    routines.bytes_to_floats = convertBytes;
    routines.floats_to_low_bytes = convertFloats;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeChannelRoutines(ColourRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
