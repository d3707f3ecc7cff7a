// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every kernel: the scalar routine and those of all instruction sets against the model.
#include <array>
#include <optional>
#include <string>

#include "fuzz/planes.h"
#include "simd/kernel_call.h"
#include "simd/kernel_model.h"
#include "simd/number_draws.h"
#include "simd/vector_targets.h"

namespace ox::fuzz {

namespace {

// The planes of an image.
class Planes {
  public:
    Planes(Input& input, kernel_model::PlaneShapes const& shapes, test::Operands const& on,
           std::size_t unit, bool may_turn) {
        for (std::size_t i = 0; i < shapes.size() && shapes[i].bytes != 0; ++i) {
            PlaneSize const size{on.width / shapes[i].pixels * shapes[i].bytes,
                                 on.height / shapes[i].pixels};
            _planes[i].emplace(input, size, unit, may_turn);
        }
    }

    std::optional<Plane> const& operator[](std::size_t i) const { return _planes[i]; }

    test::Planes operands() const {
        test::Planes all;
        for (std::size_t i = 0; i < all.size() && _planes[i]; ++i) {
            all[i] = {_planes[i]->data(), _planes[i]->stride()};
        }
        return all;
    }

  private:
    std::array<std::optional<Plane>, 3> _planes;
};

template <class Record>
class Check {
  public:
    Check(Record const& record, Input& input)
        : _record(record), _model(kernel_model::modelOf(record)), _input(input) {}

    void run() {
        auto const step = static_cast<int>(_model.step());
        _on.width = static_cast<std::size_t>(_input.between(0, 140) / step * step);
        _on.height =
            static_cast<std::size_t>(arrays ? 1 : _input.between(0, 5 * step) / step * step);
        drawNumbers();
        Input nothing({});
        Planes const plain(nothing, _model.sources, _on, 1, false);
        Planes const sources(_input, _model.sources, _on, unit, mayTurn());
        test::Random numbers = _input.random();
        for (std::size_t i = 0; i < 3 && plain[i]; ++i) {
            fill(*plain[i], numbers);
            sources[i]->store(plain[i]->bytes());
        }

        _on.src = plain.operands();
        Planes const base = expected(_model.base);
        Planes const neon = expected(_model.neon);
        _on.src = sources.operands();
        compare("scalar routine", _record.base, base);
        if (_on.width < _model.threshold) {
            compare("dispatch", _record, base);
            return;
        }
        for (test::VectorTarget const& target : test::vectorTargets()) {
            compare(target.name.c_str(), target.routines.*_record.neon.member, neon);
        }
        compare("dispatch", _record, neon);
    }

  private:
    using Shape = kernel_model::ShapeOf<Record>;
    using Function = typename Shape::Function;
    static constexpr bool arrays = test::takesArrays<Shape>;
    // Kernels take strides below zero.
    static constexpr bool mayTurn() { return !arrays; }
    // Halves and what becomes of them lie at multiples of their size.
    static constexpr std::size_t unit =
        test::isOneOf<Shape, Simd::FloatsToHalfBits, Simd::HalfBitsToFloats> ? 4 : 1;

    void drawNumbers() {
        if (_input.oneIn(4)) {
            _on.lower = _input.number<float>();
            _on.upper = _input.number<float>();
        } else {
            test::Range const range = _input.pick(test::ranges);
            _on.lower = range.lower;
            _on.upper = range.upper;
        }
    }

    void fill(Plane const& plane, test::Random& numbers) {
        constexpr bool floats = test::worksInPlace<Shape> ||
                                test::isOneOf<Shape, Simd::FloatsToBytes, Simd::FloatsToHalfBits>;
        std::vector<std::uint8_t> bytes(plane.size().row_bytes * plane.size().rows);
        _input.fill(bytes);
        if constexpr (floats) {
            for (std::size_t i = 0; i < bytes.size() / sizeof(float); ++i) {
                bool const half = std::is_same_v<Shape, Simd::FloatsToHalfBits>;
                test::storeAs(bytes.data(), i,
                              half ? test::drawForHalf(numbers)
                                   : test::drawAround({_on.lower, _on.upper}, numbers));
            }
        }
        plane.store(bytes);
    }

    Planes expected(Function* routine) {
        Input nothing({});
        Planes planes(nothing, _model.destinations, _on, 1, false);
        call(routine, planes);
        return planes;
    }

    template <class Call>
    void compare(char const* name, Call const& routine, Planes const& wanted) {
        Planes const got(_input, _model.destinations, _on, unit, mayTurn());
        call(routine, got);
        std::string const what = std::string(_record.name) + ", " + name;
        for (std::size_t i = 0; i < 3 && got[i]; ++i) {
            constexpr bool computes_floats =
                test::worksInPlace<Shape> || std::is_same_v<Shape, Simd::BytesToFloats>;
            (computes_floats ? expectFloats : expectBytes)(got[i]->bytes(), wanted[i]->bytes(),
                                                           what.c_str());
            got[i]->expectUntouchedAround(what.c_str());
        }
    }

    template <class Call>
    void call(Call const& routine, Planes const& destinations) const {
        test::Operands on = _on;
        on.dst = destinations.operands();
        if constexpr (test::worksInPlace<Shape>) {
            std::size_t const last = _model.sources[1].bytes == 0 ? 0 : 1;
            std::memcpy(on.dst[0].data, on.src[last].data, sizeof(float) * on.width);
        }
        test::callKernel(Shape(), routine, on);
    }

    Record const& _record;
    kernel_model::Model<Shape> _model;
    Input& _input;
    test::Operands _on;
};

}  // namespace

void kernels(Input& input) {
    int chosen = input.between(0, static_cast<int>(std::tuple_size_v<decltype(Simd::kernels)>) - 1);
    std::apply(
        [&](auto const&... records) {
            ((chosen-- == 0 ? Check(records, input).run() : void()), ...);
        },
        Simd::kernels);
}

}  // namespace ox::fuzz
