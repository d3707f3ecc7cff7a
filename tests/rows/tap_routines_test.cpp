// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines of convolutional scaling, of every instruction set that this processor has.
#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

// Where weights are split into bytes, larger ones don't fit.
constexpr int mostOfVectors = 127 * 256 + 127;

// As many as the largest sums take.
constexpr std::size_t tapsOfUnits = 520;

// A sum modulo 2^32, shifted and clamped.
class Total {
  public:
    void add(std::uint8_t sample, std::int16_t weight) { _sum += std::int64_t{sample} * weight; }
    int byte(int shift) const {
        auto const wrapped = static_cast<std::int32_t>(_sum);
        return std::clamp(wrapped >> shift, 0, 255);
    }
    int byte(rows::TapAxis const& axis) const {
        auto const units = static_cast<std::int32_t>(_sum) >> axis.shift;
        return axis.keeps_low_bytes ? units & 0xff : byte(axis.shift);
    }

  private:
    std::int64_t _sum = 0;
};

// Weights as filters have them for 8 and 16 bits, or as large as they get.
enum class Weights { Small, Usual, Large };

std::int16_t drawWeight(Random& random, Weights weights) {
    switch (weights) {
        case Weights::Small:
            return static_cast<std::int16_t>(random.between(-20, 60));
        case Weights::Usual:
            return static_cast<std::int16_t>(random.between(-3000, 9000));
        default:
            return static_cast<std::int16_t>(random.between(-32768, mostOfVectors));
    }
}

std::vector<std::int16_t> drawWeights(Random& random, std::size_t count, Weights weights) {
    std::vector<std::int16_t> drawn(count);
    std::generate(drawn.begin(), drawn.end(), [&] { return drawWeight(random, weights); });
    return drawn;
}

int shiftOf(Weights weights) {
    return weights == Weights::Small ? 6 : 14;
}

class TapRoutines : public RowRoutines {
  protected:
    rows::TapAxis drawAxis(std::size_t pixels, float scale, std::size_t taps, Weights weights);
    void checkColumns(rows::TapAxis const& axis, rows::TapRow row, Guard guard);
    void checkPlane(rows::TapAxis const& axis, std::size_t pixels, Guard guard);

    // Taps whose sums are whole units.
    void checkColumnUnits(int first, int last);

    // Of an axis that windows can't serve.
    void checkIfThereIsAProgram(rows::TapAxis const& axis) {
        rows::TapProgram program;
        if (routines.taps.compile_taps(axis, {1, rowFor(axis)}, program)) {
            checkPlane(axis, rowFor(axis), Guard::AtEnd);
        } else {
            EXPECT_EQ(GetParam(), "AVX3_DL");
        }
    }

    // Pixels of a row that has all taps.
    static std::size_t rowFor(rows::TapAxis const& axis) {
        std::size_t last = 0;
        for (rows::TapStart const start : axis.starts) {
            last = std::max<std::size_t>(last, start.first);
        }
        return last + axis.taps;
    }

    Random random{11};
};

class TapRowRoutines : public RowRoutines {
  protected:
    void checkRows(std::size_t bytes, std::size_t taps, Weights weights, Guard guard);

    // Taps whose sums are whole units.
    void checkRowUnits(int units, std::size_t bytes);

    Random random{11};
};

// The last pixels go back a little, as at a border.
rows::TapAxis TapRoutines::drawAxis(std::size_t pixels, float scale, std::size_t taps,
                                    Weights weights) {
    rows::TapAxis axis;
    axis.taps = taps;
    axis.shift = shiftOf(weights);
    axis.keeps_low_bytes = taps % 5 == 2;
    constexpr int kernels = 5;
    for (int k = 0; k < kernels; ++k) {
        std::vector<std::int16_t> const kernel = drawWeights(random, taps, weights);
        axis.weights.insert(axis.weights.end(), kernel.begin(), kernel.end());
    }
    std::fill_n(axis.weightRow(1), taps, std::int16_t{0});
    for (std::size_t i = 0; i < pixels; ++i) {
        auto const place = static_cast<int>(static_cast<float>(i) * scale);
        int const first = i + 2 < pixels ? place : std::max(place - random.between(0, 3), 0);
        int const kernel = random.between(1, kernels - 1);
        axis.starts.push_back({static_cast<std::uint16_t>(first),
                               static_cast<std::uint16_t>(kernel == 1 ? 0 : kernel)});
    }
    return axis;
}

// Taps behind the row's end add nothing.
void TapRoutines::checkColumns(rows::TapAxis const& axis, rows::TapRow row, Guard guard) {
    rows::TapProgram program;
    if (!routines.taps.compile_taps(axis, row, program)) {
        ASSERT_GT(row.channels, 1U);
        return;
    }
    std::size_t const row_bytes = row.channels * row.pixels;
    ASSERT_GE(program.dst_bytes, axis.starts.size() * row.channels);
    GuardedMemory src(program.src_bytes, guard);
    GuardedMemory dst(program.dst_bytes, guard);
    std::fill_n(src.data(), src.size(), std::uint8_t{0});
    std::generate_n(src.data(), std::min(src.size(), row_bytes), [&] { return random.byte(); });
    program.run(program, src.data(), dst.data());
    for (std::size_t i = 0; i < axis.starts.size() * row.channels; ++i) {
        rows::TapStart const start = axis.starts[i / row.channels];
        Total total;
        for (std::size_t k = 0; k < axis.taps; ++k) {
            std::size_t const at = (start.first + k) * row.channels + i % row.channels;
            total.add(at < src.size() ? src.data()[at] : std::uint8_t{0},
                      axis.weightRow(start.weights)[k]);
        }
        ASSERT_EQ(dst.data()[i], total.byte(axis))
            << "sample " << i << " of " << axis.starts.size() << " pixels of " << row.channels
            << ", " << axis.taps << " taps";
    }
    EXPECT_EQ(src.touched(), 0);
    EXPECT_EQ(dst.touched(), 0);
}

// There is a program for rows of one channel in any case.
void TapRoutines::checkPlane(rows::TapAxis const& axis, std::size_t pixels, Guard guard) {
    rows::TapProgram program;
    ASSERT_TRUE(routines.taps.compile_taps(axis, {1, pixels}, program));
    checkColumns(axis, {1, pixels}, guard);
}

void TapRowRoutines::checkRows(std::size_t bytes, std::size_t taps, Weights weights, Guard guard) {
    GuardedMemory src(bytes * taps, guard);
    GuardedMemory dst(bytes, guard);
    std::generate_n(src.data(), src.size(), [&] { return random.byte(); });
    std::vector<std::uint8_t const*> rows;
    for (std::size_t k = 0; k < taps; ++k) {
        rows.push_back(src.data() + k * bytes);
    }
    std::vector<std::int16_t> const words = drawWeights(random, taps, weights);
    int const shift = shiftOf(weights);
    routines.taps.sum_rows({rows.data(), words.data(), taps, shift}, bytes, dst.data());
    for (std::size_t i = 0; i < bytes; ++i) {
        Total total;
        for (std::size_t k = 0; k < taps; ++k) {
            total.add(rows[k][i], words[k]);
        }
        ASSERT_EQ(dst.data()[i], total.byte(shift)) << "byte " << i << ", " << taps << " rows";
    }
    EXPECT_EQ(dst.touched(), 0);
}

// Weights by which taps of 128 add up to this many units of 2^14.
std::vector<std::int16_t> weightsOf(int units, std::size_t taps) {
    constexpr int most_of_tap = mostOfVectors / 128;
    std::vector<std::int16_t> weights(taps);
    for (std::int16_t& weight : weights) {
        int const part = std::clamp(units, -most_of_tap, most_of_tap);
        weight = static_cast<std::int16_t>(128 * part);
        units -= part;
    }
    EXPECT_EQ(units, 0);
    return weights;
}

void TapRoutines::checkColumnUnits(int first, int last) {
    rows::TapAxis axis;
    axis.taps = tapsOfUnits;
    axis.shift = 14;
    for (int units = first; units <= last; ++units) {
        axis.starts.push_back({0, static_cast<std::uint16_t>(units - first)});
        std::vector<std::int16_t> const weights = weightsOf(units, axis.taps);
        axis.weights.insert(axis.weights.end(), weights.begin(), weights.end());
    }
    rows::TapProgram program;
    ASSERT_TRUE(routines.taps.compile_taps(axis, {1, axis.taps}, program));
    std::vector<std::uint8_t> src(program.src_bytes);
    std::fill_n(src.begin(), axis.taps, std::uint8_t{128});
    std::vector<std::uint8_t> dst(program.dst_bytes);
    program.run(program, src.data(), dst.data());
    for (int units = first; units <= last; ++units) {
        ASSERT_EQ(dst[static_cast<std::size_t>(units - first)], std::clamp(units, 0, 255))
            << "of " << units;
    }
}

void TapRowRoutines::checkRowUnits(int units, std::size_t bytes) {
    std::vector<std::uint8_t> const row(bytes, 128);
    std::vector<std::uint8_t const*> const rows(tapsOfUnits, row.data());
    std::vector<std::int16_t> const weights = weightsOf(units, rows.size());
    std::vector<std::uint8_t> dst(row.size());
    routines.taps.sum_rows({rows.data(), weights.data(), rows.size(), 14}, row.size(), dst.data());
    ASSERT_EQ(dst, std::vector<std::uint8_t>(row.size(),
                                             static_cast<std::uint8_t>(std::clamp(units, 0, 255))))
        << "of " << units;
}

constexpr Weights allWeights[]{Weights::Small, Weights::Usual, Weights::Large};

// As where the width falls by a whole number: the middle pixels have one filter, but for one here.
TEST_P(TapRoutines, ColumnsOfOneFilter) {
    for (std::size_t channels = 1; channels <= 4; ++channels) {
        for (int scale = 1; scale <= 5; ++scale) {
            for (std::size_t taps = 1; taps <= 30; taps += emulated() ? 5U : 2U) {
                std::size_t const pixels = 97;
                rows::TapAxis axis = drawAxis(pixels, static_cast<float>(scale), taps,
                                              taps % 4 == 1 ? Weights::Usual : Weights::Small);
                for (std::size_t i = 2; i + 2 < pixels; ++i) {
                    axis.starts[i].weights = 2;
                }
                axis.starts[48].weights = 3;
                checkColumns(axis, {channels, rowFor(axis)}, Guard::AtEnd);
                checkColumns(axis, {channels, rowFor(axis) - taps / 2}, Guard::AtStart);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

TEST_P(TapRoutines, ColumnsOfEveryScaleAndTapCount) {
    for (float const scale : {1.0F, 1.5F, 2.5F, 3.0F, 3.9F, 5.3F, 8.0F, 11.0F, 28.0F}) {
        for (std::size_t taps = 1; taps <= 140; taps += taps < 36 ? 1 : 13) {
            Weights const weights = allWeights[taps % 3];
            Guard const guard = taps % 2 == 0 ? Guard::AtStart : Guard::AtEnd;
            rows::TapAxis const axis = drawAxis(37, scale, taps, weights);
            checkPlane(axis, rowFor(axis), guard);
            checkColumns(axis, {1 + taps % 4, rowFor(axis)}, guard);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(TapRoutines, ColumnsOfEveryWidth) {
    for (std::size_t pixels = 1; pixels <= 80; ++pixels) {
        for (Weights const weights : allWeights) {
            rows::TapAxis const axis = drawAxis(pixels, 2.7F, 9, weights);
            checkPlane(axis, rowFor(axis), Guard::AtEnd);
            checkColumns(axis, {1 + pixels % 4, rowFor(axis)}, Guard::AtStart);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(TapRoutines, TapsBehindTheRow) {
    for (std::size_t taps = 1; taps <= 40; taps += 3) {
        for (std::size_t channels = 1; channels <= 4; ++channels) {
            rows::TapAxis const axis = drawAxis(30, 1.9F, taps, allWeights[taps % 3]);
            for (std::size_t pixels = 1; pixels < rowFor(axis); pixels += 5) {
                checkColumns(axis, {channels, pixels}, Guard::AtEnd);
            }
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// Interleaved rows as they are, where there is a program for them: nothing is read or written
// behind their ends.
TEST_P(TapRoutines, ThreeChannelsNeedNoRoom) {
    for (float const scale : {0.4F, 1.0F, 1.7F, 3.0F, 3.4F, 4.4F, 9.0F}) {
        rows::TapAxis const axis = drawAxis(41, scale, 7, Weights::Usual);
        rows::TapProgram program;
        ASSERT_TRUE(routines.taps.compile_taps(axis, {3, rowFor(axis)}, program));
        EXPECT_EQ(program.src_bytes, 3 * rowFor(axis));
        EXPECT_EQ(program.dst_bytes, 3 * axis.starts.size());
    }
}

// No program, or the right one.
TEST_P(TapRoutines, ColumnsInAnyOrder) {
    rows::TapAxis axis = drawAxis(50, 1.0F, 12, Weights::Usual);
    for (rows::TapStart& start : axis.starts) {
        start.first = static_cast<std::uint16_t>(random.between(0, 8191));
    }
    checkIfThereIsAProgram(axis);
}

TEST_P(TapRoutines, WeightsThatAreTooLargeToBeSplit) {
    rows::TapAxis axis = drawAxis(20, 2.0F, 5, Weights::Large);
    axis.weightRow(3)[2] = mostOfVectors + 1;
    checkIfThereIsAProgram(axis);
}

TEST_P(TapRoutines, SumsWrap) {
    checkPlane(drawAxis(3, 1.0F, 3000, Weights::Large), 3010, Guard::AtEnd);
}

// Sums around the ends of bytes, of signed and unsigned words, and of 32 bits.
constexpr int endsOfSums[]{0, 256, 32768, 33022, 65536, 98304, 130000};

TEST_P(TapRoutines, SumsAreClampedWhereverTheyLie) {
    for (int const middle : endsOfSums) {
        for (int const sign : {1, -1}) {
            checkColumnUnits(sign * middle - 600, sign * middle + 600);
        }
    }
}

TEST_P(TapRowRoutines, Rows) {
    for (std::size_t bytes = 1; bytes <= 140; ++bytes) {
        for (std::size_t const taps : {0U, 1U, 2U, 3U, 4U, 5U, 7U, 18U, 64U}) {
            checkRows(bytes, taps, allWeights[(bytes + taps) % 3],
                      bytes % 2 == 0 ? Guard::AtStart : Guard::AtEnd);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(TapRowRoutines, SumsWrap) {
    checkRows(64, 3000, Weights::Large, Guard::AtEnd);
    checkRows(15, 3000, Weights::Large, Guard::AtEnd);
}

TEST_P(TapRowRoutines, SumsAreClampedWhereverTheyLie) {
    for (int const middle : endsOfSums) {
        for (int const sign : {1, -1}) {
            for (int units = -600; units <= 600 && !HasFatalFailure(); units += 10) {
                checkRowUnits(sign * middle + units, 64);
                checkRowUnits(sign * middle + units, 15);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, TapRowRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });
INSTANTIATE_TEST_SUITE_P(, TapRoutines, testing::ValuesIn(vectorTargets()),
                         [](auto const& parameter) { return parameter.param; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(TapRoutines);  // without vector code

// So that neither an empty table nor a plain routine passes for a fast one.
TEST(RowRoutinesOfThisBuild, AreThereWhereThereIsVectorCode) {
    bool const vectors = hasVectors(testTargets().front());
    rows::Routines const& best = rows::routines();
    rows::Routines const plain = rows::plainRoutines();
    EXPECT_EQ(best.taps.sum_rows != plain.taps.sum_rows, vectors);
    EXPECT_EQ(best.taps.compile_taps != plain.taps.compile_taps, vectors);
    EXPECT_EQ(best.blend.blend_rows != plain.blend.blend_rows, vectors);
    EXPECT_EQ(best.blend.compile_blend != plain.blend.compile_blend, vectors);
    EXPECT_EQ(best.colour.yuv_to_bgr[0] != plain.colour.yuv_to_bgr[0], vectors);
    EXPECT_EQ(best.colour.bgr_to_yuv[0] != plain.colour.bgr_to_yuv[0], vectors);
    EXPECT_EQ(best.colour.split_two != plain.colour.split_two, vectors);
    EXPECT_EQ(best.colour.bytes_to_floats != plain.colour.bytes_to_floats, vectors);
}

TEST(PlainTapRoutines, HaveNoProgram) {
    rows::TapAxis axis;
    axis.taps = 1;
    axis.weights = {1};
    axis.starts.assign(100, {0, 0});
    rows::TapProgram program;
    EXPECT_FALSE(rows::plainRoutines().taps.compile_taps(axis, {1, 100}, program));
}

}  // namespace

}  // namespace ox::test
