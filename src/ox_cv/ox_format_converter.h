// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Changes a stream's pixel format.

#pragma once

#include <memory>

#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_row_window.h"

namespace ox {

class ImplFormatConverter;

/// Yields a source's rows in another format, with the same size; with equal formats the rows pass
/// unchanged.
class OX_API FormatConverter : public IRowProducer {
  public:
    FormatConverter();
    FormatConverter(FormatConverter const&) = delete;
    FormatConverter& operator=(FormatConverter const&) = delete;
    ~FormatConverter() override;

    /// Arms the converter on a source that must outlive the stream. The address of the `Frame`
    /// object is kept, so not only the pixels must live on: put a temporary, such as `getRegion`
    /// returns, into a variable.
    ///
    /// The pairs (`FRAME_` left out): `GRAY8`, `RGB24`, `BGR_PLANAR` and `BGR_32F` to `BGR24`;
    /// `RGB_PLANAR` to `RGB24`; `BGR24` to `GRAY8`, `RGB24`, `BGR_PLANAR`, `BGR_32F` and
    /// `BGR_32F_PLANAR`; `GRAY8` and `BGR24` to every YUV format, from `I420` to `YUV444_PLANAR`;
    /// each of these to each other one, to `GRAY8` and to `BGR24`; every format to itself.
    ///
    /// There is no way from a YUV format to `FRAME_RGB24`, `FRAME_RGB_PLANAR`, `FRAME_BGR_PLANAR`,
    /// `FRAME_BGR_32F` and `FRAME_BGR_32F_PLANAR`. For these pairs a new object says "Parameter
    /// 'window_size' is out of range.", which means that the pair doesn't exist. An object that has
    /// converted to a YUV format before takes them, on purpose, but its rows are no picture. Go
    /// through `FRAME_BGR24`, by a second converter.
    /// @throws Exception `StatusInvalidParameter` for a source that isn't initialized and
    ///         `StatusUnsupportedFormat` for `FRAME_FORMAT_NONE`, which leave the converter as it
    ///         was, as does `StatusAssertionFailed` for a producer of equal format without rows or
    ///         columns; `StatusUnsupportedFormat` and `StatusNotSupported` for a pair that doesn't
    ///         exist; `StatusOutOfRange` for the pairs above, and for 4:2:0 destinations of one
    ///         row; what else `RowWindow::reuse` throws. After these the converter writes nothing
    ///         until a `reuse` succeeds; `initialized` and `layout` may still tell of an earlier
    ///         one
    void reuse(Frame const& frame, FrameFormat dst_format);
    void reuse(IRowProducer& producer, FrameFormat dst_format);

    bool initialized() const { return _copier.initialized() || _initialized; }

    /// As newly made, but with storage kept: a `reuse` as the last one allocates nothing. It comes
    /// before each further `reuse` over a producer, whose picture is wrong otherwise; see
    /// `IRowProducer`.
    void renew();

    FrameLayout const& layout() override;
    /// Writes nothing behind the last row.
    /// @throws Exception `StatusNotInitialized` before the first `reuse`
    void produce(RowData& row) override;
    /// Writes all rows into a frame of the layout's format and size, as `produceFrame` does but in
    /// one step, if the source is a frame of another format.
    /// @param dst must have no byte in common with the source
    /// @return false if that can't be done; nothing is done then
    bool produceAtOnce(Frame& dst);
    /// True on the step past the last row too, and false from the call after that on, on purpose.
    bool next() override;

  private:
    template <class Source>
    void _arm(Source& source, FrameFormat dst_format);
    void _yieldNothing(FrameLayout const& src_layout);

    bool _initialized = false;                 ///< a conversion has been armed
    FrameLayout const* _src_layout = nullptr;  ///< of `_window`; null before the first `reuse`
    FrameLayout _dst_layout;
    std::int32_t _row = 0;  ///< current row
    RowWindow _window;
    RowData const* _window_rows[2]{};  ///< what a conversion function gets
    RowCopier _copier;                 ///< the way for equal formats
    std::unique_ptr<ImplFormatConverter> _context;
    Frame const* _frame = nullptr;  ///< the conversion's source, if that is a frame
};

}  // namespace ox
