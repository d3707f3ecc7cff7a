// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

// Numbers with a few bits, so that no expression is fused or rounded in making them.
float coefficient(Random& random, int most) {
    return static_cast<float>(random.between(-64 * most, 64 * most)) / 64.0F;
}

void digestWarp(Digest& digest, ICvBackend& backend, FrameFormat format, Random& random) {
    Frame const src = randomFrame(format, {random.between(1, 150), random.between(1, 40)}, random);
    Frame dst = randomFrame(format, {random.between(1, 150), random.between(1, 40)}, random);
    float const matrix[2][3]{
        {coefficient(random, 2), coefficient(random, 1), coefficient(random, 50)},
        {coefficient(random, 1), coefficient(random, 2), coefficient(random, 20)}};
    Rect const region = random.between(0, 1) == 0
                            ? emptyRoi()
                            : Rect{0, 0, src.width() / 2 + 1, src.height() / 2 + 1};
    bool const invert = random.between(0, 1) == 0;
    attempt(digest, [&] { backend.warpAffine(src, dst, matrix, region, invert); });
    addFrame(digest, dst);
}

}  // namespace

void digestWarps(Table& table) {
    CvBackendSimd backend;
    for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear}) {
        backend.setIntProperty(PropertyWarpMethod, static_cast<int>(method));
        for (FrameFormat const format : formats()) {
            Random random(format * 10 + method);
            Digest digest;
            for (int i = 0; i < 30; ++i) {
                digestWarp(digest, backend, format, random);
            }
            table.add(
                (method == ResizeBilinear ? "warp bilinear " : "warp nearest ") + nameOf(format),
                digest.value());
        }
    }
}

}  // namespace ox::test
