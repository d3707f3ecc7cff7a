#include "simd/simd_bilinear_rows.h"
#include "simd/simd_neon.h"
#include "simd/simd_resizer_bilinear.h"

namespace Simd::Neon {

void ResizerFloatBilinear::Run(float const* src, std::size_t srcStride, float* dst,
                               std::size_t dstStride) {
    FloatColumns const columns{ix.data, ax.data, param.dstW * param.channels, param.channels,
                               param.srcW * param.channels};
    if (param.srcW < 2 || !routines().compileFloatColumns(columns, program)) {
        Base::ResizerFloatBilinear::Run(src, srcStride, dst, dstStride);
        return;
    }
    walkBilinearRows(
        param, iy, ay, PlaneRows{src, srcStride}, PlaneRows{dst, dstStride}, bx,
        [&](float const* row, float* sums) {
            routines().blendFloatColumns(program, columns, row, sums);
        },
        [&](float const* top, float const* bottom, float weight, float* row) {
            routines().blendFloatRows(top, bottom, weight, columns.entries, row);
        });
}

/// The scalar loops: no frame has elements of 16 bits.
void ResizerShortBilinear::Run(std::uint16_t const* src, std::size_t srcStride, std::uint16_t* dst,
                               std::size_t dstStride) {
    Base::ResizerShortBilinear::Run(src, srcStride, dst, dstStride);
}

}  // namespace Simd::Neon
