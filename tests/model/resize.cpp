// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/resize.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace model {

namespace {

struct ClassRule {
    bool (*holds)(Resize const& r);
    ResizeClass then;
};

// Byte planes, bilinear; bicubic needs more than two samples.
bool isByteBilinear(Resize const& r) {
    return r.type == 0 && (r.method == 2 || (r.method == 5 && (r.src_w == 2 || r.src_h == 2)));
}

bool halves(Resize const& r) {
    return r.dst_w <= r.src_w / 2 + r.src_w % 2 && r.dst_h <= r.src_h / 2 + r.src_h % 2;
}

// The first rule that holds decides.

constexpr ClassRule scalarRules[]{
    {[](Resize const& r) { return r.src_w == 1 || r.src_h == 1; }, ResizeClass::Nearest},
    {[](Resize const& r) { return r.method == 0 || r.method == 1; }, ResizeClass::Nearest},
    {isByteBilinear, ResizeClass::ByteBilinear},
    {[](Resize const& r) { return r.type == 1 && r.method == 2; }, ResizeClass::ShortBilinear},
    {[](Resize const& r) { return r.type == 2 && r.method >= 2 && r.method <= 4; },
     ResizeClass::FloatBilinear},
    {[](Resize const& r) { return r.type == 0 && r.method == 5; }, ResizeClass::ByteBicubic},
    {[](Resize const& r) { return r.type == 0 && r.method == 7 && halves(r); },
     ResizeClass::ByteArea2x2},
    {[](Resize const& r) { return r.type == 0 && (r.method == 6 || r.method == 7); },
     ResizeClass::ByteArea1x1},
};

constexpr ClassRule vectorRules[]{
    {[](Resize const& r) { return isByteBilinear(r) && r.dst_w > 15; },
     ResizeClass::VectorByteBilinear},
    {[](Resize const& r) { return r.type == 0 && r.method == 6; }, ResizeClass::VectorByteArea1x1},
    {[](Resize const& r) { return r.type == 0 && r.method == 7 && !halves(r); },
     ResizeClass::VectorByteArea1x1},
    {[](Resize const& r) { return r.type == 1 && r.method == 2 && r.channels == 1; },
     ResizeClass::VectorShortBilinear},
    {[](Resize const& r) { return r.type == 2 && r.method >= 2 && r.method <= 4; },
     ResizeClass::VectorFloatBilinear},
};

template <std::size_t count>
std::optional<ResizeClass> firstOf(ClassRule const (&rules)[count], Resize const& request) {
    auto const* const rule =
        std::find_if(std::begin(rules), std::end(rules),
                     [&](ClassRule const& each) { return each.holds(request); });
    return rule == std::end(rules) ? std::nullopt : std::optional(rule->then);
}

// The source. What is before its first column or row has no weight anywhere and counts as 0.
template <class Element>
struct ElementPlane {
    Resize const& size;
    std::vector<Element> const& elements;

    Element at(std::int64_t x, std::int64_t y, std::uint64_t channel) const {
        if (x < 0 || y < 0) {
            return Element{};
        }
        auto const pixel =
            static_cast<std::uint64_t>(y) * size.src_w + static_cast<std::uint64_t>(x);
        return elements[pixel * size.channels + channel];
    }

    Element nearestInside(std::int64_t x, std::int64_t y, std::uint64_t channel) const {
        return at(std::clamp<std::int64_t>(x, 0, static_cast<std::int64_t>(size.src_w) - 1),
                  std::clamp<std::int64_t>(y, 0, static_cast<std::int64_t>(size.src_h) - 1),
                  channel);
    }
};

template <class Element>
Element nearest(ElementPlane<Element> const& src, std::uint64_t x, std::uint64_t y,
                std::uint64_t k) {
    Resize const& r = src.size;
    return src.at(nearestPosition(r.method, r.src_w, r.dst_w, x),
                  nearestPosition(r.method, r.src_h, r.dst_h, y), k);
}

// Sixteenths in both directions.
std::uint8_t byteBilinear(ElementPlane<std::uint8_t> const& src, Position<int> const& x,
                          Position<int> const& y, std::uint64_t k) {
    auto const row = [&](std::int64_t at) {
        return (16 - x.weight) * src.at(x.index, at, k) + x.weight * src.at(x.index + 1, at, k);
    };
    int const sum = (16 - y.weight) * row(y.index) + y.weight * row(y.index + 1);
    return static_cast<std::uint8_t>((sum + 128) / 256);
}

float mixed(float first, float second, float weight) {
    return std::fma(first, 1.0F - weight, weight * second);
}

template <class Element>
float bilinear(ElementPlane<Element> const& src, std::uint64_t i, std::uint64_t j,
               std::uint64_t k) {
    Resize const& r = src.size;
    Position<float> const x = floatPosition(r.method, r.src_w, r.dst_w, i);
    Position<float> const y = floatPosition(r.method, r.src_h, r.dst_h, j);
    auto const row = [&](std::int64_t at) {
        return mixed(static_cast<float>(src.at(x.index, at, k)),
                     static_cast<float>(src.at(x.index + 1, at, k)), x.weight);
    };
    return mixed(row(y.index), row(y.index + 1), y.weight);
}

std::uint16_t roundedShort(float value) {
    auto const whole = static_cast<std::int32_t>(value >= 0 ? value + 0.5F : value - 0.5F);
    return static_cast<std::uint16_t>(static_cast<std::uint32_t>(whole) & 0xFFFF);
}

// Sums are modulo 2^32.
std::uint32_t product(std::int64_t a, std::int64_t b) {
    return static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b);
}

// Bits from `shift` on, with the sign of the sum.
std::int32_t shiftedDown(std::uint32_t sum, int shift) {
    return static_cast<std::int32_t>(sum) >> shift;
}

std::uint8_t bicubic(ElementPlane<std::uint8_t> const& src, std::uint64_t i, std::uint64_t j,
                     std::uint64_t k) {
    Resize const& r = src.size;
    CubicPosition const x = cubicPosition(r.src_w, r.dst_w, i);
    CubicPosition const y = cubicPosition(r.src_h, r.dst_h, j);
    std::uint32_t sum = 8192;
    for (int v = 0; v < 4; ++v) {
        std::uint32_t row = 0;
        for (int u = 0; u < 4; ++u) {
            row += product(src.nearestInside(x.index + u - 1, y.index + v - 1, k),
                           x.weights[static_cast<std::size_t>(u)]);
        }
        sum += product(row, y.weights[static_cast<std::size_t>(v)]);
    }
    return static_cast<std::uint8_t>(std::clamp(shiftedDown(sum, 14), 0, 255));
}

// The samples that a cell covers, and how much of each.
struct Cell {
    Position<std::int32_t> begin;
    Position<std::int32_t> end;
    std::int32_t full = 0;

    std::int32_t weightOf(std::int64_t index) const {
        std::int32_t const from = index == begin.index ? begin.weight : full;
        return index == end.index ? from - end.weight : from;
    }
};

Cell cellOf(std::uint64_t s, std::uint64_t d, int range, std::uint64_t i) {
    return {areaPosition(s, d, range, i), areaPosition(s, d, range, i + 1),
            areaPosition(s, d, range, 0).weight};
}

enum class Narrowing { LowByte, Saturating };

template <class Sample>
std::uint8_t cellSum(Cell const& columns, Cell const& rows, Narrowing narrowing,
                     Sample const& sample) {
    std::uint32_t sum = 0x200000;
    for (std::int64_t y = rows.begin.index; y <= rows.end.index; ++y) {
        for (std::int64_t x = columns.begin.index; x <= columns.end.index; ++x) {
            sum += product(sample(x, y), columns.weightOf(x));
        }
    }
    std::int32_t const mean = shiftedDown(sum, 22);
    return static_cast<std::uint8_t>(narrowing == Narrowing::Saturating ? std::clamp(mean, 0, 255)
                                                                        : mean & 0xFF);
}

std::uint8_t area(ElementPlane<std::uint8_t> const& src, std::uint64_t i, std::uint64_t j,
                  std::uint64_t k, bool vector) {
    Resize const& r = src.size;
    Cell const rows = cellOf(r.src_h, r.dst_h, 2048, j);
    auto const sample = [&](std::int64_t x, std::int64_t y) {
        std::int32_t const weight = rows.weightOf(y);
        // The vector class has 16 bits for the weights of rows.
        return product(src.at(x, y, k), vector ? static_cast<std::int16_t>(weight) : weight);
    };
    Narrowing const narrowing =
        vector && r.channels > 2 ? Narrowing::Saturating : Narrowing::LowByte;
    return cellSum(cellOf(r.src_w, r.dst_w, 2048, i), rows, narrowing, sample);
}

// Cells of squares; the last column and row of odd sides stand for two.
std::uint8_t areaOfSquares(ElementPlane<std::uint8_t> const& src, std::uint64_t i, std::uint64_t j,
                           std::uint64_t k) {
    Resize const& r = src.size;
    Cell const columns = cellOf((r.src_w + 1) / 2, r.dst_w, 1024, i);
    Cell const rows = cellOf((r.src_h + 1) / 2, r.dst_h, 1024, j);
    auto const sample = [&](std::int64_t x, std::int64_t y) {
        int const four =
            src.nearestInside(2 * x, 2 * y, k) + src.nearestInside(2 * x + 1, 2 * y, k) +
            src.nearestInside(2 * x, 2 * y + 1, k) + src.nearestInside(2 * x + 1, 2 * y + 1, k);
        return product(four, rows.weightOf(y));
    };
    return cellSum(columns, rows, Narrowing::LowByte, sample);
}

template <class Element, class Formula>
std::vector<Element> eachElement(Resize const& size, Formula const& formula) {
    std::vector<Element> dst;
    dst.reserve(size.dst_w * size.dst_h * size.channels);
    for (std::uint64_t y = 0; y < size.dst_h; ++y) {
        for (std::uint64_t x = 0; x < size.dst_w; ++x) {
            for (std::uint64_t k = 0; k < size.channels; ++k) {
                dst.push_back(formula(x, y, k));
            }
        }
    }
    return dst;
}

using Index = std::uint64_t;

std::uint8_t byteOf(ResizeClass resizer, ElementPlane<std::uint8_t> const& src, Index x, Index y,
                    Index k) {
    Resize const& r = src.size;
    switch (resizer) {
        case ResizeClass::ByteBilinear:
            return byteBilinear(src, bytePosition(r.src_w, r.dst_w, x),
                                bytePosition(r.src_h, r.dst_h, y), k);
        case ResizeClass::VectorByteBilinear:
            return byteBilinear(src, vectorBytePosition(r.src_w, r.dst_w, x),
                                bytePosition(r.src_h, r.dst_h, y), k);
        case ResizeClass::ByteBicubic:
            return bicubic(src, x, y, k);
        case ResizeClass::ByteArea2x2:
            return areaOfSquares(src, x, y, k);
        case ResizeClass::ByteArea1x1:
            return area(src, x, y, k, false);
        case ResizeClass::VectorByteArea1x1:
            return area(src, x, y, k, true);
        default:
            return nearest(src, x, y, k);
    }
}

}  // namespace

ResizeClass scalarChoice(Resize const& request) {
    return firstOf(scalarRules, request).value_or(ResizeClass::None);
}

ResizeClass vectorChoice(Resize const& request) {
    return firstOf(vectorRules, request).value_or(scalarChoice(request));
}

bool writesChannels(ResizeClass resizer, std::uint64_t channels) {
    switch (resizer) {
        case ResizeClass::Nearest:
        case ResizeClass::ByteBilinear:
        case ResizeClass::FloatBilinear:
        case ResizeClass::VectorFloatBilinear:
            return true;
        default:
            return channels >= 1 && channels <= 4;
    }
}

std::vector<std::uint8_t> resized(ResizeClass resizer, Resize const& request,
                                  std::vector<std::uint8_t> const& src) {
    ElementPlane<std::uint8_t> const plane{request, src};
    return eachElement<std::uint8_t>(
        request, [&](Index x, Index y, Index k) { return byteOf(resizer, plane, x, y, k); });
}

std::vector<std::uint16_t> resized(ResizeClass resizer, Resize const& request,
                                   std::vector<std::uint16_t> const& src) {
    ElementPlane<std::uint16_t> const plane{request, src};
    return eachElement<std::uint16_t>(request, [&](Index x, Index y, Index k) {
        return resizer == ResizeClass::Nearest ? nearest(plane, x, y, k)
                                               : roundedShort(bilinear(plane, x, y, k));
    });
}

std::vector<float> resized(ResizeClass resizer, Resize const& request,
                           std::vector<float> const& src) {
    ElementPlane<float> const plane{request, src};
    return eachElement<float>(request, [&](Index x, Index y, Index k) {
        return resizer == ResizeClass::Nearest ? nearest(plane, x, y, k) : bilinear(plane, x, y, k);
    });
}

}  // namespace model
