// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_core/ox_impl_place.h"
#include "ox_core/ox_impl_sizes.h"
#include "ox_core/ox_impl_storage.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_core/ox_frame"};

[[noreturn]] void fail(impl::Failure const& failure, char const* text) {
    here.fail(failure, "Failure in Frame::%s(...) : %s", failure.function, text);
}

bool sameRows(FramePlane const& a, FramePlane const& b) {
    return a.width == b.width && a.height == b.height && a.bits == b.bits &&
           a.channels == b.channels && a.rowBytes == b.rowBytes;
}

/// Whether the planes are those that `FrameLayout` computes, strides aside.
bool samePlanes(FrameLayout const& a, FrameLayout const& b) {
    return a.planeCount == b.planeCount &&
           std::equal(a.plane, a.plane + a.planeCount, b.plane, sameRows);
}

/// Calls visit(plane, y, row's bytes) for each row of each plane.
template <class Visitor>
void forEachRow(FrameLayout const& layout, Visitor visit) {
    for (int i = 0; i < layout.planeCount; ++i) {
        for (std::int64_t y = 0; y < layout.plane[i].height; ++y) {
            visit(i, y, layout.plane[i].rowBytes);
        }
    }
}

unsigned char* rowOf(Frame const& frame, int plane, std::int64_t y) {
    return frame.planeData(plane) + y * frame.layout().plane[plane].stride;
}

/// Byte offset, from a plane's start, of the frame's pixel (x, y).
std::uint64_t offsetOfPixel(FramePlane const& plane, impl::FormatFacts const& format,
                            impl::PlaneFacts const& facts, Rect region) {
    std::int64_t const group = facts.half_width ? 2 : format.pixel_group;
    std::int64_t const column = region.x / group * (facts.half_width ? 1 : group);
    std::int64_t const row = facts.half_height ? region.y / 2 : region.y;
    return static_cast<std::uint64_t>(row * plane.stride +
                                      column * plane.channels * (plane.bits / 8));
}

bool contains(Size size, Rect region) {
    return region.x >= 0 && region.y >= 0 && region.width >= 0 && region.height >= 0 &&
           std::int64_t{region.x} + region.width <= size.width &&
           std::int64_t{region.y} + region.height <= size.height;
}

}  // namespace

Frame::Frame(Frame const& other) = default;
Frame& Frame::operator=(Frame const& other) = default;

Frame::Frame(Frame&& other) noexcept
    : _layout(std::exchange(other._layout, FrameLayout())), _buffer(std::move(other._buffer)) {
    std::swap(_wrapped, other._wrapped);
}

Frame& Frame::operator=(Frame&& other) noexcept {
    Frame taken(std::move(other));
    std::swap(_layout, taken._layout);
    _buffer.swap(taken._buffer);
    std::swap(_wrapped, taken._wrapped);
    return *this;
}

Frame::~Frame() = default;

Frame Frame::wrap(FrameLayout const& layout, unsigned char* const* planes) {
    if (layout.planeCount == 0) {
        fail(StatusInvalidParameter, "layout has no planes.");
    }
    if (layout.size.width < 0 || layout.size.height < 0) {
        fail(StatusInvalidParameter, "size is below zero.");
    }
    Frame frame;
    frame._layout = FrameLayout(layout.format, layout.size, 1);
    if (!samePlanes(frame._layout, layout)) {
        fail(StatusInvalidParameter, "layout isn't that of its format and size.");
    }
    for (int i = 0; i < layout.planeCount; ++i) {
        FramePlane& plane = frame._layout.plane[i];
        std::int64_t const stride = layout.plane[i].stride;
        if (stride < 0 || static_cast<std::uint64_t>(stride) < plane.rowBytes) {
            fail(StatusInvalidParameter, "stride is smaller than the row's bytes.");
        }
        if (planes == nullptr || planes[i] == nullptr) {
            fail(StatusNullPointer, "plane address is null.");
        }
        plane.stride = stride;
        plane.planeBytes = impl::multiplyBytes(static_cast<std::uint64_t>(stride),
                                               static_cast<std::uint64_t>(plane.height));
        frame._layout.offset[i] = 0;
        frame._wrapped[i] = planes[i];
    }
    return frame;
}

unsigned char* Frame::planeData(int index) const {
    if (index < 0 || index >= _layout.planeCount) {
        return nullptr;
    }
    return _buffer ? _buffer->data + _layout.offset[index] : _wrapped[index];
}

DeviceContext Frame::deviceContext() const {
    return _buffer ? _buffer->context : DeviceContext();
}

bool Frame::agrees(FrameFormat wanted, Size wanted_size, DeviceContext const& context,
                   unsigned long alignment) const {
    if (!initialized() || format() != wanted || size() != wanted_size ||
        deviceContext() != context) {
        return false;
    }
    auto const aligned = [alignment](FramePlane const& plane) {
        return static_cast<unsigned long>(plane.stride) % alignment == 0;
    };
    return alignment == 0 ||
           std::all_of(_layout.plane, _layout.plane + _layout.planeCount, aligned);
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): by value in the published interface.
void Frame::reuse(FrameFormat wanted, Size wanted_size, DeviceContext context,
                  unsigned long alignment) {
    if (!wanted_size.empty() && agrees(wanted, wanted_size, context, alignment)) {
        return;
    }
    // Until all is done the frame is not initialized.
    std::shared_ptr<Buffer> storage = std::move(_buffer);
    clear();
    if (wanted_size.empty()) {
        fail(StatusInvalidParameter, "size is empty.");
    }
    FrameLayout const layout(wanted, wanted_size, alignment);
    if (layout.planeCount == 0) {
        fail(StatusUnsupportedFormat, "unsupported format.");
    }
    _buffer = impl::takeStorage(storage, context, layout.totalBytes());
    _layout = layout;
}

void Frame::copyTo(Frame& target) const {
    if (!initialized()) {
        target.clear();
        return;
    }
    Frame const source = *this;  // `target` may be another handle that is about to be made anew
    if (target.format() != format() || target.size() != size()) {
        target.reuse(format(), size(), DeviceContext(), 0);
    }
    forEachRow(source._layout, [&](int plane, std::int64_t y, std::uint64_t bytes) {
        std::memmove(rowOf(target, plane, y), rowOf(source, plane, y), bytes);
    });
}

void Frame::setZero() {
    forEachRow(_layout, [&](int plane, std::int64_t y, std::uint64_t bytes) {
        std::memset(rowOf(*this, plane, y), 0, bytes);
    });
}

void Frame::clear() {
    *this = Frame();
}

Frame getRegion(Frame& frame, Rect region) {
    if (!contains(frame.size(), region)) {
        here.fail(StatusOutOfRange, "Failure in getRegion(...) : region is out of range.");
    }
    Frame narrowed = frame;
    FrameLayout& layout = narrowed._layout;
    impl::FormatFacts const& facts = impl::factsOf(frame.format());
    FrameLayout const tight(frame.format(), {region.width, region.height}, 1);
    layout.size = tight.size;
    for (std::size_t i = 0; i < static_cast<std::size_t>(layout.planeCount); ++i) {
        std::uint64_t const start = offsetOfPixel(layout.plane[i], facts, facts.planes[i], region);
        std::int64_t const stride = layout.plane[i].stride;
        layout.plane[i] = tight.plane[i];
        layout.plane[i].stride = stride;
        layout.plane[i].planeBytes = static_cast<std::uint64_t>(stride * tight.plane[i].height);
        if (narrowed._buffer) {
            layout.offset[i] += start;
        } else {
            narrowed._wrapped[i] += start;
        }
    }
    return narrowed;
}

}  // namespace ox
