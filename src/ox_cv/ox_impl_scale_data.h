// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The taps by which one axis of one plane is resampled.

#pragma once

#include <cstdint>
#include <vector>

#include "ox_core/ox_buffer.h"
#include "ox_cv/ox_impl_scale_kernel_builder.h"
#include "ox_cv/ox_scale_kernel.h"

namespace ox::impl {

/// Where a destination sample comes from.
struct ScaleSource {
    std::uint16_t src_start;     ///< source index of the first tap
    std::uint16_t kernel_index;  ///< row of weights
};

/// Turns a filter into one entry per destination index. A new object is empty.
/// @tparam Weight `signed char` or `short`
template <class Weight>
class ScaleData {
  public:
    /// The longest axis, and the largest reduction.
    static constexpr int mostSamples = 8192;
    static constexpr int mostReduction = 32;

    /// Computes everything anew. The filter is told the scale of this axis.
    /// @throws Exception after which the object is empty, but for `aperture()`: `StatusOutOfRange`
    ///         for a source of more than 8192 samples, a destination that is larger, or a reduction
    ///         by more than 32; what the filter's weights fail with
    void reuse(IKernel& kernel, int src_size, int dst_size);
    /// Empties the object. `aperture()` stays, on purpose: windows are sized by it until the next
    /// `reuse`.
    void clear();
    /// As newly made, with storage kept.
    void renew();

    /// One per destination index; valid until the next `reuse`, as the rest.
    std::vector<ScaleSource> const& sources() const { return _sources; }
    ScaleKernelBuilder<Weight> const& kernels() const { return _kernels; }
    /// How many taps every tap loop runs: the most that a filter at any position has.
    int aperture() const { return _aperture; }
    int srcSize() const { return _src_size; }
    int dstSize() const { return _dst_size; }

  private:
    void _build(IKernel& kernel, int src_size, int dst_size);

    Buffer _scratch;  ///< weights, border weights, weights before they are normalised
    ScaleKernelBuilder<Weight> _kernels;
    std::vector<ScaleSource> _sources;
    std::int32_t _aperture = 0;
    std::int32_t _src_size = 0;
    std::int32_t _dst_size = 0;
};

extern template class ScaleData<signed char>;
extern template class ScaleData<short>;

}  // namespace ox::impl
