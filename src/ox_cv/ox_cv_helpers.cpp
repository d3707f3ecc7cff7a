#include "ox_cv/ox_cv_helpers.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace ox {

namespace {

constexpr int blockWidth = 8;

/// Chroma's share of the three channels, with the rounding term.
struct ChromaTerms {
    int b;
    int g;
    int r;
};

ChromaTerms chromaTerms(unsigned char u, unsigned char v) {
    int const cu = u - 128;
    int const cv = v - 128;
    return {128 + 516 * cu, 128 - 208 * cv - 100 * cu, 128 + 409 * cv};
}

/// Saturates to 16 bits and drops the fraction.
unsigned char narrow(int value) {
    return static_cast<unsigned char>(std::clamp(value, 0, 65535) >> 8);
}

void storePixel(unsigned char* bgr, unsigned char y, ChromaTerms terms) {
    int const luma = 298 * std::max(y - 16, 0);
    bgr[0] = narrow(luma + terms.b);
    bgr[1] = narrow(luma + terms.g);
    bgr[2] = narrow(luma + terms.r);
}

/// The number of columns must be even.
void convertRow(unsigned char const* y, unsigned char const* uv, unsigned char* bgr,
                std::int64_t columns) {
    for (std::int64_t x = 0; x < columns; x += 2) {
        ChromaTerms const terms = chromaTerms(uv[x], uv[x + 1]);
        storePixel(bgr + 3 * x, y[x], terms);
        storePixel(bgr + 3 * (x + 1), y[x + 1], terms);
    }
}

}  // namespace

Rect const& emptyRoi() {
    static Rect const roi;
    return roi;
}

Frame const& emptyFrame() {
    static Frame const frame;
    return frame;
}

bool invertAffineTransform(float const* matrix, float* inverse) {
    // Copied, since the two may be the same memory.
    float const m0 = matrix[0];
    float const m1 = matrix[1];
    float const m3 = matrix[3];
    float const m4 = matrix[4];
    double const m2 = matrix[2];
    double const m5 = matrix[5];

    float const determinant = std::fma(m0, m4, -(m1 * m3));
    double const scale = determinant != 0.0F ? 1.0 / double{determinant} : 0.0;
    double const a11 = double{m4} * scale;
    double const a22 = double{m0} * scale;
    double const a12 = -double{m1} * scale;
    double const a21 = -double{m3} * scale;
    double const b1 = std::fma(-a11, m2, -(m5 * a12));
    double const b2 = std::fma(-a21, m2, -(m5 * a22));

    double const result[6] = {a11, a12, b1, a21, a22, b2};
    std::transform(result, result + 6, inverse,
                   [](double number) { return static_cast<float>(number); });
    return determinant != 0.0F;
}

void NV12toBGR_neon(unsigned char const* y, unsigned char const* uv, unsigned char* bgr, int width,
                    int height, int src_stride, int dst_stride) {
    std::int64_t const columns = width / blockWidth * std::int64_t{blockWidth};
    std::int64_t const rows = height - height % 2;
    for (std::int64_t row = 0; row < rows; ++row) {
        // Chroma rows are luma's stride apart, on purpose.
        convertRow(y + row * src_stride, uv + row / 2 * src_stride, bgr + row * dst_stride,
                   columns);
    }
}

}  // namespace ox
