// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// This one header is all that a caller of the library needs.
#include "ox_cv/ox_cv.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(Umbrella, NamesStatusesAndFormatsAndCatches) {
    ox::Frame frame;
    frame.reuse(ox::FRAME_NV12, {8, 2}, ox::DeviceContext(), 0);
    ox::FormatConverter converter;
    try {
        converter.reuse(frame, ox::FRAME_FORMAT_NONE);
        ADD_FAILURE() << "nothing was thrown";
    } catch (ox::Exception const& exception) {
        EXPECT_EQ(exception.status, ox::StatusUnsupportedFormat);
        EXPECT_EQ(std::string(exception.what()), "Invalid value for parameter 'dst_format'.");
    }
    EXPECT_EQ(std::string(ox::toString(frame.format())), "FRAME_NV12");
}

TEST(Umbrella, NamesTheProperties) {
    ox::CvBackendSimd backend;
    ox::ICvBackend& any = backend;
    EXPECT_EQ(any.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea), 1);
    EXPECT_EQ(any.setIntProperty(ox::PropertyWarpMethod, ox::ResizeNearestNeighbour), 1);
    EXPECT_EQ(any.getIntProperty(1), ox::ResizeArea);
    EXPECT_EQ(any.getIntProperty(2), ox::ResizeNearestNeighbour);
    int const id = ox::PropertyWarpMethod;  // the parameter's type
    EXPECT_EQ(any.getIntProperty(id), ox::ResizeNearestNeighbour);
    ox::CvBackendBase pipeline;
    EXPECT_EQ(pipeline.setIntProperty(ox::PropertyResizeMethod, ox::ResizeArea), 1);
    EXPECT_EQ(pipeline.setIntProperty(ox::PropertyWarpMethod, ox::ResizeArea), 0);
}

}  // namespace
