// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The resizer classes beside the model's, and how a test makes them, runs them and compares.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <type_traits>
#include <typeinfo>
#include <vector>

#include "model/resize.h"
#include "simd/float_bits.h"
#include "simd/guarded_plane.h"
#include "simd/resizers/bilinear.h"
#include "simd/resizers/byte_area.h"
#include "simd/resizers/byte_bicubic.h"
#include "simd/resizers/byte_bilinear.h"
#include "simd/resizers/nearest.h"
#include "support/test_target.h"

namespace ox::test {

using ResizerPointer = std::unique_ptr<Simd::Resizer>;

constexpr std::uint64_t scalarAlign = 8;
constexpr std::uint64_t vectorAlign = 16;

// One class.
struct ResizerSubject {
    char const* name;
    model::ResizeClass model;
    Simd::ResizerClass choice;
    std::uint64_t align;
    ResizerPointer (*construct)(Simd::ResizerParam const& param);
    bool (*isClassOf)(Simd::Resizer const& resizer);

    bool isVector() const { return align == vectorAlign; }
};

template <class Class>
constexpr ResizerSubject resizerSubject(char const* name, model::ResizeClass model,
                                        Simd::ResizerClass choice, std::uint64_t align) {
    return {name,
            model,
            choice,
            align,
            [](Simd::ResizerParam const& param) -> ResizerPointer {
                return std::make_unique<Class>(param);
            },
            [](Simd::Resizer const& resizer) { return typeid(resizer) == typeid(Class); }};
}

inline constexpr ResizerSubject nearestResizer = resizerSubject<Simd::Base::ResizerNearest>(
    "nearest", model::ResizeClass::Nearest, Simd::ResizerClass::nearest, scalarAlign);
inline constexpr ResizerSubject byteBilinearResizer =
    resizerSubject<Simd::Base::ResizerByteBilinear>("byte bilinear",
                                                    model::ResizeClass::ByteBilinear,
                                                    Simd::ResizerClass::byteBilinear, scalarAlign);
inline constexpr ResizerSubject shortBilinearResizer =
    resizerSubject<Simd::Base::ResizerShortBilinear>(
        "short bilinear", model::ResizeClass::ShortBilinear, Simd::ResizerClass::shortBilinear,
        scalarAlign);
inline constexpr ResizerSubject floatBilinearResizer =
    resizerSubject<Simd::Base::ResizerFloatBilinear>(
        "float bilinear", model::ResizeClass::FloatBilinear, Simd::ResizerClass::floatBilinear,
        scalarAlign);
inline constexpr ResizerSubject byteBicubicResizer = resizerSubject<Simd::Base::ResizerByteBicubic>(
    "byte bicubic", model::ResizeClass::ByteBicubic, Simd::ResizerClass::byteBicubic, scalarAlign);
inline constexpr ResizerSubject byteArea2x2Resizer = resizerSubject<Simd::Base::ResizerByteArea2x2>(
    "byte area 2x2", model::ResizeClass::ByteArea2x2, Simd::ResizerClass::byteArea2x2, scalarAlign);
inline constexpr ResizerSubject byteArea1x1Resizer = resizerSubject<Simd::Base::ResizerByteArea1x1>(
    "byte area 1x1", model::ResizeClass::ByteArea1x1, Simd::ResizerClass::byteArea1x1, scalarAlign);
inline constexpr ResizerSubject vectorByteBilinearResizer =
    resizerSubject<Simd::Neon::ResizerByteBilinear>(
        "vector byte bilinear", model::ResizeClass::VectorByteBilinear,
        Simd::ResizerClass::vectorByteBilinear, vectorAlign);
inline constexpr ResizerSubject vectorShortBilinearResizer =
    resizerSubject<Simd::Neon::ResizerShortBilinear>(
        "vector short bilinear", model::ResizeClass::VectorShortBilinear,
        Simd::ResizerClass::vectorShortBilinear, vectorAlign);
inline constexpr ResizerSubject vectorFloatBilinearResizer =
    resizerSubject<Simd::Neon::ResizerFloatBilinear>(
        "vector float bilinear", model::ResizeClass::VectorFloatBilinear,
        Simd::ResizerClass::vectorFloatBilinear, vectorAlign);
inline constexpr ResizerSubject vectorByteArea1x1Resizer =
    resizerSubject<Simd::Neon::ResizerByteArea1x1>(
        "vector byte area 1x1", model::ResizeClass::VectorByteArea1x1,
        Simd::ResizerClass::vectorByteArea1x1, vectorAlign);

inline constexpr ResizerSubject const* resizerSubjects[]{
    &nearestResizer,
    &byteBilinearResizer,
    &shortBilinearResizer,
    &floatBilinearResizer,
    &byteBicubicResizer,
    &byteArea2x2Resizer,
    &byteArea1x1Resizer,
    &vectorByteBilinearResizer,
    &vectorShortBilinearResizer,
    &vectorFloatBilinearResizer,
    &vectorByteArea1x1Resizer,
};

inline Simd::ResizerParam paramOf(model::Resize const& request, std::uint64_t align) {
    return {static_cast<Simd::ResizerType>(request.type),
            static_cast<Simd::ResizerMethod>(request.method),
            request.src_w,
            request.src_h,
            request.dst_w,
            request.dst_h,
            request.channels,
            align};
}

inline ResizerPointer makeResizer(ResizerSubject const& subject, model::Resize const& request) {
    return subject.construct(paramOf(request, subject.align));
}

using ResizerSubjects = std::vector<ResizerSubject const*>;

// Calls `check` with each class, those of vectors once for each instruction set, which is in use.
template <class Check>
void onEveryTarget(ResizerSubjects const& subjects, Check const& check) {
    for (ResizerSubject const* const subject : subjects) {
        if (!subject->isVector()) {
            check(*subject);
            continue;
        }
        for (char const* const target : testTargets()) {
            SCOPED_TRACE(target);
            UsedTarget const used(target);
            check(*subject);
        }
    }
}

inline std::string textOf(ResizerSubject const& subject, model::Resize const& request) {
    auto const side = [](std::uint64_t w, std::uint64_t h) {
        return std::to_string(w) + "x" + std::to_string(h);
    };
    return std::string(subject.name) + ", " + side(request.src_w, request.src_h) + " to " +
           side(request.dst_w, request.dst_h) + ", " + std::to_string(request.channels) +
           " channels, method " + std::to_string(request.method);
}

template <class Element>
bool sameElement(Element a, Element b) {
    if constexpr (std::is_same_v<Element, float>) {
        return sameFloat(a, b);
    } else {
        return a == b;
    }
}

template <class Element>
PlaneSize planeSize(std::uint64_t w, std::uint64_t h, std::uint64_t channels) {
    return {w * channels * sizeof(Element), h};
}

// Elements of a plane without gaps into rows that may have some.
template <class Element>
void storeRows(std::vector<Element> const& elements, GuardedPlane const& plane) {
    std::size_t const bytes = plane.size().row_bytes;
    for (std::size_t y = 0; y < plane.size().rows && bytes != 0; ++y) {
        std::memcpy(plane.row(y), &elements[y * bytes / sizeof(Element)], bytes);
    }
}

// Whether rows hold the elements and nothing beside them changed.
template <class Element>
testing::AssertionResult holds(GuardedPlane const& plane, std::vector<Element> const& expected) {
    std::size_t const columns = plane.size().row_bytes / sizeof(Element);
    for (std::size_t i = 0; i < columns * plane.size().rows; ++i) {
        auto const got = loadAs<Element>(plane.row(i / columns), i % columns);
        if (!sameElement(got, expected[i])) {
            return testing::AssertionFailure()
                   << "row " << i / columns << ", element " << i % columns << " is " << +got
                   << " and not " << +expected[i];
        }
    }
    if (!plane.surroundingsUntouched()) {
        return testing::AssertionFailure() << "wrote beside the rows";
    }
    return testing::AssertionSuccess();
}

// Whether the class makes these elements of those.
template <class Element>
testing::AssertionResult resizesTo(ResizerSubject const& subject, model::Resize const& request,
                                   std::vector<Element> const& src,
                                   std::vector<Element> const& expected) {
    GuardedPlane const from(planeSize<Element>(request.src_w, request.src_h, request.channels));
    GuardedPlane const to(planeSize<Element>(request.dst_w, request.dst_h, request.channels));
    storeRows(src, from);
    makeResizer(subject, request)->Run(from.data(), from.stride(), to.data(), to.stride());
    auto result = holds(to, expected);
    return result ? result : result << " (" << textOf(subject, request) << ")";
}

// As above, with what the model makes of the source.
template <class Element>
testing::AssertionResult resizesAsModelled(ResizerSubject const& subject,
                                           model::Resize const& request,
                                           std::vector<Element> const& src) {
    return resizesTo(subject, request, src, model::resized(subject.model, request, src));
}

using Bytes = std::vector<std::uint8_t>;
using Shorts = std::vector<std::uint16_t>;
using Floats = std::vector<float>;

// Calls `check` with sizes along an axis: all small ones, and some of those of pictures.
template <class Check>
void forEachAxis(Check const& check) {
    constexpr std::uint64_t small = 64;
    for (std::uint64_t s = 1; s <= small; ++s) {
        for (std::uint64_t d = 1; d <= small; ++d) {
            ASSERT_NO_FATAL_FAILURE(check(s, d)) << s << " to " << d;
        }
    }
    Random random;
    for (int i = 0; i < (emulated() ? 10 : 50); ++i) {
        auto const s = static_cast<std::uint64_t>(random.between(1, 8192));
        auto const d = static_cast<std::uint64_t>(random.between(1, 8192));
        ASSERT_NO_FATAL_FAILURE(check(s, d)) << s << " to " << d;
    }
}

}  // namespace ox::test
