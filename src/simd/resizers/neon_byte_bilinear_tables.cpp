// Tables of the vector byte bilinear class that no run reads. The class is defined to have them,
// with these contents. Runs gather by a program with wider windows, for any number of channels.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <limits>

#include "simd/resizers/byte_bilinear.h"

namespace Simd::Neon {

namespace {

constexpr std::int32_t blockBytes = sizeof GatherBlock::shuffle;
constexpr std::int32_t blockPairs = blockBytes / 2;

/// A block ends when it has eight pixels, or when the next pixel lies 15 or more behind its start.
std::uint64_t mostBlocks(ResizerParam const& param) {
    return param.srcW / (blockBytes - 1) + param.dstW / blockPairs + 2;
}

/// @return how many blocks there are
std::uint64_t fillBlocks(ResizerParam const& param, std::int32_t const* index, GatherBlock* block) {
    auto const last_start = static_cast<std::int32_t>(param.srcW) - blockBytes;
    auto const width = static_cast<std::int32_t>(param.dstW);
    GatherBlock const* const first = block;
    std::int32_t start = 0;
    if (index[0] < 0) {  // nothing fits the first block
        *block++ = GatherBlock{};
        start = last_start;
    }
    for (std::int32_t x = 0; x < width; ++block) {
        *block = {start, 2 * x, {}};
        std::int32_t const begin = x;
        std::int32_t const end = std::min(x + blockPairs, width);
        do {
            auto const place = static_cast<std::uint32_t>(index[x] - start);
            auto const pair = static_cast<std::uint16_t>(place * 0x0101U + 0x0100U);
            std::memcpy(block->shuffle + std::ptrdiff_t{2} * (x - begin), &pair, sizeof pair);
            ++x;
        } while (x < end && index[x] - start < blockBytes - 1);
        start = x < width ? std::min(last_start, index[x]) : start;
    }
    return static_cast<std::uint64_t>(block - first);
}

}  // namespace

bool gathersBlocks(ResizerParam const& param) {
    constexpr auto most = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
    return param.channels == 1 && param.srcW < 4 * param.dstW && 2 * param.dstW <= most;
}

void ResizerByteBilinear::fillUnreadTables(std::int32_t const* index) {
    if (gathersBlocks(param)) {
        gather.Resize(mostBlocks(param), tableAlign);
        blocks = gather.data != nullptr ? fillBlocks(param, index, gather.data) : 0;
    } else {
        ix.Resize(param.dstW, tableAlign);
        std::copy_n(index, param.dstW, ix.data);
    }
}

}  // namespace Simd::Neon
