// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The library's own calls, which the tool's bytes are compared with.
#pragma once

#include <string>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"

namespace oxcv::test {

// The choices of --backend.
constexpr char const* backends[]{"base", "simd"};

ox::Rect whole(ox::Frame const& frame);

// Pairs that the vector backend converts in an order that isn't the float formats' own.
bool takesFloatsForRedFirst(ox::FrameFormat src, ox::FrameFormat dst);

// Frames through a backend by name. With "simd" the pipeline does what the vector backend refuses.
class Library {
  public:
    explicit Library(std::string const& backend) : _vectors(backend == "simd") {}

    // In one call.
    ox::Frame inFormat(ox::Frame const& frame, ox::FrameFormat format);
    // Directly, or through BGR24, as red-first formats and floats.
    ox::Frame inFormatByAnyWay(ox::Frame const& frame, ox::FrameFormat format);
    ox::Frame scaled(ox::Frame const& frame, ox::Size size, ox::ResizeMethod method);
    // To a frame of the same size. The pipeline has none.
    ox::Frame warped(ox::Frame const& frame, float const (*matrix)[3], ox::ResizeMethod method,
                     bool invert);
    void multiply(ox::Frame& frame, float factor);
    void add(ox::Frame& frame, float summand);

  private:
    ox::ICvBackend& first();
    template <class Call>
    ox::Frame inTurn(Call call);

    bool _vectors;
    ox::CvBackendSimd _vector;
    ox::CvBackendBase _pipeline;
};

}  // namespace oxcv::test
