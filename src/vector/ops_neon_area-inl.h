// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h on NEON that only area resizing needs.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

HWY_INLINE void StoreSums(FourSums sums, std::int32_t* p) {
    vst1q_s32(p, sums.s0);
    vst1q_s32(p + 4, sums.s1);
    vst1q_s32(p + 8, sums.s2);
    vst1q_s32(p + 12, sums.s3);
}

HWY_INLINE V32 AddHalves(V32 a, V32 b) {
    int64x2_t const x = vreinterpretq_s64_s32(a.raw);
    int64x2_t const y = vreinterpretq_s64_s32(b.raw);
    return V32(vaddq_s32(vreinterpretq_s32_s64(vzip1q_s64(x, y)),
                         vreinterpretq_s32_s64(vzip2q_s64(x, y))));
}

/// Sums of three interleaved channels.
struct ThreeSums {
    V32 c0;
    V32 c1;
    V32 c2;
};

HWY_INLINE ThreeSums WeighThree(std::int32_t const* p, V32 weights) {
    int32x4x3_t const v = vld3q_s32(p);
    return {V32(vmulq_s32(v.val[0], weights.raw)), V32(vmulq_s32(v.val[1], weights.raw)),
            V32(vmulq_s32(v.val[2], weights.raw))};
}

/// Of the upper halves of lanes.
template <int shift>
HWY_INLINE int16x8_t UpperMeans(V32 a, V32 b) {
    int16x8_t const words = vuzp2q_s16(vreinterpretq_s16_s32(a.raw), vreinterpretq_s16_s32(b.raw));
    return vaddq_s16(words, vdupq_n_s16(1 << (shift - 17)));
}

template <int shift, bool clamps>
HWY_INLINE V8 PackMeans(V32 a, V32 b, V32 c, V32 d) {
    int16x8_t const lower = UpperMeans<shift>(a, b);
    int16x8_t const upper = UpperMeans<shift>(c, d);
    constexpr int rest = shift - 16;
    if constexpr (clamps) {
        return V8(vqshrun_high_n_s16(vqshrun_n_s16(lower, rest), upper, rest));
    } else {
        return V8(vshrn_high_n_u16(vshrn_n_u16(vreinterpretq_u16_s16(lower), rest),
                                   vreinterpretq_u16_s16(upper), rest));
    }
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
