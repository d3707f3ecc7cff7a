// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Bilinear scaling in one axis or both, up and down, in 16.16 fixed point with truncation. A
/// down-scale reads the two nearest samples of each axis only. Luma and chroma of `FRAME_YUYV` and
/// `FRAME_UYVY` are mixed; see `Scaler`.

#pragma once

#include <memory>

#include "ox_cv/ox_row_producer.h"

namespace ox {

/// Changes the width.
class OX_API ScalerBilinearX : public IRowProducer {
  public:
    ScalerBilinearX();
    ScalerBilinearX(ScalerBilinearX const&) = delete;
    ScalerBilinearX& operator=(ScalerBilinearX const&) = delete;
    ~ScalerBilinearX() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// Arms the scaler on a source that must outlive it. The table is kept while the widths stay.
    /// @throws Exception `StatusAssertionFailed` for a source that isn't initialized or a width
    ///         that isn't positive, which leave the scaler as it was, and for widths of 32768 and
    ///         more, but not for all of them: some pass and give wrong pixels; what
    ///         `RowWindow::reuse` throws. After the other failures the scaler isn't armed, and
    ///         `produce` throws `StatusAssertionFailed`
    void reuse(Frame const& src_frame, int dst_width);
    void reuse(IRowProducer& src_producer, int dst_width);

    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't scalable, unless the width
    ///         stays
    void produce(RowData& dst) override;
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

/// Changes the height.
///
/// In formats with several planes, planes 1 and 2 blend with the row two rows on, which is the next
/// chroma row of a 4:2:0 source. Multi-plane formats without vertical subsampling have no such row
/// in their window: their planes 1 and 2 take the upper row alone. This is kept on purpose.
class OX_API ScalerBilinearY : public IRowProducer {
  public:
    ScalerBilinearY();
    ScalerBilinearY(ScalerBilinearY const&) = delete;
    ScalerBilinearY& operator=(ScalerBilinearY const&) = delete;
    ~ScalerBilinearY() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// Arms the scaler on a source that must outlive it. The table is kept while the heights stay.
    /// @throws Exception as `ScalerBilinearX`; `StatusOutOfRange` for a producer with fewer rows
    ///         than the window (2, or 4 for 4:2:0 destinations of more than one row)
    void reuse(Frame const& src_frame, int dst_height);
    void reuse(IRowProducer& src_producer, int dst_height);

    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't scalable, unless the height
    ///         stays
    void produce(RowData& dst) override;
    /// False at the last row, which `produce` then yields again.
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

/// Changes both in one pass; planes 1 and 2 as in `ScalerBilinearY`.
class OX_API ScalerBilinearXY : public IRowProducer {
  public:
    ScalerBilinearXY();
    ScalerBilinearXY(ScalerBilinearXY const&) = delete;
    ScalerBilinearXY& operator=(ScalerBilinearXY const&) = delete;
    ~ScalerBilinearXY() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// Arms the scaler on a source that must outlive it. The tables are kept while all sides stay.
    /// @throws Exception as `ScalerBilinearY`
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
