// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// The kinds of failure that an `ox::Exception` reports.

#pragma once

#include <cstdint>

namespace ox {

/// The numbers are part of the binary interface; those that are missing belong to other components.
enum Status : std::uint32_t {
    StatusAssertionFailed = 2,       ///< a broken precondition, text "Assertion failed: ..."
    StatusNullPointer = 4,           ///< a null pointer parameter
    StatusOutOfRange = 5,            ///< a parameter out of range
    StatusInvalidParameter = 6,      ///< an invalid parameter
    StatusNotInitialized = 7,        ///< use of an object before its `reuse`
    StatusNotSupported = 8,          ///< an operation or a pair of formats that doesn't exist
    StatusInputNotInitialized = 14,  ///< an input frame or producer that isn't initialized
    StatusCapacityExceeded = 19,     ///< more taps, bytes or memory than there are
    StatusUnsupportedFormat = 29,    ///< a format that is unknown at that point
};

}  // namespace ox
