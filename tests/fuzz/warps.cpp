// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Affine warps of planes, with vector routines and without, against the model.
#include <algorithm>
#include <cmath>
#include <memory>

#include "fuzz/planes.h"
#include "model/warp.h"
#include "simd/vector_targets.h"
#include "simd/warps/warp_affine.h"

namespace ox::fuzz {

namespace {

model::Matrix drawMatrix(Input& input) {
    constexpr float plain[]{1, -1, 0, 0.5F, 2, -0.5F, 0.25F, 3};
    model::Matrix matrix{1, 0, 0, 0, 1, 0};
    std::uint8_t const kind = input.byte();
    for (std::size_t i = 0; i < matrix.size(); ++i) {
        bool const shift = i % 3 == 2;
        if (kind % 16 == 0) {
            matrix[i] = input.number<float>();
        } else if (kind % 16 < 6) {
            matrix[i] = shift ? input.real(-70.0F, 70.0F) : input.real(-2.0F, 2.0F);
        } else if (shift) {
            matrix[i] = static_cast<float>(input.between(-40, 200)) * 0.25F;
        } else {
            matrix[i] = input.pick(plain) + (input.oneIn(3) ? input.real(-0.1F, 0.1F) : 0.0F);
        }
    }
    return matrix;
}

model::Pixels drawPixels(Input& input, int width, int height, int channels) {
    model::Pixels pixels = model::makePixels(width, height, channels, 0);
    input.fill(pixels.bytes);
    return pixels;
}

PlaneSize sizeOf(model::Pixels const& pixels) {
    return {pixels.rowBytes(), static_cast<std::size_t>(pixels.height)};
}

struct Case {
    model::Warp warp;
    model::Pixels src;
    model::Pixels before;
};

// What a warp by numbers that are none gives isn't fixed.
void run(Input& input, Case const& the, Plane const& src, bool compared) {
    auto const channels = static_cast<std::uint64_t>(the.src.channels);
    Plane const dst(input, sizeOf(the.before));
    dst.store(the.before.bytes);
    std::unique_ptr<Simd::WarpAffine> const warp(Simd::Base::CreateWarpAffine(
        static_cast<std::uint64_t>(the.src.width), src.size().rows, src.stride(),
        static_cast<std::uint64_t>(the.before.width), dst.size().rows, dst.stride(), channels,
        the.warp.matrix.data(), the.warp.flags,
        the.warp.border ? the.warp.border->data() : nullptr));
    if ((warp == nullptr) !=
        model::warpIsRefused(the.warp, channels, src.size().rows, src.stride())) {
        fail("a warp is refused by one side alone");
    }
    if (warp == nullptr) {
        return;
    }
    int const runs = input.between(1, 2);
    for (int i = 0; i < runs; ++i) {
        dst.store(the.before.bytes);
        warp->Run(src.data(), dst.data());
    }
    if (compared) {
        model::Pixels wanted = the.before;
        model::warpPlane(the.warp, the.src, wanted);
        expectBytes(dst.bytes(), wanted.bytes, "warp");
    }
    dst.expectUntouchedAround("warp");
}

}  // namespace

void warps(Input& input) {
    Case the;
    the.warp.matrix = drawMatrix(input);
    the.warp.flags = static_cast<std::uint32_t>(input.between(0, 7));
    if (input.oneIn(2)) {
        the.warp.border = {input.byte(), input.byte(), input.byte(), input.byte()};
    }
    int const channels = input.between(0, 5);
    auto const side = [&] {
        return input.byte() % 4 == 0 ? input.between(0, 70) : input.between(0, 20);
    };
    int const src_width = side();
    int const src_height = side();
    the.src = drawPixels(input, src_width, src_height, channels);
    int const width = side();
    the.before = drawPixels(input, width, side(), channels);
    Plane const src(input, sizeOf(the.src));
    src.store(the.src.bytes);

    bool const compared = channels >= 1 && channels <= 4 && model::warpIsFinite(the.warp, the.src);
    run(input, the, src, compared);
    test::VectorRoutinesOff const off;
    run(input, the, src, compared);
    expectBytes(src.bytes(), the.src.bytes, "the source of a warp");
}

}  // namespace ox::fuzz
