// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// All floats to halves. What is expected are runs of one half from step to step, so that nothing
// is computed for each float.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <vector>

#include "simd/half_steps.h"
#include "simd/kernels/kernels.h"
#include "simd/vector_targets.h"

namespace ox::test {
namespace {

constexpr std::uint32_t firstNaN = 0x7F800001;
constexpr std::size_t chunk = 65536;  // patterns

std::uint16_t halfOfNaN(std::uint32_t bits, Rounding rounding) {
    std::uint32_t const payload = (bits & 0x7FFFFF) >> 13;
    return static_cast<std::uint16_t>(rounding == Rounding::ToNearest
                                          ? 0x7E00 | payload
                                          : 0x7C00 | std::max(payload, std::uint32_t{1}));
}

// The halves of the floats from pattern 0 up to the last NaN, a chunk after the other.
class ExpectedHalves {
  public:
    explicit ExpectedHalves(Rounding rounding) : _rounding(rounding), _steps(halfSteps(rounding)) {}

    void next(std::vector<std::uint16_t>& halves) {
        for (std::size_t i = 0; i < halves.size();) {
            if (_bits >= firstNaN) {
                halves[i++] = halfOfNaN(_bits++, _rounding);
                continue;
            }
            std::uint32_t const stop = _steps[_half];
            auto const run = std::min<std::size_t>(stop - _bits, halves.size() - i);
            std::fill_n(halves.begin() + static_cast<std::ptrdiff_t>(i), run, _half);
            i += run;
            _bits += static_cast<std::uint32_t>(run);
            _half = static_cast<std::uint16_t>(_half + (_bits == stop ? 1 : 0));
        }
    }

  private:
    Rounding _rounding;
    std::vector<std::uint32_t> _steps;
    std::uint32_t _bits = 0;
    std::uint16_t _half = 0;
};

void checkEveryFloat(Simd::FloatsToHalfBits::Function* routine, Rounding rounding) {
    ExpectedHalves expected_halves(rounding);
    std::vector<std::uint16_t> expected(chunk);
    std::vector<std::uint16_t> got(chunk);
    std::vector<std::uint32_t> patterns(chunk);
    std::vector<float> floats(chunk);
    for (std::uint32_t start = 0; start < 0x80000000; start += chunk) {
        expected_halves.next(expected);
        for (std::uint32_t const sign : {0U, 0x80000000U}) {
            std::iota(patterns.begin(), patterns.end(), start | sign);
            std::memcpy(floats.data(), patterns.data(), chunk * sizeof(float));
            routine(floats.data(), chunk, got.data());
            ASSERT_EQ(got, expected) << "floats from pattern " << (start | sign) << " on";
            for (std::uint16_t& half : expected) {
                half = static_cast<std::uint16_t>(half ^ 0x8000);
            }
        }
    }
}

TEST(HalfExhaustive, VectorRoutineRoundsEveryFloatToNearest) {
    checkEveryFloat(Simd::Neon::routines().FloatsToHalves, Rounding::ToNearest);
}

TEST(HalfExhaustive, ScalarRoutineTruncatesEveryFloat) {
    checkEveryFloat(Simd::Base::FloatsToHalves, Rounding::Truncating);
}

}  // namespace
}  // namespace ox::test
