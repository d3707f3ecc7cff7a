// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/area/columns.h"

namespace ox::rows {

/// The loops that define the bytes.
template <class Direction>
struct AreaColumns::PlainLoops {
    using Function = AreaColumns::Function;

    template <class Sample, int Channels>
    static void row(AreaColumns& columns, std::uint8_t const* src, std::uint8_t* dst) {
        AreaAxis const axis = columns._axis;
        walkRow<Sample, Channels>(columns._row, dst, [=](auto reader, std::int64_t i, int c) {
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

/// Vector code serves rows of bytes without a partial element at the end.
bool AreaColumns::compile(Element element, bool up) {
    int const channels = element.channels;
    if (element.bits != 8 || _row.dst_samples % channels != 0 || _row.src_samples % channels != 0 ||
        _row.src_samples < channels) {
        return false;
    }
    std::int64_t const src_pixels = _row.src_samples / channels;
    WholeRow const whole{_row.dst_samples / channels, src_pixels - 1, _row.entries - 1};
    TapRow const row{static_cast<std::size_t>(channels), static_cast<std::size_t>(src_pixels)};
    if (up) {
        BlendAxis axis;
        axis.channels = row.channels;
        axis.row_bytes = row.channels * row.pixels;
        return describeAreaBlend(_axis, whole, axis.pixels) && _blend.compile(axis);
    }
    TapAxis axis;
    return describeAreaTaps(_axis, whole, axis) && _taps.compile(axis, row);
}

void AreaColumns::plan(RowPlan const& row, Element element, AreaAxis const& axis, bool up) {
    _row = row;
    _axis = axis;
    if (!compile(element, up)) {
        _routine = up ? pickRowFunction<PlainLoops<AreaUp>>(element)
                      : pickRowFunction<PlainLoops<AreaDown>>(element);
    } else if (up) {
        _routine = [](AreaColumns& columns, std::uint8_t const* src, std::uint8_t* dst) {
            columns._blend.run(src, dst);
        };
    } else {
        _routine = [](AreaColumns& columns, std::uint8_t const* src, std::uint8_t* dst) {
            columns._taps.run(src, dst);
        };
    }
}

}  // namespace ox::rows
