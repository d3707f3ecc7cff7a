// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "roads.h"

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "rows/rows_routines.h"
#include "simd/simd.h"

namespace ox::benchmarks {

PlainLoops::PlainLoops() {
    Simd::Neon::KernelsEnabled = false;
    rows::useRoutines(rows::plainRoutines());
}

PlainLoops::~PlainLoops() {
    Simd::Neon::KernelsEnabled = true;
    rows::useRoutines(rows::findRoutines());
}

namespace {

template <class Backend>
void addRoad(std::vector<Road>& roads, char const* name, Picture const& src, Picture const& dst,
             Work const& work) {
    auto const backend = std::make_shared<Backend>();
    auto const is_right = [=] {
        Picture const expected = blankPicture(dst->format(), dst->size());
        PlainLoops const plain;
        Backend fresh;
        work(fresh, *src, *expected);
        return equalPixels(*dst, *expected);
    };
    try {
        work(*backend, *src, *dst);
    } catch (Exception const&) {
        return;  // statuses differ from pair to pair
    }
    roads.push_back({name, [=] { work(*backend, *src, *dst); }, is_right});
}

}  // namespace

std::vector<Road> roadsOf(Picture const& src, Picture const& dst, Work const& work) {
    std::vector<Road> roads;
    addRoad<CvBackendSimd>(roads, vectorRoad, src, dst, work);
    addRoad<CvBackendBase>(roads, pipelineRoad, src, dst, work);
    return roads;
}

}  // namespace ox::benchmarks
