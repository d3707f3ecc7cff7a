// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Conversion of one frame by a free function.
#include <gtest/gtest.h>

#include <thread>

#include "model/vector_colour.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/colour_routes.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

// A frame of the library's own storage.
Frame frameOf(model::Image const& image) {
    Frame frame;
    frame.reuse(formatOf(image.geometry()), sizeOf(image.geometry()), DeviceContext(), 0);
    PlacedImage const placed(image);
    placed.frame().copyTo(frame);
    return frame;
}

// What a conversion without a region should give; columns that are left out are 0.
model::Image converted(model::Image const& image, int format) {
    if (image.format != model::Nv12 || format != model::Bgr24) {
        return model::vectorColour(image, format);
    }
    model::Image result = model::makeImage(format, image.width, image.height, 0);
    model::vectorColourDirectly(image, result);
    return result;
}

TEST(ColorConvert, EveryPair) {
    Random random;
    Frame dst;  // one for all pairs
    for (RoutedPair const& each : colourRoutes) {
        for (Size const size : {Size{34, 6}, Size{12, 2}, Size{70, 10}, Size{33, 5}}) {
            if (impl::needsEvenSides(each.src) && size.width % 2 != 0) {
                continue;
            }
            model::Image const picture =
                drawPicture(random, {static_cast<int>(each.src), size.width, size.height});
            Frame const src = frameOf(picture);
            colorConvert(src, each.dst, dst);
            EXPECT_TRUE(sameImage(imageOf(dst), converted(picture, static_cast<int>(each.dst))))
                << each.src << " to " << each.dst;
            EXPECT_TRUE(sameImage(imageOf(src), picture)) << "the source changed";
        }
    }
}

TEST(ColorConvert, NothingGivesNothing) {
    Frame dst = frameOf(model::makeImage(model::Gray8, 3, 2, 7));
    Frame const other = dst;
    colorConvert(emptyFrame(), FRAME_BGR24, dst);
    EXPECT_FALSE(dst.initialized());
    EXPECT_EQ(dst.planeData(0), nullptr);
    dst = other;
    colorConvert(other, FRAME_FORMAT_NONE, dst);
    EXPECT_FALSE(dst.initialized());
    dst = other;
    colorConvert(emptyFrame(), FRAME_FORMAT_NONE, dst);
    EXPECT_FALSE(dst.initialized());
    colorConvert(emptyFrame(), FRAME_GRAY8, dst);
    EXPECT_FALSE(dst.initialized());
    EXPECT_TRUE(isFilledWith(other, 7));  // clearing gives up one handle
    Frame self = other;
    colorConvert(self, FRAME_FORMAT_NONE, self);
    EXPECT_FALSE(self.initialized());
}

TEST(ColorConvert, TheOwnFormatIsACopy) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        model::Image const picture = drawPicture(random, {static_cast<int>(format), 7, 5});
        PlacedImage const src(picture, everywhere(gapped));
        Frame dst;
        colorConvert(src.frame(), format, dst);
        EXPECT_TRUE(sameImage(imageOf(dst), picture));
        EXPECT_NE(dst.planeData(0), src.frame().planeData(0));
        // in place where `dst` agrees already
        PlacedImage place(model::makeImage(picture.format, 7, 5, 0), everywhere({0, 5}));
        unsigned char const* const storage = place.frame().planeData(0);
        colorConvert(src.frame(), format, place.frame());
        EXPECT_EQ(place.frame().planeData(0), storage);
        EXPECT_TRUE(place.holds(picture));
        Frame self = frameOf(picture);
        colorConvert(self, format, self);
        EXPECT_TRUE(sameImage(imageOf(self), picture));
    }
}

// A copy asks nothing of the device, as a conversion would.
TEST(ColorConvert, TheOwnFormatIsNotConverted) {
    Frame const elsewhere = deviceFrame(FRAME_BGR24, {4, 4});
    fill(elsewhere, 7);
    Frame dst;
    colorConvert(elsewhere, FRAME_BGR24, dst);
    EXPECT_TRUE(samePixels(dst, elsewhere));
}

TEST(ColorConvert, TheSourceItselfMayReceive) {
    Random random;
    for (RoutedPair const& each : colourRoutes) {
        model::Image const picture = drawPicture(random, {static_cast<int>(each.src), 34, 6});
        Frame frame = frameOf(picture);
        colorConvert(frame, each.dst, frame);
        EXPECT_TRUE(sameImage(imageOf(frame), converted(picture, static_cast<int>(each.dst))))
            << each.src << " to " << each.dst;
        PlacedImage wrapped(picture, everywhere({0, 2}));
        Frame handle = wrapped.frame();
        colorConvert(handle, each.dst, handle);
        EXPECT_TRUE(sameImage(imageOf(handle), converted(picture, static_cast<int>(each.dst))));
        EXPECT_TRUE(wrapped.holds(picture));
    }
}

TEST(ColorConvert, AnotherHandleOnTheSourceMayReceive) {
    Random random;
    for (RoutedPair const& each : colourRoutes) {
        model::Image const picture = drawPicture(random, {static_cast<int>(each.src), 34, 6});
        Frame const src = frameOf(picture);
        Frame dst = src;
        colorConvert(src, each.dst, dst);
        EXPECT_TRUE(sameImage(imageOf(dst), converted(picture, static_cast<int>(each.dst))))
            << each.src << " to " << each.dst;
        EXPECT_TRUE(sameImage(imageOf(src), picture)) << "the source changed";
    }
}

// The source's pixels are given back once `dst` was their last handle.
TEST(ColorConvert, LeavesNoStorageBehind) {
    std::int64_t const live = liveAllocations();
    {
        Frame frame = frameOf(model::makeImage(model::Bgr24, 34, 6, 9));
        for (FrameFormat const format : {FRAME_NV12, FRAME_BGR24, FRAME_BGR_32F_PLANAR}) {
            colorConvert(frame, format, frame);
        }
        EXPECT_EQ(frame.format(), FRAME_BGR_32F_PLANAR);
    }
    EXPECT_EQ(liveAllocations(), live);
}

// Columns behind the last eight hold no bytes of whatever was there before.
TEST(ColorConvert, ColumnsThatAreLeftOutAreZero) {
    Random random;
    for (int width = 2; width <= 40; width += 2) {
        model::Image const picture = drawImage(random, {model::Nv12, width, 4});
        Frame const src = frameOf(picture);
        Frame fresh;
        Frame used = frameOf(model::makeImage(model::Bgr24, width, 4, 77));
        PlacedImage wrapped(model::makeImage(model::Bgr24, width, 4, 77), everywhere(gapped));
        colorConvert(src, FRAME_BGR24, fresh);
        colorConvert(src, FRAME_BGR24, used);
        colorConvert(src, FRAME_BGR24, wrapped.frame());
        model::Image const expected = converted(picture, model::Bgr24);
        EXPECT_TRUE(sameImage(imageOf(fresh), expected));
        EXPECT_TRUE(sameImage(imageOf(used), expected));
        EXPECT_TRUE(wrapped.holds(expected));
    }
}

// Planes whose strides differ are converted in full, by the other coefficients.
TEST(ColorConvert, Nv12OfUnequalStridesHasNoSuchColumns) {
    Random random;
    model::Image const picture = drawImage(random, {model::Nv12, 14, 4});
    PlacedImage const src(picture, Placements{{{0, 0}, {0, 6}}});
    Frame dst = frameOf(model::makeImage(model::Bgr24, 14, 4, 77));
    colorConvert(src.frame(), FRAME_BGR24, dst);
    EXPECT_TRUE(sameImage(imageOf(dst), model::vectorColour(picture, model::Bgr24)));
}

// The source is copied first where `dst` has its memory. Its own strides count, not the copy's.
TEST(ColorConvert, Nv12OfUnequalStridesMayLieBelowTheDestination) {
    Random random;
    for (int const width : {8, 10, 16, 34}) {
        model::Image const picture = drawImage(random, {model::Nv12, width, 2});
        for (int const gap : {0, 1}) {
            SCOPED_TRACE(testing::Message() << width << " columns, chroma's gap " << gap);
            std::vector<unsigned char> memory(static_cast<std::size_t>(width) * 6 + 64);
            FrameLayout layout(FRAME_NV12, {width, 2}, 1);
            layout.plane[1].stride += gap;
            unsigned char* const planes[] = {memory.data(), memory.data() + 2 * width};
            Frame src = Frame::wrap(layout, planes);
            frameOf(picture).copyTo(src);
            unsigned char* const below[] = {memory.data()};
            Frame dst = Frame::wrap(FrameLayout(FRAME_BGR24, {width, 2}, 1), below);
            colorConvert(src, FRAME_BGR24, dst);
            model::Image const expected = gap == 0 ? converted(picture, model::Bgr24)
                                                   : model::vectorColour(picture, model::Bgr24);
            EXPECT_EQ(dst.planeData(0), memory.data());
            EXPECT_TRUE(sameImage(imageOf(dst), expected));
        }
    }
}

TEST(ColorConvert, RefusalsPass) {
    Frame dst;
    Frame const yv12 = frameOf(model::makeImage(model::Yv12, 4, 4, 7));
    expectException(StatusNotSupported, unsupportedConversion(FRAME_YV12, FRAME_BGR24),
                    [&] { colorConvert(yv12, FRAME_BGR24, dst); });
    Frame const odd = frameOf(model::makeImage(model::Nv12, 5, 4, 7));
    for (FrameFormat const format : {FRAME_BGR24, FRAME_GRAY8, FRAME_YV12}) {
        expectException(StatusAssertionFailed,
                        "Assertion failed: src_region.width() % 2 == 0 && src_region.height() % 2 "
                        "== 0",
                        [&] { colorConvert(odd, format, dst); });
    }
    for (FrameFormat const format : unknownFormats()) {
        if (format != FRAME_FORMAT_NONE) {
            expectStatus(StatusUnsupportedFormat, [&] { colorConvert(yv12, format, dst); });
        }
    }
    Frame const elsewhere = deviceFrame(FRAME_BGR24, {4, 4});
    expectException(StatusAssertionFailed, wrongDevice,
                    [&] { colorConvert(elsewhere, FRAME_RGB24, dst); });
    EXPECT_TRUE(isFilledWith(yv12, 7));
}

TEST(ColorConvert, WorksOnSeveralThreads) {
    Frame const src = frameOf(model::makeImage(model::Bgr24, 35, 7, 99));
    std::vector<Frame> results(8);
    std::vector<std::thread> threads;
    for (Frame& result : results) {
        threads.emplace_back([&src, &result] {
            for (FrameFormat const format : {FRAME_YUV444, FRAME_I420, FRAME_NV12}) {
                colorConvert(src, format, result);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    for (Frame const& result : results) {
        EXPECT_TRUE(samePixels(result, results[0]));
    }
}

}  // namespace

}  // namespace ox::test
