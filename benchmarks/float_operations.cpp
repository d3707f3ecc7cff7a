// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cmath>

#include "operation.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "peers.h"
#include "pictures.h"
#include "roads.h"

namespace ox::benchmarks {

namespace {

std::size_t samplesOf(Frame const& frame) {
    return pixelBytes(frame) / sizeof(float);
}

float* floatsOf(Frame const& frame) {
    return reinterpret_cast<float*>(frame.planeData(0));
}

Operation conversion(char const* name, Picture const& src, Picture const& dst) {
    return {name,
            Family::Copy,
            pixelBytes(*src) + pixelBytes(*dst),
            roadsOf(src, dst,
                    [](ICvBackend& backend, auto& from, auto& to) {
                        backend.colorCvt(from, to, Rect{});
                    }),
            {}};
}

/// Arithmetic in place, by both backends: the number is chosen so that repeated runs leave it in
/// range.
template <class Work, class Expected>
Operation arithmetic(char const* name, Picture const& frame, Work work, Expected expected) {
    Operation operation{name, Family::Copy, 2 * pixelBytes(*frame), {}, {}};
    auto const add = [&](char const* road, std::shared_ptr<ICvBackend> const& backend) {
        operation.roads.push_back({road, [=] { work(*backend, *frame); },
                                   [=] {
                                       float const& last = floatsOf(*frame)[samplesOf(*frame) - 1];
                                       float const before = last;
                                       work(*backend, *frame);
                                       return last == expected(before);
                                   }});
    };
    add(vectorRoad, std::make_shared<CvBackendSimd>());
    add(pipelineRoad, std::make_shared<CvBackendBase>());
    return operation;
}

Operation bytesToFloats(Size size) {
    auto const src = randomPicture(FRAME_BGR24, size);
    auto const dst = blankPicture(FRAME_BGR_32F, size);
    Operation operation = conversion("BGR24 to BGR_32F", src, dst);
#ifdef OX_PEER_LIBYUV
    operation.peers.push_back({"libyuv", [=] {
                                   libyuv::ByteToFloat(src->planeData(0), floatsOf(*dst), 1.0F,
                                                       static_cast<int>(pixelBytes(*src)));
                               }});
#endif
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat to = matOf(*dst, CV_32FC3);
                                   matOf(*src, CV_8UC3).convertTo(to, CV_32F);
                               }});
#endif
    return operation;
}

Operation floatsToBytes(Size size) {
    auto const src = randomPicture(FRAME_BGR_32F, size);
    auto const dst = blankPicture(FRAME_BGR24, size);
    Operation operation = conversion("BGR_32F to BGR24", src, dst);
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat to = matOf(*dst, CV_8UC3);
                                   matOf(*src, CV_32FC3).convertTo(to, CV_8U);
                               }});
#endif
    return operation;
}

Operation addConstant(Size size) {
    auto const frame = randomPicture(FRAME_BGR_32F, size);
    Operation operation = arithmetic(
        "add to BGR_32F", frame,
        [](ICvBackend& backend, Frame& floats) { backend.add(floats, 0.25F, Rect{}); },
        [](float before) { return before + 0.25F; });
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat picture = matOf(*frame, CV_32FC3);
                                   cv::add(picture, cv::Scalar::all(0.25), picture);
                               }});
#endif
    return operation;
}

Operation multiply(Size size) {
    auto const frame = randomPicture(FRAME_BGR_32F, size);
    Operation operation = arithmetic(
        "mul of BGR_32F", frame,
        [](ICvBackend& backend, Frame& floats) { backend.mul(floats, -1.0F, Rect{}); },
        [](float before) { return -before; });
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat picture = matOf(*frame, CV_32FC3);
                                   cv::multiply(picture, cv::Scalar::all(-1.0), picture);
                               }});
#endif
    return operation;
}

#ifdef OX_PEER_ZIMG
/// Between single and half precision, on one plane.
Contestant zimgHalves(std::shared_ptr<Frame> const& src, std::shared_ptr<Frame> const& dst,
                      zimg_pixel_type_e from, zimg_pixel_type_e to) {
    zimg_image_format src_format;
    zimg_image_format_default(&src_format, ZIMG_API_VERSION);
    src_format.width = static_cast<unsigned>(src->width());
    src_format.height = static_cast<unsigned>(src->height());
    src_format.color_family = ZIMG_COLOR_GREY;
    src_format.pixel_type = from;
    zimg_image_format dst_format = src_format;
    dst_format.pixel_type = to;
    zimg_graph_builder_params parameters;
    zimg_graph_builder_params_default(&parameters, ZIMG_API_VERSION);
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
                input.plane[0] = {src->planeData(0), strideOf(*src, 0), ZIMG_BUFFER_MAX};
                output.plane[0] = {dst->planeData(0), strideOf(*dst, 0), ZIMG_BUFFER_MAX};
                auto const address = reinterpret_cast<std::uintptr_t>(scratch->data());
                void* const aligned = scratch->data() + (64 - address % 64) % 64;
                zimg_filter_graph_process(graph.get(), &input, &output, aligned, nullptr, nullptr,
                                          nullptr, nullptr);
            }};
}
#endif

std::uint16_t* halvesOf(Frame const& frame) {
    return reinterpret_cast<std::uint16_t*>(frame.planeData(0));
}

/// A plane of floats of the size, and one of halves.
Operation floatsToHalves(Size size) {
    auto const src = randomPicture(FRAME_GRAY_32F, size);
    auto const dst = blankPicture(FRAME_C1_16U, size);
    Operation operation{
        "floats to halves",
        Family::Copy,
        pixelBytes(*src) + pixelBytes(*dst),
        {{vectorRoad, [=] { convertFp32ToFp16(floatsOf(*src), samplesOf(*src), halvesOf(*dst)); },
          [=] {
              float back[4];
              convertFp16ToFp32(halvesOf(*dst), 4, back);
              return std::abs(back[3] - floatsOf(*src)[3]) < 0.25F;
          }}},
        {}};
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat to = matOf(*dst, CV_16SC1);
                                   cv::convertFp16(matOf(*src, CV_32FC1), to);
                               }});
#endif
#ifdef OX_PEER_ZIMG
    operation.peers.push_back(zimgHalves(src, dst, ZIMG_PIXEL_FLOAT, ZIMG_PIXEL_HALF));
#endif
    return operation;
}

Operation halvesToFloats(Size size) {
    auto const src = blankPicture(FRAME_C1_16U, size);
    auto const dst = blankPicture(FRAME_GRAY_32F, size);
    auto const numbers = randomPicture(FRAME_GRAY_32F, size);
    convertFp32ToFp16(floatsOf(*numbers), samplesOf(*numbers), halvesOf(*src));
    Operation operation{
        "halves to floats",
        Family::Copy,
        pixelBytes(*src) + pixelBytes(*dst),
        {{vectorRoad, [=] { convertFp16ToFp32(halvesOf(*src), samplesOf(*dst), floatsOf(*dst)); },
          [=] { return std::abs(floatsOf(*dst)[3] - floatsOf(*numbers)[3]) < 0.25F; }}},
        {}};
#ifdef OX_PEER_OPENCV
    operation.peers.push_back({"opencv", [=] {
                                   cv::Mat to = matOf(*dst, CV_32FC1);
                                   cv::convertFp16(matOf(*src, CV_16SC1), to);
                               }});
#endif
#ifdef OX_PEER_ZIMG
    operation.peers.push_back(zimgHalves(src, dst, ZIMG_PIXEL_HALF, ZIMG_PIXEL_FLOAT));
#endif
    return operation;
}

}  // namespace

std::vector<Operation> floatOperations(Size size) {
    return {bytesToFloats(size), floatsToBytes(size),  addConstant(size),
            multiply(size),      floatsToHalves(size), halvesToFloats(size)};
}

}  // namespace ox::benchmarks
