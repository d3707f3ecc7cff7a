// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "rows/colour/channels.h"

#include <algorithm>
#include <array>

#include "rows/rows_routines.h"

namespace ox::rows {

void splitChannels(std::uint8_t const* row, std::size_t pixels, std::size_t channels,
                   std::uint8_t* const* planes) {
    switch (channels) {
        case 1:
            std::copy_n(row, pixels, planes[0]);
            return;
        case 2:
            return routines().colour.split_two(row, pixels, planes);
        case 3:
            return routines().colour.split_three(row, pixels, planes);
        default:
            for (std::size_t i = 0; i < pixels; ++i) {
                for (std::size_t c = 0; c < channels; ++c) {
                    planes[c][i] = row[i * channels + c];
                }
            }
    }
}

void mergeChannels(std::uint8_t const* const* planes, std::size_t pixels, std::size_t channels,
                   std::uint8_t* row) {
    switch (channels) {
        case 1:
            std::copy_n(planes[0], pixels, row);
            return;
        case 2:
            return routines().colour.merge_two(planes, pixels, row);
        case 3:
            return routines().colour.merge_three(planes, pixels, row);
        default:
            for (std::size_t i = 0; i < pixels; ++i) {
                for (std::size_t c = 0; c < channels; ++c) {
                    row[i * channels + c] = planes[c][i];
                }
            }
    }
}

void splitToFloats(std::uint8_t const* row, std::size_t pixels, std::uint8_t* const* planes) {
    ColourRoutines const& colour = routines().colour;
    std::array<std::array<std::uint8_t, 1024>, 3> room;
    std::array<std::uint8_t*, 3> const bytes{room[0].data(), room[1].data(), room[2].data()};
    for (std::size_t first = 0; first < pixels; first += room[0].size()) {
        std::size_t const count = std::min(pixels - first, room[0].size());
        colour.split_three(row + 3 * first, count, bytes.data());
        for (std::size_t c = 0; c < 3; ++c) {
            if (planes[c] != nullptr) {
                colour.bytes_to_floats(bytes[c], count, planes[c] + first * sizeof(float));
            }
        }
    }
}

}  // namespace ox::rows
