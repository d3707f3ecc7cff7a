// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h on NEON that weigh the channels of pixels.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

/// Eight pixels, ready to be weighted.
struct PixelHalf {
    uint8x8_t b;
    uint8x8_t g;
    uint8x8_t r;
};

HWY_INLINE PixelHalf LowerHalf(ThreeChannels v) {
    return {vget_low_u8(v.c0.raw), vget_low_u8(v.c1.raw), vget_low_u8(v.c2.raw)};
}

HWY_INLINE PixelHalf UpperHalf(ThreeChannels v) {
    return {vget_high_u8(v.c0.raw), vget_high_u8(v.c1.raw), vget_high_u8(v.c2.raw)};
}

HWY_INLINE uint8x8_t AverageOfFour(V8 top, V8 bottom) {
    return vrshrn_n_u16(vpadalq_u8(vpaddlq_u8(top.raw), bottom.raw), 2);
}

HWY_INLINE PixelHalf Average(ThreeChannels top, ThreeChannels bottom) {
    return {AverageOfFour(top.c0, bottom.c0), AverageOfFour(top.c1, bottom.c1),
            AverageOfFour(top.c2, bottom.c2)};
}

/// The same of the upper eight pixels of a block, where they are.
struct UpperBytes {
    uint8x16_t block;
};

struct UpperPixels {
    UpperBytes b;
    UpperBytes g;
    UpperBytes r;
};

HWY_INLINE UpperPixels UpperColours(ThreeChannels v) {
    return {{v.c0.raw}, {v.c1.raw}, {v.c2.raw}};
}

/// A weight in each byte of a register whose halves are used alike: the compiler, which would keep
/// a second register for its lower half, can't see into it.
template <int weight>
HWY_INLINE uint8x16_t WeightBytes() {
    uint8x16_t bytes = vdupq_n_u8(weight);
    asm("" : "+w"(bytes));
    return bytes;
}

template <int weight>
HWY_INLINE uint16x8_t Product(uint8x8_t channel) {
    return vmull_u8(channel, vget_low_u8(WeightBytes<weight>()));
}

template <int weight>
HWY_INLINE uint16x8_t Product(UpperBytes channel) {
    return vmull_high_u8(channel.block, WeightBytes<weight>());
}

template <int weight>
HWY_INLINE uint16x8_t AddProduct(uint16x8_t sum, uint8x8_t channel) {
    if constexpr (weight >= 0) {
        return vmlal_u8(sum, channel, vget_low_u8(WeightBytes<weight>()));
    } else {
        return vmlsl_u8(sum, channel, vget_low_u8(WeightBytes<-weight>()));
    }
}

template <int weight>
HWY_INLINE uint16x8_t AddProduct(uint16x8_t sum, UpperBytes channel) {
    if constexpr (weight >= 0) {
        return vmlal_high_u8(sum, channel.block, WeightBytes<weight>());
    } else {
        return vmlsl_high_u8(sum, channel.block, WeightBytes<-weight>());
    }
}

/// A sum begins with a channel that it adds, so that it needs no zero.
template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t SumOf(Pixels p) {
    constexpr bool blue_first = weights.b >= 0;
    constexpr bool green_first = !blue_first && weights.g >= 0;
    static_assert(blue_first || green_first || weights.r >= 0);
    uint16x8_t sum;
    if constexpr (blue_first) {
        sum = AddProduct<weights.g>(Product<weights.b>(p.b), p.g);
        sum = AddProduct<weights.r>(sum, p.r);
    } else if constexpr (green_first) {
        sum = AddProduct<weights.b>(Product<weights.g>(p.g), p.b);
        sum = AddProduct<weights.r>(sum, p.r);
    } else {
        sum = AddProduct<weights.b>(Product<weights.r>(p.r), p.b);
        sum = AddProduct<weights.g>(sum, p.g);
    }
    return vreinterpretq_s16_u16(sum);
}

/// With 7 fractional bits.
template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t Weighted(Pixels p) {
    constexpr SplitWeights split = splitWeights(weights);
    int16x8_t const low = SumOf<split.low>(p);
    return vsraq_n_s16(SumOf<split.high>(p), low, 7);
}

template <ChannelWeights weights>
HWY_INLINE uint8x8_t WeightedBytesOf(PixelHalf p) {
    return vreinterpret_u8_s8(vrshrn_n_s16(Weighted<weights>(p), 7));
}

template <ChannelWeights weights, class Upper>
HWY_INLINE V8 WeightedBytes(PixelHalf lower, Upper upper) {
    int8x8_t const first = vrshrn_n_s16(Weighted<weights>(lower), 7);
    return V8(vreinterpretq_u8_s8(vrshrn_high_n_s16(first, Weighted<weights>(upper), 7)));
}

/// With the upper half where it is, but twice the registers for weights.
template <ChannelWeights weights>
HWY_INLINE V8 WeightedBytes(ThreeChannels v) {
    return WeightedBytes<weights>(LowerHalf(v), UpperColours(v));
}

template <ChannelWeights weights>
HWY_INLINE hn::Vec<HalfTag8> WeightedBytes(PixelHalf p) {
    return hn::Vec<HalfTag8>(WeightedBytesOf<weights>(p));
}

HWY_INLINE PixelHalf LowerColours(ThreeChannels v) {
    return LowerHalf(v);
}

template <ChannelWeights weights, class Pixels>
HWY_INLINE V16 SumModulo(Pixels p) {
    return V16(SumOf<weights>(p));
}

/// The bytes of two sums, in pairs.
template <ChannelWeights first, ChannelWeights second>
HWY_INLINE V8 WeightedPairs(PixelHalf p) {
    auto const bytes = [](uint8x8_t half) HWY_ATTR { return vcombine_u8(half, vdup_n_u8(0)); };
    return V8(vzip1q_u8(bytes(WeightedBytesOf<first>(p)), bytes(WeightedBytesOf<second>(p))));
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
