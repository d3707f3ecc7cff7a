/// @file
/// Programs by which vector routines gather samples of a row.

#pragma once

#include "vector/aligned_array.h"

namespace Simd {

/// The steps of a row. A step takes a window of the source row, permutes its bytes and multiplies
/// them by weights; window, offsets and tables are those of the instruction set that compiled it.
struct RowProgram {
    AlignedArray<std::int32_t> offsets;
    AlignedArray<std::uint8_t> tables;
    AlignedArray<std::uint8_t> scratch;  ///< where a row, or its end, is shorter than a window
    std::uint64_t steps = 0;
    std::uint64_t stepBytes = 0;   ///< of copied pixels: the most that a step has
    bool singleSteps = false;      ///< of averaged rows: each register takes one
    std::uint64_t entryLanes = 1;  ///< of averaged rows: in each register
    bool takesPairs = false;       ///< of rows of floats: entries are loaded one by one
    std::uint64_t rowBytes = 0;    ///< of the source
    std::uint64_t entries = 0;     ///< of the result
    std::uint64_t channels = 0;
};

/// Which whole pixels a row is made of.
struct PixelColumns {
    std::int32_t const* offset;  ///< byte of each pixel in the source row, never falling
    std::uint64_t width;         ///< pixels of the result
    std::uint64_t pixelSize;     ///< bytes
    std::uint64_t rowBytes;      ///< of the source
};

/// @return false if the instruction set has no program for such columns, or there is no memory
using CompilePixels = bool(PixelColumns const& columns, RowProgram& program);
using CopyPixels = void(RowProgram& program, std::uint8_t const* src, std::uint8_t* dst);

/// An axis of a bilinear resizer of bytes.
struct ByteAxis {
    std::uint64_t src;  ///< samples
    std::uint64_t dst;
    bool exact;  ///< whether weights are rounded from the exact fraction or from a float sum
};

/// For each destination index, the first sample and the weight of the second, for axes of at
/// least `leastVectorSamples` indices and at most `mostVectorSamples` indices and samples.
using FillByteSamples = void(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight);
constexpr std::uint64_t leastVectorSamples = 16;
/// Up to here the centres of pixels are exact floats.
constexpr std::uint64_t mostVectorSamples = std::uint64_t{1} << 23;

/// What a bilinear row of bytes is made of.
struct BytePairs {
    std::int32_t const*
        index;  ///< first source pixel of each pixel, -1 for none; with 64 bytes of room
    std::uint8_t const* alpha;  ///< the two weights of each entry, with 64 bytes of room
    std::uint64_t width;        ///< pixels of the result
    std::uint64_t channels;
    std::uint64_t rowBytes;  ///< of the source
};

/// Where the weights of an entry are in `BytePairs::alpha`: behind 2^31 bytes in the longest rows.
constexpr std::uint64_t pairOfEntry(std::uint64_t entry) {
    return 2 * entry;
}

using CompileBytePairs = void(BytePairs const& pairs, RowProgram& program);
/// Sums of two weighted bytes, for as many entries as the program has. `row` has 64 bytes of room
/// behind its end.
using BlendBytePairs = void(RowProgram& program, std::uint8_t const* src, std::uint16_t* row);
/// (top * (16 - weight) + bottom * weight + 128) >> 8, for at least 16 entries.
using BlendByteRows = void(std::uint16_t const* top, std::uint16_t const* bottom,
                           std::int32_t weight, std::size_t count, std::uint8_t* dst);

/// The cells that a row is averaged in.
struct AreaColumns {
    std::int32_t const* ax;  ///< share of each boundary's column that is right of it
    std::int32_t const* ix;  ///< source column at each boundary
    std::uint64_t width;     ///< cells
    std::uint64_t channels;  ///< 1 to 4
    std::uint64_t rowBytes;  ///< of the source
};

/// The source rows of a destination row.
struct AreaRows {
    std::uint8_t const* first;
    std::size_t stride;
    std::uint64_t more;   ///< rows behind the first
    std::int32_t weight;  ///< of the first row
    std::int32_t inner;   ///< of the rows between the first and the last
    std::int32_t outer;   ///< of the last row, if there are more
};

/// @return false if the instruction set has no program for such columns
using CompileAreaColumns = bool(AreaColumns const& columns, RowProgram& program);
/// Sums modulo 2^32, rounded to their upper 10 bits; those of three and four channels are clamped
/// to bytes, of one and two cut to them.
using AverageAreaRow = void(RowProgram const& program, AreaRows const& rows, std::uint8_t* dst);

/// What a bilinear row of floats is made of.
struct FloatColumns {
    std::int32_t const* first;  ///< offset of each entry's first sample, in elements
    float const* weight;        ///< of each entry's second sample
    std::uint64_t entries;
    std::uint64_t channels;
    std::uint64_t rowElements;  ///< of the source
};

/// Nothing is done for what is compiled already.
/// @return false if the instruction set has no program for such columns
using CompileFloatColumns = bool(FloatColumns const& columns, RowProgram& program);
/// fma(first, 1 - weight, weight * second). `sums` has 64 bytes of room behind its end.
using BlendFloatColumns = void(RowProgram const& program, FloatColumns const& columns,
                               float const* src, float* sums);
/// Both directions at once, of rows whose program takes pairs.
using BlendFloatPairRows = void(FloatColumns const& columns, float const* top, float const* bottom,
                                float weight, float* dst);
/// fma(1 - weight, top, weight * bottom)
using BlendFloatRows = void(float const* top, float const* bottom, float weight, std::size_t count,
                            float* dst);

}  // namespace Simd
