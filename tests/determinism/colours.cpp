// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <array>

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

constexpr Size pictureSizes[]{{1, 1}, {2, 2}, {3, 5}, {31, 4}, {70, 6}, {333, 18}};

// Tells what a region of the frame is: whole, or without edges, beginning at even and odd pixels.
std::array<Rect, 3> regionsOf(Size size) {
    return {Rect{0, 0, size.width, size.height}, Rect{2, 2, size.width - 3, size.height - 3},
            Rect{1, 1, size.width - 2, size.height - 2}};
}

// Converts frames of all pictureSizes.
// @param convert converts a frame into another
// @return whether any of them was converted
template <class Convert>
bool digestSizes(Digest& digest, FrameFormat from, FrameFormat to, Convert convert) {
    Random random(from * 100 + to);
    bool served = false;
    for (Size const size : pictureSizes) {
        Frame const src = randomFrame(from, size, random);
        Frame dst = randomFrame(to, size, random);
        served = attempt(digest, [&] { convert(src, dst); }) || served;
        addFrame(digest, dst);
    }
    return served;
}

template <class Convert>
bool digestRegions(Digest& digest, FrameFormat from, FrameFormat to, Convert convert) {
    Random random(from * 100 + to + 1);
    bool served = false;
    for (Size const size : pictureSizes) {
        Frame const src = randomFrame(from, size, random);
        for (Rect const region : regionsOf(size)) {
            if (region.width <= 0 || region.height <= 0) {
                continue;
            }
            Frame dst = randomFrame(to, {region.width, region.height}, random);
            served = attempt(digest, [&] { convert(src, dst, region); }) || served;
            addFrame(digest, dst);
        }
    }
    return served;
}

// Calls digest(digest of the pair, from, to) for all pairs of formats. A pair that is served has an
// entry; all others share one.
template <class DigestPair>
void digestPairs(Table& table, std::string const& family, DigestPair digestPair) {
    Digest refusals;
    for (FrameFormat const from : formats()) {
        for (FrameFormat const to : formats()) {
            Digest digest;
            if (digestPair(digest, from, to)) {
                table.add(family + " " + nameOf(from) + " to " + nameOf(to), digest.value());
            } else {
                refusals.addNumber(digest.value());
            }
        }
    }
    table.add(family + " refused", refusals.value());
}

void digestBackendColours(Table& table, std::string const& name, ICvBackend& backend) {
    digestPairs(table, name + " colour", [&](Digest& digest, FrameFormat from, FrameFormat to) {
        return digestSizes(digest, from, to, [&](Frame const& src, Frame& dst) {
            backend.colorCvt(src, dst, emptyRoi());
        });
    });
    digestPairs(
        table, name + " colour of a region", [&](Digest& digest, FrameFormat from, FrameFormat to) {
            return digestRegions(digest, from, to, [&](Frame const& src, Frame& dst, Rect region) {
                backend.colorCvt(src, dst, region);
            });
        });
}

}  // namespace

void digestColours(Table& table) {
    digestPairs(table, "pipeline colour", [](Digest& digest, FrameFormat from, FrameFormat to) {
        return digestSizes(digest, from, to, [to](Frame const& src, Frame& dst) {
            FormatConverter converter;
            converter.reuse(src, to);
            produceFrame(converter, dst);
        });
    });
    digestPairs(table, "pipeline colour at once",
                [](Digest& digest, FrameFormat from, FrameFormat to) {
                    return digestSizes(digest, from, to, [to](Frame const& src, Frame& dst) {
                        FormatConverter converter;
                        converter.reuse(src, to);
                        converter.produceAtOnce(dst);
                    });
                });
    CvBackendBase base;
    digestBackendColours(table, "base", base);
    CvBackendSimd simd;
    digestBackendColours(table, "simd", simd);
    digestPairs(table, "helper colour", [](Digest& digest, FrameFormat from, FrameFormat to) {
        return digestSizes(digest, from, to, [to](Frame const& src, Frame& dst) {
            dst.clear();  // and what a refusal leaves there is old memory
            Frame converted;
            colorConvert(src, to, converted);
            dst = converted;
        });
    });
}

}  // namespace ox::test
