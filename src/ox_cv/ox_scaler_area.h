// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Area scaling: each source sample weighs by the part of it that falls into the destination cell.
/// Every step truncates. Luma and chroma of `FRAME_YUYV` and `FRAME_UYVY` are mixed; see `Scaler`.

#pragma once

#include <cstdint>
#include <memory>

#include "ox_cv/ox_row_producer.h"

namespace ox {

/// Bits of a fixed-point weight, sign included.
enum ScalerPrecision : std::uint32_t {
    OX_SCALER_FIXED_POINT_8S = 8,
    OX_SCALER_FIXED_POINT_16S = 16,
};

/// Changes the width; up-scaling blends two samples.
///
/// `FRAME_C1_32U` is written and then refused by `produce`, in all three classes, on purpose: it
/// only passes where rows are copied.
///
/// How far a width may shrink: the weight of a source sample is 2^15 / ratio with precision 16 and
/// 2^7 / ratio with precision 8, cut off to a whole number. So ratios above 32768, or 128, give
/// black, and high ratios darken the picture: white becomes 249 at a ratio of 1000 with precision
/// 16, and 129 at a ratio of 65 with precision 8. Source and destination may have up to 65535
/// columns; with more, tables wrap and pixels are wrong. None of this is refused.
class OX_API ScalerAreaX : public IRowProducer {
  public:
    ScalerAreaX();
    ScalerAreaX(ScalerAreaX const&) = delete;
    ScalerAreaX& operator=(ScalerAreaX const&) = delete;
    ~ScalerAreaX() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// Arms the scaler on a source that must outlive it. While the widths stay, the weights are
    /// kept as they are, on purpose also under another precision, unless `renew` came before.
    /// @throws Exception `StatusAssertionFailed` for a source that isn't initialized, a width that
    ///         isn't positive, or a precision other than 8 and 16, all of which leave the scaler as
    ///         it was; `StatusInvalidParameter` for a region without columns; what
    ///         `RowWindow::reuse` throws. After the last two the scaler isn't armed, and `produce`
    ///         throws `StatusAssertionFailed`
    void reuse(Frame const& src_frame, int dst_width, ScalerPrecision precision);
    void reuse(IRowProducer& src_producer, int dst_width, ScalerPrecision precision);

    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't scalable, unless the width
    ///         stays
    void produce(RowData& dst) override;
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

/// Changes the height; up-scaling blends two rows.
///
/// `FRAME_UYVY`, `FRAME_C2_8U` and `FRAME_C4_8U` are treated as one channel, on purpose: only the
/// first `width` bytes of a row are written. Heights shrink as far as widths do in `ScalerAreaX`.
/// Of heights above 65535 some are refused, by "Parameter 'window_size' is out of range.", and the
/// others give wrong rows.
class OX_API ScalerAreaY : public IRowProducer {
  public:
    ScalerAreaY();
    ScalerAreaY(ScalerAreaY const&) = delete;
    ScalerAreaY& operator=(ScalerAreaY const&) = delete;
    ~ScalerAreaY() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// As `ScalerAreaX::reuse`, with heights.
    void reuse(Frame const& src_frame, int dst_height, ScalerPrecision precision);
    void reuse(IRowProducer& src_producer, int dst_height, ScalerPrecision precision);

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

/// Scales a frame down in both axes in one pass, in 16.16 fixed point.
///
/// A fourth channel gets the value of the third, on purpose. After a 4:2:0 frame, frames of other
/// formats and the same sizes are stepped through as if they were 4:2:0, on purpose: use another
/// object for them.
class OX_API scaleAreaXY : public IRowProducer {
  public:
    scaleAreaXY();
    scaleAreaXY(scaleAreaXY const&) = delete;
    scaleAreaXY& operator=(scaleAreaXY const&) = delete;
    ~scaleAreaXY() override;

    /// True once a `reuse` has armed the scaler.
    bool initialized() const;

    /// As newly made, but with storage kept: a `reuse` as the last one allocates nothing.
    void renew();

    /// Arms the scaler on a frame that must outlive it.
    /// @param precision checked, without further effect
    /// @throws Exception `StatusAssertionFailed` as `ScalerAreaX`, `StatusNotSupported` for a
    ///         destination wider or taller than the source, and `StatusOutOfRange` for sides above
    ///         32767, all of which leave the scaler as it was; `StatusOutOfRange` for a frame with
    ///         fewer rows than the window, which are those that a destination row touches, and
    ///         thrice that for 4:2:0 (so these need destinations of three rows and more), and
    ///         `StatusCapacityExceeded`, which leave it without a source
    void reuse(Frame const& src_frame, Size dst_size, ScalerPrecision precision);

    FrameLayout const& layout() override;
    /// @throws Exception `StatusNotSupported` for a format that isn't scalable;
    ///         `StatusAssertionFailed` where chroma rows leave the window (4:2:0 of odd sizes)
    void produce(RowData& dst) override;
    /// False at the last row, which `produce` then yields again.
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

}  // namespace ox
