// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Scaling down by any filter.

#pragma once

#include <memory>

#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_scale_kernel.h"
#include "ox_cv/ox_scaler_area.h"

namespace ox {

/// Resamples rows, then columns, each pass with the filter's weights in 8 or 16 bits. Every sum is
/// truncated.
///
/// Takes `FRAME_GRAY8`, `FRAME_BGR24`, the YUV formats but the packed 4:2:2 ones, and the formats
/// of bytes without colour; per plane and axis up to 8192 source samples, reduced by 1 to 32; and
/// at least as many rows as the filter has taps. The first `produce` refuses all other formats.
///
/// An object that goes on to another frame keeps its weights while the filter's address, the format
/// and the sizes that the weights depend on stay. Three oddities come with that, on purpose: the
/// second pass over a frame loses the first step down; a new width alone leaves `layout` as it was;
/// so does a source of another width. `renew` before each further `reuse` avoids all three. It also
/// keeps out rows of the picture before, if the source is a producer.
class OX_API ScalerConvolutional : public IRowProducer {
  public:
    ScalerConvolutional();
    ScalerConvolutional(ScalerConvolutional const&) = delete;
    ScalerConvolutional& operator=(ScalerConvolutional const&) = delete;
    ~ScalerConvolutional() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage kept: a `reuse` as the last one allocates nothing. The
    /// filter is asked again then.
    void renew();

    /// Arms the scaler on a source that must outlive it. The filter is asked during the call only,
    /// plane by plane for the widths and then for the heights. Later calls compare its address.
    /// @throws Exception, with the text of the class that found it out:
    ///         - `StatusInputNotInitialized` for a source without planes or an empty size, which
    ///           leave the scaler as it was;
    ///         - `StatusInvalidParameter` for a precision other than 8 and 16, or for a producer
    ///           that has other planes than its format;
    ///         - `StatusOutOfRange` if a side of a plane grows, shrinks by more than 32 or has more
    ///           than 8192 samples; if the source has fewer rows than the filter has taps; for an
    ///           aperture of -1 and less;
    ///         - `StatusCapacityExceeded` for more taps than 64 (precision 8) or 16384, an aperture
    ///           that is NaN, or exhausted memory;
    ///         - `StatusNullPointer` for a filter whose weights sum to less than 0.001, negative
    ///           sums included;
    ///         - `StatusAssertionFailed`, "buffer has already filled", for a filter whose rounded
    ///           positions need more rows of weights than there are, which is rare;
    ///         - what the filter or the source throws, as it is.
    ///
    ///         After all but the first, nothing may be asked of the scaler until a `reuse`
    ///         succeeds: parts of an earlier one may still be armed
    void reuse(IKernel& kernel, Frame const& src_frame, Size dst_size, ScalerPrecision precision);
    void reuse(IKernel& kernel, IRowProducer& src_producer, Size dst_size,
               ScalerPrecision precision);

    /// @throws Exception `StatusNotInitialized` before a `reuse`, as the other two
    FrameLayout const& layout() override;
    /// Behind the last row it writes that row again.
    /// @throws Exception `StatusNotSupported` for a format that isn't taken; what the source throws
    void produce(RowData& dst) override;
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

}  // namespace ox
