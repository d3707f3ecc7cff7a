/// @file
/// The plain routines that vector ones hand short rows and last pixels to.

#pragma once

#include <algorithm>

#include "rows/colour/routines.h"

namespace ox::rows {

extern std::array<YuvToBgr*, yuvLayouts> const plainYuvToBgr;
extern std::array<ConvertRow*, yuvLayouts> const plainLuma;
extern std::array<BgrToYuv*, yuvLayouts> const plainBgrToYuv;
ConvertRow plainBgrToGray;
ConvertRow plainGrayToBgr;
ConvertRow plainSwapRedBlue;
ConvertRow plainBytesToFloats;
ConvertRow plainFloatsToLowBytes;
SplitRow plainSplitTwo;
SplitRow plainSplitThree;
MergeRow plainMergeTwo;
MergeRow plainMergeThree;

inline bool hasNull(std::uint8_t* const* planes, std::size_t count) {
    return std::find(planes, planes + count, nullptr) != planes + count;
}

}  // namespace ox::rows
