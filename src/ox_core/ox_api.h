/// @file
/// Marks what the shared libraries export; everything else is hidden.

#pragma once

#define OX_API __attribute__((visibility("default")))
