// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Random pictures, and the digests of results.
#pragma once

#include <string>
#include <vector>

#include "determinism/digest.h"
#include "ox_core/ox_core.h"
#include "support/random.h"

namespace ox::test {

// Every format that has a name.
std::vector<FrameFormat> const& formats();

// "NV12" for `FRAME_NV12`.
std::string nameOf(FrameFormat format);

// A frame of random bytes; floats of random bits, some of them no numbers. Rows follow one another
// in memory, or begin at multiples of 64 bytes.
Frame randomFrame(FrameFormat format, Size size, Random& random);

// Pixels, without what lies between rows.
void addFrame(Digest& digest, Frame const& frame);

// A float whose exponent isn't far from 0, by integer arithmetic.
float moderateFloat(Random& random);

struct Scaling {
    Size src;
    Size dst;
};

// Runs an operation of the library.
// @return false if it refused, which is part of the digest
template <class Operation>
bool attempt(Digest& digest, Operation operation) {
    try {
        operation();
        digest.addNumber(0);
        return true;
    } catch (Exception const& refusal) {
        digest.addNumber(refusal.status);
        return false;
    }
}

// What scale(source, destination) makes of frames of a format, one for each pair of sizes.
template <std::size_t count, class Scale>
std::uint64_t digestScaled(FrameFormat format, Scaling const (&scalings)[count], Scale scale) {
    Random random(format);
    Digest digest;
    for (Scaling const& sizes : scalings) {
        Frame const src = randomFrame(format, sizes.src, random);
        Frame dst = randomFrame(format, sizes.dst, random);
        attempt(digest, [&] { scale(src, dst); });
        addFrame(digest, dst);
    }
    return digest.value();
}

}  // namespace ox::test
