// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The facade of the row scalers.

#pragma once

#include <cstdint>
#include <memory>

#include "ox_cv/ox_row_producer.h"

namespace ox {

enum ScaleMethod : std::uint32_t {
    OX_SCALE_NEAREST = 0,   ///< `ScalerNearestNeighbor`
    OX_SCALE_BILINEAR = 1,  ///< `ScalerBilinearX`, `ScalerBilinearY`, `ScalerBilinearXY`
    OX_SCALE_AREA = 2,      ///< `ScalerAreaX` and `ScalerAreaY`, chained where both axes change
};

/// Picks the scaler that fits the method and the axes that change, arms it and forwards to it.
/// Passes rows straight through where the size stays. Kept over many frames of a kind it allocates
/// nothing.
///
/// `FRAME_YUYV` and `FRAME_UYVY` are taken for pixels of three bytes and of four, which mixes luma
/// and chroma: convert them to `FRAME_NV16` first, or scale whole frames by `Packed422Resizer`.
class OX_API Scaler : public IRowProducer {
  public:
    Scaler();
    Scaler(Scaler const&) = delete;
    Scaler& operator=(Scaler const&) = delete;
    ~Scaler() override;

    /// Arms the scaler on a source that must outlive it. With equal sizes the method isn't looked
    /// at.
    /// @throws Exception `StatusAssertionFailed` for a source that isn't initialized or an empty
    ///         size, which leave everything as it was; `StatusInvalidParameter` for an unknown
    ///         method; what the scaler picked throws. After the last two, the scaler that was armed
    ///         before may still answer, for its old source: go on after a `reuse` that succeeds
    void reuse(Frame const& src_frame, Size dst_size, ScaleMethod method);
    void reuse(IRowProducer& src_producer, Size dst_size, ScaleMethod method);

    /// True as long as no scaler has been armed: the sense is opposite to that of the other
    /// classes, on purpose.
    bool initialized() const;

    /// As newly made, but with storage and tables kept: a `reuse` as the last one allocates
    /// nothing. It comes before each further `reuse` over a producer, whose picture is wrong
    /// otherwise; see `IRowProducer`.
    void renew();

    /// These forward to the scaler armed last.
    /// @throws Exception `StatusNotInitialized` before the first `reuse`
    FrameLayout const& layout() override;
    /// Behind the last row it writes that row again. If the size stays, it writes nothing there, or
    /// what the source yields if that is a producer.
    /// @throws Exception `StatusNotSupported` for a format that the scaler picked doesn't take
    void produce(RowData& dst) override;
    /// False at the last row. If the size stays and the source is a producer, the producer's
    /// answer.
    bool next() override;

  private:
    struct OX_LOCAL State;
    std::unique_ptr<State> _state;
};

}  // namespace ox
