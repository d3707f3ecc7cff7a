// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The vertical pass of convolutional scaling.

#pragma once

#include <vector>

#include "ox_cv/ox_impl_scale_data.h"
#include "ox_cv/ox_row_index.h"
#include "ox_cv/ox_row_window.h"

namespace ox::impl {

/// Resamples the columns of its source, whose channels are bytes: each row is a weighted sum of
/// the rows in a window as tall as the tallest filter.
///
/// The window follows the first plane alone, on purpose: the taps of a half-height plane run over
/// rows at luma's pace, so that each of its rows counts for two taps.
/// @tparam Weight `signed char` or `short`
template <class Weight>
class ScaleY : public IRowProducer {
  public:
    ScaleY();
    ScaleY(ScaleY const&) = delete;
    ScaleY& operator=(ScaleY const&) = delete;
    ~ScaleY() override;

    /// Keeps weights and layout while the filter's address, format, height and `dst_height` stay:
    /// on purpose also for a source of another width, of which as many bytes are taken as both
    /// layouts have.
    ///
    /// The window starts at the top, but the source row that `next` moves it from is still that of
    /// the picture before. So a second pass loses its first step down, on purpose.
    /// @throws Exception after which the pass isn't armed, and the next `reuse` computes anew
    void reuse(IKernel& kernel, IRowProducer& src_producer, int dst_height);
    /// True once a `reuse` has armed the pass.
    bool initialized() const { return _window.initialized(); }

    /// As newly made, with storage kept. The next `reuse` asks the filter again, and its window is
    /// as tall as that filter.
    void renew();

    FrameLayout const& layout() override;
    void produce(RowData& dst) override;
    bool next() override;

  private:
    void _reuseScaleData(IKernel& kernel, FrameLayout const& src_layout, int dst_height);
    int tallestKernel() const;
    void producePlane(int plane, unsigned char* dst);
    ScaleSource sourceOf(int plane) const;

    RowIndex _row_index;
    std::int32_t _src_row = 0;         ///< first source row of the current row's taps
    IKernel const* _kernel = nullptr;  ///< known by its address only
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    ScaleData<Weight> _scale_data[4];         ///< one per plane
    std::vector<unsigned char const*> _rows;  ///< a plane's rows in the window
    std::vector<std::int16_t> _weights;       ///< and theirs
};

extern template class ScaleY<signed char>;
extern template class ScaleY<short>;

}  // namespace ox::impl
