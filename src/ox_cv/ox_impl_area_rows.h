/// @file
/// Row arithmetic of the one-axis area scalers: integer weights, truncation.

#pragma once

#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_impl_scale_tables.h"

namespace ox::impl {

/// What is left of a sample's full weight for the next cell; wraps in 16 bits.
inline std::uint16_t restWeight(std::uint16_t full_weight, std::uint16_t weight) {
    return static_cast<std::uint16_t>(full_weight - weight);
}

/// A table of weights as the row functions see it.
struct AreaAxis {
    AreaWeight const* weights;
    std::uint16_t full_weight;
    int shift;
};

/// The source elements of a destination element: [first, last], whose ends weigh differently.
struct AreaCut {
    std::int64_t first;
    std::int64_t last;  ///< exclusive end of the middle part, and the element of `rest`
    std::uint16_t first_weight;
    std::uint16_t rest;  ///< weight of element `last`; 0: it isn't read
};

/// Up-scaling blends two neighbours.
struct AreaUp {
    static constexpr bool hasMiddle = false;
    static AreaCut cut(std::uint16_t full_weight, AreaWeight entry, AreaWeight /*following*/) {
        return {entry.index, entry.index + 1, entry.weight, restWeight(full_weight, entry.weight)};
    }
};

/// Down-scaling sums up to the following cell's first element.
struct AreaDown {
    static constexpr bool hasMiddle = true;
    static AreaCut cut(std::uint16_t full_weight, AreaWeight entry, AreaWeight following) {
        return {entry.index, following.index, entry.weight,
                restWeight(full_weight, following.weight)};
    }
};

/// Sums the columns of a row.
template <class Direction>
struct SumColumns {
    using Function = void (*)(RowPlan const&, AreaAxis const&, unsigned char const* src,
                              unsigned char* dst);

    /// The last source element that cell `i` reads.
    static std::int64_t lastElement(AreaAxis const& axis, std::int64_t i) {
        AreaCut const cut = Direction::cut(axis.full_weight, axis.weights[i], axis.weights[i + 1]);
        return cut.rest != 0 ? std::max(cut.first, cut.last) : std::max(cut.first, cut.last - 1);
    }

    template <class Sample, int Channels>
    static void row(RowPlan const& plan, AreaAxis const& shared_axis, unsigned char const* src,
                    unsigned char* dst) {
        AreaAxis const axis = shared_axis;
        walkRow<Sample, Channels>(plan, dst, [=](auto reader, std::int64_t i, int c) {
            AreaCut const cut = Direction::cut(axis.full_weight, axis.weights[reader.entry(i)],
                                               axis.weights[reader.entry(i + 1)]);
            auto const sample = [=](std::int64_t element) -> Accumulator<Sample> {
                return reader.template sample<Sample, Channels>(src, element, c);
            };
            Accumulator<Sample> sum = sample(cut.first) * cut.first_weight;
            if constexpr (Direction::hasMiddle) {
                Accumulator<Sample> middle = 0;
                for (std::int64_t k = cut.first + 1; k < cut.last; ++k) {
                    middle += sample(k);
                }
                sum += middle * axis.full_weight;
            }
            if (cut.rest != 0) {
                sum += sample(cut.last) * cut.rest;
            }
            return sum >> axis.shift;
        });
    }
};

/// Sums rows, in row order, through one accumulator a sample.
struct SumRows {
    /// The source rows of a destination row.
    struct Cut {
        unsigned char const* const* rows;
        std::int64_t count;             ///< of `rows`
        unsigned char const* last_row;  ///< of the plane; stands for rows that aren't there
        std::int64_t middle_end;        ///< rows 1 to middle_end - 1 have the full weight
        std::uint16_t first_weight;     ///< of row 0
        std::uint16_t full_weight;
        std::uint16_t rest;             ///< of `rest_row`
        unsigned char const* rest_row;  ///< null: left out
        int shift;

        unsigned char const* at(std::int64_t k) const {
            return k < count && rows[k] != nullptr ? rows[k] : last_row;
        }
    };
    using Function = void (*)(Cut const&, std::int64_t samples, unsigned char* accumulators,
                              unsigned char* dst);

    template <class Sample, int /*Channels*/>
    static void row(Cut const& cut, std::int64_t samples, unsigned char* accumulators,
                    unsigned char* dst) {
        using Sum = Accumulator<Sample>;
        Sum* const sums = reinterpret_cast<Sum*>(accumulators);
        auto const addRow = [=](unsigned char const* src, Sum weight) {
            for (std::int64_t j = 0; j < samples; ++j) {
                sums[j] += loadSample<Sample>(src, j) * weight;
            }
        };
        std::fill(sums, sums + samples, Sum{0});
        addRow(cut.at(0), cut.first_weight);
        for (std::int64_t k = 1; k < cut.middle_end; ++k) {
            addRow(cut.at(k), cut.full_weight);
        }
        if (cut.rest != 0 && cut.rest_row != nullptr) {
            addRow(cut.rest_row, cut.rest);
        }
        int const shift = cut.shift;
        for (std::int64_t j = 0; j < samples; ++j) {
            storeSample<Sample>(dst, j, sums[j] >> shift);
        }
    }
};

}  // namespace ox::impl
