// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The bytes that come out of oxconvertscale are those of the library's own calls.
#include <gtest/gtest.h>

#include <string>

#include "gstreamer/fixture.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_interop/ox_gstreamer.h"
#include "support/test_frame.h"

namespace ox::test::gst_bytes {

namespace {

using namespace ox::test::gst;
using interop::capsOf;

std::string capsWith(FrameFormat format, Size size, std::string const& more = "") {
    return capsOf(format, size) + ", framerate=30/1" + more;
}

// Pushes a frame of random bytes with gaps between its rows.
void expectSameBytes(Element& element, std::string const& in, std::string const& out,
                     FrameFormat from, Size from_size, FrameFormat to, Size to_size,
                     Request const& request = {}) {
    SCOPED_TRACE(in + " to " + out);
    Random random;
    TestFrame const source(from, from_size, random, Placement{5});
    element.setCaps(in, out);
    Buffer const buffer = element.push(source.frame());
    ASSERT_NE(buffer, nullptr) << element.error();
    MappedFrame const got(element.output(), buffer.get());
    EXPECT_TRUE(samePixels(got.frame(), byTheLibrary(source.frame(), to, to_size, request)));
}

class GstBytes : public Gst {};

TEST_F(GstBytes, EveryPairOfFormats) {
    Size const from{46, 38};
    Size const to{23, 19};  // half, and odd
    int pairs = 0;
    for (auto const& src : interop::gstFormats()) {
        for (auto const& dst : interop::gstFormats()) {
            bool const is_deep = src.format == FRAME_C1_16U || dst.format == FRAME_C1_16U;
            if ((is_deep && src.format != dst.format) || src.foreign == GST_VIDEO_FORMAT_GBR ||
                dst.foreign == GST_VIDEO_FORMAT_GBR) {
                continue;
            }
            for (Size const size : {to, from}) {
                if (size == from && src.format == dst.format) {
                    continue;
                }
                Element element;
                expectSameBytes(element, capsWith(src.format, from), capsOf(dst.format, size),
                                src.format, from, dst.format, size);
                ++pairs;
            }
        }
    }
    EXPECT_EQ(pairs, 15 * 15 + 1 + 15 * 14);
}

TEST_F(GstBytes, MethodsAndSizes) {
    char const* const names[]{"nearest-neighbour", "bilinear", "area", "automatic"};
    for (int method = 0; method < 4; ++method) {
        for (Size const to : {Size{64, 48}, Size{20, 15}, Size{33, 31}, Size{100, 77}}) {
            for (FrameFormat const format : {FRAME_BGR24, FRAME_I420, FRAME_YUYV}) {
                Element element(std::string("oxconvertscale method=") + names[method]);
                Request request;
                request.method = static_cast<TensorMethod>(method);
                expectSameBytes(element, capsWith(FRAME_NV12, {65, 47}), capsOf(format, to),
                                FRAME_NV12, {65, 47}, format, to, request);
            }
        }
    }
}

// Nearest neighbours skip rows, which a chain that isn't renewed takes for counted ones.
TEST_F(GstBytes, FramesDoNotDependOnThoseBefore) {
    for (char const* const line :
         {"oxconvertscale method=nearest-neighbour", "oxconvertscale filter=lanczos3"}) {
        for (FrameFormat const format : {FRAME_YUYV, FRAME_RGB_PLANAR, FRAME_GRAY8}) {
            Element element(line);
            element.setCaps(capsWith(format, {64, 48}), capsOf(FRAME_I420, {21, 17}));
            Lanczos3Kernel lanczos;
            Request request;
            request.method = TENSOR_METHOD_NEAREST;
            request.kernel =
                std::string(line).find("filter") == std::string::npos ? nullptr : &lanczos;
            Random random;
            for (int i = 0; i < 3; ++i) {
                TestFrame const source(format, {64, 48}, random);
                Buffer const buffer = element.push(source.frame());
                EXPECT_TRUE(
                    samePixels(MappedFrame(element.output(), buffer.get()).frame(),
                               byTheLibrary(source.frame(), FRAME_I420, {21, 17}, request)));
            }
        }
    }
}

TEST_F(GstBytes, Filters) {
    BoxKernel box;
    TriangleKernel triangle;
    MitchellNetravaliKernel mitchell;
    CatmullRomKernel catmull_rom;
    Lanczos3Kernel lanczos;
    struct {
        char const* name;
        IKernel* kernel;
    } const filters[]{{"box", &box},
                      {"triangle", &triangle},
                      {"mitchell", &mitchell},
                      {"catmull-rom", &catmull_rom},
                      {"lanczos3", &lanczos}};
    for (auto const& filter : filters) {
        for (FrameFormat const format : {FRAME_RGB24, FRAME_NV12}) {
            Element element(std::string("oxconvertscale filter=") + filter.name);
            Request request;
            request.kernel = filter.kernel;
            for (Size const to : {Size{40, 26}, Size{100, 64}}) {
                expectSameBytes(element, capsWith(FRAME_YUYV, {100, 64}), capsOf(format, to),
                                FRAME_YUYV, {100, 64}, format, to, request);
            }
        }
    }
}

TEST_F(GstBytes, Crops) {
    Rect const region{6, 4, 50, 33};
    for (FrameFormat const from : {FRAME_NV12, FRAME_YUYV, FRAME_RGB_PLANAR, FRAME_C1_16U}) {
        for (FrameFormat const to : {FRAME_BGR24, FRAME_I420, from}) {
            if (from == FRAME_C1_16U && to != from) {
                continue;
            }
            for (Size const size : {Size{50, 33}, Size{24, 16}}) {
                Element element("oxconvertscale left=6 top=4 right=8 bottom=3");
                Request request;
                request.region = region;
                expectSameBytes(element, capsWith(from, {64, 40}), capsOf(to, size), from, {64, 40},
                                to, size, request);
            }
        }
    }
}

TEST_F(GstBytes, ColoursByTheMatrixOfTheCaps) {
    struct {
        char const* name;
        TensorMatrix matrix;
        TensorRange range;
    } const meanings[]{{"bt601", TENSOR_MATRIX_BT601, TENSOR_RANGE_LIMITED},
                       {"1:4:0:0", TENSOR_MATRIX_BT601, TENSOR_RANGE_FULL},
                       {"bt709", TENSOR_MATRIX_BT709, TENSOR_RANGE_LIMITED},
                       {"bt2020", TENSOR_MATRIX_BT2020, TENSOR_RANGE_LIMITED}};
    for (auto const& meaning : meanings) {
        Element element;
        Request request;
        request.matrix = meaning.matrix;
        request.range = meaning.range;
        std::string const colorimetry = std::string(", colorimetry=") + meaning.name;
        expectSameBytes(element, capsWith(FRAME_I420, {40, 30}, colorimetry),
                        capsOf(FRAME_RGB24, {40, 30}), FRAME_I420, {40, 30}, FRAME_RGB24, {40, 30},
                        request);
    }
}

TEST_F(GstBytes, SinglesOfRowsAndColumns) {
    for (FrameFormat const from : {FRAME_YUYV, FRAME_RGB24, FRAME_GRAY8, FRAME_NV12}) {
        for (Size const size : {Size{31, 1}, Size{1, 31}, Size{1, 1}}) {
            Element element;
            expectSameBytes(element, capsWith(from, size), capsOf(FRAME_BGR24, {9, 5}), from, size,
                            FRAME_BGR24, {9, 5});
            Element other;
            expectSameBytes(other, capsWith(from, size), capsOf(FRAME_YUV444_PLANAR, {9, 5}), from,
                            size, FRAME_YUV444_PLANAR, {9, 5});
        }
    }
}

// White is (65 + 129 + 25) * 255 / 256 + 16 = 234 by the library's matrix, and chroma 128.
TEST_F(GstBytes, GrayBecomesGray) {
    Element element;
    TestFrame source(FRAME_GRAY8, {8, 8});
    fill(source.frame(), 255);
    element.setCaps(capsWith(FRAME_GRAY8, {8, 8}), capsOf(FRAME_I420, {8, 8}));
    Buffer const buffer = element.push(source.frame());
    MappedFrame const got(element.output(), buffer.get());
    EXPECT_EQ(got.frame().planeData(0)[0], 234);
    EXPECT_EQ(got.frame().planeData(1)[0], 128);
    EXPECT_EQ(got.frame().planeData(2)[0], 128);
}

TEST_F(GstBytes, GreenFirstPlanes) {
    Element element;
    Random random;
    TestFrame const source(FRAME_BGR24, {30, 20}, random);
    element.setCaps(capsWith(FRAME_BGR24, {30, 20}),
                    "video/x-raw, format=GBR, width=15, height=10");
    Buffer const buffer = element.push(source.frame());
    GstVideoInfo const info = element.output();
    EXPECT_EQ(GST_VIDEO_INFO_FORMAT(&info), GST_VIDEO_FORMAT_GBR);
    MappedFrame const got(info, buffer.get());
    EXPECT_TRUE(samePixels(got.frame(), byTheLibrary(source.frame(), FRAME_BGR_PLANAR, {15, 10})));
}

}  // namespace

}  // namespace ox::test::gst_bytes
