// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What the vector backend's resizing refuses, in which order it looks, and that nothing is written.
#include <gtest/gtest.h>
#include <limits>
#include <optional>

#include "model/resize.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/resized_image.h"
#include "simd/vector_targets.h"
#include "support/exceptions.h"
#include "support/sparse_memory.h"

namespace ox::test::cv_backend_simd_resize_refusals {

namespace {

constexpr char otherFormat[] =
    "Assertion failed: src.initialized() && src.format() == dst.format()";
constexpr char otherBits[] = "Assertion failed: bits_per_channel == 8 || bits_per_channel == 32";
constexpr char noFloatArea[] = "resize: Unsupported method.";
constexpr char longRows[] = "resize: Rows are too long.";

// Each call breaks one rule and, where it can, all that are looked at later.
TEST(CvBackendSimdResizeRefusals, ChecksInTheirOrder) {
    CvBackendSimd backend;
    backend.setIntProperty(PropertyResizeMethod, ResizeArea);
    TestFrame const src = ramp(FRAME_C1_16U, {4, 4});
    TestFrame dst(FRAME_C1_16U, {2, 2});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_C1_16U, {4, 4});
    Frame other_format = deviceFrame(FRAME_GRAY_32F, {4, 4});
    Frame other_device;
    other_device.reuse(FRAME_C1_16U, {4, 4}, DeviceContext(8, nullptr), 0);
    Rect const outside{3, 3, 2, 2};
    auto const expectAssertion = [&](char const* text, Frame const& from, Frame& to) {
        expectException(StatusAssertionFailed, text,
                        [&] { backend.resize(from, to, outside, outside); });
    };
    expectAssertion(otherFormat, emptyFrame(), none);
    expectAssertion(otherFormat, emptyFrame(), elsewhere);
    expectAssertion(otherFormat, elsewhere, none);
    expectAssertion(otherFormat, elsewhere, other_format);
    expectAssertion(wrongDevice, src.frame(), elsewhere);
    expectAssertion(wrongDevice, elsewhere, dst.frame());
    expectAssertion(wrongDevice, elsewhere, elsewhere);
    expectAssertion(wrongDevice, elsewhere, other_device);
    expectAssertion(otherBits, src.frame(), dst.frame());
    TestFrame const floats = ramp(FRAME_GRAY_32F, {4, 4});
    TestFrame float_dst(FRAME_GRAY_32F, {4, 4});
    for (Rect const inside : {Rect{}, Rect{1, 1, 2, 2}}) {
        expectStatus(StatusOutOfRange,
                     [&] { backend.resize(floats.frame(), float_dst.frame(), outside, inside); });
        expectStatus(StatusOutOfRange,
                     [&] { backend.resize(floats.frame(), float_dst.frame(), inside, outside); });
    }
    expectException(StatusNotSupported, noFloatArea,
                    [&] { backend.resize(floats.frame(), float_dst.frame(), {}, {}); });
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
    EXPECT_TRUE(isFilledWith(float_dst.frame(), 0));
}

TEST(CvBackendSimdResizeRefusals, OtherFormats) {
    CvBackendSimd backend;
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {4, 4});
        for (FrameFormat const other : allFormats()) {
            if (other != format) {
                TestFrame dst(other, {4, 4});
                expectException(StatusAssertionFailed, otherFormat,
                                [&] { backend.resize(src.frame(), dst.frame(), {}, {}); });
                EXPECT_TRUE(isFilledWith(dst.frame(), 0));
            }
        }
    }
}

TEST(CvBackendSimdResizeRefusals, SixteenBits) {
    CvBackendSimd backend;
    for (Size const size : {Size{4, 4}, Size{1, 4}, Size{4, 1}}) {
        TestFrame const src = ramp(FRAME_C1_16U, size);
        for (int const method : {0, 1, 2}) {
            backend.setIntProperty(PropertyResizeMethod, method);
            for (Rect const region : {Rect{}, Rect{0, 0, 1, 1}}) {
                TestFrame dst(FRAME_C1_16U, {4, 4});
                expectException(StatusAssertionFailed, otherBits,
                                [&] { backend.resize(src.frame(), dst.frame(), region, region); });
                EXPECT_TRUE(isFilledWith(dst.frame(), 0));
            }
        }
    }
}

// The region decides whether the request is one for the nearest sample.
TEST(CvBackendSimdResizeRefusals, FloatsByArea) {
    CvBackendSimd backend;
    Random random;
    for (FrameFormat const format :
         {FRAME_C1_32U, FRAME_GRAY_32F, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        backend.setIntProperty(PropertyResizeMethod, ResizeArea);
        model::Image const picture = drawSamples(random, {static_cast<int>(format), 6, 5});
        PlacedImage const src(picture);
        model::Image const blank = model::makeImage(picture.format, 20, 3, 7);
        PlacedImage dst(blank);
        auto const refuse = [&](Rect src_roi, Rect dst_roi) {
            expectException(StatusNotSupported, noFloatArea,
                            [&] { backend.resize(src.frame(), dst.frame(), src_roi, dst_roi); });
        };
        for (bool const vector : {true, false}) {
            std::optional<VectorRoutinesOff> off;
            if (!vector) {
                off.emplace();
            }
            refuse({}, {});
            refuse({1, 1, 2, 2}, {});
            refuse({}, {3, 1, 1, 1});
            refuse({0, 0, 6, 5}, {0, 0, 6, 3});
        }
        EXPECT_TRUE(dst.holds(blank));
        for (Rect const line : {Rect{2, 0, 1, 5}, Rect{0, 3, 6, 1}, Rect{5, 4, 1, 1}}) {
            backend.resize(src.frame(), dst.frame(), line, {});
            model::Image const part = model::crop(picture, line.x, line.y, line.width, line.height);
            EXPECT_TRUE(dst.holds(resizedImage(part, {20, 3}, ResizeNearestNeighbour)));
        }
        backend.setIntProperty(PropertyResizeMethod, ResizeBilinear);
        backend.resize(src.frame(), dst.frame(), {}, {});
        EXPECT_TRUE(dst.holds(resizedImage(picture, {20, 3}, ResizeBilinear)));
    }
}

TEST(CvBackendSimdResizeRefusals, RegionsThatLeaveTheirFrame) {
    CvBackendSimd backend;
    constexpr int most = std::numeric_limits<int>::max();
    TestFrame const src = ramp(FRAME_NV12, {6, 4});
    TestFrame dst(FRAME_NV12, {6, 4});
    for (Rect const outside :
         {Rect{1, 0, 6, 4}, Rect{0, 1, 6, 4}, Rect{-1, 0, 2, 2}, Rect{0, -1, 2, 2},
          Rect{0, 0, 7, 4}, Rect{0, 0, 6, 5}, Rect{6, 0, 1, 1}, Rect{0, 4, 1, 1},
          Rect{most, most, most, most}, Rect{0, 0, most, 1}}) {
        for (int const method : {0, 1, 2}) {
            backend.setIntProperty(PropertyResizeMethod, method);
            expectStatus(StatusOutOfRange,
                         [&] { backend.resize(src.frame(), dst.frame(), outside, {}); });
            expectStatus(StatusOutOfRange,
                         [&] { backend.resize(src.frame(), dst.frame(), {}, outside); });
        }
    }
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
    dst.expectGapsUntouched();
}

// Frames of two rows of any length. Memory is taken for what is touched only.
class CvBackendSimdLongRows : public testing::Test {
  protected:
    static constexpr std::int64_t stride = std::int64_t{6} << 30;
    static constexpr std::size_t bytes = 2 * std::size_t{stride};

    // Planes lie half a stride apart.
    Frame frameOf(FrameFormat format, int width) const {
        FrameLayout layout(format, {width, 2}, 1);
        unsigned char* addresses[4]{};
        for (int p = 0; p < layout.planeCount; ++p) {
            layout.plane[p].stride = stride;
            addresses[p] = _memory + p * (stride / 2);
        }
        return Frame::wrap(layout, addresses);
    }

    CvBackendSimd backend;

  private:
    SparseMemory _sparse{bytes};
    unsigned char* const _memory = _sparse.data();
};

constexpr int longestRow = std::numeric_limits<int>::max();  // in bytes

TEST_F(CvBackendSimdLongRows, AreRefusedFromTwoGibibytesOn) {
    struct {
        FrameFormat format;
        int width;
    } const cases[] = {
        {FRAME_C2_8U, longestRow / 2 + 1},    {FRAME_BGR24, longestRow / 3 + 1},
        {FRAME_C4_8U, longestRow / 4 + 1},    {FRAME_GRAY_32F, longestRow / 4 + 1},
        {FRAME_BGR_32F, longestRow / 12 + 1}, {FRAME_NV12, longestRow},  // in plane 1
    };
    for (auto const& [format, width] : cases) {
        Frame const src = frameOf(format, width);
        for (int const method : {0, 1, 2}) {
            if (method == 2 && hasFloats(format)) {
                continue;
            }
            backend.setIntProperty(PropertyResizeMethod, method);
            TestFrame dst(format, {4, 2});
            fill(dst.frame(), 7);
            expectException(StatusCapacityExceeded, longRows,
                            [&] { backend.resize(src, dst.frame(), {}, {}); });
            EXPECT_TRUE(isFilledWith(dst.frame(), 7)) << toString(format);
            backend.resize(src, dst.frame(), {width - 4, 0, 4, 2}, {});
            EXPECT_TRUE(isFilledWith(dst.frame(), 0)) << "the region's rows are short";
        }
    }
}

TEST_F(CvBackendSimdLongRows, AreTakenUpToThere) {
    backend.setIntProperty(PropertyResizeMethod, ResizeNearestNeighbour);
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_C2_8U}) {
        int const channels = format == FRAME_C2_8U ? 2 : 1;
        int const width = longestRow / channels;
        Frame const src = frameOf(format, width);
        TestFrame dst(format, {16, 2});
        for (int i = 0; i < 16; ++i) {
            auto const column = model::nearestPosition(0, static_cast<std::uint64_t>(width), 16,
                                                       static_cast<std::uint64_t>(i));
            rowOf(src, 0, 1)[column * channels] = static_cast<unsigned char>(i + 1);
        }
        backend.resize(src, dst.frame(), {}, {});
        for (int i = 0; i < 16; ++i) {
            EXPECT_EQ(dst.row(0, 1)[i * channels], i + 1);
        }
    }
}

// The last pixels of the row behind its first two gibibytes.
TEST_F(CvBackendSimdLongRows, PartsOfThemReceive) {
    TestFrame const src = ramp(FRAME_C2_8U, {2, 2});
    Frame dst = frameOf(FRAME_C2_8U, longestRow / 2 + 1);
    backend.resize(src.frame(), dst, {}, {longestRow / 2 - 1, 0, 2, 2});
    EXPECT_EQ(rowOf(dst, 0, 1)[longestRow], src.row(0, 1)[3]);
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_resize_refusals
