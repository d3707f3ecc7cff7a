// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Lays one photograph out on a sheet again and again, to compare the library's ways with it by
/// eye: what both backends do stands in pairs, the pipeline's on the left.
///
///     contact_sheet 451x300 126,82,96,64 < photo.bgr24 > sheet.bgr24
///     contact_sheet --size
///
/// Both files are bare frames of FRAME_BGR24. The region is shown enlarged; the size of the sheet
/// is always the same, and the second form prints it.

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <exception>
#include <numbers>
#include <string>

#include "glyphs.h"
#include "ox_core/ox_core.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"

namespace {

constexpr int margin = 16;
constexpr int captionHeight = 24;
constexpr int captionScale = 2;
constexpr int frameWidth = 2;  ///< of the line around the region
constexpr ox::Size cellSize{384, 256};
constexpr ox::Size thumbnailSize{96, 64};
constexpr int columns = 4;
constexpr int rows = 7;
constexpr ox::Size sheetSize{columns * (cellSize.width + margin) + margin,
                             rows*(cellSize.height + captionHeight + margin) + margin};
constexpr double tilt = 20;  ///< degrees

struct Colour {
    unsigned char bgr[3];
};
constexpr unsigned char paperGray = 34;
constexpr unsigned char inkGray = 225;
constexpr Colour paper{{paperGray, paperGray, paperGray}};
constexpr Colour marker{{60, 190, 255}};

struct Method {
    ox::ResizeMethod method;
    char const* name;
};
constexpr Method methods[]{{ox::ResizeNearestNeighbour, "NEAREST"},
                           {ox::ResizeBilinear, "BILINEAR"},
                           {ox::ResizeArea, "AREA"}};

/// A frame on the CPU.
ox::Frame makeFrame(ox::FrameFormat format, ox::Size size) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext::cpuContext(), 0);
    frame.setZero();
    return frame;
}

ox::Frame scaled(ox::ICvBackend& backend, ox::Frame const& frame, ox::Size size,
                 ox::ResizeMethod method) {
    ox::Frame result = makeFrame(frame.format(), size);
    backend.setIntProperty(ox::PropertyResizeMethod, static_cast<int>(method));
    backend.resize(frame, result, ox::emptyRoi(), ox::emptyRoi());
    return result;
}

ox::Frame filtered(ox::Frame const& frame, ox::Size size, ox::IKernel& kernel,
                   ox::ScalerPrecision precision) {
    ox::ScalerConvolutional scaler;
    scaler.reuse(kernel, frame, size, precision);
    ox::Frame result;
    ox::produceFrame(scaler, result);
    return result;
}

/// The region named is the whole frame: without one NV12 is converted to BGR24 in whole blocks
/// only.
ox::Frame converted(ox::ICvBackend& backend, ox::Frame const& frame, ox::FrameFormat format) {
    ox::Frame result = makeFrame(format, frame.size());
    backend.colorCvt(frame, result, {0, 0, frame.width(), frame.height()});
    return result;
}

/// Turned counter-clockwise about its middle.
ox::Frame rotated(ox::CvBackendSimd& backend, ox::Frame const& frame, ox::ResizeMethod method) {
    auto const c = static_cast<float>(std::cos(tilt * std::numbers::pi / 180));
    auto const s = static_cast<float>(std::sin(tilt * std::numbers::pi / 180));
    float const x = static_cast<float>(frame.width() - 1) / 2;
    float const y = static_cast<float>(frame.height() - 1) / 2;
    // From the source to the destination; y runs downwards.
    float const matrix[2][3] = {{c, s, x - c * x - s * y}, {-s, c, y + s * x - c * y}};
    ox::Frame result = makeFrame(frame.format(), frame.size());
    backend.setIntProperty(ox::PropertyWarpMethod, static_cast<int>(method));
    backend.warpAffine(frame, result, matrix, ox::emptyRoi(), false);
    return result;
}

/// Text in the ink's gray on the paper's.
ox::Frame rendered(ox::ICvBackend& backend, std::string const& text) {
    int const advance = glyphs::columns + 1;
    ox::Size const size{static_cast<int>(text.size()) * advance, glyphs::rows};
    ox::Frame small = makeFrame(ox::FRAME_GRAY8, size);
    for (int x = 0; x < size.width; ++x) {
        glyphs::Glyph const& glyph = glyphs::find(text[static_cast<std::size_t>(x / advance)]);
        for (int y = 0; y < size.height; ++y) {
            unsigned const bits = unsigned{glyph.bits[static_cast<std::size_t>(y)]} << 1U;
            bool const set = (bits >> (glyphs::columns - x % advance) & 1U) != 0;
            small.planeData(0)[y * small.layout().plane[0].stride + x] = set ? inkGray : paperGray;
        }
    }
    return scaled(backend, small, {captionScale * size.width, captionScale * size.height},
                  ox::ResizeNearestNeighbour);
}

class Sheet {
  public:
    explicit Sheet(ox::ICvBackend& backend)
        : _backend(backend), _frame(makeFrame(ox::FRAME_BGR24, sheetSize)) {
        fill(_frame, paper, {0, 0, sheetSize.width, sheetSize.height});
    }

    ox::Frame const& frame() const { return _frame; }

    /// Enlarges one pixel to the region, as far as it lies in the frame.
    void fill(ox::Frame& frame, Colour colour, ox::Rect region) {
        region.crop(frame.size());
        if (region.empty()) {
            return;
        }
        unsigned char* plane = colour.bgr;
        ox::Frame const pixel =
            ox::Frame::wrap(ox::FrameLayout(ox::FRAME_BGR24, {1, 1}, 1), &plane);
        _backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeNearestNeighbour);
        _backend.resize(pixel, frame, ox::emptyRoi(), region);
    }

    /// Draws a line around a region, outside of it.
    void outline(ox::Frame& frame, Colour colour, ox::Rect region) {
        int const w = region.width + 2 * frameWidth;
        int const h = region.height + 2 * frameWidth;
        int const x = region.x - frameWidth;
        int const y = region.y - frameWidth;
        fill(frame, colour, {x, y, w, frameWidth});
        fill(frame, colour, {x, region.y + region.height, w, frameWidth});
        fill(frame, colour, {x, y, frameWidth, h});
        fill(frame, colour, {region.x + region.width, y, frameWidth, h});
    }

    /// Fills a cell with a picture, scaled unless it fits, and writes below what it is.
    void place(int column, int row, ox::Frame const& picture, std::string const& caption) {
        int const x = margin + column * (cellSize.width + margin);
        int const y = margin + row * (cellSize.height + captionHeight + margin);
        _backend.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea);
        _backend.resize(picture, _frame, ox::emptyRoi(), {x, y, cellSize.width, cellSize.height});
        ox::Frame const text = rendered(_backend, caption);
        ox::Frame target =
            ox::getRegion(_frame, {x, y + cellSize.height + 8, text.width(), text.height()});
        _backend.colorCvt(text, target, ox::emptyRoi());
    }

  private:
    ox::ICvBackend& _backend;
    ox::Frame _frame;
};

/// A backend with the name that captions give it.
struct NamedBackend {
    ox::ICvBackend& backend;
    std::string name;
};

ox::Frame outlined(Sheet& sheet, ox::Frame const& photo, ox::Rect region) {
    ox::Frame marked;
    photo.copyTo(marked);
    sheet.outline(marked, marker, region);
    return marked;
}

/// The vector backend takes NV12 of even sides only.
ox::Frame evened(ox::Frame frame) {
    return ox::getRegion(frame, {0, 0, frame.width() / 2 * 2, frame.height() / 2 * 2});
}

void layOutColours(Sheet& sheet, int column, NamedBackend const& by, ox::Frame const& photo) {
    ox::Frame const nv12 = converted(by.backend, evened(photo), ox::FRAME_NV12);
    ox::Frame const gray = converted(by.backend, photo, ox::FRAME_GRAY8);
    sheet.place(column, 1, converted(by.backend, nv12, ox::FRAME_BGR24),
                "NV12 AND BACK, " + by.name);
    sheet.place(column + 2, 1, converted(by.backend, gray, ox::FRAME_BGR24), "GRAY, " + by.name);
}

/// Three pairs of enlargements and three of thumbnails, two pairs to a row.
void layOutSizes(Sheet& sheet, int column, NamedBackend const& by, ox::Frame const& photo,
                 ox::Frame const& crop) {
    constexpr int firstCell = 2 * columns;
    int cell = firstCell + column;
    auto const place = [&](ox::Frame const& picture, std::string const& caption) {
        sheet.place(cell % columns, cell / columns, picture, caption + ", " + by.name);
        cell += 2;
    };
    for (auto const& [method, name] : methods) {
        place(scaled(by.backend, crop, cellSize, method), std::string("ENLARGED, ") + name);
    }
    for (auto const& [method, name] : methods) {
        ox::Frame const small = scaled(by.backend, photo, thumbnailSize, method);
        place(scaled(by.backend, small, cellSize, ox::ResizeNearestNeighbour),
              std::string("SHRUNK, ") + name);
    }
}

/// Thumbnails by each filter, on the last two rows.
void layOutFilters(Sheet& sheet, ox::ICvBackend& enlarger, ox::Frame const& photo) {
    int cell = (rows - 2) * columns;
    auto const place = [&](ox::IKernel& kernel, ox::ScalerPrecision precision, char const* name) {
        ox::Frame const small = filtered(photo, thumbnailSize, kernel, precision);
        sheet.place(cell % columns, cell / columns,
                    scaled(enlarger, small, cellSize, ox::ResizeNearestNeighbour),
                    std::string("SHRUNK, ") + name);
        ++cell;
    };
    ox::BoxKernel box;
    ox::TriangleKernel triangle;
    ox::MitchellNetravaliKernel mitchell;
    ox::CatmullRomKernel catmull_rom;
    ox::Lanczos3Kernel lanczos;
    place(box, ox::OX_SCALER_FIXED_POINT_16S, "BOX");
    place(triangle, ox::OX_SCALER_FIXED_POINT_16S, "TRIANGLE");
    place(mitchell, ox::OX_SCALER_FIXED_POINT_16S, "MITCHELL");
    place(catmull_rom, ox::OX_SCALER_FIXED_POINT_16S, "CATMULL ROM");
    place(lanczos, ox::OX_SCALER_FIXED_POINT_16S, "LANCZOS");
    place(lanczos, ox::OX_SCALER_FIXED_POINT_8S, "LANCZOS, EIGHT BITS");
}

ox::Rect nearestPixels(ox::PictureBox const& box) {
    auto const x = static_cast<int>(std::lround(box.left));
    auto const y = static_cast<int>(std::lround(box.top));
    return {x, y, static_cast<int>(std::lround(box.right)) - x,
            static_cast<int>(std::lround(box.bottom)) - y};
}

ox::PictureBox boxOf(ox::Rect const& rect) {
    return {static_cast<double>(rect.x), static_cast<double>(rect.y),
            static_cast<double>(rect.x + rect.width), static_cast<double>(rect.y + rect.height)};
}

/// A column of the photograph as a network would get it, with the region carried there; and that
/// box carried back. On the last two cells.
void layOutInput(Sheet& sheet, ox::Frame const& photo, ox::Rect region) {
    ox::TensorRecipe recipe;
    recipe.width = cellSize.width;
    recipe.height = cellSize.height;
    recipe.fit = ox::TENSOR_FIT_LETTERBOX;
    recipe.colour = ox::TENSOR_COLOUR_BGR;
    recipe.layout = ox::TENSOR_FORMAT_NHWC;
    recipe.element = ox::TENSOR_UINT_8;
    std::fill_n(recipe.bars, 3, static_cast<unsigned char>(114));
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Frame input = makeFrame(ox::FRAME_BGR24, cellSize);
    ox::Rect part{region.x - region.width / 2, 0, 2 * region.width, photo.height()};
    part.crop(photo.size());
    ox::PictureMapping const mapping =
        to_tensor.run(photo, part, input.planeData(0), input.layout().plane[0].stride, 0);
    ox::Rect const box = nearestPixels(mapping.toInput(boxOf(region)));
    sheet.outline(input, marker, box);
    sheet.place(columns - 2, rows - 1, input, "INPUT OF A NETWORK");
    sheet.place(columns - 1, rows - 1,
                outlined(sheet, photo, nearestPixels(mapping.toSource(boxOf(box)))),
                "THE BOX CARRIED BACK");
}

void layOut(Sheet& sheet, ox::CvBackendBase& pipeline, ox::CvBackendSimd& vectors, ox::Frame photo,
            ox::Rect region) {
    sheet.place(0, 0, outlined(sheet, photo, region), "ORIGINAL");
    sheet.place(1, 0, rotated(vectors, photo, ox::ResizeNearestNeighbour), "ROTATED, NEAREST");
    sheet.place(2, 0, rotated(vectors, photo, ox::ResizeBilinear), "ROTATED, BILINEAR");
    ox::Frame const crop = ox::getRegion(photo, region);
    sheet.place(
        3, 0,
        rotated(vectors, scaled(vectors, crop, cellSize, ox::ResizeBilinear), ox::ResizeBilinear),
        "ENLARGED AND ROTATED");
    for (int column = 0;
         auto const& by : {NamedBackend{pipeline, "PIPELINE"}, NamedBackend{vectors, "VECTORS"}}) {
        layOutColours(sheet, column, by, photo);
        layOutSizes(sheet, column, by, photo, crop);
        ++column;
    }
    layOutFilters(sheet, pipeline, photo);
    layOutInput(sheet, photo, region);
}

bool readRows(ox::Frame& frame) {
    ox::FramePlane const& plane = frame.layout().plane[0];
    for (std::int64_t y = 0; y < plane.height; ++y) {
        unsigned char* const row = frame.planeData(0) + y * plane.stride;
        if (std::fread(row, 1, plane.rowBytes, stdin) != plane.rowBytes) {
            return false;
        }
    }
    return true;
}

bool writeRows(ox::Frame const& frame) {
    ox::FramePlane const& plane = frame.layout().plane[0];
    for (std::int64_t y = 0; y < plane.height; ++y) {
        unsigned char const* const row = frame.planeData(0) + y * plane.stride;
        if (std::fwrite(row, 1, plane.rowBytes, stdout) != plane.rowBytes) {
            return false;
        }
    }
    return std::fflush(stdout) == 0;
}

int makeSheet(ox::Size size, ox::Rect region) {
    ox::Frame photo = makeFrame(ox::FRAME_BGR24, size);
    if (!readRows(photo)) {
        std::fputs("contact_sheet: the photograph is truncated\n", stderr);
        return 1;
    }
    ox::CvBackendBase pipeline;
    ox::CvBackendSimd vectors;
    Sheet sheet(pipeline);
    layOut(sheet, pipeline, vectors, photo, region);
    return writeRows(sheet.frame()) ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc == 2 && std::strcmp(argv[1], "--size") == 0) {
        std::printf("%dx%d\n", sheetSize.width, sheetSize.height);
        return 0;
    }
    ox::Size size;
    ox::Rect region;
    if (argc != 3 || std::sscanf(argv[1], "%dx%d", &size.width, &size.height) != 2 ||
        std::sscanf(argv[2], "%d,%d,%d,%d", &region.x, &region.y, &region.width, &region.height) !=
            4) {
        std::fputs("usage: contact_sheet WxH X,Y,W,H < photo.bgr24 > sheet.bgr24\n", stderr);
        return 2;
    }
    try {
        return makeSheet(size, region);
    } catch (std::exception const& error) {
        std::fprintf(stderr, "contact_sheet: %s\n", error.what());
        return 1;
    }
}
