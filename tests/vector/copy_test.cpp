// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Copies of many bytes, which go in pieces.
#include "vector/copy.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ox::test {
namespace {

/// Differs from piece to piece: 251 divides no power of two.
std::uint8_t sampleAt(std::size_t i) {
    return static_cast<std::uint8_t>(i % 251 + 1);
}

TEST(CopyBytes, WritesAllPiecesAndNothingBehind) {
    constexpr std::size_t piece = 262144;
    for (std::size_t const count :
         {std::size_t{0}, std::size_t{1}, piece - 1, piece, piece + 1, 2 * piece, 3 * piece + 77}) {
        std::vector<std::uint8_t> src(count);
        for (std::size_t i = 0; i < count; ++i) {
            src[i] = sampleAt(i);
        }
        std::vector<std::uint8_t> dst(count + 1);
        vector::copyBytes(src.data(), count, dst.data());
        for (std::size_t i = 0; i < count; ++i) {
            ASSERT_EQ(dst[i], sampleAt(i)) << "byte " << i << " of " << count;
        }
        EXPECT_EQ(dst[count], 0) << count;
    }
}

}  // namespace
}  // namespace ox::test
