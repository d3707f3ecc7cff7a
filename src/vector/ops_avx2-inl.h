// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h whose code is AVX2's own.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

HWY_INLINE V8 Permute(V8 v, V8 places) {
    return hn::TableLookupBytes(v, places);
}

HWY_INLINE hn::Vec<WindowTag> PermuteWindow(hn::Vec<WindowTag> v, hn::Vec<WindowTag> places) {
    return hn::TableLookupBytes(v, places);
}

/// Half a block's bytes, where `Permute` reaches them from both lanes.
HWY_INLINE V8 LoadHalf(std::uint8_t const* p) {
    return hn::LoadDup128(Tag8(), p);
}

template <int residue>
HWY_INLINE V8 BlendResidue(V8 a, V8 b) {
    alignas(32) static constexpr ByteTable select = [] {
        ByteTable table{};
        for (std::size_t j = 0; j < blockBytes; ++j) {
            table[j] = j % permutePeriod % 3 == residue ? 0xff : 0;
        }
        return table;
    }();
    return V8{_mm256_blendv_epi8(a.raw, b.raw, hn::Load(Tag8(), select.data()).raw)};
}

HWY_INLINE V8 LoadPeriods(std::uint8_t const* p) {
    HalfTag8 const half;
    return hn::Combine(Tag8(), hn::LoadU(half, p + 15), hn::LoadU(half, p));
}

HWY_INLINE void StorePeriods(std::uint8_t* p, V8 v) {
    HalfTag8 const half;
    hn::StoreU(hn::LowerHalf(half, v), half, p);
    hn::StoreU(hn::UpperHalf(half, v), half, p + 15);
}

HWY_INLINE ThreeChannels LoadPacked(std::uint8_t const* p) {
    auto const lanes = [](std::uint8_t const* at) HWY_ATTR {
        HalfTag8 const half;
        return hn::Combine(Tag8(), hn::LoadU(half, at + 48), hn::LoadU(half, at));
    };
    return {lanes(p), lanes(p + 16), lanes(p + 32)};
}

HWY_INLINE void StorePacked(std::uint8_t* p, ThreeChannels v) {
    Tag8 const d;
    hn::StoreU(hn::ConcatLowerLower(d, v.c1, v.c0), d, p);
    hn::StoreU(V8{_mm256_permute2x128_si256(v.c2.raw, v.c0.raw, 0x30)}, d, p + 32);
    hn::StoreU(hn::ConcatUpperUpper(d, v.c2, v.c1), d, p + 64);
}

HWY_INLINE V8 PackUnsigned(V16 lower, V16 upper) {
    return V8{_mm256_packus_epi16(lower.raw, upper.raw)};
}

HWY_INLINE V8 PackSigned(V16 lower, V16 upper) {
    return V8{_mm256_packs_epi16(lower.raw, upper.raw)};
}

/// The words whose index in a lane leaves `residue` by 3 are those of b.
template <int residue>
HWY_INLINE V8 BlendWords(V8 a, V8 b) {
    return V8{_mm256_blend_epi16(a.raw, b.raw, 0x49 << residue & 0xff)};
}

/// Pairs of bytes j and 8 + j of a lane, each third of the words that `BlendWords` puts together.
constexpr ByteTable pairPlaces(std::size_t third) {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes / 2; ++j) {
        std::size_t const word = j / 8 * 8 + (3 * j + third) % 8;
        table[2 * word] = static_cast<std::uint8_t>(j % 8);
        table[2 * word + 1] = static_cast<std::uint8_t>(8 + j % 8);
    }
    return table;
}

/// Two pixels are three words: blue and green, red and blue, green and red. Blends of words are
/// cheaper than those of bytes.
HWY_INLINE void StoreThreePixels(std::uint8_t* p, ThreeWords even, ThreeWords odd) {
    alignas(32) static constexpr std::array<ByteTable, 3> places{pairPlaces(0), pairPlaces(1),
                                                                 pairPlaces(2)};
    auto const pairs = [](V16 first, V16 second, std::size_t third) HWY_ATTR {
        return Permute(PackUnsigned(first, second), hn::Load(Tag8(), places[third].data()));
    };
    V8 const w0 = pairs(even.c0, even.c1, 0);
    V8 const w1 = pairs(even.c2, odd.c0, 1);
    V8 const w2 = pairs(odd.c1, odd.c2, 2);
    StorePacked(p,
                {BlendWords<2>(BlendWords<1>(w0, w1), w2), BlendWords<0>(BlendWords<2>(w0, w1), w2),
                 BlendWords<1>(BlendWords<0>(w0, w1), w2)});
}

HWY_INLINE TwoChannels LoadTwo(std::uint8_t const* p) {
    auto const evenThenOdd = [](std::uint8_t const* at) HWY_ATTR {
        HalfTag8 const half;
        __m256i const places = _mm256_broadcastsi128_si256(
            _mm_setr_epi8(0, 2, 4, 6, 8, 10, 12, 14, 1, 3, 5, 7, 9, 11, 13, 15));
        return Permute(hn::Combine(Tag8(), hn::LoadU(half, at + 32), hn::LoadU(half, at)),
                       V8{places});
    };
    V8 const lower = evenThenOdd(p);
    V8 const upper = evenThenOdd(p + 16);
    return {V8{_mm256_unpacklo_epi64(lower.raw, upper.raw)},
            V8{_mm256_unpackhi_epi64(lower.raw, upper.raw)}};
}

/// The low bytes of numbers from 0 to 255.
HWY_INLINE V8 BytesOfFour(V32 a, V32 b, V32 c, V32 d) {
    __m256i const ab = _mm256_packs_epi32(a.raw, b.raw);
    __m256i const cd = _mm256_packs_epi32(c.raw, d.raw);
    __m256i const order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
    return V8{_mm256_permutevar8x32_epi32(_mm256_packus_epi16(ab, cd), order)};
}

HWY_INLINE V32 Truncate(VF v) {
    return V32{_mm256_cvttps_epi32(v.raw)};
}

HWY_INLINE V16 AddWhereGreater(V16 sum, V16 a, V16 b) {
    return V16{_mm256_sub_epi16(sum.raw, _mm256_cmpgt_epi16(a.raw, b.raw))};
}

HWY_INLINE V16 MulAddBytes(V8 unsigned_bytes, V8 signed_bytes) {
    return V16{_mm256_maddubs_epi16(unsigned_bytes.raw, signed_bytes.raw)};
}

HWY_INLINE hn::Vec<WindowTag16> MulAddWindowPairs(hn::Vec<WindowTag> bytes,
                                                  hn::Vec<WindowTag> weights) {
    return {_mm_maddubs_epi16(bytes.raw, weights.raw)};
}

HWY_INLINE hn::Vec<Tag16> MulAddWindowPairs(V8 bytes, V8 weights) {
    return hn::Vec<Tag16>{_mm256_maddubs_epi16(bytes.raw, weights.raw)};
}

HWY_INLINE hn::Vec<WindowTagS32> MulAddWords(hn::Vec<WindowTag> words, hn::Vec<WindowTag> weights) {
    return {_mm_madd_epi16(words.raw, weights.raw)};
}

HWY_INLINE V32 AddWordProducts(V32 sums, V16 words, V16 weights) {
    return hn::Add(sums, V32{_mm256_madd_epi16(words.raw, weights.raw)});
}

/// The word of a window whose product is part `k` of a lane, for:
HWY_INLINE constexpr std::size_t WordPlace(std::size_t lane, std::size_t k) {
    return 2 * lane + k;
}

HWY_INLINE V32 AddPairProducts(V32 sums, V8 words, V8 weights) {
    return hn::Add(sums, V32{_mm256_madd_epi16(words.raw, weights.raw)});
}

HWY_INLINE V32 AddPairs(V32 a, V32 b) {
    return V32{_mm256_hadd_epi32(a.raw, b.raw)};
}

HWY_INLINE V32 AddHalves(V32 a, V32 b) {
    return V32{
        _mm256_add_epi32(_mm256_unpacklo_epi64(a.raw, b.raw), _mm256_unpackhi_epi64(a.raw, b.raw))};
}

/// Of the upper halves of lanes.
template <int shift>
HWY_INLINE __m256i UpperMeans(V32 a, V32 b) {
    __m256i const words =
        _mm256_packs_epi32(_mm256_srai_epi32(a.raw, 16), _mm256_srai_epi32(b.raw, 16));
    return _mm256_add_epi16(words, _mm256_set1_epi16(1 << (shift - 17)));
}

template <int shift, bool clamps>
HWY_INLINE V8 PackMeans(V32 a, V32 b, V32 c, V32 d) {
    auto const mean = [](__m256i words) HWY_ATTR {
        return clamps ? _mm256_srai_epi16(words, shift - 16)
                      : _mm256_srli_epi16(_mm256_slli_epi16(words, 24 - shift), 8);
    };
    return V8{_mm256_packus_epi16(mean(UpperMeans<shift>(a, b)), mean(UpperMeans<shift>(c, d)))};
}

HWY_INLINE V8 PackSums(V32 a, V32 b, V32 c, V32 d) {
    return V8{
        _mm256_packus_epi16(_mm256_packs_epi32(a.raw, b.raw), _mm256_packs_epi32(c.raw, d.raw))};
}

HWY_INLINE void StoreThreeOfFour(std::uint8_t* p, V8 v) {
    __m256i const places = _mm256_broadcastsi128_si256(
        _mm_setr_epi8(0, 1, 2, 4, 5, 6, 8, 9, 10, 12, 13, 14, -1, -1, -1, -1));
    __m256i const order = _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7);
    __m256i const packed = _mm256_permutevar8x32_epi32(_mm256_shuffle_epi8(v.raw, places), order);
    HalfTag8 const half;
    hn::StoreU(hn::Vec<HalfTag8>{_mm256_castsi256_si128(packed)}, half, p);
    hn::StoreU(hn::LowerHalf(hn::Vec<HalfTag8>{_mm256_extracti128_si256(packed, 1)}),
               hn::Half<HalfTag8>(), p + 16);
}

// Highway 1.0.3 takes lanes of 32 bits to bytes through unsigned words whose bit 15 it clears, in
// registers of 32 and 64 bytes: numbers from 32768 to 33022 lose 32768 instead of becoming 255.
// `DemoteTo` to words, and from words to bytes, is right everywhere. Straight to bytes is for lanes
// that can't be that large.
HWY_INLINE void StoreLaneBytes(V32 v, std::uint8_t* p) {
    hn::Rebind<std::uint8_t, BlockTagS32> const d;
    hn::Rebind<std::int16_t, BlockTagS32> const words;
    hn::StoreU(hn::DemoteTo(d, hn::DemoteTo(words, v)), d, p);
}

/// Numbers from 2^31 on have a low byte of 0, as has what they are converted to; from 2^32 on it is
/// 255.
HWY_INLINE V32 LowBytesOf(VF v) {
    __m256i const numbers = _mm256_cvttps_epi32(_mm256_max_ps(v.raw, _mm256_setzero_ps()));
    __m256 const saturates = _mm256_cmp_ps(v.raw, _mm256_set1_ps(4294967296.0F), _CMP_GE_OQ);
    return V32{_mm256_and_si256(_mm256_or_si256(numbers, _mm256_castps_si256(saturates)),
                                _mm256_set1_epi32(0xff))};
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
