/// @file
/// The kernels: one record each, which is also the function that callers call.

#pragma once

#include <tuple>

#include "simd/kernels/base.h"
#include "simd/kernels/neon.h"

namespace Simd {

/// A vector routine needs a whole block in the row, of which the last may overlap the one before.
inline constexpr std::size_t packedBlock = 16;
inline constexpr std::size_t yuv420Block = 32;  ///< pixels of two rows
inline constexpr std::size_t halfBlock = 4;

template <class Shape, int size_argument>
struct Kernel;

/// A scalar and a vector routine behind one call, which takes the vector routine for rows (or
/// arrays) of at least `threshold` elements.
/// @tparam size_argument which argument that number is
template <class... Arguments, int size_argument>
struct Kernel<void(Arguments...), size_argument> {
    using Routine = void(Arguments...);

    char const* name;
    Routine* base;
    Neon::Routine<Routine> neon;
    std::size_t threshold;

    Routine* routine(std::size_t size) const {
        return size >= threshold && Neon::KernelsEnabled ? neon.get() : base;
    }

    void operator()(Arguments... arguments) const {
        routine(std::get<size_argument>(std::tie(arguments...)))(arguments...);
    }
};

/// A kernel that picks its routine on the first call and keeps it, whatever the size.
/// @tparam base_routine one per kernel, which holds the kernels' choices apart
template <auto base_routine, auto neon_routine>
struct FirstUseKernel {
    char const* name;

    static auto* routine() {
        static auto* const chosen = Neon::KernelsEnabled ? (*neon_routine).get() : base_routine;
        return chosen;
    }

    template <class... Arguments>
    void operator()(Arguments... arguments) const {
        routine()(arguments...);
    }
};

#define OX_KERNEL(name, shape, size_argument, threshold) \
    inline constexpr Kernel<shape, size_argument> name { \
#name, Base::name, Neon::name, threshold         \
    }

OX_KERNEL(SwapRedBlue, PlaneToPlane, 1, packedBlock);
OX_KERNEL(SplitThreePlanes, SplitThree, 2, packedBlock);
OX_KERNEL(MergeThreePlanes, MergeThree, 6, packedBlock);
OX_KERNEL(SplitTwoPlanes, SplitTwo, 2, packedBlock);
OX_KERNEL(MergeTwoPlanes, MergeTwo, 4, packedBlock);
OX_KERNEL(ConvertBgrToGray, PlaneToPlane, 1, packedBlock);
OX_KERNEL(ExpandGrayToBgr, PlaneToPlane, 1, packedBlock);
OX_KERNEL(ScaleBytesToFloats, BytesToFloats, 1, packedBlock);
OX_KERNEL(ScaleFloatsToBytes, FloatsToBytes, 1, packedBlock);
OX_KERNEL(ConvertBgrToI420, PackedToYuv, 1, yuv420Block);
OX_KERNEL(ConvertI420ToBgr, YuvToPacked, 6, yuv420Block);
OX_KERNEL(ConvertI420ToRgb, YuvToPacked, 6, yuv420Block);
OX_KERNEL(ConvertBgrToYuv444, PackedToYuv, 1, packedBlock);
OX_KERNEL(ConvertYuv444ToBgr, YuvToPacked, 6, packedBlock);
OX_KERNEL(ConvertNv12ToBgr, SemiPlanarToPacked, 4, yuv420Block);
OX_KERNEL(ConvertNv12ToRgb, SemiPlanarToPacked, 4, yuv420Block);
OX_KERNEL(ConvertNv21ToBgr, SemiPlanarToPacked, 4, yuv420Block);
OX_KERNEL(ConvertNv21ToRgb, SemiPlanarToPacked, 4, yuv420Block);
OX_KERNEL(ConvertBgrToNv12, PackedToSemiPlanar, 1, yuv420Block);
OX_KERNEL(ConvertNv12ToBgrDirectly, SemiPlanarToPacked, 4, yuv420Block);
OX_KERNEL(FloatsToHalves, FloatsToHalfBits, 1, halfBlock);
OX_KERNEL(HalvesToFloats, HalfBitsToFloats, 1, halfBlock);

#undef OX_KERNEL

inline constexpr FirstUseKernel<Base::AddConstantFloats, &Neon::AddConstantFloats>
    AddConstantFloats{"AddConstantFloats"};
inline constexpr FirstUseKernel<Base::AccumulateScaledFloats, &Neon::AccumulateScaledFloats>
    AccumulateScaledFloats{"AccumulateScaledFloats"};
inline constexpr FirstUseKernel<Base::MultiplyFloats, &Neon::MultiplyFloats> MultiplyFloats{
    "MultiplyFloats"};

/// Every kernel that goes by its size; tests and benchmarks walk this list.
inline constexpr std::tuple kernels{
    SwapRedBlue,        SplitThreePlanes,   MergeThreePlanes, SplitTwoPlanes,
    MergeTwoPlanes,     ConvertBgrToGray,   ExpandGrayToBgr,  ScaleBytesToFloats,
    ScaleFloatsToBytes, ConvertBgrToI420,   ConvertI420ToBgr, ConvertI420ToRgb,
    ConvertBgrToYuv444, ConvertYuv444ToBgr, ConvertNv12ToBgr, ConvertNv12ToRgb,
    ConvertNv21ToBgr,   ConvertNv21ToRgb,   ConvertBgrToNv12, ConvertNv12ToBgrDirectly,
    FloatsToHalves,     HalvesToFloats,
};

/// Copies `height` rows of `width` pixels of `pixel_size` bytes.
void CopyPlaneRows(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                   std::size_t pixel_size, Bytes dst, std::size_t dst_stride);

}  // namespace Simd
