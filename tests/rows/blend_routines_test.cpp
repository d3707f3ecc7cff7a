// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines of bilinear rows, of every instruction set that this processor has.
#include <vector>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

int blended(int a, int b, std::uint16_t weight) {
    return static_cast<int>((std::int64_t{b} * weight + std::int64_t{a} * (65536 - weight)) >> 16);
}

class BlendRoutines : public RowRoutines {
  protected:
    // Pixels `scale` apart, of which the last stand alone, as at a picture's right edge.
    // @param unit what weights are multiples of
    rows::BlendAxis drawAxis(std::size_t pixels, double scale, std::size_t channels, int unit) {
        rows::BlendAxis axis;
        axis.channels = channels;
        auto const last = static_cast<std::int32_t>(static_cast<double>(pixels - 1) * scale);
        for (std::size_t i = 0; i < pixels; ++i) {
            auto const left = static_cast<std::int32_t>(static_cast<double>(i) * scale);
            axis.pixels.push_back(
                {left, std::min(left + 1, last),
                 static_cast<std::uint16_t>(random.between(0, 65535 / unit) * unit)});
        }
        axis.row_bytes = static_cast<std::size_t>(last + 1) * channels;
        return axis;
    }

    void checkColumns(rows::BlendAxis const& axis, Guard guard) {
        rows::BlendProgram program;
        if (!routines.blend.compile_blend(axis, program)) {
            // No register of bytes is longer.
            EXPECT_TRUE(axis.row_bytes < 64 || axis.pixels.size() * axis.channels < 32);
            return;
        }
        GuardedMemory src(axis.row_bytes, guard);
        GuardedMemory lower(axis.row_bytes, guard);
        GuardedMemory dst(axis.pixels.size() * axis.channels, guard);
        std::generate_n(src.data(), src.size(), [&] { return random.byte(); });
        std::generate_n(lower.data(), lower.size(), [&] { return random.byte(); });
        program.run(program, src.data(), dst.data());
        for (std::size_t i = 0; i < dst.size(); ++i) {
            ASSERT_EQ(dst.data()[i], blendedEntry(axis, src.data(), i))
                << "entry " << i << " of " << axis.channels << " channels";
        }
        EXPECT_EQ(src.touched(), 0);
        EXPECT_EQ(dst.touched(), 0);
        if (program.run_rows == nullptr) {
            return;
        }
        auto const weight = static_cast<std::uint16_t>(random.between(0, 65535));
        program.run_rows(program, src.data(), lower.data(), weight, dst.data());
        for (std::size_t i = 0; i < dst.size(); ++i) {
            ASSERT_EQ(dst.data()[i], blended(blendedEntry(axis, src.data(), i),
                                             blendedEntry(axis, lower.data(), i), weight))
                << "entry " << i << " of " << axis.channels << " channels, two rows";
        }
        EXPECT_EQ(src.touched(), 0);
        EXPECT_EQ(dst.touched(), 0);
    }

    static int blendedEntry(rows::BlendAxis const& axis, std::uint8_t const* src, std::size_t i) {
        rows::PixelPair const& pixel = axis.pixels[i / axis.channels];
        std::size_t const c = i % axis.channels;
        return blended(src[static_cast<std::size_t>(pixel.left) * axis.channels + c],
                       src[static_cast<std::size_t>(pixel.right) * axis.channels + c],
                       pixel.weight);
    }

    Random random{4};
};

TEST_P(BlendRoutines, ColumnsOfEveryScale) {
    for (double const scale : {0.0, 0.1, 0.5, 0.7, 1.0, 1.5, 2.9, 7.0, 31.0, 100.0}) {
        for (std::size_t channels = 1; channels <= 4; ++channels) {
            for (std::size_t pixels = 1; pixels < 150; pixels += 1 + pixels / 8) {
                Guard const guard = pixels % 2 == 0 ? Guard::AtEnd : Guard::AtStart;
                checkColumns(drawAxis(pixels, scale, channels, 1), guard);
                checkColumns(drawAxis(pixels, scale, channels, 1024), guard);
                if (HasFatalFailure()) {
                    return;
                }
            }
        }
    }
}

// Rows about as long as one or two windows, whose pixels lie too far apart for one.
TEST_P(BlendRoutines, ColumnsOfRowsAsLongAsWindows) {
    constexpr std::size_t pixels = 33;
    for (std::size_t bytes = 14; bytes <= 140; ++bytes) {
        double const scale = static_cast<double>(bytes - 1) / (pixels - 1);
        rows::BlendAxis const axis = drawAxis(pixels, scale, 1, 1);
        ASSERT_EQ(axis.row_bytes, bytes);
        checkColumns(axis, Guard::AtEnd);
        checkColumns(axis, Guard::AtStart);
        if (HasFatalFailure()) {
            return;
        }
    }
}

// As at twice the width, and with a pixel that differs.
TEST_P(BlendRoutines, ColumnsOfTwiceTheWidth) {
    for (std::size_t channels = 1; channels <= 4; ++channels) {
        for (std::int32_t width = 1; width < 150; width += 1 + width / 16) {
            rows::BlendAxis axis{{}, channels, static_cast<std::size_t>(width) * channels};
            for (std::int32_t i = 0; i < 2 * width; ++i) {
                std::int32_t const left = std::max((i - 1) / 2, 0);
                int const quarters = i == 0 ? 0 : i % 2 == 0 ? 3 : 1;
                axis.pixels.push_back({left, std::min(left + 1, width - 1),
                                       static_cast<std::uint16_t>(quarters << 14)});
            }
            checkColumns(axis, Guard::AtEnd);
            checkColumns(axis, Guard::AtStart);
            rows::BlendProgram program;
            if (channels <= 2 && width >= 66 && routines.blend.compile_blend(axis, program)) {
                EXPECT_EQ(program.run_rows, nullptr) << "rows are doubled without tables";
            }
            auto const other = static_cast<std::size_t>(random.between(0, 2 * width - 1));
            axis.pixels[other].weight = static_cast<std::uint16_t>(random.between(0, 65535));
            checkColumns(axis, Guard::AtEnd);
            rows::PixelPair& pair =
                axis.pixels[static_cast<std::size_t>(random.between(1, 2 * width - 1))];
            pair.right = pair.left;
            checkColumns(axis, Guard::AtEnd);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

// Every other time, one pixel among those of whole 64ths has another weight.
TEST_P(BlendRoutines, ColumnsOfEvery64th) {
    constexpr std::size_t pixels = 257;
    for (int part = 0; part < 64; ++part) {
        rows::BlendAxis axis = drawAxis(pixels, 1.0, 1, 1);
        for (rows::PixelPair& pair : axis.pixels) {
            pair.weight = static_cast<std::uint16_t>(1024 * part);
        }
        axis.pixels.back().weight = static_cast<std::uint16_t>(part % 2);
        checkColumns(axis, Guard::AtEnd);
        if (HasFatalFailure()) {
            return;
        }
    }
}

class BlendRowRoutines : public UsedRowRoutines {
  protected:
    Random random{4};
};

// All pairs of bytes, by weights at the ends and around the middle.
TEST_P(BlendRowRoutines, RowsOfEveryPair) {
    constexpr std::size_t values = 256;
    std::vector<std::uint8_t> lower(values);
    for (std::size_t i = 0; i < values; ++i) {
        lower[i] = static_cast<std::uint8_t>(i);
    }
    std::vector<std::uint8_t> dst(values);
    std::vector<std::uint16_t> const weights{0,     1,     255,   256,   512,   1024,
                                             16384, 21845, 32767, 32768, 32769, 43690,
                                             49152, 64512, 65280, 65534, 65535};
    for (std::uint16_t const weight : weights) {
        for (std::size_t a = 0; a < values; ++a) {
            std::vector<std::uint8_t> const upper(values, static_cast<std::uint8_t>(a));
            routines.blend.blend_rows(upper.data(), lower.data(), weight, values, dst.data());
            for (std::size_t b = 0; b < values; ++b) {
                ASSERT_EQ(dst[b], blended(static_cast<int>(a), static_cast<int>(b), weight))
                    << a << " and " << b << " by " << weight;
            }
        }
    }
}

TEST_P(BlendRowRoutines, RowsOfEveryWidth) {
    for (std::size_t bytes = 1; bytes <= 210; ++bytes) {
        Guard const guard = bytes % 2 == 0 ? Guard::AtEnd : Guard::AtStart;
        GuardedMemory upper(bytes, guard);
        GuardedMemory lower(bytes, guard);
        GuardedMemory dst(bytes, guard);
        std::generate_n(upper.data(), bytes, [&] { return random.byte(); });
        std::generate_n(lower.data(), bytes, [&] { return random.byte(); });
        auto const weight = static_cast<std::uint16_t>(random.next());
        routines.blend.blend_rows(upper.data(), lower.data(), weight, bytes, dst.data());
        for (std::size_t i = 0; i < bytes; ++i) {
            ASSERT_EQ(dst.data()[i], blended(upper.data()[i], lower.data()[i], weight)) << i;
        }
        EXPECT_EQ(dst.touched(), 0);
    }
}

// A third of the width: `step` 3 copies pixels where the first coordinate has no fraction, and
// blends elsewhere. Without rows in common, both rows are blended at once.
TEST_P(BlendRowRoutines, ColumnsAndRowsOfEveryWeight) {
    constexpr std::int64_t width = 90;
    constexpr std::int64_t src_width = 300;
    std::vector<std::uint8_t> rows(2 * src_width);
    for (std::int32_t const fraction : {0, 1, 40000}) {
        std::vector<std::int32_t> table;
        for (std::int32_t i = 0; i < width; ++i) {
            table.push_back(((3 * i + 1) << 16) + fraction);
        }
        for (int const weight : {0, 1, 2, 3, 32768, 65535}) {
            for (bool const shares_rows : {false, true}) {
                rows::BlendColumnsAndRows columns;
                columns.plan({width, src_width, src_width, width, width}, {1, 8}, table);
                columns.restart(shares_rows);
                std::generate(rows.begin(), rows.end(), [&] { return random.byte(); });
                std::uint8_t const* const upper = rows.data();
                std::uint8_t const* const lower = upper + src_width;
                std::vector<std::uint8_t> dst(width);
                columns.run({upper, 6}, {lower, 7}, static_cast<std::uint16_t>(weight), dst.data());
                for (std::size_t i = 0; i < dst.size(); ++i) {
                    std::size_t const left = 3 * i + 1;
                    auto const part = static_cast<std::uint16_t>(fraction);
                    ASSERT_EQ(dst[i], blended(blended(upper[left], upper[left + 1], part),
                                              blended(lower[left], lower[left + 1], part),
                                              static_cast<std::uint16_t>(weight)))
                        << i << ", fraction " << fraction << ", weight " << weight;
                }
            }
        }
    }
}

// So that a plain routine doesn't pass for a fast one.
TEST_P(BlendRoutines, AreThere) {
    rows::Routines const plain = rows::plainRoutines();
    EXPECT_NE(routines.blend.compile_blend, plain.blend.compile_blend);
    EXPECT_NE(routines.blend.blend_rows, plain.blend.blend_rows);
}

TEST(PlainBlendRoutines, HaveNoProgram) {
    rows::BlendAxis axis;
    axis.pixels.assign(100, {0, 1, 1000});
    axis.channels = 1;
    axis.row_bytes = 200;
    rows::BlendProgram program;
    EXPECT_FALSE(rows::plainRoutines().blend.compile_blend(axis, program));
}

INSTANTIATE_TEST_SUITE_P(, BlendRowRoutines, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });
INSTANTIATE_TEST_SUITE_P(, BlendRoutines, testing::ValuesIn(vectorTargets()),
                         [](auto const& parameter) { return parameter.param; });
GTEST_ALLOW_UNINSTANTIATED_PARAMETERIZED_TEST(BlendRoutines);  // without vector code

}  // namespace

}  // namespace ox::test
