// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What the options of several commands have in common.

#pragma once

#include <CLI/CLI.hpp>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "failure.h"
#include "image_io.h"
#include "parse.h"
#include "tensor_recipes.h"

namespace oxcv {

/// An option whose text goes through `parser`, which throws `UsageError`, and then to `store`.
template <class Parser, class Store>
CLI::Option* addStored(CLI::App& app, char const* name, Parser parser, Store store,
                       char const* help, std::string const& type) {
    auto const take = [name, parser, store](std::string const& text) {
        try {
            store(parser(text));
        } catch (UsageError const& error) {
            throw UsageError(std::string(name) + ": " + error.what());
        }
    };
    return app.add_option_function<std::string>(name, take, help)->type_name(type);
}

/// The same, with a variable to store in.
template <class Parser, class Target>
CLI::Option* addParsed(CLI::App& app, char const* name, Parser parser, Target& target,
                       char const* help, std::string const& type) {
    auto const store = [&target](auto const& value) { target = value; };
    return addStored(app, name, parser, store, help, type);
}

/// An option whose text is one of a few words.
CLI::Option* addChoice(CLI::App& app, char const* name, std::vector<std::string> const& choices,
                       std::string& target, char const* help, std::string const& type);

/// An option whose text is one of the words of a table.
template <class Value, std::size_t Count, class Target>
CLI::Option* addWords(CLI::App& app, char const* name, std::array<Word<Value>, Count> const& words,
                      Target& target, char const* help) {
    std::vector<std::string> choices;
    choices.reserve(Count);
    for (Word<Value> const& word : words) {
        choices.emplace_back(word.text);
    }
    auto const parser = [&words, choices](std::string const& text) {
        std::string const choice = parseChoice(choices, text);
        return std::find_if(words.begin(), words.end(),
                            [&](Word<Value> const& word) { return word.text == choice; })
            ->value;
    };
    return addParsed(app, name, parser, target, help, "NAME:{" + joined(choices, ",") + "}");
}

/// The options that say what an input is, but its path.
void addInputKind(CLI::App& app, InputRequest& input);

/// `--max-pixels`, and its usual value.
void addMaxPixels(CLI::App& app, std::int64_t& most);

}  // namespace oxcv
