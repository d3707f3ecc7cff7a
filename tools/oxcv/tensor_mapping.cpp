// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "tensor_mapping.h"

#include "printable.h"

namespace oxcv {

namespace {

/// A list of four numbers. (The sum of a literal and a temporary string makes g++ 12 warn of copies
/// that overlap, at -O3.)
std::string toJson(ox::Rect const& rect) {
    std::string list = "[";
    for (int const number : {rect.x, rect.y, rect.width, rect.height}) {
        list.append(list.size() == 1 ? "" : ", ").append(std::to_string(number));
    }
    return list.append("]");
}

}  // namespace

void writeMapping(OutputFile& file, std::vector<MappedFile> const& files) {
    std::string text = "[";
    char const* separator = "\n";
    for (MappedFile const& mapped : files) {
        std::string const start = R"({"file": )" + jsonString(mapped.path) + R"(, "frame": )";
        std::string const end = R"(, "source": )" + toJson(mapped.mapping.source) +
                                R"(, "inner": )" + toJson(mapped.mapping.inner) + "}";
        for (std::int64_t frame = 0; frame < mapped.frames; ++frame) {
            text.append(separator).append(start).append(std::to_string(frame)).append(end);
            if (!file.write(text.data(), text.size())) {
                file.check();
            }
            text.clear();
            separator = ",\n";
        }
    }
    text.append("\n]\n");
    static_cast<void>(file.write(text.data(), text.size()));
    file.check();
}

}  // namespace oxcv
