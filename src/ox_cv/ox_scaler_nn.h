// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Nearest neighbour scaling.

#pragma once

#include <memory>

#include "ox_cv/ox_row_producer.h"

namespace ox {

/// Scales a frame, or another producer's rows, by copying the nearest source element.
///
/// `FRAME_YUYV` and `FRAME_UYVY` are gathered as 3-byte and 4-byte elements, which mixes luma and
/// chroma; see `Scaler`. A format that isn't scalable passes while the width stays, and is refused
/// by `produce` otherwise.
class OX_API ScalerNearestNeighbor : public IRowProducer {
  public:
    ScalerNearestNeighbor();
    ScalerNearestNeighbor(ScalerNearestNeighbor const&) = delete;
    ScalerNearestNeighbor& operator=(ScalerNearestNeighbor const&) = delete;
    ~ScalerNearestNeighbor() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// Arms the scaler on a source that must outlive it. Tables are kept while the sizes stay.
    /// @throws Exception `StatusAssertionFailed` for a source that isn't initialized or an empty
    ///         size, which leave the scaler as it was, and for sides of 32768 and more, but not for
    ///         all of them: some, as 65536, pass and give wrong pixels; what `RowWindow::reuse`
    ///         throws. After the other failures the scaler isn't armed, and `produce` throws
    ///         `StatusAssertionFailed`
    void reuse(Frame const& src_frame, Size dst_size);
    void reuse(IRowProducer& src_producer, Size dst_size);

    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't scalable
    void produce(RowData& dst) override;
    /// False at the last row, which `produce` then yields again.
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

}  // namespace ox
