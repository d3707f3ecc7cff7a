// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <utility>

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

// Thirds, halves, odd ratios, larger, twice as large, as large, and a single pixel.
constexpr Scaling scalings[]{{{333, 18}, {111, 6}},  {{333, 18}, {160, 9}}, {{333, 18}, {500, 40}},
                             {{333, 18}, {333, 18}}, {{333, 18}, {1, 1}},   {{70, 37}, {23, 11}},
                             {{70, 37}, {64, 64}},   {{70, 37}, {140, 74}}, {{70, 37}, {35, 37}},
                             {{5, 3}, {7, 9}},       {{5, 3}, {2, 1}},      {{1, 1}, {4, 4}}};

char const* const methods[]{"nearest", "bilinear", "area"};

// An entry for each format, of frames of all pairs of sizes.
// @param scale scales a frame into another
template <class Scale>
void digestFormats(Table& table, std::string const& family, Scale scale) {
    for (FrameFormat const format : formats()) {
        table.add(family + " " + nameOf(format), digestScaled(format, scalings, scale));
    }
}

template <class Link, class... Target>
void drain(Frame const& src, Frame& dst, Target... target) {
    Link link;
    link.reuse(src, target...);
    produceFrame(link, dst);
}

// The same by a link over a producer.
template <class Link, class... Target>
void drainChain(Frame const& src, Frame& dst, Target... target) {
    RowCopier copier;
    copier.reuse(src);
    Link link;
    link.reuse(copier, target...);
    produceFrame(link, dst);
}

void digestLinks(Table& table) {
    digestFormats(table, "link nearest", [](Frame const& src, Frame& dst) {
        drain<ScalerNearestNeighbor>(src, dst, dst.size());
    });
    digestFormats(table, "link bilinear", [](Frame const& src, Frame& dst) {
        drain<ScalerBilinearXY>(src, dst, dst.size());
    });
    digestFormats(table, "link bilinear across", [](Frame const& src, Frame& dst) {
        dst.reuse(src.format(), {dst.width(), src.height()}, DeviceContext(), 0);
        dst.setZero();
        drain<ScalerBilinearX>(src, dst, dst.width());
    });
    digestFormats(table, "link bilinear down", [](Frame const& src, Frame& dst) {
        dst.reuse(src.format(), {src.width(), dst.height()}, DeviceContext(), 0);
        dst.setZero();
        drain<ScalerBilinearY>(src, dst, dst.height());
    });
    for (ScalerPrecision const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        std::string const bits = " " + std::to_string(precision) + " bits";
        digestFormats(table, "link area across" + bits, [&](Frame const& src, Frame& dst) {
            dst.reuse(src.format(), {dst.width(), src.height()}, DeviceContext(), 0);
            dst.setZero();
            drain<ScalerAreaX>(src, dst, dst.width(), precision);
        });
        digestFormats(table, "link area down" + bits, [&](Frame const& src, Frame& dst) {
            dst.reuse(src.format(), {src.width(), dst.height()}, DeviceContext(), 0);
            dst.setZero();
            drain<ScalerAreaY>(src, dst, dst.height(), precision);
        });
        digestFormats(table, "link area" + bits, [&](Frame const& src, Frame& dst) {
            drain<scaleAreaXY>(src, dst, dst.size(), precision);
        });
    }
    for (ScaleMethod const method : {OX_SCALE_NEAREST, OX_SCALE_BILINEAR, OX_SCALE_AREA}) {
        digestFormats(table, std::string("chain ") + methods[method],
                      [&](Frame const& src, Frame& dst) {
                          drainChain<Scaler>(src, dst, dst.size(), method);
                      });
    }
}

void digestBackendScalings(Table& table, std::string const& name, ICvBackend& backend) {
    for (ResizeMethod const method : {ResizeNearestNeighbour, ResizeBilinear, ResizeArea}) {
        std::string const end = std::string(" ") + methods[method];
        backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
        digestFormats(table, name + " resize" + end, [&](Frame const& src, Frame& dst) {
            backend.resize(src, dst, emptyRoi(), emptyRoi());
        });
        digestFormats(table, name + " resize of regions" + end, [&](Frame const& src, Frame& dst) {
            Rect const from{0, 0, src.width() - src.width() / 4, src.height()};
            Rect const to{dst.width() / 4 & ~1, 0, dst.width() - (dst.width() / 4 & ~1),
                          dst.height()};
            backend.resize(src, dst, from, to);
        });
        digestFormats(table, name + " convert to BGR24" + end, [&](Frame const& src, Frame& dst) {
            dst.reuse(FRAME_BGR24, dst.size(), DeviceContext(), 0);
            dst.setZero();
            backend.convert(src, dst, emptyRoi());
        });
    }
}

}  // namespace

void digestScalings(Table& table) {
    digestLinks(table);
    CvBackendBase base;
    digestBackendScalings(table, "base", base);
    CvBackendSimd simd;
    digestBackendScalings(table, "simd", simd);
    for (FrameFormat const format : {FRAME_YUYV, FRAME_UYVY}) {
        table.add("helper resize " + nameOf(format),
                  digestScaled(format, scalings, [&](Frame const& src, Frame& dst) {
                      resizePacked422(simd, src, dst);
                  }));
    }
}

}  // namespace ox::test
