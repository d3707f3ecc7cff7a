/// @file
/// What the reusable classes share: states and tables on the heap, windows that are armed.

#pragma once

#include <memory>
#include <new>
#include <vector>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_row_window.h"

namespace ox::impl {

/// A new private state.
template <class State>
std::unique_ptr<State> makeState(Place here) {
    std::unique_ptr<State> state(new (std::nothrow) State());
    if (!state) {
        here.fail({StatusCapacityExceeded, "State"}, "Memory is exhausted.");
    }
    return state;
}

/// Reports exhausted memory as an `Exception`, as all other failures.
template <class Action>
auto withMemory(Place here, Action action) {
    try {
        return action();
    } catch (std::bad_alloc const&) {
        here.fail({StatusCapacityExceeded, "reuse"}, "Memory is exhausted.");
    }
}

template <class Entry>
void resizeTable(std::vector<Entry>& table, std::int64_t count, Place here) {
    withMemory(here, [&] { table.resize(static_cast<std::size_t>(count)); });
}

/// Room for entries that are appended one by one.
template <class Entry>
void reserveTable(std::vector<Entry>& table, std::int64_t count, Place here) {
    withMemory(here, [&] { table.reserve(static_cast<std::size_t>(count)); });
}

/// Runs the part of a `reuse` that rebuilds tables. If that fails, the window is emptied, so that
/// no row is produced with half-built tables.
template <class Prepare>
void prepareTables(RowWindow& window, Prepare prepare) {
    try {
        prepare();
    } catch (...) {
        window.clear();
        throw;
    }
}

/// Raises the window's own assertion for an object that isn't armed, and does nothing otherwise.
inline void checkArmed(RowWindow& window) {
    if (!window.initialized()) {
        window.rowData(0);
    }
}

/// Rethrows a failure of `action` under the name of the calling function.
template <class Action>
void passOnFailure(char const* function, Place here, Action action) {
    try {
        action();
    } catch (Exception const& cause) {
        here.fail({cause, function}, "%s", cause.what());
    }
}

/// Arms a window. After a failure the window is empty, so that no stale row can be read, and the
/// failure is rethrown under the owner's name.
template <class Source>
void armWindow(RowWindow& window, Source& source, int window_size, Place here) {
    try {
        passOnFailure("reuse", here, [&] { window.reuse(source, window_size); });
    } catch (...) {  // a source of the caller's own may throw anything
        window.clear();
        throw;
    }
}

}  // namespace ox::impl
