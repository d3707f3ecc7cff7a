// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Scaling of packed 4:2:2 pictures by their packing.

#pragma once

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_backend.h"
#include "ox_cv/ox_format_converter.h"

namespace ox {

/// Scales `FRAME_YUYV` and `FRAME_UYVY`, whose luma and chroma the scalers mix: `CvBackendSimd`
/// takes pairs of bytes for pixels, the pipeline's scalers three bytes or four. In `FRAME_NV16` the
/// same samples lie in planes of their own.
///
/// Keeps its two `FRAME_NV16` frames and its converter, so that a stream of pictures of one size
/// allocates nothing after the first. Serves one thread at a time.
class OX_API Packed422Resizer {
  public:
    Packed422Resizer() = default;
    Packed422Resizer(Packed422Resizer const&) = delete;
    Packed422Resizer& operator=(Packed422Resizer const&) = delete;
    ~Packed422Resizer() = default;

    /// The same as these, each with new objects:
    ///
    ///     FormatConverter: src to a FRAME_NV16 frame of its size
    ///     backend.resize(that, a FRAME_NV16 frame of dst's size, emptyRoi(), emptyRoi())
    ///     FormatConverter: that to dst
    ///
    /// So the method is `backend`'s, and the conversions only copy samples. If `dst` has an odd
    /// width, the second Y byte of each row's last pair belongs to no pixel and stays as it was.
    /// Strides may be any; `dst` may be another handle on `src`'s pixels.
    /// @param backend its `PropertyResizeMethod` counts; its scratch frames aren't used
    /// @param dst allocated by the caller, as for `ICvBackend::resize`
    /// @throws Exception `StatusInvalidParameter` for a frame that isn't initialized, has no pixels
    ///         or isn't on the CPU; `StatusUnsupportedFormat` unless both frames are `FRAME_YUYV`,
    ///         or both `FRAME_UYVY`; what `Frame::reuse` and the backend's `resize` throw. `dst` is
    ///         untouched then.
    void resize(ICvBackend& backend, Frame const& src, Frame& dst);

  private:
    void _convert(Frame const& src, Frame& dst);

    Frame _source;  ///< `src` as `FRAME_NV16`; `_scaled` is `dst` as such
    Frame _scaled;
    FormatConverter _converter;
};

}  // namespace ox
