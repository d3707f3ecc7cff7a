// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One vector backend over several calls, with regions and shared memory, against the model.
#include <algorithm>
#include <cstring>
#include <vector>

#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "model/vector_colour.h"
#include "model/vector_planes.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_backend_simd.h"

namespace ox::fuzz {

namespace {

bool hasHalfChroma(int format) {
    return format == model::I420 || format == model::Nv12 || format == model::Nv21;
}

// Floats mostly around 0 to 255.
model::Image drawSamples(Input& input, model::Geometry geometry) {
    model::Image image = drawImage(input, geometry);
    if (model::hasFloats(geometry.format)) {
        test::Random numbers = input.random();
        for (model::Plane& plane : image.planes) {
            for (std::size_t i = 0; i + sizeof(float) <= plane.bytes.size(); i += sizeof(float)) {
                float const sample = numbers.real(-20.0F, 280.0F);
                std::memcpy(&plane.bytes[i], &sample, sizeof sample);
            }
        }
    }
    return image;
}

model::Image partOf(model::Image const& image, Rect region) {
    return region.empty() ? image
                          : model::crop(image, region.x, region.y, region.width, region.height);
}

std::size_t unitOf(int format) {
    return model::hasFloats(format) ? sizeof(float) : 1;
}

class VectorCalls {
  public:
    explicit VectorCalls(Input& input) : _input(input) {}

    void run() {
        switch (_input.between(0, 6)) {
            case 0:
            case 1:
                return colour();
            case 2:
            case 3:
                return resize();
            case 4:
                return warp();
            case 5:
                return shared();
            default:
                return anything();
        }
    }

  private:
    void colour() {
        constexpr auto const& routes = test::colourRoutes;
        test::RoutedPair const& pair = _input.pick(routes);
        int const from = static_cast<int>(pair.src);
        int const to = static_cast<int>(pair.dst);
        model::Geometry geometry{from, drawSide(_input), drawSide(_input)};
        if (hasHalfChroma(from)) {
            geometry.width += geometry.width % 2;
            geometry.height += geometry.height % 2;
        }
        Rect region = drawRegion(_input, {geometry.width, geometry.height});
        if (hasHalfChroma(from)) {
            region.width -= region.width % 2;
            region.height -= region.height % 2;
        }
        model::Image const src = drawSamples(_input, geometry);
        Picture const source(src, drawPlaces(_input));
        model::Image const part = partOf(src, region);
        model::Image expected = model::makeImage(to, part.width, part.height, untouched);
        Picture target(expected, drawPlaces(_input));
        FrameLayout const& layout = source.frame().layout();
        if (from == model::Nv12 && to == model::Bgr24 && region.empty() &&
            layout.plane[0].stride == layout.plane[1].stride) {
            model::vectorColourDirectly(part, expected);
        } else {
            expected = model::vectorColour(part, to);
        }
        _backend.colorCvt(source.frame(), target.frame(), region);
        target.expect(expected, "colour");
        source.expect(src, "the source of a colour conversion");
    }

    void resize() {
        model::Geometry geometry = drawGeometry(_input);
        int const method = _input.between(0, model::hasFloats(geometry.format) ? 1 : 2);
        if (geometry.format == model::C1_16u) {
            return;
        }
        model::Image const src = drawSamples(_input, geometry);
        Size const whole{drawSide(_input), drawSide(_input)};
        Rect const src_region = drawRegion(_input, {src.width, src.height});
        Rect const dst_region = drawRegion(_input, whole);
        Size const size = dst_region.empty() ? whole : Size{dst_region.width, dst_region.height};
        std::size_t const unit = unitOf(src.format);
        Picture const source(src, drawPlaces(_input, unit));
        model::Image expected = model::makeImage(src.format, whole.width, whole.height, untouched);
        Picture target(expected, drawPlaces(_input, unit));
        model::paste(
            model::resizedImage(partOf(src, src_region), size.width, size.height, method, true),
            expected, dst_region.x, dst_region.y);
        _backend.setIntProperty(PropertyResizeMethod, method);
        _backend.resize(source.frame(), target.frame(), src_region, dst_region);
        target.expect(expected, "resized");
    }

    void warp() {
        model::Geometry const geometry = drawGeometry(_input);
        model::Image const src = drawImage(_input, geometry);
        Picture const source(src, drawPlaces(_input));
        model::Image expected =
            model::makeImage(src.format, drawSide(_input), drawSide(_input), untouched);
        Picture target(expected, drawPlaces(_input));
        float matrix[2][3];
        for (auto& row : matrix) {
            for (float& number : row) {
                number = _input.oneIn(16) ? _input.number<float>() : _input.real(-3.0F, 3.0F);
            }
        }
        int const method = _input.between(0, 2);
        if (_backend.setIntProperty(PropertyWarpMethod, method) != 1) {
            fail("the warps' method isn't taken");
        }
        model::Warp warp{
            {matrix[0][0], matrix[0][1], matrix[0][2], matrix[1][0], matrix[1][1], matrix[1][2]},
            method == 0 ? 0U : std::uint32_t{model::WarpBilinear},
            {}};
        bool fixed = true;
        bool refused = false;
        FrameLayout const& layout = source.frame().layout();
        for (std::size_t p = 0; p < expected.planes.size() && !refused; ++p) {
            auto const pixelsOf = [&](model::Plane const& plane) {
                return model::pixelsOf(plane, layout.plane[p].channels, layout.plane[p].bits / 8);
            };
            model::Pixels const from = pixelsOf(src.planes[p]);
            refused =
                model::warpIsRefused(warp, layout.plane[p].channels,
                                     static_cast<std::uint64_t>(from.height), from.rowBytes());
            fixed = fixed && model::warpIsFinite(warp, from);
            if (!refused && fixed) {
                model::Pixels pixels = pixelsOf(expected.planes[p]);
                model::warpPlane(warp, from, pixels);
                model::storePixels(pixels, expected.planes[p]);
            }
        }
        model::Outcome const got = outcomeOf(
            [&] { _backend.warpAffine(source.frame(), target.frame(), matrix, {}, false); });
        if (fixed && got.ok == refused) {
            fail("a warp is refused by one side alone");
        }
        if (fixed) {
            target.expect(expected, "warped");
        }
    }

    // A copy between two rectangles of the same pixels: rows from the top down, each as if all of
    // it were read first.
    void shared() {
        model::Image image = drawImage(_input, drawGeometry(_input));
        Picture picture(image, drawPlaces(_input));
        int const width = _input.between(1, image.width);
        int const height = _input.between(1, image.height);
        // Chroma of half height has its own rows; the model copies row by row, as these lie.
        Rect const from{_input.between(0, image.width - width),
                        _input.between(0, image.height - height), width, height};
        Rect const to{_input.between(0, image.width - width),
                      _input.between(0, image.height - height), width, height};
        if (to.y <= from.y) {
            model::Image const moved = model::crop(image, from.x, from.y, width, height);
            model::paste(moved, image, to.x, to.y);
        }
        Frame const src = getRegion(picture.frame(), from);
        Frame dst = getRegion(picture.frame(), to);
        _backend.colorCvt(src, dst, {});
        if (to.y <= from.y) {
            picture.expect(image, "shared memory");
        }
    }

    // VectorCalls that may be refused, or whose bytes the other cases know: nothing beside rows is
    // touched.
    void anything() {
        model::Image const src = drawImage(_input, drawGeometry(_input));
        bool const same = _input.oneIn(2);
        model::Image const dst = drawImage(_input, same ? src.geometry() : drawGeometry(_input));
        Picture source(src, drawPlaces(_input));
        Picture target(dst, drawPlaces(_input));
        Rect region = drawRegion(_input, {src.width, src.height});
        if (_input.oneIn(8)) {
            region.x = _input.between(-2, 100);
        }
        float const value = _input.number<float>();
        try {
            _backend.setIntProperty(PropertyResizeMethod, _input.between(0, 2));
            switch (_input.between(0, 5)) {
                case 0:
                    return _backend.convert(source.frame(), target.frame(), region);
                case 1:
                    return _backend.add(source.frame(), value, region);
                case 2:
                    return _backend.mul(source.frame(), value, region);
                case 3:
                    return _backend.colorCvt(source.frame(), target.frame(), region);
                case 4:
                    return _backend.roiToYuv444(source.frame(), region);
                default:
                    return _backend.resize(source.frame(), target.frame(), region, {});
            }
        } catch (Exception const&) {
        }
    }

    Input& _input;
    CvBackendSimd _backend;
};

}  // namespace

void vector_backend(Input& input) {
    VectorCalls calls(input);
    for (int i = input.between(1, 3); i > 0; --i) {
        calls.run();
    }
}

}  // namespace ox::fuzz
