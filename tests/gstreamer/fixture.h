// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The element oxconvertscale in a harness, and what the library's own calls make of a frame.
#pragma once

#include <gst/check/gstharness.h>
#include <gst/video/video.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_frame_to_tensor.h"

namespace ox::test::gst {

// Starts GStreamer without a registry, with the plugin and the few others that the tests need.
class Gst : public testing::Test {
  protected:
    static void SetUpTestSuite();
};

using Buffer = std::unique_ptr<GstBuffer, decltype(&gst_buffer_unref)>;
using Caps = std::unique_ptr<GstCaps, decltype(&gst_caps_unref)>;

Caps capsFrom(std::string const& text);
GstVideoInfo infoOf(GstCaps const* caps);

// A buffer's pixels as a frame, as long as this lives.
class MappedFrame {
  public:
    MappedFrame(GstVideoInfo const& info, GstBuffer* buffer);
    MappedFrame(MappedFrame const&) = delete;
    MappedFrame& operator=(MappedFrame const&) = delete;
    ~MappedFrame();

    Frame& frame() { return _frame; }
    Frame const& frame() const { return _frame; }

  private:
    GstVideoFrame _mapped;
    Frame _frame;
};

// The element between two pads of the test's.
class Element {
  public:
    // By a line of gst-launch, such as "oxconvertscale method=area".
    explicit Element(std::string const& line = "oxconvertscale");
    Element(Element const&) = delete;
    Element& operator=(Element const&) = delete;
    ~Element();

    void setCaps(std::string const& in, std::string const& out);
    void setInput(std::string const& caps);
    // What the source pad sent; null if nothing did. The buffer is consumed.
    Buffer push(GstBuffer* buffer, GstFlowReturn expected = GST_FLOW_OK);
    Buffer push(Frame const& frame, GstFlowReturn expected = GST_FLOW_OK);
    // The caps that came out last.
    GstVideoInfo output() const;
    Size outputSize() const;
    // The first of the errors since it was asked last; empty if there is none.
    std::string error();

    GstHarness* harness() { return _harness; }
    GstElement* element() { return _element; }

  private:
    GstHarness* _harness;
    GstElement* _element;
    GstBus* _bus;
};

// What is asked of the library in place of the element.
struct Request {
    Rect region{};  // without sides: the whole frame
    TensorMethod method = TENSOR_METHOD_AUTOMATIC;
    IKernel* kernel = nullptr;
    TensorMatrix matrix = TENSOR_MATRIX_BT601;
    TensorRange range = TENSOR_RANGE_LIMITED;
};

// The same by the library's own calls, into a frame that is made for it: `FrameToTensor` to gray
// and colours; else a new converter, scaler and converter, each into a frame. The Y behind the last
// one of an odd width repeats it.
Frame byTheLibrary(Frame const& source, FrameFormat format, Size size, Request const& request = {});

}  // namespace ox::test::gst
