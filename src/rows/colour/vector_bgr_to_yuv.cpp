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
    V8 const bytes = HighBytes(SumModulo<formula.weights>(LowerColours(pixels)),
                               SumModulo<formula.weights>(UpperColours(pixels)));
    return formula.zero == 0 ? bytes : hn::Add(bytes, hn::Set(Tag8(), formula.zero));
}

/// The channels of two by one or two by two pixels, summed.
struct Sums {
    V16 b;
    V16 g;
    V16 r;
};

HWY_INLINE Sums sumPairs(ThreeChannels v) {
    return {PairSums(v.c0), PairSums(v.c1), PairSums(v.c2)};
}

HWY_INLINE Sums addPairs(Sums sums, ThreeChannels v) {
    return {AddPairSums(sums.b, v.c0), AddPairSums(sums.g, v.c1), AddPairSums(sums.r, v.c2)};
}

/// A sample for each pair of pixels: the high bytes of words.
struct HalfChroma {
    V16 u;
    V16 v;
};

/// Half the factor of a channel, with a sign. The halves lose nothing, because all are even, and
/// products with sums of four bytes fit 16 bits, unsigned.
constexpr std::int16_t halfOf(int factor) {
    return factor % 2 == 0 && factor / 2 * 4 * 255 < 65536 ? static_cast<std::int16_t>(factor / 2)
                                                           : throw "no half of this factor fits";
}

/// The mean's whole part is the high byte of
///   (weights * sum / 2 + 2^15)       for two pixels
///   (weights * sum / 2 + 2^16) >> 1  for four, whose difference needs a 17th bit.
/// @param added the channel that is added; the others are taken away
template <int pixels, int factor, int factor_a, int factor_b>
HWY_INLINE V16 meanOf(V16 added, V16 a, V16 b) {
    static_assert(chromaZero == 128 && -factor_a - factor_b == factor);
    TagS16 const d;
    V16 const plus = hn::Mul(added, hn::Set(d, halfOf(factor)));
    V16 const minus = hn::Add(hn::Mul(a, hn::Set(d, halfOf(-factor_a))),
                              hn::Mul(b, hn::Set(d, halfOf(-factor_b))));
    if constexpr (pixels == 2) {
        return hn::Add(hn::Sub(plus, minus), hn::Set(d, -0x8000));
    } else {
        Tag16 const words;
        return hn::BitCast(
            d, hn::AverageRound(hn::BitCast(words, plus), hn::Not(hn::BitCast(words, minus))));
    }
}

template <int pixels>
HWY_INLINE HalfChroma meansOf(Sums sums) {
    constexpr vector::ChannelWeights u = uOfBgr.weights;
    constexpr vector::ChannelWeights v = vOfBgr.weights;
    return {meanOf<pixels, u.b, u.g, u.r>(sums.b, sums.g, sums.r),
            meanOf<pixels, v.r, v.b, v.g>(sums.r, sums.b, sums.g)};
}

HWY_INLINE HalfChroma halfChromaOf(ThreeChannels pixels, BgrRows src, std::size_t x) {
    Sums const upper = sumPairs(pixels);
    return src.lower == nullptr ? meansOf<2>(upper)
                                : meansOf<4>(addPairs(upper, LoadThree(src.lower + 3 * x)));
}

/// Stores the samples of one channel.
HWY_INLINE void storeHigh(V16 v, std::uint8_t* at) {
    HalfTag8 const half;
    auto const words = hn::ShiftRight<8>(hn::BitCast(Tag16(), v));
    hn::StoreU(hn::DemoteTo(half, hn::BitCast(TagS16(), words)), half, at);
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
        V8 const pairs = HighPairs(c.u, c.v);
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
            storeHigh(c.u, dst.u + x / 2);
            storeHigh(c.v, dst.v + x / 2);
        } else {
            constexpr bool u_first = layout == PairsUv;
            hn::StoreU(u_first ? HighPairs(c.u, c.v) : HighPairs(c.v, c.u), d,
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
    walkShortBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
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
