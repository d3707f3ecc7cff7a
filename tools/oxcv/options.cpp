// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "options.h"

#include <string>

#include "backends.h"
#include "commands.h"
#include "failure.h"
#include "option_parts.h"
#include "printable.h"
#include "tensor_options.h"
#include "tensor_recipes.h"

namespace oxcv {

namespace {

constexpr char const* generalHelp = R"(Examples:
  oxcv convert cat.png cat.nv12                  a picture as a raw NV12 frame
  oxcv convert cat.nv12 cat.png --input-size 451x300
  oxcv convert in.y4m small.y4m --size 320x --method area
  oxcv convert cat.png tensor.npy --size 224x224 --format BGR_32F_PLANAR --mul 0.0039
  oxcv convert cat.png tilted.png --rotate 7.5
  camera | oxcv convert - out.y4m --input-format YUYV --input-size 640x480
  oxcv tensor cat.png input.npy --recipe imagenet
  oxcv tensor *.jpg batch.npy --recipe yolo --mapping map.json
  oxcv info in.y4m
  oxcv formats

'oxcv convert --help' and 'oxcv tensor --help' tell the rest.)";

constexpr char const* convertHelp = R"(Kinds of files:
  png   GRAY8 or BGR24; palettes are expanded, 16 bits rounded to 8, alpha dropped
  jpeg  GRAY8 or BGR24; written with --quality
  y4m   video of GRAY8, I420, YV16 or YUV444_PLANAR
  npy   NumPy arrays of all formats without half-size planes; H x W, H x W x C or
        C x H x W for a frame, with one more axis in front for several; halves are read
        as floats, and floats written as halves with --halves
  raw   frames of any format one after another, without gaps or header; read with
        --input-format and --input-size. --input-stride says that rows have gaps behind
        them, on the last one as well: the bytes from row to row, of each plane, or of the
        first if those of half-width chroma are half of it, those of others the same
An input's kind is found out by its first bytes or its ending: png, jpg, jpeg, y4m, npy;
raw, yuv, bin; a format's name, as in cat.nv12. Without such an ending, as on a pipe,
--input-size says that it is raw. Standard output takes the input's kind.

The order of the steps is roi, size, warp or rotate, format, mul, add; each is a call of
the library. A conversion that the library doesn't have is made by way of a third format,
mostly BGR24. A result that the output's kind can't hold is converted at the end: to BGR24
for png, jpeg and npy, to the y4m format with the same chroma or else I420.
--roi is in pixels of the input; on half-size planes an odd origin is rounded down.
--size takes YUYV and UYVY as NV16, and converts them back unless --format says otherwise.
--fit letterbox keeps the aspect, and centres the picture between bars of --bars, which are
black otherwise; letterbox-top-left has them at the right and at the bottom alone; crop
takes the middle of the picture. Bars are drawn in gray or 8-bit red, green and blue: YUV
becomes BGR24 for them, or what --format says, and then --format or what it was.
--kernel makes --size reduce by a filter: box, triangle, mitchell (Mitchell-Netravali),
catmull-rom or lanczos3, from smooth to sharp, with weights of 8 or 16 bits. Filters take
channels of 8 bits, sides of up to 8192 and reductions by 1 to 32; RGB24 and planar RGB go
through BGR24 and back.
NV12 frames of whole blocks of 8 x 2 pixels take the library's quick way to BGR24, whose
values differ a little from those of other sizes.

--mul and --add take one number, or one each for blue, green and red; gray takes the first.

--warp A,B,C,D,E,F takes the pixel x, y to A x + B y + C, D x + E y + F; 0, 0 is the middle
of the top left one. With --invert the six say instead where in the source a pixel of the
result comes from. --rotate turns counter-clockwise, as seen, about the picture's middle;
a negative angle turns the other way. The size stays: what is moved out is cut off, what
is left free is black. Both take the picture as --size leaves it, and formats of 8 bits a
channel only. YUV pictures are warped as BGR24, so that their chroma stays in its place,
or in the format of --format if that is an 8-bit one that isn't YUV; then they are
converted to --format or back.

--backend simd, the default, is vector code with the row pipeline's help: a step that the
vector backend doesn't do is done by the pipeline, and --verbose says which and why. It
converts the pairs it has kernels for, 4:2:0 frames only with even sides; it scales
channels of 8 bits by every method and floats by nearest and bilinear. --backend base is
the pipeline alone, which has no warps. The two don't give equal values.
'oxcv formats' tells what each backend does with which formats.

NumPy files on a pipe need the count of frames in front: --frames N says it.

An input whose frames have more pixels than --max-pixels, width times height of each, is
refused before there is memory for one; how many frames there are doesn't count. A JPEG
picture whose data are damaged is refused; with --tolerant it is taken as far as it can be
read, with gray in place of the rest.

Examples:
  oxcv convert cat.png eye.png --roi 150,80,64,48 --size 640x --method nearest
  oxcv convert cat.png small-mirror.png --size 100x --warp -1,0,99,0,1,0
  oxcv convert cat.png - --output-kind raw --format I420 | player
  oxcv convert cat.png thumb.png --size 96x --kernel lanczos3
  oxcv convert film.y4m frame.png --frames 1
  oxcv convert film.y4m film.npy --size 224x224 --format BGR_32F --mul 0.0039 --add -0.5

Exit status: 0 done, 1 failed, 2 wrong use. Outputs appear whole or not at all, by the name
that a symbolic link gives; /dev/stdout, /dev/fd/3 and the like, devices and pipes are
written as they come; a read-only file isn't replaced.)";

constexpr char const* infoHelp = R"(Examples:
  oxcv info film.y4m
  oxcv info cat.nv12 --input-size 451x300)";

/// What is wrong with a command line that the parser refuses.
std::string complaint(CLI::App const& app, CLI::ParseError const& error) {
    constexpr std::size_t longest = 200;  // it may name all words that are too many
    // The parser looks for a command that is missing before it looks at words that are too many.
    bool const unknown = app.get_subcommands().empty() && app.remaining_size() > 0;
    return unknown ? "there is no command or option " + inQuotes(app.remaining().front())
                   : printable(error.what(), longest);
}

void addInput(CLI::App& app, InputRequest& input) {
    addParsed(app, "input", parsePath, input.path, "File to read; - is standard input", "FILE")
        ->required();
    addInputKind(app, input);
}

void addOutput(CLI::App& app, OutputRequest& output) {
    addParsed(app, "output", parsePath, output.path, "File to write; - is standard output", "FILE")
        ->required();
    addChoice(app, "--output-kind", kindNames(), output.kind, "What the output is to be", "KIND");
    addParsed(app, "--quality", parseQuality, output.quality, "Of a JPEG", "N:1..100")
        ->default_str(std::to_string(output.quality));
    app.add_flag("--halves", output.halves, "Write an array's floats in half precision");
}

void addWarp(CLI::App& app, Steps& steps) {
    CLI::Option* const warp =
        addParsed(app, "--warp", parseMatrix, steps.warp,
                  "Warp by a matrix from source to destination pixels, row by\n"
                  "row",
                  "A,B,C,D,E,F");
    app.add_flag("--invert", steps.invert, "Of --warp: it is from destination to source")
        ->needs(warp);
    addParsed(app, "--rotate", parseAngle, steps.rotate,
              "Rotate about the middle; positive is counter-clockwise", "DEGREES")
        ->excludes(warp);
    addParsed(app, "--warp-method", parseWarpMethod, steps.warp_method,
              "How to warp and rotate: nearest, bilinear", "NAME")
        ->default_str("bilinear");
}

void addBackend(CLI::App& app, std::string& backend) {
    backend = backendNames().front();
    addChoice(app, "--backend", backendNames(), backend,
              "What does the work: simd, vector code with the\n"
              "pipeline's help, or base, the row pipeline alone",
              "NAME")
        ->default_str(backend);
}

void addScaling(CLI::App& app, Steps& steps) {
    CLI::Option* const size = addParsed(app, "--size", parseSizeRequest, steps.size,
                                        "Scale; 640x or x480 keep the aspect", "WxH");
    CLI::Option* const fit =
        addWords(app, "--fit", fitWords, steps.fit, "How a picture comes to the size")->needs(size);
    addParsed(app, "--bars", parseBytes, steps.bars, "Colour of a letterbox", "R,G,B")->needs(fit);
    CLI::Option* const method = addParsed(app, "--method", parseMethod, steps.method,
                                          "How to scale: nearest, bilinear, area", "NAME")
                                    ->default_str("bilinear");
    auto const kernel_of = [](std::string const& text) {
        return makeKernel(parseChoice(kernelNames(), text));
    };
    CLI::Option* const kernel =
        addParsed(app, "--kernel", kernel_of, steps.kernel, "Reduce by a filter instead",
                  "NAME:{" + joined(kernelNames(), ",") + "}")
            ->needs(size)
            ->excludes(method);
    addParsed(app, "--precision", parsePrecision, steps.precision,
              "Bits of a filter's weights: 8, 16", "BITS")
        ->default_str("16")
        ->needs(kernel);
}

void addSteps(CLI::App& app, Steps& steps) {
    addParsed(app, "--roi", parseRect, steps.roi, "Take a region", "X,Y,W,H");
    addScaling(app, steps);
    addWarp(app, steps);
    addParsed(app, "--format", parseFormat, steps.format, "Convert; 'oxcv formats' lists the names",
              "NAME");
    addParsed(app, "--mul", parseFactors, steps.mul, "Multiply floats by a number, or by three",
              "V[,V,V]");
    addParsed(app, "--add", parseFactors, steps.add, "Add a number to floats, or three", "V[,V,V]");
}

void addConvert(CLI::App& app, ConvertOptions& options) {
    CLI::App& command = *app.add_subcommand("convert", "Crop, scale, warp and convert frames");
    addInput(command, options.input);
    addOutput(command, options.output);
    addSteps(command, options.steps);
    addParsed(command, "--frames", parseCount, options.frames, "Stop after so many frames", "N");
    addMaxPixels(command, options.max_pixels);
    addBackend(command, options.backend);
    command.add_flag("-v,--verbose", options.verbose,
                     "Say which steps the vector backend leaves to the pipeline");
    command.footer(convertHelp);
    command.final_callback([&options] { convert(options); });
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    CLI::App app("oxcv: pictures, video frames and tensors through libox_cv", "oxcv");
    app.set_version_flag("--version", "oxcv " OXCV_VERSION, "Print the version and exit");
    app.require_subcommand(1);
    app.footer(generalHelp);

    ConvertOptions convert_options;
    addConvert(app, convert_options);
    TensorOptions tensor_options;
    addTensor(app, tensor_options);
    app.add_subcommand("recipes", "List the recipes of tensor, as options")
        ->final_callback(printRecipes);
    InputRequest info_input;
    CLI::App& info = *app.add_subcommand("info", "Tell what a file holds");
    addInput(info, info_input);
    info.footer(infoHelp);
    info.final_callback([&info_input] { printInfo(info_input); });
    std::string formats_backend;
    CLI::App& formats =
        *app.add_subcommand("formats", "List the formats, and what the library does with them");
    addBackend(formats, formats_backend);
    formats.final_callback([&formats_backend] { printFormats(formats_backend); });

    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);  // help, version
        }
        throw UsageError(complaint(app, error) + "; 'oxcv --help' tells the rest");
    }
    return 0;
}

}  // namespace oxcv
