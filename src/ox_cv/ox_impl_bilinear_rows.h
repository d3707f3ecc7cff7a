/// @file
/// Row arithmetic of the bilinear scalers: 16.16 weights, truncation, no rounding.

#pragma once

#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_impl_scale_tables.h"

namespace ox::impl {

/// (b f + a (65536 - f)) >> 16: the weights sum to one, so the result never leaves the sample.
template <class Sample>
inline Sample blend(Sample a, Sample b, std::uint32_t weight) {
    using Wide = Accumulator<Sample>;
    Wide const one = coordinateOne;
    return static_cast<Sample>((Wide{b} * weight + Wide{a} * (one - weight)) >> coordinateBits);
}

/// The two source elements of a destination element.
struct ColumnCut {
    std::int64_t left;
    std::int64_t right;    ///< `left` itself at the right edge
    std::uint32_t weight;  ///< of `right`
};

inline ColumnCut columnCut(std::int32_t coordinate, std::int64_t src_width) {
    std::int64_t const left = coordinate >> coordinateBits;
    return {left, left < src_width - 1 ? left + 1 : left,
            static_cast<std::uint32_t>(coordinate & coordinateMask)};
}

/// Blends the columns of a row.
struct BlendColumns {
    using Function = void (*)(RowPlan const&, std::int32_t const* table, unsigned char const* src,
                              unsigned char* dst);

    template <class Sample, int Channels>
    static void row(RowPlan const& plan, std::int32_t const* table, unsigned char const* src,
                    unsigned char* dst) {
        walkRow<Sample, Channels>(plan, dst, [=](auto reader, std::int64_t i, int c) {
            ColumnCut const cut = columnCut(table[reader.entry(i)], reader.width());
            return blendAcross<Sample, Channels>(reader, src, cut, c);
        });
    }

    /// One channel of a destination element.
    template <class Sample, int Channels, class Reader>
    static Sample blendAcross(Reader reader, unsigned char const* src, ColumnCut cut, int c) {
        return blend(reader.template sample<Sample, Channels>(src, cut.left, c),
                     reader.template sample<Sample, Channels>(src, cut.right, c), cut.weight);
    }
};

/// Blends the columns of two rows, each to a truncated value, and then the two values.
struct BlendColumnsAndRows {
    using Function = void (*)(RowPlan const&, std::int32_t const* table, unsigned char const* upper,
                              unsigned char const* lower, std::uint32_t weight, unsigned char* dst);

    template <class Sample, int Channels>
    static void row(RowPlan const& plan, std::int32_t const* table, unsigned char const* upper,
                    unsigned char const* lower, std::uint32_t weight, unsigned char* dst) {
        walkRow<Sample, Channels>(plan, dst, [=](auto reader, std::int64_t i, int c) {
            ColumnCut const cut = columnCut(table[reader.entry(i)], reader.width());
            return blend(BlendColumns::blendAcross<Sample, Channels>(reader, upper, cut, c),
                         BlendColumns::blendAcross<Sample, Channels>(reader, lower, cut, c),
                         weight);
        });
    }
};

/// Blends two rows; channels don't matter to it.
struct BlendRows {
    using Function = void (*)(RowPlan const&, unsigned char const* upper,
                              unsigned char const* lower, std::uint32_t weight, unsigned char* dst);

    template <class Sample, int Channels>
    static void row(RowPlan const& plan, unsigned char const* upper, unsigned char const* lower,
                    std::uint32_t weight, unsigned char* dst) {
        std::int64_t const samples = plan.dst_samples;
        for (std::int64_t i = 0; i < samples; ++i) {
            storeSample<Sample>(
                dst, i, blend(loadSample<Sample>(upper, i), loadSample<Sample>(lower, i), weight));
        }
    }
};

}  // namespace ox::impl
