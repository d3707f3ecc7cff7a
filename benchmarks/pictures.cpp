// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "pictures.h"

#include <algorithm>
#include <atomic>
#include <cstring>
#include <random>

namespace ox::benchmarks {

std::shared_ptr<Frame> blankPicture(FrameFormat format, Size size) {
    auto frame = std::make_shared<Frame>();
    frame->reuse(format, size, DeviceContext(), 1);
    frame->setZero();
    return frame;
}

std::shared_ptr<Frame> randomPicture(FrameFormat format, Size size) {
    auto frame = blankPicture(format, size);
    std::mt19937 random(1);
    std::uniform_real_distribution<float> numbers(-20.0F, 280.0F);
    FrameLayout const& layout = frame->layout();
    for (int i = 0; i < layout.planeCount; ++i) {
        unsigned char* const data = frame->planeData(i);
        std::uint64_t const bytes = layout.plane[i].planeBytes;
        if (layout.plane[i].bits != 32) {
            for (std::uint64_t b = 0; b < bytes; b += sizeof(std::uint32_t)) {
                auto const word = static_cast<std::uint32_t>(random());
                std::memcpy(data + b, &word, std::min<std::uint64_t>(sizeof word, bytes - b));
            }
            continue;
        }
        for (std::uint64_t b = 0; b < bytes; b += sizeof(float)) {
            float const number = numbers(random);
            std::memcpy(data + b, &number, sizeof number);
        }
    }
    return frame;
}

std::size_t pixelBytes(Frame const& frame) {
    std::size_t bytes = 0;
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        bytes += frame.layout().plane[i].planeBytes;
    }
    return bytes;
}

std::function<void()> copyOf(std::size_t bytes) {
    auto const from = std::make_shared<std::vector<unsigned char>>();
    auto const to = std::make_shared<std::vector<unsigned char>>();
    return [=] {
        if (from->empty()) {
            from->resize(bytes / 2, 1);
            to->resize(bytes / 2, 2);
        }
        std::memcpy(to->data(), from->data(), from->size());
        std::atomic_signal_fence(std::memory_order_acq_rel);  // nobody reads the copy
    };
}

bool equalPixels(Frame const& a, Frame const& b) {
    bool equal = a.format() == b.format() && a.size() == b.size();
    for (int i = 0; equal && i < a.layout().planeCount; ++i) {
        equal = std::memcmp(a.planeData(i), b.planeData(i), a.layout().plane[i].planeBytes) == 0;
    }
    return equal;
}

}  // namespace ox::benchmarks
