// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_bgr_to_yuv.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>

#include "rows/colour/formulas.h"
#include "rows/colour/routines.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

constexpr bool fitsWord(BgrFormula formula) {
    auto const [b, g, r] = formula.weights;
    int const most = 255 * (std::max(b, 0) + std::max(g, 0) + std::max(r, 0));
    int const least = 255 * (std::min(b, 0) + std::min(g, 0) + std::min(r, 0));
    int const zero = formula.zero << fractionBits;
    return least + zero >= 0 && most + zero < 65536;
}

/// The whole part of a pixel's term, which fits 16 bits, unsigned.
template <BgrFormula formula>
HWY_INLINE V8 bytesOf(ThreeChannels pixels) {
    static_assert(fitsWord(formula) && fractionBits == 8);
    V16 const zero =
        hn::BitCast(TagS16(), hn::Set(Tag16(), std::uint16_t{formula.zero << fractionBits}));
    return HighBytes(hn::Add(SumModulo<formula.weights>(LowerColours(pixels)), zero),
                     hn::Add(SumModulo<formula.weights>(UpperColours(pixels)), zero));
}

/// The channels of two by one or two by two pixels, summed.
struct Sums {
    V16 b;
    V16 g;
    V16 r;
};

HWY_INLINE Sums sumPairs(ThreeChannels v) {
    return {hn::Add(EvenBytes(v.c0), OddBytes(v.c0)), hn::Add(EvenBytes(v.c1), OddBytes(v.c1)),
            hn::Add(EvenBytes(v.c2), OddBytes(v.c2))};
}

HWY_INLINE Sums add(Sums a, Sums b) {
    return {hn::Add(a.b, b.b), hn::Add(a.g, b.g), hn::Add(a.r, b.r)};
}

/// A sample for each pair of pixels, as words.
struct HalfChroma {
    V16 u;
    V16 v;
};

template <int shift>
HWY_INLINE HalfChroma meanOf(Sums sums) {
    return {MeanWords<uOfBgr.weights, uOfBgr.zero, shift>(sums.b, sums.g, sums.r),
            MeanWords<vOfBgr.weights, vOfBgr.zero, shift>(sums.b, sums.g, sums.r)};
}

HWY_INLINE HalfChroma halfChromaOf(ThreeChannels pixels, BgrRows src, std::size_t x) {
    Sums const upper = sumPairs(pixels);
    return src.lower == nullptr
               ? meanOf<fractionBits + 1>(upper)
               : meanOf<fractionBits + 2>(add(upper, sumPairs(LoadThree(src.lower + 3 * x))));
}

HWY_INLINE V8 pairsOf(V16 first, V16 second) {
    return hn::BitCast(Tag8(), hn::Or(first, hn::ShiftLeft<8>(second)));
}

using Samples = YuvSamples<std::uint8_t>;

/// Writes the samples of the block of pixels at x.
template <YuvLayout layout>
HWY_INLINE void storeBlock(Samples dst, std::size_t x, BgrRows src, ThreeChannels pixels) {
    using enum YuvLayout;
    Tag8 const d;
    V8 const y = bytesOf<lumaOfBgr>(pixels);
    if constexpr (layout == FullPlanes) {
        hn::StoreU(y, d, dst.y + x);
        hn::StoreU(bytesOf<uOfBgr>(pixels), d, dst.u + x);
        hn::StoreU(bytesOf<vOfBgr>(pixels), d, dst.v + x);
    } else if constexpr (layout == PackedYuv) {
        StoreThree(dst.y + 3 * x, {y, bytesOf<uOfBgr>(pixels), bytesOf<vOfBgr>(pixels)});
    } else if constexpr (layout == PackedYuyv || layout == PackedUyvy) {
        HalfChroma const c = halfChromaOf(pixels, src, x);
        V8 const pairs = pairsOf(c.u, c.v);
        constexpr bool y_first = layout == PackedYuyv;
        hn::StoreInterleaved2(y_first ? y : pairs, y_first ? pairs : y, d,
                              (y_first ? dst.y : dst.u) + 2 * x);
    } else {
        hn::StoreU(y, d, dst.y + x);
        if (dst.u == nullptr) {
            return;
        }
        HalfChroma const c = halfChromaOf(pixels, src, x);
        if constexpr (layout == HalfPlanes) {
            HalfTag8 const half;
            hn::StoreU(hn::DemoteTo(half, c.u), half, dst.u + x / 2);
            hn::StoreU(hn::DemoteTo(half, c.v), half, dst.v + x / 2);
        } else {
            constexpr bool u_first = layout == PairsUv;
            hn::StoreU(u_first ? pairsOf(c.u, c.v) : pairsOf(c.v, c.u), d,
                       (u_first ? dst.u : dst.v) + x);
        }
    }
}

/// How many pixels of a row are converted by blocks.
template <YuvLayout layout>
HWY_INLINE std::size_t blockPixels(std::size_t width, Samples dst) {
    bool const all = dst.y != nullptr && dst.u != nullptr && dst.v != nullptr;
    bool const luma_alone =
        sharesChroma(layout) && dst.y != nullptr && dst.u == nullptr && dst.v == nullptr;
    std::size_t const pixels = width - width % stepsOf(layout).pixels;
    return (all || luma_alone) && pixels >= blockBytes ? pixels : 0;
}

template <YuvLayout layout>
void convertRow(BgrRows src, std::size_t width, Samples dst) {
    std::size_t const pixels = blockPixels<layout>(width, dst);
    walkBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 384>(src.upper + 3 * x);
        storeBlock<layout>(dst, x, src, LoadThree(src.upper + 3 * x));
    });
    if (pixels < width) {
        BgrRows const rest{src.upper + 3 * pixels,
                           src.lower != nullptr ? src.lower + 3 * pixels : nullptr};
        plainColour.bgr_to_yuv[indexOf(layout)](rest, width - pixels,
                                                samplesAt(layout, dst, pixels));
    }
}

void convertRowToGray(std::uint8_t const* bgr, std::size_t width, std::uint8_t* gray) {
    if (width < blockBytes) {
        return plainColour.bgr_to_gray(bgr, width, gray);
    }
    walkBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 384>(bgr + 3 * x);
        hn::StoreU(bytesOf<grayOfBgr>(LoadThree(bgr + 3 * x)), Tag8(), gray + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.bgr_to_yuv = byLayout([](auto layout) { return &convertRow<layout>; });
    routines.bgr_to_gray = convertRowToGray;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeBgrToYuvRoutines(ColourRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
