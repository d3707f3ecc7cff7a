// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// What is measured: one operation, done by each library that has it.

#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "ox_core/ox_geometry.h"

namespace ox::benchmarks {

/// Operations that are alike in what can be expected of them.
enum class Family {
    Colour,
    Copy,
    Nearest,
    Bilinear,
    FloatBilinear,
    Area,
    Warp,
    Convolution,
    Tensor,
    Camera
};

/// One of the library's own ways. Everything that can be set up before is.
struct Road {
    char const* name;  ///< one of the two below
    std::function<void()> run;
    std::function<bool()> is_right;  ///< of the output, after a run
};

constexpr char const* vectorRoad = "vectors";
constexpr char const* pipelineRoad = "pipeline";

/// Another library's way.
struct Contestant {
    std::string name;
    std::function<void()> run;
};

struct Operation {
    std::string name;
    Family family = Family::Colour;
    std::size_t bytes = 0;  ///< read and written; a memcpy that moves as many stands beside it
    std::vector<Road> roads;
    std::vector<Contestant> peers;
};

std::vector<Operation> colourOperations(Size size);
std::vector<Operation> floatOperations(Size size);
/// Resizing and turning, of frames of the size.
std::vector<Operation> resampleOperations(Size size);
/// Reductions to a third by filters.
std::vector<Operation> convolutionOperations(Size size);
/// Frames of the size made into what networks take.
std::vector<Operation> tensorOperations(Size size);

/// Camera frames of the size made into tensors by `FrameToTensor`.
std::vector<Operation> cameraOperations(Size size);

std::vector<Operation> allOperations(Size size);

}  // namespace ox::benchmarks
