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

    /// Arms the converter on a source that must outlive the stream.
    /// @throws Exception `StatusInvalidParameter` for a source that isn't initialized,
    ///         `StatusUnsupportedFormat` and `StatusNotSupported` for a pair that doesn't exist,
    ///         `StatusOutOfRange` for a conversion that needs two rows and a source of one
    void reuse(Frame const& frame, FrameFormat dst_format);
    void reuse(IRowProducer& producer, FrameFormat dst_format);

    bool initialized() const { return _copier.initialized() || _initialized; }

    FrameLayout const& layout() override;
    /// Nothing behind the last row.
    /// @throws Exception `StatusNotInitialized` before the first `reuse`
    void produce(RowData& row) override;
    /// Writes all rows into a frame of the layout's format and size, as `produceFrame` does but in
    /// one step, if the source is a frame of another format.
    /// @return false if that can't be done; nothing is done then
    bool produceAtOnce(Frame& dst);
    /// True after the last row as well, and false only on a call after that, on purpose.
    bool next() override;

  private:
    template <class Source>
    void _arm(Source& source, FrameLayout const& src_layout, FrameFormat dst_format);
    void _yieldNothing(FrameLayout const& src_layout);

    bool _initialized = false;                 ///< a conversion has been armed
    FrameLayout const* _src_layout = nullptr;  ///< the source's; null before the first `reuse`
    FrameLayout _dst_layout;
    std::int32_t _row = 0;  ///< current row
    RowWindow _window;
    RowData const* _window_rows[2]{};  ///< what a conversion function gets
    RowCopier _copier;                 ///< the way for equal formats
    std::unique_ptr<ImplFormatConverter> _context;
    Frame const* _frame = nullptr;  ///< the conversion's source, if that is a frame
};

}  // namespace ox
