// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Backends of the C interface beside those of C++, whose bytes they give.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <string>

#include "ox_cv/c_handles.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::c_backend {

namespace {

class CBackendTest : public testing::TestWithParam<std::int32_t> {
  protected:
    CBackendTest() {
        if (GetParam() == OX_BACKEND_SIMD) {
            backend = std::make_unique<CvBackendSimd>();
        } else {
            backend = std::make_unique<CvBackendBase>();
        }
    }

    // Runs an operation into two frames of that kind, in C++ and in C.
    template <class Expected, class Got>
    void compare(FrameFormat format, Size size, Expected in_cpp, Got in_c) {
        TestFrame expected(format, size);
        TestFrame got(format, size, Placement{8});
        fill(expected.frame(), 1);
        fill(got.frame(), 1);
        in_cpp(expected.frame());
        expectTaken(in_c(handleOn(got.frame()).get()));
        EXPECT_TRUE(samePixels(got.frame(), expected.frame()));
        got.expectGapsUntouched();
    }

    Random random;
    CBackend handle = backendHandle(GetParam());
    std::unique_ptr<ICvBackend> backend;
};

constexpr Rect region{4, 2, 20, 12};
constexpr ox_rect c_region{4, 2, 20, 12};

TEST_P(CBackendTest, ConvertsColour) {
    TestFrame const source(FRAME_NV12, {32, 18}, random, Placement{5});
    CFrame const src = handleOn(source.frame());
    compare(
        FRAME_BGR24, {32, 18}, [&](Frame& dst) { backend->colorCvt(source.frame(), dst, Rect{}); },
        [&](ox_frame* dst) {
            return ox_backend_convert_colour(handle.get(), src.get(), nullptr, dst);
        });
    compare(
        FRAME_GRAY8, {20, 12}, [&](Frame& dst) { backend->colorCvt(source.frame(), dst, region); },
        [&](ox_frame* dst) {
            return ox_backend_convert_colour(handle.get(), src.get(), &c_region, dst);
        });
}

TEST_P(CBackendTest, Resizes) {
    TestFrame const source(FRAME_BGR24, {33, 19}, random);
    CFrame const src = handleOn(source.frame());
    Rect const part{1, 3, 9, 4};
    ox_rect const c_part{1, 3, 9, 4};
    for (std::int32_t const method : {OX_METHOD_NEAREST, OX_METHOD_BILINEAR, OX_METHOD_AREA}) {
        backend->setIntProperty(PropertyResizeMethod, method);
        expectTaken(ox_backend_set_property(handle.get(), OX_PROPERTY_RESIZE_METHOD, method));
        std::int32_t kept = -1;
        expectTaken(ox_backend_get_property(handle.get(), OX_PROPERTY_RESIZE_METHOD, &kept));
        EXPECT_EQ(kept, method);
        compare(
            FRAME_BGR24, {11, 8},
            [&](Frame& dst) { backend->resize(source.frame(), dst, region, part); },
            [&](ox_frame* dst) {
                return ox_backend_resize(handle.get(), src.get(), &c_region, dst, &c_part);
            });
    }
}

TEST_P(CBackendTest, ResizesAndConverts) {
    TestFrame const source(FRAME_I420, {32, 18}, random);
    CFrame const src = handleOn(source.frame());
    compare(
        FRAME_BGR24, {10, 8}, [&](Frame& dst) { backend->convert(source.frame(), dst, region); },
        [&](ox_frame* dst) { return ox_backend_convert(handle.get(), src.get(), &c_region, dst); });
}

TEST_P(CBackendTest, ResizesPacked422) {
    TestFrame const source(FRAME_YUYV, {16, 9}, random);
    CFrame const src = handleOn(source.frame());
    compare(
        FRAME_YUYV, {8, 6}, [&](Frame& dst) { resizePacked422(*backend, source.frame(), dst); },
        [&](ox_frame* dst) { return ox_backend_resize_packed_422(handle.get(), src.get(), dst); });
}

TEST_P(CBackendTest, AddsAndMultiplies) {
    compare(
        FRAME_BGR_32F, {8, 4},
        [&](Frame& frame) {
            fillFloats(frame, random, 3, 3);
            backend->add(frame, 1.5F, {1, 1, 3, 2});
            backend->mul(frame, 4.0F, Rect{});
        },
        [&](ox_frame* frame) {
            ox_frame_info info{};
            expectTaken(ox_frame_get_info(frame, &info));
            std::int64_t const stride = info.planes[0].stride;
            FrameLayout layout(FRAME_BGR_32F, {8, 4}, 1);
            layout.plane[0].stride = stride;
            fillFloats(Frame::wrap(layout, &info.planes[0].data), random, 3, 3);
            ox_rect const part{1, 1, 3, 2};
            expectTaken(ox_backend_add(handle.get(), frame, &part, 1.5F));
            return ox_backend_multiply(handle.get(), frame, nullptr, 4.0F);
        });
}

TEST_P(CBackendTest, Warps) {
    TestFrame const source(FRAME_BGR24, {32, 18}, random);
    CFrame const src = handleOn(source.frame());
    float const rows[2][3]{{0.5F, -0.25F, 3.0F}, {0.25F, 0.5F, 1.0F}};
    float const matrix[]{0.5F, -0.25F, 3.0F, 0.25F, 0.5F, 1.0F};
    for (std::int32_t const invert : {0, 1}) {
        if (GetParam() == OX_BACKEND_BASE) {
            TestFrame const dst(FRAME_BGR24, {12, 9});
            expectRefused(ox_backend_warp_affine(handle.get(), src.get(), nullptr,
                                                 handleOn(dst.frame()).get(), matrix, invert),
                          OX_STATUS_NOT_SUPPORTED, "Operation is not implemented");
            continue;
        }
        compare(
            FRAME_BGR24, {12, 9},
            [&](Frame& dst) {
                backend->warpAffine(source.frame(), dst, rows, region, invert != 0);
            },
            [&](ox_frame* dst) {
                return ox_backend_warp_affine(handle.get(), src.get(), &c_region, dst, matrix,
                                              invert);
            });
    }
}

TEST_P(CBackendTest, RefusesAsTheBackendDoes) {
    TestFrame const pixels(FRAME_BGR24, {16, 8});
    TestFrame const words(FRAME_C1_16U, {16, 8});
    CFrame const src = handleOn(pixels.frame());
    CFrame const dst = handleOn(words.frame());
    Frame target = words.frame();
    std::string expected;
    std::int32_t status = 0;
    try {
        backend->colorCvt(pixels.frame(), target, Rect{});
    } catch (Exception const& error) {
        expected = error.what();
        status = static_cast<std::int32_t>(error.status);
    }
    EXPECT_NE(status, 0);
    expectRefused(ox_backend_convert_colour(handle.get(), src.get(), nullptr, dst.get()), status,
                  expected.c_str());
    ox_rect const outside{10, 0, 8, 8};
    expectRefused(ox_backend_resize(handle.get(), src.get(), &outside, src.get(), nullptr),
                  OX_STATUS_OUT_OF_RANGE, "Failure in getRegion(...) : region is out of range.");
}

TEST_P(CBackendTest, RefusesUnknownProperties) {
    std::int32_t value = 7;
    expectRefused(ox_backend_set_property(handle.get(), 9, OX_METHOD_AREA), OX_STATUS_NOT_SUPPORTED,
                  "The backend has no property 9.");
    expectRefused(ox_backend_get_property(handle.get(), 9, &value), OX_STATUS_NOT_SUPPORTED,
                  "The backend has no property 9.");
    EXPECT_EQ(value, 7);
    bool const warps = GetParam() == OX_BACKEND_SIMD;
    EXPECT_EQ(ox_backend_set_property(handle.get(), OX_PROPERTY_WARP_METHOD, OX_METHOD_NEAREST),
              warps ? OX_STATUS_OK : OX_STATUS_NOT_SUPPORTED);
}

TEST_P(CBackendTest, RefusesNull) {
    TestFrame const pixels(FRAME_GRAY8, {8, 8});
    CFrame const f = handleOn(pixels.frame());
    ox_backend* const b = handle.get();
    float const matrix[6]{1, 0, 0, 0, 1, 0};
    auto const refused = [](ox_status status, char const* name) {
        expectRefused(status, OX_STATUS_NULL_POINTER,
                      ("Parameter '" + std::string(name) + "' is null.").c_str());
    };
    std::int32_t value = 0;
    refused(ox_backend_create(GetParam(), nullptr), "backend");
    refused(ox_backend_set_property(nullptr, OX_PROPERTY_RESIZE_METHOD, 0), "backend");
    refused(ox_backend_get_property(nullptr, OX_PROPERTY_RESIZE_METHOD, &value), "backend");
    refused(ox_backend_get_property(b, OX_PROPERTY_RESIZE_METHOD, nullptr), "value");
    refused(ox_backend_convert(nullptr, f.get(), nullptr, f.get()), "backend");
    refused(ox_backend_convert(b, nullptr, nullptr, f.get()), "src");
    refused(ox_backend_convert(b, f.get(), nullptr, nullptr), "dst");
    refused(ox_backend_convert_colour(b, nullptr, nullptr, f.get()), "src");
    refused(ox_backend_resize(b, f.get(), nullptr, nullptr, nullptr), "dst");
    refused(ox_backend_resize_packed_422(nullptr, f.get(), f.get()), "backend");
    refused(ox_backend_warp_affine(b, f.get(), nullptr, f.get(), nullptr, 0), "matrix");
    refused(ox_backend_warp_affine(b, nullptr, nullptr, f.get(), matrix, 0), "src");
    refused(ox_backend_add(nullptr, f.get(), nullptr, 1), "backend");
    refused(ox_backend_add(b, nullptr, nullptr, 1), "frame");
    refused(ox_backend_multiply(b, nullptr, nullptr, 1), "frame");
}

TEST_P(CBackendTest, FailedAllocationsLeaveNothing) {
    std::int64_t const live = liveAllocations();
    bool struck = true;
    for (std::uint64_t k = 1; struck; ++k) {
        ox_backend* raw = nullptr;
        ox_status status = OX_STATUS_OK;
        {
            FailingAllocations const failing(k);
            status = ox_backend_create(GetParam(), &raw);
            struck = failing.struck();
        }
        CBackend made(raw);
        EXPECT_EQ(status, struck ? OX_STATUS_CAPACITY_EXCEEDED : OX_STATUS_OK);
        made.reset();
        EXPECT_EQ(liveAllocations(), live) << "allocation " << k;
    }
}

INSTANTIATE_TEST_SUITE_P(, CBackendTest, testing::Values(OX_BACKEND_SIMD, OX_BACKEND_BASE),
                         [](auto const& kind) {
                             return kind.param == OX_BACKEND_SIMD ? "Simd" : "Base";
                         });

TEST(CBackendKinds, OthersAreRefused) {
    ox_backend* backend = nullptr;
    expectRefused(ox_backend_create(2, &backend), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'kind' is invalid 2.");
    EXPECT_EQ(backend, nullptr);
}

}  // namespace

}  // namespace ox::test::c_backend
