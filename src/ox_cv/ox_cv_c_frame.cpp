// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_impl_c.h"

namespace ox::impl::c {

Frame const& frameOf(ox_frame const* handle, char const* name) {
    requireParameter(handle, name);
    return handle->frame;
}

Frame& frameOf(ox_frame* handle, char const* name) {
    requireParameter(handle, name);
    return handle->frame;
}

namespace {

Frame wrap(FrameLayout layout, void* const* planes, std::int64_t const* strides) {
    requireParameter(planes, "planes");
    unsigned char* addresses[4]{};
    for (int i = 0; i < layout.planeCount; ++i) {
        addresses[i] = static_cast<unsigned char*>(planes[i]);
        if (strides != nullptr) {
            layout.plane[i].stride = strides[i];
        }
    }
    return Frame::wrap(layout, addresses);
}

ox_plane planeOf(Frame const& frame, int index) {
    FramePlane const& plane = frame.layout().plane[index];
    return {plane.width,  plane.height,   plane.channels,        plane.bits,
            plane.stride, plane.rowBytes, frame.planeData(index)};
}

}  // namespace

}  // namespace ox::impl::c

using namespace ox::impl::c;

ox_status ox_frame_create(int32_t format, int32_t width, int32_t height, uint64_t alignment,
                          ox_frame** frame) {
    return give(frame, "frame", [&] {
        auto made = std::make_unique<ox_frame>();
        made->frame.reuse(static_cast<ox::FrameFormat>(format), {width, height},
                          ox::DeviceContext(), alignment);
        return made;
    });
}

ox_status ox_frame_wrap(int32_t format, int32_t width, int32_t height, void* const* planes,
                        int64_t const* strides, int32_t plane_count, ox_frame** frame) {
    return give(frame, "frame", [&] {
        ox::FrameLayout const layout(static_cast<ox::FrameFormat>(format), {width, height}, 1);
        if (layout.planeCount != plane_count) {
            refuseValue("plane_count", plane_count);
        }
        auto made = std::make_unique<ox_frame>();
        made->frame = wrap(layout, planes, strides);
        return made;
    });
}

ox_status ox_frame_region(ox_frame const* frame, ox_rect const* region, ox_frame** part) {
    return give(part, "part", [&] {
        auto made = std::make_unique<ox_frame>();
        made->frame = frameOf(frame, "frame");
        if (region != nullptr) {
            made->frame = ox::getRegion(made->frame, rectOf(region));
        }
        return made;
    });
}

ox_status ox_frame_copy(ox_frame const* frame, ox_frame** copy) {
    return give(copy, "copy", [&] {
        auto made = std::make_unique<ox_frame>();
        frameOf(frame, "frame").copyTo(made->frame);
        return made;
    });
}

ox_status ox_frame_set_zero(ox_frame* frame) {
    return guarded([&] { frameOf(frame, "frame").setZero(); });
}

ox_status ox_frame_get_info(ox_frame const* frame, ox_frame_info* info) {
    return guarded([&] {
        ox::Frame const& pixels = frameOf(frame, "frame");
        requireParameter(info, "info");
        *info = {static_cast<int32_t>(pixels.format()),
                 pixels.width(),
                 pixels.height(),
                 pixels.layout().planeCount,
                 {}};
        for (int i = 0; i < info->plane_count; ++i) {
            info->planes[i] = planeOf(pixels, i);
        }
    });
}

void ox_frame_destroy(ox_frame* frame) {
    delete frame;
}
