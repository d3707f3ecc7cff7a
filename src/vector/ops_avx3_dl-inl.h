// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h whose code is AVX3_DL's own.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

HWY_INLINE V8 Permute(V8 v, V8 places) {
    return V8{_mm512_permutexvar_epi8(places.raw, v.raw)};
}

HWY_INLINE V8 PermuteWindow(V8 v, V8 places) {
    return Permute(v, places);
}

HWY_INLINE V8 PermuteTwoWindows(V8 lower, V8 upper, V8 places) {
    return V8{_mm512_permutex2var_epi8(lower.raw, places.raw, upper.raw)};
}

HWY_INLINE VF PermuteTwo(VF lower, VF upper, V32 places) {
    return VF{_mm512_permutex2var_ps(lower.raw, places.raw, upper.raw)};
}

/// A byte for each byte.
struct AllBytes {
    V8 quarter[4];
};

HWY_INLINE AllBytes LoadAll(std::uint8_t const* p) {
    Tag8 const d;
    return {{hn::LoadU(d, p), hn::LoadU(d, p + 64), hn::LoadU(d, p + 128), hn::LoadU(d, p + 192)}};
}

HWY_INLINE V8 LookUp(AllBytes const& all, V8 places) {
    V8 const* const q = all.quarter;
    __m512i const lower = _mm512_permutex2var_epi8(q[0].raw, places.raw, q[1].raw);
    __m512i const upper = _mm512_permutex2var_epi8(q[2].raw, places.raw, q[3].raw);
    return V8{_mm512_mask_blend_epi8(_mm512_movepi8_mask(places.raw), lower, upper)};
}

HWY_INLINE V8 LoadHalf(std::uint8_t const* p) {
    HalfTag8 const half;
    return hn::ZeroExtendVector(Tag8(), hn::LoadU(half, p));
}

template <int residue>
HWY_INLINE V8 BlendResidue(V8 a, V8 b) {
    return V8{_mm512_mask_blend_epi8(0x9249249249249249U << residue, a.raw, b.raw)};
}

HWY_INLINE V8 LoadPeriods(std::uint8_t const* p) {
    return hn::LoadU(Tag8(), p);
}

HWY_INLINE void StorePeriods(std::uint8_t* p, V8 v) {
    hn::StoreU(v, Tag8(), p);
}

HWY_INLINE ThreeChannels LoadPacked(std::uint8_t const* p) {
    Tag8 const d;
    return {hn::LoadU(d, p), hn::LoadU(d, p + 64), hn::LoadU(d, p + 128)};
}

HWY_INLINE void StorePacked(std::uint8_t* p, ThreeChannels v) {
    Tag8 const d;
    hn::StoreU(v.c0, d, p);
    hn::StoreU(v.c1, d, p + 64);
    hn::StoreU(v.c2, d, p + 128);
}

HWY_INLINE V8 PackUnsigned(V16 lower, V16 upper) {
    return V8{_mm512_packus_epi16(lower.raw, upper.raw)};
}

HWY_INLINE V8 PackSigned(V16 lower, V16 upper) {
    return V8{_mm512_packs_epi16(lower.raw, upper.raw)};
}

/// The low bytes of numbers from 0 to 255.
HWY_INLINE V8 BytesOfFour(V32 a, V32 b, V32 c, V32 d) {
    __m512i const ab = _mm512_packs_epi32(a.raw, b.raw);
    __m512i const cd = _mm512_packs_epi32(c.raw, d.raw);
    __m512i const order = _mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15);
    return V8{_mm512_permutexvar_epi32(order, _mm512_packus_epi16(ab, cd))};
}

HWY_INLINE V32 Truncate(VF v) {
    return V32{_mm512_cvttps_epi32(v.raw)};
}

HWY_INLINE V16 AddWhereGreater(V16 sum, V16 a, V16 b) {
    return V16{_mm512_mask_add_epi16(sum.raw, _mm512_cmpgt_epi16_mask(a.raw, b.raw), sum.raw,
                                     _mm512_set1_epi16(1))};
}

HWY_INLINE V16 MulAddBytes(V8 unsigned_bytes, V8 signed_bytes) {
    return V16{_mm512_maddubs_epi16(unsigned_bytes.raw, signed_bytes.raw)};
}

HWY_INLINE hn::Vec<WindowTag16> MulAddWindowPairs(V8 bytes, V8 weights) {
    return {_mm512_maddubs_epi16(bytes.raw, weights.raw)};
}

HWY_INLINE V32 MulAddWords(V8 words, V8 weights) {
    return V32{_mm512_madd_epi16(words.raw, weights.raw)};
}

HWY_INLINE V32 AddByteProducts(V32 sums, V8 unsigned_bytes, V8 signed_bytes) {
    return V32{_mm512_dpbusd_epi32(sums.raw, unsigned_bytes.raw, signed_bytes.raw)};
}

HWY_INLINE V32 AddWordProducts(V32 sums, V16 words, V16 weights) {
    return V32{_mm512_dpwssd_epi32(sums.raw, words.raw, weights.raw)};
}

HWY_INLINE V32 AddPairs(V32 a, V32 b) {
    BlockTagS32 const d;
    return hn::Add(hn::ConcatEven(d, b, a), hn::ConcatOdd(d, b, a));
}

HWY_INLINE void StoreLaneBytes(V32 v, std::uint8_t* p) {
    hn::Rebind<std::uint8_t, BlockTagS32> const d;
    V32 const positive = hn::Max(v, hn::Zero(BlockTagS32()));
    hn::StoreU(hn::Vec<decltype(d)>{_mm512_cvtusepi32_epi8(positive.raw)}, d, p);
}

HWY_INLINE void StoreThreeLanes(V32 v, std::uint8_t* p) {
    V32 const positive = hn::Max(v, hn::Zero(BlockTagS32()));
    __m128i const places = _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1);
    __m128i const packed = _mm_shuffle_epi8(_mm512_cvtusepi32_epi8(positive.raw), places);
    _mm_mask_storeu_epi8(p, 0xfff, packed);
}

HWY_INLINE V32 LowBytesOf(VF v) {
    auto const positive = _mm512_cmp_ps_mask(v.raw, _mm512_setzero_ps(), _CMP_GT_OQ);
    return V32{
        _mm512_and_si512(_mm512_maskz_cvttps_epu32(positive, v.raw), _mm512_set1_epi32(0xff))};
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
