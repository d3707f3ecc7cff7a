/// @file
/// The routines of the resizers, and the programs by which vector ones gather the samples of a row.
///
/// A program is a list of steps: each loads a window of the source row, permutes it and multiplies
/// by weights. Only the instruction set that compiled it can run it.

#pragma once

#include <cstddef>
#include <cstdint>

#include "vector/aligned_array.h"
#include "vector/gather.h"

namespace Simd {

/// log2 of what the two weights of a byte bilinear pair add up to. A sum over both directions has
/// twice as many fractional bits.
constexpr int byteBilinearBits = 4;
constexpr std::int32_t byteBilinearRange = 1 << byteBilinearBits;
constexpr int byteBilinearShift = 2 * byteBilinearBits;
constexpr std::int32_t byteBilinearRounding = 1 << (byteBilinearShift - 1);

/// An axis of a bilinear resizer of bytes.
struct ByteAxis {
    std::uint64_t src;  ///< samples
    std::uint64_t dst;
    bool exact;  ///< whether weights are rounded from the exact fraction or from a float sum
};

/// Fills in, for each destination index, the first sample and the weight of the second. Vector
/// routines take axes of at least `leastVectorSamples` indices and of at most `mostVectorSamples`
/// indices and samples.
using FillByteSamples = void(ByteAxis const& axis, std::int32_t* index, std::int32_t* weight);
constexpr std::uint64_t leastVectorSamples = 16;
/// Up to this many samples, the centres of pixels are exact floats.
constexpr std::uint64_t mostVectorSamples = std::uint64_t{1} << 23;

/// The columns of a bilinear row of bytes.
struct BytePairs {
    std::int32_t const*
        index;  ///< first source pixel of each pixel, -1 for none; with 64 bytes of room
    std::uint8_t const* alpha;  ///< the two weights of each entry, with 64 bytes of room
    std::uint64_t width;        ///< pixels of the result
    std::uint64_t channels;
    std::uint64_t rowBytes;  ///< of the source
};

/// Where the weights of an entry are in `BytePairs::alpha`: in long rows, past 2^31 bytes.
constexpr std::uint64_t pairOfEntry(std::uint64_t entry) {
    return 2 * entry;
}

struct BytePairProgram {
    AlignedArray<std::int32_t> offsets;  ///< of each step: its window, its first entry; without
                                         ///< vector code, of each entry: its two samples
    AlignedArray<std::uint8_t> tables;   ///< of each step: the places of its pairs, their weights
    AlignedArray<std::uint8_t> scratch;  ///< a window for a row that is shorter
    std::uint64_t steps = 0;
    std::uint64_t rowBytes = 0;  ///< of the source
};

using CompileBytePairs = void(BytePairs const& pairs, BytePairProgram& program);
/// The weighted sum of two bytes, for each entry of the program. `row` has 64 bytes of room behind
/// its end.
using BlendBytePairs = void(BytePairProgram& program, std::uint8_t const* src, std::uint16_t* row);
/// (top * (range - weight) + bottom * weight + rounding) >> shift, for at least 16 entries.
using BlendByteRows = void(std::uint16_t const* top, std::uint16_t const* bottom,
                           std::int32_t weight, std::size_t count, std::uint8_t* dst);

/// log2 of what the weights of a cell's columns, and those of its rows, add up to (about).
constexpr int byteAreaBits = 11;
constexpr std::int32_t byteAreaRange = 1 << byteAreaBits;
constexpr int byteAreaShift = 2 * byteAreaBits;
constexpr std::int32_t byteAreaRounding = 1 << (byteAreaShift - 1);

/// The cells that a row is averaged in.
struct ByteAreaColumns {
    std::int32_t const* ax;  ///< share of each boundary's column that is right of it
    std::int32_t const* ix;  ///< source column at each boundary
    std::uint64_t width;     ///< cells
    std::uint64_t channels;  ///< 1 to 4
    std::uint64_t rowBytes;  ///< of the source
};

/// The source rows of a destination row.
struct ByteAreaRows {
    std::uint8_t const* first;
    std::size_t stride;
    std::uint64_t more;   ///< rows behind the first
    std::int32_t weight;  ///< of the first row
    std::int32_t inner;   ///< of the rows between the first and the last
    std::int32_t outer;   ///< of the last row, if there are more
};

struct ByteAreaProgram {
    AlignedArray<std::int32_t> offsets;  ///< of each register: its steps' number, their windows
    AlignedArray<std::uint8_t> tables;   ///< of each step: places in its window, their weights
    std::uint64_t blocks = 0;            ///< that are stored, of `entryLanes` registers each
    std::uint64_t entryLanes = 1;        ///< of an entry in a register
    bool singleSteps = false;            ///< whether each register has one step
    std::uint64_t entries = 0;           ///< of the result
    bool clamps = false;                 ///< whether results are clamped to bytes, or wrap
};

/// @return false if the instruction set has no program for such columns
using CompileByteArea = bool(ByteAreaColumns const& columns, ByteAreaProgram& program);
/// Sums modulo 2^32, rounded to their upper 10 bits. Results of three and four channels are clamped
/// to bytes; of one and two channels the low byte is kept.
using AverageByteArea = void(ByteAreaProgram const& program, ByteAreaRows const& rows,
                             std::uint8_t* dst);

/// The columns of a bilinear row of floats or of 16-bit elements.
struct FloatColumns {
    std::int32_t const* first;  ///< offset of each entry's first sample, in elements
    float const* weight;        ///< of each entry's second sample
    std::uint64_t entries;
    std::uint64_t channels;
    std::uint64_t rowElements;  ///< of the source
};

struct FloatProgram {
    AlignedArray<std::int32_t> offsets;  ///< of each step: its window, first entry, entries' places
    std::uint64_t steps = 0;
    bool takesPairs = false;  ///< whether entries are loaded one by one instead
};

/// Does nothing for a program that is compiled already.
/// @return false if the instruction set has no program for such columns
using CompileFloatColumns = bool(FloatColumns const& columns, FloatProgram& program);
/// fma(first, 1 - weight, weight * second). `sums` has 64 bytes of room behind its end.
using BlendFloatColumns = void(FloatProgram const& program, FloatColumns const& columns,
                               float const* src, float* sums);
/// Both directions at once, of rows whose program takes pairs.
using BlendFloatPairRows = void(FloatColumns const& columns, float const* top, float const* bottom,
                                float weight, float* dst);
/// fma(1 - weight, top, weight * bottom)
using BlendFloatRows = void(float const* top, float const* bottom, float weight, std::size_t count,
                            float* dst);

}  // namespace Simd

namespace Simd::Neon {

/// The routines of one instruction set.
struct ResizeRoutines {
    ox::vector::GatherRoutines gather;
    FillByteSamples* fillByteSamples;
    CompileBytePairs* compileBytePairs;
    BlendBytePairs* blendBytePairs;
    BlendByteRows* blendByteRows;
    CompileByteArea* compileByteArea;
    AverageByteArea* averageByteArea;
    CompileFloatColumns* compileFloatColumns;
    BlendFloatColumns* blendFloatColumns;
    BlendFloatPairRows* blendFloatPairRows;
    BlendFloatRows* blendFloatRows;
};

/// Those of the instruction set in use; see vector/dispatch.h.
ResizeRoutines const& resizeRoutines();

// Each puts in the routines of one source for the best instruction set of this processor, and none
// where that has no vector code.
void takeResizeAreaRoutines(ResizeRoutines& routines);
void takeResizeByteRoutines(ResizeRoutines& routines);
void takeResizeFloatRoutines(ResizeRoutines& routines);

}  // namespace Simd::Neon
