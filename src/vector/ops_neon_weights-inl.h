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

/// A factor that the compiler, which would shift and subtract instead, can't see into.
template <int factor>
HWY_INLINE int16x8_t FactorWords() {
    int16x8_t words = vdupq_n_s16(factor);
    asm("" : "+w"(words));
    return words;
}

constexpr int totalOf(ChannelWeights weights) {
    return weights.b + weights.g + weights.r;
}

/// Whether a sum is one of blue's and of red's excess over green, and of green itself at most. Of
/// two factors instead of three, it takes fewer products and registers.
constexpr bool isOfExcesses(ChannelWeights weights) {
    return totalOf(weights) == 0 || totalOf(weights) == 1;
}

/// As `splitWeights`, but the high parts add up to 0.
constexpr SplitWeights splitExcesses(ChannelWeights weights) {
    SplitWeights split = splitWeights(weights);
    split.high.g = -split.high.b - split.high.r;
    split.low.g = weights.g - 128 * split.high.g;
    return split;
}

template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t SumOfExcesses(Pixels p) {
    int16x8_t const blue = vmulq_s16(Excess(p.b, p.g), FactorWords<weights.b>());
    int16x8_t const sum = vmlaq_s16(blue, Excess(p.r, p.g), FactorWords<weights.r>());
    if constexpr (totalOf(weights) == 0) {
        return sum;
    } else {
        return AddChannel(sum, p.g);
    }
}

/// With 7 fractional bits.
template <ChannelWeights weights, class Pixels>
HWY_INLINE int16x8_t Weighted(Pixels p) {
    if constexpr (isOfExcesses(weights)) {
        constexpr SplitWeights split = splitExcesses(weights);
        int16x8_t const low = SumOfExcesses<split.low>(p);
        return vsraq_n_s16(SumOfExcesses<split.high>(p), low, 7);
    } else {
        constexpr SplitWeights split = splitWeights(weights);
        // In this order the compiler copies no channel.
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

// With factors of 256 * high + low, H the sum over the high parts and L over the low parts,
//   (sum + 2^(shift - 1)) >> shift  =  (H + (L >> 8) + 2^(shift - 9)) >> (shift - 8)
// exactly, and all sums fit 16 bits.

/// The factors of luma, less its zero, and of chroma, less 128.
struct YuvFactors {
    int y;
    int u;
    int v;
    int luma_zero;
};

struct SplitYuv {
    YuvFactors high;
    YuvFactors low;
};

/// The high part of the nearest multiple of 256, so that the low part fits a signed byte.
constexpr SplitYuv splitYuv(YuvFactors factors) {
    auto const high = [](int factor) { return (factor + 128) >> 8; };
    auto const low = [=](int factor) { return factor - 256 * high(factor); };
    return {{high(factors.y), high(factors.u), high(factors.v), factors.luma_zero},
            {low(factors.y), low(factors.u), low(factors.v), factors.luma_zero}};
}

constexpr bool fitsSixteenBits(YuvFactors factors) {
    auto const magnitude = [](int factor) { return factor < 0 ? -factor : factor; };
    int const chroma = 128 * (magnitude(factors.u) + magnitude(factors.v));
    constexpr int carry = 128;
    return (255 - factors.luma_zero) * magnitude(factors.y) + chroma + carry <= 32767;
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

template <YuvFactors factors, class Half>
HWY_INLINE int16x8_t PartOfYuv(Half half) {
    static_assert(fitsSixteenBits(factors));
    int16x8_t const luma = vmulq_s16(half.y.raw, FactorWords<factors.y>());
    if constexpr (factors.u == 0) {
        return AddSignedProducts<factors.v>(luma, half.v);
    } else {
        // Luma's product stays for the other channels: it would have to be copied to be added to.
        int16x8_t const chroma = SignedProducts<factors.u>(half.u);
        if constexpr (factors.v == 0) {
            return vaddq_s16(luma, chroma);
        } else {
            return vaddq_s16(luma, AddSignedProducts<factors.v>(chroma, half.v));
        }
    }
}

/// With 8 fractional bits less than the factors.
template <YuvFactors factors, class Half>
HWY_INLINE int16x8_t SumOfYuv(Half half) {
    constexpr SplitYuv split = splitYuv(factors);
    int16x8_t const low = PartOfYuv<split.low>(half);
    return vsraq_n_s16(PartOfYuv<split.high>(half), low, 8);
}

template <YuvFactors factors, int shift>
HWY_INLINE V8 WeightedYuv(V8 y_byte, V8 u_byte, V8 v_byte) {
    TwoWords const y = Differences<factors.luma_zero>(y_byte);
    uint8x16_t const zeros = vdupq_n_u8(128);
    int8x16_t const u = vreinterpretq_s8_u8(veorq_u8(u_byte.raw, zeros));
    int8x16_t const v = vreinterpretq_s8_u8(veorq_u8(v_byte.raw, zeros));
    int16x8_t const lower =
        SumOfYuv<factors>(YuvHalf<int8x8_t>{y.lower, vget_low_s8(u), vget_low_s8(v)});
    int16x8_t const upper = SumOfYuv<factors>(YuvHalf<UpperSigned>{y.upper, {u}, {v}});
    // The second half's bytes by themselves, because the compiler copies what it adds them to.
    auto const bytes = [](int16x8_t sums) HWY_ATTR {
        return vreinterpretq_u64_u8(vcombine_u8(vqrshrun_n_s16(sums, shift - 8), vdup_n_u8(0)));
    };
    return V8(vreinterpretq_u8_u64(vzip1q_u64(bytes(lower), bytes(upper))));
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
