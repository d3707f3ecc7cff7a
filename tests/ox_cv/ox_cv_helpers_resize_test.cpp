// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Resizing of one frame by a free function.
#include <gtest/gtest.h>

#include <limits>
#include <thread>

#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/resized_image.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test::cv_helpers_resize {

namespace {

constexpr char unknownMethod[] =
    "Assertion failed: value == ResizeBilinear || value == ResizeArea || value == "
    "ResizeNearestNeighbour";
constexpr ResizeMethod allMethods[] = {ResizeNearestNeighbour, ResizeBilinear, ResizeArea};

bool isServed(FrameFormat format, ResizeMethod method) {
    return method != ResizeArea || !hasFloats(format);
}

// A frame of the library's own storage.
Frame frameOf(model::Image const& image) {
    Frame frame;
    frame.reuse(formatOf(image.geometry()), sizeOf(image.geometry()), DeviceContext(), 0);
    PlacedImage const placed(image);
    placed.frame().copyTo(frame);
    return frame;
}

model::Image drawFormat(Random& random, FrameFormat format, Size size) {
    return drawSamples(random, {static_cast<int>(format), size.width, size.height});
}

model::Image expectedOf(model::Image const& picture, Size size, ResizeMethod method) {
    return resizedImage(picture, size, static_cast<int>(method));
}

// Calls visit(picture, method) for every format by every method that it is served by.
template <class Visit>
void forEachPicture(Size size, Visit visit) {
    Random random;
    for (FrameFormat const format : resizedFormats()) {
        for (ResizeMethod const method : allMethods) {
            if (isServed(format, method)) {
                SCOPED_TRACE(std::string(toString(format)) + ", method " + std::to_string(method));
                visit(drawFormat(random, format, size), method);
            }
        }
    }
}

TEST(ResizeFrame, EveryFormatAndMethod) {
    Frame dst;  // one for all
    for (Size const size : {Size{40, 3}, Size{5, 9}, Size{1, 1}, Size{18, 4}}) {
        forEachPicture({18, 5}, [&](model::Image const& picture, ResizeMethod method) {
            Frame const src = frameOf(picture);
            resizeFrame(src, size, dst, method);
            EXPECT_TRUE(sameImage(imageOf(dst), expectedOf(picture, size, method)));
            EXPECT_TRUE(sameImage(imageOf(src), picture)) << "the source changed";
        });
    }
}

TEST(ResizeFrame, LinesGoToTheNearestSample) {
    Frame dst;
    for (Size const line : {Size{1, 6}, Size{20, 1}, Size{1, 1}}) {
        forEachPicture(line, [&](model::Image const& picture, ResizeMethod method) {
            resizeFrame(frameOf(picture), {19, 7}, dst, method);
            EXPECT_TRUE(sameImage(imageOf(dst), resizedImage(picture, {19, 7}, 0)));
        });
    }
    // floats too, which aren't averaged by area otherwise
    Random random;
    model::Image const floats = drawFormat(random, FRAME_BGR_32F, {1, 6});
    resizeFrame(frameOf(floats), {19, 7}, dst, ResizeArea);
    EXPECT_TRUE(sameImage(imageOf(dst), resizedImage(floats, {19, 7}, 0)));
}

TEST(ResizeFrame, NothingGivesNothing) {
    constexpr int least = std::numeric_limits<int>::min();
    Frame const other = frameOf(model::makeImage(model::Gray8, 3, 2, 7));
    auto const unknown = static_cast<ResizeMethod>(3);
    for (ResizeMethod const method :
         {ResizeNearestNeighbour, ResizeBilinear, ResizeArea, unknown}) {
        for (Size const size : {Size{0, 2}, Size{3, 0}, Size{0, 0}, Size{-1, 2}, Size{3, -1},
                                Size{-3, -2}, Size{least, least}}) {
            Frame dst = other;
            resizeFrame(other, size, dst, method);
            EXPECT_FALSE(dst.initialized());
            EXPECT_EQ(dst.planeData(0), nullptr);
            resizeFrame(other, size, dst, method);
            EXPECT_FALSE(dst.initialized());
            Frame self = other;
            resizeFrame(self, size, self, method);
            EXPECT_FALSE(self.initialized());
        }
        for (Size const size : {Size{3, 2}, Size{4, 4}, Size{0, 0}}) {
            Frame dst = other;
            resizeFrame(emptyFrame(), size, dst, method);
            EXPECT_FALSE(dst.initialized());
        }
    }
    EXPECT_TRUE(isFilledWith(other, 7));  // clearing gives up one handle
}

// A region without columns or rows has nothing to resample: no byte of old storage is handed out.
TEST(ResizeFrame, NoPixelsGiveZeros) {
    for (FrameFormat const format : {FRAME_GRAY8, FRAME_BGR24, FRAME_NV12, FRAME_I420, FRAME_YUYV,
                                     FRAME_C4_8U, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        SCOPED_TRACE(toString(format));
        TestFrame around(format, {8, 6});
        fill(around.frame(), 200);
        for (Rect const rect : {Rect{2, 2, 0, 3}, Rect{2, 2, 3, 0}, Rect{8, 6, 0, 0}}) {
            Frame const src = getRegion(around.frame(), rect);
            for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear, ResizeArea}) {
                if (method == ResizeArea && src.layout().plane[0].bits == 32) {
                    continue;  // refused
                }
                Frame dst;
                dst.reuse(format, {20, 5}, DeviceContext(), 0);
                fill(dst, 77);
                resizeFrame(src, {20, 5}, dst, method);
                EXPECT_EQ(dst.size(), (Size{20, 5}));
                EXPECT_TRUE(isFilledWith(dst, 0));
            }
        }
    }
}

TEST(ResizeFrame, TheOwnSizeIsACopy) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        model::Image const picture = drawImage(random, {static_cast<int>(format), 7, 5});
        PlacedImage const src(picture, everywhere(gapped));
        for (int const method : {0, 1, 2, 3, -1}) {  // not looked at
            auto const given = static_cast<ResizeMethod>(method);
            Frame dst;
            resizeFrame(src.frame(), {7, 5}, dst, given);
            EXPECT_TRUE(sameImage(imageOf(dst), picture));
            EXPECT_NE(dst.planeData(0), src.frame().planeData(0));
            // in place where `dst` agrees already
            PlacedImage place(model::makeImage(picture.format, 7, 5, 0), everywhere({0, 5}));
            unsigned char const* const storage = place.frame().planeData(0);
            resizeFrame(src.frame(), {7, 5}, place.frame(), given);
            EXPECT_EQ(place.frame().planeData(0), storage);
            EXPECT_TRUE(place.holds(picture));
            Frame self = frameOf(picture);
            resizeFrame(self, {7, 5}, self, given);
            EXPECT_TRUE(sameImage(imageOf(self), picture));
        }
        EXPECT_TRUE(src.holds(picture));
    }
}

// A copy asks nothing of the device, as a resize would.
TEST(ResizeFrame, TheOwnSizeIsNotResized) {
    Frame const elsewhere = deviceFrame(FRAME_BGR24, {4, 4});
    fill(elsewhere, 7);
    Frame dst;
    resizeFrame(elsewhere, {4, 4}, dst, ResizeBilinear);
    EXPECT_TRUE(samePixels(dst, elsewhere));
    expectException(StatusAssertionFailed, wrongDevice, [&] {
        resizeFrame(elsewhere, {5, 4}, dst, ResizeBilinear);
    });
}

TEST(ResizeFrame, AnUnknownMethodLeavesTheDestination) {
    Frame const src = frameOf(model::makeImage(model::Bgr24, 6, 4, 9));
    for (int const method : {3, -1, 256, std::numeric_limits<int>::max()}) {
        auto const given = static_cast<ResizeMethod>(method);
        PlacedImage dst(model::makeImage(model::Gray8, 3, 2, 7), everywhere(gapped));
        unsigned char const* const storage = dst.frame().planeData(0);
        expectException(StatusAssertionFailed, unknownMethod, [&] {
            resizeFrame(src, {8, 8}, dst.frame(), given);
        });
        EXPECT_EQ(dst.frame().planeData(0), storage);
        EXPECT_TRUE(dst.holds(model::makeImage(model::Gray8, 3, 2, 7)));
        Frame none;
        expectException(StatusAssertionFailed, unknownMethod, [&] {
            resizeFrame(src, {8, 8}, none, given);
        });
        EXPECT_FALSE(none.initialized());
        Frame self = src;
        expectException(StatusAssertionFailed, unknownMethod, [&] {
            resizeFrame(self, {8, 8}, self, given);
        });
        EXPECT_EQ(self.planeData(0), src.planeData(0));
        EXPECT_EQ(self.size(), (Size{6, 4}));
    }
    EXPECT_TRUE(isFilledWith(src, 9));
}

TEST(ResizeFrame, RefusalsPass) {
    Random random;
    Frame dst;
    model::Image const shorts = drawFormat(random, FRAME_C1_16U, {6, 4});
    Frame src = frameOf(shorts);
    for (ResizeMethod const method : allMethods) {
        expectException(StatusAssertionFailed,
                        "Assertion failed: bits_per_channel == 8 || bits_per_channel == 32", [&] {
                            resizeFrame(src, {8, 8}, dst, method);
                        });
    }
    EXPECT_TRUE(sameImage(imageOf(src), shorts));
    for (FrameFormat const format : resizedFormats()) {
        if (hasFloats(format)) {
            model::Image const floats = drawFormat(random, format, {6, 4});
            src = frameOf(floats);
            expectException(StatusNotSupported, "resize: Unsupported method.", [&] {
                resizeFrame(src, {8, 8}, dst, ResizeArea);
            });
            EXPECT_TRUE(sameImage(imageOf(src), floats));
        }
    }
    int const most = std::numeric_limits<int>::max();
    expectStatus(StatusCapacityExceeded, [&] {
        resizeFrame(src, {most, most}, dst, ResizeBilinear);
    });
}

// Frames that agree are written where they are.
TEST(ResizeFrame, KeepsADestinationThatAgrees) {
    forEachPicture({9, 6}, [](model::Image const& picture, ResizeMethod method) {
        Frame const src = frameOf(picture);
        PlacedImage place(model::makeImage(picture.format, 20, 3, 77),
                          everywhere({0, 12, Guard::AtEnd}));
        resizeFrame(src, {20, 3}, place.frame(), method);
        EXPECT_TRUE(place.holds(expectedOf(picture, {20, 3}, method)));
        Frame own = frameOf(model::makeImage(picture.format, 20, 3, 77));
        unsigned char const* const storage = own.planeData(0);
        resizeFrame(src, {20, 3}, own, method);
        EXPECT_EQ(own.planeData(0), storage);
    });
}

TEST(ResizeFrame, TheSourceItselfMayReceive) {
    for (Size const size : {Size{40, 9}, Size{5, 3}, Size{18, 4}}) {
        forEachPicture({18, 6}, [&](model::Image const& picture, ResizeMethod method) {
            model::Image const expected = expectedOf(picture, size, method);
            Frame frame = frameOf(picture);
            resizeFrame(frame, size, frame, method);
            EXPECT_TRUE(sameImage(imageOf(frame), expected));
            PlacedImage wrapped(picture, everywhere({0, 8}));
            Frame handle = wrapped.frame();
            resizeFrame(handle, size, handle, method);
            EXPECT_TRUE(sameImage(imageOf(handle), expected));
            EXPECT_TRUE(wrapped.holds(picture));
        });
    }
}

TEST(ResizeFrame, AnotherHandleOnTheSourceMayReceive) {
    for (Size const size : {Size{40, 9}, Size{5, 3}}) {
        forEachPicture({18, 6}, [&](model::Image const& picture, ResizeMethod method) {
            Frame const src = frameOf(picture);
            Frame dst = src;
            resizeFrame(src, size, dst, method);
            EXPECT_TRUE(sameImage(imageOf(dst), expectedOf(picture, size, method)));
            EXPECT_TRUE(sameImage(imageOf(src), picture)) << "the source changed";
        });
    }
}

// A region of the source that has the size already is a frame that agrees, on the source's pixels.
TEST(ResizeFrame, ARegionOfTheSourceMayReceive) {
    for (Rect const rect : {Rect{0, 0, 10, 4}, Rect{8, 2, 10, 4}, Rect{4, 2, 14, 2}}) {
        forEachPicture({18, 6}, [&](model::Image const& picture, ResizeMethod method) {
            Frame src = frameOf(picture);
            Frame dst = getRegion(src, rect);
            Size const size{rect.width, rect.height};
            resizeFrame(src, size, dst, method);
            EXPECT_TRUE(sameImage(imageOf(dst), expectedOf(picture, size, method)));
        });
    }
}

// The frame around a region is one, too.
TEST(ResizeFrame, TheFrameAroundTheSourceMayReceive) {
    for (Rect const rect : {Rect{0, 0, 10, 4}, Rect{8, 2, 10, 4}, Rect{4, 2, 1, 1}}) {
        forEachPicture({18, 6}, [&](model::Image const& picture, ResizeMethod method) {
            Frame dst = frameOf(picture);
            Frame const src = getRegion(dst, rect);
            model::Image const part = model::crop(picture, rect.x, rect.y, rect.width, rect.height);
            resizeFrame(src, {18, 6}, dst, method);
            EXPECT_TRUE(sameImage(imageOf(dst), expectedOf(part, {18, 6}, method)));
        });
    }
}

// The source's pixels are given back once `dst` was their last handle.
TEST(ResizeFrame, LeavesNoStorageBehind) {
    std::int64_t const live = liveAllocations();
    {
        Frame frame = frameOf(model::makeImage(model::Nv12, 34, 6, 9));
        for (ResizeMethod const method : allMethods) {
            for (Size const size : {Size{70, 4}, Size{8, 8}, Size{8, 8}, Size{5, 1}}) {
                resizeFrame(frame, size, frame, method);
            }
        }
        EXPECT_TRUE(isFilledWith(frame, 9));
    }
    EXPECT_EQ(liveAllocations(), live);
}

TEST(ResizeFrame, WorksOnSeveralThreads) {
    Frame const src = frameOf(model::makeImage(model::Bgr24, 35, 7, 99));
    std::vector<Frame> results(8);
    std::vector<std::thread> threads;
    for (Frame& result : results) {
        threads.emplace_back([&src, &result] {
            for (ResizeMethod const method : allMethods) {
                resizeFrame(src, {18 + static_cast<int>(method), 9}, result, method);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (Frame const& result : results) {
        EXPECT_TRUE(samePixels(result, results[0]));
        EXPECT_TRUE(isFilledWith(result, 99));
    }
}

}  // namespace

}  // namespace ox::test::cv_helpers_resize
