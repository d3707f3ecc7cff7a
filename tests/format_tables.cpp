// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Makes the tables of docs/formats.md out of what the code decides by.
///
///     format_tables formats.md          # fails unless the page has them
///     format_tables --write formats.md  # puts them there

#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "ox_core/ox_impl_format_facts.h"
#include "ox_cv/ox_cv.h"
#include "ox_cv/ox_impl_rules.h"

namespace {

constexpr std::string_view samples[]{"",
                                     "gray",
                                     "R G B",
                                     "R, G, B",
                                     "B G R",
                                     "B, G, R",
                                     "Y, U, V",
                                     "Y, V, U",
                                     "Y, U V",
                                     "Y, V U",
                                     "Y, V, U",
                                     "Y U Y V, of two pixels",
                                     "U Y V Y, of two pixels",
                                     "Y, U V",
                                     "Y U V",
                                     "Y, U, V",
                                     "two",
                                     "three",
                                     "four",
                                     "one",
                                     "one",
                                     "",
                                     "",
                                     "",
                                     "gray",
                                     "B G R",
                                     "B, G, R"};
static_assert(std::size(samples) == ox::impl::formatTable.size());

std::vector<ox::FrameFormat> allFormats() {
    std::vector<ox::FrameFormat> formats;
    for (std::uint32_t i = 0; i < ox::impl::formatTable.size(); ++i) {
        if (ox::impl::formatTable[i].plane_count != 0) {
            formats.push_back(static_cast<ox::FrameFormat>(i));
        }
    }
    return formats;
}

bool isYuv(ox::FrameFormat format) {
    return format >= ox::FRAME_I420 && format <= ox::FRAME_YUV444_PLANAR;
}

std::string nameOf(ox::FrameFormat format) {
    return "`" + std::string(ox::toString(format)).substr(6) + "`";
}

std::string chromaOf(ox::FrameFormat format) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    if (!isYuv(format)) {
        return "";
    }
    if (facts.planes[1].half_width || facts.pixel_group == 2) {
        return facts.planes[1].half_height ? "4:2:0" : "4:2:2";
    }
    return "4:4:4";
}

/// Letters of the methods that a backend scales by.
template <class Scales>
std::string methodsOf(Scales const& scales) {
    std::string letters;
    letters += scales(ox::ResizeNearestNeighbour) ? "n " : "";
    letters += scales(ox::ResizeBilinear) ? "b " : "";
    letters += scales(ox::ResizeArea) ? "a " : "";
    return letters.substr(0, letters.empty() ? 0 : letters.size() - 1);
}

ox::Frame clearFrame(ox::FrameFormat format, ox::Size size) {
    ox::Frame frame;
    frame.reuse(format, size, ox::DeviceContext(), 0);
    frame.setZero();
    return frame;
}

bool isFiltered(ox::FrameFormat format) {
    ox::Frame const frame = clearFrame(format, {16, 16});
    ox::BoxKernel kernel;
    ox::ScalerConvolutional scaler;
    ox::Frame small;
    try {
        scaler.reuse(kernel, frame, {8, 8}, ox::OX_SCALER_FIXED_POINT_16S);
        ox::produceFrame(scaler, small);
    } catch (ox::Exception const&) {
        return false;
    }
    return true;
}

bool isMadeTensor(ox::FrameFormat format) {
    ox::TensorRecipe recipe;
    recipe.width = recipe.height = 8;
    ox::FrameToTensor to_tensor;
    to_tensor.reuse(recipe);
    ox::Tensor input;
    input.reuse(to_tensor.layout(1), ox::DeviceContext::cpuContext());
    try {
        to_tensor.run(clearFrame(format, {16, 16}), ox::emptyRoi(), input, 0);
    } catch (ox::Exception const&) {
        return false;
    }
    return true;
}

std::string rowOf(std::vector<std::string> const& cells) {
    std::string row = "|";
    for (std::string const& cell : cells) {
        row += (cell.empty() ? cell : " " + cell) + " |";
    }
    return row + "\n";
}

std::string formatRow(ox::FrameFormat format) {
    ox::impl::FormatFacts const& facts = ox::impl::factsOf(format);
    int const bits = facts.planes[0].bits;
    auto const pipeline = [=](ox::ResizeMethod method) {
        return ox::impl::pipelineScales(format, method);
    };
    auto const vectors = [=](ox::ResizeMethod method) {
        return method == ox::ResizeArea ? ox::impl::hasAreaResizer(bits)
                                        : ox::impl::hasResizers(bits);
    };
    return rowOf({nameOf(format), std::to_string(facts.plane_count), std::string(samples[format]),
                  chromaOf(format), std::to_string(bits), methodsOf(pipeline), methodsOf(vectors),
                  isFiltered(format) ? "yes" : "", isMadeTensor(format) ? "yes" : ""});
}

std::string formatTable() {
    std::string table =
        "| `FRAME_...` | planes | samples | chroma | bits | pipeline | vectors | filters | tensor "
        "|\n"
        "|---|---|---|---|---|---|---|---|---|\n";
    for (ox::FrameFormat const format : allFormats()) {
        table += formatRow(format);
    }
    return table;
}

/// The formats that one is converted to; "YUV" if all others of these are among them.
template <class Converts>
std::string targetsOf(ox::FrameFormat src, Converts const& converts) {
    bool has_all_yuv = true;
    for (ox::FrameFormat const dst : allFormats()) {
        has_all_yuv = has_all_yuv && (!isYuv(dst) || converts(src, dst));
    }
    std::string list;
    for (ox::FrameFormat const dst : allFormats()) {
        bool const is_listed = src != dst && converts(src, dst);
        if (is_listed && !(has_all_yuv && isYuv(dst))) {
            list += (list.empty() ? "" : ", ") + nameOf(dst);
        }
    }
    return has_all_yuv ? list + (list.empty() ? "YUV" : ", YUV") : list;
}

std::string conversionTable() {
    std::string table =
        "| `FRAME_...` | pipeline converts it to | vectors convert it to |\n|---|---|---|\n";
    for (ox::FrameFormat const src : allFormats()) {
        std::string const pipeline = targetsOf(src, ox::impl::pipelineConverts);
        std::string const vectors = targetsOf(src, ox::impl::vectorConverts);
        if (!pipeline.empty() || !vectors.empty()) {
            table += rowOf({nameOf(src), pipeline, vectors});
        }
    }
    return table;
}

/// Puts a table into the page, between its two marks.
void replace(std::string& page, std::string const& name, std::string const& table) {
    std::string const begin = "<!-- table: " + name + " -->\n";
    std::string const end = "<!-- end -->\n";
    std::size_t const from = page.find(begin);
    std::size_t const to = from == std::string::npos ? from : page.find(end, from);
    if (to == std::string::npos) {
        throw std::runtime_error("the page has no place for the table of " + name);
    }
    std::size_t const start = from + begin.size();
    page.replace(start, to - start, "\n" + table + "\n");  // blank lines, as Markdown wants them
}

std::string read(char const* path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int count, char** arguments) try {
    bool const writes = count == 3 && std::string_view(arguments[1]) == "--write";
    char const* const path = arguments[count - 1];
    std::string const old = read(path);
    std::string page = old;
    replace(page, "formats", formatTable());
    replace(page, "conversions", conversionTable());
    if (writes) {
        std::ofstream(path, std::ios::binary) << page;
        return 0;
    }
    if (page != old) {
        std::fprintf(stderr, "%s isn't as the code has it: format_tables --write\n", path);
        return 1;
    }
    return 0;
} catch (std::exception const& error) {
    std::fprintf(stderr, "format_tables: %s\n", error.what());
    return 1;
}
