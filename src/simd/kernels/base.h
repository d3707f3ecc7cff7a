/// @file
/// The scalar routines, which define the result of each kernel.

#pragma once

#include "simd/kernels/kernel_types.h"

namespace Simd::Base {

PlaneToPlane SwapRedBlue;
SplitThree SplitThreePlanes;
MergeThree MergeThreePlanes;
SplitTwo SplitTwoPlanes;
MergeTwo MergeTwoPlanes;
PlaneToPlane ConvertBgrToGray;
PlaneToPlane ExpandGrayToBgr;
BytesToFloats ScaleBytesToFloats;
FloatsToBytes ScaleFloatsToBytes;

PackedToYuv ConvertBgrToI420;
PackedToYuv ConvertBgrToYuv444;
YuvToPacked ConvertI420ToBgr;
YuvToPacked ConvertI420ToRgb;
YuvToPacked ConvertYuv444ToBgr;
SemiPlanarToPacked ConvertNv12ToBgr;
SemiPlanarToPacked ConvertNv12ToRgb;
SemiPlanarToPacked ConvertNv21ToBgr;
SemiPlanarToPacked ConvertNv21ToRgb;
SemiPlanarToPacked ConvertNv12ToBgrDirectly;
PackedToSemiPlanar ConvertBgrToNv12;

/// Truncates.
FloatsToHalfBits FloatsToHalves;
HalfBitsToFloats HalvesToFloats;

ConstantIntoFloats AddConstantFloats;
FloatsIntoFloats AccumulateScaledFloats;
/// What `AccumulateScaledFloats` makes of a copy of `data` and zeros: products, with +0 for -0.
ConstantIntoFloats MultiplyFloats;

}  // namespace Simd::Base
