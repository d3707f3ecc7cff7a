// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_impl_c.h"
#include "ox_cv/ox_packed_422_resizer.h"

struct ox_backend {
    std::unique_ptr<ox::ICvBackend> backend;
    ox::Packed422Resizer packed_422;
};

namespace ox::impl::c {

namespace {

constexpr Place here{"src/ox_cv/ox_cv_c_backend"};

std::unique_ptr<ICvBackend> backendOf(std::int32_t kind) {
    switch (kind) {
        case OX_BACKEND_SIMD:
            return std::make_unique<CvBackendSimd>();
        case OX_BACKEND_BASE:
            return std::make_unique<CvBackendBase>();
        default:
            refuseValue("kind", kind);
    }
}

ICvBackend& backendOf(ox_backend const* handle) {
    requireParameter(handle, "backend");
    return *handle->backend;
}

void requireProperty(bool exists, std::int32_t property) {
    if (!exists) {
        here.fail({StatusNotSupported}, "The backend has no property %d.", property);
    }
}

/// Runs an operation of a backend on two frames.
template <class Operation>
ox_status operate(ox_backend* backend, ox_frame const* src, ox_frame* dst,
                  Operation const& operation) noexcept {
    return guarded(
        [&] { operation(backendOf(backend), frameOf(src, "src"), frameOf(dst, "dst")); });
}

}  // namespace

}  // namespace ox::impl::c

using namespace ox::impl::c;

ox_status ox_backend_create(int32_t kind, ox_backend** backend) {
    return give(backend, "backend", [&] {
        auto made = std::make_unique<ox_backend>();
        made->backend = backendOf(kind);
        return made;
    });
}

ox_status ox_backend_set_property(ox_backend* backend, int32_t property, int32_t value) {
    return guarded([&] {
        requireProperty(backendOf(backend).setIntProperty(property, value) != 0, property);
    });
}

ox_status ox_backend_get_property(ox_backend const* backend, int32_t property, int32_t* value) {
    return guarded([&] {
        int const known = backendOf(backend).getIntProperty(property);
        requireParameter(value, "value");
        requireProperty(known != -1, property);
        *value = known;
    });
}

ox_status ox_backend_convert(ox_backend* backend, ox_frame const* src, ox_rect const* region,
                             ox_frame* dst) {
    return operate(backend, src, dst, [&](auto& does, auto const& from, auto& to) {
        does.convert(from, to, rectOf(region));
    });
}

ox_status ox_backend_convert_colour(ox_backend* backend, ox_frame const* src, ox_rect const* region,
                                    ox_frame* dst) {
    return operate(backend, src, dst, [&](auto& does, auto const& from, auto& to) {
        does.colorCvt(from, to, rectOf(region));
    });
}

ox_status ox_backend_resize(ox_backend* backend, ox_frame const* src, ox_rect const* src_region,
                            ox_frame* dst, ox_rect const* dst_region) {
    return operate(backend, src, dst, [&](auto& does, auto const& from, auto& to) {
        does.resize(from, to, rectOf(src_region), rectOf(dst_region));
    });
}

ox_status ox_backend_resize_packed_422(ox_backend* backend, ox_frame const* src, ox_frame* dst) {
    return operate(backend, src, dst, [&](auto& does, auto const& from, auto& to) {
        backend->packed_422.resize(does, from, to);
    });
}

ox_status ox_backend_warp_affine(ox_backend* backend, ox_frame const* src, ox_rect const* region,
                                 ox_frame* dst, float const* matrix, int32_t invert) {
    return operate(backend, src, dst, [&](auto& does, auto const& from, auto& to) {
        requireParameter(matrix, "matrix");
        float const rows[2][3]{{matrix[0], matrix[1], matrix[2]},
                               {matrix[3], matrix[4], matrix[5]}};
        does.warpAffine(from, to, rows, rectOf(region), invert != 0);
    });
}

ox_status ox_backend_add(ox_backend* backend, ox_frame* frame, ox_rect const* region, float value) {
    return guarded([&] { backendOf(backend).add(frameOf(frame, "frame"), value, rectOf(region)); });
}

ox_status ox_backend_multiply(ox_backend* backend, ox_frame* frame, ox_rect const* region,
                              float value) {
    return guarded([&] { backendOf(backend).mul(frameOf(frame, "frame"), value, rectOf(region)); });
}

void ox_backend_destroy(ox_backend* backend) {
    delete backend;
}
