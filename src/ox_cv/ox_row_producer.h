// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Row streaming: the row that passes between the links of a chain, the interface of a link, and
/// the pump that drains a chain into a frame.

#pragma once

#include <type_traits>

#include "ox_core/ox_api.h"
#include "ox_core/ox_frame.h"
#include "ox_core/ox_frame_layout.h"

namespace ox {

/// One row of all planes; owns nothing.
///
/// As a destination, a null entry means that this plane gets no row on this step (chroma on odd
/// rows of 4:2:0 frames). As a source, entries of subsampled planes repeat.
struct RowData {
    unsigned char* plane[4]{};  ///< null at first

    unsigned char*& operator[](int index) { return plane[index]; }
    unsigned char* operator[](int index) const { return plane[index]; }
};

static_assert(sizeof(RowData) == 4 * sizeof(unsigned char*) &&
                  std::is_trivially_copyable<RowData>::value,
              "fixed for the binary interface");

/// A link of a chain: yields rows one at a time into its consumer's memory.
///
/// That memory must have no byte in common with the frame that the chain reads. Links that only
/// copy are the exception: they may write a row onto itself. The frame's pixels must outlive the
/// chain; `FormatConverter` needs the `Frame` object as well, so let a variable hold it.
///
/// A consumer calls `produce` and `next` once per row, from row 0 on, `layout().size.height` times;
/// it may call `next` without `produce` to skip a row. A chain serves one thread at a time; it
/// holds its sources by reference, so they must outlive it.
///
/// A `reuse` of all links is good for one picture. A chain that is drained again without it repeats
/// the last row, or writes nothing. For another picture each link is armed anew, from the source
/// on. A link over another producer needs `renew` before its `reuse`. Otherwise it goes on counting
/// the rows of the picture before, and yields the new picture shifted, or with rows of the old one,
/// without an error. To renew every link is always right, and cheap.
///
///     scaler.renew();  // before each picture; before the first one it changes nothing
///     converter.renew();
///     scaler.reuse(frame, size, OX_SCALE_NEAREST);
///     converter.reuse(scaler, FRAME_BGR24);
///     produceFrame(converter, picture);
class OX_API IRowProducer {
  public:
    /// Layout of the rows yielded; the reference stays valid until the next `reuse`, and until then
    /// each call gives the same. A link's `reuse` throws `StatusInvalidParameter` if it doesn't.
    virtual FrameLayout const& layout() = 0;
    /// Writes `rowBytes` bytes of the current row into each plane of `row` that isn't null.
    virtual void produce(RowData& row) = 0;
    /// Moves on to the next row. Consumers count rows by the layout, not by the result.
    virtual bool next() = 0;
    virtual ~IRowProducer();

  protected:
    IRowProducer() = default;
    IRowProducer(IRowProducer const&) = default;
    IRowProducer& operator=(IRowProducer const&) = default;
};

/// Copies the row's bytes of each plane whose destination isn't null. The two rows of a plane may
/// overlap.
OX_API void copyRowData(FrameLayout const& layout, RowData const& src, RowData& dst);

/// Drains `producer` into `frame`. A frame of the producer's format and size is written in place,
/// with its own strides; any other is made anew first, with storage of its own, which is cleared
/// for the formats whose rows `ScalerAreaY` writes in part.
///
/// A chain is drained once: for another picture its links are renewed and armed again, see
/// `IRowProducer`.
/// @param frame has no byte in common with what the chain reads (but see `IRowProducer`). If it has
///        to be made anew, it mustn't be the last handle on the pixels that the chain reads, which
///        would be freed
/// @throws Exception what the producer or `Frame::reuse` throws; rows already written stay
OX_API void produceFrame(IRowProducer& producer, Frame& frame);

}  // namespace ox
