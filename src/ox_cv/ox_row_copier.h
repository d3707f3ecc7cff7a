// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The null link of a chain.

#pragma once

#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_row_reader.h"

namespace ox {

/// Yields its source unchanged: copies a frame's rows, or forwards to another producer.
class OX_API RowCopier : public IRowProducer {
  public:
    RowCopier() = default;

    /// Keeps addresses of the frame's pixels, not of `src_frame`.
    /// @throws Exception `StatusAssertionFailed` if the frame isn't initialized; the copier then
    ///         goes on with its former source
    void reuse(Frame const& src_frame);
    /// @throws Exception `StatusAssertionFailed` if the producer's size is empty; the copier then
    ///         goes on with its former source
    void reuse(IRowProducer& src_producer);
    /// Forgets the source.
    void clear();
    /// As newly made, as with the other links; the same as `clear`, since nothing else is kept.
    void renew() { clear(); }
    /// True with a producer, or with a frame that has rows.
    bool initialized() const { return _producer != nullptr || _reader.height != 0; }

    /// The layout that the source had at `reuse`, its strides included.
    FrameLayout const& layout() override { return _layout; }
    /// Writes nothing behind a frame's last row, nor without a source. A row may be copied onto
    /// itself.
    void produce(RowData& row) override;
    bool next() override;
    ~RowCopier() override;

  private:
    FrameLayout _layout;
    RowReader _reader;
    IRowProducer* _producer = nullptr;
};

}  // namespace ox
