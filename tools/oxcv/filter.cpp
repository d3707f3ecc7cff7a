// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "filter.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "library_calls.h"
#include "ox_cv/ox_classic_kernels.h"
#include "parse.h"

namespace oxcv {

namespace {

template <class Kernel>
std::shared_ptr<ox::IKernel> make() {
    return std::make_shared<Kernel>();
}

struct KernelChoice {
    char const* name;
    std::shared_ptr<ox::IKernel> (*make)();
};

constexpr std::array kernelChoices{
    KernelChoice{"box", make<ox::BoxKernel>},
    KernelChoice{"triangle", make<ox::TriangleKernel>},
    KernelChoice{"mitchell", make<ox::MitchellNetravaliKernel>},
    KernelChoice{"catmull-rom", make<ox::CatmullRomKernel>},
    KernelChoice{"lanczos3", make<ox::Lanczos3Kernel>},
};

}  // namespace

std::vector<std::string> kernelNames() {
    std::vector<std::string> names;
    std::transform(kernelChoices.begin(), kernelChoices.end(), std::back_inserter(names),
                   [](KernelChoice const& choice) { return choice.name; });
    return names;
}

std::shared_ptr<ox::IKernel> makeKernel(std::string const& name) {
    std::string const wanted = toLower(name);
    auto const* const choice =
        std::find_if(kernelChoices.begin(), kernelChoices.end(),
                     [&](KernelChoice const& c) { return wanted == c.name; });
    if (choice == kernelChoices.end()) {
        throw UsageError("there is no kernel '" + name + "'");
    }
    return choice->make();
}

void Reduction::run(std::string const& step, ox::Frame const& frame, ox::Frame& result,
                    ox::IKernel& kernel, ox::ScalerPrecision precision) {
    if (frame.layout().plane[0].bits != 8) {
        throw Failure(step + ": " + shortName(frame.format()) +
                      ": filters take channels of 8 bits only");
    }
    if (result.width() > frame.width() || result.height() > frame.height()) {
        throw Failure(step + ": filters only reduce: " + toText(frame.size()) + " to " +
                      toText(result.size()));
    }
    attempt(step, [&] {
        _scaler.renew();  // a second pass loses its first step down otherwise
        _scaler.reuse(kernel, frame, result.size(), precision);
        ox::produceFrame(_scaler, result);
    });
}

}  // namespace oxcv
