// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/scale.h"

namespace model {

namespace {

std::vector<std::uint16_t> centres(int src, int dst) {
    std::int32_t const step = wrapped(std::int64_t{src} * 65536) / dst;
    std::vector<std::uint16_t> table;
    for (std::int64_t i = 0; i < dst; ++i) {
        table.push_back(static_cast<std::uint16_t>((wrapped(step / 2 + i * step) >> 16) & 0xFFFF));
    }
    return table;
}

}  // namespace

void Nearest::arm(Source source, int width, int height) {
    Geometry const src = source.geometry();
    _xs = centres(src.width, width);
    if (_xs.back() >= src.width) {
        refuseAssertion("_src_xs[dst_size.width - 1] < src_size.width");
    }
    _ys = centres(src.height, height);
    if (_ys.back() >= src.height) {
        refuseAssertion("_src_ys[dst_size.height - 1] < src_size.height");
    }
    _src_width = src.width;
    band().arm(source, 1);
    begin({src.format, width, height});
}

void Nearest::produce(Row const& out) {
    int const format = geometry().format;
    SourceRow const from = band().at(0);
    if (_src_width == outPlanes()[0].width) {
        copyRow(from, out);
        return;
    }
    if (!isScalable(format)) {
        refuse(NotSupported,
               "Failure in ScalerNearestNeighbor::produce(...) : unsupported frame format.");
    }
    for (std::size_t p = 0; p < outPlanes().size(); ++p) {
        fillElements(out[p], cutOf(format, p), outPlanes()[p].width,
                     [&](std::size_t element, std::size_t channel) {
                         return elementAt(from[p], cutOf(format, p), entryAt(_xs, element),
                                          channel);
                     });
    }
}

}  // namespace model
