// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h on NEON.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

HWY_INLINE ThreeChannels LoadThree(std::uint8_t const* p) {
    uint8x16x3_t const v = vld3q_u8(p);
    return {V8(v.val[0]), V8(v.val[1]), V8(v.val[2])};
}

HWY_INLINE void StoreThree(std::uint8_t* p, ThreeChannels v) {
    vst3q_u8(p, {v.c0.raw, v.c1.raw, v.c2.raw});
}

HWY_INLINE void StoreThreeSame(std::uint8_t* p, V8 v) {
    StoreThree(p, {v, v, v});
}

HWY_INLINE void StoreThreePixels(std::uint8_t* p, ThreeWords even, ThreeWords odd) {
    auto const pack = [](V16 first, V16 second) {
        return V8(vzip1q_u8(vcombine_u8(vqmovun_s16(first.raw), vdup_n_u8(0)),
                            vcombine_u8(vqmovun_s16(second.raw), vdup_n_u8(0))));
    };
    StoreThree(p, {pack(even.c0, odd.c0), pack(even.c1, odd.c1), pack(even.c2, odd.c2)});
}

HWY_INLINE TwoChannels LoadTwo(std::uint8_t const* p) {
    uint8x16x2_t const v = vld2q_u8(p);
    return {V8(v.val[0]), V8(v.val[1])};
}

/// Of the first and of the second half of bytes.
struct TwoWords {
    V16 lower;
    V16 upper;
};

/// v - zero
template <int zero>
HWY_INLINE TwoWords Differences(V8 v) {
    uint8x16_t const zeros = vdupq_n_u8(zero);
    return {V16(vreinterpretq_s16_u16(vsubl_u8(vget_low_u8(v.raw), vget_low_u8(zeros)))),
            V16(vreinterpretq_s16_u16(vsubl_high_u8(v.raw, zeros)))};
}

HWY_INLINE V8 PackWords(V16 lower, V16 upper) {
    return V8(vqmovun_high_s16(vqmovun_s16(lower.raw), upper.raw));
}

/// Of the first and of the second half of words.
struct WideSums {
    int32x4_t lower;
    int32x4_t upper;
};

/// floor(v * factor / 2^13), for |v| <= 256.
HWY_INLINE V16 MulShift13(V16 v, std::int16_t factor) {
    return V16(vqdmulhq_n_s16(vshlq_n_s16(v.raw, 2), factor));
}

HWY_INLINE WideSums WideProducts(V16 v, std::int16_t factor) {
    return {vmull_n_s16(vget_low_s16(v.raw), factor), vmull_high_n_s16(v.raw, factor)};
}

HWY_INLINE WideSums AddWideProducts(WideSums sums, V16 v, std::int16_t factor) {
    return {vmlal_n_s16(sums.lower, vget_low_s16(v.raw), factor),
            vmlal_high_n_s16(sums.upper, v.raw, factor)};
}

HWY_INLINE V16 RoundedHighWords(WideSums a, WideSums b) {
    return V16(vraddhn_high_s32(vraddhn_s32(a.lower, b.lower), a.upper, b.upper));
}

HWY_INLINE V16 AddWhereGreater(V16 sum, V16 a, V16 b) {
    return V16(vsubq_s16(sum.raw, vreinterpretq_s16_u16(vcgtq_s16(a.raw, b.raw))));
}

HWY_INLINE V8 LowBytesOf(uint32x4_t a, uint32x4_t b, uint32x4_t c, uint32x4_t d) {
    auto const words = [](uint32x4_t first, uint32x4_t second) HWY_ATTR {
        return vreinterpretq_u8_u16(
            vuzp1q_u16(vreinterpretq_u16_u32(first), vreinterpretq_u16_u32(second)));
    };
    return V8(vuzp1q_u8(words(a, b), words(c, d)));
}

/// The conversion saturates, and takes NaN to 0.
HWY_INLINE V8 LowBytesOfFour(VF a, VF b, VF c, VF d) {
    return LowBytesOf(vcvtq_u32_f32(a.raw), vcvtq_u32_f32(b.raw), vcvtq_u32_f32(c.raw),
                      vcvtq_u32_f32(d.raw));
}

/// The conversions to 24 fractional bits saturate, and take NaN to 0: the high bytes remain.
HWY_INLINE V8 SaturateFour(VF a, VF b, VF c, VF d) {
    auto const words = [](VF first, VF second) HWY_ATTR {
        return vreinterpretq_u8_u16(
            vuzp2q_u16(vreinterpretq_u16_u32(vcvtq_n_u32_f32(first.raw, 24)),
                       vreinterpretq_u16_u32(vcvtq_n_u32_f32(second.raw, 24))));
    };
    return V8(vuzp2q_u8(words(a, b), words(c, d)));
}

HWY_INLINE hn::Vec<WindowTag> PermuteWindow(hn::Vec<WindowTag> v, hn::Vec<WindowTag> places) {
    return hn::Vec<WindowTag>(vqtbl1q_u8(v.raw, places.raw));
}

HWY_INLINE V8 PermuteTwoWindows(V8 lower, V8 upper, V8 places) {
    return V8(vqtbl2q_u8({lower.raw, upper.raw}, places.raw));
}

HWY_INLINE hn::Vec<WindowTagS32> MulAddWords(hn::Vec<WindowTag> words, hn::Vec<WindowTag> weights) {
    int16x8_t const a = vreinterpretq_s16_u8(words.raw);
    int16x8_t const b = vreinterpretq_s16_u8(weights.raw);
    return hn::Vec<WindowTagS32>(
        vpaddq_s32(vmull_s16(vget_low_s16(a), vget_low_s16(b)), vmull_high_s16(a, b)));
}

HWY_INLINE hn::Vec<WindowTag16> MulAddWindowPairs(hn::Vec<WindowTag> bytes,
                                                  hn::Vec<WindowTag> weights) {
    return hn::Vec<WindowTag16>(
        vpaddq_u16(vmull_u8(vget_low_u8(bytes.raw), vget_low_u8(weights.raw)),
                   vmull_high_u8(bytes.raw, weights.raw)));
}

template <int shift, class D>
HWY_INLINE V8 RoundedBytes(D /*bytes*/, hn::Vec<Tag16> lower, hn::Vec<Tag16> upper) {
    return V8(vrshrn_high_n_u16(vrshrn_n_u16(lower.raw, shift), upper.raw, shift));
}

HWY_INLINE hn::Vec<Tag16> AddThreefold(hn::Vec<Tag16> sum, hn::Vec<Tag16> v) {
    return hn::Vec<Tag16>(vmlaq_n_u16(sum.raw, v.raw, 3));
}

constexpr std::size_t doubledBytes = blockBytes;

template <std::size_t channels>
HWY_INLINE void StoreDoubled(std::uint8_t const* src, std::uint16_t* dst) {
    uint8x16_t const a = vld1q_u8(src);
    uint8x16_t const b = vld1q_u8(src + channels);
    auto const sum = [](uint8x8_t near, uint8x8_t far) HWY_ATTR {
        return vmlal_u8(vmull_u8(near, vdup_n_u8(12)), far, vdup_n_u8(4));
    };
    auto const upperSum = [](uint8x16_t near, uint8x16_t far) HWY_ATTR {
        return vmlal_high_u8(vmull_high_u8(near, vdupq_n_u8(12)), far, vdupq_n_u8(4));
    };
    using Pixel = std::conditional_t<channels == 1, std::uint16_t, std::uint32_t>;
    hn::Repartition<Pixel, Tag8> const pixels;
    Tag16 const words;
    auto const store = [=](std::uint16_t* at, uint16x8_t first, uint16x8_t second) HWY_ATTR {
        auto const left = hn::BitCast(pixels, hn::Vec<Tag16>(first));
        auto const right = hn::BitCast(pixels, hn::Vec<Tag16>(second));
        hn::StoreU(hn::BitCast(words, hn::InterleaveLower(left, right)), words, at);
        hn::StoreU(hn::BitCast(words, hn::InterleaveUpper(pixels, left, right)), words, at + 8);
    };
    store(dst, sum(vget_low_u8(a), vget_low_u8(b)), sum(vget_low_u8(b), vget_low_u8(a)));
    store(dst + blockBytes, upperSum(a, b), upperSum(b, a));
}

HWY_INLINE V8 FloorMean(V8 a, V8 b) {
    return V8(vhaddq_u8(a.raw, b.raw));
}

/// (a * (64 - weight) + b * weight) >> 6, for weights from 0 to 64.
HWY_INLINE V8 BlendBy64ths(V8 a, V8 b, std::int8_t weight) {
    uint8x16_t const second = vdupq_n_u8(static_cast<std::uint8_t>(weight));
    uint8x16_t const first = vsubq_u8(vdupq_n_u8(64), second);
    uint16x8_t const lower = vmull_u8(vget_low_u8(a.raw), vget_low_u8(first));
    uint16x8_t const upper = vmull_high_u8(a.raw, first);
    return V8(
        vshrn_high_n_u16(vshrn_n_u16(vmlal_u8(lower, vget_low_u8(b.raw), vget_low_u8(second)), 6),
                         vmlal_high_u8(upper, b.raw, second), 6));
}

using WordSums = WideSums;

HWY_INLINE WordSums NoWordSums() {
    return {vdupq_n_s32(0), vdupq_n_s32(0)};
}

HWY_INLINE WordSums AddWordProducts(WordSums sums, V16 words, V16 weights) {
    return {vmlal_s16(sums.lower, vget_low_s16(words.raw), vget_low_s16(weights.raw)),
            vmlal_high_s16(sums.upper, words.raw, weights.raw)};
}

HWY_INLINE V32 TotalOf(WordSums sums) {
    return V32(vpaddq_s32(sums.lower, sums.upper));
}

/// The word of a window whose product is part `k` of a lane, for:
HWY_INLINE constexpr std::size_t WordPlace(std::size_t lane, std::size_t k) {
    return lane + 4 * k;
}

HWY_INLINE V32 AddPairProducts(V32 sums, V8 words, V8 weights) {
    int16x8_t const a = vreinterpretq_s16_u8(words.raw);
    int16x8_t const b = vreinterpretq_s16_u8(weights.raw);
    return V32(vmlal_high_s16(vmlal_s16(sums.raw, vget_low_s16(a), vget_low_s16(b)), a, b));
}

HWY_INLINE V32 AddPairs(V32 a, V32 b) {
    return V32(vpaddq_s32(a.raw, b.raw));
}

HWY_INLINE V8 PackSums(V32 a, V32 b, V32 c, V32 d) {
    int16x8_t const lower = vqmovn_high_s32(vqmovn_s32(a.raw), b.raw);
    int16x8_t const upper = vqmovn_high_s32(vqmovn_s32(c.raw), d.raw);
    return V8(vqmovun_high_s16(vqmovun_s16(lower), upper));
}

HWY_INLINE void StoreThreeOfFour(std::uint8_t* p, V8 v) {
    static constexpr std::uint8_t places[16]{0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, 3, 3, 3, 3};
    uint8x16_t const packed = vqtbl1q_u8(v.raw, vld1q_u8(places));
    vst1_u8(p, vget_low_u8(packed));
    hn::StoreU(hn::Vec<hn::CappedTag<std::uint8_t, 4>>(vget_high_u8(packed)),
               hn::CappedTag<std::uint8_t, 4>(), p + 8);
}

HWY_INLINE void StoreLaneBytes(V32 v, std::uint8_t* p) {
    hn::Rebind<std::uint8_t, BlockTagS32> const d;
    hn::StoreU(hn::DemoteTo(d, v), d, p);
}

HWY_INLINE V8 HighBytes(V16 lower, V16 upper) {
    return V8(vuzp2q_u8(vreinterpretq_u8_s16(lower.raw), vreinterpretq_u8_s16(upper.raw)));
}

HWY_INLINE V8 HighPairs(V16 first, V16 second) {
    return V8(vtrn2q_u8(vreinterpretq_u8_s16(first.raw), vreinterpretq_u8_s16(second.raw)));
}

HWY_INLINE V16 PairSums(V8 v) {
    return V16(vreinterpretq_s16_u16(vpaddlq_u8(v.raw)));
}

HWY_INLINE V16 AddPairSums(V16 sums, V8 v) {
    return V16(vreinterpretq_s16_u16(vpadalq_u8(vreinterpretq_u16_s16(sums.raw), v.raw)));
}

struct FourSums {
    int32x4_t s0;
    int32x4_t s1;
    int32x4_t s2;
    int32x4_t s3;
};

HWY_INLINE FourSums NoFourSums() {
    int32x4_t const zero = vdupq_n_s32(0);
    return {zero, zero, zero, zero};
}

/// A block of words.
struct RowWords {
    uint16x8_t lower;
    uint16x8_t upper;
};

HWY_INLINE RowWords WidenRow(V8 row) {
    return {vmovl_u8(vget_low_u8(row.raw)), vmovl_high_u8(row.raw)};
}

HWY_INLINE RowWords AddBytes(RowWords words, V8 row) {
    return {vaddw_u8(words.lower, vget_low_u8(row.raw)), vaddw_high_u8(words.upper, row.raw)};
}

HWY_INLINE FourSums AddWords(FourSums sums, RowWords words, std::int16_t weight) {
    int16x8_t const lower = vreinterpretq_s16_u16(words.lower);
    int16x8_t const upper = vreinterpretq_s16_u16(words.upper);
    return {vmlal_n_s16(sums.s0, vget_low_s16(lower), weight),
            vmlal_high_n_s16(sums.s1, lower, weight),
            vmlal_n_s16(sums.s2, vget_low_s16(upper), weight),
            vmlal_high_n_s16(sums.s3, upper, weight)};
}

HWY_INLINE FourSums AddRow(FourSums sums, V8 row, std::int16_t weight) {
    return AddWords(sums, WidenRow(row), weight);
}

HWY_INLINE FourSums AddTwoRows(FourSums sums, V8 a, V8 b, std::int16_t weight_a,
                               std::int16_t weight_b) {
    return AddRow(AddRow(sums, a, weight_a), b, weight_b);
}

HWY_INLINE V8 BytesOf(FourSums sums, int shift) {
    int32x4_t const left = vdupq_n_s32(-shift);
    auto const words = [&](int32x4_t a, int32x4_t b) HWY_ATTR {
        return vcombine_s16(vqmovn_s32(vshlq_s32(a, left)), vqmovn_s32(vshlq_s32(b, left)));
    };
    return V8(
        vcombine_u8(vqmovun_s16(words(sums.s0, sums.s1)), vqmovun_s16(words(sums.s2, sums.s3))));
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
