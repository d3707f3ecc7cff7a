// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h that AVX2 and AVX3_DL have in common, on top of their own.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

// Three registers hold packed pixels. Byte j of register k has channel (k + j) mod 3, because 16
// and 64 leave the remainder 1 by 3. So one channel is made up of every third byte of each
// register, and no two of its pixels share a place: pixel i is at byte (3i + channel) mod period.

constexpr ByteTable gatherTable(std::size_t channel) {
    ByteTable table{};
    for (std::size_t i = 0; i < blockBytes; ++i) {
        table[i] = static_cast<std::uint8_t>((3 * i + channel) % permutePeriod);
    }
    return table;
}

/// The inverse of `gatherTable`, from the places that `placeOf` gives for the pixels.
template <class Places>
constexpr ByteTable scatterTable(std::size_t channel, Places placeOf) {
    ByteTable table{};
    for (std::size_t i = 0; i < blockBytes; ++i) {
        std::size_t const period = i / permutePeriod * permutePeriod;
        table[period + (3 * i + channel) % permutePeriod] =
            static_cast<std::uint8_t>(placeOf(i) % permutePeriod);
    }
    return table;
}

constexpr ByteTable repeatTable(std::size_t part) {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes; ++j) {
        table[j] = static_cast<std::uint8_t>((permutePeriod * part + j % permutePeriod) / 3);
    }
    return table;
}

struct alignas(64) ThreeTables {
    std::array<ByteTable, 3> table;
};

constexpr ThreeTables gatherTables{{gatherTable(0), gatherTable(1), gatherTable(2)}};

template <class Places>
constexpr ThreeTables scatterTablesFrom(Places placeOf) {
    return {{scatterTable(0, placeOf), scatterTable(1, placeOf), scatterTable(2, placeOf)}};
}

constexpr ThreeTables scatterTables = scatterTablesFrom([](std::size_t pixel) { return pixel; });
constexpr ThreeTables repeatTables{{repeatTable(0), repeatTable(1), repeatTable(2)}};

HWY_INLINE V8 Permute(V8 v, ByteTable const& table) {
    return Permute(v, hn::Load(Tag8(), table.data()));
}

HWY_INLINE ThreeChannels LoadThree(std::uint8_t const* p) {
    ThreeChannels const v = LoadPacked(p);
    V8 const c0 = BlendResidue<1>(BlendResidue<2>(v.c0, v.c1), v.c2);
    V8 const c1 = BlendResidue<2>(BlendResidue<0>(v.c0, v.c1), v.c2);
    V8 const c2 = BlendResidue<0>(BlendResidue<1>(v.c0, v.c1), v.c2);
    auto const& table = gatherTables.table;
    return {Permute(c0, table[0]), Permute(c1, table[1]), Permute(c2, table[2])};
}

HWY_INLINE void StoreThreeBy(ThreeTables const& tables, std::uint8_t* p, ThreeChannels v) {
    V8 const c0 = Permute(v.c0, tables.table[0]);
    V8 const c1 = Permute(v.c1, tables.table[1]);
    V8 const c2 = Permute(v.c2, tables.table[2]);
    StorePacked(p, {BlendResidue<2>(BlendResidue<1>(c0, c1), c2),
                    BlendResidue<1>(BlendResidue<0>(c0, c1), c2),
                    BlendResidue<0>(BlendResidue<2>(c0, c1), c2)});
}

HWY_INLINE void StoreThree(std::uint8_t* p, ThreeChannels v) {
    StoreThreeBy(scatterTables, p, v);
}

#if HWY_TARGET == HWY_AVX3_DL
/// Words of even and of odd pixels, packed: the even ones of a lane before the odd ones.
constexpr ThreeTables scatterPixelTables = scatterTablesFrom(
    [](std::size_t pixel) { return pixel / 16 * 16 + pixel % 2 * 8 + pixel % 16 / 2; });

HWY_INLINE void StoreThreePixels(std::uint8_t* p, ThreeWords even, ThreeWords odd) {
    StoreThreeBy(scatterPixelTables, p,
                 {PackUnsigned(even.c0, odd.c0), PackUnsigned(even.c1, odd.c1),
                  PackUnsigned(even.c2, odd.c2)});
}

HWY_INLINE TwoChannels LoadTwo(std::uint8_t const* p) {
    TwoChannels v;
    hn::LoadInterleaved2(Tag8(), p, v.c0, v.c1);
    return v;
}
#endif

/// Stores each byte three times.
HWY_INLINE void StoreThreeSame(std::uint8_t* p, V8 v) {
    auto const& table = repeatTables.table;
    StorePacked(p, {Permute(v, table[0]), Permute(v, table[1]), Permute(v, table[2])});
}

HWY_INLINE V8 TruncateFour(VF a, VF b, VF c, VF d) {
    return BytesOfFour(Truncate(a), Truncate(b), Truncate(c), Truncate(d));
}

HWY_INLINE V8 LowBytesOfFour(VF a, VF b, VF c, VF d) {
    return BytesOfFour(LowBytesOf(a), LowBytesOf(b), LowBytesOf(c), LowBytesOf(d));
}

/// floor(v * factor / 2^13), for |v| <= 256.
HWY_INLINE V16 MulShift13(V16 v, std::int16_t factor) {
    return hn::MulHigh(hn::ShiftLeft<3>(v), hn::Set(TagS16(), factor));
}

/// Half a block of pixels, ready to be weighted: pairs of blue and green, pairs of red and 1.
struct PixelHalf {
    V8 blue_green;
    V8 red_one;
};

HWY_INLINE PixelHalf LowerHalf(ThreeChannels v) {
    return {hn::InterleaveLower(v.c0, v.c1), hn::InterleaveLower(v.c2, hn::Set(Tag8(), 1))};
}

HWY_INLINE PixelHalf UpperHalf(ThreeChannels v) {
    Tag8 const d;
    return {hn::InterleaveUpper(d, v.c0, v.c1), hn::InterleaveUpper(d, v.c2, hn::Set(d, 1))};
}

/// Sums of products of neighbours, unsigned bytes by signed ones.
HWY_INLINE V16 MulAddBytePairs(V8 unsigned_bytes, std::int8_t even, std::int8_t odd) {
    auto const weights =
        hn::Set(Tag16(), static_cast<std::uint16_t>(static_cast<std::uint8_t>(even) |
                                                    static_cast<std::uint8_t>(odd) << 8));
    return MulAddBytes(unsigned_bytes, hn::BitCast(Tag8(), weights));
}

template <int shift, class D, class V>
HWY_INLINE hn::Vec<D> RoundedBytes(D d, V lower, V upper) {
    static_assert(shift == 8);
    auto const rounding = hn::Set(hn::RepartitionToWide<D>(), std::uint16_t{0x80});
    return hn::ConcatOdd(d, hn::BitCast(d, hn::Add(upper, rounding)),
                         hn::BitCast(d, hn::Add(lower, rounding)));
}

/// The instruction rounds up.
HWY_INLINE V8 FloorMean(V8 a, V8 b) {
    return hn::Not(hn::AverageRound(hn::Not(a), hn::Not(b)));
}

/// (a * (64 - weight) + b * weight) >> 6, for weights from 0 to 64.
HWY_INLINE V8 BlendBy64ths(V8 a, V8 b, std::int8_t weight) {
    auto const rest = static_cast<std::int8_t>(64 - weight);
    V16 const lower = MulAddBytePairs(hn::InterleaveLower(a, b), rest, weight);
    V16 const upper = MulAddBytePairs(hn::InterleaveUpper(Tag8(), a, b), rest, weight);
    return PackUnsigned(hn::ShiftRight<6>(lower), hn::ShiftRight<6>(upper));
}

HWY_INLINE hn::Vec<Tag16> AverageOfFour(V8 top, V8 bottom) {
    V16 const sum = hn::Add(MulAddBytePairs(top, 1, 1), MulAddBytePairs(bottom, 1, 1));
    return hn::ShiftRight<2>(hn::BitCast(Tag16(), hn::Add(sum, hn::Set(TagS16(), 2))));
}

/// The rounded means of two by two pixels.
HWY_INLINE PixelHalf Average(ThreeChannels top, ThreeChannels bottom) {
    auto const b = AverageOfFour(top.c0, bottom.c0);
    auto const g = AverageOfFour(top.c1, bottom.c1);
    auto const r = AverageOfFour(top.c2, bottom.c2);
    Tag8 const d;
    return {hn::BitCast(d, hn::Or(b, hn::ShiftLeft<8>(g))),
            hn::BitCast(d, hn::Or(r, hn::Set(Tag16(), 0x0100)))};
}

template <ChannelWeights weights, int constant>
HWY_INLINE V16 SumOf(PixelHalf p) {
    return hn::Add(MulAddBytePairs(p.blue_green, weights.b, weights.g),
                   MulAddBytePairs(p.red_one, weights.r, constant));
}

template <ChannelWeights weights>
HWY_INLINE V16 Weighted(PixelHalf p) {
    constexpr SplitWeights split = splitWeights(weights);
    V16 const low = hn::ShiftRight<7>(SumOf<split.low, 0>(p));
    return hn::ShiftRight<7>(hn::Add(SumOf<split.high, 64>(p), low));
}

/// The low bytes of (weights * pixel + 2^13) >> 14.
template <ChannelWeights weights>
HWY_INLINE V8 WeightedBytes(PixelHalf lower, PixelHalf upper) {
    constexpr bool is_signed = weights.b < 0 || weights.g < 0 || weights.r < 0;
    V16 const first = Weighted<weights>(lower);
    V16 const second = Weighted<weights>(upper);
    return is_signed ? PackSigned(first, second) : PackUnsigned(first, second);
}

template <ChannelWeights weights>
HWY_INLINE V8 WeightedBytes(ThreeChannels v) {
    return WeightedBytes<weights>(LowerHalf(v), UpperHalf(v));
}

template <ChannelWeights weights>
HWY_INLINE hn::Vec<HalfTag8> WeightedBytes(PixelHalf p) {
    return hn::TruncateTo(HalfTag8(), hn::BitCast(Tag16(), Weighted<weights>(p)));
}

using WordSums = V32;

HWY_INLINE WordSums NoWordSums() {
    return hn::Zero(BlockTagS32());
}

HWY_INLINE V32 TotalOf(WordSums sums) {
    return sums;
}

/// Half a block of pixels, ready for `SumModulo`: pairs of blue and green, of green and red.
struct ColourHalf {
    V8 blue_green;
    V8 green_red;
};

HWY_INLINE ColourHalf LowerColours(ThreeChannels v) {
    return {hn::InterleaveLower(v.c0, v.c1), hn::InterleaveLower(v.c1, v.c2)};
}

HWY_INLINE ColourHalf UpperColours(ThreeChannels v) {
    Tag8 const d;
    return {hn::InterleaveUpper(d, v.c0, v.c1), hn::InterleaveUpper(d, v.c1, v.c2)};
}

/// Whether the sum of two weighted bytes, which saturates, fits 16 bits.
constexpr bool fitsPair(int even, int odd) {
    int const positive = (even > 0 ? even : 0) + (odd > 0 ? odd : 0);
    int const negative = (even < 0 ? even : 0) + (odd < 0 ? odd : 0);
    return positive <= 128 && negative >= -128 && even < 128 && odd < 128;
}

/// The part of green's weight that goes with blue.
constexpr int greenWithBlue(ChannelWeights weights) {
    for (int part = -128; part < 128; ++part) {
        if (fitsPair(weights.b, part) && fitsPair(weights.g - part, weights.r)) {
            return part;
        }
    }
    throw "no split of these weights fits";
}

template <ChannelWeights weights>
HWY_INLINE V16 SumModulo(ColourHalf p) {
    constexpr int part = greenWithBlue(weights);
    return hn::Add(MulAddBytePairs(p.blue_green, static_cast<std::int8_t>(weights.b),
                                   static_cast<std::int8_t>(part)),
                   MulAddBytePairs(p.green_red, static_cast<std::int8_t>(weights.g - part),
                                   static_cast<std::int8_t>(weights.r)));
}

HWY_INLINE V8 HighBytes(V16 lower, V16 upper) {
    Tag16 const d;
    TagS16 const words;
    return PackUnsigned(hn::BitCast(words, hn::ShiftRight<8>(hn::BitCast(d, lower))),
                        hn::BitCast(words, hn::ShiftRight<8>(hn::BitCast(d, upper))));
}

HWY_INLINE V8 HighPairs(V16 first, V16 second) {
    Tag16 const d;
    return hn::BitCast(Tag8(), hn::Or(hn::ShiftRight<8>(hn::BitCast(d, first)),
                                      hn::And(hn::BitCast(d, second), hn::Set(d, 0xff00))));
}

HWY_INLINE V16 PairSums(V8 v) {
    return MulAddBytePairs(v, 1, 1);
}

HWY_INLINE V16 AddPairSums(V16 sums, V8 v) {
    return hn::Add(sums, PairSums(v));
}

struct FourSums {
    V32 s0;
    V32 s1;
    V32 s2;
    V32 s3;
};

HWY_INLINE FourSums NoFourSums() {
    V32 const zero = hn::Zero(BlockTagS32());
    return {zero, zero, zero, zero};
}

HWY_INLINE FourSums AddTwoRows(FourSums sums, V8 a, V8 b, std::int16_t weight_a,
                               std::int16_t weight_b) {
    TagS16 const words;
    Tag8 const d;
    V8 const zero = hn::Zero(d);
    V8 const lower = hn::InterleaveLower(a, b);
    V8 const upper = hn::InterleaveUpper(d, a, b);
    V16 const weights = hn::BitCast(
        words, hn::Set(BlockTagS32(),
                       static_cast<std::int32_t>(static_cast<std::uint32_t>(weight_b) << 16U |
                                                 static_cast<std::uint16_t>(weight_a))));
    auto const add = [&](V32 sum, V8 pairs) HWY_ATTR {
        return AddWordProducts(sum, hn::BitCast(words, pairs), weights);
    };
    return {add(sums.s0, hn::InterleaveLower(lower, zero)),
            add(sums.s1, hn::InterleaveUpper(d, lower, zero)),
            add(sums.s2, hn::InterleaveLower(upper, zero)),
            add(sums.s3, hn::InterleaveUpper(d, upper, zero))};
}

HWY_INLINE FourSums AddRow(FourSums sums, V8 row, std::int16_t weight) {
    return AddTwoRows(sums, row, hn::Zero(Tag8()), weight, 0);
}

/// A block of words.
struct RowWords {
    V16 lower;
    V16 upper;
};

HWY_INLINE RowWords WidenRow(V8 row) {
    TagS16 const words;
    V8 const zero = hn::Zero(Tag8());
    return {hn::BitCast(words, hn::InterleaveLower(row, zero)),
            hn::BitCast(words, hn::InterleaveUpper(Tag8(), row, zero))};
}

HWY_INLINE RowWords AddBytes(RowWords words, V8 row) {
    RowWords const more = WidenRow(row);
    return {hn::Add(words.lower, more.lower), hn::Add(words.upper, more.upper)};
}

HWY_INLINE FourSums AddWords(FourSums sums, RowWords words, std::int16_t weight) {
    TagS16 const d;
    V16 const zero = hn::Zero(d);
    V16 const weights = hn::Set(d, weight);
    return {AddWordProducts(sums.s0, hn::InterleaveLower(words.lower, zero), weights),
            AddWordProducts(sums.s1, hn::InterleaveUpper(d, words.lower, zero), weights),
            AddWordProducts(sums.s2, hn::InterleaveLower(words.upper, zero), weights),
            AddWordProducts(sums.s3, hn::InterleaveUpper(d, words.upper, zero), weights)};
}

#if HWY_TARGET == HWY_AVX2
HWY_INLINE void StoreSums(FourSums sums, std::int32_t* p) {
    BlockTagS32 const d;
    hn::StoreU(hn::ConcatLowerLower(d, sums.s1, sums.s0), d, p);
    hn::StoreU(hn::ConcatLowerLower(d, sums.s3, sums.s2), d, p + 8);
    hn::StoreU(hn::ConcatUpperUpper(d, sums.s1, sums.s0), d, p + 16);
    hn::StoreU(hn::ConcatUpperUpper(d, sums.s3, sums.s2), d, p + 24);
}
#endif

HWY_INLINE V8 BytesOf(FourSums sums, int shift) {
    TagS16 const words;
    auto const shifted = [&](V32 v) HWY_ATTR { return hn::ShiftRightSame(v, shift); };
    return PackUnsigned(hn::ReorderDemote2To(words, shifted(sums.s0), shifted(sums.s1)),
                        hn::ReorderDemote2To(words, shifted(sums.s2), shifted(sums.s3)));
}

/// The bytes of two sums, in pairs.
template <ChannelWeights first, ChannelWeights second>
HWY_INLINE V8 WeightedPairs(PixelHalf p) {
    V16 const low = hn::And(Weighted<first>(p), hn::Set(TagS16(), 0xff));
    return hn::BitCast(Tag8(), hn::Or(low, hn::ShiftLeft<8>(Weighted<second>(p))));
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
