// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The elements of a row, and the walk over them.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace ox::rows {

/// What a row is scaled by: interleaved samples.
struct Element {
    int channels = 0;  ///< 0: there is no such row
    int bits = 8;      ///< bits a sample
};

/// The row function of a family for an element: `Family::row<Sample, Channels>`, or null.
template <class Family>
constexpr typename Family::Function pickRowFunction(Element element) {
    if (element.bits == 16) {
        return &Family::template row<std::uint16_t, 1>;
    }
    if (element.bits == 32) {
        return &Family::template row<std::uint32_t, 1>;
    }
    switch (element.channels) {
        case 1:
            return &Family::template row<std::uint8_t, 1>;
        case 2:
            return &Family::template row<std::uint8_t, 2>;
        case 3:
            return &Family::template row<std::uint8_t, 3>;
        case 4:
            return &Family::template row<std::uint8_t, 4>;
        default:
            return nullptr;
    }
}

/// The horizontal scaling of a plane. `Own`, the derived class, picks the routine when a scaler is
/// armed: a plain loop or a program of vector code. The rows then run it without a further choice.
template <class Own>
class Columns {
  public:
    using Function = void (*)(Own& columns, std::uint8_t const* src, std::uint8_t* dst);

    void run(std::uint8_t const* src, std::uint8_t* dst) {
        _routine(static_cast<Own&>(*this), src, dst);
    }

  protected:
    Function _routine = nullptr;
};

/// The type that sums products of a sample and a 16-bit weight.
template <class Sample>
using Accumulator = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;

/// Rows of the caller's own memory needn't be aligned.
template <class Sample>
inline Sample loadSample(std::uint8_t const* row, std::int64_t index) {
    Sample sample = 0;
    std::memcpy(&sample, row + index * std::int64_t{sizeof(Sample)}, sizeof sample);
    return sample;
}

/// Keeps the low bits of `value`.
template <class Sample, class Value>
inline void storeSample(std::uint8_t* row, std::int64_t index, Value value) {
    auto const sample = static_cast<Sample>(value);
    std::memcpy(row + index * std::int64_t{sizeof(Sample)}, &sample, sizeof sample);
}

/// How a row of elements lies in a source and a destination row.
///
/// Elements may reach past the row's end, in two cases. Rows of the packed 4:2:2 formats are
/// shorter than their elements. Chroma planes of odd widths are read through luma's tables.
struct RowPlan {
    std::int64_t whole = 0;        ///< leading elements that lie wholly inside both rows
    std::int64_t src_width = 0;    ///< pixels of the source plane
    std::int64_t src_samples = 0;  ///< samples of a source row, as far as elements reach
    std::int64_t dst_samples = 0;  ///< samples of a destination row that elements cover
    std::int64_t entries = 0;      ///< of the table
};

/// Reads elements that are known to lie inside the row.
class InsideRow {
  public:
    explicit InsideRow(RowPlan const& plan) : _width(plan.src_width) {}

    template <class Sample, int Channels>
    Sample sample(std::uint8_t const* row, std::int64_t element, int channel) const {
        return loadSample<Sample>(row, element * Channels + channel);
    }
    /// Index of a table's entry.
    std::int64_t entry(std::int64_t index) const { return index; }
    /// Pixels of the source plane.
    std::int64_t width() const { return _width; }

  private:
    std::int64_t _width;
};

/// Reads elements anywhere: a sample behind the row is the same channel of the last whole element,
/// or 0 if the row has none; an entry behind the table is its last one.
class RowEnd {
  public:
    explicit RowEnd(RowPlan const& plan)
        : _width(plan.src_width), _samples(plan.src_samples), _last_entry(plan.entries - 1) {}

    template <class Sample, int Channels>
    Sample sample(std::uint8_t const* row, std::int64_t element, int channel) const {
        std::int64_t index = element * Channels + channel;
        if (index >= _samples) {
            if (_samples < Channels) {
                return 0;
            }
            index = (_samples / Channels - 1) * Channels + channel;
        }
        return loadSample<Sample>(row, index);
    }
    std::int64_t entry(std::int64_t index) const { return std::min(index, _last_entry); }
    std::int64_t width() const { return _width; }

  private:
    std::int64_t _width;
    std::int64_t _samples;
    std::int64_t _last_entry;
};

/// The one walk over a destination row: cell(reader, i, c) is channel c of element i.
template <class Sample, int Channels, class Cell>
inline void walkRow(RowPlan const& plan, std::uint8_t* dst, Cell cell) {
    std::int64_t const whole = plan.whole;
    InsideRow const inside(plan);
    for (std::int64_t i = 0; i < whole; ++i) {
        // All channels are computed before the first store, after which the compiler would load
        // anew what they share.
        std::array<Sample, std::size_t{Channels}> element;
        for (int c = 0; c < Channels; ++c) {
            element[static_cast<std::size_t>(c)] = static_cast<Sample>(cell(inside, i, c));
        }
        std::memcpy(dst + i * std::int64_t{sizeof element}, element.data(), sizeof element);
    }
    std::int64_t const samples = plan.dst_samples;
    RowEnd const end(plan);
    for (std::int64_t j = whole * Channels; j < samples; ++j) {
        storeSample<Sample>(dst, j, cell(end, j / Channels, static_cast<int>(j % Channels)));
    }
}

}  // namespace ox::rows
