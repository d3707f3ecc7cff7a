#include "rows/colour/runs.h"

#include <cstring>

#include "rows/colour/channels.h"

namespace ox::rows {

namespace {

void splitPairs(std::uint8_t const* pairs, std::size_t count, std::uint8_t* first,
                std::uint8_t* second) {
    std::uint8_t* const planes[]{first, second};
    splitChannels(pairs, count, 2, planes);
}

void mergePairs(std::uint8_t const* first, std::uint8_t const* second, std::size_t count,
                std::uint8_t* pairs) {
    std::uint8_t const* const planes[]{first, second};
    mergeChannels(planes, count, 2, pairs);
}

bool hasPairs(YuvLayout layout) {
    return layout == YuvLayout::PairsUv || layout == YuvLayout::PairsVu;
}

void gatherPairs(std::uint8_t const* pairs, std::size_t count, bool u_first, YuvRun& run) {
    splitPairs(pairs, count, run.room[0].data(), run.room[1].data());
    run.u = run.room[u_first ? 0 : 1].data();
    run.v = run.room[u_first ? 1 : 0].data();
}

void gatherPackedPairs(YuvSamples<std::uint8_t const> src, std::size_t pixels, bool chroma,
                       YuvRun& run) {
    bool const y_first = src.y < src.u;
    std::uint8_t* const luma = run.room[2].data();
    std::uint8_t* const pairs = run.room[3].data();
    splitPairs(y_first ? src.y : src.u, pixels, y_first ? luma : pairs, y_first ? pairs : luma);
    run.y = luma;
    if (chroma) {
        gatherPairs(pairs, pixels / 2, true, run);
    }
}

void scatterPackedPairs(YuvRun const& run, std::size_t pixels, YuvSamples<std::uint8_t> dst) {
    YuvRun::Room pairs;
    mergePairs(run.u, run.v, pixels / 2, pairs.data());
    bool const y_first = dst.y < dst.u;
    mergePairs(y_first ? run.y : pairs.data(), y_first ? pairs.data() : run.y, pixels,
               y_first ? dst.y : dst.u);
}

}  // namespace

void gatherRun(YuvLayout layout, YuvSamples<std::uint8_t const> src, std::size_t pixels,
               bool chroma, YuvRun& run) {
    run.y = src.y;
    run.u = src.u;
    run.v = src.v;
    switch (layout) {
        case YuvLayout::PairsUv:
        case YuvLayout::PairsVu: {
            bool const u_first = layout == YuvLayout::PairsUv;
            if (chroma) {
                gatherPairs(u_first ? src.u : src.v, pixels / 2, u_first, run);
            }
            return;
        }
        case YuvLayout::PackedYuyv:
        case YuvLayout::PackedUyvy:
            return gatherPackedPairs(src, pixels, chroma, run);
        case YuvLayout::PackedYuv: {
            std::uint8_t* const planes[]{run.room[0].data(), run.room[1].data(),
                                         run.room[2].data()};
            splitChannels(src.y, pixels, 3, planes);
            run.y = planes[0];
            run.u = planes[1];
            run.v = planes[2];
            return;
        }
        default:
            return;
    }
}

void scatterRun(YuvLayout layout, YuvRun const& run, std::size_t pixels, bool chroma,
                YuvSamples<std::uint8_t> dst) {
    switch (layout) {
        case YuvLayout::PackedYuyv:
        case YuvLayout::PackedUyvy:
            return scatterPackedPairs(run, pixels, dst);
        case YuvLayout::PackedYuv: {
            std::uint8_t const* const planes[]{run.y, run.u, run.v};
            return mergeChannels(planes, pixels, 3, dst.y);
        }
        default:
            std::memcpy(dst.y, run.y, pixels);
    }
    if (!chroma) {
        return;
    }
    switch (layout) {
        case YuvLayout::PairsUv:
            return mergePairs(run.u, run.v, pixels / 2, dst.u);
        case YuvLayout::PairsVu:
            return mergePairs(run.v, run.u, pixels / 2, dst.v);
        default: {
            std::size_t const count = sharesChroma(layout) ? pixels / 2 : pixels;
            std::memcpy(dst.u, run.u, count);
            std::memcpy(dst.v, run.v, count);
        }
    }
}

bool copyPlanes(YuvLayout from, YuvLayout to, YuvSamples<std::uint8_t const> src,
                std::size_t pixels, YuvSamples<std::uint8_t> dst) {
    bool const from_planes = from == YuvLayout::HalfPlanes;
    bool const to_planes = to == YuvLayout::HalfPlanes;
    if (!(from_planes && (to_planes || hasPairs(to))) && !(hasPairs(from) && to_planes)) {
        return false;
    }
    if (dst.y != nullptr) {
        std::memcpy(dst.y, src.y, pixels);
    }
    if (dst.u == nullptr || dst.v == nullptr) {
        return true;
    }
    if (to == YuvLayout::PairsUv) {
        mergePairs(src.u, src.v, pixels / 2, dst.u);
    } else if (to == YuvLayout::PairsVu) {
        mergePairs(src.v, src.u, pixels / 2, dst.v);
    } else if (from == YuvLayout::PairsUv) {
        splitPairs(src.u, pixels / 2, dst.u, dst.v);
    } else if (from == YuvLayout::PairsVu) {
        splitPairs(src.v, pixels / 2, dst.v, dst.u);
    } else {
        std::memcpy(dst.u, src.u, pixels / 2);
        std::memcpy(dst.v, src.v, pixels / 2);
    }
    return true;
}

void averageRows(std::uint8_t const* a, std::uint8_t const* b, std::size_t count,
                 std::uint8_t* dst) {
    for (std::size_t i = 0; i < count; ++i) {
        dst[i] = static_cast<std::uint8_t>((a[i] + b[i]) / 2);
    }
}

void averagePairs(std::uint8_t const* upper, std::uint8_t const* lower, std::size_t count,
                  std::uint8_t* dst) {
    if (lower == nullptr) {
        for (std::size_t i = 0; i < count; ++i) {
            dst[i] = static_cast<std::uint8_t>((upper[2 * i] + upper[2 * i + 1]) / 2);
        }
        return;
    }
    for (std::size_t i = 0; i < count; ++i) {
        int const sum = upper[2 * i] + upper[2 * i + 1] + lower[2 * i] + lower[2 * i + 1];
        dst[i] = static_cast<std::uint8_t>(sum / 4);
    }
}

void repeatSamples(std::uint8_t const* src, std::size_t count, std::uint8_t* dst) {
    mergePairs(src, src, count, dst);
}

}  // namespace ox::rows
