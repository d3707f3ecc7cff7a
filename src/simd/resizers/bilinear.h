// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Bilinear resizing of 16-bit and float elements, with float weights.
///
/// A weighted pair is always fma(a, 1 - w, w * b): the product w * b is rounded first.

#pragma once

#include <type_traits>

#include "simd/resizers/resizer.h"
#include "vector/aligned_array.h"

namespace Simd {

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

namespace Simd::Base {

/// For each destination index along an axis: the index of the first source sample, and the weight
/// of the second one. With several `channels`, `index` counts elements, and both tables have an
/// entry for each channel. At the far end the first sample is the last but one, and the second has
/// weight 1. On an axis of one sample the first sample is -1.
void fillBilinear(ResizerMethod method, std::uint64_t src, std::uint64_t dst,
                  std::uint64_t channels, std::int32_t* index, float* weight);

/// The common part of both classes. The constructor builds the tables.
template <class T>
class ResizerBilinear : public Resizer {
  public:
    explicit ResizerBilinear(ResizerParam const& param);

    /// Shifts the strides to elements and calls the typed routine.
    void Run(std::uint8_t const* src, std::size_t srcStride, std::uint8_t* dst,
             std::size_t dstStride) override;
    /// @param srcStride, dstStride in elements
    virtual void Run(T const* src, std::size_t srcStride, T* dst, std::size_t dstStride) = 0;

  protected:
    /// 16-bit rows have room for a block behind their end.
    static constexpr std::uint64_t slack = std::is_same_v<T, float> ? 0 : 16;

    FloatColumns columns() const;

    AlignedArray<std::int32_t> ix;  ///< offset of each entry's first sample in a row, in elements
    AlignedArray<std::int32_t> iy;
    AlignedArray<float> ax;  ///< weight of each entry's second sample
    AlignedArray<float> ay;
    AlignedArray<float> bx[2];  ///< two rows after the horizontal pass
};

/// Any number of channels.
class ResizerFloatBilinear : public ResizerBilinear<float> {
  public:
    using ResizerBilinear::ResizerBilinear;
    using ResizerBilinear::Run;
    void Run(float const* src, std::size_t srcStride, float* dst, std::size_t dstStride) override;
};

/// One to four channels; any other number is left unwritten.
class ResizerShortBilinear : public ResizerBilinear<std::uint16_t> {
  public:
    using ResizerBilinear::ResizerBilinear;
    using ResizerBilinear::Run;
    void Run(std::uint16_t const* src, std::size_t srcStride, std::uint16_t* dst,
             std::size_t dstStride) override;
};

}  // namespace Simd::Base

namespace Simd::Neon {

class ResizerFloatBilinear : public Base::ResizerFloatBilinear {
  public:
    using Base::ResizerFloatBilinear::ResizerFloatBilinear;
    using Base::ResizerFloatBilinear::Run;
    void Run(float const* src, std::size_t srcStride, float* dst, std::size_t dstStride) override;

  private:
    FloatProgram program;
};

/// The scalar loops: no frame has elements of 16 bits.
class ResizerShortBilinear : public Base::ResizerShortBilinear {
  public:
    using Base::ResizerShortBilinear::ResizerShortBilinear;
};

}  // namespace Simd::Neon
