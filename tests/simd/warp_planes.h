// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Warps of planes whose gaps and surroundings are watched.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>

#include "model/warp.h"
#include "simd/guarded_plane.h"
#include "simd/processor_figures.h"
#include "simd/warps/warp_affine.h"

namespace ox::test {

// Pixels in memory.
class PlacedPixels {
  public:
    explicit PlacedPixels(model::Pixels const& pixels, PlanePlacement placement = {})
        : _width(static_cast<std::size_t>(pixels.width)),
          _plane({pixels.rowBytes(), static_cast<std::size_t>(pixels.height)}, placement) {
        for (std::size_t y = 0; y < height(); ++y) {
            std::copy_n(pixels.bytes.data() + y * pixels.rowBytes(), pixels.rowBytes(),
                        _plane.row(y));
        }
    }

    std::size_t width() const { return _width; }
    std::size_t height() const { return _plane.size().rows; }
    std::size_t stride() const { return _plane.stride(); }
    unsigned char* data() const { return _plane.data(); }

    // Whether all memory is as if it had been made of these pixels.
    testing::AssertionResult hold(model::Pixels const& expected) const {
        for (std::size_t y = 0; y < height(); ++y) {
            unsigned char const* const row = expected.bytes.data() + y * expected.rowBytes();
            unsigned char const* const end = row + expected.rowBytes();
            auto const [wanted, got] = std::mismatch(row, end, _plane.row(y));
            if (wanted != end) {
                return testing::AssertionFailure()
                       << "row " << y << ", byte " << wanted - row << " is " << int{*got}
                       << " and not " << int{*wanted};
            }
        }
        return untouchedAround();
    }

    testing::AssertionResult untouchedAround() const {
        return _plane.surroundingsUntouched() ? testing::AssertionSuccess()
                                              : testing::AssertionFailure() << "wrote beside rows";
    }

    model::Pixels pixels(int channels) const {
        model::Pixels result =
            model::makePixels(static_cast<int>(_width), static_cast<int>(height()), channels, 0);
        for (std::size_t y = 0; y < height(); ++y) {
            std::copy_n(_plane.row(y), result.rowBytes(),
                        result.bytes.data() + y * result.rowBytes());
        }
        return result;
    }

  private:
    std::size_t _width;
    GuardedPlane _plane;
};

using WarpHandle = std::unique_ptr<Simd::WarpAffine>;

inline WarpHandle createWarp(model::Warp const& warp, PlacedPixels const& src,
                             PlacedPixels const& dst, int channels) {
    return WarpHandle(Simd::Base::CreateWarpAffine(
        src.width(), src.height(), src.stride(), dst.width(), dst.height(), dst.stride(),
        static_cast<std::uint64_t>(channels), warp.matrix.data(), warp.flags,
        warp.border ? warp.border->data() : nullptr));
}

// Takes the hardware for one of that many threads, and wishes for as many, while it lives.
class ParallelThreads {
  public:
    explicit ParallelThreads(std::size_t hardware, std::size_t wish) {
        Simd::UseHardwareThreads(hardware);
        Simd::SetParallelThreads(wish);
    }
    ParallelThreads(ParallelThreads const&) = delete;
    ParallelThreads& operator=(ParallelThreads const&) = delete;
    ~ParallelThreads() {
        Simd::UseHardwareThreads(0);
        Simd::SetParallelThreads(1);
    }
};

}  // namespace ox::test
