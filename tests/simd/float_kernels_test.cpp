// Kernels of floats on special numbers and ranges, and those that pick their routine once.
#include <gtest/gtest.h>

#include <numeric>
#include <vector>

#include "simd/kernel_check.h"
#include "simd/number_draws.h"

namespace ox::test {
namespace {

template <class Element>
Planes planesOf(std::vector<Element>& elements) {
    Planes planes;
    planes[0] = {static_cast<unsigned char*>(static_cast<void*>(elements.data())), 0};
    return planes;
}

std::vector<Range> manyRanges(Random& random) {
    std::vector<Range> many(std::begin(ranges), std::end(ranges));
    for (int i = 0; i < (emulated() ? 20 : 300); ++i) {
        many.push_back({drawBits(random), drawBits(random)});
        many.push_back({random.real(-1000.0F, 1000.0F), random.real(-1000.0F, 1000.0F)});
    }
    return many;
}

TEST(FloatKernels, ScaleFloatsToBytesOnEveryRange) {
    Random random;
    for (Range const range : manyRanges(random)) {
        std::vector<float> floats(std::begin(specialNumbers), std::end(specialNumbers));
        while (floats.size() < 2048) {
            floats.push_back(drawAround(range, random));
        }
        // Both the vector routine and, in pieces, what is below its threshold.
        for (std::size_t const count : {floats.size(), std::size_t{15}}) {
            Operands const operands{planesOf(floats), {}, count, 1, range.lower, range.upper};
            ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleFloatsToBytes, operands));
        }
    }
}

TEST(FloatKernels, ScaleBytesToFloatsOnEveryRange) {
    Random random;
    std::vector<unsigned char> bytes(256);
    std::iota(bytes.begin(), bytes.end(), static_cast<unsigned char>(0));
    for (Range const range : manyRanges(random)) {
        Operands const operands{planesOf(bytes), {}, bytes.size(), 1, range.lower, range.upper};
        ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleBytesToFloats, operands));
    }
}

// Every float beside a step from byte to byte.
TEST(FloatKernels, ScaleFloatsToBytesTruncates) {
    std::vector<float> floats;
    for (int byte = 0; byte <= 256; ++byte) {
        auto const number = static_cast<float>(byte);
        floats.insert(floats.end(), {std::nextafter(number, -infinity), number,
                                     std::nextafter(number, infinity)});
    }
    Operands const operands{planesOf(floats), {}, floats.size(), 1, 0.0F, 255.0F};
    ASSERT_TRUE(everyRoutineAgrees(Simd::ScaleFloatsToBytes, operands));
}

constexpr std::size_t largestCount = 140;

// Sums of these are exact, rounded, infinite, denormal and NaN.
void fill(GuardedPlane const& array, Random& random) {
    for (std::size_t i = 0; i < array.size().row_bytes / sizeof(float); ++i) {
        int const kind = random.between(0, 3);
        storeAs(array.data(), i,
                kind == 0   ? drawSpecial(random)
                : kind == 1 ? drawBits(random)
                            : random.real(-100.0F, 100.0F));
    }
}

float drawValue(Random& random) {
    return random.between(0, 1) == 0 ? drawSpecial(random) : random.real(-9.0F, 9.0F);
}

float* floatsOf(GuardedPlane const& array) {
    return as<float>({array.data(), 0});
}

// Calls `check` with a name and a routine: scalar, vector ones and the kernel.
template <class Kernel, class Routine, class Check>
void forEachRoutine(Kernel const& kernel, Routine* base, Simd::Neon::Routine<Routine> neon,
                    Check const& check) {
    check(std::string("scalar"), base);
    for (VectorTarget const& target : vectorTargets()) {
        check(target.name, target.routines.*neon.member);
    }
    check(std::string("dispatch"), kernel);
}

template <class Action>
void forEachCount(Action const& action) {
    for (std::size_t count = 0; count <= largestCount; ++count) {
        for (int i = 0; i < (emulated() ? 2 : 20); ++i) {
            ASSERT_NO_FATAL_FAILURE(action(count));
        }
    }
    ASSERT_NO_FATAL_FAILURE(action(100'003));
}

// A kernel that changes floats in place.
template <class Kernel>
void checkInPlace(Kernel const& kernel, Simd::ConstantIntoFloats* base,
                  Simd::Neon::Routine<Simd::ConstantIntoFloats> neon,
                  Simd::ConstantIntoFloats* model) {
    Random random;
    forEachCount([&](std::size_t count) {
        PlaneSize const size{count * sizeof(float), 1};
        GuardedPlane const before(size);
        GuardedPlane const expected(size);
        fill(before, random);
        std::memcpy(expected.data(), before.data(), size.row_bytes);
        float const value = drawValue(random);
        model(&value, floatsOf(expected), count);
        forEachRoutine(kernel, base, neon, [&](std::string const& name, auto const& routine) {
            GuardedPlane const data(size, drawPlanePlacement(random));
            std::memcpy(data.data(), before.data(), size.row_bytes);
            routine(&value, floatsOf(data), count);
            ASSERT_TRUE(sameFloats(data.data(), expected.data(), size.row_bytes))
                << name << ", " << count << " elements, value " << value;
            ASSERT_TRUE(data.surroundingsUntouched()) << name << ", " << count << " elements";
        });
    });
}

TEST(FloatKernels, AddConstantFloats) {
    checkInPlace(Simd::AddConstantFloats, Simd::Base::AddConstantFloats,
                 Simd::Neon::AddConstantFloats, kernel_model::addConstant);
}

TEST(FloatKernels, MultiplyFloats) {
    checkInPlace(Simd::MultiplyFloats, Simd::Base::MultiplyFloats, Simd::Neon::MultiplyFloats,
                 kernel_model::multiply);
}

TEST(FloatKernels, AccumulateScaledFloatsIsFused) {
    Random random;
    forEachCount([&](std::size_t count) {
        PlaneSize const size{count * sizeof(float), 1};
        GuardedPlane const src(size, drawPlanePlacement(random));
        GuardedPlane const before(size);
        GuardedPlane const expected(size);
        fill(src, random);
        fill(before, random);
        std::memcpy(expected.data(), before.data(), size.row_bytes);
        float const value = drawValue(random);
        kernel_model::accumulateScaled(floatsOf(src), count, &value, floatsOf(expected));
        forEachRoutine(
            Simd::AccumulateScaledFloats, Simd::Base::AccumulateScaledFloats,
            Simd::Neon::AccumulateScaledFloats, [&](std::string const& name, auto const& routine) {
                GuardedPlane const dst(size, drawPlanePlacement(random));
                std::memcpy(dst.data(), before.data(), size.row_bytes);
                routine(floatsOf(src), count, &value, floatsOf(dst));
                ASSERT_TRUE(sameFloats(dst.data(), expected.data(), size.row_bytes))
                    << name << ", " << count << " elements, value " << value;
                ASSERT_TRUE(dst.surroundingsUntouched()) << name << ", " << count << " elements";
            });
    });
}

}  // namespace
}  // namespace ox::test
