// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <filesystem>
#include <optional>
#include <system_error>

#include "commands.h"
#include "failure.h"
#include "tensor_array.h"
#include "tensor_mapping.h"
#include "tensor_run.h"

namespace oxcv {

namespace {

void checkFiles(TensorOptions const& options) {
    if (options.files.empty()) {
        throw UsageError("input is required; 'oxcv --help' tells the rest");
    }
    if (options.files.size() == 1) {
        throw UsageError("output is required; 'oxcv --help' tells the rest");
    }
    for (std::string const& path : options.files) {
        static_cast<void>(parsePath(path));
    }
    if (std::count(options.files.begin(), options.files.end() - 1, "-") > 1) {
        throw UsageError("standard input is named twice");
    }
    std::error_code error;
    std::string const& array = options.files.back();
    if (options.mapping == array || std::filesystem::equivalent(options.mapping, array, error)) {
        throw UsageError("--mapping: it is the array's own file");
    }
    checkArrayName(array, !options.raw);
}

}  // namespace

void makeTensor(TensorOptions const& options) {
    checkFiles(options);
    PictureMaker maker(options);
    std::vector<std::string> const inputs(options.files.begin(), options.files.end() - 1);
    OutputFile file(options.files.back());
    std::optional<OutputFile> mapping;
    if (!options.mapping.empty()) {
        mapping.emplace(options.mapping);
    }
    TensorArray array(file, maker.layout(), !options.raw);
    TensorRun run(options, inputs, array);
    run.run(maker);
    if (run.files().empty()) {
        throw Failure("no file is left, so nothing is written");
    }
    array.finish();
    file.complete();
    if (mapping) {
        writeMapping(*mapping, run.files());
        mapping->complete();
    }
    file.commit();
    if (mapping) {
        mapping->commit();
    }
    if (run.failures() > 0) {
        throw Failure(std::to_string(run.failures()) + " of " + std::to_string(inputs.size()) +
                      " files failed");
    }
}

}  // namespace oxcv
