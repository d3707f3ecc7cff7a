// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Sequences of calls of the C interface on kept handles, null ones and senseless arguments among
// them; conversions and resizing against the C++ classes behind them.
#include <algorithm>
#include <array>
#include <cstring>
#include <limits>
#include <memory>
#include <vector>

#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_c.h"

namespace ox::fuzz {

namespace {

struct Destroy {
    void operator()(ox_frame* frame) const { ox_frame_destroy(frame); }
    void operator()(ox_backend* backend) const { ox_backend_destroy(backend); }
    void operator()(ox_to_tensor* to_tensor) const { ox_to_tensor_destroy(to_tensor); }
};

template <class Handle>
using Owned = std::unique_ptr<Handle, Destroy>;

float constantValue(void*, float, float) {
    return 1.0F;
}

// What every call leaves: a status that has a name, and a text where it failed.
void expectStatus(ox_status status, char const* what) {
    constexpr ox_status known[]{0, 2, 4, 5, 6, 7, 8, 14, 19, 29};
    if (std::find(std::begin(known), std::end(known), status) == std::end(known)) {
        fail("%s: status %d", what, static_cast<int>(status));
    }
    if (status != OX_STATUS_OK && std::strlen(ox_last_error()) == 0) {
        fail("%s: status %d without a text", what, static_cast<int>(status));
    }
}

class Session {
  public:
    explicit Session(Input& input) : _input(input) {
        for (std::size_t i = 0; i < _backends.size(); ++i) {
            ox_backend* backend = nullptr;
            expectStatus(ox_backend_create(static_cast<std::int32_t>(i), &backend), "create");
            _backends[i].reset(backend);
        }
    }

    void call() {
        switch (_input.between(0, 12)) {
            case 0:
            case 1:
                return create();
            case 2:
                return wrap();
            case 3:
                return part();
            case 4:
                return describe();
            case 5:
            case 6:
            case 7:
                return operate();
            case 8:
                return reduce();
            case 9:
                return tensor();
            case 10:
                return mappings();
            case 11:
                return compare();
            default:
                _frames[slot()].reset();
                return;
        }
    }

  private:
    std::size_t slot() { return static_cast<std::size_t>(_input.between(0, 3)); }
    ox_frame* frame() { return _input.oneIn(16) ? nullptr : _frames[slot()].get(); }
    ox_backend* backend() {
        return _input.oneIn(16) ? nullptr : _backends[_input.byte() % 2U].get();
    }

    // Null stands for the whole.
    ox_rect const* region() {
        if (_input.byte() % 2 == 0) {
            return nullptr;
        }
        auto const number = [&] {
            return _input.oneIn(12) ? _input.number<std::int32_t>() : _input.between(-1, 30);
        };
        _region = {number(), number(), number(), number()};
        return &_region;
    }

    void keep(ox_frame* made, ox_status status, char const* what) {
        expectStatus(status, what);
        if ((made != nullptr) != (status == OX_STATUS_OK)) {
            fail("%s: status %d, handle %p", what, static_cast<int>(status),
                 static_cast<void*>(made));
        }
        if (made != nullptr) {
            _frames[slot()].reset(made);
        }
    }

    void create() {
        model::Geometry const geometry = drawGeometry(_input);
        bool const senseless = _input.oneIn(12);
        std::uint64_t const alignment =
            _input.oneIn(6) ? _input.number<std::uint64_t>() % 8192 : _input.byte() % 65U;
        ox_frame* made = nullptr;
        ox_status const status =
            ox_frame_create(senseless ? _input.byte() : geometry.format, geometry.width,
                            senseless ? _input.between(-3, 0) : geometry.height, alignment, &made);
        if (made != nullptr) {
            expectStatus(ox_frame_set_zero(made), "set_zero");
        }
        keep(made, status, "create");
    }

    void wrap() {
        auto held =
            std::make_unique<Picture>(drawImage(_input, drawGeometry(_input)), drawPlaces(_input));
        FrameLayout const layout = held->frame().layout();
        void* planes[4]{};
        std::int64_t strides[4]{};
        for (int i = 0; i < layout.planeCount; ++i) {
            planes[i] = _input.oneIn(40) ? nullptr : held->frame().planeData(i);
            strides[i] = _input.oneIn(40) ? _input.between(-100, 0) : layout.plane[i].stride;
        }
        ox_frame* made = nullptr;
        ox_status const status = ox_frame_wrap(
            static_cast<std::int32_t>(layout.format), layout.size.width, layout.size.height, planes,
            strides, layout.planeCount - (_input.oneIn(40) ? 1 : 0), &made);
        _memory.push_back(std::move(held));
        keep(made, status, "wrap");
    }

    void part() {
        ox_frame* made = nullptr;
        ox_frame const* const source = frame();
        ox_status const status = _input.byte() % 2 == 0 ? ox_frame_region(source, region(), &made)
                                                        : ox_frame_copy(source, &made);
        keep(made, status, "region or copy");
    }

    void describe() {
        ox_frame const* const source = frame();
        ox_frame_info info{};
        ox_status const status = ox_frame_get_info(source, &info);
        expectStatus(status, "get_info");
        if (status == OX_STATUS_OK && (info.plane_count < 0 || info.plane_count > 4)) {
            fail("get_info: %d planes", info.plane_count);
        }
        std::int32_t value = 0;
        expectStatus(ox_backend_get_property(backend(), _input.between(-1, 3), &value),
                     "get_property");
        static_cast<void>(ox_format_name(_input.number<std::int32_t>()));
    }

    void operate() {
        ox_backend* const by = backend();
        ox_frame* const src = frame();
        ox_frame* const dst = frame();
        if (overlap(src, dst)) {
            return;
        }
        float const value = _input.real(-3.0F, 3.0F);
        float matrix[6];
        for (float& number : matrix) {
            number = _input.oneIn(12) ? _input.number<float>() : _input.real(-2.0F, 2.0F);
        }
        switch (_input.between(0, 7)) {
            case 0:
                return expectStatus(ox_backend_convert(by, src, region(), dst), "convert");
            case 1:
                return expectStatus(ox_backend_convert_colour(by, src, region(), dst), "colour");
            case 2: {
                ox_rect const* const from = region();
                ox_rect const copy = from == nullptr ? ox_rect{} : *from;
                return expectStatus(
                    ox_backend_resize(by, src, from == nullptr ? nullptr : &copy, dst, region()),
                    "resize");
            }
            case 3:
                return expectStatus(ox_backend_resize_packed_422(by, src, dst), "packed 4:2:2");
            case 4:
                return expectStatus(
                    ox_backend_warp_affine(by, src, region(), dst, matrix, _input.byte() % 3),
                    "warp");
            case 5:
                return expectStatus(ox_backend_add(by, dst, region(), value), "add");
            case 6:
                return expectStatus(ox_backend_multiply(by, dst, region(), value), "multiply");
            default:
                return expectStatus(
                    ox_backend_set_property(by, _input.between(-1, 3), _input.between(-1, 4)),
                    "set_property");
        }
    }

    // Handles may be on the same pixels, which operations needn't take.
    static bool overlap(ox_frame const* a, ox_frame const* b) {
        ox_frame_info first{};
        ox_frame_info second{};
        if (a == nullptr || b == nullptr || ox_frame_get_info(a, &first) != OX_STATUS_OK ||
            ox_frame_get_info(b, &second) != OX_STATUS_OK) {
            return false;
        }
        for (std::int32_t i = 0; i < first.plane_count; ++i) {
            for (std::int32_t k = 0; k < second.plane_count; ++k) {
                ox_plane const& p = first.planes[i];
                ox_plane const& q = second.planes[k];
                if (p.data < q.data + q.height * q.stride &&
                    q.data < p.data + p.height * p.stride) {
                    return true;
                }
            }
        }
        return false;
    }

    ox_filter const* filter() {
        _filter.kind = _input.between(-1, 6);
        _filter.value = _input.oneIn(16) ? nullptr : constantValue;
        _filter.aperture = [](void* context, float scale) {
            return scale * *static_cast<float*>(context);
        };
        _width = _input.oneIn(8) ? _input.number<float>() : _input.real(-1.0F, 5.0F);
        _filter.context = &_width;
        return _input.oneIn(16) ? nullptr : &_filter;
    }

    void reduce() {
        ox_frame const* const src = frame();
        ox_frame* const dst = frame();
        if (!overlap(src, dst)) {
            expectStatus(ox_reduce(src, region(), dst, filter(), _input.byte() % 2 == 0 ? 8 : 16),
                         "reduce");
        }
    }

    void tensor() {
        ox_recipe recipe{};
        expectStatus(ox_recipe_init(&recipe, _input.oneIn(16) ? _input.byte() : sizeof recipe),
                     "recipe_init");
        recipe.width = _input.between(-1, 16);
        recipe.height = _input.between(1, 16);
        recipe.fit = _input.between(0, 4);
        recipe.method = _input.between(0, 4);
        recipe.colour = _input.between(0, 3);
        recipe.layout = _input.between(1, 2);
        recipe.element = _input.between(1, 5);
        recipe.matrix = _input.between(0, 4);
        recipe.range = _input.between(0, 2);
        recipe.filter = _input.oneIn(4) ? filter() : nullptr;
        recipe.quant_scale = _input.oneIn(4) ? _input.number<float>() : 1.0F;
        ox_to_tensor* made = nullptr;
        expectStatus(ox_to_tensor_create(&recipe, &made), "to_tensor_create");
        Owned<ox_to_tensor> const to_tensor(made);
        ox_tensor_info info{};
        expectStatus(ox_to_tensor_get_info(made, _input.between(0, 2), &info), "tensor_info");
        std::vector<std::uint8_t> memory(std::size_t{16} * 16 * 3 * 4);
        std::int64_t const stride = _input.oneIn(4) ? _input.between(-50, 0) : 0;
        expectStatus(ox_to_tensor_run(made, frame(), region(), memory.data(), stride, 0,
                                      _input.oneIn(3) ? nullptr : &_mapping),
                     "to_tensor_run");
    }

    void mappings() {
        ox_point points[3];
        ox_box boxes[2]{};
        for (ox_point& point : points) {
            point = {_input.number<double>(), _input.number<double>()};
        }
        auto const count = static_cast<std::uint64_t>(_input.between(0, 3));
        expectStatus(ox_mapping_points_to_input(&_mapping, points, count, points), "points");
        expectStatus(ox_mapping_points_to_source(&_mapping, points, count, points), "points");
        expectStatus(ox_mapping_boxes_to_input(&_mapping, boxes, 2, boxes), "boxes");
        expectStatus(ox_mapping_boxes_to_source(&_mapping, boxes, 2, boxes), "boxes");
        float from[5][2];
        float to[5][2];
        for (int i = 0; i < 5; ++i) {
            for (int k = 0; k < 2; ++k) {
                from[i][k] = _input.oneIn(8) ? _input.number<float>() : _input.real(0, 9);
                to[i][k] = _input.real(-9, 9);
            }
        }
        float matrix[6];
        expectStatus(ox_fit_similarity(from[0], to[0], _input.between(-1, 5), matrix),
                     "fit_similarity");
    }

    // New handles and objects, the same pictures.
    void compare() {
        model::Image const src = drawImage(_input, drawGeometry(_input));
        model::Geometry to = drawGeometry(_input);
        bool const vector = _input.byte() % 2 == 0;
        Rect const area = drawRegion(_input, {src.width, src.height});
        if (_input.byte() % 2 == 0) {
            to = {to.format, area.empty() ? src.width : area.width,
                  area.empty() ? src.height : area.height};
        }
        model::Image const before = drawImage(_input, to);
        Picture const source(src, {});
        Picture wanted(before);
        Picture got(before);
        std::unique_ptr<ICvBackend> by;
        if (vector) {
            by = std::make_unique<CvBackendSimd>();
        } else {
            by = std::make_unique<CvBackendBase>();
        }
        int const status =
            outcomeOf([&] { by->convert(source.frame(), wanted.frame(), area); }).status;
        ox_backend* handle = nullptr;
        expectStatus(ox_backend_create(vector ? OX_BACKEND_SIMD : OX_BACKEND_BASE, &handle),
                     "create");
        Owned<ox_backend> const c_backend(handle);
        ox_rect const c_area{area.x, area.y, area.width, area.height};
        Owned<ox_frame> const from = handleOn(source);
        Owned<ox_frame> const into = handleOn(got);
        ox_status const c_status =
            ox_backend_convert(handle, from.get(), area.empty() ? nullptr : &c_area, into.get());
        if (c_status != status) {
            fail("convert: status %d by C, %d by C++", static_cast<int>(c_status), status);
        }
        got.expectAs(wanted, "convert by C and by C++");
    }

    static Owned<ox_frame> handleOn(Picture const& picture) {
        FrameLayout const& layout = picture.frame().layout();
        void* planes[4]{};
        std::int64_t strides[4]{};
        for (int i = 0; i < layout.planeCount; ++i) {
            planes[i] = picture.frame().planeData(i);
            strides[i] = layout.plane[i].stride;
        }
        ox_frame* made = nullptr;
        expectStatus(ox_frame_wrap(static_cast<std::int32_t>(layout.format), layout.size.width,
                                   layout.size.height, planes, strides, layout.planeCount, &made),
                     "wrap");
        return Owned<ox_frame>(made);
    }

    Input& _input;
    std::vector<std::unique_ptr<Picture>> _memory;  // of frames that are wrapped
    std::array<Owned<ox_frame>, 4> _frames;
    std::array<Owned<ox_backend>, 2> _backends;
    ox_rect _region{};
    ox_filter _filter{};
    float _width = 1.0F;
    ox_mapping _mapping{{0, 0, 4, 4}, {0, 0, 8, 8}};
};

}  // namespace

void c_interface(Input& input) {
    Session session(input);
    for (int i = input.between(1, 12); i > 0; --i) {
        session.call();
    }
}

}  // namespace ox::fuzz
