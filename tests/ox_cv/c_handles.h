// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Handles of the C interface that destroy themselves, and how its failures are expected.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <memory>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_cv_c.h"

namespace ox::test {

struct DestroyHandle {
    void operator()(ox_frame* frame) const { ox_frame_destroy(frame); }
    void operator()(ox_backend* backend) const { ox_backend_destroy(backend); }
    void operator()(ox_to_tensor* to_tensor) const { ox_to_tensor_destroy(to_tensor); }
};

using CFrame = std::unique_ptr<ox_frame, DestroyHandle>;
using CBackend = std::unique_ptr<ox_backend, DestroyHandle>;
using CToTensor = std::unique_ptr<ox_to_tensor, DestroyHandle>;

// Expects that a call failed, with exactly that text.
inline void expectRefused(ox_status got, ox_status expected, char const* text,
                          char const* file = __builtin_FILE(), int line = __builtin_LINE()) {
    testing::ScopedTrace const trace(file, line, "called");
    EXPECT_EQ(got, expected);
    EXPECT_STREQ(ox_last_error(), text);
}

inline void expectTaken(ox_status got, char const* file = __builtin_FILE(),
                        int line = __builtin_LINE()) {
    testing::ScopedTrace const trace(file, line, "called");
    EXPECT_EQ(got, OX_STATUS_OK) << ox_last_error();
}

// A handle on the pixels of `frame`.
inline CFrame handleOn(Frame const& frame) {
    void* planes[4]{};
    std::int64_t strides[4]{};
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        planes[i] = frame.planeData(i);
        strides[i] = frame.layout().plane[i].stride;
    }
    ox_frame* handle = nullptr;
    expectTaken(ox_frame_wrap(static_cast<std::int32_t>(frame.format()), frame.width(),
                              frame.height(), planes, strides, frame.layout().planeCount, &handle));
    return CFrame(handle);
}

inline CBackend backendHandle(std::int32_t kind) {
    ox_backend* handle = nullptr;
    expectTaken(ox_backend_create(kind, &handle));
    return CBackend(handle);
}

}  // namespace ox::test
