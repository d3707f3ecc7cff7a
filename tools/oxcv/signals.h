/// @file
/// Signals that would end the program in the middle of a file.

#pragma once

namespace oxcv {

/// A reader that has gone, and a file that may grow no further, show as errors of write(), so that
/// what is half made is removed.
void ignoreWriteSignals();

/// From now on `clean` is called before a signal ends the program. Signals that the caller had
/// ignored, as nohup does, stay ignored.
/// @param clean may call what signal handlers may
void cleanOnSignals(void (*clean)());

/// What a signal would have cleaned.
void cleanUp();

}  // namespace oxcv
