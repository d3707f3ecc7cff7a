// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Arrays for networks: numbers, options and recipes.
#include <cstring>
#include <sstream>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "program.h"

namespace oxcv::test {

namespace {

class TensorTest : public ProgramTest {};

std::string ofFloats(std::vector<float> const& numbers) {
    std::string bytes(numbers.size() * sizeof(float), '\0');
    std::memcpy(bytes.data(), numbers.data(), bytes.size());
    return bytes;
}

std::string ofBytes(std::vector<int> const& numbers) {
    std::string bytes;
    for (int const number : numbers) {
        bytes += static_cast<char>(number);
    }
    return bytes;
}

// What the library makes of a frame.
std::string tensorOf(ox::TensorRecipe const& recipe, ox::Frame const& frame, ox::Rect region = {}) {
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Tensor tensor;
    tensor.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    to_tensor.run(frame, region, tensor, 0);
    return {tensor.data(), tensor.data() + tensor.layout().totalBytes()};
}

// The numbers alone, of frames on standard input.
std::string made(ox::Frame const& frame, Words const& options) {
    Words const call = join({"tensor", "-", "-", "--raw"}, rawInput(frame.format(), frame.size()));
    Result const result = run(join(call, options), bytesOf(frame));
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out;
}

Words wordsOf(std::string const& line) {
    std::istringstream text(line);
    Words words;
    for (std::string word; text >> word;) {
        words.push_back(word);
    }
    return words;
}

}  // namespace

// B, G, R of four pixels; floats of R, G, B.
TEST_F(TensorTest, APictureOfFourPixelsByHand) {
    std::string const pixels = ofBytes({10, 20, 30, 40, 50, 60, 70, 80, 90, 100, 110, 120});
    Words const call =
        join({"tensor", "-", path("out.npy"), "--size", "2x2"}, rawInput(ox::FRAME_BGR24, {2, 2}));
    EXPECT_EQ(run(call, pixels).err, "");
    EXPECT_EQ(read("out.npy"), npyHeader("<f4", "1, 3, 2, 2") +
                                   ofFloats({30, 60, 90, 120, 20, 50, 80, 110, 10, 40, 70, 100}));

    EXPECT_EQ(run(join(call, {"--mean", "10,20,30", "--std", "2,4,8"}), pixels).err, "");
    EXPECT_EQ(read("out.npy"),
              npyHeader("<f4", "1, 3, 2, 2") +
                  ofFloats({10, 25, 40, 55, 0, 7.5F, 15, 22.5F, -2.5F, 1.25F, 5, 8.75F}));

    EXPECT_EQ(run(join(call, {"--colour", "bgr", "--layout", "nhwc", "--scale", "2"}), pixels).err,
              "");
    EXPECT_EQ(read("out.npy"),
              npyHeader("<f4", "1, 2, 2, 3") +
                  ofFloats({20, 40, 60, 80, 100, 120, 140, 160, 180, 200, 220, 240}));

    EXPECT_EQ(
        run(join(call, {"--type", "u8", "--quant-scale", "4", "--zero-point", "1"}), pixels).err,
        "");
    EXPECT_EQ(read("out.npy"), npyHeader("|u1", "1, 3, 2, 2") +
                                   ofBytes({9, 16, 23, 31, 6, 13, 21, 29, 3, 11, 19, 26}));

    EXPECT_EQ(run(join(call, {"--type", "i8", "--mean", "60"}), pixels).err, "");
    EXPECT_EQ(read("out.npy"), npyHeader("|i1", "1, 3, 2, 2") +
                                   ofBytes({-30, 0, 30, 60, -40, -10, 20, 50, -50, -20, 10, 40}));

    EXPECT_EQ(run(join(call, {"--type", "f16", "--roi", "1,1,1,1", "--size=1x1"}), pixels).status,
              2);  // twice the same option
}

TEST_F(TensorTest, HalvesByHand) {
    Words const call = join({"tensor", "-", "-", "--size", "3x1", "--type", "f16", "--colour",
                             "gray", "--scale", "0.5,9,9", "--frames", "1"},
                            rawInput(ox::FRAME_GRAY8, {3, 1}));
    EXPECT_EQ(run(call, ofBytes({0, 1, 2})).out,
              npyHeader("<f2", "1, 1, 1, 3") + ofBytes({0, 0, 0, 0x38, 0, 0x3c}));
}

TEST_F(TensorTest, OptionsAreTheFieldsOfARecipe) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {38, 22});
    ox::Frame const yuv = randomFrame(ox::FRAME_NV12, {38, 22});
    ox::TensorRecipe usual;
    usual.width = 16;
    usual.height = 10;
    Words const size{"--size", "16x10"};
    EXPECT_EQ(made(frame, size), tensorOf(usual, frame));
    EXPECT_EQ(made(frame, join(size, {"--roi", "3,1,20,9"})),
              tensorOf(usual, frame, {3, 1, 20, 9}));
    struct Case {
        char const* options;
        void (*change)(ox::TensorRecipe&);
    };
    for (auto const& [options, change] : {
             Case{"--fit letterbox --bars 1,2,3",
                  [](ox::TensorRecipe& r) {
                      r.fit = ox::TENSOR_FIT_LETTERBOX;
                      r.bars[0] = 1, r.bars[1] = 2, r.bars[2] = 3;
                  }},
             Case{"--fit letterbox-top-left --bars 9",
                  [](ox::TensorRecipe& r) {
                      r.fit = ox::TENSOR_FIT_LETTERBOX_TOP_LEFT;
                      r.bars[0] = r.bars[1] = r.bars[2] = 9;
                  }},
             Case{"--fit CROP", [](ox::TensorRecipe& r) { r.fit = ox::TENSOR_FIT_CROP; }},
             Case{"--fit stretch --method automatic", [](ox::TensorRecipe&) {}},
             Case{"--method nearest",
                  [](ox::TensorRecipe& r) { r.method = ox::TENSOR_METHOD_NEAREST; }},
             Case{"--method bilinear",
                  [](ox::TensorRecipe& r) { r.method = ox::TENSOR_METHOD_BILINEAR; }},
             Case{"--method area", [](ox::TensorRecipe& r) { r.method = ox::TENSOR_METHOD_AREA; }},
             Case{"--kernel lanczos3",
                  [](ox::TensorRecipe& r) {
                      static ox::Lanczos3Kernel kernel;
                      r.kernel = &kernel;
                  }},
             Case{"--kernel mitchell --precision 8",
                  [](ox::TensorRecipe& r) {
                      static ox::MitchellNetravaliKernel kernel;
                      r.kernel = &kernel;
                      r.precision = ox::OX_SCALER_FIXED_POINT_8S;
                  }},
             Case{"--colour gray", [](ox::TensorRecipe& r) { r.colour = ox::TENSOR_COLOUR_GRAY; }},
             Case{"--colour bgr", [](ox::TensorRecipe& r) { r.colour = ox::TENSOR_COLOUR_BGR; }},
             Case{"--matrix bt601",
                  [](ox::TensorRecipe& r) { r.matrix = ox::TENSOR_MATRIX_BT601; }},
             Case{"--matrix bt709 --range full",
                  [](ox::TensorRecipe& r) {
                      r.matrix = ox::TENSOR_MATRIX_BT709;
                      r.range = ox::TENSOR_RANGE_FULL;
                  }},
             Case{"--matrix bt2020 --range limited",
                  [](ox::TensorRecipe& r) { r.matrix = ox::TENSOR_MATRIX_BT2020; }},
             Case{"--mean 3 --std 7,0.3,-2",
                  [](ox::TensorRecipe& r) {
                      r.mean[0] = r.mean[1] = r.mean[2] = 3;
                      r.scale[0] = 1.0F / 7.0F, r.scale[1] = 1.0F / 0.3F, r.scale[2] = -0.5F;
                  }},
         }) {
        ox::TensorRecipe recipe = usual;
        change(recipe);
        for (ox::Frame const& source : {frame, yuv}) {
            EXPECT_EQ(made(source, join(size, wordsOf(options))), tensorOf(recipe, source))
                << options;
        }
    }
}

TEST_F(TensorTest, RecipesAreTheirOptions) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {38, 22});
    std::istringstream table(run({"recipes"}).out);
    Words names;
    for (std::string line; std::getline(table, line);) {
        Words words = wordsOf(line);
        names.push_back(words.front());
        std::string const bytes = made(frame, {"--recipe", words.front()});
        words.erase(words.begin());
        EXPECT_EQ(made(frame, words), bytes) << line;
    }
    EXPECT_EQ(names, (Words{"imagenet", "caffe", "yolo", "tf", "tflite", "face"}));
    EXPECT_EQ(
        run({"recipes"}).out,
        R"(imagenet  --size 224x224 --fit crop --colour rgb --layout nchw --type f32 --mean 123.675,116.28,103.53 --std 58.395,57.12,57.375
caffe     --size 224x224 --fit crop --colour bgr --layout nchw --type f32 --mean 103.939,116.779,123.68 --std 1
yolo      --size 640x640 --fit letterbox --bars 114 --colour rgb --layout nchw --type f32 --mean 0 --std 255
tf        --size 224x224 --fit stretch --colour rgb --layout nhwc --type f32 --mean 127.5 --std 127.5
tflite    --size 224x224 --fit stretch --colour rgb --layout nhwc --type u8 --mean 0 --std 1
face      --size 112x112 --fit stretch --colour rgb --layout nchw --type f32 --mean 127.5 --std 128
)");
}

TEST_F(TensorTest, OptionsChangeARecipeWhereverTheyStand) {
    ox::Frame const frame = randomFrame(ox::FRAME_BGR24, {38, 22});
    std::string const bytes = made(frame, wordsOf("--size 9x9 --fit letterbox --bars 7 --type i8 "
                                                  "--std 2 --mean 0"));
    EXPECT_EQ(made(frame, wordsOf("--recipe yolo --size 9x9 --bars 7 --type i8 --std 2")), bytes);
    EXPECT_EQ(made(frame, wordsOf("--bars 7 --scale 0.5 --type i8 --recipe YOLO --size 9x9")),
              bytes);
}

TEST_F(TensorTest, AStreamsOwnRangeCounts) {
    std::string const frame(12, '\x50');
    auto const withTag = [&](std::string const& tag, std::string const& options) {
        Words const call = wordsOf("tensor - - --size 4x2 --raw --matrix bt709 " + options);
        Result const result =
            run(call, "YUV4MPEG2 W4 H2 F25:1 C420jpeg" + tag + "\nFRAME\n" + frame);
        EXPECT_EQ(result.err, "");
        return result.out;
    };
    std::string const limited = withTag("", "--range limited");
    std::string const full = withTag("", "--range full");
    EXPECT_NE(limited, full);
    EXPECT_EQ(withTag("", ""), limited);
    EXPECT_EQ(withTag(" XCOLORRANGE=FULL", ""), full);
    EXPECT_EQ(withTag(" XA=1 XCOLORRANGE=FULL XB", ""), full);
    EXPECT_EQ(withTag(" XCOLORRANGE=LIMITED", ""), limited);
    EXPECT_EQ(withTag(" XCOLORRANGE=OTHER", ""), limited);
    EXPECT_EQ(withTag(" XCOLORRANGE=FULL", "--range limited"), limited);
    EXPECT_EQ(withTag(" XCOLORRANGE=LIMITED", "--range full"), full);
}

TEST_F(TensorTest, BadValuesAreRefused) {
    struct Bad {
        char const* options;
        char const* text;
    };
    for (auto const& [options, text] : {
             Bad{"", "tensor needs --size or --recipe"},
             Bad{"--size 8x", "--size: '8x' is no size such as 640x480"},
             Bad{"--recipe alexa",
                 "--recipe: 'alexa' is none of imagenet, caffe, yolo, tf, tflite, face"},
             Bad{"--fit fill",
                 "--fit: 'fill' is none of stretch, letterbox, letterbox-top-left, crop"},
             Bad{"--method cubic",
                 "--method: 'cubic' is none of automatic, nearest, bilinear, area"},
             Bad{"--colour yuv", "--colour: 'yuv' is none of rgb, bgr, gray"},
             Bad{"--layout chw", "--layout: 'chw' is none of nchw, nhwc"},
             Bad{"--type f64", "--type: 'f64' is none of f32, f16, u8, i8"},
             Bad{"--matrix ntsc", "--matrix: 'ntsc' is none of library, bt601, bt709, bt2020"},
             Bad{"--range tv", "--range: 'tv' is none of limited, full"},
             Bad{"--mean 1,2",
                 "--mean: '1,2' is neither a finite number nor three such as 0.5,1,2"},
             Bad{"--scale inf",
                 "--scale: 'inf' is neither a finite number nor three such as "
                 "0.5,1,2"},
             Bad{"--std 1,0,1", "--std: nothing can be divided by '1,0,1'"},
             Bad{"--std 1e-40", "--std: nothing can be divided by '1e-40'"},
             Bad{"--bars 256",
                 "--bars: '256' is neither a number from 0 to 255 nor three such as "
                 "0,128,255"},
             Bad{"--bars 1,2,-3",
                 "--bars: '1,2,-3' is neither a number from 0 to 255 nor three "
                 "such as 0,128,255"},
             Bad{"--quant-scale 0", "--quant-scale: '0' isn't above 0"},
             Bad{"--quant-scale -1", "--quant-scale: '-1' isn't above 0"},
             Bad{"--zero-point 0.5", "--zero-point: '0.5' is no whole number such as 128 or -5"},
             Bad{"--jobs 0", "--jobs: '0' is no positive number"},
             Bad{"--std 1 --scale 1", "--std excludes --scale; 'oxcv --help' tells the rest"},
             Bad{"--kernel box --method area",
                 "--method excludes --kernel; 'oxcv --help' tells the rest"},
         }) {
        Result const result = run(join({"tensor", "-", path("out.npy")}, wordsOf(options)), "");
        EXPECT_EQ(result.status, 2) << options;
        EXPECT_EQ(result.err, std::string("oxcv: ") + text + "\n");
    }
    EXPECT_EQ(files(), Words{});
}

TEST_F(TensorTest, ImpossibleRequestsAreRefused) {
    std::string const file = write("in.gray8", std::string(64, 'x'));
    struct Case {
        char const* options;
        std::string text;
    };
    for (auto const& [options, text] : {
             Case{"--size 2x2 --roi 1,0,8,8", file + ": --roi: "},
             Case{"--size 2x2 --max-pixels 63",
                  file + ": frames of 8x8 have 64 pixels, more than the 63 of --max-pixels\n"},
             Case{"--size 16x16 --kernel box", file + ": --kernel: "},
             Case{"--size 2x2 --kernel lanczos3",
                  file + ": --kernel: Parameter 'window_size' is out of range.\n"},
             Case{"--size 30000x30000", "--size: "},
             Case{"--size 2147483647x2147483647", "--size: "},
         }) {
        Result const result =
            run(join({"tensor", file, path("out.npy"), "--input-size", "8x8"}, wordsOf(options)));
        EXPECT_EQ(result.status, 1) << options;
        EXPECT_TRUE(result.err.starts_with("oxcv: " + text)) << result.err;
    }
    std::string const words(128, 'x');
    EXPECT_EQ(run(join({"tensor", "-", path("out.npy"), "--size", "8x8"},
                       rawInput(ox::FRAME_C1_16U, {8, 8})),
                  words)
                  .status,
              1);
    EXPECT_EQ(files(), Words{"in.gray8"});
}

}  // namespace oxcv::test
