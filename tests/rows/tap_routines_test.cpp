// The vector routines of convolutional scaling, of every instruction set that this processor has.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "rows/rows_routines.h"
#include "simd/simd_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

// A sum modulo 2^32, shifted and clamped.
class Total {
  public:
    void add(std::uint8_t sample, std::int16_t weight) { _sum += std::int64_t{sample} * weight; }
    int byte(int shift) const {
        auto const wrapped = static_cast<std::int32_t>(_sum);
        return std::clamp(wrapped >> shift, 0, 255);
    }

  private:
    std::int64_t _sum = 0;
};

// Weights as filters have them, or as large as they get.
std::int16_t drawWeight(Random& random, bool large) {
    return static_cast<std::int16_t>(large ? random.between(-32768, 32767)
                                           : random.between(-20, 60));
}

std::vector<std::int16_t> drawWeights(Random& random, std::size_t count, bool large) {
    std::vector<std::int16_t> weights(count);
    std::generate(weights.begin(), weights.end(), [&] { return drawWeight(random, large); });
    return weights;
}

class TapRoutines : public testing::TestWithParam<std::string> {
  protected:
    TapRoutines() {
        Simd::Neon::UseTarget(GetParam().c_str());
        routines = rows::findRoutines();
        Simd::Neon::UseTarget(nullptr);
    }

    void checkColumns(std::size_t channels, std::size_t taps, bool large, Guard guard);
    void checkRows(std::size_t bytes, std::size_t taps, bool large, Guard guard);

    rows::Routines routines{};
    Random random{11};
};

void TapRoutines::checkColumns(std::size_t channels, std::size_t taps, bool large, Guard guard) {
    rows::TapShape const& shape = routines.columns[channels - 1];
    std::size_t const steps = (taps - 1) / shape.step_taps + 1;
    std::size_t const reach = (steps - 1) * shape.step_taps * channels + shape.window_bytes;
    std::size_t const count = 3 * shape.batch;
    constexpr std::size_t kernels = 5;

    std::size_t const words = steps * shape.step_words;
    std::vector<std::vector<std::int16_t>> weights;
    std::vector<std::int16_t> storage(kernels * words + 32);
    void* aligned = storage.data();
    std::size_t room = storage.size() * sizeof(std::int16_t);
    std::align(64, kernels * words * sizeof(std::int16_t), aligned, room);
    auto* const arranged = static_cast<std::int16_t*>(aligned);
    for (std::size_t k = 0; k < kernels; ++k) {
        weights.push_back(drawWeights(random, taps, large));
        shape.arrange(weights[k].data(), taps, arranged + k * words);
    }

    std::size_t const pixels = count + 7;
    GuardedMemory src(pixels * channels + reach, guard);
    GuardedMemory dst(count * channels + 4, guard);
    std::generate_n(src.data(), src.size(), [&] { return random.byte(); });
    std::vector<rows::TapStart> starts(count);
    std::vector<std::size_t> kernel_of(count);
    for (std::size_t i = 0; i < count; ++i) {
        // The first and the last place among them.
        std::size_t const pixel = i == 0 ? 0
                                  : i == 1
                                      ? pixels
                                      : static_cast<std::size_t>(random.between(0, 1000)) % pixels;
        kernel_of[i] = random.next() % kernels;
        starts[i] = {static_cast<std::uint32_t>(pixel * channels),
                     static_cast<std::uint32_t>(kernel_of[i] * words)};
    }
    int const shift = large ? 14 : 6;
    shape.sum({starts.data(), count, arranged, steps, shift}, src.data(), dst.data());

    for (std::size_t i = 0; i < count; ++i) {
        for (std::size_t c = 0; c < channels; ++c) {
            Total total;
            for (std::size_t k = 0; k < taps; ++k) {
                std::size_t const at = starts[i].source + k * channels + c;
                total.add(at < src.size() ? src.data()[at] : 0, weights[kernel_of[i]][k]);
            }
            ASSERT_EQ(dst.data()[i * channels + c], total.byte(shift))
                << "pixel " << i << ", channel " << c << " of " << channels << ", " << taps
                << " taps";
        }
    }
    EXPECT_EQ(src.touched(), 0);
    EXPECT_EQ(dst.touched(), 0);
}

void TapRoutines::checkRows(std::size_t bytes, std::size_t taps, bool large, Guard guard) {
    GuardedMemory src(bytes * taps, guard);
    GuardedMemory dst(bytes, guard);
    std::generate_n(src.data(), src.size(), [&] { return random.byte(); });
    std::vector<std::uint8_t const*> rows;
    for (std::size_t k = 0; k < taps; ++k) {
        rows.push_back(src.data() + k * bytes);
    }
    std::vector<std::int16_t> const weights = drawWeights(random, taps, large);
    int const shift = large ? 14 : 6;
    routines.sum_rows({rows.data(), weights.data(), taps, shift}, bytes, dst.data());
    for (std::size_t i = 0; i < bytes; ++i) {
        Total total;
        for (std::size_t k = 0; k < taps; ++k) {
            total.add(rows[k][i], weights[k]);
        }
        ASSERT_EQ(dst.data()[i], total.byte(shift)) << "byte " << i << ", " << taps << " rows";
    }
    EXPECT_EQ(dst.touched(), 0);
}

TEST_P(TapRoutines, Columns) {
    for (std::size_t channels = 1; channels <= 4; ++channels) {
        for (std::size_t taps = 1; taps <= 70; ++taps) {
            for (bool const large : {false, true}) {
                for (Guard const guard : {Guard::AtEnd, Guard::AtStart}) {
                    checkColumns(channels, taps, large, guard);
                    if (HasFatalFailure()) {
                        return;
                    }
                }
            }
        }
    }
}

TEST_P(TapRoutines, Rows) {
    for (std::size_t more = 0; more <= 70; ++more) {
        std::size_t const bytes = routines.least_row_bytes + more;
        for (std::size_t const taps : {1U, 2U, 3U, 4U, 7U, 18U, 64U}) {
            checkRows(bytes, taps, more % 2 == 0, more % 3 == 0 ? Guard::AtStart : Guard::AtEnd);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// More than 2^32 in sums.
TEST_P(TapRoutines, SumsWrap) {
    checkColumns(1, 3000, true, Guard::AtEnd);
    checkColumns(3, 3000, true, Guard::AtEnd);
    checkRows(routines.least_row_bytes, 3000, true, Guard::AtEnd);
}

bool hasVectors(std::string const& target) {
    return target != "plain" && target != "SCALAR";
}

std::vector<std::string> vectorTargets() {
    std::vector<char const*> const all = Simd::Neon::Targets();
    std::vector<std::string> targets;
    std::copy_if(all.begin(), all.end(), std::back_inserter(targets), hasVectors);
    return targets;
}

INSTANTIATE_TEST_SUITE_P(, TapRoutines, testing::ValuesIn(vectorTargets()),
                         [](auto const& parameter) { return parameter.param; });

// So that an empty table doesn't pass for a fast one.
TEST(TapRoutinesOfThisBuild, AreThereWhereThereIsVectorCode) {
    bool const vectors = hasVectors(Simd::Neon::Targets().front());
    EXPECT_EQ(rows::routines().sum_rows != nullptr, vectors);
    for (rows::TapShape const& shape : rows::routines().columns) {
        EXPECT_EQ(shape.sum != nullptr, vectors);
    }
}

}  // namespace

}  // namespace ox::test
