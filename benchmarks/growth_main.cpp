// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Prints what becomes of time and memory as frames grow: the time a pixel at sizes up to 8K, and
// what a chain on an 8K frame has on the heap.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "growth_memory.h"
#include "median.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "pictures.h"
#include "roads.h"

namespace {

using namespace ox;
using namespace ox::benchmarks;

constexpr Size sizes[]{{320, 240},   {640, 480},   {1280, 720},
                       {1920, 1080}, {3840, 2160}, {7680, 4320}};
constexpr int rounds = 9;
constexpr double secondsPerRun = 0.02;

constexpr Size halfOf(Size size) {
    return {size.width / 2, size.height / 2};
}

struct Contest {
    std::vector<Contestant> contestants;

    void add(std::string const& name, Picture const& src, Picture const& dst, Work const& work) {
        for (Road const& road : roadsOf(src, dst, work)) {
            contestants.push_back({name + ", " + road.name, road.run});
        }
        addCopy(name, src, dst);
    }

    void addCopy(std::string const& name, Picture const& src, Picture const& dst) {
        contestants.push_back({name + ", memcpy", copyOf(pixelBytes(*src) + pixelBytes(*dst))});
    }
};

Contest contestAt(Size size) {
    Contest contest;
    Picture const bgr = randomPicture(FRAME_BGR24, size);
    Picture const half = blankPicture(FRAME_BGR24, halfOf(size));
    contest.add("NV12 to BGR24", randomPicture(FRAME_NV12, size), blankPicture(FRAME_BGR24, size),
                [](ICvBackend& backend, auto& s, auto& d) { backend.colorCvt(s, d, Rect{}); });
    for (auto const method : {ResizeBilinear, ResizeArea}) {
        contest.add(method == ResizeArea ? "BGR24 area to half" : "BGR24 bilinear to half", bgr,
                    half, [method](ICvBackend& backend, auto& s, auto& d) {
                        backend.setIntProperty(PropertyResizeMethod, static_cast<int>(method));
                        backend.resize(s, d, Rect{}, Rect{});
                    });
    }
    auto const kernel = std::make_shared<Lanczos3Kernel>();
    auto const scaler = std::make_shared<ScalerConvolutional>();
    contest.contestants.push_back({"BGR24 Lanczos 3 to half, pipeline", [=] {
                                       scaler->reuse(*kernel, *bgr, half->size(),
                                                     OX_SCALER_FIXED_POINT_8S);
                                       produceFrame(*scaler, *half);
                                   }});
    contest.addCopy("BGR24 Lanczos 3 to half", bgr, half);
    Picture const camera = randomPicture(FRAME_NV12, size);
    TensorRecipe recipe;
    recipe.width = recipe.height = 224;
    recipe.fit = TENSOR_FIT_LETTERBOX;
    auto const to_tensor = std::make_shared<FrameToTensor>();
    to_tensor->reuse(recipe);
    auto const tensor = std::make_shared<Tensor>();
    tensor->reuse(to_tensor->layout(1), DeviceContext::cpuContext());
    contest.contestants.push_back({"NV12 to floats of 224x224, pipeline",
                                   [=] { to_tensor->run(*camera, Rect{}, *tensor, 0); }});
    return contest;
}

double secondsOf(std::function<void()> const& run, int times) {
    auto const start = std::chrono::steady_clock::now();
    for (int i = 0; i < times; ++i) {
        run();
    }
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count() / times;
}

/// Seconds of each contestant, by turns.
std::vector<double> mediansOf(std::vector<Contestant> const& contestants) {
    std::vector<int> times;
    for (Contestant const& contestant : contestants) {
        contestant.run();
        times.push_back(1 + static_cast<int>(secondsPerRun / secondsOf(contestant.run, 1)));
    }
    std::vector<std::vector<double>> seconds(contestants.size());
    for (int round = 0; round < rounds; ++round) {
        for (std::size_t i = 0; i < contestants.size(); ++i) {
            seconds[i].push_back(secondsOf(contestants[i].run, times[i]));
        }
    }
    std::vector<double> medians(contestants.size());
    std::transform(seconds.begin(), seconds.end(), medians.begin(), median);
    return medians;
}

void printTimes() {
    std::vector<std::string> names;
    std::vector<std::vector<double>> columns;
    std::printf("%-36s", "nanoseconds a pixel of the source");
    for (Size const size : sizes) {
        Contest const contest = contestAt(size);
        columns.push_back(mediansOf(contest.contestants));
        for (double& time : columns.back()) {
            time *= 1e9 / (static_cast<double>(size.width) * size.height);
        }
        names.clear();
        for (Contestant const& contestant : contest.contestants) {
            names.push_back(contestant.name);
        }
        std::printf("%6dx%-4d", size.width, size.height);
    }
    for (std::size_t i = 0; i < names.size(); ++i) {
        std::printf("\n%-36s", names[i].c_str());
        for (std::vector<double> const& column : columns) {
            std::printf("%11.3f", column[i]);
        }
    }
    std::puts("");
}

}  // namespace

int main() {
    // First, as the most memory that a program has had never falls.
    printMemory();
    std::puts("");
    printTimes();
    return 0;
}
