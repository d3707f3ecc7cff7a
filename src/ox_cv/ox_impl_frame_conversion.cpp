#include "ox_cv/ox_impl_frame_conversion.h"

#include <utility>

#include "ox_cv/ox_row_reader.h"
#include "ox_cv/ox_row_writer.h"

namespace ox::impl {

namespace {

/// Rows of some planes of a frame, from the first ones on.
struct Rows {
    RowData planes;
    FrameLayout const& layout;

    /// Whether the rows follow one another in memory.
    bool follow() const {
        for (int i = 0; i < layout.planeCount; ++i) {
            FramePlane const& plane = layout.plane[i];
            if (planes[i] != nullptr && plane.stride != static_cast<std::int64_t>(plane.rowBytes)) {
                return false;
            }
        }
        return true;
    }

    void next() {
        for (int i = 0; i < layout.planeCount; ++i) {
            if (planes[i] != nullptr) {
                planes[i] += layout.plane[i].stride;
            }
        }
    }
};

/// Converts rows that don't depend on one another, as one long row if they follow one another.
void convertEach(ImplFormatConverter const& conversion, Rows src, Rows dst, std::int64_t count) {
    // Small enough that the bytes of so many pixels fit 32 bits by far.
    constexpr std::int64_t most_pixels = std::int64_t{1} << 27;
    std::int64_t width = conversion.width;
    if (width * count <= most_pixels && src.follow() && dst.follow()) {
        width *= count;
        count = 1;
    }
    for (std::int64_t row = 0; row < count; ++row, src.next(), dst.next()) {
        RowData const* const rows[]{&src.planes, nullptr};
        conversion.function(rows, dst.planes, static_cast<int>(width), &conversion);
    }
}

/// Converts luma and chroma of 4:2:0 separately.
void convertPlanes(ImplFormatConverter const& conversion, Rows src, Rows dst, std::int64_t height) {
    Rows luma{{}, dst.layout};
    std::swap(luma.planes[conversion.dst.y_plane], dst.planes[conversion.dst.y_plane]);
    Rows src_luma{{}, src.layout};
    src_luma.planes[conversion.src.y_plane] = src.planes[conversion.src.y_plane];
    convertEach(conversion, src_luma, luma, height);
    src.planes[conversion.src.y_plane] = nullptr;
    convertEach(conversion, src, dst, (height + 1) / 2);
}

/// Converts row by row; each row gets the row after it as well.
void convertInTurn(ImplFormatConverter const& conversion, RowReader& reader, RowWriter& writer) {
    RowReader below = reader;
    bool has_below = below.next();
    do {
        RowData const* const rows[]{&reader.rows, has_below ? &below.rows : nullptr};
        conversion.function(rows, writer.rows, conversion.width, &conversion);
        reader.next();
        has_below = has_below && below.next();
    } while (writer.next());
}

}  // namespace

void convertFrame(ImplFormatConverter const& conversion, Frame const& src, Frame& dst) {
    RowReader reader;
    RowWriter writer;
    reader.reuse(src);
    writer.reuse(dst);
    std::int64_t const height = src.height();
    if (conversion.function == nullptr || height <= 0) {
        return;
    }
    Rows const from{reader.rows, src.layout()};
    Rows const to{writer.rows, dst.layout()};
    if (conversion.joins_planes) {
        convertPlanes(conversion, from, to, height);
    } else if (conversion.joins_rows) {
        convertEach(conversion, from, to, height);
    } else {
        convertInTurn(conversion, reader, writer);
    }
}

}  // namespace ox::impl
