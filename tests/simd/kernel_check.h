// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Runs every routine of a kernel on the same sources and compares with the model.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <memory>
#include <string>

#include "simd/float_bits.h"
#include "simd/guarded_plane.h"
#include "simd/kernel_call.h"
#include "simd/kernel_model.h"
#include "simd/vector_targets.h"

namespace ox::test {

using PlanePlacements = std::array<PlanePlacement, 3>;

// The planes of an image, each in memory of its own.
class GuardedPlanes {
  public:
    GuardedPlanes(kernel_model::PlaneShapes const& shapes, std::size_t width, std::size_t height,
                  PlanePlacements const& placements = {}) {
        for (std::size_t i = 0; i < shapes.size() && shapes[i].bytes != 0; ++i) {
            PlaneSize const size{width / shapes[i].pixels * shapes[i].bytes,
                                 height / shapes[i].pixels};
            _planes[i] = std::make_unique<GuardedPlane>(size, placements[i]);
        }
    }

    GuardedPlane const& operator[](std::size_t i) const { return *_planes[i]; }

    Planes planes() const {
        Planes planes;
        for (std::size_t i = 0; i < planes.size() && _planes[i] != nullptr; ++i) {
            planes[i] = {_planes[i]->data(), _planes[i]->stride()};
        }
        return planes;
    }

    // Calls `work` with each row and its bytes.
    template <class Work>
    void forEachRow(Work const& work) const {
        for (std::size_t i = 0; i < _planes.size() && _planes[i] != nullptr; ++i) {
            for (std::size_t y = 0; y < _planes[i]->size().rows; ++y) {
                work(_planes[i]->row(y), _planes[i]->size().row_bytes);
            }
        }
    }

    template <class Same>
    testing::AssertionResult hold(GuardedPlanes const& expected, Same const& same) const {
        for (std::size_t i = 0; i < _planes.size() && _planes[i] != nullptr; ++i) {
            GuardedPlane const& plane = *_planes[i];
            for (std::size_t y = 0; y < plane.size().rows; ++y) {
                if (!same(plane.row(y), expected[i].row(y), plane.size().row_bytes)) {
                    return testing::AssertionFailure()
                           << "plane " << i << ", row " << y << ", byte "
                           << difference(plane.row(y), expected[i].row(y), plane.size().row_bytes);
                }
            }
            if (!plane.surroundingsUntouched()) {
                return testing::AssertionFailure() << "wrote beside the rows of plane " << i;
            }
        }
        return testing::AssertionSuccess();
    }

  private:
    static std::string difference(unsigned char const* got, unsigned char const* expected,
                                  std::size_t bytes) {
        auto const at =
            static_cast<std::size_t>(std::mismatch(got, got + bytes, expected).first - got);
        return at == bytes ? "none"
                           : std::to_string(at) + " is " + std::to_string(got[at]) + " and not " +
                                 std::to_string(expected[at]);
    }

    std::array<std::unique_ptr<GuardedPlane>, 3> _planes;
};

inline bool sameBytes(unsigned char const* got, unsigned char const* expected, std::size_t bytes) {
    return std::memcmp(got, expected, bytes) == 0;
}

inline bool sameFloats(unsigned char const* got, unsigned char const* expected, std::size_t bytes) {
    bool same = bytes % sizeof(float) == 0;
    for (std::size_t i = 0; i < bytes / sizeof(float); ++i) {
        same = same && sameFloat(loadAs<float>(got, i), loadAs<float>(expected, i));
    }
    return same;
}

// One kernel on given sources.
template <class Record>
class KernelCheck {
  public:
    using Shape = kernel_model::ShapeOf<Record>;
    using Model = kernel_model::Model<Shape>;

    // @param placements of the destinations
    KernelCheck(Record const& record, Operands const& operands, PlanePlacements const& placements)
        : _record(record),
          _model(kernel_model::modelOf(record)),
          _operands(operands),
          _placements(placements) {}

    // The scalar routine, the vector routine of each instruction set where the size allows it, and
    // the dispatch function.
    testing::AssertionResult everyRoutine() const {
        GuardedPlanes const base = expected(_model.base);
        if (auto const result = compare("scalar", _record.base, base); !result) {
            return result;
        }
        if (_operands.width < _model.threshold) {
            return compare("dispatch", _record, base);
        }
        GuardedPlanes const neon = expected(_model.neon);
        for (VectorTarget const& target : vectorTargets()) {
            auto const& routine = target.routines.*_record.neon.member;
            if (auto const result = compare(target.name, routine, neon); !result) {
                return result;
            }
        }
        return compare("dispatch", _record, neon);
    }

  private:
    GuardedPlanes expected(typename Shape::Function* routine) const {
        GuardedPlanes planes = destinations({});
        run(routine, planes);
        return planes;
    }

    template <class Call>
    testing::AssertionResult compare(std::string const& name, Call const& call,
                                     GuardedPlanes const& expected) const {
        GuardedPlanes const got = destinations(_placements);
        run(call, got);
        // An operation may give any NaN. Copies and conversions keep theirs.
        constexpr bool computes_floats =
            worksInPlace<Shape> || std::is_same_v<Shape, Simd::BytesToFloats>;
        testing::AssertionResult result =
            got.hold(expected, computes_floats ? sameFloats : sameBytes);
        if (!result) {
            result << ": " << name << " routine of " << _record.name << ", " << _operands.width
                   << " x " << _operands.height << ", range " << _operands.lower << " to "
                   << _operands.upper;
        }
        return result;
    }

    GuardedPlanes destinations(PlanePlacements const& placements) const {
        return {_model.destinations, _operands.width, _operands.height, placements};
    }

    template <class Call>
    void run(Call const& call, GuardedPlanes const& destination) const {
        Operands operands = _operands;
        operands.dst = destination.planes();
        if constexpr (worksInPlace<Shape>) {
            std::size_t const last = _model.sources[1].bytes == 0 ? 0 : 1;
            std::memcpy(operands.dst[0].data, operands.src[last].data,
                        sizeof(float) * operands.width);
        }
        callKernel(Shape(), call, operands);
    }

    Record const& _record;
    Model _model;
    Operands _operands;
    PlanePlacements _placements;
};

// The same with all planes on tight rows.
template <class Record>
testing::AssertionResult everyRoutineAgrees(Record const& record, Operands const& operands,
                                            PlanePlacements const& placements = {}) {
    return KernelCheck<Record>(record, operands, placements).everyRoutine();
}

}  // namespace ox::test
