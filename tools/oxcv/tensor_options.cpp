// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "tensor_options.h"

#include <algorithm>
#include <cmath>

#include "filter.h"
#include "option_parts.h"
#include "printable.h"
#include "tensor_recipes.h"

namespace oxcv {

namespace {

constexpr char const* tensorHelp =
    R"(All pictures go to one array of N x C x H x W or, with --layout nhwc, N x H x W x C: one
picture for each PNG and JPEG, one for each frame of a y4m, npy or raw file, in the order
of the files. 'oxcv convert --help' tells of the kinds of files, and of --input-format,
--input-size and --input-stride, which hold for all inputs. The output is a NumPy array,
and its name ends with .npy; with --raw it is the array's numbers alone, little-endian.

--fit says how a picture comes to the size: stretch scales each side by its own factor;
letterbox keeps the aspect and leaves bars, of --bars; letterbox-top-left has them at the
right and at the bottom only; crop takes the middle of the picture. The method automatic is
area where both sides shrink to half or less, else bilinear. --kernel reduces by a filter,
as in convert, and never enlarges.

An element is (byte - mean) * scale; --std S is --scale 1/S. u8 and i8 are that, divided by
--quant-scale and rounded, plus --zero-point, clamped. --mean, --std, --scale and --bars
take three numbers in the order of --colour, or one for all; gray takes the first.
--recipe sets --size, --fit, --bars, --colour, --layout, --type, --mean and --std for a
well-known network; options beside it, wherever they stand, change it. 'oxcv recipes' lists
them.

YUV becomes colour as everywhere in the library, or by --matrix and --range; a y4m file's
own XCOLORRANGE stands in for a --range that isn't given. Gray of YUV is Y as it is.

--mapping writes JSON: a list of objects, one for each picture of the array and in its
order, with the file, the frame in it from 0 on, the rectangle that was read (source) and
where it went (inner), both as x, y, width, height. A pixel's edge X of the array is at
  source[0] + (X - inner[0]) * source[2] / inner[2]
of the file's frame, and Y is by [1] and [3]. Bytes of names that aren't UTF-8 are written
so that Python's os.fsencode restores them.

A file that can't be opened, read or taken ends the command, and nothing is written. With
--keep-going it is reported and left out, of the array as of the mapping, so later pictures
move up; frames before a damage stay. The exit status is 1 then, too. Nothing is written if
no picture is left.

--jobs N works on N files at once, with the memory of N; the bytes are the same.
An array on a pipe needs --raw or a known count of pictures: --frames N says it where files
don't, and files that are left out break the promise. --frames counts all files' frames
together.

Examples:
  oxcv tensor cat.png cat.npy --recipe imagenet
  oxcv tensor *.jpg batch.npy --recipe yolo --mapping map.json --jobs 4 --keep-going
  oxcv tensor cat.png cat.npy --recipe tflite --size 300x300 --type i8 --zero-point -128
  oxcv tensor film.y4m film.npy --recipe imagenet --type f16 --matrix bt709 --frames 100
  camera | oxcv tensor - - --raw --recipe yolo --input-format NV12 --input-size 1280x720 | net
  oxcv tensor cat.nv12 cat.npy --input-size 451x300 --size 96x96 --colour gray --std 255

Exit status and outputs are as in convert.)";

/// An option for each channel.
template <class Parser, class Value>
CLI::Option* addChannels(CLI::App& app, char const* name, Parser parser, Value (&target)[3],
                         char const* help) {
    auto const store = [&target](std::array<Value, 3> const& values) {
        std::copy(values.begin(), values.end(), target);
    };
    return addStored(app, name, parser, store, help, "A,B,C");
}

std::array<float, 3> parseDivisors(std::string const& text) {
    std::array<float, 3> numbers = parseThree(text);
    for (float& number : numbers) {
        number = 1.0F / number;
        if (!std::isfinite(number)) {
            throw UsageError("nothing can be divided by " + inQuotes(text));
        }
    }
    return numbers;
}

float parseQuantScale(std::string const& text) {
    float const number = parseFloat(text);
    if (!(number > 0.0F)) {
        throw UsageError(inQuotes(text) + " isn't above 0");
    }
    return number;
}

void addGeometry(CLI::App& app, TensorOptions& options) {
    ox::TensorRecipe& recipe = options.recipe;
    addParsed(app, "--roi", parseRect, options.roi, "Take a region of each picture", "X,Y,W,H");
    auto const store_size = [&recipe](ox::Size size) {
        recipe.width = size.width;
        recipe.height = size.height;
    };
    addStored(app, "--size", parseSize, store_size, "Of the pictures in the array", "WxH");
    addWords(app, "--fit", fitWords, recipe.fit, "How a picture comes to the size");
    addWords(app, "--method", tensorMethodWords, recipe.method, "How to scale");
    CLI::Option* const kernel = addChoice(app, "--kernel", kernelNames(), options.kernel,
                                          "Reduce by a filter instead", "NAME");
    kernel->excludes("--method");
    addParsed(app, "--precision", parsePrecision, recipe.precision,
              "Bits of a filter's weights: 8, 16", "BITS")
        ->default_str("16")
        ->needs(kernel);
}

void addNumbers(CLI::App& app, ox::TensorRecipe& recipe) {
    addChannels(app, "--bars", parseBytes, recipe.bars, "Colour of a letterbox");
    addWords(app, "--colour", colourWords, recipe.colour, "Channels, in their order");
    addWords(app, "--layout", layoutWords, recipe.layout, "Order of the axes");
    addWords(app, "--type", typeWords, recipe.element, "Floats, halves, bytes or signed bytes");
    addChannels(app, "--mean", parseThree, recipe.mean, "Subtract from bytes");
    CLI::Option* const divisor =
        addChannels(app, "--std", parseDivisors, recipe.scale, "Then divide by");
    addChannels(app, "--scale", parseThree, recipe.scale, "Or multiply by")->excludes(divisor);
    addParsed(app, "--quant-scale", parseQuantScale, recipe.quantScale,
              "What a step of u8 and i8 stands for", "V")
        ->default_str("1");
    addParsed(app, "--zero-point", parseInteger, recipe.zeroPoint, "What stands for 0 in u8 and i8",
              "N")
        ->default_str("0");
}

void addRun(CLI::App& app, TensorOptions& options) {
    addParsed(app, "--mapping", parsePath, options.mapping, "Write where pixels come from", "FILE");
    app.add_flag("--raw", options.raw, "Write no header");
    addParsed(app, "--jobs", parseCount, options.jobs, "Work on so many files at once", "N")
        ->default_str("1");
    app.add_flag("--keep-going", options.keep_going, "Leave out files that fail");
    addParsed(app, "--frames", parseCount, options.frames, "Stop after so many frames in all", "N");
    addMaxPixels(app, options.max_pixels);
}

}  // namespace

void addTensor(CLI::App& app, TensorOptions& options) {
    CLI::App& command =
        *app.add_subcommand("tensor", "Make the array that a network takes in, from pictures");
    command
        .add_option_function<std::vector<std::string>>(
            "files", [&options](std::vector<std::string> const& files) { options.files = files; },
            "Files to read, and the one to write; - is standard input or output")
        ->type_name("IN OUT");
    // Options are taken in the order in which they were added; so others change the recipe.
    auto const take_recipe = [](std::string const& text) {
        return recipeByName(parseChoice(recipeNames(), text));
    };
    addParsed(command, "--recipe", take_recipe, options.recipe, "What a network wants",
              "NAME:{" + joined(recipeNames(), ",") + "}");
    addGeometry(command, options);
    addNumbers(command, options.recipe);
    addWords(command, "--matrix", matrixWords, options.recipe.matrix, "From YUV to colours");
    addWords(command, "--range", rangeWords, options.range, "Of YUV, beside a matrix");
    addInputKind(command, options.input);
    addRun(command, options);
    command.footer(tensorHelp);
    command.final_callback([&options] { makeTensor(options); });
}

}  // namespace oxcv
