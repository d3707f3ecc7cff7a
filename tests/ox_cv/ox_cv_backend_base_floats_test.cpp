// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Constant arithmetic of the pipeline backend.
#include <gtest/gtest.h>

#include <ostream>

#include "ox_cv/backend_frames.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "support/exceptions.h"

namespace ox::test {

namespace {

using Floats = std::vector<float>;

// A float frame of ones, with odd gaps between its rows.
TestFrame ones(FrameFormat format, Size size) {
    TestFrame result(format, size, {12, Guard::AtEnd});
    for (int plane = 0; plane < result.layout().planeCount; ++plane) {
        for (int y = 0; y < size.height; ++y) {
            Floats const row(result.layout().plane[plane].rowBytes / sizeof(float), 1.0F);
            std::memcpy(result.row(plane, y), row.data(), row.size() * sizeof(float));
        }
    }
    return result;
}

Floats floatsOf(TestFrame const& frame, int plane, int y) {
    Floats row(frame.layout().plane[plane].rowBytes / sizeof(float));
    std::memcpy(row.data(), frame.row(plane, y), row.size() * sizeof(float));
    return row;
}

// Expects `value` in the block at the top left and ones elsewhere, in all planes.
void expectBlock(TestFrame const& frame, Size block, float value) {
    for (int plane = 0; plane < frame.layout().planeCount; ++plane) {
        int const channels = frame.layout().plane[plane].channels;
        for (int y = 0; y < frame.frame().height(); ++y) {
            Floats expected(static_cast<std::size_t>(frame.frame().width() * channels), 1.0F);
            if (y < block.height) {
                std::fill_n(expected.begin(), block.width * channels, value);
            }
            EXPECT_EQ(floatsOf(frame, plane, y), expected) << "plane " << plane << ", row " << y;
        }
    }
    frame.expectGapsUntouched();
}

struct Operation {
    char const* name;
    void (CvBackendBase::*apply)(Frame&, float, Rect);
    float result;  // of a one and the constant 3
    char const* unsupported;
};

// Names the operation in test reports.
void PrintTo(Operation const& operation, std::ostream* out) {
    *out << operation.name;
}

class CvBackendBaseFloats : public testing::TestWithParam<Operation> {
  protected:
    void apply(Frame& frame, Rect roi) { (_backend.*GetParam().apply)(frame, 3.0F, roi); }

  private:
    CvBackendBase _backend;
};

TEST_P(CvBackendBaseFloats, WholeFrames) {
    for (FrameFormat const format : {FRAME_GRAY_32F, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        for (Rect const whole : {Rect{}, Rect{1, 1, 0, 2}, Rect{1, 1, 2, 0}, Rect{0, 0, 5, 4}}) {
            TestFrame frame = ones(format, {5, 4});
            apply(frame.frame(), whole);
            expectBlock(frame, {5, 4}, GetParam().result);
        }
    }
}

// The block lies at (0, 0), wherever the region lies.
TEST_P(CvBackendBaseFloats, RegionsGiveTheirSizeAlone) {
    for (FrameFormat const format : {FRAME_GRAY_32F, FRAME_BGR_32F, FRAME_BGR_32F_PLANAR}) {
        TestFrame inside = ones(format, {20, 20});
        apply(inside.frame(), {10, 10, 5, 4});
        expectBlock(inside, {5, 4}, GetParam().result);
        TestFrame corner = ones(format, {8, 8});
        apply(corner.frame(), {6, 7, 5, 5});
        expectBlock(corner, {2, 1}, GetParam().result);
        TestFrame before = ones(format, {8, 8});
        apply(before.frame(), {-2, -3, 5, 5});
        expectBlock(before, {3, 2}, GetParam().result);
    }
}

TEST_P(CvBackendBaseFloats, RegionsOutsideAreRefused) {
    TestFrame frame = ones(FRAME_GRAY_32F, {8, 8});
    TestFrame bytes(FRAME_BGR24, {8, 8});
    for (Rect const outside : {Rect{8, 0, 2, 2}, Rect{0, 8, 2, 2}, Rect{-2, 0, 2, 2}}) {
        for (TestFrame* const each : {&frame, &bytes}) {  // before the format is looked at
            expectException(StatusAssertionFailed, "Assertion failed: !src_roi.empty()",
                            [&] { apply(each->frame(), outside); });
        }
    }
    expectBlock(frame, {0, 0}, 0);
}

TEST_P(CvBackendBaseFloats, OtherFormatsAreRefused) {
    for (FrameFormat const format : allFormats()) {
        if (format >= FRAME_GRAY_32F) {
            continue;
        }
        TestFrame frame = ramp(format, {4, 4});
        TestFrame const before = ramp(format, {4, 4});
        for (Rect const roi : {Rect{}, Rect{1, 1, 2, 2}}) {
            expectException(StatusNotSupported, GetParam().unsupported,
                            [&] { apply(frame.frame(), roi); });
        }
        EXPECT_TRUE(samePixels(frame.frame(), before.frame()));
    }
}

TEST_P(CvBackendBaseFloats, ChecksTheFrame) {
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_GRAY_32F, {4, 4});
    expectException(StatusAssertionFailed, "Assertion failed: src_dst.initialized()", [&] {
        apply(none, {9, 9, 9, 9});
    });
    expectException(StatusAssertionFailed,
                    "Assertion failed: src_dst.deviceContext() == DeviceContext::cpuContext()",
                    [&] {
                        apply(elsewhere, {9, 9, 9, 9});
                    });
}

INSTANTIATE_TEST_SUITE_P(Operations, CvBackendBaseFloats,
                         testing::Values(Operation{"Add", &CvBackendBase::add, 4.0F,
                                                   "ADD error, unsupported data type."},
                                         Operation{"Multiply", &CvBackendBase::mul, 3.0F,
                                                   "MUL error, unsupported data type."}),
                         [](auto const& chosen) { return std::string(chosen.param.name); });

}  // namespace

}  // namespace ox::test
