/// @file
/// What the private states of the scalers share: how tables are kept, windows armed, rows walked.

#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "ox_core/ox_impl_sizes.h"
#include "ox_cv/ox_impl_scale_elements.h"
#include "ox_cv/ox_impl_state.h"

namespace ox::impl {

/// What a scaler's tables were built for. They serve again while the sides stay, on purpose also
/// under another precision; but not where a new object would build some for that precision.
/// @tparam Side one side or both
template <class Side>
class TableKey {
  public:
    /// Calls build() unless the tables serve again. After a build they serve nobody before
    /// `finish`, as what is made by them may fail yet.
    /// @param shift of the weights, if there are some
    /// @return whether they serve again
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
    bool _is_new = true;  ///< whether the object hasn't been armed yet, or not since `renew`
};

/// @tparam State which derives from it and has prepare(source layout, wanted...)
template <class State>
struct ScalerState {
    FrameLayout _src_layout;
    FrameLayout _dst_layout;
    RowWindow _window;
    std::int32_t _dst_row = 0;  ///< stays 0 where rows follow the window's

    // What a state has otherwise where it differs.
    int windowSize(auto const& /*source*/) const { return 1; }
    int firstRow() const { return 0; }  ///< that the window begins at for the destination row

    /// The tables stay.
    void renew() {
        _src_layout.clear();
        _dst_layout.clear();
        _window.renew();
        _dst_row = 0;
    }

    template <class Source, class... Wanted>
    void arm(Place here, Source& source, Wanted... wanted) {
        prepareTables(_window, [&] { own().prepare(source.layout(), wanted...); });
        armWindow(_window, source, own().windowSize(source), here);
        _window.moveTo(own().firstRow());
    }

    /// For `prepare`, when tables are there.
    void placeLayouts(FrameLayout const& src_layout, Size dst_size) {
        _src_layout = src_layout;
        _dst_layout = FrameLayout(src_layout.format, dst_size, defaultAlignment);
        _dst_row = 0;
    }

    /// Destination rows from the first to the last; the window follows.
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

/// How the row of a plane lies that is scaled by a table.
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

/// What a scaler has of each plane that a format has, such as its `rows::Columns`: planned when the
/// scaler is armed, and again when tables or rows have changed.
template <class Plane>
class ScaledPlanes {
  public:
    /// Calls plan(plane, index, element) for each plane, unless nothing has changed.
    /// @param same whether tables, and what else it goes by, have stayed
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
            if (_exists[index] && dst[i] != nullptr) {
                visit(_planes[index], i);
            }
        }
    }

    void forAll(auto visit) { std::for_each(_planes.begin(), _planes.end(), visit); }

  private:
    std::array<Plane, 3> _planes;
    std::array<bool, 3> _exists{};
    FrameLayout _src;  ///< that they were planned for, as the next
    FrameLayout _dst;
};

/// Formats that can only be copied are found out by `produce`.
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

}  // namespace ox::impl
