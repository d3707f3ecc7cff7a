// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames and mats on each other's memory.
#include "ox_interop/ox_opencv.h"

#include <gtest/gtest.h>

#include <opencv2/core.hpp>

#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::opencv {

namespace {

using namespace ox::interop;

TEST(OpenCv, FramesLieOnMats) {
    struct {
        int type;
        FrameFormat format;
    } const cases[]{{CV_8UC1, FRAME_GRAY8},     {CV_8UC2, FRAME_C2_8U},   {CV_8UC3, FRAME_BGR24},
                    {CV_8UC4, FRAME_C4_8U},     {CV_16UC1, FRAME_C1_16U}, {CV_32SC1, FRAME_C1_32U},
                    {CV_32FC1, FRAME_GRAY_32F}, {CV_32FC3, FRAME_BGR_32F}};
    for (auto const& [type, format] : cases) {
        cv::Mat whole(20, 30, type);
        cv::Mat const mat = whole(cv::Rect(3, 4, 17, 9));  // with gaps between rows
        Frame const frame = frameOf(mat);
        EXPECT_EQ(frame.format(), format);
        EXPECT_EQ(frame.size(), (Size{17, 9}));
        EXPECT_EQ(frame.planeData(0), mat.data);
        EXPECT_EQ(frame.layout().plane[0].stride, static_cast<std::int64_t>(whole.step[0]));
        EXPECT_EQ(frame.layout().plane[0].rowBytes, 17 * mat.elemSize());
    }
}

TEST(OpenCv, FormatsAreTheCallersToName) {
    cv::Mat const mat(8, 16, CV_8UC3);
    EXPECT_EQ(frameOf(mat, FRAME_RGB24).format(), FRAME_RGB24);
    EXPECT_EQ(frameOf(mat, FRAME_YUV444).format(), FRAME_YUV444);
    cv::Mat const packed(8, 16, CV_8UC2);
    Frame const frame = frameOf(packed, FRAME_YUYV);
    EXPECT_EQ(frame.width(), 16);
    EXPECT_EQ(frame.planeData(0), packed.data);
}

TEST(OpenCv, PlanesMayLieApart) {
    cv::Mat const luma(10, 14, CV_8UC1);
    cv::Mat const chroma(5, 7, CV_8UC2);
    Frame const frame = frameOf({luma, chroma}, FRAME_NV12);
    EXPECT_EQ(frame.size(), (Size{14, 10}));
    EXPECT_EQ(frame.planeData(0), luma.data);
    EXPECT_EQ(frame.planeData(1), chroma.data);
    EXPECT_EQ(frame.layout().plane[1].stride, 14);
}

TEST(OpenCv, MatsLieOnPlanes) {
    for (FrameFormat const format : allFormats()) {
        if (format == FRAME_FORMAT_NONE) {
            continue;
        }
        Random random;
        TestFrame const source(format, {18, 10}, random, Placement{8});
        for (int i = 0; i < source.layout().planeCount; ++i) {
            FramePlane const& plane = source.layout().plane[i];
            cv::Mat const mat = matOf(source.frame(), i);
            EXPECT_EQ(mat.data, source.frame().planeData(i));
            EXPECT_EQ(mat.rows, plane.height);
            EXPECT_EQ(mat.total() * mat.elemSize(),
                      plane.rowBytes * static_cast<std::size_t>(plane.height))
                << toString(format);
            EXPECT_EQ(mat.channels(), plane.channels);
            EXPECT_EQ(static_cast<std::int64_t>(mat.step[0]), plane.stride);
            EXPECT_EQ(mat.depth(), plane.bits == 8          ? CV_8U
                                   : plane.bits == 16       ? CV_16U
                                   : format == FRAME_C1_32U ? CV_32S
                                                            : CV_32F);
        }
        cv::Mat const first = matOf(source.frame());
        Frame const back =
            source.layout().planeCount == 1 ? frameOf(first, format) : Frame(source.frame());
        EXPECT_TRUE(samePixels(back, source.frame()));
    }
}

TEST(OpenCv, WritesReachTheFrame) {
    TestFrame const target(FRAME_NV12, {16, 8}, Placement{4});
    matOf(target.frame(), 0).setTo(50);
    matOf(target.frame(), 1).setTo(cv::Scalar(60, 70));
    EXPECT_EQ(bytesOf(target.frame(), 0, 7), std::vector<int>(16, 50));
    EXPECT_EQ(target.row(1, 3)[14], 60);
    EXPECT_EQ(target.row(1, 3)[15], 70);
    target.expectGapsUntouched();
}

TEST(OpenCv, StackedPicturesAreTakenApart) {
    cv::Mat const whole(20, 24, CV_8UC1);
    cv::Mat const narrow = whole(cv::Rect(0, 0, 16, 12));
    Frame const pairs = frameOfStacked(narrow, FRAME_NV21);
    EXPECT_EQ(pairs.size(), (Size{16, 8}));
    EXPECT_EQ(pairs.planeData(1), whole.data + 8 * 24);
    EXPECT_EQ(pairs.layout().plane[1].stride, 24);

    cv::Mat const mat(12, 16, CV_8UC1);
    Frame const planes = frameOfStacked(mat, FRAME_YV12);
    EXPECT_EQ(planes.planeData(1), mat.data + 8 * 16);
    EXPECT_EQ(planes.planeData(2), mat.data + 8 * 16 + 4 * 8);
    EXPECT_EQ(planes.layout().plane[2].stride, 8);
    cv::Mat const back = stackedMatOf(planes);
    EXPECT_EQ(back.data, mat.data);
    EXPECT_EQ(back.size(), mat.size());

    char const* const text = "Failure in frameOfStacked(...) : the mat isn't such a picture.";
    expectException(StatusInvalidParameter, text, [&] { frameOfStacked(narrow, FRAME_I420); });
    expectException(StatusInvalidParameter, text, [&] { frameOfStacked(mat, FRAME_NV16); });
    expectException(StatusInvalidParameter, text,
                    [&] { frameOfStacked(mat(cv::Rect(0, 0, 15, 12)), FRAME_NV12); });
    expectException(StatusInvalidParameter, text,
                    [&] { frameOfStacked(cv::Mat(10, 16, CV_8UC1), FRAME_NV12); });
}

TEST(OpenCv, FramesOfTheLibraryAreStacked) {
    Frame frame;
    frame.reuse(FRAME_NV12, {34, 18}, DeviceContext(), 0);
    cv::Mat const mat = stackedMatOf(frame);
    EXPECT_EQ(mat.size(), cv::Size(34, 27));
    EXPECT_EQ(mat.ptr(18), frame.planeData(1));
    TestFrame const apart(FRAME_NV12, {34, 18});
    expectException(StatusInvalidParameter,
                    "Failure in stackedMatOf(...) : the planes don't lie in one mat.",
                    [&] { stackedMatOf(apart.frame()); });
}

TEST(OpenCv, OtherMatsAreRefused) {
    char const* const count = "Failure in frameOf(...) : the format has another count of planes.";
    char const* const plane = "Failure in frameOf(...) : a mat isn't a plane of the format.";
    cv::Mat const gray(8, 16, CV_8UC1);
    expectException(StatusInvalidParameter, count, [&] { frameOf(gray, FRAME_NV12); });
    expectException(StatusInvalidParameter, count, [&] { frameOf({}, FRAME_GRAY8); });
    expectException(StatusInvalidParameter, count, [] { frameOf(cv::Mat(2, 2, CV_64F)); });
    expectException(StatusInvalidParameter, plane, [&] { frameOf(gray, FRAME_BGR24); });
    expectException(StatusInvalidParameter, plane, [&] { frameOf({gray, gray}, FRAME_NV12); });
    expectException(StatusInvalidParameter, plane,
                    [] { frameOf(cv::Mat(8, 15, CV_8UC2), FRAME_YUYV); });
    int const sides[]{3, 4, 5};
    expectException(StatusInvalidParameter, count,
                    [&] { frameOf(cv::Mat(3, sides, CV_8UC1), FRAME_I420); });
    expectException(StatusOutOfRange, "Failure in matOf(...) : the frame has no such plane.",
                    [] { matOf(Frame(), 0); });
}

}  // namespace

}  // namespace ox::test::opencv
