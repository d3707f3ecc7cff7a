#include "simd/simd_kernels.h"

#include <cstring>

namespace Simd {

void CopyPlaneRows(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                   std::size_t pixel_size, Bytes dst, std::size_t dst_stride) {
    std::size_t row_bytes = width * pixel_size;
    if (row_bytes == 0) {
        return;
    }
    if (src_stride == row_bytes && dst_stride == row_bytes) {
        row_bytes *= height;
        height = 1;
    }
    for (std::size_t y = 0; y < height; ++y, src += src_stride, dst += dst_stride) {
        std::memcpy(dst, src, row_bytes);
    }
}

}  // namespace Simd
