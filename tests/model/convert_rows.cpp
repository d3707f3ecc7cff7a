// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/convert_rows.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace model {

namespace {

constexpr Samples blueSamples{0, 0, 3};
constexpr Samples greenSamples{0, 1, 3};
constexpr Samples redSamples{0, 2, 3};
constexpr Samples graySamples{0, 0, 1};

struct Pixel {
    int b, g, r;
};

Pixel pixelAt(SourceRow const& row, int x) {
    return {sampleAt(row, blueSamples, x), sampleAt(row, greenSamples, x),
            sampleAt(row, redSamples, x)};
}

void storePixel(Row const& out, int x, int b, int g, int r) {
    storeSample(out, blueSamples, x, static_cast<unsigned>(b));
    storeSample(out, greenSamples, x, static_cast<unsigned>(g));
    storeSample(out, redSamples, x, static_cast<unsigned>(r));
}

bool lacksChroma(Row const& out, YuvLayout const& layout) {
    return out[layout.u.plane].empty() || out[layout.v.plane].empty();
}

// The first pixel behind the group that shares chroma sample `group`.
int groupEnd(YuvLayout const& layout, int group, int width) {
    return std::min((group + 1) * layout.columns, width);
}

int groupCount(YuvLayout const& layout, int width) {
    return (width + layout.columns - 1) / layout.columns;
}

struct ChromaSum {
    int u = 0;
    int v = 0;
    int count = 0;
};

void addBgr(ChromaSum& sum, Pixel const& p) {
    sum.u += 112 * p.b + 32768 - (74 * p.g + 38 * p.r);
    sum.v += 112 * p.r + 32768 - (94 * p.g + 18 * p.b);
    ++sum.count;
}

void bgrToYuv(int, int to, RowPair const& rows, int width, Row const& out) {
    YuvLayout const layout = yuvLayout(to);
    for (int x = 0; x < width; ++x) {
        Pixel const p = pixelAt(rows.upper, x);
        int const luma = (65 * p.r + 129 * p.g + 25 * p.b + 4096) >> 8;
        storeSample(out, layout.y, x, static_cast<unsigned>(luma));
    }
    bool const packed_pairs = layout.y.step == 2;
    if (packed_pairs && width % 2 == 1) {
        storeSample(out, layout.y, width, 0);
    }
    if (layout.rows == 2 && lacksChroma(out, layout)) {
        return;
    }
    for (int group = 0; group < groupCount(layout, width); ++group) {
        ChromaSum sum;
        for (int x = group * layout.columns; x < groupEnd(layout, group, width); ++x) {
            addBgr(sum, pixelAt(rows.upper, x));
            if (layout.rows == 2 && rows.has_lower) {
                addBgr(sum, pixelAt(rows.lower, x));
            }
        }
        // The terms carry eight fractional bits, and a group has 1, 2 or 4 pixels.
        int const divisor = 256 * sum.count;
        storeSample(out, layout.u, group, static_cast<unsigned>(sum.u / divisor));
        storeSample(out, layout.v, group, static_cast<unsigned>(sum.v / divisor));
    }
}

int clampToByte(int value) {
    if (value < 0) {
        return 0;
    }
    return value >= 65536 ? 255 : value / 256;
}

void yuvToBgr(YuvLayout const& layout, SourceRow const& row, int width, Row const& out) {
    for (int x = 0; x < width; ++x) {
        int const luma = (sampleAt(row, layout.y, x) - 16) * 297;
        int const u = sampleAt(row, layout.u, x / layout.columns) - 128;
        int const v = sampleAt(row, layout.v, x / layout.columns) - 128;
        storePixel(out, x, clampToByte(luma + 516 * u), clampToByte(luma - 207 * v - 100 * u),
                   clampToByte(luma + 408 * v));
    }
}

void grayToYuv(int, int to, RowPair const& rows, int width, Row const& out) {
    YuvLayout const layout = yuvLayout(to);
    for (int x = 0; x < width; ++x) {
        storeSample(out, layout.y, x, rows.upper[0][static_cast<std::size_t>(x)]);
    }
    if (lacksChroma(out, layout)) {
        return;
    }
    for (int group = 0; group < groupCount(layout, width); ++group) {
        storeSample(out, layout.u, group, 0);
        storeSample(out, layout.v, group, 0);
    }
}

void yuvToYuv(YuvLayout const& from, YuvLayout const& to, RowPair const& rows, int width,
              Row const& out) {
    for (int x = 0; x < width; ++x) {
        storeSample(out, to.y, x, static_cast<unsigned>(sampleAt(rows.upper, from.y, x)));
    }
    if (lacksChroma(out, to)) {
        return;
    }
    for (int group = 0; group < groupCount(to, width); ++group) {
        ChromaSum sum;
        auto const add = [&](SourceRow const& row, int x) {
            sum.u += sampleAt(row, from.u, x / from.columns);
            sum.v += sampleAt(row, from.v, x / from.columns);
            ++sum.count;
        };
        for (int x = group * to.columns; x < groupEnd(to, group, width); ++x) {
            add(rows.upper, x);
            if (to.rows == 2 && rows.has_lower) {
                add(rows.lower, x);
            }
        }
        storeSample(out, to.u, group, static_cast<unsigned>(sum.u / sum.count));
        storeSample(out, to.v, group, static_cast<unsigned>(sum.v / sum.count));
    }
}

// The sample of a pixel's channel in the 8-bit three-channel formats, packed or planar.
Samples channelOf(int format, int channel) {
    auto const index = static_cast<std::size_t>(channel);
    bool const planar = format == BgrPlanar || format == RgbPlanar;
    return planar ? Samples{index, 0, 1} : Samples{0, index, 3};
}

// Channels go over in order, or with the first and the last exchanged between red-first and
// blue-first packed pixels.
void moveChannels(int from, int to, RowPair const& rows, int width, Row const& out) {
    bool const both_packed = (from == Bgr24 && to == Rgb24) || (from == Rgb24 && to == Bgr24);
    for (int x = 0; x < width; ++x) {
        for (int c = 0; c < 3; ++c) {
            int const source = both_packed ? 2 - c : c;
            auto const value =
                static_cast<unsigned>(sampleAt(rows.upper, channelOf(from, source), x));
            storeSample(out, channelOf(to, c), x, value);
        }
    }
}

void bytesToFloats(int, int to, RowPair const& rows, int width, Row const& out) {
    for (int x = 0; x < width; ++x) {
        for (int c = 0; c < 3; ++c) {
            auto const value = static_cast<float>(sampleAt(rows.upper, channelOf(Bgr24, c), x));
            auto const plane = static_cast<std::size_t>(to == Bgr32f ? 0 : c);
            auto const place = static_cast<std::size_t>(to == Bgr32f ? 3 * x + c : x);
            if (!out[plane].empty()) {
                std::memcpy(&out[plane][4 * place], &value, 4);
            }
        }
    }
}

void floatsToBytes(int, int, RowPair const& rows, int width, Row const& out) {
    for (std::size_t i = 0; i < 3 * static_cast<std::size_t>(width); ++i) {
        float value;
        std::memcpy(&value, &rows.upper[0][4 * i], 4);
        std::uint32_t whole = 0;
        if (value >= 4294967296.0F) {
            whole = 0xFFFFFFFF;
        } else if (value > 0.0F) {
            whole = static_cast<std::uint32_t>(value);
        }
        out[0][i] = static_cast<std::uint8_t>(whole & 0xFF);
    }
}

void bgrToGray(int, int, RowPair const& rows, int width, Row const& out) {
    for (int x = 0; x < width; ++x) {
        Pixel const p = pixelAt(rows.upper, x);
        storeSample(out, graySamples, x,
                    static_cast<unsigned>((28 * p.b + 152 * p.g + 76 * p.r) / 256));
    }
}

void grayToBgr(int, int, RowPair const& rows, int width, Row const& out) {
    for (int x = 0; x < width; ++x) {
        int const gray = sampleAt(rows.upper, graySamples, x);
        storePixel(out, x, gray, gray, gray);
    }
}

void yuvToGray(YuvLayout const& layout, SourceRow const& row, int width, Row const& out) {
    for (int x = 0; x < width; ++x) {
        storeSample(out, graySamples, x, static_cast<unsigned>(sampleAt(row, layout.y, x)));
    }
}

void convertYuvRow(int from, int to, int yuv, RowPair const& rows, int width, Row const& out) {
    YuvLayout const layout = yuvLayout(from);
    if (to == Gray8) {
        yuvToGray(layout, rows.upper, width, out);
    } else if (to == Bgr24) {
        yuvToBgr(layout, rows.upper, width, out);
    } else {
        yuvToYuv(layout, yuvLayout(yuv), rows, width, out);
    }
}

constexpr int anyYuv = -1;

// What a format without YUV samples can become, and by which formula.
struct Pair {
    int from;
    int to;
    void (*convert)(int from, int to, RowPair const& rows, int width, Row const& out);
};

constexpr Pair pairs[] = {
    {Gray8, Bgr24, grayToBgr},
    {Gray8, anyYuv, grayToYuv},
    {Rgb24, Bgr24, moveChannels},
    {RgbPlanar, Rgb24, moveChannels},
    {BgrPlanar, Bgr24, moveChannels},
    {Bgr24, Gray8, bgrToGray},
    {Bgr24, Rgb24, moveChannels},
    {Bgr24, BgrPlanar, moveChannels},
    {Bgr24, anyYuv, bgrToYuv},
    {Bgr24, Bgr32f, bytesToFloats},
    {Bgr24, Bgr32fPlanar, bytesToFloats},
    {Bgr32f, Bgr24, floatsToBytes},
};

Pair const* findPair(int from, int to) {
    return std::find_if(std::begin(pairs), std::end(pairs), [&](Pair const& pair) {
        return pair.from == from && pair.to == (isYuv(to) ? anyYuv : to);
    });
}

}  // namespace

bool canBecome(int from, int to) {
    return findPair(from, to) != std::end(pairs);
}

void convertRow(int from, int to, int yuv, RowPair const& rows, int width, Row const& out) {
    if (isYuv(from)) {
        convertYuvRow(from, to, yuv, rows, width, out);
    } else {
        findPair(from, to)->convert(from, to, rows, width, out);
    }
}

}  // namespace model
