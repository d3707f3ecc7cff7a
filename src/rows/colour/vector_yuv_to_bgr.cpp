// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_yuv_to_bgr.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/formulas.h"
#include "rows/colour/routines.h"
#include "rows/colour/yuv_blocks-inl.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Y, U and V stand for the samples less their zeros. A channel is the whole part of a sum with 8
// fractional bits. The whole parts of the factors are taken out of the sum; the rest fits 16 bits:
//
//   B = (297 Y + 516 U) / 256           = Y + 2 U + (41 Y + 4 U) / 256
//   G = (297 Y - 207 V - 100 U) / 256   = Y - V   + (41 Y + 49 V - 100 U) / 256
//   R = (297 Y + 408 V) / 256           = Y + V   + (41 Y + 152 V) / 256

constexpr int one = 1 << fractionBits;

/// The whole part nearest to 0 that leaves a rest of at most `most_left`.
constexpr int wholeOf(int factor) {
    constexpr int most_left = 160;
    int whole = 0;
    while (factor - whole * one > most_left) {
        ++whole;
    }
    while (factor - whole * one < -most_left) {
        --whole;
    }
    return whole;
}

constexpr int restOf(int factor) {
    return factor - wholeOf(factor) * one;
}

constexpr bool fitsWord(ChromaFactors factors) {
    constexpr int y = restOf(lumaFactor);
    int const u = restOf(factors.u);
    int const v = restOf(factors.v);
    // Chroma less its zero is at least -chromaZero, and Y less its zero at most 255 - lumaZero.
    int const chroma = chromaZero * ((u < 0 ? -u : u) + (v < 0 ? -v : v));
    return chroma + y * (255 - lumaZero) <= 32767 && -chroma - y * lumaZero >= -32768;
}
static_assert(fitsWord(blueFactors) && fitsWord(greenFactors) && fitsWord(redFactors));

HWY_INLINE V16 constant(int value) {
    return hn::Set(TagS16(), static_cast<std::int16_t>(value));
}

template <int factor>
HWY_INLINE V16 times(V16 v) {
    if constexpr (factor == 1) {
        return v;
    } else if constexpr (factor == -1) {
        return hn::Neg(v);
    } else if constexpr (factor == 2) {
        return hn::Add(v, v);
    } else if constexpr (factor == 4) {
        return hn::ShiftLeft<2>(v);
    } else {
        return hn::Mul(v, constant(factor));
    }
}

/// u * U + v * V
template <int u, int v>
HWY_INLINE V16 sumOf(V16 cu, V16 cv) {
    if constexpr (u == 0) {
        return times<v>(cv);
    } else if constexpr (v == 0) {
        return times<u>(cu);
    } else {
        return hn::Add(times<u>(cu), times<v>(cv));
    }
}

/// What a sample adds to a channel.
struct Term {
    V16 whole;
    V16 rest;
};

HWY_INLINE Term lumaTerm(V16 y) {
    return {times<wholeOf(lumaFactor)>(y), times<restOf(lumaFactor)>(y)};
}

HWY_INLINE V16 channelOf(Term luma, Term chroma) {
    return hn::Add(hn::Add(luma.whole, chroma.whole),
                   hn::ShiftRight<fractionBits>(hn::Add(luma.rest, chroma.rest)));
}

using Row = YuvSamples<std::uint8_t const>;

#if HWY_TARGET == HWY_NEON

template <ChromaFactors factors>
HWY_INLINE Term chromaTerm(V16 u, V16 v) {
    return {sumOf<wholeOf(factors.u), wholeOf(factors.v)>(u, v),
            sumOf<restOf(factors.u), restOf(factors.v)>(u, v)};
}

struct ChromaTerms {
    Term b;
    Term g;
    Term r;
};

/// @param u less its zero, as are v and y
HWY_INLINE ChromaTerms chromaTerms(V16 u, V16 v) {
    return {chromaTerm<blueFactors>(u, v), chromaTerm<greenFactors>(u, v),
            chromaTerm<redFactors>(u, v)};
}

// Pixels that share chroma come in two registers of luma: the even ones and the odd ones.

template <YuvLayout layout>
constexpr std::size_t stepPixels = blockBytes* stepsOf(layout).pixels;

struct Samples {
    V8 first;   ///< luma
    V8 second;  ///< the same as the first where pixels don't share chroma
    V8 u;
    V8 v;
};

template <YuvLayout layout>
HWY_INLINE Samples loadSamples(Row src, std::size_t x) {
    using enum YuvLayout;
    Tag8 const d;
    V8 first;
    V8 second;
    V8 u;
    V8 v;
    if constexpr (layout == PackedYuyv) {
        hn::LoadInterleaved4(d, src.y + 2 * x, first, u, second, v);
    } else if constexpr (layout == PackedUyvy) {
        hn::LoadInterleaved4(d, src.u + 2 * x, u, first, v, second);
    } else if constexpr (layout == PackedYuv) {
        hn::LoadInterleaved3(d, src.y + 3 * x, first, u, v);
        second = first;
    } else if constexpr (layout == FullPlanes) {
        first = hn::LoadU(d, src.y + x);
        second = first;
        u = hn::LoadU(d, src.u + x);
        v = hn::LoadU(d, src.v + x);
    } else {
        hn::LoadInterleaved2(d, src.y + x, first, second);
        if constexpr (layout == PairsUv) {
            hn::LoadInterleaved2(d, src.u + x, u, v);
        } else if constexpr (layout == PairsVu) {
            hn::LoadInterleaved2(d, src.v + x, v, u);
        } else {
            u = hn::LoadU(d, src.u + x / 2);
            v = hn::LoadU(d, src.v + x / 2);
        }
    }
    return {first, second, u, v};
}

HWY_INLINE ThreeChannels channelsOf(V8 y, ChromaTerms const& lower, ChromaTerms const& upper) {
    TwoWords const luma = Differences<lumaZero>(y);
    Term const first = lumaTerm(luma.lower);
    Term const second = lumaTerm(luma.upper);
    return {PackWords(channelOf(first, lower.b), channelOf(second, upper.b)),
            PackWords(channelOf(first, lower.g), channelOf(second, upper.g)),
            PackWords(channelOf(first, lower.r), channelOf(second, upper.r))};
}

template <YuvLayout layout>
HWY_INLINE void convertBlock(Row src, std::size_t x, std::uint8_t* dst) {
    Samples const s = loadSamples<layout>(src, x);
    TwoWords const u = Differences<chromaZero>(s.u);
    TwoWords const v = Differences<chromaZero>(s.v);
    ChromaTerms const lower = chromaTerms(u.lower, v.lower);
    ChromaTerms const upper = chromaTerms(u.upper, v.upper);
    ThreeChannels const even = channelsOf(s.first, lower, upper);
    if constexpr (sharesChroma(layout)) {
        Tag8 const d;
        ThreeChannels const odd = channelsOf(s.second, lower, upper);
        StoreThree(dst, {hn::InterleaveLower(even.c0, odd.c0), hn::InterleaveLower(even.c1, odd.c1),
                         hn::InterleaveLower(even.c2, odd.c2)});
        StoreThree(dst + 3 * blockBytes, {hn::InterleaveUpper(d, even.c0, odd.c0),
                                          hn::InterleaveUpper(d, even.c1, odd.c1),
                                          hn::InterleaveUpper(d, even.c2, odd.c2)});
    } else {
        StoreThree(dst, even);
    }
}

#else

template <YuvLayout>
constexpr std::size_t stepPixels = blockBytes;

// Where chroma's factor is a multiple of 4, fewer operations do. Y, U and V are the samples
// themselves here; what their zeros take away is a constant of chroma's term:
//
//   B = (297 Y / 4 + 129 U - 17700) / 64
//   R = (297 Y / 4 + 102 V - 14244) / 64
//
// Luma's quotient is rounded down. A sum that 16 bits don't hold is clamped either way.

constexpr int quarter = 4;
constexpr int quarterBits = fractionBits - 2;

/// What the zeros of the samples add to a channel's sum.
constexpr int zerosOf(ChromaFactors factors) {
    return -lumaFactor * lumaZero - chromaZero * (factors.u + factors.v);
}

constexpr bool fitsQuarter(ChromaFactors factors) {
    int const zeros = zerosOf(factors);
    int const largest = zeros + 255 * (factors.u + factors.v);
    return factors.u % quarter == 0 && factors.v % quarter == 0 && zeros % quarter == 0 &&
           zeros >= -32768 * quarter && largest <= 32767 * quarter;
}
static_assert(fitsQuarter(blueFactors) && fitsQuarter(redFactors));
static_assert(32767 >> quarterBits >= 255 && lumaFactor * 255 / quarter <= 32767);

constexpr int zerosOfGreen = zerosOf(greenFactors);
constexpr int wholeZeros = zerosOfGreen >> fractionBits;
constexpr int restZeros = zerosOfGreen - wholeZeros * one;
static_assert(wholeOf(greenFactors.u) == 0 && wholeOf(greenFactors.v) == -1);
static_assert(255 * restOf(greenFactors.u) >= -32768 &&
              255 * (restOf(lumaFactor) + restOf(greenFactors.v)) + restZeros <= 32767);

struct Luma {
    V16 quarter;
    Term green;
};

struct ChromaTerms {
    V16 b;
    Term g;
    V16 r;
};

template <ChromaFactors factors>
HWY_INLINE V16 quarterOf(V16 sample) {
    V16 const product = hn::Mul(sample, constant((factors.u + factors.v) / quarter));
    return hn::Add(product, constant(zerosOf(factors) / quarter));
}

HWY_INLINE ChromaTerms chromaTerms(V16 u, V16 v) {
    V16 const rest = sumOf<restOf(greenFactors.u), restOf(greenFactors.v)>(u, v);
    Term const green{hn::Sub(constant(wholeZeros), v), hn::Add(rest, constant(restZeros))};
    return {quarterOf<blueFactors>(u), green, quarterOf<redFactors>(v)};
}

HWY_INLINE Luma lumaOf(V16 y) {
    // The upper halves of products of 256 Y.
    Tag16 const d;
    auto const scaled = hn::ShiftLeft<8>(hn::BitCast(d, y));
    auto const factor = hn::Set(d, lumaFactor * 256 / quarter);
    return {hn::BitCast(TagS16(), hn::MulHigh(scaled, factor)), lumaTerm(y)};
}

HWY_INLINE V16 channelOf(V16 luma, V16 chroma) {
    return hn::ShiftRight<quarterBits>(hn::SaturatedAdd(luma, chroma));
}

HWY_INLINE ThreeWords channelsOf(V16 y, ChromaTerms const& chroma) {
    Luma const luma = lumaOf(y);
    return {channelOf(luma.quarter, chroma.b), channelOf(luma.green, chroma.g),
            channelOf(luma.quarter, chroma.r)};
}

/// Writes a block of pixels; `even` and `odd` are chroma's terms for its columns.
HWY_INLINE void storeBlock(std::uint8_t* dst, V8 y, ChromaTerms const& even,
                           ChromaTerms const& odd) {
    StoreThreePixels(dst, channelsOf(EvenBytes(y), even), channelsOf(OddBytes(y), odd));
}

/// Converts the block of pixels at x.
template <YuvLayout layout>
HWY_INLINE void convertBlock(Row src, std::size_t x, std::uint8_t* dst) {
    YuvBlock const block = loadYuvBlock<layout>(src, x);
    ChromaTerms const even = chromaTerms(block.u_even, block.v_even);
    if constexpr (sharesChroma(layout)) {
        storeBlock(dst, block.y, even, even);
    } else {
        storeBlock(dst, block.y, even, chromaTerms(block.u_odd, block.v_odd));
    }
}

#endif

template <YuvLayout layout>
void convertRow(Row src, std::size_t width, std::uint8_t* bgr) {
    constexpr YuvSteps steps = stepsOf(layout);
    std::size_t const pairs = width - width % steps.pixels;
    std::size_t const pixels = pairs < stepPixels<layout> ? 0 : pairs;
    walkBlocks(pixels, stepPixels<layout>,
               [&](std::size_t x) HWY_ATTR { convertBlock<layout>(src, x, bgr + 3 * x); });
    if (pixels < width) {
        plainColour.yuv_to_bgr[indexOf(layout)](samplesAt(layout, src, pixels), width - pixels,
                                                bgr + 3 * pixels);
    }
}

/// A block of Y.
template <YuvLayout layout>
HWY_INLINE V8 loadLuma(std::uint8_t const* y) {
    if constexpr (layout == YuvLayout::PackedYuv) {
        return LoadThree(y).c0;
    } else {
        Tag8 const d;
        constexpr bool odd = layout == YuvLayout::PackedUyvy;
        std::uint8_t const* const src = odd ? y - 1 : y;
        prefetch<2 * blockBytes, 1024>(src);
#if HWY_TARGET == HWY_NEON
        V8 first;
        V8 second;
        hn::LoadInterleaved2(d, src, first, second);
        return odd ? second : first;
#else
        V8 const lower = hn::LoadU(d, src);
        V8 const upper = hn::LoadU(d, src + blockBytes);
        return odd ? hn::ConcatOdd(d, upper, lower) : hn::ConcatEven(d, upper, lower);
#endif
    }
}

template <YuvLayout layout>
void takeLuma(std::uint8_t const* y, std::size_t pixels, std::uint8_t* luma) {
    if (pixels < blockBytes) {
        return plainColour.luma[indexOf(layout)](y, pixels, luma);
    }
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        hn::StoreU(loadLuma<layout>(y + stepsOf(layout).luma * x), Tag8(), luma + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.yuv_to_bgr = byLayout([](auto layout) { return &convertRow<layout>; });
    routines.luma[indexOf(YuvLayout::PackedYuyv)] = takeLuma<YuvLayout::PackedYuyv>;
    routines.luma[indexOf(YuvLayout::PackedUyvy)] = takeLuma<YuvLayout::PackedUyvy>;
    routines.luma[indexOf(YuvLayout::PackedYuv)] = takeLuma<YuvLayout::PackedYuv>;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeYuvToBgrRoutines(ColourRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
