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
    // Out of line, like all that counts references: their code would be many times in every
    // program.
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

    /// Makes this a frame of that format, size and context, with undefined pixels. A frame that
    /// agrees is kept as it is, its strides and its sharing handles included, unless `alignment`
    /// isn't 0 and its strides don't fit; otherwise other handles keep their pixels.
    /// @param alignment of strides, in bytes; 0 stands for 64
    /// @throws Exception `StatusInvalidParameter` for a size that is empty,
    ///         `StatusUnsupportedFormat` for a format without planes, `StatusCapacityExceeded` for
    ///         too many bytes; the frame is then not initialized
    void reuse(FrameFormat format, Size size, DeviceContext context, unsigned long alignment);

    /// Gives `target` the same format and size and a copy of the pixels: in place if it agrees
    /// already, without a touch on the bytes between rows. Clears it if this frame isn't
    /// initialized.
    ///
    /// Both may show the same storage. Rows are copied from the top down, and the bytes of a row as
    /// if all of them were read first. So a target that lies on the same rows as the source, or
    /// higher up, gets the source's pixels; one that lies lower gets some rows again and again.
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
/// The result holds the storage (of wrapped memory: its addresses), not `frame` itself, which may
/// go. But it is a temporary where it is passed on at once: links that keep the address of their
/// `Frame` (`FormatConverter` does) need a variable that holds it.
/// @throws Exception `StatusOutOfRange` unless the rectangle lies inside the frame
OX_API Frame getRegion(Frame& frame, Rect region);

}  // namespace ox
