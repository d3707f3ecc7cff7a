// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Affine warps of frames by the vector backend.
#include <gtest/gtest.h>

#include <array>
#include <cmath>

#include "model/vector_planes.h"
#include "ox_cv/backend_frames.h"
#include "ox_cv/backend_simd_frames.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"

namespace ox::test::cv_backend_simd_warp {

namespace {

constexpr char otherFormat[] =
    "Assertion failed: src.initialized() && src.format() == dst.format()";
constexpr char noContext[] = "warpAffine: Can't create context.";

// As the backend takes it.
struct Matrix {
    float rows[2][3];

    model::Matrix numbers() const {
        return {rows[0][0], rows[0][1], rows[0][2], rows[1][0], rows[1][1], rows[1][2]};
    }
};

constexpr Matrix identity{{{1, 0, 0}, {0, 1, 0}}};
constexpr Matrix zeros{};
constexpr Matrix right{{{1, 0, 1}, {0, 1, 0}}};         // by a pixel
constexpr Matrix halfRight{{{1, 0, 0.5F}, {0, 1, 0}}};  // by half a pixel

// What becomes of a gray row on one of as many pixels.
Bytes warpedRow(CvBackendSimd& backend, Bytes const& row, Matrix const& matrix, bool flag = false) {
    TestFrame const src = grayPicture({row});
    TestFrame dst = grayPicture({Bytes(row.size(), 99)});
    backend.warpAffine(src.frame(), dst.frame(), matrix.rows, {}, flag);
    dst.expectGapsUntouched();
    return bytesOf(dst.frame(), 0, 0);
}

model::Image warpedImage(model::Warp const& warp, model::Image const& src, model::Image dst,
                         FrameLayout const& layout) {
    for (std::size_t p = 0; p < dst.planes.size(); ++p) {
        FramePlane const& facts = layout.plane[p];
        auto const pixelsOf = [&](model::Plane const& plane) {
            return model::pixelsOf(plane, facts.channels, facts.bits / 8);
        };
        model::Pixels pixels = pixelsOf(dst.planes[p]);
        model::warpPlane(warp, pixelsOf(src.planes[p]), pixels);
        model::storePixels(pixels, dst.planes[p]);
    }
    return dst;
}

// Each call breaks one rule and all that are looked at later; the matrix comes last.
TEST(CvBackendSimdWarp, ChecksInTheirOrder) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame dst(FRAME_GRAY8, {4, 4});
    TestFrame other(FRAME_BGR24, {4, 4});
    Frame none;
    Frame elsewhere = deviceFrame(FRAME_GRAY8, {4, 4});
    Frame other_device;
    other_device.reuse(FRAME_GRAY8, {4, 4}, DeviceContext(8, nullptr), 0);
    Rect const outside{3, 3, 2, 2};
    auto const expectAssertion = [&](char const* text, Frame const& from, Frame& to) {
        expectException(StatusAssertionFailed, text,
                        [&] { backend.warpAffine(from, to, nullptr, outside, true); });
    };
    expectAssertion(otherFormat, emptyFrame(), none);
    expectAssertion(otherFormat, emptyFrame(), elsewhere);
    expectAssertion(otherFormat, elsewhere, none);
    expectAssertion(otherFormat, elsewhere, other.frame());
    expectAssertion(wrongDevice, elsewhere, dst.frame());
    expectAssertion(wrongDevice, elsewhere, elsewhere);
    expectAssertion(wrongDevice, elsewhere, other_device);
    expectAssertion(wrongDevice, src.frame(), elsewhere);
    for (bool const flag : {false, true}) {
        expectStatus(StatusOutOfRange, [&] {
            backend.warpAffine(src.frame(), dst.frame(), zeros.rows, outside, flag);
        });
        expectException(StatusNotSupported, noContext, [&] {
            backend.warpAffine(src.frame(), dst.frame(), zeros.rows, {2, 2, 2, 2}, flag);
        });
    }
    EXPECT_TRUE(isFilledWith(dst.frame(), 0));
}

TEST(CvBackendSimdWarp, MethodsOfTheProperty) {
    CvBackendSimd backend;
    Bytes const bilinear{5, 15, 25};
    EXPECT_EQ(warpedRow(backend, {10, 20, 30}, halfRight), bilinear);  // at first
    backend.setIntProperty(PropertyWarpMethod, ResizeNearestNeighbour);
    EXPECT_EQ(warpedRow(backend, {10, 20, 30}, halfRight), (Bytes{0, 20, 30}));
    backend.setIntProperty(PropertyWarpMethod, ResizeBilinear);
    EXPECT_EQ(warpedRow(backend, {10, 20, 30}, halfRight), bilinear);
    backend.setIntProperty(PropertyWarpMethod, ResizeArea);
    EXPECT_EQ(warpedRow(backend, {10, 20, 30}, halfRight), bilinear);
    for (int const resize : {0, 1, 2}) {
        backend.setIntProperty(PropertyResizeMethod, resize);
        EXPECT_EQ(warpedRow(backend, {10, 20, 30}, halfRight), bilinear);
    }
}

TEST(CvBackendSimdWarp, TheMatrixLeadsFromSourceToDestinationUnlessFlagged) {
    CvBackendSimd backend;
    Matrix const twice{{{2, 0, 0}, {0, 1, 0}}};
    for (int const method : {0, 1, 2}) {
        backend.setIntProperty(PropertyWarpMethod, method);
        EXPECT_EQ(warpedRow(backend, {10, 20, 30}, right, false), (Bytes{0, 10, 20}));
        EXPECT_EQ(warpedRow(backend, {10, 20, 30}, right, true), (Bytes{20, 30, 0}));
        EXPECT_EQ(warpedRow(backend, {10, 20, 30}, identity, true), (Bytes{10, 20, 30}));
        EXPECT_EQ(warpedRow(backend, {10, 20, 30, 40, 50}, twice, true), (Bytes{10, 30, 50, 0, 0}));
    }
    EXPECT_EQ(warpedRow(backend, {10, 20, 30, 40}, twice, false), (Bytes{10, 15, 20, 25}));
}

TEST(CvBackendSimdWarp, SingularMatricesWriteNothing) {
    CvBackendSimd backend;
    for (FrameFormat const format : allFormats()) {
        TestFrame const src = ramp(format, {6, 4});
        TestFrame dst(format, {6, 4});
        fill(dst.frame(), 77);
        for (Matrix const& matrix :
             {zeros, Matrix{{{0, 0, 3}, {0, 0, 4}}}, Matrix{{{1, 2, 0}, {2, 4, 0}}},
              Matrix{{{0, 1, 3}, {0, 1, 3}}}}) {
            for (int const method : {0, 1, 2}) {
                backend.setIntProperty(PropertyWarpMethod, method);
                for (bool const flag : {false, true}) {
                    expectException(StatusNotSupported, noContext, [&] {
                        backend.warpAffine(src.frame(), dst.frame(), matrix.rows, {}, flag);
                    });
                }
            }
        }
        EXPECT_TRUE(isFilledWith(dst.frame(), 77)) << toString(format);
    }
}

// An inverse that no float holds is zero to the warp, and a matrix that is tiny can be inverted.
TEST(CvBackendSimdWarp, TheFlagDecidesOnExtremes) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_GRAY8, {4, 4});
    TestFrame dst(FRAME_GRAY8, {4, 4});
    Matrix const huge{{{1e30F, 0, 0}, {0, 1e30F, 0}}};
    for (bool const flag : {false, true}) {
        expectException(StatusNotSupported, noContext,
                        [&] { backend.warpAffine(src.frame(), dst.frame(), huge.rows, {}, flag); });
    }
    Matrix const tiny{{{1e-15F, 0, 0}, {0, 1e-15F, 0}}};
    backend.setIntProperty(PropertyWarpMethod, ResizeNearestNeighbour);
    fill(dst.frame(), 77);
    backend.warpAffine(src.frame(), dst.frame(), tiny.rows, {}, false);
    EXPECT_EQ(rowsOf(dst.frame()), (Rows{{0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}, {0, 0, 0, 0}}));
}

TEST(CvBackendSimdWarp, Regions) {
    CvBackendSimd backend;
    TestFrame const src = grayPicture({{1, 2, 3, 4}, {5, 60, 80, 8}, {9, 100, 120, 12}});
    for (int const method : {0, 1}) {
        backend.setIntProperty(PropertyWarpMethod, method);
        TestFrame dst(FRAME_GRAY8, {4, 3}, {3, Guard::AtEnd});
        fill(dst.frame(), 99);
        backend.warpAffine(src.frame(), dst.frame(), right.rows, {1, 1, 2, 2}, false);
        EXPECT_EQ(rowsOf(dst.frame()), (Rows{{0, 60, 80, 0}, {0, 100, 120, 0}, {0, 0, 0, 0}}));
        dst.expectGapsUntouched();
        for (Rect const whole : {Rect{1, 1, 0, 2}, Rect{1, 1, 2, 0}, Rect{9, 9, -1, 9}, Rect{}}) {
            backend.warpAffine(src.frame(), dst.frame(), identity.rows, whole, false);
            EXPECT_EQ(rowsOf(dst.frame()), rowsOf(src.frame()));
        }
    }
    // what lies around the region has no part in its soft edge
    TestFrame dst(FRAME_GRAY8, {4, 1});
    backend.warpAffine(src.frame(), dst.frame(), halfRight.rows, {1, 1, 2, 1}, false);
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0), (Bytes{30, 70, 40, 0}));
}

// Chroma moves by as many of its own pixels as luma does.
TEST(CvBackendSimdWarp, PlanesKeepTheirOwnCoordinates) {
    CvBackendSimd backend;
    TestFrame const src =
        picture(FRAME_NV12, {4, 2}, {{{10, 20, 30, 40}, {50, 60, 70, 80}}, {{1, 2, 3, 4}}});
    TestFrame dst(FRAME_NV12, {6, 2});
    fill(dst.frame(), 99);
    backend.warpAffine(src.frame(), dst.frame(), right.rows, {}, false);
    EXPECT_EQ(rowsOf(dst.frame(), 0), (Rows{{0, 10, 20, 30, 40, 0}, {0, 50, 60, 70, 80, 0}}));
    EXPECT_EQ(rowsOf(dst.frame(), 1), (Rows{{0, 0, 1, 2, 3, 4}}));
}

// Samples of several bytes aren't known as such: a row is as many bytes as it has samples.
TEST(CvBackendSimdWarp, WideSamplesAreTakenForBytes) {
    CvBackendSimd backend;
    TestFrame const src = picture(FRAME_C1_16U, {3, 1}, {{{1, 2, 3, 4, 5, 6}}});
    TestFrame dst(FRAME_C1_16U, {3, 1});
    fill(dst.frame(), 99);
    backend.warpAffine(src.frame(), dst.frame(), right.rows, {}, false);
    EXPECT_EQ(bytesOf(dst.frame(), 0, 0), (Bytes{0, 1, 2, 99, 99, 99}));
}

// A plane of more than four gibibytes from its first row to its end, of which nothing is touched.
TEST(CvBackendSimdWarp, PlanesBeforeAFailingOneStayWritten) {
    CvBackendSimd backend;
    TestFrame const near = ramp(FRAME_I420, {4, 4});
    FrameLayout layout = near.layout();
    layout.plane[1].stride = (std::int64_t{1} << 31) + 64;
    unsigned char* const addresses[4]{near.row(0, 0), near.row(1, 0), near.row(2, 0), nullptr};
    Frame const far = Frame::wrap(layout, addresses);
    TestFrame dst(FRAME_I420, {4, 4});
    fill(dst.frame(), 77);
    expectException(StatusNotSupported, noContext,
                    [&] { backend.warpAffine(far, dst.frame(), identity.rows, {}, false); });
    EXPECT_EQ(rowsOf(dst.frame(), 0), rowsOf(near.frame(), 0));
    EXPECT_EQ(rowsOf(dst.frame(), 1), (Rows{{77, 77}, {77, 77}}));
    EXPECT_EQ(rowsOf(dst.frame(), 2), (Rows{{77, 77}, {77, 77}}));
}

TEST(CvBackendSimdWarp, KeepsNoMemory) {
    CvBackendSimd backend;
    TestFrame const src = ramp(FRAME_NV12, {8, 8});
    TestFrame dst(FRAME_NV12, {8, 8});
    auto const warp = [&](Matrix const& matrix) {
        backend.warpAffine(src.frame(), dst.frame(), matrix.rows, {1, 1, 6, 6}, true);
    };
    for (int const method : {0, 1}) {
        backend.setIntProperty(PropertyWarpMethod, method);
        warp(right);
        std::int64_t const before = liveAllocations();
        warp(right);
        EXPECT_EQ(liveAllocations(), before);
        expectException(StatusNotSupported, noContext, [&] { warp(zeros); });
        EXPECT_EQ(liveAllocations(), before);
    }
}

class CvBackendSimdWarpSweep : public testing::Test {
  protected:
    // Turned, scaled and at times flipped, around the middle.
    Matrix drawMatrix(Size from, Size to) {
        float const angle = oneIn(_random, 3) ? 0.0F : _random.real(-3.15F, 3.15F);
        float const x_scale = (oneIn(_random, 2) ? 1.0F : -1.0F) * _random.real(0.3F, 3);
        float const y_scale = _random.real(0.3F, 3);
        Matrix matrix{{{std::cos(angle) * x_scale, -std::sin(angle) * y_scale, 0},
                       {std::sin(angle) * x_scale, std::cos(angle) * y_scale, 0}}};
        float const middle[]{static_cast<float>(to.width) / 2, static_cast<float>(to.height) / 2};
        for (std::size_t i = 0; i < 2; ++i) {
            auto& row = matrix.rows[i];
            row[2] = middle[i] - row[0] * static_cast<float>(from.width) / 2 -
                     row[1] * static_cast<float>(from.height) / 2 + _random.real(-2, 2);
        }
        return matrix;
    }

    void check(FrameFormat format, Rect roi, Size whole, Size to) {
        model::Image const image =
            drawImage(_random, {static_cast<int>(format), whole.width, whole.height});
        model::Image const part =
            roi.empty() ? image : model::crop(image, roi.x, roi.y, roi.width, roi.height);
        model::Image const before =
            drawImage(_random, {static_cast<int>(format), to.width, to.height});
        PlacedImage const src(image, drawPlacements(_random));
        PlacedImage dst(before, drawPlacements(_random));
        Matrix const matrix = drawMatrix({part.width, part.height}, to);
        bool const flag = oneIn(_random, 2);
        int const method = _random.between(0, 2);
        model::Warp warp{matrix.numbers(), method == 0 ? 0U : model::WarpBilinear, {}};
        if (flag) {
            invertAffineTransform(matrix.rows[0], warp.matrix.data());
        }
        _backend.setIntProperty(PropertyWarpMethod, method);
        _backend.warpAffine(src.frame(), dst.frame(), matrix.rows, roi, flag);
        EXPECT_TRUE(dst.holds(warpedImage(warp, part, before, src.frame().layout())))
            << describe(format, {part.width, part.height}) << " to " << to.width << "x" << to.height
            << ", method " << method << ", flag " << flag;
        EXPECT_TRUE(src.holds(image)) << "the source changed";
    }

    Size drawSize() { return {_random.between(1, 24), _random.between(1, 24)}; }

    Random _random;

  private:
    CvBackendSimd _backend;
};

TEST_F(CvBackendSimdWarpSweep, WholeFrames) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(30) && !HasFailure(); ++i) {
            check(format, {}, drawSize(), drawSize());
        }
    }
}

TEST_F(CvBackendSimdWarpSweep, RegionsOfFrames) {
    for (FrameFormat const format : allFormats()) {
        for (int i = 0; i < draws(30) && !HasFailure(); ++i) {
            Size const whole = drawSize();
            Rect roi{_random.between(0, whole.width - 1), _random.between(0, whole.height - 1), 0,
                     0};
            roi.width = _random.between(1, whole.width - roi.x);
            roi.height = _random.between(1, whole.height - roi.y);
            check(format, roi, whole, drawSize());
        }
    }
}

}  // namespace

}  // namespace ox::test::cv_backend_simd_warp
