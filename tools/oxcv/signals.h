// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Signals that would end the program in the middle of a file.

#pragma once

namespace oxcv {

/// Makes write() report an error when the reader has gone or a file may grow no further. The
/// signals for these would end the program; so it can remove a half-made output.
void ignoreWriteSignals();

/// From now on `clean` is called before a signal ends the program. Signals that the program was
/// started to ignore, as nohup does, stay ignored.
/// @param clean only calls what signal handlers may call
void cleanOnSignals(void (*clean)());

/// Calls `clean`, as a signal would.
void cleanUp();

}  // namespace oxcv
