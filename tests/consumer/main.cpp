// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Uses the libraries from outside, as C++14, and checks results that loose float flags would
// change.

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "ox_core/ox_core.h"
#include "ox_cv/ox_cv.h"

namespace {

int failures = 0;

void expect(bool condition, char const* what) {
    if (!condition) {
        std::fprintf(stderr, "consumer: %s\n", what);
        ++failures;
    }
}

std::uint32_t bitsOf(float number) {
    std::uint32_t bits;
    std::memcpy(&bits, &number, sizeof bits);
    return bits;
}

void checkChain() {
    ox::Frame frame;
    frame.reuse(ox::FRAME_GRAY8, {4, 4}, ox::DeviceContext(), 0);
    frame.setZero();
    frame.planeData(0)[0] = 200;
    ox::Frame half;
    ox::Scaler scaler;
    scaler.reuse(frame, {2, 2}, ox::OX_SCALE_AREA);
    ox::produceFrame(scaler, half);
    expect(half.planeData(0)[0] == 50, "area of 200, 0, 0, 0");
}

/// D = m0 m4 - m1 m3 with the second product rounded first: 2^-24 here, 0 if both are rounded or
/// the other one is fused instead.
void checkFusedDeterminant() {
    float const one = 1.0F + 1.0F / 4096;
    float const matrix[6] = {one, one, 0, one, one, 0};
    float inverse[6];
    expect(ox::invertAffineTransform(matrix, inverse), "the product that is fused is exact");
    float const expected = static_cast<float>(double{one} * 4096 * 4096);
    expect(bitsOf(inverse[0]) == bitsOf(expected), "inverse of a nearly singular matrix");
}

void checkNotANumber() {
    ox::Frame floats;
    floats.reuse(ox::FRAME_BGR_32F, {2, 1}, ox::DeviceContext(), 0);
    auto* const numbers = reinterpret_cast<std::uint32_t*>(floats.planeData(0));
    for (int i = 0; i < 6; ++i) {
        numbers[i] = i == 0 ? 0x7fc00000U : 0x4396599aU;  // NaN; 300.7
    }
    ox::Frame bytes;
    bytes.reuse(ox::FRAME_BGR24, {2, 1}, ox::DeviceContext(), 0);
    ox::CvBackendBase backend;
    backend.colorCvt(floats, bytes, ox::emptyRoi());
    expect(bytes.planeData(0)[0] == 0 && bytes.planeData(0)[1] == 44, "floats to bytes");
}

void checkException() {
    try {
        ox::RowCopier().reuse(ox::emptyFrame());
        expect(false, "a frame that isn't initialized is refused");
    } catch (ox::Exception const& error) {
        expect(error.status == ox::StatusAssertionFailed, "status across the library's border");
    }
}

}  // namespace

int main() {
    checkChain();
    checkFusedDeterminant();
    checkNotANumber();
    checkException();
    std::printf("consumer: %s, C++ of %ld\n", failures == 0 ? "passed" : "FAILED", __cplusplus);
    return failures == 0 ? 0 : 1;
}
