#include "options.h"

#include <CLI/CLI.hpp>

#include <string>

#include "backends.h"
#include "commands.h"
#include "failure.h"

namespace oxcv {

namespace {

constexpr char const* generalHelp = R"(Examples:
  oxcv convert cat.png cat.nv12                  a picture as a raw NV12 frame
  oxcv convert cat.nv12 cat.png --input-size 451x300
  oxcv convert in.y4m small.y4m --size 320x --method area
  oxcv convert cat.png tensor.npy --size 224x224 --format BGR_32F_PLANAR --mul 0.0039
  camera | oxcv convert - out.y4m --input-format YUYV --input-size 640x480
  oxcv info in.y4m
  oxcv formats

'oxcv convert --help' tells the rest.)";

constexpr char const* convertHelp = R"(Kinds of files:
  png   GRAY8 or BGR24; palettes are expanded, 16 bits rounded to 8, alpha dropped
  jpeg  GRAY8 or BGR24; written with --quality
  y4m   video of GRAY8, I420, YV16 or YUV444_PLANAR
  npy   NumPy arrays of all formats without half-size planes; H x W, H x W x C or
        C x H x W for a frame, with one more axis in front for several
  raw   frames of any format one after another, without gaps or header; read with
        --input-format and --input-size
An input's kind is found out by its first bytes or its ending: png, jpg, jpeg, y4m, npy;
raw, yuv, bin; a format's name, as in cat.nv12. Without such an ending, as on a pipe,
--input-size says that it is raw. Standard output takes the input's kind.

The order of the steps is roi, size, format, mul, add; each is a call of the library.
A conversion that the library doesn't have is made by way of a third format, mostly
BGR24. A result that the output's kind can't hold is converted at the end: to BGR24
for png, jpeg and npy, to the y4m format with the same chroma or else I420.
--roi is in pixels of the input; on half-size planes an odd origin is rounded down.
NV12 frames of whole blocks of 8 x 2 pixels take the library's quick way to BGR24, whose
values differ a little from those of other sizes.

NumPy files on a pipe need the count of frames in front: --frames N says it.

Examples:
  oxcv convert cat.png eye.png --roi 150,80,64,48 --size 640x --method nearest
  oxcv convert cat.png - --output-kind raw --format I420 | player
  oxcv convert film.y4m frame.png --frames 1
  oxcv convert film.y4m film.npy --size 224x224 --format BGR_32F --mul 0.0039 --add -0.5

Exit status: 0 done, 1 failed, 2 wrong use. Outputs appear whole or not at all.)";

constexpr char const* infoHelp = R"(Examples:
  oxcv info film.y4m
  oxcv info cat.nv12 --input-size 451x300)";

/// What is wrong with a command line that the parser refuses.
std::string complaint(CLI::App const& app, CLI::ParseError const& error) {
    // The parser looks for a command that is missing before it looks at words that are too many.
    bool const unknown = app.get_subcommands().empty() && app.remaining_size() > 0;
    return unknown ? "there is no command or option '" + app.remaining().front() + "'"
                   : std::string(error.what());
}

/// An option whose text goes through a function that throws `UsageError`.
template <class Parser, class Target>
CLI::Option* addParsed(CLI::App& app, char const* name, Parser parser, Target& target,
                       char const* help, char const* type) {
    auto const take = [name, parser, &target](std::string const& text) {
        try {
            target = parser(text);
        } catch (UsageError const& error) {
            throw UsageError(std::string(name) + ": " + error.what());
        }
    };
    return app.add_option_function<std::string>(name, take, help)->type_name(type);
}

void addInput(CLI::App& app, InputRequest& input) {
    app.add_option("input", input.path, "File to read; - is standard input")->required();
    app.add_option("--input-kind", input.kind, "What the input is")
        ->check(CLI::IsMember(kindNames(), CLI::ignore_case))
        ->type_name("KIND");
    addParsed(app, "--input-format", parseFormat, input.format,
              "Format of raw frames, or how to take an array", "NAME");
    addParsed(app, "--input-size", parseSize, input.size, "Size of raw frames", "WxH");
}

void addOutput(CLI::App& app, OutputRequest& output) {
    app.add_option("output", output.path, "File to write; - is standard output")->required();
    app.add_option("--output-kind", output.kind, "What the output is to be")
        ->check(CLI::IsMember(kindNames(), CLI::ignore_case))
        ->type_name("KIND");
    app.add_option("--quality", output.quality, "Of a JPEG")
        ->check(CLI::Range(1, 100).description("1..100"))
        ->type_name("N")
        ->capture_default_str();
}

void addSteps(CLI::App& app, Steps& steps) {
    addParsed(app, "--roi", parseRect, steps.roi, "Take a region", "X,Y,W,H");
    addParsed(app, "--size", parseSizeRequest, steps.size, "Scale; 640x or x480 keep the aspect",
              "WxH");
    addParsed(app, "--method", parseMethod, steps.method, "How to scale: nearest, bilinear, area",
              "NAME")
        ->default_str("bilinear");
    addParsed(app, "--format", parseFormat, steps.format, "Convert; 'oxcv formats' lists the names",
              "NAME");
    app.add_option("--mul", steps.mul, "Multiply floats by a number")->type_name("V");
    app.add_option("--add", steps.add, "Add a number to floats")->type_name("V");
}

void addConvert(CLI::App& app, ConvertOptions& options) {
    CLI::App& command = *app.add_subcommand("convert", "Crop, scale and convert frames");
    addInput(command, options.input);
    addOutput(command, options.output);
    addSteps(command, options.steps);
    addParsed(command, "--frames", parseCount, options.frames, "Stop after so many frames", "N");
    options.backend = backendNames().front();
    command
        .add_option("--backend", options.backend,
                    "What does the work: base, the row pipeline, or simd, vector code where\n"
                    "there is some and the pipeline elsewhere")
        ->check(CLI::IsMember(backendNames()))
        ->type_name("NAME")
        ->capture_default_str();
    command.footer(convertHelp);
    command.final_callback([&options] { convert(options); });
}

}  // namespace

int runCommandLine(int argc, char** argv) {
    CLI::App app("oxcv: pictures, video frames and tensors through libox_cv", "oxcv");
    app.require_subcommand(1);
    app.footer(generalHelp);

    ConvertOptions convert_options;
    addConvert(app, convert_options);
    InputRequest info_input;
    CLI::App& info = *app.add_subcommand("info", "Tell what a file holds");
    addInput(info, info_input);
    info.footer(infoHelp);
    info.final_callback([&info_input] { printInfo(info_input); });
    app.add_subcommand("formats", "List the formats, and what the library does with them")
        ->final_callback(printFormats);

    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        if (error.get_exit_code() == 0) {
            return app.exit(error);  // help
        }
        throw UsageError(complaint(app, error) + "; 'oxcv --help' tells the rest");
    }
    return 0;
}

}  // namespace oxcv
