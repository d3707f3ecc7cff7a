// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/backend.h"

namespace model {

namespace {

Image part(Image const& image, Region region) {
    return region.whole() ? image : crop(image, region.x, region.y, region.width, region.height);
}

bool sameSize(Image const& a, Image const& b) {
    return a.width == b.width && a.height == b.height;
}

Outcome failedAssertion(std::string const& expression) {
    return {false, AssertionFailed, "Assertion failed: " + expression};
}

}  // namespace

Outcome Backend::colorCvt(Image const& src, Image& dst, Region region) {
    Image const from = part(src, region);
    if (!sameSize(from, dst)) {
        return failedAssertion("temp.size() == dst.size()");
    }
    if (region.whole() && src.format == Nv12 && dst.format == Bgr24) {
        nv12ToBgrDirect(src, dst);
        return {};
    }
    return _converter.run(from, dst);
}

Outcome Backend::resize(Image const& src, Image& dst, Region src_region, Region dst_region) {
    if (src.format != dst.format) {
        return failedAssertion("src.initialized() && src.format() == dst.format()");
    }
    Image block = part(dst, dst_region);
    Outcome const outcome = _scaler.run(part(src, src_region), block, method);
    if (dst_region.whole()) {
        dst = block;
    } else {
        paste(block, dst, dst_region.x, dst_region.y);
    }
    return outcome;
}

Outcome Backend::convert(Image const& src, Image& dst, Region region) {
    Image const from = part(src, region);
    if (sameSize(from, dst)) {
        return colorCvt(src, dst, region);
    }
    if (src.format == dst.format) {
        return resize(src, dst, region, {});
    }
    Image scaled = makeImage(src.format, dst.width, dst.height, 0);
    Outcome const outcome = _scaler.run(from, scaled, method);
    return outcome.ok ? _converter.run(scaled, dst) : outcome;
}

}  // namespace model
