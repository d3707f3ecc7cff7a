// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "operation.h"

#include <algorithm>
#include <iterator>

namespace ox::benchmarks {

std::vector<Operation> allOperations(Size size) {
    std::vector<Operation> all;
    for (auto const& operations : {colourOperations, floatOperations, resampleOperations,
                                   convolutionOperations, tensorOperations, cameraOperations}) {
        std::vector<Operation> some = operations(size);
        std::move(some.begin(), some.end(), std::back_inserter(all));
    }
    return all;
}

}  // namespace ox::benchmarks
