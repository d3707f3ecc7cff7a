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

// What both routines of a kernel should give, each in the shape of the kernel itself.
template <class Shape>
struct Model {
    std::string_view name;
    std::size_t threshold;  // of the vector routine
    Shape* base;
    Shape* neon;
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

Simd::PlaneToPlane swapRedBlue;
Simd::SplitThree splitThreePlanes;
Simd::MergeThree mergeThreePlanes;
Simd::SplitTwo splitTwoPlanes;
Simd::MergeTwo mergeTwoPlanes;
Simd::PlaneToPlane bgrToGray;
Simd::PlaneToPlane grayToBgr;
Simd::BytesToFloats bytesToFloats;
Simd::FloatsToBytes floatsToBytesBase;  // a NaN counts as the lower end
Simd::FloatsToBytes floatsToBytesNeon;  // a NaN gives 0
Simd::PackedToYuv bgrToI420;
Simd::YuvToPacked i420ToBgr;
Simd::YuvToPacked i420ToRgb;
Simd::PackedToYuv bgrToYuv444;
Simd::YuvToPacked yuv444ToBgr;
Simd::SemiPlanarToPacked nv12ToBgr;
Simd::SemiPlanarToPacked nv12ToRgb;
Simd::SemiPlanarToPacked nv21ToBgr;
Simd::SemiPlanarToPacked nv21ToRgb;
Simd::PackedToSemiPlanar bgrToNv12;
Simd::SemiPlanarToPacked nv12ToBgrDirectly;
Simd::FloatsToHalfBits floatsToHalvesBase;  // truncates
Simd::FloatsToHalfBits floatsToHalvesNeon;  // rounds to nearest, ties to even
Simd::HalfBitsToFloats halvesToFloatsBase;
Simd::HalfBitsToFloats halvesToFloatsNeon;  // quiets NaNs
Simd::ConstantIntoFloats addConstant;
Simd::FloatsIntoFloats accumulateScaled;
Simd::ConstantIntoFloats multiply;  // as if accumulated into zeros

namespace shapes {
inline constexpr PlaneShape byte{1};
inline constexpr PlaneShape pair{2};
inline constexpr PlaneShape packed{3};
inline constexpr PlaneShape number{4};
inline constexpr PlaneShape half{2};
inline constexpr PlaneShape chroma{1, 2};
inline constexpr PlaneShape chromaPair{2, 2};
inline constexpr PlaneShapes three{byte, byte, byte};
inline constexpr PlaneShapes i420{byte, chroma, chroma};
inline constexpr PlaneShapes nv12{byte, chromaPair};
}  // namespace shapes

// Deduces the shape from the functions.
template <class Shape>
constexpr Model<Shape> model(std::string_view name, std::size_t threshold, Shape* base, Shape* neon,
                             PlaneShapes sources, PlaneShapes destinations) {
    return {name, threshold, base, neon, sources, destinations};
}

template <class Shape>
constexpr Model<Shape> model(std::string_view name, std::size_t threshold, Shape* both,
                             PlaneShapes sources, PlaneShapes destinations) {
    return {name, threshold, both, both, sources, destinations};
}

inline constexpr std::tuple models{
    model("SwapRedBlue", 16, swapRedBlue, {shapes::packed}, {shapes::packed}),
    model("SplitThreePlanes", 16, splitThreePlanes, {shapes::packed}, shapes::three),
    model("MergeThreePlanes", 16, mergeThreePlanes, shapes::three, {shapes::packed}),
    model("SplitTwoPlanes", 16, splitTwoPlanes, {shapes::pair}, {shapes::byte, shapes::byte}),
    model("MergeTwoPlanes", 16, mergeTwoPlanes, {shapes::byte, shapes::byte}, {shapes::pair}),
    model("ConvertBgrToGray", 16, bgrToGray, {shapes::packed}, {shapes::byte}),
    model("ExpandGrayToBgr", 16, grayToBgr, {shapes::byte}, {shapes::packed}),
    model("ScaleBytesToFloats", 16, bytesToFloats, {shapes::byte}, {shapes::number}),
    model("ScaleFloatsToBytes", 16, floatsToBytesBase, floatsToBytesNeon, {shapes::number},
          {shapes::byte}),
    model("ConvertBgrToI420", 32, bgrToI420, {shapes::packed}, shapes::i420),
    model("ConvertI420ToBgr", 32, i420ToBgr, shapes::i420, {shapes::packed}),
    model("ConvertI420ToRgb", 32, i420ToRgb, shapes::i420, {shapes::packed}),
    model("ConvertBgrToYuv444", 16, bgrToYuv444, {shapes::packed}, shapes::three),
    model("ConvertYuv444ToBgr", 16, yuv444ToBgr, shapes::three, {shapes::packed}),
    model("ConvertNv12ToBgr", 32, nv12ToBgr, shapes::nv12, {shapes::packed}),
    model("ConvertNv12ToRgb", 32, nv12ToRgb, shapes::nv12, {shapes::packed}),
    model("ConvertNv21ToBgr", 32, nv21ToBgr, shapes::nv12, {shapes::packed}),
    model("ConvertNv21ToRgb", 32, nv21ToRgb, shapes::nv12, {shapes::packed}),
    model("ConvertBgrToNv12", 32, bgrToNv12, {shapes::packed}, shapes::nv12),
    model("ConvertNv12ToBgrDirectly", 32, nv12ToBgrDirectly, shapes::nv12, {shapes::packed}),
    model("FloatsToHalves", 4, floatsToHalvesBase, floatsToHalvesNeon, {shapes::number},
          {shapes::half}),
    model("HalvesToFloats", 4, halvesToFloatsBase, halvesToFloatsNeon, {shapes::half},
          {shapes::number}),
};

template <class Record>
using ShapeOf = std::remove_pointer_t<decltype(Record::base)>;

// Whether the two lists name the same kernels, of the same shapes, in the same order.
template <std::size_t... index>
constexpr bool modelsMatch(std::index_sequence<index...> /*kernels*/) {
    return ((std::get<index>(Simd::kernels).name == std::get<index>(models).name &&
             std::is_same_v<decltype(std::get<index>(Simd::kernels).base),
                            decltype(std::get<index>(models).base)>)&&...);
}

constexpr std::size_t kernelCount = std::tuple_size_v<decltype(Simd::kernels)>;
static_assert(kernelCount == std::tuple_size_v<decltype(models)>);
static_assert(modelsMatch(std::make_index_sequence<kernelCount>()));

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
