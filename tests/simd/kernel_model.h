// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A plain model of every kernel: whole-plane formulas, one element after the other, with constants
// of their own. The list stands in the order of the kernels' own, so that none can be left out.
#pragma once

#include <array>
#include <cstddef>
#include <string_view>
#include <tuple>
#include <type_traits>
#include <utility>

#include "simd/kernels/kernels.h"

namespace kernel_model {

// A plane of an image: bytes of an element, and how many pixels (in both directions) share one.
struct PlaneShape {
    std::size_t bytes = 0;  // 0 for no plane
    std::size_t pixels = 1;
};

using PlaneShapes = std::array<PlaneShape, 3>;

// What both routines of a kernel should give, and its shape, named a second time.
template <class Shape>
struct Model {
    std::string_view name;
    std::size_t threshold;  // of the vector routine; 0 for a choice on first use
    typename Shape::Function* base;
    typename Shape::Function* neon;
    PlaneShapes sources;
    PlaneShapes destinations;

    // Images whose pixels share chroma have even sizes.
    constexpr std::size_t step() const {
        std::size_t pixels = 1;
        for (PlaneShapes const& shapes : {sources, destinations}) {
            for (PlaneShape const& shape : shapes) {
                pixels = shape.pixels > pixels ? shape.pixels : pixels;
            }
        }
        return pixels;
    }
};

namespace base {

#define OX_DECLARE(name, shape, ...) Simd::shape::Function name;
OX_KERNELS(OX_DECLARE)
#undef OX_DECLARE

}  // namespace base

// What isn't declared here is found there: most vector routines give what scalar ones give.
namespace neon {

using namespace base;

Simd::FloatsToBytes::Function ScaleFloatsToBytes;  // a NaN gives 0, not the lower end
Simd::FloatsToHalfBits::Function FloatsToHalves;   // rounds to nearest, ties to even
Simd::HalfBitsToFloats::Function HalvesToFloats;   // quiets NaNs

}  // namespace neon

namespace shapes {
inline constexpr PlaneShape chroma{1, 2};
inline constexpr PlaneShapes byte{{{1}}};
inline constexpr PlaneShapes bytes{{{1}, {1}}};
inline constexpr PlaneShapes pair{{{2}}};
inline constexpr PlaneShapes packed{{{3}}};
inline constexpr PlaneShapes half{{{2}}};
inline constexpr PlaneShapes number{{{4}}};
inline constexpr PlaneShapes numbers{{{4}, {4}}};
inline constexpr PlaneShapes three{{{1}, {1}, {1}}};
inline constexpr PlaneShapes i420{{{1}, chroma, chroma}};
inline constexpr PlaneShapes nv12{{{1}, {2, 2}}};
}  // namespace shapes

#define OX_MODEL(name, shape, threshold, sources, destinations)                    \
    (Model<Simd::shape>{#name, threshold, base::name, neon::name, shapes::sources, \
                        shapes::destinations})

inline constexpr std::tuple models{
    OX_MODEL(SwapRedBlue, PlaneToPlane, 16, packed, packed),
    OX_MODEL(SplitThreePlanes, SplitThree, 16, packed, three),
    OX_MODEL(MergeThreePlanes, MergeThree, 16, three, packed),
    OX_MODEL(SplitTwoPlanes, SplitTwo, 16, pair, bytes),
    OX_MODEL(MergeTwoPlanes, MergeTwo, 16, bytes, pair),
    OX_MODEL(ConvertBgrToGray, PlaneToPlane, 16, packed, byte),
    OX_MODEL(ExpandGrayToBgr, PlaneToPlane, 16, byte, packed),
    OX_MODEL(ConvertBgrToI420, PackedToYuv, 32, packed, i420),
    OX_MODEL(ConvertBgrToYuv444, PackedToYuv, 16, packed, three),
    OX_MODEL(ConvertBgrToNv12, PackedToSemiPlanar, 32, packed, nv12),
    OX_MODEL(ConvertI420ToBgr, YuvToPacked, 32, i420, packed),
    OX_MODEL(ConvertI420ToRgb, YuvToPacked, 32, i420, packed),
    OX_MODEL(ConvertYuv444ToBgr, YuvToPacked, 16, three, packed),
    OX_MODEL(ConvertNv12ToBgr, SemiPlanarToPacked, 32, nv12, packed),
    OX_MODEL(ConvertNv12ToRgb, SemiPlanarToPacked, 32, nv12, packed),
    OX_MODEL(ConvertNv21ToBgr, SemiPlanarToPacked, 32, nv12, packed),
    OX_MODEL(ConvertNv21ToRgb, SemiPlanarToPacked, 32, nv12, packed),
    OX_MODEL(ConvertNv12ToBgrDirectly, SemiPlanarToPacked, 32, nv12, packed),
    OX_MODEL(ScaleBytesToFloats, BytesToFloats, 16, byte, number),
    OX_MODEL(ScaleFloatsToBytes, FloatsToBytes, 16, number, byte),
    OX_MODEL(FloatsToHalves, FloatsToHalfBits, 4, number, half),
    OX_MODEL(HalvesToFloats, HalfBitsToFloats, 4, half, number),
    OX_MODEL(AddConstantFloats, ConstantIntoFloats, 0, number, number),
    OX_MODEL(AccumulateScaledFloats, FloatsIntoFloats, 0, numbers, number),
    OX_MODEL(MultiplyFloats, ConstantIntoFloats, 0, number, number),
};

#undef OX_MODEL

template <class Record>
using ShapeOf = typename std::remove_cvref_t<Record>::Shape;

// Whether the two lists name the same kernels, of the same shapes, in the same order.
template <std::size_t... index>
constexpr bool modelsMatch(std::index_sequence<index...> /*kernels*/) {
    return ((std::get<index>(Simd::kernels).name == std::get<index>(models).name &&
             std::is_same_v<Model<ShapeOf<decltype(std::get<index>(Simd::kernels))>>,
                            std::remove_cvref_t<decltype(std::get<index>(models))>>)&&...);
}

constexpr std::size_t kernelCount = std::tuple_size_v<decltype(Simd::kernels)>;
static_assert(kernelCount == std::tuple_size_v<decltype(models)>, "a kernel has no model");
static_assert(modelsMatch(std::make_index_sequence<kernelCount>()), "another name, shape or order");

// The model of a kernel.
template <class Record>
auto modelOf(Record const& record) {
    using Wanted = Model<ShapeOf<Record>>;
    Wanted found{};
    auto const take = [&](auto const& candidate) {
        if constexpr (std::is_same_v<Wanted, std::decay_t<decltype(candidate)>>) {
            if (candidate.name == record.name) {
                found = candidate;
            }
        }
    };
    std::apply([&](auto const&... candidates) { (take(candidates), ...); }, models);
    return found;
}

}  // namespace kernel_model
