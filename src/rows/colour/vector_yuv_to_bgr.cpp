#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_yuv_to_bgr.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/routines.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// With Y, U and V less their offsets, a channel is the whole part of a sum with 8 fractional bits.
// What the factors have of whole ones is taken out, and the rest fits 16 bits:
//
//   B = (297 Y + 516 U) / 256           = Y + 2 U + (41 Y + 4 U) / 256
//   G = (297 Y - 207 V - 100 U) / 256   = Y - V   + (41 Y + 49 V - 100 U) / 256
//   R = (297 Y + 408 V) / 256           = Y + V   + (41 Y + 152 V) / 256

/// What chroma adds to a channel.
struct ChannelTerm {
    V16 whole;
    V16 rest;
};

struct ChromaTerms {
    ChannelTerm b;
    ChannelTerm g;
    ChannelTerm r;
};

HWY_INLINE V16 constant(std::int16_t value) {
    return hn::Set(TagS16(), value);
}

HWY_INLINE V16 times(V16 v, std::int16_t factor) {
    return hn::Mul(v, constant(factor));
}

HWY_INLINE ChromaTerms chromaTerms(V16 u_byte, V16 v_byte) {
    V16 const u = hn::Sub(u_byte, constant(128));
    V16 const v = hn::Sub(v_byte, constant(128));
    return {{hn::Add(u, u), hn::ShiftLeft<2>(u)},
            {hn::Neg(v), hn::Sub(times(v, 49), times(u, 100))},
            {v, times(v, 152)}};
}

struct LumaTerm {
    V16 whole;
    V16 rest;
};

HWY_INLINE LumaTerm lumaTerm(V16 y_byte) {
    V16 const y = hn::Sub(y_byte, constant(16));
    return {y, times(y, 41)};
}

HWY_INLINE V16 channelOf(LumaTerm luma, ChannelTerm chroma) {
    return hn::Add(hn::Add(luma.whole, chroma.whole),
                   hn::ShiftRight<8>(hn::Add(luma.rest, chroma.rest)));
}

/// Writes a block of pixels; `even` and `odd` are chroma's terms for its columns.
HWY_INLINE void storeBlock(std::uint8_t* dst, V8 y, ChromaTerms const& even,
                           ChromaTerms const& odd) {
    LumaTerm const first = lumaTerm(EvenBytes(y));
    LumaTerm const second = lumaTerm(OddBytes(y));
    StoreThreePixels(dst, {PackPixels(channelOf(first, even.b), channelOf(second, odd.b)),
                           PackPixels(channelOf(first, even.g), channelOf(second, odd.g)),
                           PackPixels(channelOf(first, even.r), channelOf(second, odd.r))});
}

using Row = YuvSamples<std::uint8_t const>;

/// For rows of each layout: convert(x) converts the block of pixels at x.
template <YuvLayout layout>
struct Block;

struct HalfChromaBlock {
    static HWY_INLINE void store(std::uint8_t* dst, V8 y, V16 u, V16 v) {
        ChromaTerms const terms = chromaTerms(u, v);
        storeBlock(dst, y, terms, terms);
    }
};

template <>
struct Block<YuvLayout::HalfPlanes> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        HalfTag8 const half;
        HalfChromaBlock::store(dst, hn::LoadU(Tag8(), src.y + x),
                               hn::PromoteTo(TagS16(), hn::LoadU(half, src.u + x / 2)),
                               hn::PromoteTo(TagS16(), hn::LoadU(half, src.v + x / 2)));
    }
};

template <>
struct Block<YuvLayout::PairsUv> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        V8 const pairs = hn::LoadU(Tag8(), src.u + x);
        HalfChromaBlock::store(dst, hn::LoadU(Tag8(), src.y + x), EvenBytes(pairs),
                               OddBytes(pairs));
    }
};

template <>
struct Block<YuvLayout::PairsVu> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        V8 const pairs = hn::LoadU(Tag8(), src.v + x);
        HalfChromaBlock::store(dst, hn::LoadU(Tag8(), src.y + x), OddBytes(pairs),
                               EvenBytes(pairs));
    }
};

template <>
struct Block<YuvLayout::PackedYuyv> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        V8 y;
        V8 pairs;
        hn::LoadInterleaved2(Tag8(), src.y + 2 * x, y, pairs);
        HalfChromaBlock::store(dst, y, EvenBytes(pairs), OddBytes(pairs));
    }
};

template <>
struct Block<YuvLayout::PackedUyvy> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        V8 pairs;
        V8 y;
        hn::LoadInterleaved2(Tag8(), src.u + 2 * x, pairs, y);
        HalfChromaBlock::store(dst, y, EvenBytes(pairs), OddBytes(pairs));
    }
};

struct FullChromaBlock {
    static HWY_INLINE void store(std::uint8_t* dst, V8 y, V8 u, V8 v) {
        storeBlock(dst, y, chromaTerms(EvenBytes(u), EvenBytes(v)),
                   chromaTerms(OddBytes(u), OddBytes(v)));
    }
};

template <>
struct Block<YuvLayout::FullPlanes> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        Tag8 const d;
        FullChromaBlock::store(dst, hn::LoadU(d, src.y + x), hn::LoadU(d, src.u + x),
                               hn::LoadU(d, src.v + x));
    }
};

template <>
struct Block<YuvLayout::PackedYuv> {
    static HWY_INLINE void convert(Row src, std::size_t x, std::uint8_t* dst) {
        ThreeChannels const pixels = LoadThree(src.y + 3 * x);
        FullChromaBlock::store(dst, pixels.c0, pixels.c1, pixels.c2);
    }
};

template <YuvLayout layout>
void convertRow(Row src, std::size_t width, std::uint8_t* bgr) {
    walkBlocks(width, blockBytes,
               [&](std::size_t x) HWY_ATTR { Block<layout>::convert(src, x, bgr + 3 * x); });
}

/// Its even bytes, or its odd ones.
template <bool odd>
void takeLuma(std::uint8_t const* row, std::size_t pixels, std::uint8_t* luma) {
    Tag8 const d;
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        std::uint8_t const* const src = row + 2 * x;
        prefetch<2 * blockBytes, 1024>(src);
        V8 const lower = hn::LoadU(d, src);
        V8 const upper = hn::LoadU(d, src + blockBytes);
        hn::StoreU(odd ? hn::ConcatOdd(d, upper, lower) : hn::ConcatEven(d, upper, lower), d,
                   luma + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.yuv_to_bgr = {convertRow<YuvLayout::HalfPlanes>, convertRow<YuvLayout::PairsUv>,
                           convertRow<YuvLayout::PairsVu>,    convertRow<YuvLayout::PackedYuyv>,
                           convertRow<YuvLayout::PackedUyvy>, convertRow<YuvLayout::FullPlanes>,
                           convertRow<YuvLayout::PackedYuv>};
    routines.luma_of_yuyv = takeLuma<false>;
    routines.luma_of_uyvy = takeLuma<true>;
    routines.least_pixels = blockBytes;
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
