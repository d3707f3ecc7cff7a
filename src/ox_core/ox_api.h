// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Marks what the shared libraries export; everything else is hidden.

#pragma once

#define OX_API __attribute__((visibility("default")))

/// Private parts of exported classes.
#define OX_LOCAL __attribute__((visibility("hidden")))
