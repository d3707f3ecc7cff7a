// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames and AVFrames on each other's memory; libavutil says where its samples lie.
#include "ox_interop/ox_ffmpeg.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

extern "C" {
#include <libavutil/pixdesc.h>
}

#include "interop/samples.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::ffmpeg {

namespace {

using namespace ox::interop;

struct FreeFrame {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using AvFrame = std::unique_ptr<AVFrame, FreeFrame>;

AvFrame newFrame() {
    return AvFrame(av_frame_alloc());
}

AvFrame newFrame(AVPixelFormat format, int width, int height) {
    AvFrame frame = newFrame();
    frame->format = format;
    frame->width = width;
    frame->height = height;
    EXPECT_EQ(av_frame_get_buffer(frame.get(), 0), 0);
    return frame;
}

// Whether each component's first sample and steps are the same in both.
void expectSameSamples(Frame const& frame, AVFrame const& other) {
    AVPixFmtDescriptor const* const descriptor =
        av_pix_fmt_desc_get(static_cast<AVPixelFormat>(other.format));
    std::vector<Component> const components = componentsOf(frame.format());
    ASSERT_EQ(descriptor->nb_components, components.size()) << descriptor->name;
    EXPECT_EQ(other.width, frame.width());
    EXPECT_EQ(other.height, frame.height());
    for (std::size_t c = 0; c < components.size(); ++c) {
        AVComponentDescriptor const& theirs = descriptor->comp[c];
        FramePlane const& plane = frame.layout().plane[components[c].plane];
        EXPECT_EQ(other.data[theirs.plane] + theirs.offset, firstSample(frame, components[c]))
            << descriptor->name << ", component " << c;
        EXPECT_EQ(theirs.step, components[c].step) << descriptor->name << ", component " << c;
        EXPECT_EQ(other.linesize[theirs.plane], plane.stride) << descriptor->name;
        EXPECT_EQ(theirs.depth, plane.bits) << descriptor->name;
    }
}

TEST(FFmpeg, FramesLieOnAvFrames) {
    int formats = 0;
    for (auto const& pair : avFormats()) {
        AvFrame const decoded = newFrame(pair.foreign, 34, 18);
        Frame const frame = frameOf(*decoded);
        EXPECT_EQ(frame.format(), frameFormatOf(pair.foreign));
        expectSameSamples(frame, *decoded);
        ++formats;
    }
    EXPECT_EQ(formats, 20);
}

TEST(FFmpeg, AvFramesLieOnFrames) {
    for (FrameFormat const format : allFormats()) {
        if (pixelFormatOf(format) == AV_PIX_FMT_NONE) {
            continue;
        }
        TestFrame const source(format, {34, 17}, Placement{12});
        AvFrame const shown = newFrame();
        showFrame(source.frame(), *shown);
        EXPECT_EQ(shown->format, pixelFormatOf(format));
        expectSameSamples(source.frame(), *shown);
        for (int i = 0; i < source.layout().planeCount; ++i) {
            EXPECT_NE(av_frame_get_plane_buffer(shown.get(), i), nullptr);
        }
    }
}

TEST(FFmpeg, AvFramesKeepStorageAlive) {
    std::int64_t const live = liveAllocations();
    AvFrame shown = newFrame();
    {
        Frame frame;
        frame.reuse(FRAME_NV12, {32, 16}, DeviceContext(), 0);
        fill(frame, 77);
        showFrame(frame, *shown);
    }
    AvFrame second(av_frame_clone(shown.get()));
    shown.reset();
    EXPECT_EQ(second->data[1][31], 77);
    EXPECT_GT(liveAllocations(), live);
    second.reset();
    EXPECT_EQ(liveAllocations(), live);
}

TEST(FFmpeg, FormatsWithoutCounterpartsAreRefused) {
    EXPECT_EQ(frameFormatOf(AV_PIX_FMT_P010), FRAME_FORMAT_NONE);
    EXPECT_EQ(frameFormatOf(AV_PIX_FMT_VAAPI), FRAME_FORMAT_NONE);
    EXPECT_EQ(pixelFormatOf(FRAME_BGR_32F), AV_PIX_FMT_NONE);
    AvFrame const ten_bits = newFrame(AV_PIX_FMT_P010, 16, 16);
    expectException(StatusNotSupported,
                    "Failure in frameOf(...) : the AVFrame's format has no counterpart.",
                    [&] { frameOf(*ten_bits); });
    TestFrame const floats(FRAME_BGR_32F, {4, 4});
    AvFrame const shown = newFrame(AV_PIX_FMT_GRAY8, 4, 4);
    expectException(StatusNotSupported,
                    "Failure in showFrame(...) : the frame's format has no counterpart.",
                    [&] { showFrame(floats.frame(), *shown); });
    EXPECT_EQ(shown->data[0], nullptr);
}

TEST(FFmpeg, RowsFromTheBottomUpAreRefused) {
    AvFrame const decoded = newFrame(AV_PIX_FMT_GRAY8, 16, 16);
    decoded->linesize[0] = -decoded->linesize[0];
    expectStatus(StatusInvalidParameter, [&] { frameOf(*decoded); });
    decoded->linesize[0] = -decoded->linesize[0];
}

TEST(FFmpeg, ColourIsThatOfTheFields) {
    AvFrame const frame = newFrame(AV_PIX_FMT_YUV420P, 16, 16);
    EXPECT_EQ(colourOf(*frame).matrix, TENSOR_MATRIX_BT601);
    EXPECT_EQ(colourOf(*frame).range, TENSOR_RANGE_LIMITED);
    frame->colorspace = AVCOL_SPC_BT709;
    frame->color_range = AVCOL_RANGE_JPEG;
    EXPECT_EQ(colourOf(*frame).matrix, TENSOR_MATRIX_BT709);
    EXPECT_EQ(colourOf(*frame).range, TENSOR_RANGE_FULL);
    frame->colorspace = AVCOL_SPC_BT2020_NCL;
    EXPECT_EQ(colourOf(*frame).matrix, TENSOR_MATRIX_BT2020);
    frame->colorspace = AVCOL_SPC_YCGCO;
    expectStatus(StatusNotSupported, [&] { colourOf(*frame); });
    AvFrame const jpeg = newFrame(AV_PIX_FMT_YUVJ422P, 16, 16);
    EXPECT_EQ(colourOf(*jpeg).range, TENSOR_RANGE_FULL);
}

}  // namespace

}  // namespace ox::test::ffmpeg
