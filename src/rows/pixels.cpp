// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/pixels.h"

#include <algorithm>

#include "rows/rows_routines.h"

namespace ox::rows {

bool GatheredPixels::compile(std::vector<std::int32_t> const& offsets, std::size_t pixel_bytes,
                             std::size_t row_bytes) {
    vector::GatherRoutines const& gather = routines().gather;
    _copy = gather.copy_pixels;
    return gather.compile_pixels({offsets.data(), offsets.size(), pixel_bytes, row_bytes},
                                 _program);
}

struct NearestColumns::PlainLoops {
    using Function = NearestColumns::Function;

    template <class Sample, int Channels>
    static void row(NearestColumns& columns, std::uint8_t const* src, std::uint8_t* dst) {
        std::uint16_t const* const table = columns._table;
        walkRow<Sample, Channels>(columns._row, dst, [=](auto reader, std::int64_t i, int c) {
            return reader.template sample<Sample, Channels>(src, table[reader.entry(i)], c);
        });
    }
};

bool NearestColumns::compile(Element element, std::vector<std::uint16_t> const& table) {
    if (_row.whole * element.channels != _row.dst_samples ||
        !std::is_sorted(table.begin(), table.end())) {
        return false;
    }
    auto const pixel_bytes = static_cast<std::size_t>(element.channels * element.bits / 8);
    std::vector<std::int32_t> offsets(static_cast<std::size_t>(_row.whole));
    std::transform(table.begin(), table.begin() + _row.whole, offsets.begin(),
                   [=](std::uint16_t x) { return static_cast<std::int32_t>(x * pixel_bytes); });
    return _pixels.compile(offsets, pixel_bytes,
                           static_cast<std::size_t>(_row.src_samples * element.bits / 8));
}

void NearestColumns::plan(RowPlan const& row, Element element,
                          std::vector<std::uint16_t> const& table) {
    _row = row;
    _table = table.data();
    _routine = compile(element, table) ? [](NearestColumns& columns, std::uint8_t const* src,
                                            std::uint8_t* dst) { columns._pixels.run(src, dst); }
                                       : pickRowFunction<PlainLoops>(element);
}

}  // namespace ox::rows
