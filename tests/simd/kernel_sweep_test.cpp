// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every kernel, every width and every placement in memory, against the model.
#include <gtest/gtest.h>

#include "simd/kernel_check.h"
#include "simd/number_draws.h"

namespace ox::test::kernel_sweep {
namespace {

constexpr std::size_t largestWidth = 140;
constexpr std::size_t largestHeight = 5;

// Halves and what becomes of them lie at multiples of their size.
template <class Shape>
constexpr bool isAligned = isOneOf<Shape, Simd::FloatsToHalfBits, Simd::HalfBitsToFloats>;

// Bytes of all values, or of the ends of the ranges only, where sums are largest.
void fillBytes(GuardedPlanes const& planes, Random& random) {
    constexpr unsigned char extremes[]{0, 1, 15, 16, 127, 128, 235, 240, 254, 255};
    bool const extreme = random.between(0, 3) == 0;
    planes.forEachRow([&](unsigned char* row, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes; ++i) {
            row[i] = extreme ? extremes[random.between(0, 9)] : random.byte();
        }
    });
}

template <class Draw>
void fillFloats(GuardedPlanes const& planes, Draw const& draw) {
    planes.forEachRow([&](unsigned char* row, std::size_t bytes) {
        for (std::size_t i = 0; i < bytes / sizeof(float); ++i) {
            storeAs(row, i, draw());
        }
    });
}

template <class Record>
class Sweep {
  public:
    explicit Sweep(Record const& record) : _record(record), _model(kernel_model::modelOf(record)) {}

    void check(std::size_t width, std::size_t height) {
        std::size_t const rows = takesArrays<Shape> ? 1 : height;
        Operands operands{{}, {}, width, rows};
        if (rangeMatters) {
            Range const range = drawRange(_random);
            operands.lower = range.lower;
            operands.upper = range.upper;
        } else if (worksInPlace<Shape>) {
            operands.lower = drawFactor();
        }
        bool const tight = _random.between(0, 1) == 0;
        GuardedPlanes const sources(_model.sources, width, rows, drawPlacements(tight));
        fill(sources, operands);
        operands.src = sources.planes();
        ASSERT_TRUE(everyRoutineAgrees(_record, operands, drawPlacements(tight)));
    }

    std::size_t step() const { return _model.step(); }

  private:
    using Shape = kernel_model::ShapeOf<Record>;
    static constexpr bool rangeMatters = isOneOf<Shape, Simd::BytesToFloats, Simd::FloatsToBytes>;

    float drawFactor() {
        return _random.between(0, 1) == 0 ? drawSpecial(_random) : _random.real(-9.0F, 9.0F);
    }

    // Sums of these are exact, rounded, infinite, denormal and NaN.
    float drawTerm() {
        int const kind = _random.between(0, 3);
        return kind == 0   ? drawSpecial(_random)
               : kind == 1 ? drawBits(_random)
                           : _random.real(-100.0F, 100.0F);
    }

    // Where all rows are tight, an image may be taken for one long row.
    PlanePlacements drawPlacements(bool tight) {
        PlanePlacements placements;
        for (PlanePlacement& placement : placements) {
            placement = drawPlanePlacement(_random);
            placement.gap = tight ? 0 : placement.gap;
            placement.misalignment &= isAligned<Shape> ? ~std::size_t{3} : ~std::size_t{0};
        }
        return placements;
    }

    void fill(GuardedPlanes const& sources, Operands const& operands) {
        if constexpr (std::is_same_v<Shape, Simd::FloatsToBytes>) {
            Range const range{operands.lower, operands.upper};
            fillFloats(sources, [&] { return drawAround(range, _random); });
        } else if constexpr (std::is_same_v<Shape, Simd::FloatsToHalfBits>) {
            fillFloats(sources, [&] { return drawForHalf(_random); });
        } else if constexpr (worksInPlace<Shape>) {
            fillFloats(sources, [&] { return drawTerm(); });
        } else {
            fillBytes(sources, _random);
        }
    }

    Record const& _record;
    kernel_model::Model<Shape> _model;
    Random _random;
};

template <class Action>
void forEachKernel(Action const& action) {
    std::apply(
        [&](auto const&... records) {
            ((testing::Test::HasFatalFailure() ? void() : action(records)), ...);
        },
        Simd::kernels);
}

TEST(KernelSweep, AgreesWithTheModelAtEveryWidth) {
    forEachKernel([](auto const& record) {
        Sweep sweep(record);
        for (std::size_t width = 0; width <= largestWidth; width += sweep.step()) {
            for (std::size_t height = 0; height <= largestHeight; height += sweep.step()) {
                int const placements = emulated() ? 2 : 8;
                for (int i = 0; i < placements; ++i) {
                    ASSERT_NO_FATAL_FAILURE(sweep.check(width, height));
                }
            }
        }
    });
}

TEST(KernelSweep, AgreesWithTheModelOnLargeImages) {
    constexpr PlaneSize sizes[]{{1920, 8},    {1366, 6}, {854, 30}, {4098, 2},
                                {100'002, 2}, {2, 2000}, {34, 1000}};
    forEachKernel([&](auto const& record) {
        Sweep sweep(record);
        for (auto const [width, height] : sizes) {
            ASSERT_NO_FATAL_FAILURE(sweep.check(width, height));
            if (sweep.step() == 1) {
                ASSERT_NO_FATAL_FAILURE(sweep.check(width + 1, height - 1));
            }
        }
    });
}

// Otherwise the sweep would run one and the same routine several times.
TEST(KernelSweep, HoldsSeveralInstructionSetsApart) {
    std::vector<VectorTarget> const& targets = vectorTargets();
    ASSERT_FALSE(targets.empty());
    forEachKernel([&](auto const& record) {
        for (std::size_t i = 1; i < targets.size(); ++i) {
            EXPECT_NE(targets[i - 1].routines.*record.neon.member,
                      targets[i].routines.*record.neon.member)
                << record.name << " of " << targets[i - 1].name << " and " << targets[i].name;
        }
        EXPECT_EQ(record.neon.get(), targets[0].routines.*record.neon.member);
    });
}

}  // namespace
}  // namespace ox::test::kernel_sweep
