// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "operation.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_impl_scale_data.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "peers.h"
#include "pictures.h"

namespace ox::benchmarks {

namespace {

/// The tap loops as one would first write them, on a frame of three channels: what the library's
/// are measured against.
template <class Weight>
class ScalarLoops {
  public:
    void run(IKernel& kernel, Frame const& src, Frame& dst) {
        _x.reuse(kernel, src.width(), dst.width());
        _y.reuse(kernel, src.height(), dst.height());
        _row_bytes = static_cast<std::size_t>(dst.width()) * channels;
        _rows.resize(_row_bytes * static_cast<std::size_t>(src.height()));
        // A row of its own, with room for taps behind the end.
        _row.assign(src.layout().plane[0].rowBytes + mostTaps, 0);
        for (int y = 0; y < src.height(); ++y) {
            std::memcpy(_row.data(), src.planeData(0) + y * strideOf(src, 0),
                        src.layout().plane[0].rowBytes);
            sumColumns(_rows.data() + static_cast<std::size_t>(y) * _row_bytes);
        }
        int first = 0;
        int start = 0;
        for (int y = 0; y < dst.height(); ++y) {
            impl::ScaleSource const source = _y.sources()[static_cast<std::size_t>(y)];
            for (; y > 0 && start < source.src_start; ++start) {
                first += first + _y.aperture() < src.height() ? 1 : 0;
            }
            start = y > 0 ? source.src_start : 0;
            sumRows(first, _y.kernels().row(source.kernel_index),
                    dst.planeData(0) + y * strideOf(dst, 0));
        }
    }

  private:
    static constexpr int channels = 3;
    static constexpr std::size_t mostTaps = std::size_t{16384} * channels;

    static unsigned char clamped(int sum) {
        return static_cast<unsigned char>(std::clamp(sum / impl::maxAperture<Weight>(), 0, 255));
    }

    void sumColumns(unsigned char* dst) const {
        for (impl::ScaleSource const& source : _x.sources()) {
            Weight const* const weights = _x.kernels().row(source.kernel_index);
            for (int c = 0; c < channels; ++c) {
                int sum = 0;
                for (int k = 0; k < _x.aperture(); ++k) {
                    sum += _row[static_cast<std::size_t>((source.src_start + k) * channels + c)] *
                           weights[k];
                }
                *dst++ = clamped(sum);
            }
        }
    }

    void sumRows(int first, Weight const* weights, unsigned char* dst) {
        _sums.assign(_row_bytes, 0);
        for (int k = 0; k < _y.aperture(); ++k) {
            unsigned char const* const row =
                _rows.data() + static_cast<std::size_t>(first + k) * _row_bytes;
            for (std::size_t i = 0; i < _row_bytes; ++i) {
                _sums[i] += row[i] * weights[k];
            }
        }
        std::transform(_sums.begin(), _sums.end(), dst, clamped);
    }

    impl::ScaleData<Weight> _x;
    impl::ScaleData<Weight> _y;
    std::size_t _row_bytes = 0;
    std::vector<unsigned char> _rows;
    std::vector<unsigned char> _row;
    std::vector<int> _sums;
};

void runScalarLoops(IKernel& kernel, Frame const& src, Frame& dst, ScalerPrecision precision) {
    if (precision == OX_SCALER_FIXED_POINT_8S) {
        ScalarLoops<signed char>().run(kernel, src, dst);
    } else {
        ScalarLoops<short>().run(kernel, src, dst);
    }
}

#ifdef OX_PEER_ZIMG
/// On three planes, as zimg takes no packed pixels: splitting and merging are not counted.
Contestant zimgScaling(Size from, Size to, zimg_resample_filter_e filter) {
    Picture const src = randomPicture(FRAME_BGR_PLANAR, from);
    Picture const dst = blankPicture(FRAME_BGR_PLANAR, to);
    auto const formatOf = [](Size size) {
        zimg_image_format format;
        zimg_image_format_default(&format, ZIMG_API_VERSION);
        format.width = static_cast<unsigned>(size.width);
        format.height = static_cast<unsigned>(size.height);
        format.pixel_type = ZIMG_PIXEL_BYTE;
        format.color_family = ZIMG_COLOR_RGB;
        format.pixel_range = ZIMG_RANGE_FULL;
        return format;
    };
    zimg_image_format const src_format = formatOf(from);
    zimg_image_format const dst_format = formatOf(to);
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
    parameters.resample_filter = filter;
    parameters.filter_param_a = 3;  // lobes
    parameters.cpu_type = zimgTarget();
    std::shared_ptr<zimg_filter_graph> const graph(
        zimg_filter_graph_build(&src_format, &dst_format, &parameters), zimg_filter_graph_free);
    std::size_t scratch_bytes = 0;
    zimg_filter_graph_get_tmp_size(graph.get(), &scratch_bytes);
    auto const scratch = std::make_shared<std::vector<unsigned char>>(scratch_bytes + 64);
    return {"zimg", [=] {
                zimg_image_buffer_const input{};
                zimg_image_buffer output{};
                input.version = ZIMG_API_VERSION;
                output.version = ZIMG_API_VERSION;
                for (int i = 0; i < 3; ++i) {
                    input.plane[i] = {src->planeData(i), strideOf(*src, i), ZIMG_BUFFER_MAX};
                    output.plane[i] = {dst->planeData(i), strideOf(*dst, i), ZIMG_BUFFER_MAX};
                }
                auto const address = reinterpret_cast<std::uintptr_t>(scratch->data());
                void* const aligned = scratch->data() + (64 - address % 64) % 64;
                zimg_filter_graph_process(graph.get(), &input, &output, aligned, nullptr, nullptr,
                                          nullptr, nullptr);
            }};
}
#endif

template <class Kernel>
Operation convolution(std::string const& name, Size from, Size to, ScalerPrecision precision) {
    Picture const src = randomPicture(FRAME_BGR24, from);
    Picture const dst = blankPicture(FRAME_BGR24, to);
    auto const kernel = std::make_shared<Kernel>();
    std::string const bits = std::to_string(static_cast<unsigned>(precision)) + " bits";
    auto const scaler = std::make_shared<ScalerConvolutional>();
    // What is armed again for the next frame differs a little; a new object gives what is checked.
    auto const is_right = [=] {
        Picture const made = blankPicture(FRAME_BGR24, to);
        Picture const expected = blankPicture(FRAME_BGR24, to);
        ScalerConvolutional fresh;
        fresh.reuse(*kernel, *src, to, precision);
        produceFrame(fresh, *made);
        runScalarLoops(*kernel, *src, *expected, precision);
        return equalPixels(*made, *expected);
    };
    Operation operation{"BGR24 " + name + " to " + std::to_string(to.width) + "x" +
                            std::to_string(to.height) + ", " + bits,
                        Family::Convolution,
                        pixelBytes(*src) + pixelBytes(*dst),
                        {{pipelineRoad,
                          [=] {
                              scaler->reuse(*kernel, *src, to, precision);
                              produceFrame(*scaler, *dst);
                          },
                          is_right}},
                        {}};
    Picture const scalar = blankPicture(FRAME_BGR24, to);
    operation.peers.push_back(
        {"scalar loop", [=] { runScalarLoops(*kernel, *src, *scalar, precision); }});
#ifdef OX_PEER_SWSCALE
    bool const lanczos = std::is_same_v<Kernel, Lanczos3Kernel>;
    operation.peers.push_back(swscale(src, AV_PIX_FMT_BGR24, dst, AV_PIX_FMT_BGR24,
                                      lanczos ? SWS_LANCZOS : SWS_BILINEAR));
#endif
#ifdef OX_PEER_ZIMG
    operation.peers.push_back(zimgScaling(
        from, to,
        std::is_same_v<Kernel, Lanczos3Kernel> ? ZIMG_RESIZE_LANCZOS : ZIMG_RESIZE_BILINEAR));
#endif
    return operation;
}

}  // namespace

std::vector<Operation> convolutionOperations(Size size) {
    Size const to{size.width / 3, size.height / 3};
    std::vector<Operation> operations;
    for (auto const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        operations.push_back(convolution<Lanczos3Kernel>("Lanczos 3", size, to, precision));
        operations.push_back(convolution<TriangleKernel>("triangle", size, to, precision));
    }
    return operations;
}

}  // namespace ox::benchmarks
