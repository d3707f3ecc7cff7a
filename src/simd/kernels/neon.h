/// @file
/// The vector routines, on every processor; the bytes are those of the scalar routines, but for the
/// rounding of `FloatsToHalves` and the signalling NaNs of `HalvesToFloats`.

#pragma once

#include "simd/kernels/kernel_types.h"

namespace Simd::Neon {

/// Whether the vector routines are eligible. Always true in the library; tests switch it off.
extern bool KernelsEnabled;

/// The routines of one instruction set.
struct Routines {
    PlaneToPlane* swapRedBlue;
    SplitThree* splitThreePlanes;
    MergeThree* mergeThreePlanes;
    SplitTwo* splitTwoPlanes;
    MergeTwo* mergeTwoPlanes;
    PlaneToPlane* convertBgrToGray;
    PlaneToPlane* expandGrayToBgr;
    BytesToFloats* scaleBytesToFloats;
    FloatsToBytes* scaleFloatsToBytes;
    PackedToYuv* convertBgrToI420;
    PackedToYuv* convertBgrToYuv444;
    YuvToPacked* convertI420ToBgr;
    YuvToPacked* convertI420ToRgb;
    YuvToPacked* convertYuv444ToBgr;
    SemiPlanarToPacked* convertNv12ToBgr;
    SemiPlanarToPacked* convertNv12ToRgb;
    SemiPlanarToPacked* convertNv21ToBgr;
    SemiPlanarToPacked* convertNv21ToRgb;
    SemiPlanarToPacked* convertNv12ToBgrDirectly;
    PackedToSemiPlanar* convertBgrToNv12;
    FloatsToHalfBits* floatsToHalves;
    HalfBitsToFloats* halvesToFloats;
    ConstantIntoFloats* addConstantFloats;
    FloatsIntoFloats* accumulateScaledFloats;
    ConstantIntoFloats* multiplyFloats;
};

/// Those of the instruction set in use; see vector/dispatch.h.
Routines const& routines();

/// The same, looked up anew.
Routines findRoutines();

template <class Shape>
struct Routine;

/// A vector routine, to be called as a function.
template <class... Arguments>
struct Routine<void(Arguments...)> {
    void (*Routines::*member)(Arguments...);

    auto get() const { return routines().*member; }
    void operator()(Arguments... arguments) const { get()(arguments...); }
};

inline constexpr Routine<PlaneToPlane> SwapRedBlue{&Routines::swapRedBlue};
inline constexpr Routine<SplitThree> SplitThreePlanes{&Routines::splitThreePlanes};
inline constexpr Routine<MergeThree> MergeThreePlanes{&Routines::mergeThreePlanes};
inline constexpr Routine<SplitTwo> SplitTwoPlanes{&Routines::splitTwoPlanes};
inline constexpr Routine<MergeTwo> MergeTwoPlanes{&Routines::mergeTwoPlanes};
inline constexpr Routine<PlaneToPlane> ConvertBgrToGray{&Routines::convertBgrToGray};
inline constexpr Routine<PlaneToPlane> ExpandGrayToBgr{&Routines::expandGrayToBgr};
inline constexpr Routine<BytesToFloats> ScaleBytesToFloats{&Routines::scaleBytesToFloats};
inline constexpr Routine<FloatsToBytes> ScaleFloatsToBytes{&Routines::scaleFloatsToBytes};
inline constexpr Routine<PackedToYuv> ConvertBgrToI420{&Routines::convertBgrToI420};
inline constexpr Routine<PackedToYuv> ConvertBgrToYuv444{&Routines::convertBgrToYuv444};
inline constexpr Routine<YuvToPacked> ConvertI420ToBgr{&Routines::convertI420ToBgr};
inline constexpr Routine<YuvToPacked> ConvertI420ToRgb{&Routines::convertI420ToRgb};
inline constexpr Routine<YuvToPacked> ConvertYuv444ToBgr{&Routines::convertYuv444ToBgr};
inline constexpr Routine<SemiPlanarToPacked> ConvertNv12ToBgr{&Routines::convertNv12ToBgr};
inline constexpr Routine<SemiPlanarToPacked> ConvertNv12ToRgb{&Routines::convertNv12ToRgb};
inline constexpr Routine<SemiPlanarToPacked> ConvertNv21ToBgr{&Routines::convertNv21ToBgr};
inline constexpr Routine<SemiPlanarToPacked> ConvertNv21ToRgb{&Routines::convertNv21ToRgb};
inline constexpr Routine<PackedToSemiPlanar> ConvertBgrToNv12{&Routines::convertBgrToNv12};
inline constexpr Routine<SemiPlanarToPacked> ConvertNv12ToBgrDirectly{
    &Routines::convertNv12ToBgrDirectly};
/// Rounds to nearest, ties to even.
inline constexpr Routine<FloatsToHalfBits> FloatsToHalves{&Routines::floatsToHalves};
/// Quiets signalling NaNs.
inline constexpr Routine<HalfBitsToFloats> HalvesToFloats{&Routines::halvesToFloats};
inline constexpr Routine<ConstantIntoFloats> AddConstantFloats{&Routines::addConstantFloats};
inline constexpr Routine<FloatsIntoFloats> AccumulateScaledFloats{
    &Routines::accumulateScaledFloats};

inline constexpr Routine<ConstantIntoFloats> MultiplyFloats{&Routines::multiplyFloats};

}  // namespace Simd::Neon
