// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "limits.h"

namespace ox::benchmarks {

namespace {

double vectorLimitOf(Family family, std::string const& operation) {
    switch (family) {
        case Family::Colour:
        case Family::Nearest:
            return 0.60;
        case Family::Copy:
            return 1.00;
        case Family::Bilinear:
            if (operation.find("1280x720") == std::string::npos) {
                return 0.95;
            }
            return operation.find("GRAY8") == std::string::npos ? 0.25 : 0.35;
        case Family::FloatBilinear:
            return 0.80;
        case Family::Area:
        case Family::Warp:
            return 0.50;
        case Family::Tensor:
            return 0.40;
        default:
            return 1.00;
    }
}

std::optional<double> pipelineLimitOf(Family family) {
    switch (family) {
        case Family::Colour:
        case Family::Area:
        case Family::Convolution:
            return 1.00;
        case Family::Copy:
            return 1.30;
        case Family::Camera:
            return 0.35;
        case Family::Bilinear:
        case Family::Nearest:
            return 0.80;
        default:
            return std::nullopt;
    }
}

}  // namespace

std::optional<double> limitOf(Family family, std::string const& operation,
                              std::string const& road) {
    return road == vectorRoad ? vectorLimitOf(family, operation) : pipelineLimitOf(family);
}

double meanLimitOf(std::string const& road) {
    return road == vectorRoad ? 0.45 : 0.85;
}

double instructionLimitOf(std::string const& road) {
    return road == vectorRoad ? 1.10 : 1.30;
}

double meanInstructionLimitOf(std::string const& road) {
    return road == vectorRoad ? 0.45 : 0.60;
}

}  // namespace ox::benchmarks
