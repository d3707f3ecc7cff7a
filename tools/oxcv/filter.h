// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Reductions by a filter of the library's.

#pragma once

#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_scale_kernel.h"
#include "ox_cv/ox_scaler_convolutional.h"

namespace oxcv {

/// The choices of `--kernel`.
std::vector<std::string> kernelNames();

/// @param name one of `kernelNames`, in any case
std::shared_ptr<ox::IKernel> makeKernel(std::string const& name);

/// Scales one frame after another.
class Reduction {
  public:
    /// Scales `frame` into `result`, which has the same format.
    /// @param step its name for messages
    /// @throws Failure if the library refuses, or `result` is larger than `frame`
    void run(std::string const& step, ox::Frame const& frame, ox::Frame& result,
             ox::IKernel& kernel, ox::ScalerPrecision precision);

  private:
    ox::ScalerConvolutional _scaler;
};

}  // namespace oxcv
