// Rows among gray, packed, planar and float B,G,R.

#include <algorithm>
#include <array>
#include <cstring>

#include "ox_cv/ox_impl_format_converter.h"
#include "rows/colour/channels.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

using Byte = unsigned char;

/// Rows of wrapped frames needn't be aligned.
void storeFloat(Byte* row, std::int64_t index, float value) {
    std::memcpy(row + index * std::int64_t{sizeof value}, &value, sizeof value);
}

float loadFloat(Byte const* row, std::int64_t index) {
    float value = 0;
    std::memcpy(&value, row + index * std::int64_t{sizeof value}, sizeof value);
    return value;
}

/// The low byte of the number truncated to 32 bits: it saturates there and not at 255, on purpose.
/// Negative numbers and NaN give 0.
Byte lowByte(float value) {
    if (!(value > 0.0F)) {
        return 0;
    }
    constexpr float limit = 4294967296.0F;
    return static_cast<Byte>(value < limit ? static_cast<std::uint32_t>(value) : ~0U);
}

/// Numbers from 0 to 255.
void bytesToFloats(Byte const* src, std::size_t count, Byte* dst) {
    rows::Routines const& routines = rows::routines();
    if (routines.colour.bytes_to_floats != nullptr && count >= routines.colour.least_floats) {
        return routines.colour.bytes_to_floats(src, count, dst);
    }
    for (std::size_t i = 0; i < count; ++i) {
        storeFloat(dst, static_cast<std::int64_t>(i), src[i]);
    }
}

/// 0 for widths that aren't positive.
std::size_t pixelsOf(int width) {
    return static_cast<std::size_t>(std::max(width, 0));
}

/// Channels of a few pixels.
using Room = std::array<Byte, 1024>;

/// Calls visit(first, pixels, planes) for runs of a row whose channels have been taken apart.
template <class Visitor>
void forEachSplitRun(Byte const* src, std::size_t width, Visitor visit) {
    std::array<Room, 3> room;
    std::array<Byte*, 3> const planes{room[0].data(), room[1].data(), room[2].data()};
    for (std::size_t first = 0; first < width; first += Room().size()) {
        std::size_t const pixels = std::min(width - first, Room().size());
        rows::splitChannels(src + 3 * first, pixels, 3, planes.data());
        visit(first, pixels, planes);
    }
}

}  // namespace

void grayToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    if (dst[0] != nullptr) {
        rows::repeatThrice((*rows[0])[0], pixelsOf(width), dst[0]);
    }
}

void swapRedBlue(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    if (dst[0] != nullptr) {
        rows::swapRedBlue((*rows[0])[0], pixelsOf(width), dst[0]);
    }
}

void bgr24ToBgrPlanar(RowData const* const* rows, RowData& dst, int width,
                      ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    if (dst[0] != nullptr && dst[1] != nullptr && dst[2] != nullptr) {
        return rows::splitChannels(src, pixelsOf(width), 3, dst.plane);
    }
    for (int c = 0; c < 3; ++c) {
        for (std::int64_t x = 0; dst[c] != nullptr && x < width; ++x) {
            dst[c][x] = src[3 * x + c];
        }
    }
}

void planarToPacked(RowData const* const* rows, RowData& dst, int width,
                    ImplFormatConverter const*) {
    if (dst[0] != nullptr) {
        rows::mergeChannels((*rows[0]).plane, pixelsOf(width), 3, dst[0]);
    }
}

void bgr24ToBgr32f(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    if (dst[0] != nullptr) {
        bytesToFloats((*rows[0])[0], 3 * pixelsOf(width), dst[0]);
    }
}

void bgr24ToBgr32fPlanar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    forEachSplitRun((*rows[0])[0], pixelsOf(width),
                    [&](std::size_t first, std::size_t pixels, auto const& planes) {
                        for (int c = 0; c < 3; ++c) {
                            if (dst[c] != nullptr) {
                                bytesToFloats(planes[static_cast<std::size_t>(c)], pixels,
                                              dst[c] + first * sizeof(float));
                            }
                        }
                    });
}

void bgr32fToBgr24(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    if (dst[0] == nullptr) {
        return;
    }
    Byte const* const src = (*rows[0])[0];
    std::size_t const count = 3 * pixelsOf(width);
    rows::Routines const& routines = rows::routines();
    if (routines.colour.floats_to_low_bytes != nullptr && count >= routines.colour.least_floats) {
        return routines.colour.floats_to_low_bytes(src, count, dst[0]);
    }
    for (std::size_t i = 0; i < count; ++i) {
        dst[0][i] = lowByte(loadFloat(src, static_cast<std::int64_t>(i)));
    }
}

}  // namespace ox
