// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines between bytes and floats, of every instruction set that this processor has.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

std::uint8_t lowByteOf(float value) {
    if (!(value > 0.0F)) {
        return 0;
    }
    auto const limit = static_cast<double>(std::numeric_limits<std::uint32_t>::max());
    return static_cast<std::uint8_t>(
        static_cast<std::uint32_t>(std::min(std::trunc(double{value}), limit)));
}

class FloatRoutines : public RowRoutines {
  protected:
    void checkToFloats(std::size_t count, Guard guard) {
        GuardedMemory src(count, guard);
        GuardedMemory dst(4 * count, guard);
        std::generate_n(src.data(), count, [&] { return random.byte(); });
        routines.colour.bytes_to_floats(src.data(), count, dst.data());
        for (std::size_t i = 0; i < count; ++i) {
            float number = -1.0F;
            std::memcpy(&number, dst.data() + 4 * i, sizeof number);
            ASSERT_EQ(number, static_cast<float>(src.data()[i])) << i << " of " << count;
        }
        EXPECT_EQ(dst.touched(), 0);
    }

    void checkToBytes(std::vector<float> const& numbers, Guard guard) {
        GuardedMemory src(4 * numbers.size(), guard);
        GuardedMemory dst(numbers.size(), guard);
        auto const* const bytes = reinterpret_cast<std::uint8_t const*>(numbers.data());
        std::copy_n(bytes, src.size(), src.data());
        routines.colour.floats_to_low_bytes(src.data(), numbers.size(), dst.data());
        for (std::size_t i = 0; i < numbers.size(); ++i) {
            ASSERT_EQ(dst.data()[i], lowByteOf(numbers[i])) << numbers[i];
        }
        EXPECT_EQ(dst.touched(), 0);
    }

    Random random{9};
};

TEST_P(FloatRoutines, BytesToFloats) {
    for (std::size_t count = 0; count <= 90; ++count) {
        checkToFloats(count, count % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
    }
}

TEST_P(FloatRoutines, FloatsOfAnyKind) {
    constexpr float infinity = std::numeric_limits<float>::infinity();
    std::vector<float> numbers{
        0.0F,         -0.0F,         0.99F,         1.0F,          255.0F,         255.9F,
        256.0F,       300.5F,        -1.0F,         -300.0F,       65535.7F,       16777217.0F,
        2147483520.F, 2147483648.0F, 2147483904.0F, 4294967040.0F, 4294967296.F,   1e20F,
        infinity,     -infinity,     1e-40F,        std::nanf(""), -std::nanf(""), 3e9F};
    while (numbers.size() < 400) {
        std::uint32_t const bits = static_cast<std::uint32_t>(random.next());
        float number = 0.0F;
        std::memcpy(&number, &bits, sizeof number);
        numbers.push_back(number);
        numbers.push_back(random.real(-20.0F, 280.0F));
    }
    checkToBytes(numbers, Guard::AtEnd);
}

TEST_P(FloatRoutines, FloatsOfAnyCount) {
    for (std::size_t count = 0; count <= 90; ++count) {
        std::vector<float> numbers(count);
        std::generate(numbers.begin(), numbers.end(), [&] { return random.real(-20.0F, 280.0F); });
        checkToBytes(numbers, count % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
    }
}

INSTANTIATE_TEST_SUITE_P(, FloatRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
