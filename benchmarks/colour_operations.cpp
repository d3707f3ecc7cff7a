// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <utility>

#include "operation.h"
#include "peers.h"
#include "pictures.h"
#include "roads.h"

namespace ox::benchmarks {

#ifdef OX_PEER_SWSCALE
Contestant swscale(std::shared_ptr<Frame> const& src, AVPixelFormat src_format,
                   std::shared_ptr<Frame> const& dst, AVPixelFormat dst_format, int flags) {
    std::shared_ptr<SwsContext> const context(
        sws_getContext(src->width(), src->height(), src_format, dst->width(), dst->height(),
                       dst_format, flags, nullptr, nullptr, nullptr),
        sws_freeContext);
    return {"swscale", [=] {
                std::uint8_t* from[4];
                std::uint8_t* to[4];
                int from_strides[4];
                int to_strides[4];
                for (int i = 0; i < 4; ++i) {
                    from[i] = src->planeData(i);
                    to[i] = dst->planeData(i);
                    from_strides[i] = strideOf(*src, i);
                    to_strides[i] = strideOf(*dst, i);
                }
                sws_scale(context.get(), from, from_strides, 0, src->height(), to, to_strides);
            }};
}
#endif

namespace {

/// A conversion, with the frames that all contestants share.
struct Conversion {
    Picture src;
    Picture dst;
    Operation operation;

    Conversion(char const* name, FrameFormat src_format, FrameFormat dst_format, Size size,
               Rect roi = {}, Family family = Family::Colour)
        : src(randomPicture(src_format, size)), dst(blankPicture(dst_format, size)) {
        operation.name = name;
        operation.family = family;
        operation.bytes = pixelBytes(*src) + pixelBytes(*dst);
        operation.roads = roadsOf(src, dst, [roi](ICvBackend& backend, auto& from, auto& to) {
            backend.colorCvt(from, to, roi);
        });
    }

    void add(char const* peer, void (*run)(Frame const& src, Frame& dst)) {
        operation.peers.push_back({peer, [src = src, dst = dst, run] { run(*src, *dst); }});
    }

#ifdef OX_PEER_OPENCV
    void addOpenCv(int code, int src_type, int dst_type) {
        int const src_rows = rowsOf(*src, src_type);
        int const dst_rows = rowsOf(*dst, dst_type);
        operation.peers.push_back({"opencv", [=, src = src, dst = dst] {
                                       cv::Mat to = matOf(*dst, dst_type, dst_rows);
                                       cv::cvtColor(matOf(*src, src_type, src_rows), to, code);
                                   }});
    }

    /// 4:2:0 frames are one plane of bytes with half as many rows again.
    static int rowsOf(Frame const& frame, int type) {
        bool const all_planes = type == CV_8UC1 && frame.layout().planeCount > 1;
        return all_planes ? frame.height() * 3 / 2 : frame.height();
    }
#endif

#ifdef OX_PEER_SWSCALE
    void addSwscale(AVPixelFormat from, AVPixelFormat to) {
        operation.peers.push_back(swscale(src, from, dst, to, SWS_POINT));
    }
#endif
};

// One function per operation: ours by its formats, and what each peer calls it.

Operation nv12ToBgr(Size size) {
    Conversion c("NV12 to BGR24", FRAME_NV12, FRAME_BGR24, size, {0, 0, size.width, size.height});
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::NV12ToRGB24(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                            d.planeData(0), strideOf(d, 0), s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_YUV2BGR_NV12, CV_8UC1, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_NV12, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

/// The same peers beside the conversion with coefficients of its own.
Operation nv12ToBgrDirectly(Size size) {
    Operation operation = nv12ToBgr(size);
    Conversion const direct("NV12 to BGR24, whole frame", FRAME_NV12, FRAME_BGR24, size);
    operation.name = direct.operation.name;
    operation.roads = direct.operation.roads;
    return operation;
}

Operation nv12ToRgb(Size size) {
    Conversion c("NV12 to RGB24", FRAME_NV12, FRAME_RGB24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::NV12ToRAW(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                          d.planeData(0), strideOf(d, 0), s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_YUV2RGB_NV12, CV_8UC1, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_NV12, AV_PIX_FMT_RGB24);
#endif
    return c.operation;
}

Operation i420ToBgr(Size size) {
    Conversion c("I420 to BGR24", FRAME_I420, FRAME_BGR24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I420ToRGB24(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                            s.planeData(2), strideOf(s, 2), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_YUV2BGR_I420, CV_8UC1, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_YUV420P, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

Operation i420ToRgb(Size size) {
    Conversion c("I420 to RGB24", FRAME_I420, FRAME_RGB24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I420ToRAW(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                          s.planeData(2), strideOf(s, 2), d.planeData(0), strideOf(d, 0), s.width(),
                          s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_YUV2RGB_I420, CV_8UC1, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_YUV420P, AV_PIX_FMT_RGB24);
#endif
    return c.operation;
}

Operation bgrToI420(Size size) {
    Conversion c("BGR24 to I420", FRAME_BGR24, FRAME_I420, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::RGB24ToI420(s.planeData(0), strideOf(s, 0), d.planeData(0), strideOf(d, 0),
                            d.planeData(1), strideOf(d, 1), d.planeData(2), strideOf(d, 2),
                            s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_BGR2YUV_I420, CV_8UC3, CV_8UC1);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_BGR24, AV_PIX_FMT_YUV420P);
#endif
    return c.operation;
}

Operation bgrToNv12(Size size) {
    Conversion c("BGR24 to NV12", FRAME_BGR24, FRAME_NV12, size);
#ifdef OX_PEER_LIBYUV
    auto const planes = blankPicture(FRAME_I420, size);
    c.operation.peers.push_back(
        {"libyuv", [s = c.src, d = c.dst, planes] {
             // Row pairs, so that the planes in between stay in the cache.
             for (int y = 0; y < s->height(); y += 2) {
                 unsigned char* const u = planes->planeData(1) + y / 2 * strideOf(*planes, 1);
                 unsigned char* const v = planes->planeData(2) + y / 2 * strideOf(*planes, 2);
                 libyuv::RGB24ToI420(s->planeData(0) + y * strideOf(*s, 0), strideOf(*s, 0),
                                     d->planeData(0) + y * strideOf(*d, 0), strideOf(*d, 0), u,
                                     strideOf(*planes, 1), v, strideOf(*planes, 2), s->width(), 2);
                 libyuv::MergeUVPlane(u, strideOf(*planes, 1), v, strideOf(*planes, 2),
                                      d->planeData(1) + y / 2 * strideOf(*d, 1), strideOf(*d, 1),
                                      s->width() / 2, 1);
             }
         }});
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_BGR24, AV_PIX_FMT_NV12);
#endif
    return c.operation;
}

Operation bgrToGray(Size size) {
    Conversion c("BGR24 to GRAY8", FRAME_BGR24, FRAME_GRAY8, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::RGB24ToJ400(s.planeData(0), strideOf(s, 0), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_BGR2GRAY, CV_8UC3, CV_8UC1);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_BGR24, AV_PIX_FMT_GRAY8);
#endif
    return c.operation;
}

Operation grayToBgr(Size size) {
    Conversion c("GRAY8 to BGR24", FRAME_GRAY8, FRAME_BGR24, size, {}, Family::Copy);
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_GRAY2BGR, CV_8UC1, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_GRAY8, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

Operation bgrToYuv444(Size size) {
    Conversion c("BGR24 to YUV444_PLANAR", FRAME_BGR24, FRAME_YUV444_PLANAR, size);
#ifdef OX_PEER_LIBYUV
    auto const argb = blankPicture(FRAME_C4_8U, size);
    c.operation.peers.push_back(
        {"libyuv", [s = c.src, d = c.dst, argb] {
             for (int y = 0; y < s->height(); ++y) {
                 libyuv::RGB24ToARGB(s->planeData(0) + y * strideOf(*s, 0), strideOf(*s, 0),
                                     argb->planeData(0), strideOf(*argb, 0), s->width(), 1);
                 libyuv::ARGBToI444(
                     argb->planeData(0), strideOf(*argb, 0), d->planeData(0) + y * strideOf(*d, 0),
                     strideOf(*d, 0), d->planeData(1) + y * strideOf(*d, 1), strideOf(*d, 1),
                     d->planeData(2) + y * strideOf(*d, 2), strideOf(*d, 2), s->width(), 1);
             }
         }});
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_BGR24, AV_PIX_FMT_YUV444P);
#endif
    return c.operation;
}

Operation yuv444ToBgr(Size size) {
    Conversion c("YUV444_PLANAR to BGR24", FRAME_YUV444_PLANAR, FRAME_BGR24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I444ToRGB24(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                            s.planeData(2), strideOf(s, 2), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
    });
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_YUV444P, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

Operation swapRedBlue(Size size) {
    Conversion c("RGB24 to BGR24", FRAME_RGB24, FRAME_BGR24, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::RAWToRGB24(s.planeData(0), strideOf(s, 0), d.planeData(0), strideOf(d, 0),
                           s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_RGB2BGR, CV_8UC3, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_RGB24, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

Operation splitPixels(Size size) {
    Conversion c("BGR24 to BGR_PLANAR", FRAME_BGR24, FRAME_BGR_PLANAR, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::SplitRGBPlane(s.planeData(0), strideOf(s, 0), d.planeData(0), strideOf(d, 0),
                              d.planeData(1), strideOf(d, 1), d.planeData(2), strideOf(d, 2),
                              s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.add("opencv", [](Frame const& s, Frame& d) {
        cv::Mat planes[3];
        for (int i = 0; i < 3; ++i) {
            planes[i] = {d.height(), d.width(), CV_8UC1, d.planeData(i)};
        }
        cv::split(matOf(s, CV_8UC3), planes);
    });
#endif
    return c.operation;
}

Operation mergePixels(Size size) {
    Conversion c("BGR_PLANAR to BGR24", FRAME_BGR_PLANAR, FRAME_BGR24, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::MergeRGBPlane(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                              s.planeData(2), strideOf(s, 2), d.planeData(0), strideOf(d, 0),
                              s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.add("opencv", [](Frame const& s, Frame& d) {
        cv::Mat planes[3];
        for (int i = 0; i < 3; ++i) {
            planes[i] = {s.height(), s.width(), CV_8UC1, s.planeData(i)};
        }
        cv::Mat to = matOf(d, CV_8UC3);
        cv::merge(planes, 3, to);
    });
#endif
    return c.operation;
}

Operation splitChroma(Size size) {
    Conversion c("NV12 to I420", FRAME_NV12, FRAME_I420, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::NV12ToI420(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                           d.planeData(0), strideOf(d, 0), d.planeData(1), strideOf(d, 1),
                           d.planeData(2), strideOf(d, 2), s.width(), s.height());
    });
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_NV12, AV_PIX_FMT_YUV420P);
#endif
    return c.operation;
}

Operation mergeChroma(Size size) {
    Conversion c("I420 to NV12", FRAME_I420, FRAME_NV12, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I420ToNV12(s.planeData(0), strideOf(s, 0), s.planeData(1), strideOf(s, 1),
                           s.planeData(2), strideOf(s, 2), d.planeData(0), strideOf(d, 0),
                           d.planeData(1), strideOf(d, 1), s.width(), s.height());
    });
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_YUV420P, AV_PIX_FMT_NV12);
#endif
    return c.operation;
}

// Pairs that only the pipeline has.

#ifdef OX_PEER_LIBYUV
/// YUYV or UYVY to BGR24, a row at a time by way of ARGB.
void libyuvPackedToBgr(Frame const& s, Frame& d, bool uyvy) {
    std::vector<unsigned char> argb(static_cast<std::size_t>(s.width()) * 4);
    int const argb_stride = static_cast<int>(argb.size());
    auto* const convert = uyvy ? libyuv::UYVYToARGB : libyuv::YUY2ToARGB;
    for (int y = 0; y < s.height(); ++y) {
        convert(s.planeData(0) + y * strideOf(s, 0), strideOf(s, 0), argb.data(), argb_stride,
                s.width(), 1);
        libyuv::ARGBToRGB24(argb.data(), argb_stride, d.planeData(0) + y * strideOf(d, 0),
                            strideOf(d, 0), s.width(), 1);
    }
}
#endif

Operation packedToBgr(Size size, bool uyvy) {
    Conversion c(uyvy ? "UYVY to BGR24" : "YUYV to BGR24", uyvy ? FRAME_UYVY : FRAME_YUYV,
                 FRAME_BGR24, size);
#ifdef OX_PEER_LIBYUV
    c.operation.peers.push_back(
        {"libyuv", [s = c.src, d = c.dst, uyvy] { libyuvPackedToBgr(*s, *d, uyvy); }});
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(uyvy ? cv::COLOR_YUV2BGR_UYVY : cv::COLOR_YUV2BGR_YUYV, CV_8UC2, CV_8UC3);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(uyvy ? AV_PIX_FMT_UYVY422 : AV_PIX_FMT_YUYV422, AV_PIX_FMT_BGR24);
#endif
    return c.operation;
}

Operation packedToGray(Size size, bool uyvy) {
    Conversion c(uyvy ? "UYVY to GRAY8" : "YUYV to GRAY8", uyvy ? FRAME_UYVY : FRAME_YUYV,
                 FRAME_GRAY8, size, {}, Family::Copy);
#ifdef OX_PEER_LIBYUV
    if (!uyvy) {
        c.add("libyuv", [](Frame const& s, Frame& d) {
            libyuv::YUY2ToY(s.planeData(0), strideOf(s, 0), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
        });
    }
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(uyvy ? cv::COLOR_YUV2GRAY_UYVY : cv::COLOR_YUV2GRAY_YUYV, CV_8UC2, CV_8UC1);
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(uyvy ? AV_PIX_FMT_UYVY422 : AV_PIX_FMT_YUYV422, AV_PIX_FMT_GRAY8);
#endif
    return c.operation;
}

Operation yv12ToBgr(Size size) {
    Conversion c("YV12 to BGR24", FRAME_YV12, FRAME_BGR24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I420ToRGB24(s.planeData(0), strideOf(s, 0), s.planeData(2), strideOf(s, 2),
                            s.planeData(1), strideOf(s, 1), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
    });
#endif
#ifdef OX_PEER_OPENCV
    c.addOpenCv(cv::COLOR_YUV2BGR_YV12, CV_8UC1, CV_8UC3);
#endif
    return c.operation;
}

Operation yv16ToBgr(Size size) {
    Conversion c("YV16 to BGR24", FRAME_YV16, FRAME_BGR24, size);
#ifdef OX_PEER_LIBYUV
    c.add("libyuv", [](Frame const& s, Frame& d) {
        libyuv::I422ToRGB24(s.planeData(0), strideOf(s, 0), s.planeData(2), strideOf(s, 2),
                            s.planeData(1), strideOf(s, 1), d.planeData(0), strideOf(d, 0),
                            s.width(), s.height());
    });
#endif
    return c.operation;
}

/// No other library of these has it.
Operation nv16ToBgr(Size size) {
    return Conversion("NV16 to BGR24", FRAME_NV16, FRAME_BGR24, size).operation;
}

Operation bgrToYuyv(Size size) {
    Conversion c("BGR24 to YUYV", FRAME_BGR24, FRAME_YUYV, size);
#ifdef OX_PEER_LIBYUV
    auto const argb = blankPicture(FRAME_C4_8U, {size.width, 1});
    c.operation.peers.push_back({"libyuv", [s = c.src, d = c.dst, argb] {
                                     for (int y = 0; y < s->height(); ++y) {
                                         libyuv::RGB24ToARGB(s->planeData(0) + y * strideOf(*s, 0),
                                                             strideOf(*s, 0), argb->planeData(0),
                                                             strideOf(*argb, 0), s->width(), 1);
                                         libyuv::ARGBToYUY2(argb->planeData(0), strideOf(*argb, 0),
                                                            d->planeData(0) + y * strideOf(*d, 0),
                                                            strideOf(*d, 0), s->width(), 1);
                                     }
                                 }});
#endif
#ifdef OX_PEER_SWSCALE
    c.addSwscale(AV_PIX_FMT_BGR24, AV_PIX_FMT_YUYV422);
#endif
    return c.operation;
}

}  // namespace

std::vector<Operation> colourOperations(Size size) {
    return {nv12ToBgr(size),           nv12ToBgrDirectly(size),  nv12ToRgb(size),
            i420ToBgr(size),           i420ToRgb(size),          bgrToI420(size),
            bgrToNv12(size),           bgrToGray(size),          grayToBgr(size),
            bgrToYuv444(size),         yuv444ToBgr(size),        swapRedBlue(size),
            splitPixels(size),         mergePixels(size),        splitChroma(size),
            mergeChroma(size),         packedToBgr(size, false), packedToBgr(size, true),
            packedToGray(size, false), packedToGray(size, true), yv12ToBgr(size),
            yv16ToBgr(size),           nv16ToBgr(size),          bgrToYuyv(size)};
}

}  // namespace ox::benchmarks
