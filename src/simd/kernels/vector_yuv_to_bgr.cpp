// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/kernels/vector_yuv_to_bgr.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "simd/kernels/kernels.h"
#include "simd/kernels/yuv_matrices-inl.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

struct BlueFirst {
    static HWY_INLINE ThreeWords order(V16 b, V16 g, V16 r) { return {b, g, r}; }
};

struct RedFirst {
    static HWY_INLINE ThreeWords order(V16 b, V16 g, V16 r) { return {r, g, b}; }
};

template <class Order, class Luma, class Term>
HWY_INLINE ThreeWords wordsOf(Luma luma, ChromaTerms<Term> const& chroma) {
    return Order::order(channelOf(luma, chroma.b), channelOf(luma, chroma.g),
                        channelOf(luma, chroma.r));
}

/// Converts a block of pixels of one row; `even` and `odd` are chroma's terms for its columns.
template <class Matrix, class Order, class Term>
HWY_INLINE void storeBlock(Bytes dst, V8 y, ChromaTerms<Term> const& even,
                           ChromaTerms<Term> const& odd) {
    StoreThreePixels(dst, wordsOf<Order>(Matrix::luma(EvenBytes(y)), even),
                     wordsOf<Order>(Matrix::luma(OddBytes(y)), odd));
}

/// A row of chroma at half the columns, as two planes or as pairs. terms(x) gives the chroma terms
/// for the block of pixels at x.
struct PlanarChroma {
    ConstBytes u;
    std::size_t u_stride;
    ConstBytes v;
    std::size_t v_stride;

    template <class Matrix>
    HWY_INLINE auto terms(std::size_t x) const {
        HalfTag8 const half;
        return Matrix::chroma(hn::PromoteTo(TagS16(), hn::LoadU(half, u + x / 2)),
                              hn::PromoteTo(TagS16(), hn::LoadU(half, v + x / 2)));
    }
    void next() {
        u += stepOf(u_stride);
        v += stepOf(v_stride);
    }
};

template <bool v_first>
struct PairedChroma {
    ConstBytes uv;
    std::size_t stride;

    template <class Matrix>
    HWY_INLINE auto terms(std::size_t x) const {
        V8 const pairs = hn::LoadU(Tag8(), uv + x);
        return v_first ? Matrix::chroma(OddBytes(pairs), EvenBytes(pairs))
                       : Matrix::chroma(EvenBytes(pairs), OddBytes(pairs));
    }
    void next() { uv += stepOf(stride); }
};

template <class Matrix, class Order, class Chroma>
void convert420(ConstBytes y, std::size_t y_stride, Chroma chroma, std::size_t width,
                std::size_t height, Bytes dst, std::size_t dst_stride) {
    Tag8 const d;
    auto const luma_step = stepOf(y_stride);
    auto const dst_step = stepOf(dst_stride);
    for (std::size_t row = 0; row < height / 2; ++row) {
        walkBlocks(width, blockBytes, [&](std::size_t x) HWY_ATTR {
            auto const terms = chroma.template terms<Matrix>(x);
            storeBlock<Matrix, Order>(dst + 3 * x, hn::LoadU(d, y + x), terms, terms);
            storeBlock<Matrix, Order>(dst + dst_step + 3 * x, hn::LoadU(d, y + luma_step + x),
                                      terms, terms);
        });
        y += 2 * luma_step;
        chroma.next();
        dst += 2 * dst_step;
    }
}

template <auto scalar, class Matrix, class Order>
void convertPlanar(ConstBytes y, std::size_t y_stride, ConstBytes u, std::size_t u_stride,
                   ConstBytes v, std::size_t v_stride, std::size_t width, std::size_t height,
                   Bytes dst, std::size_t dst_stride) {
    if (width < blockBytes) {
        return scalar(y, y_stride, u, u_stride, v, v_stride, width, height, dst, dst_stride);
    }
    convert420<Matrix, Order>(y, y_stride, PlanarChroma{u, u_stride, v, v_stride}, width, height,
                              dst, dst_stride);
}

template <auto scalar, class Matrix, class Order, bool v_first>
void convertPaired(ConstBytes y, std::size_t y_stride, ConstBytes uv, std::size_t uv_stride,
                   std::size_t width, std::size_t height, Bytes dst, std::size_t dst_stride) {
    if (width < blockBytes) {
        return scalar(y, y_stride, uv, uv_stride, width, height, dst, dst_stride);
    }
    convert420<Matrix, Order>(y, y_stride, PairedChroma<v_first>{uv, uv_stride}, width, height, dst,
                              dst_stride);
}

constexpr auto* ConvertI420ToBgr = convertPlanar<Base::ConvertI420ToBgr, FineMatrix, BlueFirst>;
constexpr auto* ConvertI420ToRgb = convertPlanar<Base::ConvertI420ToRgb, FineMatrix, RedFirst>;
constexpr auto* ConvertNv12ToBgr =
    convertPaired<Base::ConvertNv12ToBgr, FineMatrix, BlueFirst, false>;
constexpr auto* ConvertNv12ToRgb =
    convertPaired<Base::ConvertNv12ToRgb, FineMatrix, RedFirst, false>;
constexpr auto* ConvertNv21ToBgr =
    convertPaired<Base::ConvertNv21ToBgr, FineMatrix, BlueFirst, true>;
constexpr auto* ConvertNv21ToRgb =
    convertPaired<Base::ConvertNv21ToRgb, FineMatrix, RedFirst, true>;
constexpr auto* ConvertNv12ToBgrDirectly =
    convertPaired<Base::ConvertNv12ToBgrDirectly, DirectMatrix, BlueFirst, false>;

#if HWY_TARGET == HWY_AVX3_DL

// Where each pixel has chroma of its own, sums of 32 bits take fewer operations. A lane has the
// bytes Y, U, V and 1. Each weight of a channel is two bytes, 256 * high + low.

struct ChannelFactors {
    int y;
    int u;
    int v;

    constexpr int rest() const {
        return (1 << (toBgrBits - 1)) - lumaOffset * y - chromaOffset * (u + v);
    }
};

constexpr std::int8_t lowByte(int number) {
    return static_cast<std::int8_t>(number);
}

constexpr int highPart(int number) {
    return (number - lowByte(number)) / 256;
}

constexpr bool fitsBytes(ChannelFactors factors) {
    auto const fits = [](int number) { return highPart(number) == lowByte(highPart(number)); };
    return fits(factors.y) && fits(factors.u) && fits(factors.v);
}

HWY_INLINE V8 laneBytes(int first, int second, int third, int fourth) {
    auto const at = [](int byte, int place) {
        return static_cast<std::uint32_t>(byte & 0xff) << (8 * place);
    };
    return hn::BitCast(Tag8(),
                       hn::Set(hn::RebindToUnsigned<BlockTagS32>(),
                               at(first, 0) | at(second, 1) | at(third, 2) | at(fourth, 3)));
}

struct PixelLanes {
    V8 lanes[4];

    HWY_INLINE PixelLanes(V8 y, V8 u, V8 v) {
        Tag8 const d;
        Tag16 const words;
        V8 const one = hn::Set(d, 1);
        auto const pairs = [=](V8 bytes) HWY_ATTR { return hn::BitCast(words, bytes); };
        auto const yu_lower = pairs(hn::InterleaveLower(y, u));
        auto const yu_upper = pairs(hn::InterleaveUpper(d, y, u));
        auto const v1_lower = pairs(hn::InterleaveLower(v, one));
        auto const v1_upper = pairs(hn::InterleaveUpper(d, v, one));
        lanes[0] = hn::BitCast(d, hn::InterleaveLower(yu_lower, v1_lower));
        lanes[1] = hn::BitCast(d, hn::InterleaveUpper(words, yu_lower, v1_lower));
        lanes[2] = hn::BitCast(d, hn::InterleaveLower(yu_upper, v1_upper));
        lanes[3] = hn::BitCast(d, hn::InterleaveUpper(words, yu_upper, v1_upper));
    }

    template <ChannelFactors factors>
    HWY_INLINE V8 channel() const {
        static_assert(fitsBytes(factors));
        V8 const high = laneBytes(highPart(factors.y), highPart(factors.u), highPart(factors.v), 0);
        V8 const low = laneBytes(factors.y, factors.u, factors.v, factors.rest());
        auto const sum = [=](V8 bytes) HWY_ATTR {
            V32 const upper =
                AddByteProducts(hn::Set(BlockTagS32(), highPart(factors.rest())), bytes, high);
            return AddByteProducts(hn::ShiftLeft<8>(upper), bytes, low);
        };
        return BytesOf({sum(lanes[0]), sum(lanes[1]), sum(lanes[2]), sum(lanes[3])}, toBgrBits);
    }
};

HWY_INLINE void storeFullChroma(Bytes bgr, V8 y, V8 u, V8 v) {
    PixelLanes const pixels(y, u, v);
    StoreThree(bgr, {pixels.channel<ChannelFactors{lumaScale, blueFromU, 0}>(),
                     pixels.channel<ChannelFactors{lumaScale, greenFromU, greenFromV}>(),
                     pixels.channel<ChannelFactors{lumaScale, 0, redFromV}>()});
}

#elif HWY_TARGET == HWY_NEON

HWY_INLINE void storeFullChroma(Bytes bgr, V8 y, V8 u, V8 v) {
    V8 const b = WeightedYuv<YuvFactors{lumaScale, blueFromU, 0, lumaOffset}, toBgrBits>(y, u, v);
    V8 const g =
        WeightedYuv<YuvFactors{lumaScale, greenFromU, greenFromV, lumaOffset}, toBgrBits>(y, u, v);
    V8 const r = WeightedYuv<YuvFactors{lumaScale, 0, redFromV, lumaOffset}, toBgrBits>(y, u, v);
    StoreThree(bgr, {b, g, r});
}

#else

HWY_INLINE void storeFullChroma(Bytes bgr, V8 y, V8 u, V8 v) {
    storeBlock<FineMatrix, BlueFirst>(bgr, y, FineMatrix::chroma(EvenBytes(u), EvenBytes(v)),
                                      FineMatrix::chroma(OddBytes(u), OddBytes(v)));
}

#endif

void ConvertYuv444ToBgr(ConstBytes y, std::size_t y_stride, ConstBytes u, std::size_t u_stride,
                        ConstBytes v, std::size_t v_stride, std::size_t width, std::size_t height,
                        Bytes bgr, std::size_t bgr_stride) {
    joinRows(
        width, height,
        y_stride == width && u_stride == width && v_stride == width && bgr_stride == 3 * width);
    if (width < blockBytes) {
        return Base::ConvertYuv444ToBgr(y, y_stride, u, u_stride, v, v_stride, width, height, bgr,
                                        bgr_stride);
    }
    Tag8 const d;
    for (std::size_t row = 0; row < height; ++row, y += stepOf(y_stride), u += stepOf(u_stride),
                     v += stepOf(v_stride), bgr += stepOf(bgr_stride)) {
        walkTracks(
            width, blockBytes,
            [=](std::size_t x, Bytes pixels) OX_LONG_BLOCK {
                storeFullChroma(pixels, hn::LoadU(d, y + x), hn::LoadU(d, u + x),
                                hn::LoadU(d, v + x));
            },
            along<3>(bgr));
    }
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
#define OX_TAKE(name, ...) routines.name = name;
    OX_YUV_TO_BGR_KERNELS(OX_TAKE)
#undef OX_TAKE
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeYuvToBgrRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
