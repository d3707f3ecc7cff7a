// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Values of the command line: from text, and back.

#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "affine.h"
#include "ox_core/ox_frame_format.h"
#include "ox_core/ox_geometry.h"
#include "ox_cv/ox_cv_backend.h"
#include "ox_cv/ox_scaler_area.h"

namespace oxcv {

/// A size. One side may be open (0): it is chosen so that the aspect stays.
struct SizeRequest {
    int width = 0;
    int height = 0;
};

/// "640x480", "640x" or "x480".
/// @throws UsageError
SizeRequest parseSizeRequest(std::string const& text);
/// "640x480".
/// @throws UsageError
ox::Size parseSize(std::string const& text);
/// "X,Y,W,H".
/// @throws UsageError
ox::Rect parseRect(std::string const& text);

/// The name of a file, which isn't empty.
/// @throws UsageError
std::string parsePath(std::string const& text);

/// A positive number.
/// @throws UsageError
std::int64_t parseCount(std::string const& text);
/// A number from 1 to 100.
/// @throws UsageError
int parseQuality(std::string const& text);
/// A finite number.
/// @throws UsageError
float parseFloat(std::string const& text);
/// Three finite numbers with commas between them, or one that stands for all three.
/// @throws UsageError
std::array<float, 3> parseThree(std::string const& text);
/// The same, in the words of `parseFloat`.
/// @throws UsageError
std::array<float, 3> parseFactors(std::string const& text);
/// Three bytes, or one.
/// @throws UsageError
std::array<std::uint8_t, 3> parseBytes(std::string const& text);
/// One to three positive numbers; 0 where there is none.
/// @throws UsageError
std::array<std::int32_t, 3> parseStrides(std::string const& text);
/// A number of 32 bits, of either sign.
/// @throws UsageError
std::int32_t parseInteger(std::string const& text);
/// The choice that equals the text, in any case of letters.
/// @param choices in lower case
/// @throws UsageError
std::string parseChoice(std::vector<std::string> const& choices, std::string const& text);
/// "nearest", "bilinear" or "area".
/// @throws UsageError
ox::ResizeMethod parseMethod(std::string const& name);
/// "8" or "16".
/// @throws UsageError
ox::ScalerPrecision parsePrecision(std::string const& text);
/// "nearest" or "bilinear".
/// @throws UsageError
ox::ResizeMethod parseWarpMethod(std::string const& name);

/// "A,B,C,D,E,F".
/// @throws UsageError also for a matrix without an inverse
Matrix parseMatrix(std::string const& text);
/// Degrees, of either sign.
/// @throws UsageError
double parseAngle(std::string const& text);

/// The size asked for, with an open side rounded, and at least 1.
/// @throws Failure if it is too large
ox::Size resolveSize(SizeRequest const& request, ox::Size source);

/// The format of that name, in any case and with or without "FRAME_"; `FRAME_FORMAT_NONE` if there
/// is none.
ox::FrameFormat formatByName(std::string_view name);
/// The same.
/// @throws UsageError if there is none
ox::FrameFormat parseFormat(std::string const& name);
/// The name without "FRAME_".
std::string shortName(ox::FrameFormat format);

/// "640x480".
std::string toText(ox::Size size);
/// The words, with `separator` between them.
std::string joined(std::vector<std::string> const& words, std::string_view separator);
std::string toLower(std::string_view text);

}  // namespace oxcv
