// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "vector/targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/tensor/vector_numbers.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include "rows/tensor/routines.h"
#include "vector/ops-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace vector::HWY_NAMESPACE;

using Byte = std::uint8_t;

#if HWY_TARGET != HWY_SCALAR

constexpr std::size_t lanes = blockBytes / sizeof(float);
/// Registers of floats for a block of pixels.
constexpr std::size_t registers = blockBytes / lanes;

/// How a register of bytes becomes numbers: (byte - mean) * scale.
struct ToFloats {
    VF mean;
    VF scale;

    HWY_INLINE VF operator()(Byte const* src) const {
        auto const bytes = hn::LoadU(hn::Rebind<Byte, BlockTagF32>(), src);
        VF const numbers = hn::ConvertTo(BlockTagF32(), hn::PromoteTo(BlockTagS32(), bytes));
        return hn::Mul(hn::Sub(numbers, mean), scale);
    }
};

template <Number number>
HWY_INLINE void storeNumbers(VF v, Byte* dst) {
    if constexpr (number == Number::Float) {
        prefetch<blockBytes, aheadOfFloats, For::writing>(dst);
        hn::StoreU(hn::BitCast(Tag8(), v), Tag8(), dst);
    } else {
        hn::Rebind<hwy::float16_t, BlockTagF32> const d;
        hn::Repartition<Byte, decltype(d)> const bytes;
        hn::StoreU(hn::BitCast(bytes, hn::DemoteTo(d, v)), bytes, dst);
    }
}

/// Channels of a block of pixels, in memory.
struct alignas(64) BlockBytes {
    std::array<std::array<Byte, blockBytes>, 3> rows;
};

HWY_INLINE ToFloats numbersOf(ChannelNumbers const* channel) {
    return {hn::Set(BlockTagF32(), channel->mean), hn::Set(BlockTagF32(), channel->scale)};
}

/// The mean and scale of each lane of a register whose first lane is channel `first` of a pixel.
HWY_INLINE ToFloats laneNumbers(PixelNumbers const& channels, std::size_t first) {
    alignas(64) std::array<float, lanes> mean;
    alignas(64) std::array<float, lanes> scale;
    for (std::size_t i = 0; i < lanes; ++i) {
        ChannelNumbers const& channel = *channels[(first + i) % channels.size()];
        mean[i] = channel.mean;
        scale[i] = channel.scale;
    }
    return {hn::Load(BlockTagF32(), mean.data()), hn::Load(BlockTagF32(), scale.data())};
}

template <Number number>
void normaliseOne(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                  Byte* const* dst) {
    if (pixels < lanes) {
        return plainTensor.normalise[indexOf(number)][indexOf(Channels::One)](row, pixels, channels,
                                                                              dst);
    }
    ToFloats const convert = numbersOf(channels[0]);
    Byte* const to = dst[0];
    walkShortBlocks(pixels, lanes, [&](std::size_t x) HWY_ATTR {
        storeNumbers<number>(convert(row + x), to + x * bytesOf(number));
    });
}

template <Number number>
void normalisePlanes(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                     Byte* const* dst) {
    if (pixels < blockBytes) {
        return plainTensor.normalise[indexOf(number)][indexOf(Channels::Planes)](row, pixels,
                                                                                 channels, dst);
    }
    std::array<ToFloats, 3> const convert{numbersOf(channels[0]), numbersOf(channels[1]),
                                          numbersOf(channels[2])};
    std::array<Byte*, 3> const to{dst[0], dst[1], dst[2]};
    walkBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        Tag8 const d;
        ThreeChannels const v = LoadThree(row + 3 * x);
        BlockBytes block;
        hn::Store(v.c0, d, block.rows[0].data());
        hn::Store(v.c1, d, block.rows[1].data());
        hn::Store(v.c2, d, block.rows[2].data());
        for (std::size_t c = 0; c < 3; ++c) {
            for (std::size_t k = 0; k < registers; ++k) {
                std::size_t const i = k * lanes;
                storeNumbers<number>(convert[c](block.rows[c].data() + i),
                                     to[c] + (x + i) * bytesOf(number));
            }
        }
    });
}

/// The bytes of a block of pixels, the third channel first.
HWY_INLINE void swapBlock(Byte const* row, BlockBytes& block) {
    ThreeChannels const v = LoadThree(row);
    StoreThree(block.rows[0].data(), {v.c2, v.c1, v.c0});
}

template <Number number, bool swaps>
void normalisePacked(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                     Byte* const* dst) {
    if (pixels < blockBytes) {
        constexpr Channels order = swaps ? Channels::Swapped : Channels::Packed;
        return plainTensor.normalise[indexOf(number)][indexOf(order)](row, pixels, channels, dst);
    }
    PixelNumbers const ordered =
        swaps ? PixelNumbers{channels[2], channels[1], channels[0]} : channels;
    std::array<ToFloats, 3> const convert{laneNumbers(ordered, 0), laneNumbers(ordered, lanes),
                                          laneNumbers(ordered, 2 * lanes)};
    Byte* const to = dst[0];
    walkBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        BlockBytes block;
        Byte const* bytes = row + 3 * x;
        if constexpr (swaps) {
            swapBlock(bytes, block);
            bytes = block.rows[0].data();
        }
        for (std::size_t k = 0; k < 3 * registers; ++k) {
            std::size_t const i = k * lanes;
            storeNumbers<number>(convert[k % 3](bytes + i), to + (3 * x + i) * bytesOf(number));
        }
    });
}

// Bytes that are only moved by a constant, if at all, are so in registers. Others are looked up: by
// AVX3_DL in registers, elsewhere by the plain routine.

struct Shifts {
    V8 shift;

    explicit HWY_INLINE Shifts(ChannelNumbers const* channel)
        : shift(hn::Set(Tag8(), channel->shift)) {}
    HWY_INLINE V8 operator()(V8 v) const { return hn::Add(v, shift); }
};

#if HWY_TARGET == HWY_AVX3_DL

struct LookUps {
    AllBytes elements;

    explicit HWY_INLINE LookUps(ChannelNumbers const* channel)
        : elements(LoadAll(channel->elements.data())) {}
    HWY_INLINE V8 operator()(V8 v) const { return LookUp(elements, v); }
};

#endif

template <class Convert>
HWY_INLINE void convertOne(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                           Byte* const* dst) {
    Convert const convert(channels[0]);
    Byte* const to = dst[0];
    walkShortBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        hn::StoreU(convert(hn::LoadU(Tag8(), row + x)), Tag8(), to + x);
    });
}

template <Channels order, class Convert>
HWY_INLINE void convertThree(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                             Byte* const* dst) {
    Convert const first(channels[0]);
    Convert const second(channels[1]);
    Convert const third(channels[2]);
    std::array<Byte*, 3> const to{dst[0], dst[1], dst[2]};
    walkBlocks(pixels, blockBytes, [&](std::size_t x) HWY_ATTR {
        Tag8 const d;
        ThreeChannels const bytes = LoadThree(row + 3 * x);
        ThreeChannels const v{first(bytes.c0), second(bytes.c1), third(bytes.c2)};
        if constexpr (order == Channels::Planes) {
            hn::StoreU(v.c0, d, to[0] + x);
            hn::StoreU(v.c1, d, to[1] + x);
            hn::StoreU(v.c2, d, to[2] + x);
        } else if constexpr (order == Channels::Packed) {
            StoreThree(to[0] + 3 * x, v);
        } else {
            StoreThree(to[0] + 3 * x, {v.c2, v.c1, v.c0});
        }
    });
}

template <Channels order, class Convert>
HWY_INLINE void convertBlocks(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                              Byte* const* dst) {
    if constexpr (order == Channels::One) {
        convertOne<Convert>(row, pixels, channels, dst);
    } else {
        convertThree<order, Convert>(row, pixels, channels, dst);
    }
}

template <Channels order>
void normaliseBytes(Byte const* row, std::size_t pixels, PixelNumbers const& channels,
                    Byte* const* dst) {
    bool const shift = order == Channels::One
                           ? channels[0]->shifts
                           : channels[0]->shifts && channels[1]->shifts && channels[2]->shifts;
    if (pixels >= blockBytes && shift) {
        return convertBlocks<order, Shifts>(row, pixels, channels, dst);
    }
#if HWY_TARGET == HWY_AVX3_DL
    if (pixels >= blockBytes) {
        return convertBlocks<order, LookUps>(row, pixels, channels, dst);
    }
#endif
    plainTensor.normalise[indexOf(Number::Byte)][indexOf(order)](row, pixels, channels, dst);
}

#endif

void takeRoutines([[maybe_unused]] TensorRoutines& routines) {
#if HWY_TARGET != HWY_SCALAR
    using enum Channels;
    auto& normalise = routines.normalise;
    normalise[indexOf(Number::Float)] = {
        normaliseOne<Number::Float>, normalisePlanes<Number::Float>,
        normalisePacked<Number::Float, false>, normalisePacked<Number::Float, true>};
    normalise[indexOf(Number::Half)] = {normaliseOne<Number::Half>, normalisePlanes<Number::Half>,
                                        normalisePacked<Number::Half, false>,
                                        normalisePacked<Number::Half, true>};
    normalise[indexOf(Number::Byte)] = {normaliseBytes<One>, normaliseBytes<Planes>,
                                        normaliseBytes<Packed>, normaliseBytes<Swapped>};
    normalise[indexOf(Number::SignedByte)] = normalise[indexOf(Number::Byte)];
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeNumberRoutines(TensorRoutines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
