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

/// What a channel has more than another one.
HWY_INLINE int16x8_t Excess(uint8x8_t channel, uint8x8_t other) {
    return vreinterpretq_s16_u16(vsubl_u8(channel, other));
}

HWY_INLINE int16x8_t Excess(UpperBytes channel, UpperBytes other) {
    return vreinterpretq_s16_u16(vsubl_high_u8(channel.block, other.block));
}

HWY_INLINE int16x8_t AddChannel(int16x8_t sum, uint8x8_t channel) {
    return vreinterpretq_s16_u16(vaddw_u8(vreinterpretq_u16_s16(sum), channel));
}

HWY_INLINE int16x8_t AddChannel(int16x8_t sum, UpperBytes channel) {
    return vreinterpretq_s16_u16(vaddw_high_u8(vreinterpretq_u16_s16(sum), channel.block));
}

/// The compiler, which would shift and subtract, can't see into it.
template <int factor>
HWY_INLINE int16x8_t FactorWords() {
    int16x8_t words = vdupq_n_s16(factor);
    asm("" : "+w"(words));
    return words;
}

constexpr int totalOf(ChannelWeights weights) {
    return weights.b + weights.g + weights.r;
}

/// As `splitWeights`, with a total of 0 of the high parts.
constexpr SplitWeights splitExcesses(ChannelWeights weights) {
    SplitWeights split = splitWeights(weights);
    split.high.g = -split.high.b - split.high.r;
    split.low.g = weights.g - 128 * split.high.g;
    return split;
}

/// The sum is one of blue's and red's excess over green, and of green itself at most.
template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t SumOfExcesses(Pixels p) {
    int16x8_t const blue = vmulq_s16(Excess(p.b, p.g), FactorWords<weights.b>());
    int16x8_t const sum = vmlaq_s16(blue, Excess(p.r, p.g), FactorWords<weights.r>());
    if constexpr (totalOf(weights) == 0) {
        return sum;
    } else {
        static_assert(totalOf(weights) == 1);
        return AddChannel(sum, p.g);
    }
}

/// With 7 fractional bits.
template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t Weighted(Pixels p) {
    if constexpr (totalOf(weights) == 0 || totalOf(weights) == 1) {
        constexpr SplitWeights split = splitExcesses(weights);
        int16x8_t const low = SumOfExcesses<split.low>(p);
        return vsraq_n_s16(SumOfExcesses<split.high>(p), low, 7);
    } else {
        constexpr SplitWeights split = splitWeights(weights);
        int16x8_t const low = SumOf<split.low>(p);
        return vsraq_n_s16(SumOf<split.high>(p), low, 7);
    }
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

struct YuvFactors {
    int y;
    int u;
    int v;
    int luma_zero;
};

/// A factor as 256 * high + low.
struct SplitFactor {
    int high;
    int low;
};

constexpr SplitFactor splitFactor(int factor) {
    int const high = (factor + 128) >> 8;
    return {high, factor - 256 * high};
}

template <int factor>
HWY_INLINE int8x16_t FactorBytes() {
    return vreinterpretq_s8_u8(WeightBytes<factor & 0xff>());
}

template <int factor>
HWY_INLINE int16x8_t SignedProducts(int8x8_t v) {
    return vmull_s8(v, vget_low_s8(FactorBytes<factor>()));
}

template <int factor>
HWY_INLINE int16x8_t AddSignedProducts(int16x8_t sums, int8x8_t v) {
    return vmlal_s8(sums, v, vget_low_s8(FactorBytes<factor>()));
}

/// Bytes of the upper half of a block, where they are.
struct UpperSigned {
    int8x16_t block;
};

template <int factor>
HWY_INLINE int16x8_t SignedProducts(UpperSigned v) {
    return vmull_high_s8(v.block, FactorBytes<factor>());
}

template <int factor>
HWY_INLINE int16x8_t AddSignedProducts(int16x8_t sums, UpperSigned v) {
    return vmlal_high_s8(sums, v.block, FactorBytes<factor>());
}

/// Half a block, ready to be weighted: luma less its zero, and signed chroma.
template <class Bytes>
struct YuvHalf {
    V16 y;
    Bytes u;
    Bytes v;
};

template <int of_y, int of_u, int of_v, class Half>
HWY_INLINE int16x8_t PartialYuv(Half half) {
    int16x8_t const luma = vmulq_s16(half.y.raw, FactorWords<of_y>());
    if constexpr (of_u == 0) {
        return AddSignedProducts<of_v>(luma, half.v);
    } else {
        int16x8_t const of_blue = SignedProducts<of_u>(half.u);
        if constexpr (of_v == 0) {
            return vaddq_s16(luma, of_blue);
        } else {
            return vaddq_s16(luma, AddSignedProducts<of_v>(of_blue, half.v));
        }
    }
}

/// With the fractional bits of the factors less 8.
template <YuvFactors factors, class Half>
HWY_INLINE int16x8_t YuvSum(Half half) {
    constexpr SplitFactor y = splitFactor(factors.y);
    constexpr SplitFactor u = splitFactor(factors.u);
    constexpr SplitFactor v = splitFactor(factors.v);
    int16x8_t const low = PartialYuv<y.low, u.low, v.low>(half);
    return vsraq_n_s16(PartialYuv<y.high, u.high, v.high>(half), low, 8);
}

template <YuvFactors factors, int shift>
HWY_INLINE V8 WeightedYuv(V8 y_byte, V8 u_byte, V8 v_byte) {
    TwoWords const y = Differences<factors.luma_zero>(y_byte);
    uint8x16_t const zeros = vdupq_n_u8(128);
    int8x16_t const u = vreinterpretq_s8_u8(veorq_u8(u_byte.raw, zeros));
    int8x16_t const v = vreinterpretq_s8_u8(veorq_u8(v_byte.raw, zeros));
    int16x8_t const lower =
        YuvSum<factors>(YuvHalf<int8x8_t>{y.lower, vget_low_s8(u), vget_low_s8(v)});
    int16x8_t const upper = YuvSum<factors>(YuvHalf<UpperSigned>{y.upper, {u}, {v}});
    auto const bytes = [](int16x8_t sums) HWY_ATTR {
        return vreinterpretq_u64_u8(vcombine_u8(vqrshrun_n_s16(sums, shift - 8), vdup_n_u8(0)));
    };
    return V8(vreinterpretq_u8_u64(vzip1q_u64(bytes(lower), bytes(upper))));
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
