// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every colour through every formula of bytes.
#include <gtest/gtest.h>

#include "simd/kernel_check.h"

namespace ox::test {
namespace {

constexpr std::size_t values = 256;
// The first component of the colours; emulation looks at a few, both ends among them.
constexpr std::size_t stepOfFirst = emulated() ? 15 : 1;

// Calls `check` with the first component of colours.
template <class Check>
void forEachFirst(Check const& check) {
    for (std::size_t first = 0; first < values; first += stepOfFirst) {
        ASSERT_NO_FATAL_FAILURE(check(static_cast<unsigned char>(first)));
    }
}

void store(unsigned char* pixel, unsigned char b, std::size_t g, std::size_t r) {
    pixel[0] = b;
    pixel[1] = static_cast<unsigned char>(g);
    pixel[2] = static_cast<unsigned char>(r);
}

template <class Record>
void checkOn(Record const& record, GuardedPlanes const& sources, std::size_t width,
             std::size_t height) {
    ASSERT_TRUE(everyRoutineAgrees(record, Operands{sources.planes(), {}, width, height}));
}

// Packed colours of one blue value, in a row for each green.
template <class Record>
void checkFromBgr(Record const& record) {
    GuardedPlanes const sources(kernel_model::shapes::packed, values, values);
    forEachFirst([&](unsigned char b) {
        for (std::size_t g = 0; g < values; ++g) {
            for (std::size_t r = 0; r < values; ++r) {
                store(sources[0].row(g) + 3 * r, b, g, r);
            }
        }
        checkOn(record, sources, values, values);
    });
}

TEST(ColourSweep, BgrToGray) {
    checkFromBgr(Simd::ConvertBgrToGray);
}

TEST(ColourSweep, BgrToYuv444) {
    checkFromBgr(Simd::ConvertBgrToYuv444);
}

TEST(ColourSweep, BgrToI420OfSquaresOfOneColour) {
    GuardedPlanes const sources(kernel_model::shapes::packed, 2 * values, 2 * values);
    forEachFirst([&](unsigned char b) {
        for (std::size_t g = 0; g < 2 * values; ++g) {
            for (std::size_t r = 0; r < 2 * values; ++r) {
                store(sources[0].row(g) + 3 * r, b, g / 2, r / 2);
            }
        }
        checkOn(Simd::ConvertBgrToI420, sources, 2 * values, 2 * values);
    });
}

// Four samples of any sum from 0 to 1020, as unequal as they can be, in a changing order.
std::size_t sampleOfSum(std::size_t sum, std::size_t corner) {
    std::size_t const place = (corner + sum) % 4;
    return sum > place * 255 ? std::min<std::size_t>(sum - place * 255, 255) : 0;
}

TEST(ColourSweep, BgrToI420RoundsTheMeanOfEverySum) {
    constexpr std::size_t sums = 1021;
    GuardedPlanes const sources(kernel_model::shapes::packed, 2 * sums, 2);
    for (std::size_t shift = 0; shift < sums; shift += emulated() ? 250U : 17U) {
        for (std::size_t x = 0; x < 2 * sums; ++x) {
            for (std::size_t y = 0; y < 2; ++y) {
                std::size_t const corner = 2 * y + x % 2;
                std::size_t const sum = x / 2;
                unsigned char* const pixel = sources[0].row(y) + 3 * x;
                store(pixel, static_cast<unsigned char>(sampleOfSum(sum, corner)),
                      sampleOfSum((sum + shift) % sums, corner),
                      sampleOfSum((3 * sum + shift) % sums, corner));
            }
        }
        ASSERT_NO_FATAL_FAILURE(checkOn(Simd::ConvertBgrToI420, sources, 2 * sums, 2));
    }
}

TEST(ColourSweep, Yuv444ToBgr) {
    GuardedPlanes const sources(kernel_model::shapes::three, values, values);
    forEachFirst([&](unsigned char y) {
        for (std::size_t u = 0; u < values; ++u) {
            for (std::size_t v = 0; v < values; ++v) {
                sources[0].row(u)[v] = y;
                sources[1].row(u)[v] = static_cast<unsigned char>(u);
                sources[2].row(u)[v] = static_cast<unsigned char>(v);
            }
        }
        checkOn(Simd::ConvertYuv444ToBgr, sources, values, values);
    });
}

// Squares that share a chroma sample hold four lumas; a pair of rows has all of them for one V.
constexpr std::size_t squares = values / 4;

void fillLumas(GuardedPlane const& plane) {
    for (std::size_t y = 0; y < 2 * values; ++y) {
        for (std::size_t x = 0; x < 2 * squares; ++x) {
            plane.row(y)[x] = static_cast<unsigned char>(2 * squares * (y % 2) + x);
        }
    }
}

template <class Record>
void checkFromI420(Record const& record) {
    GuardedPlanes const sources(kernel_model::shapes::i420, 2 * squares, 2 * values);
    fillLumas(sources[0]);
    forEachFirst([&](unsigned char u) {
        for (std::size_t v = 0; v < values; ++v) {
            std::fill_n(sources[1].row(v), squares, u);
            std::fill_n(sources[2].row(v), squares, static_cast<unsigned char>(v));
        }
        checkOn(record, sources, 2 * squares, 2 * values);
    });
}

TEST(ColourSweep, I420ToBgr) {
    checkFromI420(Simd::ConvertI420ToBgr);
}

TEST(ColourSweep, I420ToRgb) {
    checkFromI420(Simd::ConvertI420ToRgb);
}

TEST(ColourSweep, Nv12ToBgrDirectly) {
    GuardedPlanes const sources(kernel_model::shapes::nv12, 2 * squares, 2 * values);
    fillLumas(sources[0]);
    forEachFirst([&](unsigned char u) {
        for (std::size_t v = 0; v < values; ++v) {
            for (std::size_t x = 0; x < squares; ++x) {
                sources[1].row(v)[2 * x] = u;
                sources[1].row(v)[2 * x + 1] = static_cast<unsigned char>(v);
            }
        }
        checkOn(Simd::ConvertNv12ToBgrDirectly, sources, 2 * squares, 2 * values);
    });
}

}  // namespace
}  // namespace ox::test
