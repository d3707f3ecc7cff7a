#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_bgr_to_yuv.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/routines.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;
using vector::ChannelWeights;

#if HWY_TARGET != HWY_SCALAR

constexpr ChannelWeights grayWeights{28, 152, 76};
constexpr ChannelWeights lumaWeights{25, 129, 65};
constexpr ChannelWeights uWeights{112, -74, -38};
constexpr ChannelWeights vWeights{-18, -94, 112};

/// (weighted channels + offset) >> 8, of sums that fit 16 bits, unsigned.
template <ChannelWeights weights>
HWY_INLINE V8 bytesOf(ThreeChannels pixels, std::int16_t offset) {
    V16 const constant = hn::Set(TagS16(), offset);
    return HighBytes(hn::Add(SumModulo<weights>(LowerColours(pixels)), constant),
                     hn::Add(SumModulo<weights>(UpperColours(pixels)), constant));
}

HWY_INLINE V8 lumaOf(ThreeChannels pixels) {
    return bytesOf<lumaWeights>(pixels, 16 * 256);
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
    return {MeanWords<uWeights, shift>(sums.b, sums.g, sums.r),
            MeanWords<vWeights, shift>(sums.b, sums.g, sums.r)};
}

HWY_INLINE HalfChroma halfChromaOf(ThreeChannels pixels, BgrRows src, std::size_t x) {
    Sums const upper = sumPairs(pixels);
    return src.lower == nullptr ? meanOf<9>(upper)
                                : meanOf<10>(add(upper, sumPairs(LoadThree(src.lower + 3 * x))));
}

HWY_INLINE V8 pairsOf(V16 first, V16 second) {
    return hn::BitCast(Tag8(), hn::Or(first, hn::ShiftLeft<8>(second)));
}

using Samples = YuvSamples<std::uint8_t>;

/// For rows of each layout: store(...) writes the samples of the block of pixels at x.
template <YuvLayout layout>
struct Block;

template <>
struct Block<YuvLayout::HalfPlanes> {
    static HWY_INLINE void store(Samples dst, std::size_t x, BgrRows src, ThreeChannels pixels) {
        hn::StoreU(lumaOf(pixels), Tag8(), dst.y + x);
        if (dst.u != nullptr) {
            HalfTag8 const half;
            HalfChroma const chroma = halfChromaOf(pixels, src, x);
            hn::StoreU(hn::DemoteTo(half, chroma.u), half, dst.u + x / 2);
            hn::StoreU(hn::DemoteTo(half, chroma.v), half, dst.v + x / 2);
        }
    }
};

template <bool u_first>
struct PairsBlock {
    static HWY_INLINE void store(Samples dst, std::size_t x, BgrRows src, ThreeChannels pixels) {
        hn::StoreU(lumaOf(pixels), Tag8(), dst.y + x);
        if (dst.u != nullptr) {
            HalfChroma const c = halfChromaOf(pixels, src, x);
            hn::StoreU(u_first ? pairsOf(c.u, c.v) : pairsOf(c.v, c.u), Tag8(),
                       (u_first ? dst.u : dst.v) + x);
        }
    }
};

template <>
struct Block<YuvLayout::PairsUv> : PairsBlock<true> {};

template <>
struct Block<YuvLayout::PairsVu> : PairsBlock<false> {};

template <bool y_first>
struct PackedPairsBlock {
    static HWY_INLINE void store(Samples dst, std::size_t x, BgrRows src, ThreeChannels pixels) {
        HalfChroma const chroma = halfChromaOf(pixels, src, x);
        V8 const pairs = pairsOf(chroma.u, chroma.v);
        V8 const y = lumaOf(pixels);
        hn::StoreInterleaved2(y_first ? y : pairs, y_first ? pairs : y, Tag8(),
                              (y_first ? dst.y : dst.u) + 2 * x);
    }
};

template <>
struct Block<YuvLayout::PackedYuyv> : PackedPairsBlock<true> {};

template <>
struct Block<YuvLayout::PackedUyvy> : PackedPairsBlock<false> {};

/// Chroma of each pixel: its sums with 2^15 are positive.
template <ChannelWeights weights>
HWY_INLINE V8 fullChromaOf(ThreeChannels pixels) {
    return bytesOf<weights>(pixels, std::int16_t{-0x8000});
}

template <>
struct Block<YuvLayout::FullPlanes> {
    static HWY_INLINE void store(Samples dst, std::size_t x, BgrRows, ThreeChannels pixels) {
        Tag8 const d;
        hn::StoreU(lumaOf(pixels), d, dst.y + x);
        hn::StoreU(fullChromaOf<uWeights>(pixels), d, dst.u + x);
        hn::StoreU(fullChromaOf<vWeights>(pixels), d, dst.v + x);
    }
};

template <>
struct Block<YuvLayout::PackedYuv> {
    static HWY_INLINE void store(Samples dst, std::size_t x, BgrRows, ThreeChannels pixels) {
        StoreThree(dst.y + 3 * x, {lumaOf(pixels), fullChromaOf<uWeights>(pixels),
                                   fullChromaOf<vWeights>(pixels)});
    }
};

template <YuvLayout layout>
void convertRow(BgrRows src, std::size_t width, Samples dst) {
    walkBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 384>(src.upper + 3 * x);
        Block<layout>::store(dst, x, src, LoadThree(src.upper + 3 * x));
    });
}

void convertRowToGray(std::uint8_t const* bgr, std::size_t width, std::uint8_t* gray) {
    walkBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
        prefetch<3 * blockBytes, 384>(bgr + 3 * x);
        hn::StoreU(bytesOf<grayWeights>(LoadThree(bgr + 3 * x), 0), Tag8(), gray + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.bgr_to_yuv = {convertRow<YuvLayout::HalfPlanes>, convertRow<YuvLayout::PairsUv>,
                           convertRow<YuvLayout::PairsVu>,    convertRow<YuvLayout::PackedYuyv>,
                           convertRow<YuvLayout::PackedUyvy>, convertRow<YuvLayout::FullPlanes>,
                           convertRow<YuvLayout::PackedYuv>};
    routines.bgr_to_gray = convertRowToGray;
    routines.least_pixels = blockBytes;
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
