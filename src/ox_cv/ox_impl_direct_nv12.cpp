#include "ox_cv/ox_impl_direct_nv12.h"

#include "ox_cv/ox_cv_helpers.h"
#include "simd/simd.h"

namespace ox {

void NV12toBGR_neon(unsigned char const* y, unsigned char const* uv, unsigned char* bgr, int width,
                    int height, int src_stride, int dst_stride) {
    if (width < impl::directColumns || height < 2) {
        return;
    }
    int const columns = width / impl::directColumns * impl::directColumns;
    auto const stride = static_cast<std::size_t>(src_stride);
    // Chroma rows are luma's stride apart, on purpose.
    Simd::ConvertNv12ToBgrDirectly(y, stride, uv, stride, static_cast<std::size_t>(columns),
                                   static_cast<std::size_t>(height), bgr,
                                   static_cast<std::size_t>(dst_stride));
}

namespace impl {

bool goesDirectly(Frame const& src, Frame const& dst) {
    auto const fits = [](Frame const& frame) {
        return frame.layout().plane[0].stride <= maxDirectStride;
    };
    return src.format() == FRAME_NV12 && dst.format() == FRAME_BGR24 && fits(src) && fits(dst);
}

bool readsInsideChroma(Frame const& frame) {
    FramePlane const& chroma = frame.layout().plane[1];
    std::int64_t const step = frame.layout().plane[0].stride;
    std::int64_t const pairs = frame.height() / 2;
    std::int64_t const bytes = std::int64_t{frame.width() / directColumns} * directColumns;
    if (step == chroma.stride || bytes == 0) {
        return true;
    }
    auto const row_bytes = static_cast<std::int64_t>(chroma.rowBytes);
    for (std::int64_t p = 0; p < pairs; ++p) {
        std::int64_t const start = p * step;
        std::int64_t const row = start / chroma.stride;
        bool const contiguous = chroma.stride == row_bytes;
        std::int64_t const end = start + bytes;
        std::int64_t const room =
            contiguous ? chroma.height * chroma.stride : row * chroma.stride + row_bytes;
        if (row >= chroma.height || end > room) {
            return false;
        }
    }
    return true;
}

void convertNv12Directly(Frame const& src, Frame& dst) {
    NV12toBGR_neon(src.planeData(0), src.planeData(1), dst.planeData(0), dst.width(), dst.height(),
                   static_cast<int>(src.layout().plane[0].stride),
                   static_cast<int>(dst.layout().plane[0].stride));
}

}  // namespace impl

}  // namespace ox
