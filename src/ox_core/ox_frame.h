// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Frames: shared handles on pixels.

#pragma once

#include <memory>

#include "ox_core/ox_api.h"
#include "ox_core/ox_buffer.h"
#include "ox_core/ox_frame_layout.h"

namespace ox {

/// A handle: a copy is a second handle on the same pixels. Storage that the frame owns is counted
/// by reference (atomically) and freed with its last handle; pixels are not synchronised.
class OX_API Frame {
  public:
    /// A frame that isn't initialized: no planes, no storage.
    Frame() = default;
    // Out of line, like all code that counts references: inlined, it would make programs larger.
    Frame(Frame const& other);
    /// Takes the handle over: `other` is then as newly made, and can be armed again by `reuse`.
    Frame(Frame&& other) noexcept;
    Frame& operator=(Frame const& other);
    /// The same; a frame moved to itself keeps its pixels.
    Frame& operator=(Frame&& other) noexcept;
    ~Frame();

    /// A frame on memory that the caller owns and keeps alive.
    /// @param layout geometry as `FrameLayout` computes it; strides may be larger, offsets and
    ///        plane sizes are ignored
    /// @param planes one address per plane
    /// @throws Exception `StatusInvalidParameter` if the layout has no planes, isn't that of its
    ///         format and size, a side is below zero, or a stride is smaller than the row's bytes;
    ///         `StatusNullPointer` if an address is null
    static Frame wrap(FrameLayout const& layout, unsigned char* const* planes);

    bool initialized() const { return _layout.planeCount != 0; }
    FrameFormat format() const { return _layout.format; }
    Size size() const { return _layout.size; }
    int width() const { return _layout.size.width; }
    int height() const { return _layout.size.height; }
    /// Stays valid as long as the frame.
    FrameLayout const& layout() const { return _layout; }
    /// Start of plane `index`; null past the last plane.
    unsigned char* planeData(int index) const;
    /// The storage's context; the CPU's for wrapped memory.
    DeviceContext deviceContext() const;

    /// Makes this a frame of that format, size and context, with undefined pixels. A frame that has
    /// these already is kept as it is, with its strides and shared with other handles, unless its
    /// strides don't fit an `alignment` other than 0. Else it becomes a new frame, and other
    /// handles keep the old pixels.
    /// @param alignment of strides, in bytes; 0 stands for 64
    /// @throws Exception `StatusInvalidParameter` for a size that is empty,
    ///         `StatusUnsupportedFormat` for a format without planes, `StatusCapacityExceeded` for
    ///         too many bytes; the frame is then not initialized
    void reuse(FrameFormat format, Size size, DeviceContext context, unsigned long alignment);

    /// Gives `target` the same format and size and a copy of the pixels. A target that has format
    /// and size already is written in place; bytes between its rows stay. If this frame isn't
    /// initialized, `target` is cleared.
    ///
    /// Both may show the same storage. Rows are copied from the top down, each as if all its bytes
    /// were read first. So a target on the same rows as the source, or higher up, gets the source's
    /// pixels; a target that lies lower gets some rows repeatedly.
    /// @throws Exception what `reuse` throws; `target` is then not initialized
    void copyTo(Frame& target) const;

    /// Sets the pixels of all planes to 0; bytes between rows stay.
    void setZero();

    /// Back to not initialized; gives up the handle.
    void clear();

  private:
    friend OX_API Frame getRegion(Frame& frame, Rect region);

    bool agrees(FrameFormat format, Size size, DeviceContext const& context,
                unsigned long alignment) const;

    FrameLayout _layout;
    std::shared_ptr<Buffer> _buffer;  ///< null if the frame wraps memory
    unsigned char* _wrapped[4]{};     ///< plane addresses of wrapped memory
};

/// A frame on the same storage, narrowed to a rectangle.
///
/// On half-size planes the origin is x / 2, y / 2, rounded down, and the extent (w + 1) / 2,
/// (h + 1) / 2; packed 4:2:2 rows start at byte 4 (x / 2). A rectangle with a zero side gives a
/// frame without columns or rows.
///
/// The result shares the storage (of wrapped memory: holds the addresses), so `frame` itself
/// needn't live on. Links that keep the address of their `Frame`, such as `FormatConverter`, need
/// the result in a variable: it is a temporary otherwise.
/// @throws Exception `StatusOutOfRange` unless the rectangle lies inside the frame
OX_API Frame getRegion(Frame& frame, Rect region);

}  // namespace ox
