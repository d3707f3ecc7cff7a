// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The horizontal pass of convolutional scaling.

#pragma once

#include "ox_cv/ox_impl_scale_data.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_row_window.h"
#include "rows/taps/columns.h"

namespace ox::impl {

/// Resamples each row of its source to a new width; rows pass one for one.
///
/// Takes `FRAME_GRAY8`, `FRAME_BGR24`, the YUV formats but the packed 4:2:2 ones, and the formats
/// without colour, of 16 and 32 bits too; `produce` refuses all others.
/// @tparam Weight `signed char` or `short`
template <class Weight>
class ScaleX : public IRowProducer {
  public:
    ScaleX();
    ScaleX(ScaleX const&) = delete;
    ScaleX& operator=(ScaleX const&) = delete;
    ~ScaleX() override;

    /// Keeps weights and layout while the filter's address, the format and `dst_width` stay, on
    /// purpose also for a source of another size.
    /// @throws Exception after which the pass isn't armed, and the next `reuse` computes anew
    void reuse(IKernel& kernel, Frame const& src_frame, int dst_width);
    void reuse(IKernel& kernel, IRowProducer& src_producer, int dst_width);

    /// As newly made, with storage kept. The next `reuse` asks the filter again.
    void renew();

    FrameLayout const& layout() override;
    /// Reads no source row if all entries of `dst` are null.
    void produce(RowData& dst) override;
    bool next() override;

  private:
    template <class Source>
    void arm(IKernel& kernel, Source& source, int dst_width);
    void _prepare(IKernel& kernel, FrameLayout const& src_layout, int dst_width);
    bool _reuseScaleData(IKernel& kernel, FrameLayout const& src_layout, int dst_width);

    IKernel const* _kernel = nullptr;  ///< known by its address only
    FrameFormat _format = FRAME_FORMAT_NONE;
    FrameLayout _dst_layout;
    RowWindow _window;
    ScaleData<Weight> _scale_data[4];  ///< one per plane
    ScaledPlanes<rows::TapColumns> _planes;
};

extern template class ScaleX<signed char>;
extern template class ScaleX<short>;

}  // namespace ox::impl
