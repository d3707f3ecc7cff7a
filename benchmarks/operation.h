/// @file
/// What is measured: one operation, done by each library that has it.

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "ox_core/ox_geometry.h"

namespace ox::benchmarks {

/// One library's way to do an operation. Everything that can be set up before is.
struct Contestant {
    std::string name;
    std::function<void()> run;
};

struct Operation {
    std::string name;
    std::size_t bytes = 0;  ///< read and written; a memcpy that moves as many stands beside it
    std::function<void()> ours;
    std::function<bool()> is_right;  ///< of our output, after a run of it
    std::vector<Contestant> peers;
};

std::vector<Operation> colourOperations(Size size);
std::vector<Operation> floatOperations(Size size);
/// Resizing and turning, of frames of the size.
std::vector<Operation> resampleOperations(Size size);
/// Reductions to a third by filters.
std::vector<Operation> convolutionOperations(Size size);

}  // namespace ox::benchmarks
