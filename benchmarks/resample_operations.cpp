// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cmath>
#include <numbers>
#include <utility>

#include "operation.h"
#include "peers.h"
#include "pictures.h"
#include "roads.h"

namespace ox::benchmarks {

namespace {

Family familyOf(FrameFormat format, int method) {
    switch (method) {
        case ResizeNearestNeighbour:
            return Family::Nearest;
        case ResizeArea:
            return Family::Area;
        default:
            return format == FRAME_GRAY_32F ? Family::FloatBilinear : Family::Bilinear;
    }
}

Operation operationOf(std::string name, Family family, Picture const& src, Picture const& dst,
                      CvProperty property, int method, Work const& work) {
    auto const by_method = [=](ICvBackend& backend, Frame const& from, Frame& to) {
        backend.setIntProperty(property, method);
        work(backend, from, to);
    };
    return {std::move(name),
            family,
            pixelBytes(*src) + pixelBytes(*dst),
            roadsOf(src, dst, by_method),
            {}};
}

char const* nameOf(int method) {
    constexpr char const* names[] = {"nearest", "bilinear", "area"};
    return names[method];
}

#ifdef OX_PEER_OPENCV

cv::Mat planeMat(Frame const& frame, int plane) {
    FramePlane const& p = frame.layout().plane[plane];
    int const depth = p.bits == 32 ? CV_32F : CV_8U;
    return {p.height, p.width, CV_MAKETYPE(depth, p.channels), frame.planeData(plane),
            static_cast<std::size_t>(p.stride)};
}

int opencvMethod(int method) {
    constexpr int methods[] = {cv::INTER_NEAREST, cv::INTER_LINEAR, cv::INTER_AREA};
    return methods[method];
}

void addOpencvResize(Operation& operation, std::shared_ptr<Frame> const& src,
                     std::shared_ptr<Frame> const& dst, int method) {
    operation.peers.push_back({"opencv", [=] {
                                   for (int i = 0; i < src->layout().planeCount; ++i) {
                                       cv::Mat to = planeMat(*dst, i);
                                       cv::resize(planeMat(*src, i), to, to.size(), 0, 0,
                                                  opencvMethod(method));
                                   }
                               }});
}

#endif

#ifdef OX_PEER_LIBYUV

void addLibyuvResize(Operation& operation, std::shared_ptr<Frame> const& src,
                     std::shared_ptr<Frame> const& dst, int method) {
    constexpr libyuv::FilterMode modes[] = {libyuv::kFilterNone, libyuv::kFilterBilinear,
                                            libyuv::kFilterBox};
    libyuv::FilterMode const mode = modes[method];
    if (src->format() == FRAME_GRAY8) {
        operation.peers.push_back({"libyuv", [=] {
                                       libyuv::ScalePlane(src->planeData(0), strideOf(*src, 0),
                                                          src->width(), src->height(),
                                                          dst->planeData(0), strideOf(*dst, 0),
                                                          dst->width(), dst->height(), mode);
                                   }});
    }
    if (src->format() == FRAME_NV12) {
        operation.peers.push_back({"libyuv", [=] {
                                       libyuv::NV12Scale(
                                           src->planeData(0), strideOf(*src, 0), src->planeData(1),
                                           strideOf(*src, 1), src->width(), src->height(),
                                           dst->planeData(0), strideOf(*dst, 0), dst->planeData(1),
                                           strideOf(*dst, 1), dst->width(), dst->height(), mode);
                                   }});
    }
}

#endif

Operation resizing(FrameFormat format, Size from, Size to, int method) {
    auto const src = randomPicture(format, from);
    auto const dst = blankPicture(format, to);
    std::string const name = std::string(toString(format) + std::string("FRAME_").size()) + " " +
                             nameOf(method) + " to " + std::to_string(to.width) + "x" +
                             std::to_string(to.height);
    Operation operation = operationOf(
        name, familyOf(format, method), src, dst, PropertyResizeMethod, method,
        [](ICvBackend& backend, auto& s, auto& d) { backend.resize(s, d, Rect{}, Rect{}); });
#ifdef OX_PEER_OPENCV
    addOpencvResize(operation, src, dst, method);
#endif
#ifdef OX_PEER_LIBYUV
    addLibyuvResize(operation, src, dst, method);
#endif
#ifdef OX_PEER_SWSCALE
    constexpr int methods[] = {SWS_POINT, SWS_FAST_BILINEAR, SWS_AREA};
    if (format == FRAME_GRAY8 || format == FRAME_BGR24 || format == FRAME_NV12) {
        AVPixelFormat const av = format == FRAME_GRAY8   ? AV_PIX_FMT_GRAY8
                                 : format == FRAME_BGR24 ? AV_PIX_FMT_BGR24
                                                         : AV_PIX_FMT_NV12;
        operation.peers.push_back(swscale(src, av, dst, av, methods[method]));
    }
#endif
    return operation;
}

/// Turned by ten degrees about the centre.
Operation turning(FrameFormat format, Size size, int method) {
    auto const src = randomPicture(format, size);
    auto const dst = blankPicture(format, size);
    double const angle = 10.0 * std::numbers::pi / 180.0;
    auto const c = static_cast<float>(std::cos(angle));
    auto const s = static_cast<float>(std::sin(angle));
    float const x = static_cast<float>(size.width - 1) / 2.0F;
    float const y = static_cast<float>(size.height - 1) / 2.0F;
    struct Matrix {
        float rows[2][3];
    };
    Matrix const matrix{{{c, s, x - c * x - s * y}, {-s, c, y + s * x - c * y}}};
    std::string const name =
        std::string(toString(format) + std::string("FRAME_").size()) + " turned, " + nameOf(method);
    Operation operation = operationOf(name, Family::Warp, src, dst, PropertyWarpMethod, method,
                                      [=](ICvBackend& backend, auto& from, auto& to) {
                                          backend.warpAffine(from, to, matrix.rows, Rect{}, false);
                                      });
#ifdef OX_PEER_OPENCV
    operation.peers.push_back(
        {"opencv", [=] {
             cv::Mat to = planeMat(*dst, 0);
             cv::Mat forward(2, 3, CV_32F, const_cast<float(*)[3]>(matrix.rows));
             cv::warpAffine(planeMat(*src, 0), to, forward, to.size(), opencvMethod(method));
         }});
#endif
    return operation;
}

/// In the ratios that full HD has to usual sizes. Of a frame that isn't 16:9 what a network takes,
/// and of a small one that alone.
std::vector<Size> targetsOf(Size size) {
    bool const is_wide = size.width * 9 == size.height * 16;
    if (!is_wide && size.width <= 320) {
        return {{224, 224}};
    }
    Size const square =
        is_wide ? Size{300 * size.width / 1920, 300 * size.height / 1080} : Size{224, 224};
    return {{size.width * 2 / 3, size.height * 2 / 3},
            {size.width / 3, size.height / 3},
            square,
            {size.width * 2, size.height * 2}};
}

}  // namespace

std::vector<Operation> resampleOperations(Size size) {
    std::vector<Operation> operations;
    for (Size const to : targetsOf(size)) {
        for (int const method : {ResizeNearestNeighbour, ResizeBilinear, ResizeArea}) {
            for (FrameFormat const format : {FRAME_GRAY8, FRAME_BGR24, FRAME_NV12}) {
                operations.push_back(resizing(format, size, to, method));
            }
        }
        operations.push_back(resizing(FRAME_GRAY_32F, size, to, ResizeBilinear));
    }
    for (int const method : {ResizeNearestNeighbour, ResizeBilinear}) {
        for (FrameFormat const format : {FRAME_GRAY8, FRAME_BGR24}) {
            operations.push_back(turning(format, size, method));
        }
    }
    return operations;
}

}  // namespace ox::benchmarks
