// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

// Filters reduce only.
constexpr Scaling reductions[]{
    {{333, 18}, {111, 6}}, {{333, 18}, {160, 9}}, {{333, 18}, {332, 17}},  {{333, 18}, {333, 18}},
    {{70, 40}, {23, 20}},  {{70, 40}, {35, 10}},  {{1000, 40}, {123, 40}}, {{5, 4}, {2, 2}}};

void digestKernel(Table& table, std::string const& name, IKernel& kernel) {
    for (ScalerPrecision const precision : {OX_SCALER_FIXED_POINT_8S, OX_SCALER_FIXED_POINT_16S}) {
        for (FrameFormat const format : formats()) {
            auto const filtered = [&](Frame const& src, Frame& dst) {
                ScalerConvolutional filter;
                filter.reuse(kernel, src, dst.size(), precision);
                produceFrame(filter, dst);
            };
            table.add(
                "filter " + name + " " + std::to_string(precision) + " bits " + nameOf(format),
                digestScaled(format, reductions, filtered));
        }
    }
}

}  // namespace

void digestFilters(Table& table) {
    BoxKernel box;
    digestKernel(table, "box", box);
    TriangleKernel triangle;
    digestKernel(table, "triangle", triangle);
    MitchellNetravaliKernel mitchell;
    digestKernel(table, "Mitchell", mitchell);
    CatmullRomKernel catmull;
    digestKernel(table, "Catmull-Rom", catmull);
    Lanczos3Kernel lanczos;
    digestKernel(table, "Lanczos 3", lanczos);
}

}  // namespace ox::test
