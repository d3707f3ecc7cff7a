/// @file
/// What the reusable classes share: states and tables on the heap, windows that are armed.

#pragma once

#include <memory>
#include <new>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_row_window.h"

namespace ox::impl {

[[noreturn]] inline void throwMemoryExhausted(char const* function, char const* file) {
    throw Exception(nullptr, StatusCapacityExceeded, function, file, __LINE__,
                    "Memory is exhausted.");
}

/// A new private state.
template <class State>
std::unique_ptr<State> makeState(char const* file) {
    std::unique_ptr<State> state(new (std::nothrow) State());
    if (!state) {
        throwMemoryExhausted("State", file);
    }
    return state;
}

template <class Entry>
void resizeTable(std::vector<Entry>& table, std::int64_t count, char const* file) {
    try {
        table.resize(static_cast<std::size_t>(count));
    } catch (std::bad_alloc const&) {
        throwMemoryExhausted("reuse", file);
    }
}

/// Runs the part of a `reuse` that rebuilds tables; if it fails, the window is emptied, so that
/// nothing can be produced through tables that are half done.
template <class Prepare>
void prepareTables(RowWindow& window, Prepare prepare) {
    try {
        prepare();
    } catch (...) {
        window.clear();
        throw;
    }
}

/// Raises the window's own assertion for an object that isn't armed; reads nothing of one that is.
inline void checkArmed(RowWindow& window) {
    if (!window.initialized()) {
        window.rowData(0);
    }
}

/// Arms a window; after a failure it is empty, so that no stale row can be read, and the failure
/// goes on under the owner's name.
template <class Source>
void armWindow(RowWindow& window, Source& source, int window_size, char const* file) {
    try {
        window.reuse(source, window_size);
    } catch (Exception const& cause) {
        window.clear();
        throw Exception(&cause, cause.status, "reuse", file, __LINE__, "%s", cause.what());
    } catch (...) {  // a source of the caller's own may throw anything
        window.clear();
        throw;
    }
}

}  // namespace ox::impl
