// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What luma and chroma add to each channel of a pixel, once per instruction set.

#if defined(OX_SIMD_YUV_MATRICES_INL_H) == defined(HWY_TARGET_TOGGLE)
#ifdef OX_SIMD_YUV_MATRICES_INL_H
#undef OX_SIMD_YUV_MATRICES_INL_H
#else
#define OX_SIMD_YUV_MATRICES_INL_H
#endif

#include "simd/kernels/formulas.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// A channel is the whole part of the sum of a luma and a chroma term, both with fractional bits.
// Each term is kept in two registers of 16-bit lanes: its whole part (high) and its fraction (low).
// High parts are added. A carry is added where the fractions reach 1 together, that is, where
// luma's fraction passes a limit that depends on chroma's fraction.

struct LumaTerm {
    V16 high;
    V16 low;
};

struct ChannelTerm {
    V16 high;
    V16 limit;
};

template <class Term>
struct ChromaTerms {
    Term b;
    Term g;
    Term r;
};

HWY_INLINE V16 constant(int value) {
    return hn::Set(TagS16(), static_cast<std::int16_t>(value));
}

HWY_INLINE V16 channelOf(LumaTerm luma, ChannelTerm chroma) {
    return AddWhereGreater(hn::Add(luma.high, chroma.high), luma.low, chroma.limit);
}

#if HWY_TARGET == HWY_NEON

/// The formulas with 13 fractional bits of formulas.h, in sums of 32 bits with 16 fractional bits:
/// one operation adds two of them, rounds, and takes the whole part.
struct FineMatrix {
    static constexpr int toBits16 = 16 - toBgrBits;

    static HWY_INLINE V16 scaled(V16 byte, int offset) {
        return hn::ShiftLeft<toBits16>(hn::Sub(byte, constant(offset)));
    }

    static HWY_INLINE WideSums luma(V16 y) {
        return WideProducts(scaled(y, lumaOffset), lumaScale);
    }

    static HWY_INLINE ChromaTerms<WideSums> chroma(V16 u_byte, V16 v_byte) {
        V16 const u = scaled(u_byte, chromaOffset);
        V16 const v = scaled(v_byte, chromaOffset);
        return {WideProducts(u, blueFromU),
                AddWideProducts(WideProducts(u, greenFromU), v, greenFromV),
                WideProducts(v, redFromV)};
    }
};

HWY_INLINE V16 channelOf(WideSums luma, WideSums chroma) {
    return RoundedHighWords(luma, chroma);
}

#else

/// The formulas with 13 fractional bits of formulas.h. Luma's term, rounding included, is
/// high + (low + 2^15) / 2^16; chroma's is high + (2^15 - 1 - limit) / 2^16.
struct FineMatrix {
    static_assert(toBgrBits == 13);                  ///< as in `MulShift13`
    static constexpr int toBits15 = 15 - toBgrBits;  ///< shift to a rounding product's 15 bits
    static constexpr int toBits16 = 16 - toBgrBits;  ///< shift to a fraction's 16 bits

    /// The low 16 bits of the product: the fractional bits, moved up.
    static HWY_INLINE V16 fraction(V16 v, int factor) {
        return hn::Mul(v, constant(factor * (1 << toBits16)));
    }

    static HWY_INLINE ChannelTerm term(V16 chroma, int factor) {
        return {MulShift13(chroma, static_cast<std::int16_t>(factor)),
                hn::Xor(fraction(chroma, factor), constant(0x7fff))};
    }

    static HWY_INLINE LumaTerm luma(V16 y) {
        V16 const scaled =
            hn::Sub(hn::ShiftLeft<toBits15>(y), constant(lumaOffset * (1 << toBits15)));
        return {hn::MulFixedPoint15(scaled, constant(lumaScale)),
                hn::Mul(scaled, constant(lumaScale * (1 << (toBits16 - toBits15))))};
    }

    static HWY_INLINE ChromaTerms<ChannelTerm> chroma(V16 u_byte, V16 v_byte) {
        V16 const u = hn::Sub(u_byte, constant(chromaOffset));
        V16 const v = hn::Sub(v_byte, constant(chromaOffset));
        return {term(u, blueFromU), addToTerm(term(u, greenFromU), v, greenFromV),
                term(v, redFromV)};
    }

    /// Two fractions give a carry where the second, unsigned, passes what the first leaves up to 1.
    static HWY_INLINE ChannelTerm addToTerm(ChannelTerm first, V16 chroma, int factor) {
        V16 const second = fraction(chroma, factor);
        V16 const high = hn::Add(first.high, MulShift13(chroma, static_cast<std::int16_t>(factor)));
        return {AddWhereGreater(high, hn::Xor(second, constant(-0x8000)), first.limit),
                hn::Sub(first.limit, second)};
    }
};

#endif

/// The formulas with 8 fractional bits of formulas.h. Luma's term is high + low / 2^8; chroma's,
/// rounding included, is high + (2^8 - 1 - limit) / 2^8.
struct DirectMatrix {
    static constexpr int one = 1 << directBits;
    static constexpr int half = one / 2;

    /// A factor as whole ones and a rest: as few ones as keep products with the rest within `most`.
    struct Parts {
        int ones;
        int rest;
    };

    static constexpr Parts partsOf(int factor, int largest, int most) {
        Parts parts{0, factor};
        for (int const sign = factor < 0 ? -1 : 1; sign * parts.rest * largest > most;) {
            parts = {parts.ones + sign, parts.rest - sign * one};
        }
        return parts;
    }

    static HWY_INLINE V16 times(V16 v, int factor) { return hn::Mul(v, constant(factor)); }

    /// The sum of the products with both rests fits 16 bits.
    template <int u_factor, int v_factor>
    static HWY_INLINE ChannelTerm term(V16 u, V16 v) {
        constexpr int terms = (u_factor != 0 ? 1 : 0) + (v_factor != 0 ? 1 : 0);
        constexpr int most = (32767 - half) / terms;
        constexpr Parts u_parts = partsOf(u_factor, chromaOffset, most);
        constexpr Parts v_parts = partsOf(v_factor, chromaOffset, most);
        V16 const ones = hn::Add(times(u, u_parts.ones), times(v, v_parts.ones));
        V16 const rest = hn::Add(times(u, u_parts.rest), times(v, v_parts.rest));
        V16 const rounded = hn::Add(rest, constant(half));
        return {hn::Add(ones, hn::ShiftRight<directBits>(rounded)),
                hn::AndNot(rounded, constant(one - 1))};
    }

    static HWY_INLINE LumaTerm luma(V16 y_byte) {
        constexpr Parts parts = partsOf(directLumaScale, 255 - lumaOffset, 32767);
        V16 const y = hn::Max(hn::Sub(y_byte, constant(lumaOffset)), constant(0));
        V16 const rest = times(y, parts.rest);
        return {hn::Add(times(y, parts.ones), hn::ShiftRight<directBits>(rest)),
                hn::And(rest, constant(one - 1))};
    }

    static HWY_INLINE ChromaTerms<ChannelTerm> chroma(V16 u_byte, V16 v_byte) {
        V16 const u = hn::Sub(u_byte, constant(chromaOffset));
        V16 const v = hn::Sub(v_byte, constant(chromaOffset));
        return {term<directBlueFromU, 0>(u, v), term<directGreenFromU, directGreenFromV>(u, v),
                term<0, directRedFromV>(u, v)};
    }
};

#endif

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // toggle
