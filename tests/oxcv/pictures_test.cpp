// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// PNG and JPEG files.
#include <png.h>

#include <cstdlib>

#include "program.h"

namespace oxcv::test {

namespace {

class PicturesTest : public ProgramTest {};

Words const toRaw{"--output-kind", "raw"};

// What libpng makes of a file, without a part of the tool.
std::string decodedPng(std::string const& bytes, std::uint32_t layout, ox::Size size) {
    png_image image{};
    image.version = PNG_IMAGE_VERSION;
    EXPECT_NE(png_image_begin_read_from_memory(&image, bytes.data(), bytes.size()), 0);
    EXPECT_EQ(static_cast<int>(image.width), size.width);
    EXPECT_EQ(static_cast<int>(image.height), size.height);
    image.format = layout;
    std::string pixels(PNG_IMAGE_SIZE(image), '\0');
    EXPECT_NE(png_image_finish_read(&image, nullptr, pixels.data(), 0, nullptr), 0);
    return pixels;
}

struct Png {
    int depth;
    int colour;
    int interlace = PNG_INTERLACE_NONE;
    bool transparent = false;  // has a list of transparent colours
};

// A file of 8 pixels in a row whose samples are `row`, made by libpng.
std::string encodedPng(Png const& kind, int height, std::string row) {
    std::string bytes;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    png_infop header = png_create_info_struct(png);
    png_set_write_fn(
        png, &bytes,
        [](png_structp p, png_bytep data, std::size_t count) {
            static_cast<std::string*>(png_get_io_ptr(p))->append(data, data + count);
        },
        nullptr);
    png_set_IHDR(png, header, 8, static_cast<png_uint_32>(height), kind.depth, kind.colour,
                 kind.interlace, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_color const palette[2]{{10, 20, 30}, {40, 50, 60}};
    png_byte const alphas[2]{0, 128};
    png_color_16 const clear{};
    if (kind.colour == PNG_COLOR_TYPE_PALETTE) {
        png_set_PLTE(png, header, palette, 2);
    }
    if (kind.transparent) {
        png_set_tRNS(png, header, alphas, kind.colour == PNG_COLOR_TYPE_PALETTE ? 2 : 0, &clear);
    }
    png_write_info(png, header);
    std::vector<png_bytep> rows(static_cast<std::size_t>(height),
                                reinterpret_cast<png_bytep>(row.data()));
    png_write_image(png, rows.data());
    png_write_end(png, nullptr);
    png_destroy_write_struct(&png, &header);
    return bytes;
}

std::string repeated(std::string const& text, int count) {
    std::string all;
    for (int i = 0; i < count; ++i) {
        all += text;
    }
    return all;
}

}  // namespace

TEST_F(PicturesTest, PngHoldsWhatCameIn) {
    struct Case {
        ox::FrameFormat format;
        std::uint32_t layout;
    };
    for (auto const& [format, layout] :
         {Case{ox::FRAME_GRAY8, PNG_FORMAT_GRAY}, Case{ox::FRAME_BGR24, PNG_FORMAT_BGR},
          Case{ox::FRAME_RGB24, PNG_FORMAT_RGB}}) {
        ox::Frame const frame = randomFrame(format, {11, 6});
        std::string const file = converted(bytesOf(frame), rawInput(format, {11, 6}), "out.png");
        EXPECT_EQ(decodedPng(file, layout, {11, 6}), bytesOf(frame));
        Words const options = join(toRaw, {"--format", ox::toString(format)});
        EXPECT_EQ(converted(file, options, "out.raw"), bytesOf(frame));
    }
}

TEST_F(PicturesTest, EveryKindOfPngIsReducedTo8BitsOfGrayOrColour) {
    struct Case {
        char const* what;
        Png kind;
        std::string row;
        std::string pixel;  // what each becomes; the files are of one colour
        char const* note;
    };
    for (auto const& [what, kind, row, pixel, note] :
         {Case{"1 bit", {1, PNG_COLOR_TYPE_GRAY}, "\xff", "\xff", "GRAY8\n"},
          Case{"4 bits", {4, PNG_COLOR_TYPE_GRAY}, repeated("\x33", 4), "\x33", "GRAY8\n"},
          Case{"16 bits",
               {16, PNG_COLOR_TYPE_GRAY},
               repeated("\x80\xff", 8),
               "\x80",
               "GRAY8, 16 bits rounded to 8\n"},
          Case{"gray, alpha",
               {8, PNG_COLOR_TYPE_GRAY_ALPHA},
               repeated("\x70\x01", 8),
               "\x70",
               "GRAY8, alpha dropped\n"},
          Case{"clear gray",
               {8, PNG_COLOR_TYPE_GRAY, PNG_INTERLACE_NONE, true},
               repeated("\x70", 8),
               "\x70",
               "GRAY8, alpha dropped\n"},
          Case{"16 bits, colour, alpha",
               {16, PNG_COLOR_TYPE_RGB_ALPHA},
               repeated(std::string("\x01\x02\x03\x04\x05\x06\x00\x00", 8), 8),
               "\x05\x03\x01",
               "BGR24, 16 bits rounded to 8, alpha dropped\n"},
          Case{"palette", {1, PNG_COLOR_TYPE_PALETTE}, "\xff", "\x3c\x32\x28", "BGR24\n"},
          Case{"clear palette",
               {1, PNG_COLOR_TYPE_PALETTE, PNG_INTERLACE_NONE, true},
               "\xff",
               "\x3c\x32\x28",
               "BGR24, alpha dropped\n"},
          Case{"interlaced",
               {8, PNG_COLOR_TYPE_RGB, PNG_INTERLACE_ADAM7},
               repeated("abc", 8),
               "cba",
               "BGR24\n"}}) {
        SCOPED_TRACE(what);
        std::string const file = encodedPng(kind, 5, row);
        EXPECT_EQ(converted(file, toRaw, "out.raw"), repeated(pixel, 8 * 5));
        EXPECT_NE(run({"info", "-"}, file).out.find(note), std::string::npos);
    }
}

TEST_F(PicturesTest, OtherFormatsGoIntoPicturesAsBgr24) {
    for (auto const format : {ox::FRAME_NV12, ox::FRAME_BGR_32F, ox::FRAME_BGR_PLANAR}) {
        std::string const frame = bytesOf(randomFrame(format, {9, 5}));
        std::string const file = converted(frame, rawInput(format, {9, 5}), "out.png");
        std::string const bgr =
            converted(frame, join(rawInput(format, {9, 5}), {"--format", "BGR24"}), "out.raw");
        EXPECT_EQ(decodedPng(file, PNG_FORMAT_BGR, {9, 5}), bgr);
    }
}

TEST_F(PicturesTest, JpegKeepsFlatColours) {
    struct Case {
        ox::FrameFormat format;
        std::string pixel;
        char const* read_as;
    };
    for (auto const& [format, pixel, read_as] :
         {Case{ox::FRAME_GRAY8, "\x50", "GRAY8"}, Case{ox::FRAME_BGR24, "\x20\x60\xc0", "BGR24"},
          Case{ox::FRAME_RGB24, "\x20\x60\xc0", "RGB24"}}) {
        std::string const frame = repeated(pixel, 17 * 9);
        std::string const file = converted(frame, rawInput(format, {17, 9}), "out.jpg");
        EXPECT_TRUE(file.starts_with("\xff\xd8\xff"));
        std::string const back = converted(file, join(toRaw, {"--format", read_as}), "out.raw");
        ASSERT_EQ(back.size(), frame.size());
        for (std::size_t i = 0; i < frame.size(); ++i) {
            ASSERT_LE(std::abs(static_cast<unsigned char>(back[i]) -
                               static_cast<unsigned char>(frame[i])),
                      3);
        }
    }
}

TEST_F(PicturesTest, QualityDecidesTheSizeOfAJpeg) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {64, 64}));
    Words const options = rawInput(ox::FRAME_BGR24, {64, 64});
    std::size_t const small = converted(frame, join(options, {"--quality", "10"}), "a.jpg").size();
    std::size_t const usual = converted(frame, options, "b.jpeg").size();
    std::size_t const large = converted(frame, join(options, {"--quality", "100"}), "c.jpg").size();
    EXPECT_LT(small, usual);
    EXPECT_LT(usual, large);
}

TEST_F(PicturesTest, TruncatedPicturesAreRefused) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {64, 64}));
    for (char const* const name : {"whole.png", "whole.jpg"}) {
        std::string const file = converted(frame, rawInput(ox::FRAME_BGR24, {64, 64}), name);
        for (std::size_t const bytes :
             {std::size_t{12}, std::size_t{100}, file.size() / 2, file.size() - 20}) {
            Result const result = run({"convert", "-", path("out.raw")}, file.substr(0, bytes));
            EXPECT_EQ(result.status, 1) << name << ", " << bytes << " bytes";
            EXPECT_TRUE(result.err.starts_with("oxcv: standard input: ")) << result.err;
        }
    }
    EXPECT_EQ(files(), (Words{"whole.jpg", "whole.png"}));
}

// Each kind of damage that libjpeg gets over with a warning.
TEST_F(PicturesTest, DamagedJpegsAreRefusedUnlessTolerated) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_BGR24, {64, 64}));
    std::string const whole = converted(frame, rawInput(ox::FRAME_BGR24, {64, 64}), "whole.jpg");
    auto const withStrayBytes = [&](std::size_t place) {
        return whole.substr(0, place) + std::string(50, 'x') + whole.substr(place);
    };
    std::string early_end = whole;
    early_end.replace(whole.size() / 2, 2, "\xff\xd9");
    struct Case {
        std::string file;
        std::string text;
    };
    constexpr std::size_t behind_first_segment = 20;
    for (auto const& [file, text] :
         {Case{withStrayBytes(whole.size() - 2), " extraneous bytes before marker 0xd9"},
          Case{withStrayBytes(behind_first_segment), "50 extraneous bytes before marker 0xdb"},
          Case{early_end, "premature end of data segment"}}) {
        Result const refused = run({"convert", "-", path("out.raw")}, file);
        EXPECT_EQ(refused.status, 1);
        EXPECT_TRUE(refused.err.starts_with("oxcv: standard input: Corrupt JPEG data: "));
        EXPECT_TRUE(refused.err.ends_with(text + "; --tolerant takes it all the same\n"))
            << refused.err;
        EXPECT_EQ(files(), Words{"whole.jpg"});
        std::string const taken = converted(file, join(toRaw, {"--tolerant"}), "out.raw");
        EXPECT_EQ(taken.size(), frame.size());
        std::filesystem::remove(path("out.raw"));
    }
}

TEST_F(PicturesTest, ATruncatedJpegIsToleratedToItsEnd) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {64, 64}));
    std::string const whole = converted(frame, rawInput(ox::FRAME_GRAY8, {64, 64}), "whole.jpg");
    std::string const half = whole.substr(0, whole.size() / 2);
    Result const refused = run({"convert", "-", path("out.raw")}, half);
    EXPECT_EQ(refused.status, 1);
    EXPECT_TRUE(refused.err.ends_with("end of input file; --tolerant takes it all the same\n"))
        << refused.err;
    std::string const expected = converted(whole, toRaw, "whole.raw");
    std::string const taken = converted(half, join(toRaw, {"--tolerant"}), "half.raw");
    ASSERT_EQ(taken.size(), expected.size());
    std::size_t const eight_rows = std::size_t{64} * 8;
    EXPECT_EQ(taken.substr(0, eight_rows), expected.substr(0, eight_rows));
    EXPECT_NE(taken, expected);
    // What was no picture to begin with stays none.
    std::string const start = whole.substr(0, 12);
    EXPECT_EQ(run({"convert", "-", path("out.raw"), "--tolerant"}, start).status, 1);
    EXPECT_EQ(run({"convert", "-", path("out.raw")}, start).err.find("--tolerant"),
              std::string::npos);
}

TEST_F(PicturesTest, APictureHoldsOneFrame) {
    std::string const frame = bytesOf(randomFrame(ox::FRAME_GRAY8, {4, 4}));
    for (std::string const name : {"out.png", "out.jpg"}) {
        Words const call = join({"convert", "-", path(name)}, rawInput(ox::FRAME_GRAY8, {4, 4}));
        Result const result = run(call, frame + frame);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.err, "oxcv: " + path(name) +
                                  ": a picture holds one frame; --frames 1 takes the first\n");
        EXPECT_EQ(files(), Words{});
        EXPECT_EQ(run(join(call, {"--frames", "1"}), frame + frame).status, 0);
        std::filesystem::remove(path(name));
    }
}

}  // namespace oxcv::test
