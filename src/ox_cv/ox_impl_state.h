// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the reusable classes share: states on the heap, windows that are armed; of scalers also the
/// elements of planes, tables of coordinates and weights, and what is planned for each plane.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <new>
#include <vector>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_same_layouts.h"
#include "ox_cv/ox_row_window.h"
#include "rows/area/axis.h"
#include "rows/coordinates.h"
#include "rows/elements.h"

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
/// @param function that is named as the place of the failure
template <class Action>
auto withMemory(Place here, Action action, char const* function = "reuse") {
    try {
        return action();
    } catch (std::bad_alloc const&) {
        here.fail({StatusCapacityExceeded, function}, "Memory is exhausted.");
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

/// A caller's own producer may give another layout each time that it is asked. Tables are then for
/// other rows than the window's: the window is emptied, and the producer refused.
[[gnu::cold]] inline void requirePlanned(RowWindow& window, FrameLayout const& planned,
                                         Place here) {
    if (!sameGeometry(window.layout(), planned)) {
        window.clear();
        here.fail({StatusInvalidParameter, "reuse"},
                  "Row producer's layout has changed while it was read.");
    }
}

/// Formats that a streaming scaler can compute with; the others can only be copied.
constexpr bool isScalable(FrameFormat format) {
    return factsOf(format).plane_count > 0 && format <= FRAME_C1_32U && format != FRAME_RGB24 &&
           format != FRAME_RGB_PLANAR;
}

/// Area scaling also refuses 32-bit samples, after they have been written, on purpose.
constexpr bool isScalableByArea(FrameFormat format) {
    return isScalable(format) && format != FRAME_C1_32U;
}

/// The element of a plane. It has no channels if the plane doesn't exist or the format isn't
/// scalable. `FRAME_YUYV` is treated as 3-channel and `FRAME_UYVY` as 4-channel data, on purpose,
/// whatever their packing is.
constexpr rows::Element scaleElement(FrameFormat format, int plane) {
    FormatFacts const& facts = factsOf(format);
    if (!isScalable(format) || plane >= facts.plane_count) {
        return {};
    }
    PlaneFacts const& plane_facts = facts.planes[static_cast<std::size_t>(plane)];
    if (format == FRAME_YUYV) {
        return {3, 8};
    }
    if (format == FRAME_UYVY) {
        return {4, 8};
    }
    return {plane_facts.channels, plane_facts.bits};
}

/// Bytes of a source row that elements can lie in. Tables hold indices of 16 bits, so elements
/// never reach beyond a limit. The limit is a multiple of every element's size, and keeps offsets
/// in 32 bits however long a row claims to be.
constexpr std::uint64_t reachedBytes(std::uint64_t row_bytes) {
    constexpr std::uint64_t limit = std::uint64_t{12} << 16;
    return std::min(row_bytes, limit);
}

/// Samples of a destination row that elements cover.
inline std::int64_t coveredSamples(FramePlane const& dst, rows::Element element) {
    return std::min(static_cast<std::int64_t>(dst.rowBytes) / (element.bits / 8),
                    dst.width * std::int64_t{element.channels});
}

/// What a scaler's tables were built for. Tables are kept while the sides stay, on purpose also
/// under another precision. After `renew` the precision must be the same too.
/// @tparam Side one side or both
template <class Side>
class TableKey {
  public:
    /// Calls build() unless the tables can be kept. Tables that were built now count as kept only
    /// after `finish`, because a later step of arming may fail.
    /// @param shift of the weights, if the tables have weights
    /// @return whether the tables were kept
    template <class Build>
    bool keep(Side src, Side dst, int shift, Build build) {
        if (_serves && _src == src && _dst == dst && (!_is_new || _shift == shift)) {
            return true;
        }
        _serves = false;
        build();
        _src = src;
        _dst = dst;
        _shift = shift;
        return false;
    }
    void finish() {
        _serves = true;
        _is_new = false;
    }
    void renew() { _is_new = true; }

  private:
    Side _src{};
    Side _dst{};
    int _shift = 0;
    bool _serves = false;
    bool _is_new = true;  ///< whether the object hasn't been armed since it was made or renewed
};

/// @tparam State which derives from it and has prepare(source layout, wanted...)
template <class State>
struct ScalerState {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    std::int32_t _dst_row = 0;  ///< stays 0 where rows follow the window's

    // Defaults, which a state may hide by its own.
    int windowSize(auto const& /*source*/) const { return 1; }
    int firstRow() const { return 0; }  ///< the window's first row, for the destination row

    /// The tables stay.
    void renew() {
        _src_layout.clear();
        _dst_layout.clear();
        _window.renew();
        _dst_row = 0;
    }

    template <class Source, class... Wanted>
    [[gnu::cold]] void arm(Place here, Source& source, Wanted... wanted) {
        prepareTables(_window, [&] { own().prepare(source.layout(), wanted...); });
        armWindow(_window, source, own().windowSize(source), here);
        requirePlanned(_window, _src_layout, here);
        _window.moveTo(own().firstRow());
    }

    /// To be called by `prepare`, after the tables are built.
    void placeLayouts(FrameLayout const& src_layout, Size dst_size) {
        _src_layout = src_layout;
        _dst_layout = FrameLayout(src_layout.format, dst_size, defaultAlignment);
        _dst_row = 0;
    }

    /// Moves on to the next destination row, and the window with it; false at the last row.
    bool nextRow() {
        if (_dst_row >= _dst_layout.size.height - 1) {
            return false;
        }
        ++_dst_row;
        _window.moveTo(own().firstRow());
        return true;
    }

  private:
    State& own() { return static_cast<State&>(*this); }
};

/// The row plan of a plane that is scaled by a table.
/// @param entries of the table: one per column of the frame, or more
/// @param last_element gives the last source element that a destination element reads
template <class LastElement>
rows::RowPlan planRow(FrameLayout const& src_layout, FrameLayout const& dst_layout, int plane,
                      std::size_t entries, LastElement last_element) {
    FramePlane const& src = src_layout.plane[plane];
    rows::Element const element = scaleElement(src_layout.format, plane);
    std::int64_t const channels = element.channels;
    rows::RowPlan plan;
    plan.src_width = src.width;
    plan.src_samples = static_cast<std::int64_t>(reachedBytes(src.rowBytes)) / (element.bits / 8);
    plan.dst_samples = coveredSamples(dst_layout.plane[plane], element);
    plan.entries = static_cast<std::int64_t>(entries);
    std::int64_t const limit =
        std::min({plan.entries, std::int64_t{dst_layout.size.width}, plan.dst_samples / channels});
    while (plan.whole < limit && (last_element(plan.whole) + 1) * channels <= plan.src_samples) {
        ++plan.whole;
    }
    return plan;
}

/// A scaler's objects for the planes of a format, such as `rows::Columns`. They are planned when
/// the scaler is armed, but not again while tables and rows stay.
template <class Plane>
class ScaledPlanes {
  public:
    /// Calls plan(plane, index, element) for each plane, unless nothing has changed.
    /// @param same whether the tables, and all else that plan() reads, have stayed
    /// @throws Exception `StatusCapacityExceeded`
    template <class Plan>
    void plan(Place here, FrameLayout const& src, FrameLayout const& dst, bool same, Plan plan) {
        if (same && sameRows(_src, src) && sameRows(_dst, dst)) {
            return;
        }
        _src.clear();
        for (int i = 0; i < 3; ++i) {
            auto const index = static_cast<std::size_t>(i);
            rows::Element const element = scaleElement(src.format, i);
            _exists[index] = element.channels != 0;
            if (_exists[index]) {
                withMemory(here, [&] { plan(_planes[index], i, element); });
            }
        }
        _src = src;
        _dst = dst;
    }

    /// Calls visit(plane, index) for each plane that the row has an entry for.
    template <class Visitor>
    void forEach(RowData const& dst, Visitor visit) {
        for (int i = 0; i < 3; ++i) {
            auto const index = static_cast<std::size_t>(i);
            if (_exists[index] && dst.plane[i] != nullptr) {
                visit(_planes[index], i);
            }
        }
    }

    void forAll(auto visit) { std::for_each(_planes.begin(), _planes.end(), visit); }

  private:
    std::array<Plane, 3> _planes;
    std::array<bool, 3> _exists{};
    FrameLayout _src;  ///< that the planes were planned for, as `_dst`
    FrameLayout _dst;
};

/// `produce` of a scaler refuses formats that can only be copied.
/// @param name of the scaler
[[noreturn]] inline void throwUnsupported(Place here, char const* name) {
    here.fail({StatusNotSupported, "produce"},
              "Failure in %s::produce(...) : unsupported frame format.", name);
}

inline void requireScalable(Place here, FrameFormat format, char const* name) {
    if (!isScalable(format)) {
        throwUnsupported(here, name);
    }
}

using rows::AreaWeight;
using rows::coordinateBits;
using rows::coordinateMask;
using rows::coordinateOne;

// Coordinates and weights are in 32-bit arithmetic that wraps.

/// `value` in 16.16, in 32 bits: sides of 32768 and more wrap.
constexpr std::int32_t toCoordinate(std::int32_t value) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(value) << coordinateBits);
}

/// The step per destination sample, truncated.
constexpr std::int32_t coordinateStep(std::int32_t src, std::int32_t dst) {
    return toCoordinate(src) / dst;
}

/// Source sample under the centre of each destination sample: (i + 1/2) src / dst.
/// @throws Exception `StatusCapacityExceeded` if memory is exhausted, as all three
void buildNearestTable(std::int32_t src, std::int32_t dst, std::vector<std::uint16_t>& table);

/// 16.16 source coordinate of each destination sample: (i + 1/2) src / dst - 1/2, at least 0.
void buildBilinearTable(std::int32_t src, std::int32_t dst, std::vector<std::int32_t>& table);

/// For each destination cell: its first source sample, and the part of that sample inside the cell,
/// with `shift` fractional bits. One entry per destination sample, and one more.
/// @return the full weight: that of a source sample that lies wholly in a cell
std::uint16_t buildAreaTable(std::int32_t src, std::int32_t dst, int shift,
                             std::vector<AreaWeight>& weights);

}  // namespace ox::impl
