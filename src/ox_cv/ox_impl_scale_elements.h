/// @file
/// What the streaming scalers take for one element of a plane, and how they walk a row of them.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <type_traits>

#include "ox_core/ox_frame_layout.h"
#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::impl {

struct ScaleElement {
    int channels = 0;  ///< 0: the plane doesn't exist or the format isn't scalable
    int bits = 8;      ///< bits a sample
};

/// Formats that a streaming scaler can compute with; the others can only be copied.
constexpr bool isScalable(FrameFormat format) {
    return factsOf(format).plane_count > 0 && format <= FRAME_C1_32U && format != FRAME_RGB24 &&
           format != FRAME_RGB_PLANAR;
}

/// By area, 32-bit samples are refused too, after they have been computed and written: on purpose.
constexpr bool isScalableByArea(FrameFormat format) {
    return isScalable(format) && format != FRAME_C1_32U;
}

/// The packed 4:2:2 formats are treated as 3-channel and 4-channel data, on purpose and whatever
/// their packing is.
constexpr ScaleElement scaleElement(FrameFormat format, int plane) {
    FormatFacts const& facts = factsOf(format);
    if (!isScalable(format) || plane >= facts.plane_count) {
        return {};
    }
    PlaneFacts const& plane_facts = facts.planes[static_cast<std::size_t>(plane)];
    if (format == FRAME_YUYV) {
        return {3, 8};
    }
    if (format == FRAME_UYVY) {
        return {4, 8};
    }
    return {plane_facts.channels, plane_facts.bits};
}

/// Formats whose rows `ScalerAreaY` sums as one channel: only the first `width` bytes of a row are
/// written, on purpose.
constexpr bool hasShortAreaRows(FrameFormat format) {
    return format == FRAME_UYVY || format == FRAME_C2_8U || format == FRAME_C4_8U;
}

/// The row function of a family for an element: `Family::row<Sample, Channels>`, null if there is
/// none.
template <class Family>
constexpr typename Family::Function pickRowFunction(ScaleElement element) {
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

/// Where the products of a sample and a 16-bit weight are summed.
template <class Sample>
using Accumulator = std::conditional_t<sizeof(Sample) == 1, std::uint32_t, std::uint64_t>;

/// Rows of wrapped frames needn't be aligned.
template <class Sample>
inline Sample loadSample(unsigned char const* row, std::int64_t index) {
    Sample sample = 0;
    std::memcpy(&sample, row + index * std::int64_t{sizeof(Sample)}, sizeof sample);
    return sample;
}

/// Keeps the low bits of `value`.
template <class Sample, class Value>
inline void storeSample(unsigned char* row, std::int64_t index, Value value) {
    auto const sample = static_cast<Sample>(value);
    std::memcpy(row + index * std::int64_t{sizeof(Sample)}, &sample, sizeof sample);
}

/// Whether the rows of two sources are alike.
inline bool sameRows(FrameLayout const& a, FrameLayout const& b) {
    return a.format == b.format && a.planeCount == b.planeCount &&
           std::equal(a.plane, a.plane + a.planeCount, b.plane,
                      [](FramePlane const& p, FramePlane const& q) {
                          return p.width == q.width && p.rowBytes == q.rowBytes;
                      });
}

/// Bytes of a source row that elements can lie in. Tables hold indices of 16 bits, and elements
/// take up to 4 bytes; a limit above that, of whole elements of every size, keeps offsets in 32
/// bits however long a row claims to be.
constexpr std::uint64_t reachedBytes(std::uint64_t row_bytes) {
    constexpr std::uint64_t limit = std::uint64_t{12} << 16;
    return std::min(row_bytes, limit);
}

/// How a row of elements lies in a source and a destination plane.
///
/// Elements may leave the row at its end: the macro-pixel formats have rows shorter than their
/// elements, and chroma planes of odd widths are read through luma's tables.
struct RowPlan {
    std::int64_t whole = 0;        ///< leading elements that lie wholly inside both rows
    std::int64_t src_width = 0;    ///< pixels of the source plane
    std::int64_t src_samples = 0;  ///< samples of a source row, as far as elements reach
    std::int64_t dst_samples = 0;  ///< samples of a destination row that elements cover
    std::int64_t entries = 0;      ///< of the table
};

/// @param cells how many elements the table was made for
/// @param last_element gives the last source element that a destination element reads
template <class LastElement>
RowPlan planRow(FramePlane const& src, FramePlane const& dst, ScaleElement element,
                std::int64_t cells, LastElement last_element) {
    std::int64_t const channels = element.channels;
    std::int64_t const bytes = element.bits / 8;
    RowPlan plan;
    plan.src_width = src.width;
    plan.src_samples = static_cast<std::int64_t>(reachedBytes(src.rowBytes)) / bytes;
    plan.dst_samples =
        std::min(static_cast<std::int64_t>(dst.rowBytes) / bytes, dst.width * channels);
    std::int64_t const limit = std::min(cells, plan.dst_samples / channels);
    while (plan.whole < limit && (last_element(plan.whole) + 1) * channels <= plan.src_samples) {
        ++plan.whole;
    }
    return plan;
}

/// How a family of row functions works on the planes of a format; picked when a scaler is armed.
template <class Family>
struct PlaneRows {
    struct Plane {
        typename Family::Function function = nullptr;
        RowPlan plan;
    };
    std::array<Plane, 3> planes;

    /// @param table_entries one per column of the frame, or more
    /// @param last_element as in `planRow`, with the index of the plane in front
    template <class LastElement>
    void plan(FrameLayout const& src, FrameLayout const& dst, std::size_t table_entries,
              LastElement last_element) {
        auto const entries = static_cast<std::int64_t>(table_entries);
        for (int i = 0; i < 3; ++i) {
            ScaleElement const element = scaleElement(src.format, i);
            Plane& plane = planes[static_cast<std::size_t>(i)];
            plane = {pickRowFunction<Family>(element), {}};
            if (plane.function != nullptr) {
                plane.plan = planRow(src.plane[i], dst.plane[i], element,
                                     std::min<std::int64_t>(entries, dst.size.width),
                                     [&](std::int64_t cell) { return last_element(i, cell); });
                plane.plan.entries = entries;
            }
        }
    }

    /// Calls visit(index, plane) for each plane of the format that the row has an entry for.
    template <class Visitor>
    void forEach(RowData const& dst, Visitor visit) const {
        for (int i = 0; i < 3; ++i) {
            Plane const& plane = planes[static_cast<std::size_t>(i)];
            if (plane.function != nullptr && dst[i] != nullptr) {
                visit(i, plane);
            }
        }
    }
};

/// Reads elements that are known to lie inside the row.
class InsideRow {
  public:
    explicit InsideRow(RowPlan const& plan) : _width(plan.src_width) {}

    template <class Sample, int Channels>
    Sample sample(unsigned char const* row, std::int64_t element, int channel) const {
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
    Sample sample(unsigned char const* row, std::int64_t element, int channel) const {
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
inline void walkRow(RowPlan const& plan, unsigned char* dst, Cell cell) {
    std::int64_t const whole = plan.whole;
    InsideRow const inside(plan);
    for (std::int64_t i = 0; i < whole; ++i) {
        // All channels first: behind a store, what they share would have to be loaded anew.
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

}  // namespace ox::impl
