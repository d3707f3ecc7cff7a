// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Reduction by filters through the C interface.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "ox_cv/c_handles.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::c_filter {

namespace {

// A parabola as wide as its context says, in destination pixels.
float parabola(void* context, float scale, float distance) {
    float const t = distance / (*static_cast<float*>(context) * scale);
    return 1.0F - t * t;
}

float widthOfParabola(void* context, float scale) {
    return 2.0F * *static_cast<float*>(context) * scale;
}

class Parabola : public IKernel {
  public:
    explicit Parabola(float radius) : _radius(radius) {}
    void setScale(float scale) override { _scale = scale; }
    float value(float x) override { return parabola(&_radius, _scale, x); }
    float aperture() override { return widthOfParabola(&_radius, _scale); }

  private:
    float _radius;
    float _scale = 1.0F;
};

constexpr ox_filter named(std::int32_t kind) {
    return {kind, nullptr, nullptr, nullptr};
}

Frame reduced(IKernel& kernel, Frame const& source, Size size, ScalerPrecision precision) {
    ScalerConvolutional scaler;
    scaler.reuse(kernel, source, size, precision);
    Frame frame;
    produceFrame(scaler, frame);
    return frame;
}

class CFilter : public testing::Test {
  protected:
    // Compares both precisions of a reduction with C++, over the whole and over a region.
    void expectSame(ox_filter const& filter, IKernel& kernel) {
        for (Rect const rect : {Rect{0, 0, 40, 30}, Rect{2, 4, 32, 24}}) {
            for (std::int32_t const precision : {OX_PRECISION_8, OX_PRECISION_16}) {
                Frame const part = getRegion(source.frame(), rect);
                Frame const expected =
                    reduced(kernel, part, {16, 8}, static_cast<ScalerPrecision>(precision));
                TestFrame got(FRAME_NV12, {16, 8}, Placement{3});
                ox_rect const region{rect.x, rect.y, rect.width, rect.height};
                expectTaken(
                    ox_reduce(src.get(), &region, handleOn(got.frame()).get(), &filter, precision));
                EXPECT_TRUE(samePixels(got.frame(), expected));
                got.expectGapsUntouched();
            }
        }
    }

    Random random;
    TestFrame source{FRAME_NV12, {40, 30}, random};
    CFrame src = handleOn(source.frame());
    TestFrame target{FRAME_NV12, {16, 8}};
    CFrame dst = handleOn(target.frame());
};

TEST_F(CFilter, HasTheNamedOnes) {
    BoxKernel box;
    expectSame(named(OX_FILTER_BOX), box);
    TriangleKernel triangle;
    expectSame(named(OX_FILTER_TRIANGLE), triangle);
    MitchellNetravaliKernel mitchell_netravali;
    expectSame(named(OX_FILTER_MITCHELL_NETRAVALI), mitchell_netravali);
    CatmullRomKernel catmull_rom;
    expectSame(named(OX_FILTER_CATMULL_ROM), catmull_rom);
    Lanczos3Kernel lanczos;
    expectSame(named(OX_FILTER_LANCZOS3), lanczos);
}

TEST_F(CFilter, AsksCallbacks) {
    float radius = 1.25F;
    Parabola kernel(radius);
    expectSame({OX_FILTER_CALLBACK, parabola, widthOfParabola, &radius}, kernel);
}

TEST_F(CFilter, ReportsWhatACallbackThrows) {
    ox_filter filter{OX_FILTER_CALLBACK, parabola, widthOfParabola, nullptr};
    filter.aperture = [](void*, float) -> float { throw std::runtime_error("no width"); };
    expectRefused(ox_reduce(src.get(), nullptr, dst.get(), &filter, OX_PRECISION_16),
                  OX_STATUS_FOREIGN_EXCEPTION, "no width");
    filter.aperture = [](void*, float) -> float { throw 7; };
    expectRefused(ox_reduce(src.get(), nullptr, dst.get(), &filter, OX_PRECISION_16),
                  OX_STATUS_FOREIGN_EXCEPTION, "Unknown exception.");
    // A text longer than what a thread keeps.
    filter.aperture = [](void*, float) -> float {
        throw std::runtime_error(std::string(3000, 'x'));
    };
    expectRefused(ox_reduce(src.get(), nullptr, dst.get(), &filter, OX_PRECISION_16),
                  OX_STATUS_FOREIGN_EXCEPTION, std::string(1023, 'x').c_str());
}

TEST_F(CFilter, RefusesWhatItCantDo) {
    ox_filter const box = named(OX_FILTER_BOX);
    TestFrame const other(FRAME_NV21, {16, 8});
    TestFrame const larger(FRAME_NV12, {42, 30});
    auto const reduce = [&](Frame const& frame, ox_filter const& filter, std::int32_t precision) {
        return ox_reduce(src.get(), nullptr, handleOn(frame).get(), &filter, precision);
    };
    expectRefused(reduce(other.frame(), box, OX_PRECISION_16), OX_STATUS_INVALID_PARAMETER,
                  "The frames are FRAME_NV12 and FRAME_NV21.");
    expectRefused(reduce(target.frame(), named(6), OX_PRECISION_16), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'filter->kind' is invalid 6.");
    EXPECT_EQ(reduce(target.frame(), box, 12), OX_STATUS_INVALID_PARAMETER);
    EXPECT_EQ(reduce(larger.frame(), box, OX_PRECISION_16), OX_STATUS_OUT_OF_RANGE);
    ox_rect const outside{30, 0, 20, 8};
    EXPECT_EQ(ox_reduce(src.get(), &outside, dst.get(), &box, OX_PRECISION_16),
              OX_STATUS_OUT_OF_RANGE);
}

TEST_F(CFilter, RefusesNull) {
    ox_filter const box = named(OX_FILTER_BOX);
    ox_filter callback = named(OX_FILTER_CALLBACK);
    auto const refused = [](ox_status status, char const* name) {
        expectRefused(status, OX_STATUS_NULL_POINTER,
                      ("Parameter '" + std::string(name) + "' is null.").c_str());
    };
    refused(ox_reduce(nullptr, nullptr, dst.get(), &box, OX_PRECISION_16), "src");
    refused(ox_reduce(src.get(), nullptr, nullptr, &box, OX_PRECISION_16), "dst");
    refused(ox_reduce(src.get(), nullptr, dst.get(), nullptr, OX_PRECISION_16), "filter");
    refused(ox_reduce(src.get(), nullptr, dst.get(), &callback, OX_PRECISION_16), "filter->value");
    callback.value = parabola;
    refused(ox_reduce(src.get(), nullptr, dst.get(), &callback, OX_PRECISION_16),
            "filter->aperture");
}

TEST_F(CFilter, FailedAllocationsAreReported) {
    ox_filter const filter = named(OX_FILTER_LANCZOS3);
    std::int64_t const live = liveAllocations();
    bool struck = true;
    for (std::uint64_t k = 1; struck; ++k) {
        ox_status status = OX_STATUS_OK;
        {
            FailingAllocations const failing(k);
            status = ox_reduce(src.get(), nullptr, dst.get(), &filter, OX_PRECISION_16);
            struck = failing.struck();
        }
        EXPECT_EQ(status, struck ? OX_STATUS_CAPACITY_EXCEEDED : OX_STATUS_OK) << k;
        EXPECT_EQ(liveAllocations(), live) << "allocation " << k;
    }
}

}  // namespace

}  // namespace ox::test::c_filter
