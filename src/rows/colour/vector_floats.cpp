#include "rows/colour/floats.h"

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_floats.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/routines.h"
#include "vector/block-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Floats = BlockTagF32;
using Bytes = hn::Rebind<std::uint8_t, Floats>;
constexpr std::size_t lanes = blockBytes / sizeof(float);

// Beyond a page's end, where processors stop to fetch on their own. Measured.
constexpr std::size_t bytesAhead = 6144;

HWY_INLINE auto loadFloats(std::uint8_t const* at) {
    return hn::BitCast(Floats(), hn::LoadU(Tag8(), at));
}

void convertBytes(std::uint8_t const* src, std::size_t count, std::uint8_t* floats) {
    walkShortBlocks(count, lanes, [&](std::size_t i) HWY_ATTR {
        std::uint8_t* const target = floats + sizeof(float) * i;
        prefetch<blockBytes, bytesAhead, For::writing>(target);
        auto const numbers = hn::PromoteTo(BlockTagS32(), hn::LoadU(Bytes(), src + i));
        hn::StoreU(hn::BitCast(Tag8(), hn::ConvertTo(Floats(), numbers)), Tag8(), target);
    });
}

#if HWY_TARGET == HWY_AVX3_DL

/// The processor's own conversion saturates.
HWY_INLINE void storeLowBytes(hn::Vec<Floats> v, std::uint8_t* dst) {
    auto const positive = _mm512_cmp_ps_mask(v.raw, _mm512_setzero_ps(), _CMP_GT_OQ);
    __m512i const numbers = _mm512_maskz_cvttps_epu32(positive, v.raw);
    _mm_storeu_si128(static_cast<__m128i*>(static_cast<void*>(dst)), _mm512_cvtepi32_epi8(numbers));
}

#else

/// Numbers of 2^31 and more lose that much, whose low byte is 0, before they are converted; what
/// is then still 2^31 saturates.
HWY_INLINE void storeLowBytes(hn::Vec<Floats> v, std::uint8_t* dst) {
    Floats const d;
    BlockTagS32 const d32;
    auto const half = hn::Set(d, 2147483648.0F);
    auto const positive = hn::IfThenElseZero(hn::Gt(v, hn::Zero(d)), v);
    auto const rest = hn::IfThenElse(hn::Ge(positive, half), hn::Sub(positive, half), positive);
    auto const all = hn::Set(d32, -1);
    auto const saturates = hn::RebindMask(d32, hn::Ge(rest, half));
    auto const numbers = hn::IfThenElse(saturates, all, hn::ConvertTo(d32, rest));
    hn::StoreU(hn::DemoteTo(Bytes(), hn::And(numbers, hn::Set(d32, 0xff))), Bytes(), dst);
}

#endif

void convertFloats(std::uint8_t const* floats, std::size_t count, std::uint8_t* dst) {
    walkShortBlocks(count, lanes, [&](std::size_t i) HWY_ATTR {
        std::uint8_t const* const source = floats + sizeof(float) * i;
        prefetch<blockBytes, bytesAhead>(source);
        storeLowBytes(loadFloats(source), dst + i);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.bytes_to_floats = convertBytes;
    routines.floats_to_low_bytes = convertFloats;
    routines.least_floats = lanes;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeFloatRoutines(ColourRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
