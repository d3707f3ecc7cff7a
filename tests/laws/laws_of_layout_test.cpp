// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Laws of where pixels lie: regions, strides, planes.

#include "laws/law.h"
#include "ox_cv/ox_cv.h"
#include "ox_cv/scaler_rows.h"

namespace ox::test {
namespace {

// Runs an operation of one of the backends.
template <class Operation>
void byBackend(Random& random, Operation operation) {
    CvBackendBase base;
    CvBackendSimd simd;
    if (random.between(0, 1) == 0) {
        operation(base);
    } else {
        operation(simd);
    }
}

bool hasHalfChroma(FrameFormat format) {
    switch (format) {
        case FRAME_I420:
        case FRAME_YV12:
        case FRAME_NV12:
        case FRAME_NV21:
        case FRAME_YV16:
        case FRAME_YUYV:
        case FRAME_UYVY:
        case FRAME_NV16:
            return true;
        default:
            return false;
    }
}

Rect whole(Frame const& frame) {
    return {0, 0, frame.width(), frame.height()};
}

// A copy of the region, packed. Half-size chroma belongs to pairs of columns and rows, so that such
// regions begin at even ones.
Frame cropped(Frame const& frame, Rect region) {
    Frame source = frame;
    Frame copy;
    getRegion(source, region).copyTo(copy);
    return copy;
}

Rect drawPlace(Random& random, Frame const& frame) {
    Rect region = drawRegion(random, frame.size());
    if (hasHalfChroma(frame.format())) {
        region.x &= ~1;
        region.y &= ~1;
    }
    return region;
}

TEST(LawOfRegions, ColourOfARegionIsThatOfItsCopy) {
    Law law(1);
    law.holds(200, [&] {
        FrameFormat const from = drawFormat(law.random);
        FrameFormat const to = drawFormat(law.random);
        TestFrame const src = drawPicture(from, drawSize(law.random), law.random);
        Rect const region = drawPlace(law.random, src.frame());
        law.tell(from, to, src.frame().size(), region);
        Frame const copy = cropped(src.frame(), region);
        byBackend(law.random, [&](ICvBackend& backend) {
            auto const of_region = outcomeOf(
                to, copy.size(), [&](Frame& dst) { backend.colorCvt(src.frame(), dst, region); });
            auto const of_copy = outcomeOf(
                to, copy.size(), [&](Frame& dst) { backend.colorCvt(copy, dst, whole(copy)); });
            law.expectSame(of_region, of_copy);
        });
    });
}

TEST(LawOfRegions, ScalingOfARegionIsThatOfItsCopy) {
    Law law(2);
    law.holds(500, [&] {
        FrameFormat const format = drawFormat(law.random);
        TestFrame const src = drawPicture(format, drawSize(law.random), law.random);
        Rect const region = drawPlace(law.random, src.frame());
        Size const size = drawSize(law.random);
        ResizeMethod const method = drawMethod(law.random);
        law.tell(format, src.frame().size(), region, size, method);
        Frame const copy = cropped(src.frame(), region);
        byBackend(law.random, [&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            auto const of_region = outcomeOf(format, size, [&](Frame& dst) {
                backend.resize(src.frame(), dst, region, emptyRoi());
            });
            auto const of_copy = outcomeOf(format, size, [&](Frame& dst) {
                backend.resize(copy, dst, emptyRoi(), emptyRoi());
            });
            law.expectSame(of_region, of_copy);
        });
    });
}

TEST(LawOfRegions, FloatsChangeByPartsAsAtOnce) {
    Law law(3);
    law.holds(400, [&] {
        FrameFormat const format = law.random.between(0, 1) == 0 ? FRAME_GRAY_32F : FRAME_BGR_32F;
        Size const size = drawSize(law.random);
        TestFrame const src = drawPicture(format, size, law.random);
        int const left = law.random.between(0, size.width);
        auto const value = static_cast<float>(law.random.between(-50, 50));
        bool const adds = law.random.between(0, 1) == 0;
        law.tell(format, size, left);
        CvBackendSimd backend;
        auto const change = [&](Frame& dst, Rect region) {
            if (region.width > 0) {
                adds ? backend.add(dst, value, region) : backend.mul(dst, value, region);
            }
        };
        auto const at_once = outcomeOf(format, size, [&](Frame& dst) {
            src.frame().copyTo(dst);
            change(dst, whole(dst));
        });
        auto const by_parts = outcomeOf(format, size, [&](Frame& dst) {
            src.frame().copyTo(dst);
            change(dst, {0, 0, left, size.height});
            change(dst, {left, 0, size.width - left, size.height});
        });
        law.expectSame(at_once, by_parts);
    });
}

// On purpose: the pipeline's backend drops a region's origin.
TEST(LawOfRegions, ExceptFloatsInThePipeline) {
    TestFrame const floats(FRAME_GRAY_32F, {4, 1});
    Frame frame = floats.frame();
    frame.setZero();
    CvBackendBase backend;
    backend.add(frame, 1.0F, {2, 0, 1, 1});
    EXPECT_EQ(bytesOf(frame, 0, 0), (std::vector<int>{0, 0, 128, 63, 0, 0, 0, 0,  //
                                                      0, 0, 0, 0, 0, 0, 0, 0}));
}

TEST(LawOfStrides, ColourOfPaddedRowsIsThatOfPackedOnes) {
    Law law(4);
    law.holds(200, [&] {
        FrameFormat const from = drawFormat(law.random);
        FrameFormat const to = drawFormat(law.random);
        if (from == FRAME_NV12 && to == FRAME_BGR24) {
            return;  // the exception below
        }
        Size const size = drawSize(law.random, 80);
        auto const gap = static_cast<std::size_t>(4 * law.random.between(1, 40));
        law.tell(from, to, size, static_cast<int>(gap));
        TestFrame const packed = drawPicture(from, size, law.random);
        TestFrame padded(from, size, Placement{gap, Guard::None});
        packed.frame().copyTo(padded.frame());
        byBackend(law.random, [&](ICvBackend& backend) {
            auto const of_packed = outcomeOf(
                to, size, [&](Frame& dst) { backend.colorCvt(packed.frame(), dst, emptyRoi()); });
            auto const of_padded = outcomeOf(to, size, gap, [&](Frame& dst) {
                backend.colorCvt(padded.frame(), dst, emptyRoi());
            });
            law.expectSame(of_packed, of_padded);
            of_padded.picture.expectGapsUntouched();
        });
    });
}

// On purpose: NV12 takes the quick way, with coefficients of its own, only where both planes have
// the same stride, as packed rows of odd widths haven't.
TEST(LawOfStrides, ExceptNv12ToBgr24) {
    TestFrame const packed(FRAME_NV12, {17, 4});
    fill(packed.frame(), 150);
    Frame padded;
    padded.reuse(FRAME_NV12, {17, 4}, DeviceContext(), 64);
    packed.frame().copyTo(padded);
    ASSERT_EQ(padded.layout().plane[0].stride, padded.layout().plane[1].stride);
    TestFrame const exact(FRAME_BGR24, {17, 4});
    TestFrame const quick(FRAME_BGR24, {17, 4});
    fill(quick.frame(), 77);
    Frame exact_frame = exact.frame();
    Frame quick_frame = quick.frame();
    CvBackendBase backend;
    backend.colorCvt(packed.frame(), exact_frame, emptyRoi());
    backend.colorCvt(padded, quick_frame, emptyRoi());
    EXPECT_NE(bytesOf(exact_frame, 0, 0)[48], 77);
    EXPECT_EQ(bytesOf(quick_frame, 0, 0)[48], 77) << "the last column stays";
}

TEST(LawOfStrides, ScalingOfPaddedRowsIsThatOfPackedOnes) {
    Law law(5);
    law.holds(500, [&] {
        FrameFormat const format = drawFormat(law.random);
        Size const size = drawSize(law.random, 80);
        Size const scaled_size = drawSize(law.random, 80);
        ResizeMethod const method = drawMethod(law.random);
        auto const gap = static_cast<std::size_t>(4 * law.random.between(1, 40));
        law.tell(format, size, scaled_size, method);
        TestFrame const packed = drawPicture(format, size, law.random);
        TestFrame padded(format, size, Placement{gap, Guard::None});
        packed.frame().copyTo(padded.frame());
        byBackend(law.random, [&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            auto const of_packed = outcomeOf(format, scaled_size, [&](Frame& dst) {
                backend.resize(packed.frame(), dst, emptyRoi(), emptyRoi());
            });
            auto const of_padded = outcomeOf(format, scaled_size, gap, [&](Frame& dst) {
                backend.resize(padded.frame(), dst, emptyRoi(), emptyRoi());
            });
            law.expectSame(of_packed, of_padded);
            of_padded.picture.expectGapsUntouched();
        });
    });
}

// A channel of an interleaved picture.
TestFrame channelOf(Frame const& frame, int channel, int channels) {
    TestFrame result(FRAME_GRAY8, frame.size());
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            result.row(0, y)[x] = rowOf(frame, 0, y)[x * channels + channel];
        }
    }
    return result;
}

TEST(LawOfChannels, EachIsScaledAsIfItWereAlone) {
    Law law(6);
    law.holds(500, [&] {
        FrameFormat const format = drawByteFormat(law.random);
        int const channels = static_cast<int>(FrameLayout(format, {1, 1}, 1).plane[0].rowBytes);
        Size const size = drawSize(law.random, 60);
        Size const scaled_size = drawSize(law.random, 60);
        ResizeMethod const method = drawMethod(law.random);
        bool const in_pipeline = law.random.between(0, 1) == 0;
        if (in_pipeline && (format == FRAME_RGB24 || method == ResizeArea)) {
            return;  // the exceptions below
        }
        law.tell(format, size, scaled_size, method);
        CvBackendBase base;
        CvBackendSimd simd;
        ICvBackend& backend = in_pipeline ? static_cast<ICvBackend&>(base) : simd;
        backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
        TestFrame const src = drawPicture(format, size, law.random);
        auto const together = outcomeOf(format, scaled_size, [&](Frame& dst) {
            backend.resize(src.frame(), dst, emptyRoi(), emptyRoi());
        });
        ASSERT_TRUE(together.served);
        for (int channel = 0; channel < channels; ++channel) {
            TestFrame const alone = channelOf(src.frame(), channel, channels);
            auto const of_alone = outcomeOf(FRAME_GRAY8, scaled_size, [&](Frame& dst) {
                backend.resize(alone.frame(), dst, emptyRoi(), emptyRoi());
            });
            auto const of_together = outcomeOf(FRAME_GRAY8, scaled_size, [&](Frame& dst) {
                channelOf(together.picture.frame(), channel, channels).frame().copyTo(dst);
            });
            law.expectSame(of_alone, of_together);
        }
    });
}

// On purpose: the pipeline's area scaling to another height writes a half of rows of two channels.
TEST(LawOfChannels, ExceptAreaDownwardsInThePipeline) {
    TestFrame const src(FRAME_C2_8U, {4, 4});
    fill(src.frame(), 200);
    ScalerAreaY scaler;
    scaler.reuse(src.frame(), 2, OX_SCALER_FIXED_POINT_16S);
    TestFrame dst(FRAME_C2_8U, {4, 2});
    fill(dst.frame(), 77);
    produceFrame(scaler, dst.frame());
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0)[3], 200);
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0)[4], 77);
}

FrameFormat chromaExchanged(FrameFormat format) {
    switch (format) {
        case FRAME_NV12:
            return FRAME_NV21;
        case FRAME_NV21:
            return FRAME_NV12;
        case FRAME_I420:
            return FRAME_YV12;
        default:
            return FRAME_I420;
    }
}

// The same picture in the format whose U and V stand the other way round.
TestFrame withChromaExchanged(Frame const& frame) {
    TestFrame result(chromaExchanged(frame.format()), frame.size());
    bool const planar = frame.layout().planeCount == 3;
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        for (int y = 0; y < plane.height; ++y) {
            unsigned char const* const row = rowOf(frame, i, y);
            for (int x = 0; x < static_cast<int>(plane.rowBytes); ++x) {
                int const place = i > 0 && !planar ? x ^ 1 : x;
                result.row(i > 0 && planar ? 3 - i : i, y)[place] = row[x];
            }
        }
    }
    return result;
}

TEST(LawOfChroma, ScalingCommutesWithExchangingUAndV) {
    constexpr FrameFormat exchangeable[]{FRAME_NV12, FRAME_NV21, FRAME_I420, FRAME_YV12};
    Law law(7);
    law.holds(500, [&] {
        FrameFormat const format = exchangeable[law.random.between(0, 3)];
        Size const size = drawSize(law.random);
        Size const scaled_size = drawSize(law.random);
        ResizeMethod const method = drawMethod(law.random);
        law.tell(format, size, scaled_size, method);
        TestFrame const src = drawPicture(format, size, law.random);
        TestFrame const exchanged = withChromaExchanged(src.frame());
        FrameFormat const other = chromaExchanged(format);
        byBackend(law.random, [&](ICvBackend& backend) {
            backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
            auto const before = outcomeOf(other, scaled_size, [&](Frame& dst) {
                backend.resize(exchanged.frame(), dst, emptyRoi(), emptyRoi());
            });
            auto after = outcomeOf(format, scaled_size, [&](Frame& dst) {
                backend.resize(src.frame(), dst, emptyRoi(), emptyRoi());
            });
            after.picture = withChromaExchanged(after.picture.frame());
            law.expectSame(before, after);
        });
    });
}

TEST(LawOfChroma, ColoursAreThoseOfTheExchangedFormat) {
    constexpr FrameFormat exchangeable[]{FRAME_NV12, FRAME_NV21, FRAME_I420, FRAME_YV12};
    constexpr FrameFormat targets[]{FRAME_BGR24, FRAME_GRAY8};
    Law law(8);
    law.holds(300, [&] {
        FrameFormat const format = exchangeable[law.random.between(0, 3)];
        FrameFormat const to = targets[law.random.between(0, 1)];
        Size const size = drawSize(law.random, 80);
        law.tell(format, to, size);
        TestFrame const src = drawPicture(format, size, law.random);
        TestFrame const exchanged = withChromaExchanged(src.frame());
        CvBackendBase backend;
        auto const direct = outcomeOf(
            to, size, [&](Frame& dst) { backend.colorCvt(src.frame(), dst, whole(src.frame())); });
        auto const of_exchanged = outcomeOf(to, size, [&](Frame& dst) {
            backend.colorCvt(exchanged.frame(), dst, whole(src.frame()));
        });
        law.expectSame(direct, of_exchanged);
    });
}

}  // namespace
}  // namespace ox::test
