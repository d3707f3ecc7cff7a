#include "ox_cv/ox_impl_blend_planes.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "ox_cv/ox_impl_bilinear_rows.h"
#include "ox_cv/ox_impl_state.h"
#include "rows/rows_routines.h"

namespace ox::impl {

bool describeBilinearBlend(RowPlan const& row, ScaleElement element, std::int32_t const* table,
                           rows::BlendAxis& axis) {
    if (element.channels == 0 || element.bits != 8 ||
        row.whole * element.channels != row.dst_samples) {
        return false;
    }
    axis.channels = static_cast<std::size_t>(element.channels);
    axis.row_bytes = static_cast<std::size_t>(row.src_samples);
    axis.pixels.clear();
    axis.pixels.reserve(static_cast<std::size_t>(row.whole));
    for (std::int64_t i = 0; i < row.whole; ++i) {
        ColumnCut const cut = columnCut(table[i], row.src_width);
        axis.pixels.push_back({static_cast<std::int32_t>(cut.left),
                               static_cast<std::int32_t>(cut.right),
                               static_cast<std::uint16_t>(cut.weight)});
    }
    return true;
}

bool BlendPlane::plan(rows::BlendAxis const& axis, Place here) {
    rows::Routines const& routines = rows::routines();
    std::size_t const bytes = axis.pixels.size() * axis.channels;
    if (routines.blend.compile_blend == nullptr || bytes < routines.blend.least_row_bytes) {
        return false;
    }
    _copies = planPixels(axis, here);
    if (!_copies &&
        !withMemory(here, [&] { return routines.blend.compile_blend(axis, _program); })) {
        return false;
    }
    _bytes = bytes;
    for (Buffer& kept : _rows) {
        kept.resize(_copies ? bytes : _program.row_room, false);
    }
    restart();
    return true;
}

/// Copies pixels where none has a neighbour with a weight.
bool BlendPlane::planPixels(rows::BlendAxis const& axis, Place here) {
    bool const single = std::all_of(axis.pixels.begin(), axis.pixels.end(),
                                    [](rows::PixelPair const& pair) { return pair.weight == 0; });
    std::vector<std::int32_t> offsets;
    if (!single) {
        return false;
    }
    resizeTable(offsets, static_cast<std::int64_t>(axis.pixels.size()), here);
    auto const channels = static_cast<std::int32_t>(axis.channels);
    std::transform(axis.pixels.begin(), axis.pixels.end(), offsets.begin(),
                   [=](rows::PixelPair const& pair) { return pair.left * channels; });
    return rows::routines().compile_pixels(
        {offsets.data(), offsets.size(), axis.channels, axis.row_bytes}, _pixels);
}

void BlendPlane::blend(unsigned char const* src, unsigned char* dst) {
    if (_copies) {
        rows::routines().copy_pixels(_pixels, src, dst);
    } else {
        rows::routines().blend.blend_columns(_program, src, dst);
    }
}

void BlendPlane::columns(unsigned char const* src, unsigned char* dst) {
    if (_copies) {
        return blend(src, dst);
    }
    blend(src, _rows[0].data);
    std::memcpy(dst, _rows[0].data, _bytes);
}

/// The columns of a row, blended now if they aren't kept. The row of the other number stays.
unsigned char const* BlendPlane::keep(unsigned char const* src, std::int64_t row,
                                      std::int64_t other) {
    for (std::size_t i = 0; i < _rows.size(); ++i) {
        if (_kept[i] == row) {
            return _rows[i].data;
        }
    }
    std::size_t const place = _kept[0] == other ? 1 : 0;
    blend(src, _rows[place].data);
    _kept[place] = row;
    return _rows[place].data;
}

void BlendPlane::columnsAndRows(unsigned char const* upper, std::int64_t upper_row,
                                unsigned char const* lower, std::int64_t lower_row,
                                std::uint32_t weight, unsigned char* dst) {
    unsigned char const* const top = keep(upper, upper_row, lower_row);
    unsigned char const* const bottom = keep(lower, lower_row, upper_row);
    rows::routines().blend.blend_rows(top, bottom, static_cast<std::uint16_t>(weight), _bytes, dst);
}

bool blendRowsByVectors(unsigned char const* upper, unsigned char const* lower,
                        std::uint32_t weight, std::int64_t bytes, unsigned char* dst) {
    rows::Routines const& routines = rows::routines();
    if (routines.blend.blend_rows == nullptr ||
        bytes < static_cast<std::int64_t>(routines.blend.least_row_bytes)) {
        return false;
    }
    routines.blend.blend_rows(upper, lower, static_cast<std::uint16_t>(weight),
                              static_cast<std::size_t>(bytes), dst);
    return true;
}

}  // namespace ox::impl
