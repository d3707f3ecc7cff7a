// What refusals say, where several tests ask for it.
#pragma once

namespace ox::test {

constexpr char windowSizeOutOfRange[] = "Parameter 'window_size' is out of range.";
constexpr char rowOutsideWindow[] =
    "Assertion failed: 0 <= row_index_in_window && row_index_in_window < _window_size";
constexpr char unsupportedPair[] =
    "Failure in ImplFormatConverter::get_context(...) : unsupported format.";

}  // namespace ox::test
