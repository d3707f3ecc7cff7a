// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Images of the plain model that the library is checked against. The model includes nothing of the
// library: it has its own images, and its formats are bare numbers from 1 to 26.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace model {

// The formats that the model names; the others are only counted.
enum Format : int {
    Gray8 = 1,
    Rgb24 = 2,
    RgbPlanar = 3,
    Bgr24 = 4,
    BgrPlanar = 5,
    I420 = 6,
    Yv12 = 7,
    Nv12 = 8,
    Nv21 = 9,
    Yv16 = 10,
    Yuyv = 11,
    Uyvy = 12,
    Nv16 = 13,
    Yuv444 = 14,
    Yuv444Planar = 15,
    C2_8u = 16,
    C3_8u = 17,
    C4_8u = 18,
    C1_16u = 19,
    C1_32u = 20,
    Gray32f = 24,
    Bgr32f = 25,
    Bgr32fPlanar = 26,
};

struct Geometry {
    int format = 0;
    int width = 0;
    int height = 0;
    bool operator==(Geometry const&) const = default;
};

struct PlaneShape {
    int width = 0;  // pixels, or samples of subsampled planes, in a row
    int rows = 0;
    std::size_t row_bytes = 0;
};

// The planes of an image; none for a number that is no format.
std::vector<PlaneShape> planesOf(Geometry geometry);

// The row of a plane that belongs to a row of the image.
int planeRow(Geometry geometry, PlaneShape const& plane, int row);

// Whether a plane has a row of its own at a row of the image: half-height planes at even rows only.
bool hasRow(Geometry geometry, PlaneShape const& plane, int row);

// One row of every plane. An empty span is a plane that isn't there, or gets no row on this step.
using Row = std::array<std::span<std::uint8_t>, 4>;
using SourceRow = std::array<std::span<std::uint8_t const>, 4>;

struct Plane {
    int width = 0;
    int rows = 0;
    std::size_t row_bytes = 0;
    std::vector<std::uint8_t> bytes;  // rows without gaps
};

struct Image {
    int format = 0;
    int width = 0;
    int height = 0;
    std::vector<Plane> planes;

    Geometry geometry() const { return {format, width, height}; }

    // What a reader sees at a row: subsampled planes show the same row twice.
    SourceRow shown(int row) const;

    // What is to be written at a row: subsampled planes have no row at odd ones.
    Row writable(int row);
};

Image makeImage(int format, int width, int height, std::uint8_t fill);

// A rectangle of an image. On subsampled planes its corner is rounded down and its extent up; the
// packed formats of pixel pairs start at a whole pair.
Image crop(Image const& image, int x, int y, int width, int height);

// Writes a block over the rectangle that crop() of the same corner and size would take.
void paste(Image const& block, Image& image, int x, int y);

}  // namespace model
