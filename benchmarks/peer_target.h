// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Other libraries, held to the instruction set that the library is held to.

#pragma once

#include <string>

namespace ox::benchmarks {

/// Holds the other libraries to AVX2, or leaves them alone for any other name. OpenCV reads its
/// limit, OPENCV_CPU_DISABLE, when a program starts: `script/bench` sets it.
void holdPeers(std::string const& target);

/// Whether `holdPeers` holds them, for those that ask for each object.
bool arePeersHeld();

}  // namespace ox::benchmarks
