#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_channels.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "rows/colour/routines.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;
using Byte = std::uint8_t;

#if HWY_TARGET != HWY_SCALAR

bool hasNull(Byte* const* planes, std::size_t count) {
    return std::find(planes, planes + count, nullptr) != planes + count;
}

void splitTwo(Byte const* row, std::size_t pixels, Byte* const* planes) {
    if (pixels < blockBytes || hasNull(planes, 2)) {
        return plainColour.split_two(row, pixels, planes);
    }
    Tag8 const d;
    Byte* const first = planes[0];
    Byte* const second = planes[1];
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        V8 even = hn::Zero(d);
        V8 odd = hn::Zero(d);
        hn::LoadInterleaved2(d, row + 2 * x, even, odd);
        hn::StoreU(even, d, first + x);
        hn::StoreU(odd, d, second + x);
    });
}

void splitThree(Byte const* row, std::size_t pixels, Byte* const* planes) {
    if (pixels < blockBytes || hasNull(planes, 3)) {
        return plainColour.split_three(row, pixels, planes);
    }
    Tag8 const d;
    Byte* const first = planes[0];
    Byte* const second = planes[1];
    Byte* const third = planes[2];
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        ThreeChannels const v = LoadThree(row + 3 * x);
        hn::StoreU(v.c0, d, first + x);
        hn::StoreU(v.c1, d, second + x);
        hn::StoreU(v.c2, d, third + x);
    });
}

void mergeTwo(Byte const* const* planes, std::size_t pixels, Byte* row) {
    if (pixels < blockBytes) {
        return plainColour.merge_two(planes, pixels, row);
    }
    Tag8 const d;
    Byte const* const first = planes[0];
    Byte const* const second = planes[1];
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        hn::StoreInterleaved2(hn::LoadU(d, first + x), hn::LoadU(d, second + x), d, row + 2 * x);
    });
}

void mergeThree(Byte const* const* planes, std::size_t pixels, Byte* row) {
    if (pixels < blockBytes) {
        return plainColour.merge_three(planes, pixels, row);
    }
    Tag8 const d;
    Byte const* const first = planes[0];
    Byte const* const second = planes[1];
    Byte const* const third = planes[2];
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        StoreThree(row + 3 * x,
                   {hn::LoadU(d, first + x), hn::LoadU(d, second + x), hn::LoadU(d, third + x)});
    });
}

void grayToBgr(Byte const* gray, std::size_t pixels, Byte* bgr) {
    if (pixels < blockBytes) {
        return plainColour.gray_to_bgr(gray, pixels, bgr);
    }
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 3072, For::writing>(bgr + 3 * x);
        StoreThreeSame(bgr + 3 * x, hn::LoadU(Tag8(), gray + x));
    });
}

#if HWY_TARGET == HWY_NEON

void swapRedBlue(Byte const* row, std::size_t pixels, Byte* dst) {
    if (pixels < blockBytes) {
        return plainColour.swap_red_blue(row, pixels, dst);
    }
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) {
        ThreeChannels const v = LoadThree(row + 3 * x);
        StoreThree(dst + 3 * x, {v.c2, v.c1, v.c0});
    });
}

#else

/// Exchanges the outer bytes of the whole pixels of each period; its last byte stays.
constexpr ByteTable exchangeTable() {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes; ++j) {
        std::size_t const k = j % permutePeriod;
        table[j] = static_cast<Byte>(k + 1 == permutePeriod ? k : k / 3 * 3 + 2 - k % 3);
    }
    return table;
}

alignas(64) constexpr ByteTable exchange = exchangeTable();

/// A period holds whole pixels and one byte more, which the next store overwrites.
void swapRedBlue(Byte const* row, std::size_t pixels, Byte* dst) {
    constexpr std::size_t step = blockBytes / permutePeriod * (permutePeriod - 1);
    std::size_t const bytes = 3 * pixels;
    std::size_t i = 0;
    for (; i + step < bytes; i += step) {
        StorePeriods(dst + i, Permute(LoadPeriods(row + i), exchange));
    }
#if HWY_TARGET == HWY_AVX3_DL
    Tag8 const d;
    auto const rest = hn::FirstN(d, bytes - i);
    hn::BlendedStore(Permute(hn::MaskedLoad(rest, d, row + i), exchange), rest, d, dst + i);
#else
    plainColour.swap_red_blue(row + i, (bytes - i) / 3, dst + i);
#endif
}

#endif

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.split_two = splitTwo;
    routines.split_three = splitThree;
    routines.merge_two = mergeTwo;
    routines.merge_three = mergeThree;
    routines.gray_to_bgr = grayToBgr;
    routines.swap_red_blue = swapRedBlue;
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
