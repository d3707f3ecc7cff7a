#include "tensor_mapping.h"

#include "printable.h"

namespace oxcv {

namespace {

/// A list of four numbers.
std::string toJson(ox::Rect const& rect) {
    return "[" + std::to_string(rect.x) + ", " + std::to_string(rect.y) + ", " +
           std::to_string(rect.width) + ", " + std::to_string(rect.height) + "]";
}

}  // namespace

void writeMapping(OutputFile& file, std::vector<MappedFile> const& files) {
    std::string separator = "[\n";
    for (MappedFile const& mapped : files) {
        std::string const start = R"({"file": )" + jsonString(mapped.path) + R"(, "frame": )";
        std::string const end = R"(, "source": )" + toJson(mapped.mapping.source) +
                                R"(, "inner": )" + toJson(mapped.mapping.inner) + "}";
        for (std::int64_t frame = 0; frame < mapped.frames; ++frame) {
            std::string object = separator;
            object.append(start).append(std::to_string(frame)).append(end);
            if (!file.write(object.data(), object.size())) {
                file.check();
            }
            separator = ",\n";
        }
    }
    static_cast<void>(file.write("\n]\n", 3));
    file.check();
}

}  // namespace oxcv
