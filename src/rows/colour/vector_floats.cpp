#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/colour/vector_floats.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/colour/routines.h"
#include "vector/ops-inl.h"
#include "vector/walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

using Floats = BlockTagF32;
using Bytes = hn::Rebind<std::uint8_t, Floats>;
constexpr std::size_t lanes = blockBytes / sizeof(float);

HWY_INLINE auto loadFloats(std::uint8_t const* at) {
    return hn::BitCast(Floats(), hn::LoadU(Tag8(), at));
}

void convertBytes(std::uint8_t const* src, std::size_t count, std::uint8_t* floats) {
    if (count < lanes) {
        return plainColour.bytes_to_floats(src, count, floats);
    }
    walkShortBlocks(count, lanes, [&](std::size_t i) HWY_ATTR {
        std::uint8_t* const target = floats + sizeof(float) * i;
        prefetch<blockBytes, aheadOfFloats, For::writing>(target);
        auto const numbers = hn::PromoteTo(BlockTagS32(), hn::LoadU(Bytes(), src + i));
        hn::StoreU(hn::BitCast(Tag8(), hn::ConvertTo(Floats(), numbers)), Tag8(), target);
    });
}

void convertFloats(std::uint8_t const* floats, std::size_t count, std::uint8_t* dst) {
    if (count < lanes) {
        return plainColour.floats_to_low_bytes(floats, count, dst);
    }
    walkShortBlocks(count, lanes, [&](std::size_t i) HWY_ATTR {
        std::uint8_t const* const source = floats + sizeof(float) * i;
        prefetch<blockBytes, aheadOfFloats>(source);
        StoreLowBytes(loadFloats(source), dst + i);
    });
}

#endif

void takeRoutines([[maybe_unused]] ColourRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.bytes_to_floats = convertBytes;
    routines.floats_to_low_bytes = convertFloats;
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
