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

/// What a backend offers, with the pipeline's help if it is the vector backend.
struct Offer {
    bool vectors = false;  ///< the vector backend comes first
    Converts converts = nullptr;
    Scales scales = nullptr;
    bool warps = false;
};

/// @param name one of `backendNames`
Offer const& offerOf(std::string const& name);

/// The backend asked for and, for steps that it doesn't do, the pipeline. Which of the two does a
/// step is settled before it is begun; `step` is what people know it by.
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

    /// Remarks that a step is the pipeline's in any case, unless that was asked for.
    void leaveToPipeline(std::string const& step, std::string_view reason);

  private:
    ox::ICvBackend& choose(std::string const& step, std::string_view refusal);

    Offer const& _offer;
    Notes& _notes;
    VectorBackend _vector;
    ox::CvBackendBase _pipeline;
};

}  // namespace oxcv
