// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "camera_peers.h"

#include "peers.h"

#ifdef OX_PEER_OPENCV
#include <opencv2/core.hpp>

#include <array>
#include <memory>
#endif

namespace ox::benchmarks {

#ifdef OX_PEER_OPENCV

namespace {

/// The plane of a frame, narrowed to a rectangle of the frame.
cv::Mat planeOf(Frame const& frame, int plane, Rect rect) {
    FramePlane const& p = frame.layout().plane[plane];
    int const x_step = frame.width() / p.width;
    int const y_step = frame.height() / p.height;
    cv::Mat const whole(p.height, p.width, CV_MAKETYPE(CV_8U, p.channels), frame.planeData(plane),
                        static_cast<std::size_t>(p.stride));
    return whole(
        cv::Rect(rect.x / x_step, rect.y / y_step, rect.width / x_step, rect.height / y_step));
}

Rect wholeOf(Frame const& frame) {
    return {0, 0, frame.width(), frame.height()};
}

/// The picture as packed bytes in R,G,B, or in B,G,R where a later step can do without the swap;
/// and the steps from there, which are the same for all.
class PackedPicture {
  public:
    explicit PackedPicture(CameraTask const& task)
        : _task(task), _rgb(task.recipe.height, task.recipe.width, CV_8UC3) {
        int const sizes[]{3, task.recipe.height, task.recipe.width};
        bool const halves = task.recipe.element == TENSOR_FLOAT_16;
        _tensor.create(3, sizes, halves ? CV_16SC1 : CV_32FC1);
    }

    bool isPacked() const { return _task.recipe.element == TENSOR_UINT_8; }
    CameraTask const& task() const { return _task; }

    cv::Mat inner() {
        Rect const r = _task.mapping.inner;
        return _rgb(cv::Rect(r.x, r.y, r.width, r.height));
    }

    /// Bars, planes and numbers.
    void finish(bool blue_first) {
        Rect const r = _task.mapping.inner;
        cv::Scalar const bars(_task.recipe.bars[0], _task.recipe.bars[1], _task.recipe.bars[2]);
        if (r.y > 0) {
            _rgb.rowRange(0, r.y).setTo(bars);
            _rgb.rowRange(r.y + r.height, _rgb.rows).setTo(bars);
        }
        if (isPacked()) {
            return;
        }
        cv::split(_rgb, _planes.data());
        for (int c = 0; c < 3; ++c) {
            auto const from = static_cast<std::size_t>(blue_first ? 2 - c : c);
            auto const channel = static_cast<std::size_t>(c);
            double const scale = double{_task.recipe.scale[channel]};
            double const offset = -double{_task.recipe.mean[channel]} * scale;
            bool const halves = _task.recipe.element == TENSOR_FLOAT_16;
            cv::Mat plane(_rgb.rows, _rgb.cols, halves ? CV_16SC1 : CV_32FC1, _tensor.ptr(c));
            _planes[from].convertTo(halves ? _floats : plane, CV_32F, scale, offset);
            if (halves) {
                cv::convertFp16(_floats, plane);
            }
        }
    }

  private:
    CameraTask _task;
    cv::Mat _rgb;
    std::array<cv::Mat, 3> _planes;
    cv::Mat _floats;
    cv::Mat _tensor;
};

int opencvFilter(TensorRecipe const& recipe) {
    return recipe.method == TENSOR_METHOD_AREA ? cv::INTER_AREA : cv::INTER_LINEAR;
}

Contestant opencvChain(CameraTask const& task) {
    auto const picture = std::make_shared<PackedPicture>(task);
    Rect const read = task.mapping.source;
    Size const inner{task.mapping.inner.width, task.mapping.inner.height};
    int const filter = opencvFilter(task.recipe);
    Picture const src = task.src;
    if (src->format() == FRAME_NV12 || src->format() == FRAME_I420) {
        Picture const small = blankPicture(src->format(), inner);
        int const code =
            src->format() == FRAME_NV12 ? cv::COLOR_YUV2RGB_NV12 : cv::COLOR_YUV2RGB_I420;
        return {"opencv", [=] {
                    for (int i = 0; i < src->layout().planeCount; ++i) {
                        cv::Mat to = planeOf(*small, i, wholeOf(*small));
                        cv::resize(planeOf(*src, i, read), to, to.size(), 0, 0, filter);
                    }
                    cv::Mat to = picture->inner();
                    cv::cvtColor(matOf(*small, CV_8UC1, small->height() * 3 / 2), to, code);
                    picture->finish(false);
                }};
    }
    auto const colours = std::make_shared<cv::Mat>();
    bool const packed = src->format() == FRAME_YUYV;
    return {"opencv", [=] {
                cv::Mat const whole(src->height(), src->width(), packed ? CV_8UC2 : CV_8UC3,
                                    src->planeData(0), static_cast<std::size_t>(strideOf(*src, 0)));
                cv::Mat from = whole(cv::Rect(read.x, read.y, read.width, read.height));
                cv::Mat to = picture->inner();
                if (packed) {
                    cv::cvtColor(from, *colours, cv::COLOR_YUV2RGB_YUYV);
                    from = *colours;
                }
                cv::resize(from, to, to.size(), 0, 0, filter);
                bool const blue_first = !packed;
                if (blue_first && picture->isPacked()) {
                    cv::cvtColor(to, to, cv::COLOR_BGR2RGB);
                }
                picture->finish(blue_first);
            }};
}

#ifdef OX_PEER_LIBYUV

void scalePlane(Frame const& src, int plane, Rect read, Frame& dst, libyuv::FilterMode filter) {
    cv::Mat const from = planeOf(src, plane, read);
    cv::Mat to = planeOf(dst, plane, wholeOf(dst));
    libyuv::ScalePlane(from.data, static_cast<int>(from.step), from.cols, from.rows, to.data,
                       static_cast<int>(to.step), to.cols, to.rows, filter);
}

void scaleSemiPlanar(Frame const& src, Rect read, Frame& dst, libyuv::FilterMode filter) {
    cv::Mat const y = planeOf(src, 0, read);
    cv::Mat const uv = planeOf(src, 1, read);
    libyuv::NV12Scale(y.data, static_cast<int>(y.step), uv.data, static_cast<int>(uv.step), y.cols,
                      y.rows, dst.planeData(0), strideOf(dst, 0), dst.planeData(1),
                      strideOf(dst, 1), dst.width(), dst.height(), filter);
}

/// The picture's planes at half the width, as libyuv scales YUYV.
void unpackYuyv(Frame const& src, Rect read, Frame& planes) {
    libyuv::YUY2ToI422(src.planeData(0) + read.y * strideOf(src, 0) + 2 * read.x, strideOf(src, 0),
                       planes.planeData(0), strideOf(planes, 0), planes.planeData(2),
                       strideOf(planes, 2), planes.planeData(1), strideOf(planes, 1), read.width,
                       read.height);
}

Contestant libyuvChain(CameraTask const& task) {
    auto const picture = std::make_shared<PackedPicture>(task);
    Rect const read = task.mapping.source;
    Size const inner{task.mapping.inner.width, task.mapping.inner.height};
    Picture const src = task.src;
    auto const filter =
        task.recipe.method == TENSOR_METHOD_AREA ? libyuv::kFilterBox : libyuv::kFilterBilinear;
    if (src->format() == FRAME_BGR24) {
        auto const argb = std::make_shared<cv::Mat>(read.height, read.width, CV_8UC4);
        auto const small = std::make_shared<cv::Mat>(inner.height, inner.width, CV_8UC4);
        return {"libyuv", [=] {
                    libyuv::RGB24ToARGB(src->planeData(0) + read.y * strideOf(*src, 0) + 3 * read.x,
                                        strideOf(*src, 0), argb->data, static_cast<int>(argb->step),
                                        argb->cols, argb->rows);
                    libyuv::ARGBScale(argb->data, static_cast<int>(argb->step), argb->cols,
                                      argb->rows, small->data, static_cast<int>(small->step),
                                      small->cols, small->rows, filter);
                    cv::Mat const to = picture->inner();
                    libyuv::ARGBToRAW(small->data, static_cast<int>(small->step), to.data,
                                      static_cast<int>(to.step), to.cols, to.rows);
                    picture->finish(false);
                }};
    }
    bool const packed = src->format() == FRAME_YUYV;
    FrameFormat const format = packed ? FRAME_YV16 : src->format();
    Picture const small = blankPicture(format, inner);
    Picture const planes = packed ? blankPicture(format, {read.width, read.height}) : src;
    return {"libyuv", [=] {
                cv::Mat const to = picture->inner();
                auto const stride = static_cast<int>(to.step);
                Frame const& s = *small;
                if (format == FRAME_NV12) {
                    scaleSemiPlanar(*src, read, *small, filter);
                    libyuv::NV12ToRAW(s.planeData(0), strideOf(s, 0), s.planeData(1),
                                      strideOf(s, 1), to.data, stride, to.cols, to.rows);
                    return picture->finish(false);
                }
                if (packed) {
                    unpackYuyv(*src, read, *planes);
                }
                for (int i = 0; i < 3; ++i) {
                    scalePlane(*planes, i, packed ? wholeOf(*planes) : read, *small, filter);
                }
                auto* const convert = packed ? &libyuv::I422ToRAW : &libyuv::I420ToRAW;
                int const u = packed ? 2 : 1;
                convert(s.planeData(0), strideOf(s, 0), s.planeData(u), strideOf(s, u),
                        s.planeData(3 - u), strideOf(s, 3 - u), to.data, stride, to.cols, to.rows);
                picture->finish(false);
            }};
}

#endif

#ifdef OX_PEER_SWSCALE

AVPixelFormat swscaleFormat(FrameFormat format) {
    switch (format) {
        case FRAME_NV12:
            return AV_PIX_FMT_NV12;
        case FRAME_I420:
            return AV_PIX_FMT_YUV420P;
        case FRAME_YUYV:
            return AV_PIX_FMT_YUYV422;
        default:
            return AV_PIX_FMT_BGR24;
    }
}

Contestant swscaleChain(CameraTask const& task) {
    auto const picture = std::make_shared<PackedPicture>(task);
    Rect const read = task.mapping.source;
    Picture const src = task.src;
    int const filter = task.recipe.method == TENSOR_METHOD_AREA ? SWS_AREA : SWS_FAST_BILINEAR;
    std::shared_ptr<SwsContext> const context(
        sws_getContext(read.width, read.height, swscaleFormat(src->format()),
                       task.mapping.inner.width, task.mapping.inner.height, AV_PIX_FMT_RGB24,
                       filter, nullptr, nullptr, nullptr),
        sws_freeContext);
    return {"swscale", [=] {
                std::uint8_t* from[4]{};
                int from_strides[4]{};
                for (int i = 0; i < src->layout().planeCount; ++i) {
                    FramePlane const& p = src->layout().plane[i];
                    int const x_step = src->width() / p.width;
                    int const y_step = src->height() / p.height;
                    int const pixel_bytes = static_cast<int>(p.rowBytes) / p.width;
                    from[i] = src->planeData(i) + read.y / y_step * p.stride +
                              read.x / x_step * pixel_bytes;
                    from_strides[i] = strideOf(*src, i);
                }
                cv::Mat const inner = picture->inner();
                std::uint8_t* const to[4]{inner.data};
                int const to_strides[4]{static_cast<int>(inner.step)};
                sws_scale(context.get(), from, from_strides, 0, read.height, to, to_strides);
                picture->finish(false);
            }};
}

#endif

}  // namespace

std::vector<Contestant> cameraPeers(CameraTask const& task) {
    std::vector<Contestant> peers{opencvChain(task)};
#ifdef OX_PEER_LIBYUV
    peers.push_back(libyuvChain(task));
#endif
#ifdef OX_PEER_SWSCALE
    peers.push_back(swscaleChain(task));
#endif
    return peers;
}

#else

std::vector<Contestant> cameraPeers(CameraTask const& /*task*/) {
    return {};
}

#endif

}  // namespace ox::benchmarks
