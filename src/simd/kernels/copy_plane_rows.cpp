#include "simd/kernels/kernels.h"

#include <algorithm>
#include <cstring>

namespace Simd {

namespace {

/// Copies in pieces of a part of the second-level cache: memcpy has a quicker way up to about that
/// size than beyond it.
void copyBytes(Bytes dst, ConstBytes src, std::size_t count) {
    constexpr std::size_t piece = std::size_t{1} << 18;
    for (std::size_t done = 0; done < count; done += piece) {
        std::memcpy(dst + done, src + done, std::min(piece, count - done));
    }
}

}  // namespace

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
        copyBytes(dst, src, row_bytes);
    }
}

}  // namespace Simd
