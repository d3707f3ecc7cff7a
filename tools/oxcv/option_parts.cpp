// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "option_parts.h"

namespace oxcv {

CLI::Option* addChoice(CLI::App& app, char const* name, std::vector<std::string> const& choices,
                       std::string& target, char const* help, std::string const& type) {
    auto const parser = [choices](std::string const& text) { return parseChoice(choices, text); };
    return addParsed(app, name, parser, target, help, type + ":{" + joined(choices, ",") + "}");
}

void addInputKind(CLI::App& app, InputRequest& input) {
    addChoice(app, "--input-kind", kindNames(), input.kind, "What the input is", "KIND");
    addParsed(app, "--input-format", parseFormat, input.format,
              "Format of raw frames, or how to take an array", "NAME");
    addParsed(app, "--input-size", parseSize, input.size, "Size of raw frames", "WxH");
    addParsed(app, "--input-stride", parseStrides, input.strides,
              "Bytes from row to row of raw frames' planes", "N[,N[,N]]");
    app.add_flag("--tolerant", input.tolerant, "Take JPEG pictures with damaged data");
}

void addMaxPixels(CLI::App& app, std::int64_t& most) {
    addParsed(app, "--max-pixels", parseCount, most,
              "Refuse an input whose frames have more pixels, each", "N")
        ->default_str(std::to_string(most));
}

}  // namespace oxcv
