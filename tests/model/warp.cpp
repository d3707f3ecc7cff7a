// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/warp.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace model {

namespace {

struct Point {
    float x;
    float y;
};

using Corners = std::array<Point, 4>;

// Columns of a destination row.
struct Range {
    std::int64_t begin;
    std::int64_t end;
};

using Ranges = std::vector<Range>;  // by row

// Truncates; what an integer can't hold becomes the nearest that it can, what is no number 0.
std::int32_t integerOf(float value) {
    using Limits = std::numeric_limits<std::int32_t>;
    if (std::isnan(value)) {
        return 0;
    }
    if (value >= 0x1p31F) {
        return Limits::max();
    }
    return value <= -0x1p31F ? Limits::min() : static_cast<std::int32_t>(value);
}

std::int32_t roundAway(float value) {
    return integerOf(value >= 0.0F ? value + 0.5F : value - 0.5F);
}

Point mapped(Matrix const& m, Point point) {
    return {std::fma(point.x, m[0], point.y * m[1]) + m[2],
            std::fma(point.x, m[3], point.y * m[4]) + m[5]};
}

// Of the rectangle between two corners, around it.
Corners mappedCorners(Matrix const& matrix, Point low, Point high) {
    return {mapped(matrix, low), mapped(matrix, {high.x, low.y}), mapped(matrix, high),
            mapped(matrix, {low.x, high.y})};
}

float lastOf(int size) {
    return static_cast<float>(size - 1);
}

Corners nearestCorners(Matrix const& matrix, Pixels const& src) {
    return mappedCorners(matrix, {0.0F, 0.0F}, {lastOf(src.width), lastOf(src.height)});
}

Corners outerCorners(Matrix const& matrix, Pixels const& src) {
    return mappedCorners(
        matrix, {-0.9999F, -0.9999F},
        {static_cast<float>(src.width) - 0.0001F, static_cast<float>(src.height) - 0.0001F});
}

Corners innerCorners(Matrix const& matrix, Pixels const& src) {
    return mappedCorners(matrix, {0.0001F, 0.0001F},
                         {lastOf(src.width) - 0.0001F, lastOf(src.height) - 0.0001F});
}

// A side of the mapped rectangle as x = slope * y + offset.
struct Edge {
    Edge(Point from, Point to)
        : left(std::min(from.x, to.x)),
          right(std::max(from.x, to.x)),
          low(std::min(from.y, to.y)),
          high(std::max(from.y, to.y)),
          slope((to.x - from.x) / (to.y - from.y)),
          offset(std::fma(-from.y, slope, from.x)) {}

    bool horizontal() const { return low == high; }
    float at(float y) const { return std::fma(slope, y, offset); }

    float left;
    float right;
    float low;
    float high;
    float slope;  // of no meaning for a horizontal edge, as is the offset
    float offset;
};

std::vector<Edge> edgesOf(Corners const& corners) {
    std::vector<Edge> edges;
    for (std::size_t i = 0; i < 4; ++i) {
        edges.emplace_back(corners[i], corners[(i + 1) % 4]);
    }
    return edges;
}

void coverNearest(Range& row, float left, float right, std::int64_t width) {
    row.begin = std::min(std::max<std::int64_t>(roundAway(left), 0), row.begin);
    row.end = std::max(std::min(std::int64_t{roundAway(right)} + 1, width), row.end);
}

// The columns that a sloping edge takes of a row. Of a flat one these are several, and no more than
// the edge has, also where it ends less than half a row above the plane.
void coverNearest(Range& row, Edge const& edge, int y, Pixels const& dst) {
    auto const middle = static_cast<float>(y);
    if (std::abs(edge.slope) <= 1.0F) {
        coverNearest(row, edge.at(middle), edge.at(middle), dst.width);
        return;
    }
    float const low = std::max(edge.low, 0.0F);
    float const high = std::min(edge.high, static_cast<float>(dst.height));
    float const a = edge.at(std::min(std::max(middle - 0.5F, low), high));
    float const b = edge.at(std::min(std::max(middle + 0.5F, low), high));
    coverNearest(row, std::min(a, b), std::max(a, b), dst.width);
}

Ranges nearestRanges(Matrix const& matrix, Pixels const& src, Pixels const& dst) {
    Ranges ranges(static_cast<std::size_t>(dst.height), Range{dst.width, 0});
    std::vector<Edge> const edges = edgesOf(nearestCorners(matrix, src));
    float bottom = edges[0].high;
    for (Edge const& edge : edges) {
        bottom = std::max(bottom, edge.high);
    }
    int const last = roundAway(bottom);
    for (int y = 0; y < dst.height; ++y) {
        Range& row = ranges[static_cast<std::size_t>(y)];
        for (Edge const& edge : edges) {
            int const first = roundAway(std::max(edge.low, 0.0F));
            int const behind = roundAway(std::min(edge.high, static_cast<float>(dst.height)));
            bool const ends_at_bottom = y == last && roundAway(edge.high) == last;
            if (edge.horizontal() && ends_at_bottom) {
                coverNearest(row, edge.left, edge.right, dst.width);
            } else if (!edge.horizontal() && (ends_at_bottom || (first <= y && y < behind))) {
                coverNearest(row, edge, y, dst);
            }
        }
    }
    return ranges;
}

Ranges bilinearRanges(Corners const& corners, Pixels const& dst) {
    Ranges ranges;
    auto const width = static_cast<float>(dst.width);
    for (int y = 0; y < dst.height; ++y) {
        float begin = width;
        float end = 0.0F;
        for (Edge const& edge : edgesOf(corners)) {
            float const low = std::max(edge.low, 0.0F);
            float const high = std::min(edge.high, static_cast<float>(dst.height));
            auto const row = static_cast<float>(y);
            if (edge.horizontal() || row < std::ceil(low) || row >= std::ceil(high)) {
                continue;
            }
            float const x = edge.at(std::max(std::min(row, high), low));
            begin = std::min(std::max(x, 0.0F), begin);
            end = std::max(std::min(x, width), end);
        }
        Range range{integerOf(std::ceil(begin)), integerOf(std::ceil(end))};
        range.end = std::max(range.begin, range.end);
        ranges.push_back(range);
    }
    return ranges;
}

class Warper {
  public:
    Warper(Warp const& warp, Pixels const& src, Pixels& dst)
        : _warp(warp), _inverse(inverseOf(warp.matrix)), _src(src), _dst(dst) {
        if (warp.border && (warp.flags & (WarpNonByte | WarpTransparent)) == 0) {
            _border = *warp.border;
        }
    }

    void nearest() const {
        Ranges const ranges = nearestRanges(_warp.matrix, _src, _dst);
        for (int y = 0; y < _dst.height; ++y) {
            auto const [begin, end] = ranges[static_cast<std::size_t>(y)];
            fillBorder(y, 0, begin);
            for (std::int64_t x = begin; x < end; ++x) {
                copyNearest(static_cast<int>(x), y);
            }
            fillBorder(y, end, _dst.width);
        }
    }

    void bilinear() const {
        Ranges const outer_ranges = bilinearRanges(outerCorners(_warp.matrix, _src), _dst);
        Ranges const inner_ranges = bilinearRanges(innerCorners(_warp.matrix, _src), _dst);
        for (int y = 0; y < _dst.height; ++y) {
            Range const outer = outer_ranges[static_cast<std::size_t>(y)];
            Range inner = inner_ranges[static_cast<std::size_t>(y)];
            inner = {std::min(inner.begin, outer.end), std::min(inner.end, outer.end)};
            fillBorder(y, 0, outer.begin);
            blendAll(y, {outer.begin, inner.begin});
            blendAll(y, {inner.end, outer.end});
            blendAll(y, inner);
            fillBorder(y, outer.end, _dst.width);
        }
    }

  private:
    bool transparent() const { return (_warp.flags & WarpTransparent) != 0; }

    void fillBorder(int y, std::int64_t begin, std::int64_t end) const {
        for (std::int64_t x = begin; x < end && !transparent(); ++x) {
            std::copy_n(_border.data(), _dst.channels,
                        &_dst.bytes[_dst.indexOf(static_cast<int>(x), y)]);
        }
    }

    void copyNearest(int x, int y) const {
        if (_src.width == 0 || _src.height == 0) {
            fillBorder(y, x, x + 1);
            return;
        }
        Point const at = sourceOf(x, y);
        int const from_x = std::max(std::min(roundAway(at.x), _src.width - 1), 0);
        int const from_y = std::max(std::min(roundAway(at.y), _src.height - 1), 0);
        std::copy_n(&_src.bytes[_src.indexOf(from_x, from_y)], _src.channels,
                    &_dst.bytes[_dst.indexOf(x, y)]);
    }

    void blendAll(int y, Range range) const {
        for (std::int64_t x = range.begin; x < range.end; ++x) {
            blend(static_cast<int>(x), y);
        }
    }

    // Weights of places that no integer holds wrap; their taps are all alike then, and the weights
    // still add up to 1024.
    void blend(int x, int y) const {
        Point const at = sourceOf(x, y);
        std::int32_t const ix = integerOf(std::floor(at.x));
        std::int32_t const iy = integerOf(std::floor(at.y));
        auto const fraction = [](float place, std::int32_t whole) {
            return static_cast<std::uint32_t>(
                roundAway((place - static_cast<float>(whole)) * 32.0F));
        };
        std::uint32_t const fx = fraction(at.x, ix);
        std::uint32_t const fy = fraction(at.y, iy);
        for (int c = 0; c < _dst.channels; ++c) {
            std::uint8_t& out = _dst.bytes[_dst.indexOf(x, y) + static_cast<std::size_t>(c)];
            auto const tap = [&](int right, int down) {
                return std::uint32_t{
                    tapAt(ix + std::int64_t{right}, iy + std::int64_t{down}, c, out)};
            };
            std::uint32_t const sum = tap(0, 0) * (32 - fx) * (32 - fy) +
                                      tap(1, 0) * fx * (32 - fy) + tap(0, 1) * (32 - fx) * fy +
                                      tap(1, 1) * fx * fy;
            out = static_cast<std::uint8_t>((sum + 512) >> 10);
        }
    }

    std::uint8_t tapAt(std::int64_t x, std::int64_t y, int channel, std::uint8_t before) const {
        auto const c = static_cast<std::size_t>(channel);
        if (x < 0 || x >= _src.width || y < 0 || y >= _src.height) {
            return transparent() ? before : _border[c];
        }
        return _src.bytes[_src.indexOf(static_cast<int>(x), static_cast<int>(y)) + c];
    }

    Point sourceOf(int x, int y) const {
        return mapped(_inverse, {static_cast<float>(x), static_cast<float>(y)});
    }

    Warp const& _warp;
    Matrix _inverse;
    std::array<std::uint8_t, 4> _border{};
    Pixels const& _src;
    Pixels& _dst;
};

}  // namespace

Pixels makePixels(int width, int height, int channels, std::uint8_t fill) {
    Pixels pixels{width, height, channels, {}};
    pixels.bytes.assign(static_cast<std::size_t>(height) * pixels.rowBytes(), fill);
    return pixels;
}

Matrix inverseOf(Matrix const& m) {
    float const determinant = std::fma(m[0], m[4], -(m[1] * m[3]));
    double const r = determinant != 0.0F ? 1.0 / double{determinant} : 0.0;
    double const a = m[4] * r;
    double const b = -m[1] * r;
    double const c = -m[3] * r;
    double const e = m[0] * r;
    double const f = std::fma(-a, double{m[2]}, -(b * m[5]));
    double const g = std::fma(-c, double{m[2]}, -(e * m[5]));
    auto const single = [](double value) { return static_cast<float>(value); };
    return {single(a), single(b), single(f), single(c), single(e), single(g)};
}

bool warpIsRefused(Warp const& warp, std::uint64_t channels, std::uint64_t rows,
                   std::uint64_t stride) {
    constexpr std::uint64_t most = std::uint64_t{1} << 32;
    Matrix const inverse = inverseOf(warp.matrix);
    bool const singular =
        inverse[0] == 0.0F && inverse[1] == 0.0F && inverse[3] == 0.0F && inverse[4] == 0.0F;
    bool const non_bytes = (warp.flags & WarpBilinear) != 0 && (warp.flags & WarpNonByte) != 0;
    return channels < 1 || channels > 4 || (rows != 0 && stride > most / rows) || singular ||
           non_bytes;
}

bool warpIsFinite(Warp const& warp, Pixels const& src) {
    bool finite = true;
    for (float const number : inverseOf(warp.matrix)) {
        finite = finite && std::isfinite(number);
    }
    for (Corners const& corners : {nearestCorners(warp.matrix, src), outerCorners(warp.matrix, src),
                                   innerCorners(warp.matrix, src)}) {
        for (Edge const& edge : edgesOf(corners)) {
            finite =
                finite && std::isfinite(edge.left) && std::isfinite(edge.right) &&
                std::isfinite(edge.low) && std::isfinite(edge.high) &&
                (edge.horizontal() || (std::isfinite(edge.slope) && std::isfinite(edge.offset)));
        }
    }
    return finite;
}

void warpPlane(Warp const& warp, Pixels const& src, Pixels& dst) {
    Warper const warper(warp, src, dst);
    if ((warp.flags & WarpBilinear) != 0) {
        warper.bilinear();
    } else {
        warper.nearest();
    }
}

}  // namespace model
