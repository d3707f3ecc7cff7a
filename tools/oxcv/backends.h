// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The library's backends by name, and which of them does a step.

#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "notes.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "routes.h"
#include "vector_backend.h"

namespace oxcv {

/// The choices of `--backend`; the first one is the default.
std::vector<std::string> backendNames();

/// What a choice of `--backend` offers. The vector backend has the pipeline's help.
struct Offer {
    bool vectors = false;  ///< the vector backend comes first
    Converts converts = nullptr;
    Scales scales = nullptr;
    bool warps = false;
};

/// @param name one of `backendNames`
Offer const& offerOf(std::string const& name);

/// The backend asked for and, for steps that it doesn't do, the pipeline. The choice between the
/// two is made before a step begins. `step` is the name of a step for messages.
class Backend {
  public:
    /// @param name one of `backendNames`
    /// @param notes receives a remark on each step that the pipeline does instead
    Backend(std::string const& name, Notes& notes);

    Offer const& offer() const { return _offer; }

    void setMethods(ox::ResizeMethod of_scaling, ox::ResizeMethod of_warps);

    ox::ICvBackend& forConversion(std::string const& step, ox::FrameFormat src, ox::FrameFormat dst,
                                  ox::Size size);
    /// @throws Failure if neither backend does it
    ox::ICvBackend& forScaling(std::string const& step, ox::FrameFormat format,
                               ox::ResizeMethod method);
    /// @throws Failure if the frames can't be warped
    ox::ICvBackend& forWarp(std::string const& step, ox::FrameLayout const& layout);
    ox::ICvBackend& forArithmetic();

    /// Notes that the pipeline does a step in any case, unless the pipeline was asked for.
    void leaveToPipeline(std::string const& step, std::string_view reason);

  private:
    ox::ICvBackend& choose(std::string const& step, std::string_view refusal);

    Offer const& _offer;
    Notes& _notes;
    VectorBackend _vector;
    ox::CvBackendBase _pipeline;
};

}  // namespace oxcv
