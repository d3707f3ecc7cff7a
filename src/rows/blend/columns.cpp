// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/blend/columns.h"

#include <algorithm>

#include "rows/rows_routines.h"

namespace ox::rows {

namespace {

template <class Sample>
void blendSamples(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                  std::size_t samples, std::uint8_t* dst) {
    auto const count = static_cast<std::int64_t>(samples);
    for (std::int64_t i = 0; i < count; ++i) {
        storeSample<Sample>(
            dst, i, blend(loadSample<Sample>(upper, i), loadSample<Sample>(lower, i), weight));
    }
}

}  // namespace

void blendPlainRows(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                    std::size_t bytes, std::uint8_t* dst) {
    blendSamples<std::uint8_t>(upper, lower, weight, bytes, dst);
}

BlendRows* chooseBlendRows(Element element) {
    switch (element.bits) {
        case 8:
            return routines().blend.blend_rows;
        case 16:
            return blendSamples<std::uint16_t>;
        default:
            return blendSamples<std::uint32_t>;
    }
}

void takePlainBlendRoutines(BlendRoutines& routines) {
    routines.compile_blend = [](BlendAxis const& /*axis*/, BlendProgram& /*program*/) {
        return false;
    };
    routines.blend_rows = blendPlainRows;
}

/// An axis on which no second pixel has a weight is compiled to a copy of pixels.
bool ByteBlend::compile(BlendAxis const& axis) {
    _copies = std::all_of(axis.pixels.begin(), axis.pixels.end(),
                          [](PixelPair const& pair) { return pair.weight == 0; });
    if (_copies) {
        std::vector<std::int32_t> offsets;
        offsets.reserve(axis.pixels.size());
        for (PixelPair const& pair : axis.pixels) {
            offsets.push_back(pair.left * static_cast<std::int32_t>(axis.channels));
        }
        _copies = _pixels.compile(offsets, axis.channels, axis.row_bytes);
    }
    return _copies || routines().blend.compile_blend(axis, _program);
}

struct BlendColumns::PlainLoops {
    using Function = PlainLoop*;

    template <class Sample, int Channels>
    static void row(BlendColumns const& columns, std::uint8_t const* src, std::uint8_t* dst) {
        std::int32_t const* const table = columns._table;
        walkRow<Sample, Channels>(columns._row, dst, [=](auto reader, std::int64_t i, int c) {
            PixelPair const pair = pixelPair(table[reader.entry(i)], reader.width());
            return blend(reader.template sample<Sample, Channels>(src, pair.left, c),
                         reader.template sample<Sample, Channels>(src, pair.right, c), pair.weight);
        });
    }
};

/// Vector code takes bytes, in rows that hold every element.
bool BlendColumns::compile(Element element) {
    if (element.bits != 8 || _row.whole * element.channels != _row.dst_samples) {
        return false;
    }
    BlendAxis axis;
    axis.channels = static_cast<std::size_t>(element.channels);
    axis.row_bytes = static_cast<std::size_t>(_row.src_samples);
    axis.pixels.reserve(static_cast<std::size_t>(_row.whole));
    for (std::int64_t i = 0; i < _row.whole; ++i) {
        axis.pixels.push_back(pixelPair(_table[i], _row.src_width));
    }
    return _bytes.compile(axis);
}

void BlendColumns::plan(RowPlan const& row, Element element,
                        std::vector<std::int32_t> const& table) {
    _row = row;
    _table = table.data();
    _plain_loop = compile(element) ? nullptr : pickRowFunction<PlainLoops>(element);
}

bool BlendColumns::runRows(std::uint8_t const* upper, std::uint8_t const* lower,
                           std::uint16_t weight, std::uint8_t* dst) const {
    if (_plain_loop != nullptr || !_bytes.hasProgram()) {
        return false;
    }
    BlendProgram const& program = _bytes.program();
    if (program.run_rows == nullptr) {
        return false;
    }
    program.run_rows(program, upper, lower, weight, dst);
    return true;
}

void BlendColumnsAndRows::plan(RowPlan const& row, Element element,
                               std::vector<std::int32_t> const& table) {
    _columns.plan(row, element, table);
    _blend_rows = chooseBlendRows(element);
    _samples = static_cast<std::size_t>(row.dst_samples);
    for (auto& kept : _rows) {
        kept.resize(_samples * static_cast<std::size_t>(element.bits / 8));
    }
}

/// The blended columns of a source row: kept ones, or blended now. Row number `other` stays kept.
std::uint8_t const* BlendColumnsAndRows::keep(Source source, std::int64_t other) {
    for (std::size_t i = 0; i < _rows.size(); ++i) {
        if (_kept[i] == source.number) {
            return _rows[i].data();
        }
    }
    std::size_t const place = _kept[0] == other ? 1 : 0;
    _columns.run(source.row, _rows[place].data());
    _kept[place] = source.number;
    return _rows[place].data();
}

void BlendColumnsAndRows::run(Source upper, Source lower, std::uint16_t weight, std::uint8_t* dst) {
    if (!_shares_rows && weight == 0) {
        _columns.run(upper.row, dst);
        return;
    }
    if (!_shares_rows && _columns.runRows(upper.row, lower.row, weight, dst)) {
        return;
    }
    std::uint8_t const* const top = keep(upper, lower.number);
    std::uint8_t const* const bottom = weight == 0 ? top : keep(lower, upper.number);
    _blend_rows(top, bottom, weight, _samples, dst);
}

}  // namespace ox::rows
