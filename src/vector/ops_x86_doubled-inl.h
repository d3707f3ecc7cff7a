// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The operations of ops-inl.h on AVX2 and AVX3_DL for bilinear rows of twice the length.

HWY_BEFORE_NAMESPACE();
namespace ox::vector::HWY_NAMESPACE {

constexpr std::size_t doubledBytes = blockBytes / 2;

/// The places of the pairs of a register among a step's bytes: those of its first half, which begin
/// at `first`.
template <std::size_t channels>
constexpr ByteTable doubledPlaces(std::size_t first) {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes / 2; ++j) {
        std::size_t const left = first + j / (2 * channels) * channels + j % channels;
        table[2 * j] = static_cast<std::uint8_t>(left);
        table[2 * j + 1] = static_cast<std::uint8_t>(left + channels);
    }
    return table;
}

template <std::size_t channels>
constexpr ByteTable doubledWeights() {
    ByteTable table{};
    for (std::size_t j = 0; j < blockBytes / 2; ++j) {
        bool const is_left = j / channels % 2 == 0;
        table[2 * j] = is_left ? 12 : 4;
        table[2 * j + 1] = is_left ? 4 : 12;
    }
    return table;
}

template <std::size_t channels>
HWY_INLINE void StoreDoubled(std::uint8_t const* src, std::uint16_t* dst) {
    // The second half's bytes are loaded from where all of them lie before the step's end.
    alignas(64) static constexpr ByteTable lower = doubledPlaces<channels>(0);
    alignas(64) static constexpr ByteTable upper =
        doubledPlaces<channels>(doubledBytes / 2 - channels);
    alignas(64) static constexpr ByteTable weights = doubledWeights<channels>();
    auto const sums = [](std::uint8_t const* at, ByteTable const& places) HWY_ATTR {
        return MulAddBytes(Permute(LoadHalf(at), places), hn::Load(Tag8(), weights.data()));
    };
    Tag16 const words;
    hn::StoreU(hn::BitCast(words, sums(src, lower)), words, dst);
    hn::StoreU(hn::BitCast(words, sums(src + channels, upper)), words, dst + doubledBytes);
}

}  // namespace ox::vector::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();
