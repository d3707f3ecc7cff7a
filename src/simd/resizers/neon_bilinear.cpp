#include "simd/resizers/bilinear.h"
#include "simd/resizers/bilinear_rows.h"

namespace Simd::Neon {

void ResizerFloatBilinear::Run(float const* src, std::size_t srcStride, float* dst,
                               std::size_t dstStride) {
    FloatColumns const row_columns = columns();
    if (param.srcW < 2 || !resizeRoutines().compileFloatColumns(row_columns, program)) {
        Base::ResizerFloatBilinear::Run(src, srcStride, dst, dstStride);
        return;
    }
    StridedRows const source{src, srcStride};
    StridedRows const target{dst, dstStride};
    // Buffered rows gain nothing where hardly any source row is used twice.
    if (program.takesPairs && param.dstH <= param.srcH / 2) {
        for (std::uint64_t row = 0; row < param.dstH; ++row) {
            auto const first = static_cast<std::uint64_t>(iy[row]);
            resizeRoutines().blendFloatPairRows(row_columns, source[first], source[first + 1],
                                                ay[row], target[row]);
        }
        return;
    }
    walkBilinearRows(
        param, iy, ay, source, target, bx,
        [&](float const* row, float* sums) {
            resizeRoutines().blendFloatColumns(program, row_columns, row, sums);
        },
        [&](float const* top, float const* bottom, float weight, float* row) {
            resizeRoutines().blendFloatRows(top, bottom, weight, row_columns.entries, row);
        });
}

/// The scalar loops: no frame has elements of 16 bits.
void ResizerShortBilinear::Run(std::uint16_t const* src, std::size_t srcStride, std::uint16_t* dst,
                               std::size_t dstStride) {
    Base::ResizerShortBilinear::Run(src, srcStride, dst, dstStride);
}

}  // namespace Simd::Neon
