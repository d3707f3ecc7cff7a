// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "simd/resizers/routines.h"

#include <algorithm>

#include "vector/dispatch.h"

namespace Simd::Neon {

namespace {

/// The offsets of both bytes of each entry.
void compileBytePairs(BytePairs const& pairs, BytePairProgram& program) {
    program.steps = pairs.width * pairs.channels;
    program.offsets.Resize(2 * program.steps, 16);
    program.tables.Resize(2 * program.steps, 16);
    std::copy_n(pairs.alpha, 2 * program.steps, program.tables.data);
    auto const channels = static_cast<std::int32_t>(pairs.channels);
    std::int32_t* offset = program.offsets.data;
    for (std::uint64_t x = 0; x < pairs.width; ++x) {
        std::int32_t const first = pairs.index[x] * channels;
        for (std::int32_t c = 0; c < channels; ++c) {
            *offset++ = std::max(first, 0) + c;
            *offset++ = first + channels + c;
        }
    }
}

void blendBytePairs(BytePairProgram& program, std::uint8_t const* src, std::uint16_t* row) {
    for (std::uint64_t k = 0; k < program.steps; ++k) {
        std::int32_t const* const offset = program.offsets.data + 2 * k;
        std::uint8_t const* const weight = program.tables.data + 2 * k;
        row[k] =
            static_cast<std::uint16_t>(src[offset[0]] * weight[0] + src[offset[1]] * weight[1]);
    }
}

void blendByteRows(std::uint16_t const* top, std::uint16_t const* bottom, std::int32_t weight,
                   std::size_t count, std::uint8_t* dst) {
    for (std::size_t k = 0; k < count; ++k) {
        std::int32_t const sum = top[k] * (byteBilinearRange - weight) + bottom[k] * weight;
        dst[k] = static_cast<std::uint8_t>((sum + byteBilinearRounding) >> byteBilinearShift);
    }
}

[[gnu::cold]] ResizeRoutines findResizeRoutines() {
    using ox::vector::neverRun;
    using ox::vector::noProgram;
    ResizeRoutines found{
        .gather = {},
        .fillByteSamples = Base::fillByteSamples,
        .compileBytePairs = compileBytePairs,
        .blendBytePairs = blendBytePairs,
        .blendByteRows = blendByteRows,
        .compileByteArea = noProgram,
        .averageByteArea = neverRun,
        .compileFloatColumns = noProgram,
        .blendFloatColumns = neverRun,
        .blendFloatPairRows = neverRun,
        .blendFloatRows = neverRun,
    };
#ifdef OX_WITH_HIGHWAY
    ox::vector::takeGatherRoutines(found.gather);
    takeResizeAreaRoutines(found);
    takeResizeByteRoutines(found);
    takeResizeFloatRoutines(found);
#endif
    return found;
}

}  // namespace

ResizeRoutines const& resizeRoutines() {
    return ox::vector::RoutineTable<ResizeRoutines, findResizeRoutines>::get();
}

}  // namespace Simd::Neon
