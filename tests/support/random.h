// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Numbers that are the same on every machine, and how many of them a test should draw.
#pragma once

#include <cstdint>

namespace ox::test {

// splitmix64: the distributions of the standard library differ between implementations.
class Random {
  public:
    explicit Random(std::uint64_t seed = 1) : _state(seed) {}

    std::uint64_t next() {
        _state += 0x9E3779B97F4A7C15U;
        std::uint64_t bits = _state;
        bits = (bits ^ (bits >> 30)) * 0xBF58476D1CE4E5B9U;
        bits = (bits ^ (bits >> 27)) * 0x94D049BB133111EBU;
        return bits ^ (bits >> 31);
    }

    unsigned char byte() { return static_cast<unsigned char>(next() >> 56); }

    // Both ends included.
    int between(int low, int high) {
        auto const count = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
        return static_cast<int>(low + static_cast<std::int64_t>(next() % count));
    }

    // In [low, high).
    float real(float low, float high) {
        return low + (high - low) * (static_cast<float>(next() >> 40) / 16777216.0F);
    }

  private:
    std::uint64_t _state;
};

// True where every instruction is emulated, so that a test does better with smaller draws.
constexpr bool emulated() {
#ifdef OX_TEST_EMULATED
    return true;
#else
    return false;
#endif
}

}  // namespace ox::test
