// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/vector_colour.h"

#include <algorithm>
#include <cstring>

#include "model/yuv.h"

namespace model {

namespace {

// Three numbers in the order of their format: positions of packed bytes, planes, or Y, U, V.
using Triple = std::array<int, 3>;

struct Picture {
    int width = 0;
    int height = 0;
    std::vector<Triple> pixels;

    Triple& at(int x, int y) { return pixels[static_cast<std::size_t>(y * width + x)]; }
    Triple const& at(int x, int y) const { return pixels[static_cast<std::size_t>(y * width + x)]; }
};

bool isPlanar(int format) {
    return format == RgbPlanar || format == BgrPlanar || format == Bgr32fPlanar;
}

bool isFloat(int format) {
    return format == Bgr32f || format == Bgr32fPlanar;
}

bool isSubsampled(int format) {
    return format == I420 || format == Nv12 || format == Nv21;
}

// A float within 0 and 255 loses its fraction; what is no number counts as 0.
int byteOf(float value) {
    return value > 0.0F ? static_cast<int>(std::min(value, 255.0F)) : 0;
}

int channelOf(SourceRow const& row, int format, int x, std::size_t channel) {
    auto const column = static_cast<std::size_t>(x);
    auto const plane = row[isPlanar(format) ? channel : 0];
    std::size_t const element = isPlanar(format) ? column : 3 * column + channel;
    if (!isFloat(format)) {
        return plane[element];
    }
    float value = 0;
    std::memcpy(&value, &plane[element * sizeof value], sizeof value);
    return byteOf(value);
}

void setChannel(Row const& row, int format, int x, std::size_t channel, int number) {
    auto const column = static_cast<std::size_t>(x);
    auto const plane = row[isPlanar(format) ? channel : 0];
    std::size_t const element = isPlanar(format) ? column : 3 * column + channel;
    if (!isFloat(format)) {
        plane[element] = static_cast<std::uint8_t>(number);
        return;
    }
    auto const value = static_cast<float>(number);
    std::memcpy(&plane[element * sizeof value], &value, sizeof value);
}

Triple yuvPixel(SourceRow const& row, YuvLayout const& layout, int x) {
    return {sampleAt(row, layout.y, x), sampleAt(row, layout.u, x / layout.columns),
            sampleAt(row, layout.v, x / layout.columns)};
}

Triple pixelOf(SourceRow const& row, int format, int x) {
    if (format == Gray8) {
        int const gray = row[0][static_cast<std::size_t>(x)];
        return {gray, gray, gray};
    }
    if (isYuv(format)) {
        return yuvPixel(row, yuvLayout(format), x);
    }
    return {channelOf(row, format, x, 0), channelOf(row, format, x, 1),
            channelOf(row, format, x, 2)};
}

// Chroma is that of the first column and row of those that share it.
void setYuvPixel(Row const& row, YuvLayout const& layout, int x, Triple const& pixel) {
    storeSample(row, layout.y, x, static_cast<unsigned>(pixel[0]));
    if (x % layout.columns == 0) {
        storeSample(row, layout.u, x / layout.columns, static_cast<unsigned>(pixel[1]));
        storeSample(row, layout.v, x / layout.columns, static_cast<unsigned>(pixel[2]));
    }
}

void setPixel(Row const& row, int format, int x, Triple const& pixel) {
    if (format == Gray8) {
        row[0][static_cast<std::size_t>(x)] = static_cast<std::uint8_t>(pixel[0]);
    } else if (isYuv(format)) {
        setYuvPixel(row, yuvLayout(format), x, pixel);
    } else {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            setChannel(row, format, x, channel, pixel[channel]);
        }
    }
}

Picture pictureOf(Image const& image) {
    Picture picture{image.width, image.height, {}};
    for (int y = 0; y < image.height; ++y) {
        SourceRow const row = image.shown(y);
        for (int x = 0; x < image.width; ++x) {
            picture.pixels.push_back(pixelOf(row, image.format, x));
        }
    }
    return picture;
}

Image imageOf(Picture const& picture, int format) {
    Image image = makeImage(format, picture.width, picture.height, 0);
    for (int y = 0; y < picture.height; ++y) {
        Row const row = image.writable(y);
        for (int x = 0; x < picture.width; ++x) {
            setPixel(row, format, x, picture.at(x, y));
        }
    }
    return image;
}

int grayOf(Triple const& bgr) {
    return (1868 * bgr[0] + 9617 * bgr[1] + 4899 * bgr[2] + 8192) >> 14;
}

Triple yuvOf(Triple const& bgr) {
    auto const weighted = [&](int b, int g, int r) {
        return (b * bgr[0] + g * bgr[1] + r * bgr[2] + 8192) >> 14;
    };
    return {weighted(1606, 8258, 4211) + 16, weighted(7193, -4768, -2425) + 128,
            weighted(-1163, -6029, 7193) + 128};
}

Triple bgrOf(Triple const& yuv) {
    int const y = 9535 * (yuv[0] - 16) + 4096;
    int const u = yuv[1] - 128;
    int const v = yuv[2] - 128;
    auto const byte = [](int sum) { return std::clamp(sum >> 13, 0, 255); };
    return {byte(y + 16531 * u), byte(y - 3203 * u - 6660 * v), byte(y + 13074 * v)};
}

Triple reversed(Triple const& pixel) {
    return {pixel[2], pixel[1], pixel[0]};
}

// The colour whose chroma a square gets: its mean, or its first pixel where the image ends within.
Triple squareOf(Picture const& picture, int x, int y) {
    if (x + 1 >= picture.width || y + 1 >= picture.height) {
        return picture.at(x, y);
    }
    Triple mean{};
    for (std::size_t c = 0; c < 3; ++c) {
        mean[c] = (picture.at(x, y)[c] + picture.at(x + 1, y)[c] + picture.at(x, y + 1)[c] +
                   picture.at(x + 1, y + 1)[c] + 2) >>
                  2;
    }
    return mean;
}

Picture bgrToYuv(Picture const& picture, bool subsampled) {
    Picture result = picture;
    for (int y = 0; y < picture.height; ++y) {
        for (int x = 0; x < picture.width; ++x) {
            Triple yuv = yuvOf(picture.at(x, y));
            if (subsampled && x % 2 == 0 && y % 2 == 0) {
                Triple const shared = yuvOf(squareOf(picture, x, y));
                yuv = {yuv[0], shared[1], shared[2]};
            }
            result.at(x, y) = yuv;
        }
    }
    return result;
}

void forAll(Picture& picture, Triple (*change)(Triple const&)) {
    std::transform(picture.pixels.begin(), picture.pixels.end(), picture.pixels.begin(), change);
}

}  // namespace

Image vectorColour(Image const& src, int format) {
    if (src.format == format) {
        return src;
    }
    Picture picture = pictureOf(src);
    bool const packed = format == Bgr24 || format == Rgb24;
    if (src.format == Bgr24 && isYuv(format)) {
        picture = bgrToYuv(picture, isSubsampled(format));
    } else if (src.format == Bgr24 && format == Gray8) {
        forAll(picture, [](Triple const& bgr) { return Triple{grayOf(bgr), 0, 0}; });
    } else if (isYuv(src.format) && packed) {
        forAll(picture, bgrOf);
        if (format == Rgb24) {
            forAll(picture, reversed);
        }
    } else if (packed && (src.format == Bgr24 || src.format == Rgb24)) {
        forAll(picture, reversed);
    }
    return imageOf(picture, format);
}

void vectorColourDirectly(Image const& src, Image& dst) {
    auto const byte = [](int sum) { return std::clamp(sum, 0, 65535) >> 8; };
    for (int y = 0; y < src.height / 2 * 2; ++y) {
        SourceRow const from = src.shown(y);
        Row const to = dst.writable(y);
        for (int x = 0; x < src.width / 8 * 8; ++x) {
            Triple const yuv = pixelOf(from, Nv12, x);
            int const luma = 298 * std::max(yuv[0] - 16, 0) + 128;
            int const u = yuv[1] - 128;
            int const v = yuv[2] - 128;
            setPixel(to, Bgr24, x,
                     {byte(luma + 516 * u), byte(luma - 208 * v - 100 * u), byte(luma + 409 * v)});
        }
    }
}

}  // namespace model
