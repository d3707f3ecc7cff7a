// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/pictures.h"

#include <algorithm>

#include "fuzz/targets.h"
#include "ox_core/ox_exception.h"

namespace ox::fuzz {

namespace {

constexpr unsigned char poison = 0xA5;

void expectPoison(unsigned char const* from, unsigned char const* to, char const* what) {
    if (std::any_of(from, to, [](unsigned char byte) { return byte != poison; })) {
        fail("%s: a byte beside the rows changed", what);
    }
}

}  // namespace

Places drawPlaces(Input& input, std::size_t unit) {
    Places places;
    std::uint8_t const kind = input.byte();
    for (std::size_t i = 0; i < places.size(); ++i) {
        if (kind % 4 == 1 && i > 0) {
            places[i] = places[0];
        } else if (kind % 4 != 0) {
            places[i].lead = static_cast<std::size_t>(input.between(0, 15)) * unit;
            places[i].gap = static_cast<std::size_t>(input.between(0, 40)) * unit;
        }
    }
    return places;
}

Picture::Picture(model::Image const& image, Places const& places) {
    if (image.planes.empty()) {
        return;
    }
    FrameLayout layout(formatOf(image.format), {image.width, image.height}, 1);
    unsigned char* addresses[4]{};
    for (std::size_t p = 0; p < image.planes.size(); ++p) {
        model::Plane const& plane = image.planes[p];
        auto const rows = static_cast<std::size_t>(plane.rows);
        Memory& memory = _memory[p];
        memory.lead = places[p].lead;
        memory.stride = plane.row_bytes + places[p].gap;
        memory.size = memory.lead + (rows == 0 ? 0 : (rows - 1) * memory.stride + plane.row_bytes);
        memory.bytes = std::make_unique<unsigned char[]>(memory.size);
        std::fill_n(memory.bytes.get(), memory.size, poison);
        addresses[p] = memory.bytes.get() + memory.lead;
        for (std::size_t y = 0; y < rows; ++y) {
            std::copy_n(plane.bytes.begin() + static_cast<std::ptrdiff_t>(y * plane.row_bytes),
                        plane.row_bytes, addresses[p] + y * memory.stride);
        }
        layout.plane[p].stride = static_cast<std::int64_t>(memory.stride);
    }
    _frame = Frame::wrap(layout, addresses);
}

void Picture::expect(model::Image const& expected, char const* what) const {
    for (std::size_t p = 0; p < expected.planes.size(); ++p) {
        model::Plane const& plane = expected.planes[p];
        Memory const& memory = _memory[p];
        unsigned char const* const end = memory.bytes.get() + memory.size;
        unsigned char const* before = memory.bytes.get();
        for (std::size_t y = 0; y < static_cast<std::size_t>(plane.rows); ++y) {
            unsigned char const* const row = memory.bytes.get() + memory.lead + y * memory.stride;
            unsigned char const* const wanted = plane.bytes.data() + y * plane.row_bytes;
            auto const [got, other] = std::mismatch(row, row + plane.row_bytes, wanted);
            if (got != row + plane.row_bytes) {
                fail("%s: plane %zu, row %zu, byte %td is %d, the model has %d", what, p, y,
                     got - row, int{*got}, int{*other});
            }
            expectPoison(before, row, what);
            before = row + plane.row_bytes;
        }
        expectPoison(before, end, what);
    }
}

void Picture::expectAs(Picture const& other, char const* what) const {
    for (std::size_t p = 0; p < _memory.size(); ++p) {
        unsigned char const* const bytes = _memory[p].bytes.get();
        if (!std::equal(bytes, bytes + _memory[p].size, other._memory[p].bytes.get())) {
            fail("%s: plane %zu differs", what, p);
        }
    }
}

int drawNamedFormat(Input& input) {
    int const drawn = input.between(1, 23);
    return drawn <= model::C1_32u ? drawn : drawn + 3;
}

int drawFormat(Input& input) {
    constexpr int unnamed[]{0, 21, 22, 23, 27, 255};
    int const drawn = input.between(0, 31);
    if (drawn <= 8) {
        return input.pick(unnamed);
    }
    return drawn - 8 <= model::C1_32u ? drawn - 8 : drawn - 8 + 3;
}

int drawSide(Input& input) {
    constexpr int usual[]{15, 16, 17, 18, 31, 32, 33, 34, 48, 63, 64, 65};
    std::uint8_t const kind = input.byte();
    if (kind < 192) {
        return 1 + kind % 12;
    }
    return kind < 240 ? input.pick(usual) : input.between(1, 80);
}

model::Geometry drawGeometry(Input& input) {
    int const format = drawNamedFormat(input);
    int const width = drawSide(input);
    return {format, width, drawSide(input)};
}

model::Image drawImage(Input& input, model::Geometry geometry) {
    model::Image image = model::makeImage(geometry.format, geometry.width, geometry.height, 0);
    for (model::Plane& plane : image.planes) {
        input.fill(plane.bytes);
    }
    return image;
}

Rect drawRegion(Input& input, Size whole) {
    if (whole.empty() || !input.oneIn(2)) {
        return {};
    }
    Rect region;
    region.x = input.between(0, whole.width - 1);
    region.y = input.between(0, whole.height - 1);
    region.width = input.between(1, whole.width - region.x);
    region.height = input.between(1, whole.height - region.y);
    return region;
}

FrameFormat formatOf(int format) {
    return static_cast<FrameFormat>(format);
}

model::Outcome outcomeOf(std::function<void()> const& operation) {
    try {
        operation();
        return {};
    } catch (Exception const& exception) {
        return {false, static_cast<int>(exception.status), exception.what()};
    }
}

void expectAlike(model::Outcome const& got, model::Outcome const& wanted, char const* what) {
    if (!(got == wanted)) {
        fail("%s: status %d, \"%s\"; the model has status %d, \"%s\"", what, got.status,
             got.text.c_str(), wanted.status, wanted.text.c_str());
    }
}

}  // namespace ox::fuzz
