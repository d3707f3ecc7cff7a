// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The list of kernels, a line each. Everything else follows from it: the scalar routines that
/// `Simd::Base` declares, the tables of routines, `Simd::Neon::X`, the records `Simd::X` and the
/// lists of the tests.

#pragma once

#include <cstddef>

namespace Simd {

/// A vector routine needs rows of at least a block; the last block may overlap the one before.
inline constexpr std::size_t packedBlock = 16;
inline constexpr std::size_t yuv420Block = 32;  ///< pixels of two rows
inline constexpr std::size_t halfBlock = 4;

/// Instead of a block: the kernel picks its routine on the first call, whatever the size.
struct OnFirstUse {};
inline constexpr OnFirstUse onFirstUse;

}  // namespace Simd

// X(name, shape, block): rows, or arrays, of at least `block` elements take the vector routine. A
// group has the kernels of one source of vector routines.
// clang-format off

#define OX_BGR_KERNELS(X)                                         \
    X(SwapRedBlue,              PlaneToPlane,       packedBlock)  \
    X(SplitThreePlanes,         SplitThree,         packedBlock)  \
    X(MergeThreePlanes,         MergeThree,         packedBlock)  \
    X(SplitTwoPlanes,           SplitTwo,           packedBlock)  \
    X(MergeTwoPlanes,           MergeTwo,           packedBlock)  \
    X(ConvertBgrToGray,         PlaneToPlane,       packedBlock)  \
    X(ExpandGrayToBgr,          PlaneToPlane,       packedBlock)

#define OX_BGR_TO_YUV_KERNELS(X)                                  \
    X(ConvertBgrToI420,         PackedToYuv,        yuv420Block)  \
    X(ConvertBgrToYuv444,       PackedToYuv,        packedBlock)  \
    X(ConvertBgrToNv12,         PackedToSemiPlanar, yuv420Block)

#define OX_YUV_TO_BGR_KERNELS(X)                                  \
    X(ConvertI420ToBgr,         YuvToPacked,        yuv420Block)  \
    X(ConvertI420ToRgb,         YuvToPacked,        yuv420Block)  \
    X(ConvertYuv444ToBgr,       YuvToPacked,        packedBlock)  \
    X(ConvertNv12ToBgr,         SemiPlanarToPacked, yuv420Block)  \
    X(ConvertNv12ToRgb,         SemiPlanarToPacked, yuv420Block)  \
    X(ConvertNv21ToBgr,         SemiPlanarToPacked, yuv420Block)  \
    X(ConvertNv21ToRgb,         SemiPlanarToPacked, yuv420Block)  \
    X(ConvertNv12ToBgrDirectly, SemiPlanarToPacked, yuv420Block)

#define OX_FLOAT_KERNELS(X)                                       \
    X(ScaleBytesToFloats,       BytesToFloats,      packedBlock)  \
    X(ScaleFloatsToBytes,       FloatsToBytes,      packedBlock)  \
    X(FloatsToHalves,           FloatsToHalfBits,   halfBlock)    \
    X(HalvesToFloats,           HalfBitsToFloats,   halfBlock)    \
    X(AddConstantFloats,        ConstantIntoFloats, onFirstUse)   \
    X(AccumulateScaledFloats,   FloatsIntoFloats,   onFirstUse)   \
    X(MultiplyFloats,           ConstantIntoFloats, onFirstUse)

#define OX_KERNELS(X)        \
    OX_BGR_KERNELS(X)        \
    OX_BGR_TO_YUV_KERNELS(X) \
    OX_YUV_TO_BGR_KERNELS(X) \
    OX_FLOAT_KERNELS(X)

// clang-format on
