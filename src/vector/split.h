// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Weights of 14 bits as pairs of bytes.

#pragma once

namespace ox::vector {

/// The weights of a sum over the channels of a pixel.
struct ChannelWeights {
    int b;
    int g;
    int r;
};

/// Each weight is 128 * high + low. With H the sum over the high parts and L over the low parts,
///   (sum + 2^13) >> 14  =  (H + 64 + (L >> 7)) >> 7
/// exactly, and all sums fit 16 bits.
struct SplitWeights {
    ChannelWeights high;
    ChannelWeights low;
};

constexpr bool fitsSixteenBits(ChannelWeights weights, int extra) {
    int positive = 0;
    int negative = 0;
    for (int const weight : {weights.b, weights.g, weights.r}) {
        (weight > 0 ? positive : negative) += 255 * weight;
    }
    return positive + extra <= 32767 && negative - extra >= -32768;
}

/// Takes the low part of a weight from 0 to 127 or from -128 to -1, whichever keeps the sums small.
constexpr SplitWeights splitWeights(ChannelWeights weights) {
    constexpr int rounding_and_carry = 64 + 256;
    for (int choice = 0; choice < 8; ++choice) {
        auto const high = [&](int weight, int bit) { return (weight >> 7) + (choice >> bit & 1); };
        SplitWeights split{};
        split.high = {high(weights.b, 0), high(weights.g, 1), high(weights.r, 2)};
        split.low = {weights.b - 128 * split.high.b, weights.g - 128 * split.high.g,
                     weights.r - 128 * split.high.r};
        if (fitsSixteenBits(split.high, rounding_and_carry) && fitsSixteenBits(split.low, 0)) {
            return split;
        }
    }
    throw "no split of these weights fits";
}

}  // namespace ox::vector
