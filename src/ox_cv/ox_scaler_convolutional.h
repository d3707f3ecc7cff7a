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
/// at least as many rows as the filter has taps. All other formats are found out at the first
/// `produce`.
///
/// An object that goes on to another frame keeps its weights while the filter's address, format and
/// the sizes that they depend on stay, and three oddities that are kept on purpose: its second
/// pass over a frame loses the first step down; a new width alone leaves `layout` as it was; so
/// does a source of another width. One object per frame knows none of them.
class OX_API ScalerConvolutional : public IRowProducer {
  public:
    ScalerConvolutional();
    ScalerConvolutional(ScalerConvolutional const&) = delete;
    ScalerConvolutional& operator=(ScalerConvolutional const&) = delete;
    ~ScalerConvolutional() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// Arms the scaler on a source that must outlive it. The filter is asked during the call only,
    /// plane by plane for the widths and then for the heights; of later calls it is known by its
    /// address.
    /// @throws Exception `StatusInputNotInitialized` for a source without planes or an empty size;
    ///         `StatusInvalidParameter` for a precision other than 8 and 16;
    ///         `StatusOutOfRange` for sizes out of the limits; `StatusNullPointer` for a filter
    ///         that is 0; `StatusCapacityExceeded` for one of too many taps
    void reuse(IKernel& kernel, Frame const& src_frame, Size dst_size, ScalerPrecision precision);
    void reuse(IKernel& kernel, IRowProducer& src_producer, Size dst_size,
               ScalerPrecision precision);

    /// @throws Exception `StatusNotInitialized` before a `reuse`, as the other two
    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't taken
    void produce(RowData& dst) override;
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

}  // namespace ox
