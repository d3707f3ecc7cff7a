// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/image.h"

#include <algorithm>

namespace model {

namespace {

// How a plane follows from the image's size: divisors of width and height, bytes of one pixel.
struct Rule {
    int x_divisor;
    int y_divisor;
    int pixel_bytes;
};

bool isPairPacked(int format) {
    return format == Yuyv || format == Uyvy;
}

std::vector<Rule> rulesOf(int format) {
    switch (format) {
        case Gray8:
            return {{1, 1, 1}};
        case Rgb24:
        case Bgr24:
        case Yuv444:
        case C3_8u:
            return {{1, 1, 3}};
        case RgbPlanar:
        case BgrPlanar:
        case Yuv444Planar:
            return {{1, 1, 1}, {1, 1, 1}, {1, 1, 1}};
        case I420:
        case Yv12:
            return {{1, 1, 1}, {2, 2, 1}, {2, 2, 1}};
        case Nv12:
        case Nv21:
            return {{1, 1, 1}, {2, 2, 2}};
        case Yv16:
            return {{1, 1, 1}, {2, 1, 1}, {2, 1, 1}};
        case Nv16:
            return {{1, 1, 1}, {2, 1, 2}};
        case Yuyv:
        case Uyvy:
        case C2_8u:
        case C1_16u:
            return {{1, 1, 2}};
        case C4_8u:
        case C1_32u:
        case Gray32f:
            return {{1, 1, 4}};
        case Bgr32f:
            return {{1, 1, 12}};
        case Bgr32fPlanar:
            return {{1, 1, 4}, {1, 1, 4}, {1, 1, 4}};
        default:
            return {};
    }
}

int divideUp(int value, int divisor) {
    return (value + divisor - 1) / divisor;
}

// First byte of column x in a row of a plane.
std::size_t columnByte(int format, Rule const& rule, int x) {
    int const column = isPairPacked(format) ? x / 2 * 2 : x / rule.x_divisor;
    return static_cast<std::size_t>(column) * static_cast<std::size_t>(rule.pixel_bytes);
}

// Calls copy(byte of the large image, byte of the block, count) for each row of each plane.
template <class Large, class Block, class Copy>
void walkBlock(Large& large, Block& block, int x, int y, Copy copy) {
    auto const rules = rulesOf(block.format);
    for (std::size_t p = 0; p < rules.size(); ++p) {
        auto& outer = large.planes[p];
        auto& inner = block.planes[p];
        for (int row = 0; row < inner.rows; ++row) {
            auto const outer_row = static_cast<std::size_t>(y / rules[p].y_divisor + row);
            copy(&outer.bytes[outer_row * outer.row_bytes + columnByte(block.format, rules[p], x)],
                 &inner.bytes[static_cast<std::size_t>(row) * inner.row_bytes], inner.row_bytes);
        }
    }
}

}  // namespace

std::vector<PlaneShape> planesOf(Geometry geometry) {
    std::vector<PlaneShape> planes;
    for (Rule const& rule : rulesOf(geometry.format)) {
        int const width = isPairPacked(geometry.format) ? divideUp(geometry.width, 2) * 2
                                                        : divideUp(geometry.width, rule.x_divisor);
        planes.push_back(
            {width, divideUp(geometry.height, rule.y_divisor),
             static_cast<std::size_t>(width) * static_cast<std::size_t>(rule.pixel_bytes)});
    }
    return planes;
}

int planeRow(Geometry geometry, PlaneShape const& plane, int row) {
    return plane.rows < geometry.height ? row / 2 : row;
}

bool hasRow(Geometry geometry, PlaneShape const& plane, int row) {
    return plane.rows == geometry.height || row % 2 == 0;
}

SourceRow Image::shown(int row) const {
    SourceRow result;
    for (std::size_t p = 0; p < planes.size(); ++p) {
        Plane const& plane = planes[p];
        int const own = planeRow(geometry(), {plane.width, plane.rows, plane.row_bytes}, row);
        result[p] = std::span(plane.bytes)
                        .subspan(static_cast<std::size_t>(own) * plane.row_bytes, plane.row_bytes);
    }
    return result;
}

Row Image::writable(int row) {
    Row result;
    for (std::size_t p = 0; p < planes.size(); ++p) {
        Plane& plane = planes[p];
        PlaneShape const shape{plane.width, plane.rows, plane.row_bytes};
        if (!hasRow(geometry(), shape, row)) {
            continue;
        }
        auto const own = static_cast<std::size_t>(planeRow(geometry(), shape, row));
        result[p] = std::span(plane.bytes).subspan(own * plane.row_bytes, plane.row_bytes);
    }
    return result;
}

Image makeImage(int format, int width, int height, std::uint8_t fill) {
    Image image{format, width, height, {}};
    for (PlaneShape const& shape : planesOf(image.geometry())) {
        image.planes.push_back({shape.width, shape.rows, shape.row_bytes,
                                std::vector<std::uint8_t>(
                                    static_cast<std::size_t>(shape.rows) * shape.row_bytes, fill)});
    }
    return image;
}

Image crop(Image const& image, int x, int y, int width, int height) {
    Image block = makeImage(image.format, width, height, 0);
    walkBlock(image, block, x, y,
              [](std::uint8_t const* outer, std::uint8_t* inner, std::size_t count) {
                  std::copy_n(outer, count, inner);
              });
    return block;
}

void paste(Image const& block, Image& image, int x, int y) {
    walkBlock(image, block, x, y,
              [](std::uint8_t* outer, std::uint8_t const* inner, std::size_t count) {
                  std::copy_n(inner, count, outer);
              });
}

}  // namespace model
