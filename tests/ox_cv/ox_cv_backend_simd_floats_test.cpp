// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Constant arithmetic of the vector backend: which samples it changes, and what it refuses.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <ostream>

#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/exceptions.h"

namespace ox::test::cv_backend_simd_floats {

namespace {

using Memory = std::vector<std::uint8_t>;

constexpr FrameFormat floatFormats[] = {FRAME_GRAY_32F, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR};

float loadFloat(Memory const& memory, std::size_t at) {
    float value = 0;
    std::memcpy(&value, &memory.at(at), sizeof value);
    return value;
}

void storeFloat(Memory& memory, std::size_t at, float value) {
    std::memcpy(&memory.at(at), &value, sizeof value);
}

// The rows of a region in a plane's memory, in bytes.
struct Block {
    std::size_t start;
    std::size_t stride;
    std::size_t rows;
    std::size_t row_bytes;
};

Block blockOf(PlacedImage const& image, int plane, Rect roi) {
    FramePlane const& facts = image.frame().layout().plane[plane];
    if (roi.empty()) {
        roi = {0, 0, facts.width, facts.height};
    }
    auto const count = [](int number) { return static_cast<std::size_t>(number); };
    std::size_t const pixel = facts.channels * sizeof(float);
    std::size_t const stride = count(static_cast<int>(facts.stride));
    return {image.leadOf(plane) + count(roi.y) * stride + count(roi.x) * pixel, stride,
            count(roi.height), count(roi.width) * pixel};
}

// Calls visit(byte of the sample, row, byte in the row) for each sample where the operations look
// for it: rows are as many whole floats apart as the stride holds.
template <class Visitor>
void forEachSample(Block const& block, Visitor visit) {
    for (std::size_t y = 0; y < block.rows; ++y) {
        for (std::size_t i = 0; i < block.row_bytes; i += sizeof(float)) {
            visit(block.start + y * (block.stride / 4 * 4) + i, y, i);
        }
    }
}

Memory added(Memory const& before, Block const& block, float value) {
    Memory memory = before;
    forEachSample(block, [&](std::size_t at, std::size_t, std::size_t) {
        storeFloat(memory, at, loadFloat(memory, at) + value);
    });
    return memory;
}

// The samples are kept aside, cleared and accumulated, each with one rounding.
Memory multiplied(Memory const& memory, Block const& block, float value) {
    Memory result = memory;
    for (std::size_t y = 0; y < block.rows; ++y) {
        std::memset(&result.at(block.start + y * block.stride), 0, block.row_bytes);
    }
    forEachSample(block, [&](std::size_t at, std::size_t y, std::size_t i) {
        float const factor = loadFloat(memory, block.start + y * block.stride + i);
        storeFloat(result, at, std::fma(factor, value, loadFloat(result, at)));
    });
    return result;
}

// Equal bytes, where NaNs of any payload are equal.
testing::AssertionResult sameFloats(Memory got, Memory const& expected, Block const& block) {
    forEachSample(block, [&](std::size_t at, std::size_t, std::size_t) {
        if (std::isnan(loadFloat(got, at)) && std::isnan(loadFloat(expected, at))) {
            std::copy_n(expected.begin() + static_cast<std::ptrdiff_t>(at), sizeof(float),
                        got.begin() + static_cast<std::ptrdiff_t>(at));
        }
    });
    auto const at = std::mismatch(got.begin(), got.end(), expected.begin()).first - got.begin();
    if (got == expected) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "byte " << at << " of the plane, whose region starts at "
                                       << block.start << " with a stride of " << block.stride;
}

struct Operation {
    char const* name;
    void (CvBackendSimd::*apply)(Frame&, float, Rect);
    Memory (*model)(Memory const&, Block const&, float);
};

// Names the operation in test reports.
void PrintTo(Operation const& operation, std::ostream* out) {
    *out << operation.name;
}

class CvBackendSimdFloats : public testing::TestWithParam<Operation> {
  protected:
    void apply(Frame& frame, float value, Rect roi) {
        (_backend.*GetParam().apply)(frame, value, roi);
    }

    void check(FrameFormat format, Size size, Rect roi, float value, Placements const& placements) {
        PlacedImage image(drawPicture(_random, {static_cast<int>(format), size.width, size.height}),
                          placements);
        std::vector<Memory> before;
        for (int plane = 0; plane < image.frame().layout().planeCount; ++plane) {
            before.push_back(image.memoryOf(plane));
        }
        apply(image.frame(), value, roi);
        for (int plane = 0; plane < image.frame().layout().planeCount; ++plane) {
            Block const block = blockOf(image, plane, roi);
            Memory const expected =
                GetParam().model(before[static_cast<std::size_t>(plane)], block, value);
            EXPECT_TRUE(sameFloats(image.memoryOf(plane), expected, block))
                << describe(format, size) << ", plane " << plane << ", region " << roi.width
                << " x " << roi.height << " at " << roi.x << ", " << roi.y << ", value " << value;
        }
        EXPECT_TRUE(image.untouchedAround());
    }

    // A rectangle inside the size.
    Rect drawRegion(Size size) {
        Rect roi{_random.between(0, size.width - 1), _random.between(0, size.height - 1), 0, 0};
        roi.width = _random.between(1, size.width - roi.x);
        roi.height = _random.between(1, size.height - roi.y);
        return roi;
    }

    Random& random() { return _random; }

  private:
    Random _random;
    CvBackendSimd _backend;
};

// Whole floats between rows, or none: contiguous frames, and frames that are not.
TEST_P(CvBackendSimdFloats, WholeFramesAndRegions) {
    for (FrameFormat const format : floatFormats) {
        for (int i = 0; i < draws(300); ++i) {
            Size const size{random().between(1, 70), random().between(1, 6)};
            Placements placements{};
            for (PlanePlacement& each : placements) {
                each = {4 * (random().next() % 4),
                        oneIn(random(), 2) ? 0 : 4 * (random().next() % 9), Guard::None};
            }
            check(format, size, {}, drawFloat(random()), placements);
            check(format, size, drawRegion(size), drawFloat(random()), placements);
        }
    }
}

// Longer than any piece that is worked on at a time.
TEST_P(CvBackendSimdFloats, LongRuns) {
    for (FrameFormat const format : floatFormats) {
        for (int const width : {681, 2047, 2048, 2049, 4099, 5000}) {
            check(format, {width, 3}, {}, 0.5F, {});
            check(format, {width, 3}, {}, 1.25F, everywhere({0, 8}));
            check(format, {width, 3}, {1, 1, width - 1, 2}, -3.0F, everywhere({0, 5}));
        }
    }
}

TEST_P(CvBackendSimdFloats, MemoryNeedNotBeAligned) {
    for (FrameFormat const format : floatFormats) {
        for (std::size_t lead = 1; lead < 16; ++lead) {
            Size const size{random().between(1, 40), random().between(1, 4)};
            check(format, size, {}, 7.5F, everywhere({lead, 0}));
            check(format, size, drawRegion(size), 7.5F, everywhere({lead, 12}));
            check(format, size, drawRegion(size), 7.5F, everywhere({lead, lead}));
        }
    }
}

TEST_P(CvBackendSimdFloats, NothingOutsideThePages) {
    for (FrameFormat const format : floatFormats) {
        for (Guard const guard : {Guard::AtStart, Guard::AtEnd}) {
            for (int width = 1; width <= 40; width += emulated() ? 5 : 1) {
                for (std::size_t const gap : {0U, 8U}) {
                    check(format, {width, 3}, {}, 1.5F, everywhere({0, gap, guard}));
                }
            }
        }
    }
}

// Rows whose stride isn't one of whole floats drift towards the start.
TEST_P(CvBackendSimdFloats, StridesLoseTheirLowBits) {
    for (FrameFormat const format : floatFormats) {
        for (std::size_t gap = 1; gap <= 7; ++gap) {
            for (Guard const guard : {Guard::None, Guard::AtStart}) {
                Size const size{random().between(2, 40), random().between(1, 9)};
                check(format, size, {}, 2.5F, everywhere({0, gap, guard}));
                check(format, size, drawRegion(size), -0.75F, everywhere({0, gap, guard}));
            }
        }
    }
}

// A rectangle without two positive sides is none.
TEST_P(CvBackendSimdFloats, EmptyRegionsStandForTheFrame) {
    for (FrameFormat const format : floatFormats) {
        for (Rect const whole : {Rect{1, 1, 0, 2}, Rect{1, 1, 2, 0}, Rect{9, 9, -1, 9},
                                 Rect{-3, -3, 5, -1}, emptyRoi()}) {
            PlacedImage image(drawPicture(random(), {static_cast<int>(format), 5, 3}),
                              everywhere({0, 4}));
            PlacedImage expected(imageOf(image.frame()), everywhere({0, 4}));
            apply(image.frame(), 3.0F, whole);
            apply(expected.frame(), 3.0F, {0, 0, 5, 3});
            EXPECT_TRUE(image.holds(imageOf(expected.frame())));
        }
    }
}

TEST_P(CvBackendSimdFloats, RegionsOutsideAreRefused) {
    PlacedImage image(model::makeImage(model::Gray32f, 8, 8, 1));
    for (Rect const outside : {Rect{8, 0, 2, 2}, Rect{0, 7, 2, 2}, Rect{-2, 0, 2, 2}}) {
        expectStatus(StatusOutOfRange, [&] { apply(image.frame(), 3.0F, outside); });
    }
    EXPECT_TRUE(image.holds(model::makeImage(model::Gray32f, 8, 8, 1)));
}

TEST_P(CvBackendSimdFloats, ChecksTheFrameFirst) {
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_GRAY8, {4, 4});
    expectException(StatusAssertionFailed, "Assertion failed: src_dst.initialized()", [&] {
        apply(none, 3.0F, {9, 9, 9, 9});
    });
    expectException(StatusAssertionFailed,
                    "Assertion failed: src_dst.deviceContext() == DeviceContext::cpuContext()",
                    [&] {
                        apply(elsewhere, 3.0F, {9, 9, 9, 9});
                    });
}

INSTANTIATE_TEST_SUITE_P(Operations, CvBackendSimdFloats,
                         testing::Values(Operation{"Add", &CvBackendSimd::add, &added},
                                         Operation{"Multiply", &CvBackendSimd::mul, &multiplied}),
                         [](auto const& chosen) { return std::string(chosen.param.name); });

bool isFloat(FrameFormat format) {
    return format >= FRAME_GRAY_32F;
}

TEST(CvBackendSimdAdd, OtherFormatsAreRefusedUntouched) {
    CvBackendSimd backend;
    for (FrameFormat const format : allFormats()) {
        if (isFloat(format)) {
            continue;
        }
        model::Image const before = model::makeImage(static_cast<int>(format), 6, 4, 77);
        PlacedImage image(before, everywhere(gapped));
        for (Rect const roi : {Rect{}, Rect{2, 2, 2, 2}}) {
            expectException(StatusNotSupported, unsupported("add", format),
                            [&] { backend.add(image.frame(), 1.0F, roi); });
        }
        EXPECT_TRUE(image.holds(before));
    }
}

// The region is cleared before the format is looked at; what lies around it stays.
TEST(CvBackendSimdMultiply, OtherFormatsAreClearedAndRefused) {
    CvBackendSimd backend;
    for (FrameFormat const format : allFormats()) {
        if (isFloat(format)) {
            continue;
        }
        for (Rect const roi : {Rect{}, Rect{2, 2, 2, 2}, Rect{1, 1, 3, 2}}) {
            model::Image expected = model::makeImage(static_cast<int>(format), 6, 4, 77);
            PlacedImage image(expected, everywhere(gapped));
            Rect const cleared = roi.empty() ? Rect{0, 0, 6, 4} : roi;
            expectException(StatusNotSupported, unsupported("mul", format),
                            [&] { backend.mul(image.frame(), 1.0F, roi); });
            model::paste(model::makeImage(expected.format, cleared.width, cleared.height, 0),
                         expected, cleared.x, cleared.y);
            EXPECT_TRUE(image.holds(expected)) << toString(format);
        }
    }
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_floats
