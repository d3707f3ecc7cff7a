#include "simd/simd_neon_targets.h"

#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "rows/rows_taps.cpp"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>

#include <algorithm>
#include <array>

#include "rows/rows_targets.h"
#include "simd/simd_neon_ops-inl.h"
#include "simd/simd_neon_walk-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ox::rows::HWY_NAMESPACE {
namespace {

using namespace Simd::Neon::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

// Columns. A register holds words; neighbours are multiplied by their weights and added. So the
// words are arranged channel by channel, each channel a run of taps, and once all steps are added,
// sums of neighbours leave a sum per pixel and channel:
//
//   word    B0 B1 B2 B3 | G0 G1 G2 G3 | R0 R1 R2 R3 | - - - -     (three channels, AVX2)
//   sum     B01  B23      G01  G23      R01  R23      0   0
//   summed  B  G  R  0    and the same of the next pixel

constexpr std::size_t words = blockBytes / 2;
constexpr std::size_t lanes32 = blockBytes / 4;

/// Three channels take the room of four.
template <std::size_t channels>
constexpr std::size_t channelSlots = channels == 3 ? 4 : channels;

template <std::size_t channels>
constexpr std::size_t stepTaps = words / channelSlots<channels>;

/// Pixels whose sums fill a register.
template <std::size_t channels>
constexpr std::size_t batchPixels = lanes32 / channelSlots<channels>;

/// Words of channel `c` stand at c * stepTaps, in the order of taps.
template <std::size_t channels>
constexpr std::array<std::uint8_t, blockBytes> wordPlaces() {
    std::array<std::uint8_t, blockBytes> places{};
    for (std::size_t word = 0; word < words; ++word) {
        std::size_t const channel = word / stepTaps<channels>;
        std::size_t const tap = word % stepTaps<channels>;
        places[2 * word] =
            channel < channels ? static_cast<std::uint8_t>(tap * channels + channel) : emptyPlace;
        places[2 * word + 1] = emptyPlace;
    }
    return places;
}

template <std::size_t channels>
void arrangeWeights(std::int16_t const* weights, std::size_t count, std::int16_t* arranged) {
    constexpr std::size_t step_taps = stepTaps<channels>;
    for (std::size_t first = 0; first < count; first += step_taps, arranged += words) {
        std::fill_n(arranged, words, std::int16_t{0});
        std::size_t const taps = std::min(count - first, step_taps);
        for (std::size_t channel = 0; channel < channels; ++channel) {
            std::copy_n(weights + first, taps, arranged + channel * step_taps);
        }
    }
}

/// What the pixels of a row have in common.
struct Columns {
    std::uint8_t const* src;
    std::int16_t const* weights;
    std::size_t steps;
    V8 places;
};

template <std::size_t channels>
HWY_INLINE V32 sumPixel(Columns const& columns, TapStart start) {
    constexpr std::size_t step_bytes = stepTaps<channels> * channels;
    std::uint8_t const* window = columns.src + start.source;
    std::int16_t const* weights = columns.weights + start.weights;
    WordSums sums = NoWordSums();
    for (std::size_t i = 0; i < columns.steps; ++i, window += step_bytes, weights += words) {
        sums = AddWordProducts(sums, SpreadWindow(window, columns.places),
                               hn::Load(TagS16(), weights));
    }
    return TotalOf(sums);
}

/// The sums of as many pixels as a register has room for, in order.
template <std::size_t channels, std::size_t pixels>
HWY_INLINE V32 sumPixels(Columns const& columns, TapStart const* starts) {
    if constexpr (pixels == 1) {
        return sumPixel<channels>(columns, *starts);
    } else {
        return AddNeighbours(sumPixels<channels, pixels / 2>(columns, starts),
                             sumPixels<channels, pixels / 2>(columns, starts + pixels / 2));
    }
}

template <std::size_t channels>
void sumColumns(ColumnTaps const& taps, std::uint8_t const* src, std::uint8_t* dst) {
    static constexpr std::array<std::uint8_t, blockBytes> places = wordPlaces<channels>();
    constexpr std::size_t batch = batchPixels<channels>;
    Columns const columns{src, taps.weights, taps.steps, hn::LoadU(Tag8(), places.data())};
    for (std::size_t i = 0; i < taps.count; i += batch) {
        V32 const sums = sumPixels<channels, batch>(columns, taps.starts + i);
        StoreLaneBytes<channels>(hn::ShiftRightSame(sums, taps.shift), dst + i * channels);
    }
}

template <std::size_t channels>
constexpr TapShape tapShape() {
    return {sumColumns<channels>,
            arrangeWeights<channels>,
            batchPixels<channels>,
            stepTaps<channels>,
            words,
            spreadWindowBytes};
}

// Rows. Two rows at a time: their bytes as words side by side, times the two weights.

HWY_INLINE V8 sumColumnBlock(RowTaps const& taps, std::size_t x) {
    Tag8 const d;
    FourSums sums = NoFourSums();
    std::size_t k = 0;
    for (; k + 1 < taps.count; k += 2) {
        sums = AddTwoRows(sums, hn::LoadU(d, taps.rows[k] + x), hn::LoadU(d, taps.rows[k + 1] + x),
                          taps.weights[k], taps.weights[k + 1]);
    }
    if (k < taps.count) {
        sums = AddTwoRows(sums, hn::LoadU(d, taps.rows[k] + x), hn::Zero(d), taps.weights[k], 0);
    }
    return BytesOf(sums, taps.shift);
}

void sumRows(RowTaps const& taps, std::size_t bytes, std::uint8_t* dst) {
    walkBlocks(bytes, blockBytes, [&](std::size_t x) HWY_ATTR {
        hn::StoreU(sumColumnBlock(taps, x), Tag8(), dst + x);
    });
}

#endif

void takeRoutines([[maybe_unused]] Routines& routines) {
#if HWY_TARGET != HWY_SCALAR
    routines.columns = {tapShape<1>(), tapShape<2>(), tapShape<3>(), tapShape<4>()};
    routines.sum_rows = sumRows;
    routines.least_row_bytes = blockBytes;
#endif
}

}  // namespace
}  // namespace ox::rows::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ox::rows {

HWY_EXPORT(takeRoutines);

void takeTapRoutines(Routines& routines) {
    HWY_DYNAMIC_DISPATCH(takeRoutines)(routines);
}

}  // namespace ox::rows
#endif  // HWY_ONCE
