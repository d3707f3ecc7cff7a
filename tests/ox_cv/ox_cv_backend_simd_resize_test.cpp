// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Resizing of frames by the vector backend, in pictures small enough to be written out as numbers.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <exception>
#include <vector>

#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/resized_image.h"
#include "simd/vector_targets.h"
#include "support/allocation_counter.h"

namespace ox::test {

namespace {

// What becomes of a frame, whole to whole.
std::vector<Rows> resized(CvBackendSimd& backend, TestFrame const& src, Size size) {
    TestFrame dst(src.frame().format(), size, {5, Guard::AtEnd});
    fill(dst.frame(), 99);
    backend.resize(src.frame(), dst.frame(), {}, {});
    dst.expectGapsUntouched();
    return planesOf(dst.frame());
}

Rows resizedGray(CvBackendSimd& backend, Rows const& rows, Size size) {
    return resized(backend, grayPicture(rows), size)[0];
}

class CvBackendSimdResize : public testing::Test {
  protected:
    void use(int method) { EXPECT_EQ(backend.setIntProperty(PropertyResizeMethod, method), 1); }

    CvBackendSimd backend;
};

// By four: the sample behind the middle, the two around it, the mean of all.
TEST_F(CvBackendSimdResize, ThePropertyGivesTheMethod) {
    Bytes const row{0, 100, 200, 60, 80, 20, 40, 240};
    Rows const expected[] = {{{200, 40}, {200, 40}}, {{150, 30}, {150, 30}}, {{90, 95}, {90, 95}}};
    EXPECT_EQ(resizedGray(backend, {row, row}, {2, 2}), expected[1]) << "before it is set";
    for (int const method : {0, 2, 1}) {
        use(method);
        backend.setIntProperty(PropertyWarpMethod, (method + 1) % 3);
        EXPECT_EQ(resizedGray(backend, {row, row}, {2, 2}), expected[method]) << method;
        VectorRoutinesOff const off;
        EXPECT_EQ(resizedGray(backend, {row, row}, {2, 2}), expected[method]) << method;
    }
}

TEST_F(CvBackendSimdResize, ALineGoesToTheNearestSample) {
    for (int const method : {0, 1, 2}) {
        use(method);
        EXPECT_EQ(resizedGray(backend, {{10, 20}}, {4, 2}), (Rows(2, {10, 10, 20, 20})));
        EXPECT_EQ(resizedGray(backend, {{10}, {20}}, {1, 4}), (Rows{{10}, {10}, {20}, {20}}));
        EXPECT_EQ(resizedGray(backend, {{7}}, {20, 2}), Rows(2, Bytes(20, 7)));
        Bytes wide(40, 10);
        std::fill(wide.begin() + 20, wide.end(), 20);
        EXPECT_EQ(resizedGray(backend, {{10, 20}}, {40, 1}), Rows{wide});
        EXPECT_EQ(backend.getIntProperty(PropertyResizeMethod), method);
    }
}

// What is a line is the region, not the frame.
TEST_F(CvBackendSimdResize, ALineOfARegionGoesToTheNearestSample) {
    TestFrame const src = grayPicture({{1, 2, 3, 4}, {5, 10, 20, 8}, {9, 30, 40, 12}});
    for (int const method : {0, 1, 2}) {
        use(method);
        TestFrame row = grayPicture({Bytes(4, 0)});
        backend.resize(src.frame(), row.frame(), {1, 1, 2, 1}, {});
        EXPECT_EQ(rowsOf(row.frame()), (Rows{{10, 10, 20, 20}}));
        TestFrame column = grayPicture({{0}, {0}, {0}, {0}});
        backend.resize(src.frame(), column.frame(), {2, 1, 1, 2}, {});
        EXPECT_EQ(rowsOf(column.frame()), (Rows{{20}, {20}, {40}, {40}}));
    }
}

TEST_F(CvBackendSimdResize, ALineAsTheDestinationChangesNoMethod) {
    Rows const src{{0, 100, 200, 60}, {0, 100, 200, 60}};
    Bytes const expected{200, 150, 90};
    for (int const method : {0, 1, 2}) {
        use(method);
        int const value = expected[static_cast<std::size_t>(method)];
        EXPECT_EQ(resizedGray(backend, src, {1, 2}), (Rows{{value}, {value}}));
        EXPECT_EQ(resizedGray(backend, src, {1, 1}), (Rows{{value}}));
        TestFrame dst = grayPicture({{7, 7, 7}, {7, 7, 7}});
        backend.resize(grayPicture(src).frame(), dst.frame(), {}, {1, 0, 1, 2});
        EXPECT_EQ(rowsOf(dst.frame()), (Rows(2, {7, value, 7})));
    }
}

// Chroma of one pixel, by each class that a plane of one pixel comes to.
TEST_F(CvBackendSimdResize, SmallestHalfChroma) {
    TestFrame const src = picture(FRAME_I420, {2, 2}, {{{10, 30}, {50, 70}}, {{101}}, {{202}}});
    for (int const method : {0, 1, 2}) {
        use(method);
        for (Size const size : {Size{2, 2}, Size{4, 4}, Size{5, 3}, Size{31, 4}, Size{40, 9}}) {
            auto const planes = resized(backend, src, size);
            auto const columns = static_cast<std::size_t>(size.width + 1) / 2;
            auto const rows = static_cast<std::size_t>(size.height + 1) / 2;
            EXPECT_EQ(planes[1], Rows(rows, Bytes(columns, 101))) << method << ", " << size.width;
            EXPECT_EQ(planes[2], Rows(rows, Bytes(columns, 202))) << method << ", " << size.width;
        }
    }
}

// The frame isn't a line, so that its luma is blended; whether its chroma, of one column, is too
// depends on the class.
TEST_F(CvBackendSimdResize, ChromaOfOneColumn) {
    TestFrame const src = picture(FRAME_NV12, {2, 4}, {Rows(4, {0, 80}), {{10, 110}, {30, 130}}});
    auto const pairs = [](int columns, Bytes const& us) {
        Rows rows;
        for (int const u : us) {
            rows.emplace_back();
            for (int x = 0; x < columns; ++x) {
                rows.back().insert(rows.back().end(), {u, u + 100});
            }
        }
        return rows;
    };
    EXPECT_EQ(resized(backend, src, {4, 4})[0], Rows(4, {0, 20, 60, 80}));
    EXPECT_EQ(resized(backend, src, {30, 8})[1], pairs(15, {10, 10, 30, 30}));
    EXPECT_EQ(resized(backend, src, {32, 8})[1], pairs(16, {10, 15, 25, 30}));
    VectorRoutinesOff const off;
    EXPECT_EQ(resized(backend, src, {32, 8})[1], pairs(16, {10, 10, 30, 30}));
}

// Chroma pairs stay together, whatever the direction.
TEST_F(CvBackendSimdResize, PairsOfChromaAreTwoChannels) {
    for (FrameFormat const format : {FRAME_NV12, FRAME_NV21}) {
        TestFrame const src = picture(
            format, {8, 4}, {Rows(4, Bytes(8, 50)), Rows(2, {0, 255, 40, 215, 80, 175, 120, 135})});
        EXPECT_EQ(resized(backend, src, {4, 4})[1], Rows(2, {20, 235, 100, 155}));
    }
}

// A macro-pixel of two pixels isn't seen as such: luma and chroma are blended by position.
TEST_F(CvBackendSimdResize, PackedPairsAreTwoChannels) {
    for (FrameFormat const format : {FRAME_YUYV, FRAME_UYVY, FRAME_C2_8U}) {
        TestFrame const src =
            picture(format, {4, 2}, {Rows(2, {0, 100, 40, 140, 80, 180, 120, 220})});
        EXPECT_EQ(resized(backend, src, {2, 2})[0], Rows(2, {20, 120, 100, 200}));
        // an odd width has whole macro-pixels of its own
        if (format != FRAME_C2_8U) {
            EXPECT_EQ(resized(backend, src, {1, 2})[0], Rows(2, {20, 120, 100, 200}));
        }
    }
}

// A weight in double rounds to nothing where one in float rounds to a sixteenth.
TEST_F(CvBackendSimdResize, TheSwitchChoosesTheClass) {
    Bytes row(17, 0);
    row[1] = 255;
    auto const columnOf = [&](int x) {
        return resizedGray(backend, {row, row}, {1424, 2})[0][static_cast<std::size_t>(x)];
    };
    EXPECT_EQ(columnOf(44), 0);
    EXPECT_EQ(columnOf(46), 16);
    {
        VectorRoutinesOff const off;
        EXPECT_EQ(columnOf(44), 16);
        EXPECT_EQ(columnOf(46), 16);
    }
    EXPECT_EQ(columnOf(44), 0);
}

// Samples of 32 bits are floats whatever their name; nearest ones are copied as they are.
TEST_F(CvBackendSimdResize, ThirtyTwoBitsAreFloats) {
    for (FrameFormat const format : {FRAME_C1_32U, FRAME_GRAY_32F}) {
        float const samples[] = {1.0F, -3.0F, 0.25F, 0x1p-149F};
        TestFrame src(format, {4, 2});
        for (int y = 0; y < 2; ++y) {
            std::memcpy(src.row(0, y), samples, sizeof samples);
        }
        TestFrame dst(format, {2, 2});
        backend.resize(src.frame(), dst.frame(), {}, {});
        float got[2];
        std::memcpy(got, dst.row(0, 1), sizeof got);
        EXPECT_EQ(got[0], -1.0F);
        EXPECT_EQ(got[1], 0.125F);
    }
    use(0);
    Random random;
    for (FrameFormat const format : {FRAME_C1_32U, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        model::Image const bits = drawImage(random, {static_cast<int>(format), 9, 5});
        PlacedImage const src(bits);
        PlacedImage dst(model::makeImage(bits.format, 20, 3, 0));
        backend.resize(src.frame(), dst.frame(), {}, {});
        EXPECT_TRUE(dst.holds(resizedImage(bits, {20, 3}, 0)));
    }
}

// A frame of 32 bits a sample on memory that others hold too.
Frame wrapped(std::vector<unsigned char>& bytes, FrameFormat format, Size size,
              std::int64_t stride) {
    FrameLayout layout(format, size, 1);
    layout.plane[0].stride = stride;
    layout.plane[0].planeBytes = static_cast<std::uint64_t>(stride * size.height);
    unsigned char* const address[] = {bytes.data()};
    return Frame::wrap(layout, address);
}

// The low two bits of a stride don't count, so that rows drift; nearest samples go by bytes.
TEST_F(CvBackendSimdResize, StridesOfFloatsCountInWholeFloats) {
    Random random;
    for (std::int64_t const gap : {1, 2, 3, 13}) {
        std::vector<unsigned char> source(4 * 40);
        std::generate(source.begin(), source.end(),
                      [&] { return static_cast<unsigned char>(random.between(0, 255)); });
        std::vector<unsigned char> drifted(3 * 60, 7);
        std::vector<unsigned char> expected = drifted;
        Frame dst = wrapped(drifted, FRAME_GRAY_32F, {7, 3}, 28 + gap);
        backend.resize(wrapped(source, FRAME_GRAY_32F, {5, 4}, 20 + gap), dst, {}, {});
        std::int64_t const whole = gap / 4 * 4;
        Frame aligned = wrapped(expected, FRAME_GRAY_32F, {7, 3}, 28 + whole);
        backend.resize(wrapped(source, FRAME_GRAY_32F, {5, 4}, 20 + whole), aligned, {}, {});
        EXPECT_EQ(drifted, expected) << gap;
    }
}

// An equal size is resampled as any other, which gives the source.
TEST_F(CvBackendSimdResize, EqualSizes) {
    Random random;
    for (FrameFormat const format : resizedFormats()) {
        model::Image const image = drawSamples(random, {static_cast<int>(format), 18, 5});
        PlacedImage const src(image);
        for (int const method : {0, 1, 2}) {
            if (method == 2 && hasFloats(format)) {
                continue;
            }
            use(method);
            PlacedImage dst(model::makeImage(image.format, 18, 5, 77));
            backend.resize(src.frame(), dst.frame(), {}, {});
            // a negative zero may come back as a positive one
            bool const exact = method == 0 || !hasFloats(format);
            EXPECT_TRUE(dst.holds(exact ? image : resizedImage(image, {18, 5}, method)))
                << toString(format) << ", method " << method;
        }
    }
}

// A rectangle without a positive side selects the whole frame, wherever it is.
TEST_F(CvBackendSimdResize, EmptyRegionsAreTheWholeFrame) {
    Rows const rows{{10, 20}, {30, 40}};
    TestFrame const src = grayPicture(rows);
    for (Rect const empty : {Rect{}, Rect{1, 1, 0, 0}, Rect{0, 0, 1, 0}, Rect{0, 0, 0, 1},
                             Rect{9, 9, 0, 9}, Rect{-5, 0, 3, -1}, Rect{0, 0, -2, -2}}) {
        for (bool const of_src : {true, false}) {
            TestFrame dst = grayPicture({{0, 0}, {0, 0}});
            backend.resize(src.frame(), dst.frame(), of_src ? empty : Rect{},
                           of_src ? Rect{} : empty);
            EXPECT_EQ(rowsOf(dst.frame()), rows);
        }
    }
}

// Regions without rows or columns are frames.
TEST_F(CvBackendSimdResize, FramesWithoutPixelsGiveAndReceiveNothing) {
    for (FrameFormat const format : {FRAME_BGR24, FRAME_NV12, FRAME_BGR_32F_PLANAR}) {
        PlacedImage image(model::makeImage(static_cast<int>(format), 20, 6, 9),
                          everywhere({0, 0, Guard::AtEnd}));
        for (Rect const rect : {Rect{20, 0, 0, 6}, Rect{0, 6, 16, 0}, Rect{20, 6, 0, 0}}) {
            Frame nothing = getRegion(image.frame(), rect);
            for (int const method : {0, 1, 2}) {
                if (method == 2 && hasFloats(format)) {
                    continue;
                }
                use(method);
                for (Size const size : {Size{5, 3}, Size{40, 9}}) {
                    TestFrame other(format, size);
                    fill(other.frame(), 7);
                    backend.resize(nothing, other.frame(), {}, {});
                    EXPECT_TRUE(isFilledWith(other.frame(), 7));
                    backend.resize(other.frame(), nothing, {}, {});
                }
            }
        }
        EXPECT_TRUE(isFilledWith(image.frame(), 9));
        EXPECT_TRUE(image.untouchedAround());
    }
}

TEST_F(CvBackendSimdResize, LeavesNoStorageBehind) {
    TestFrame const src = ramp(FRAME_NV12, {20, 6});
    TestFrame dst(FRAME_NV12, {40, 4});
    std::int64_t const live = liveAllocations();
    for (int const method : {0, 1, 2}) {
        use(method);
        backend.resize(src.frame(), dst.frame(), {}, {});
        EXPECT_EQ(liveAllocations(), live);
    }
}

// Whichever allocation fails, the resizer goes, and the next call works.
TEST_F(CvBackendSimdResize, AFailedAllocationLeavesABackendThatResizes) {
    TestFrame const src = ramp(FRAME_NV12, {20, 6});
    TestFrame expected(FRAME_NV12, {40, 4});
    backend.resize(src.frame(), expected.frame(), {}, {});
    std::int64_t const live = liveAllocations();
    bool done = false;
    for (std::uint64_t k = 1; !done && k < 50; ++k) {
        TestFrame dst(FRAME_NV12, {40, 4});
        std::int64_t const before = liveAllocations();
        try {
            FailingAllocation const failing(k);
            backend.resize(src.frame(), dst.frame(), {}, {});
            done = !failing.struck();
        } catch (Exception const& refusal) {
            EXPECT_EQ(refusal.status, StatusCapacityExceeded) << "allocation " << k;
            EXPECT_EQ(liveAllocations(), before) << "allocation " << k;
        }
        backend.resize(src.frame(), dst.frame(), {}, {});
        EXPECT_TRUE(samePixels(dst.frame(), expected.frame())) << "allocation " << k;
    }
    EXPECT_TRUE(done);
    EXPECT_EQ(liveAllocations(), live);
}

}  // namespace

}  // namespace ox::test
