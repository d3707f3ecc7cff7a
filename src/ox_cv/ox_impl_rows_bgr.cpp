// Rows among gray, packed, planar and float B,G,R.

#include <algorithm>
#include <array>
#include <cstring>

#include "ox_cv/ox_impl_format_converter.h"

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

}  // namespace

void grayToBgr24(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (std::int64_t x = 0; dst[0] != nullptr && x < width; ++x) {
        std::fill_n(dst[0] + 3 * x, 3, src[x]);
    }
}

void swapRedBlue(RowData const* const* rows, RowData& dst, int width, ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (std::int64_t x = 0; dst[0] != nullptr && x < width; ++x) {
        std::array<Byte, 3> const swapped{src[3 * x + 2], src[3 * x + 1], src[3 * x]};
        std::copy(swapped.begin(), swapped.end(), dst[0] + 3 * x);
    }
}

void bgr24ToBgrPlanar(RowData const* const* rows, RowData& dst, int width,
                      ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (int c = 0; c < 3; ++c) {
        for (std::int64_t x = 0; dst[c] != nullptr && x < width; ++x) {
            dst[c][x] = src[3 * x + c];
        }
    }
}

void planarToPacked(RowData const* const* rows, RowData& dst, int width,
                    ImplFormatConverter const*) {
    RowData const src = *rows[0];
    for (std::int64_t x = 0; dst[0] != nullptr && x < width; ++x) {
        for (int c = 0; c < 3; ++c) {
            dst[0][3 * x + c] = src[c][x];
        }
    }
}

void bgr24ToBgr32f(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (std::int64_t i = 0; dst[0] != nullptr && i < std::int64_t{3} * width; ++i) {
        storeFloat(dst[0], i, src[i]);
    }
}

void bgr24ToBgr32fPlanar(RowData const* const* rows, RowData& dst, int width,
                         ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (int c = 0; c < 3; ++c) {
        for (std::int64_t x = 0; dst[c] != nullptr && x < width; ++x) {
            storeFloat(dst[c], x, src[3 * x + c]);
        }
    }
}

void bgr32fToBgr24(RowData const* const* rows, RowData& dst, int width,
                   ImplFormatConverter const*) {
    Byte const* const src = (*rows[0])[0];
    for (std::int64_t i = 0; dst[0] != nullptr && i < std::int64_t{3} * width; ++i) {
        dst[0][i] = lowByte(loadFloat(src, i));
    }
}

}  // namespace ox
