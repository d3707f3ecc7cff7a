// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "simd/warps/vector.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <array>

#include "simd/warps/columns.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace Simd::Neon::HWY_NAMESPACE {
namespace {

using namespace ox::vector::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

static_assert(HWY_NATIVE_FMA, "fused sums are required");

using TagF32 = hn::ScalableTag<float>;
using TagS32 = hn::RebindToSigned<TagF32>;
using TagU32 = hn::RebindToUnsigned<TagF32>;
using TagU16 = hn::Rebind<std::uint16_t, TagF32>;
using VF32 = hn::Vec<TagF32>;
using VS32 = hn::Vec<TagS32>;
using VU32 = hn::Vec<TagU32>;

HWY_INLINE std::size_t lanes() {
    return hn::Lanes(TagF32());
}

/// The columns of a register. The first register of a row is kept, because making it is slow.
struct Columns {
    VS32 first;

    explicit HWY_INLINE Columns(std::int32_t column) : first(hn::Iota(TagS32(), column)) {}

    HWY_INLINE VF32 at(std::size_t i) const {
        VS32 const step = hn::Set(TagS32(), static_cast<std::int32_t>(i));
        return hn::ConvertTo(TagF32(), hn::Add(first, step));
    }
};

struct Axis {
    VF32 step;
    VF32 row;
    VF32 offset;

    explicit HWY_INLINE Axis(WarpAxis const& axis)
        : step(hn::Set(TagF32(), axis.step)),
          row(hn::Set(TagF32(), axis.row)),
          offset(hn::Set(TagF32(), axis.offset)) {}

    HWY_INLINE VF32 at(VF32 columns) const {
        return hn::Add(hn::MulAdd(step, columns, row), offset);
    }
};

struct Plane {
    VS32 lastX;
    VS32 lastY;
    VU32 stride;
    VU32 pixelBytes;

    explicit HWY_INLINE Plane(WarpPlane const& plane)
        : lastX(hn::Set(TagS32(), plane.lastX)),
          lastY(hn::Set(TagS32(), plane.lastY)),
          stride(hn::Set(TagU32(), plane.stride)),
          pixelBytes(hn::Set(TagU32(), plane.pixelBytes)) {}

    HWY_INLINE VU32 offset(VS32 x, VS32 y) const {
        return hn::Add(hn::Mul(hn::BitCast(TagU32(), y), stride),
                       hn::Mul(hn::BitCast(TagU32(), x), pixelBytes));
    }
};

/// Positions that round to less than 0, and NaN, become 0.
HWY_INLINE VS32 nearestIndex(VF32 position, VS32 last) {
    TagF32 const d;
    VF32 const above = hn::Add(position, hn::Set(d, 0.5F));
    VF32 const cut = hn::IfThenElseZero(hn::Gt(above, hn::Zero(d)), above);
    return hn::Min(hn::ConvertTo(TagS32(), cut), last);
}

void FindNearestOffsets(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                        std::size_t count, std::uint32_t* dst) {
    if (count < lanes()) {
        return Base::FindNearestOffsets(line, plane, column, count, dst);
    }
    Columns const columns(column);
    Axis const x_axis(line.x);
    Axis const y_axis(line.y);
    Plane const source(plane);
    walkBlocks(count, lanes(), [&](std::size_t i) HWY_ATTR {
        VF32 const at = columns.at(i);
        VS32 const x = nearestIndex(x_axis.at(at), source.lastX);
        VS32 const y = nearestIndex(y_axis.at(at), source.lastY);
        hn::StoreU(source.offset(x, y), TagU32(), dst + i);
    });
}

/// 2^23 plus a smaller whole number is a float with that number in its low bits.
constexpr int mantissaBits = 23;

/// (32 - second) + (second << shift), below other bits, where second = floor(32 part + 0.5).
template <int shift>
HWY_INLINE VU32 pairOfWeights(VF32 part) {
    constexpr int other = 1 << mantissaBits;
    static_assert((warpRange << shift) < other);
    TagF32 const d;
    VF32 const scaled = hn::Mul(part, hn::Set(d, static_cast<float>(warpRange)));
    VF32 const second = hn::Floor(hn::Add(scaled, hn::Set(d, 0.5F)));
    VF32 const pair = hn::MulAdd(second, hn::Set(d, static_cast<float>((1 << shift) - 1)),
                                 hn::Set(d, static_cast<float>(other + warpRange)));
    return hn::BitCast(TagU32(), pair);
}

void FindBilinearPositions(WarpLine const& line, WarpPlane const& plane, std::int32_t column,
                           std::size_t count, WarpTaps const& taps) {
    if (count < lanes()) {
        return Base::FindBilinearPositions(line, plane, column, count, taps);
    }
    Columns const columns(column);
    Axis const x_axis(line.x);
    Axis const y_axis(line.y);
    Plane const source(plane);
    WarpTaps const to = taps;
    walkBlocks(count, lanes(), [&](std::size_t i) HWY_ATTR {
        VF32 const at = columns.at(i);
        VF32 const x = x_axis.at(at);
        VF32 const y = y_axis.at(at);
        VF32 const whole_x = hn::Floor(x);
        VF32 const whole_y = hn::Floor(y);
        VU32 const x_weights = pairOfWeights<8>(hn::Sub(x, whole_x));
        VU32 const y_weights = pairOfWeights<16>(hn::Sub(y, whole_y));
        VU32 const mask = hn::Set(TagU32(), (1U << mantissaBits) - 1);
        VU32 const offset =
            source.offset(hn::ConvertTo(TagS32(), whole_x), hn::ConvertTo(TagS32(), whole_y));
        hn::StoreU(offset, TagU32(), to.offset + i);
        hn::StoreU(hn::TruncateTo(TagU16(), x_weights), TagU16(), to.xWeights + i);
        hn::StoreU(hn::And(y_weights, mask), TagU32(), to.yWeights + i);
    });
}

using WindowTag32 = hn::RepartitionToWide<WindowTag16>;
using VWindow = hn::Vec<WindowTag>;
using VWindow32 = hn::Vec<WindowTag32>;

/// Each lane has the sum of four products, for one channel of a pixel. Four registers are blended
/// at a time. The fourth lane of a pixel of three channels is empty.
template <std::size_t channels>
struct Blend {
    static constexpr std::size_t pixelLanes = warpTapBytes(channels) / 4;
    static constexpr std::size_t windowLanes = windowBytes / 4;
    static constexpr std::size_t step = windowBytes / pixelLanes;  ///< pixels at a time

    /// Orders pairs of pixels, upper and lower, as four samples of one channel after another.
    static constexpr std::array<std::uint8_t, windowBytes> sampleOrder() {
        std::array<std::uint8_t, windowBytes> order{};
        for (std::size_t i = 0; i < windowBytes; ++i) {
            std::size_t const lane = i % 16 / 4;
            std::size_t const channel = lane % pixelLanes % channels;
            std::size_t const pixel = lane / pixelLanes * warpTapBytes(channels);
            std::size_t const pair = i % 4 / 2 * 2 * pixelLanes;
            order[i] = static_cast<std::uint8_t>(pixel + pair + i % 2 * channels + channel);
        }
        return order;
    }

    /// The bytes of pixels of three channels, of four lanes each.
    static constexpr std::array<std::uint8_t, windowBytes> packedOrder() {
        std::array<std::uint8_t, windowBytes> order{};
        for (std::size_t i = 0; i < windowBytes / 4 * 3; ++i) {
            order[i] = static_cast<std::uint8_t>(i / 3 * 4 + i % 3);
        }
        return order;
    }

    /// For each lane of a register of sums, the pixel that it belongs to.
    template <std::size_t part>
    static constexpr std::array<std::uint32_t, windowLanes> pixelOfLane() {
        std::array<std::uint32_t, windowLanes> pixels{};
        for (std::size_t i = 0; i < windowLanes; ++i) {
            pixels[i] =
                static_cast<std::uint32_t>((part * windowLanes + i) / pixelLanes % windowLanes);
        }
        return pixels;
    }

    template <std::size_t part>
    static HWY_INLINE VWindow spread(VWindow32 weights) {
        if constexpr (pixelLanes == 1) {
            return hn::BitCast(WindowTag(), weights);
        } else {
            static constexpr auto pixels = pixelOfLane<part>();
            auto const indices = hn::SetTableIndices(WindowTag32(), pixels.data());
            return hn::BitCast(WindowTag(), hn::TableLookupLanes(weights, indices));
        }
    }

    /// (sum + 512) >> 10 of register `part` of the four.
    template <std::size_t part>
    static HWY_INLINE VWindow32 sums(WarpTaps const& taps, std::size_t i) {
        static constexpr auto order = sampleOrder();
        std::size_t const first = i + part / pixelLanes * windowLanes;
        VWindow const pairs =
            hn::LoadU(WindowTag(), taps.pixels + i * warpTapBytes(channels) + part * windowBytes);
        VWindow const samples =
            channels == 1 ? pairs
                          : hn::TableLookupBytes(pairs, hn::LoadU(WindowTag(), order.data()));
        WindowTag32 const d;
        VWindow32 const x = hn::PromoteTo(
            d, hn::LoadU(hn::Rebind<std::uint16_t, WindowTag32>(), taps.xWeights + first));
        VWindow const x_weights = spread<part>(hn::Or(x, hn::ShiftLeft<16>(x)));
        VWindow const y_weights = spread<part>(hn::LoadU(d, taps.yWeights + first));
        VWindow const rows = hn::BitCast(WindowTag(), MulAddWindowPairs(samples, x_weights));
        VWindow32 const sum = hn::BitCast(d, MulAddWords(rows, y_weights));
        return hn::ShiftRight<10>(hn::Add(sum, hn::Set(d, 512)));
    }

    static HWY_INLINE void store(VWindow bytes, Bytes dst) {
        if constexpr (channels == 3) {
            static constexpr auto order = packedOrder();
            hn::Half<WindowTag> const half;
            hn::Half<decltype(half)> const quarter;
            VWindow const packed = PermuteWindow(bytes, hn::LoadU(WindowTag(), order.data()));
            hn::StoreU(hn::LowerHalf(half, packed), half, dst);
            hn::StoreU(hn::LowerHalf(quarter, hn::UpperHalf(half, packed)), quarter,
                       dst + windowBytes / 2);
        } else {
            hn::StoreU(bytes, WindowTag(), dst);
        }
    }

    static void run(WarpTaps const& taps, std::size_t count, Bytes dst) {
        if (count < step) {
            return Base::BlendWarpTaps(taps, count, channels, dst);
        }
        WarpTaps const from = taps;
        walkBlocks(count, step, [&](std::size_t i) HWY_ATTR {
            WindowTag16 const d;
            auto const words = [&](VWindow32 upper, VWindow32 lower) HWY_ATTR {
                auto const even = hn::ConcatEven(d, hn::BitCast(d, upper), hn::BitCast(d, lower));
                return hn::BitCast(WindowTag(), even);
            };
            VWindow const lower = words(sums<1>(from, i), sums<0>(from, i));
            VWindow const upper = words(sums<3>(from, i), sums<2>(from, i));
            store(hn::ConcatEven(WindowTag(), upper, lower), dst + i * channels);
        });
    }
};

void BlendWarpTaps(WarpTaps const& taps, std::size_t count, std::size_t channels, Bytes dst) {
    using Run = void(WarpTaps const&, std::size_t, Bytes);
    static constexpr Run* blends[] = {Blend<1>::run, Blend<2>::run, Blend<3>::run, Blend<4>::run};
    blends[channels - 1](taps, count, dst);
}

#endif

void takeRoutines([[maybe_unused]] WarpRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.findNearestOffsets = FindNearestOffsets;
    routines.findBilinearPositions = FindBilinearPositions;
    routines.blendTaps = BlendWarpTaps;
#endif
}

}  // namespace
}  // namespace Simd::Neon::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace Simd::Neon {

HWY_EXPORT(takeRoutines);

void takeWarpRoutines(WarpRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace Simd::Neon
#endif  // HWY_ONCE
