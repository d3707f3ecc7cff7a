// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Which resizer a request gets.
#include <gtest/gtest.h>

#include "simd/resizer_check.h"

namespace ox::test::resizer_choice {
namespace {

using Simd::ResizerClass;

static_assert(Simd::ResizerTypeByte == 0 && Simd::ResizerTypeShort == 1 &&
              Simd::ResizerTypeFloat == 2);
static_assert(Simd::ResizerMethodNearest == 0 && Simd::ResizerMethodNearestInteger == 1 &&
              Simd::ResizerMethodBilinear == 2 && Simd::ResizerMethodBilinearCorners == 3 &&
              Simd::ResizerMethodBilinearTopLeft == 4 && Simd::ResizerMethodBicubic == 5 &&
              Simd::ResizerMethodArea == 6 && Simd::ResizerMethodAreaFast == 7);
static_assert(Simd::elementBytes(Simd::ResizerTypeByte) == 1 &&
              Simd::elementBytes(Simd::ResizerTypeShort) == 2 &&
              Simd::elementBytes(Simd::ResizerTypeFloat) == 4);

constexpr int byte = Simd::ResizerTypeByte;
constexpr int wide = Simd::ResizerTypeShort;
constexpr int real = Simd::ResizerTypeFloat;

// Reaches what classes keep to themselves.
struct Probe : Simd::Resizer {
    static Simd::ResizerParam const& paramOf(Simd::Resizer const& resizer) {
        return resizer.*&Probe::param;
    }
};

ResizerClass chosenScalar(model::Resize const& request) {
    return Simd::Base::chooseResizer(paramOf(request, scalarAlign));
}

ResizerClass chosenVector(model::Resize const& request) {
    return Simd::Neon::chooseResizer(paramOf(request, vectorAlign));
}

struct Row {
    model::Resize request;
    ResizerClass scalar;
    ResizerClass vector;
};

void expectRows(std::initializer_list<Row> rows) {
    for (Row const& row : rows) {
        model::Resize const& r = row.request;
        std::string const text =
            "type " + std::to_string(r.type) + ", " + textOf(nearestResizer, r);
        EXPECT_EQ(chosenScalar(r), row.scalar) << text;
        EXPECT_EQ(chosenVector(r), row.vector) << text;
    }
}

TEST(ResizerChoice, BytesByMethod) {
    expectRows({
        {{byte, 0, 40, 40, 20, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{byte, 1, 40, 40, 20, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{byte, 2, 40, 40, 20, 20}, ResizerClass::byteBilinear, ResizerClass::vectorByteBilinear},
        {{byte, 3, 40, 40, 20, 20}, ResizerClass::none, ResizerClass::none},
        {{byte, 4, 40, 40, 20, 20}, ResizerClass::none, ResizerClass::none},
        {{byte, 5, 40, 40, 20, 20}, ResizerClass::byteBicubic, ResizerClass::byteBicubic},
        {{byte, 6, 40, 40, 20, 20}, ResizerClass::byteArea1x1, ResizerClass::vectorByteArea1x1},
        {{byte, 7, 40, 40, 20, 20}, ResizerClass::byteArea2x2, ResizerClass::byteArea2x2},
        {{byte, 8, 40, 40, 20, 20}, ResizerClass::none, ResizerClass::none},
        {{byte, -1, 40, 40, 20, 20}, ResizerClass::none, ResizerClass::none},
    });
}

TEST(ResizerChoice, ShortsAndFloatsByMethod) {
    for (int method = 0; method < 9; ++method) {
        bool const nearest = method < 2;
        bool const bilinear = method >= 2 && method <= 4;
        ResizerClass const other = nearest ? ResizerClass::nearest : ResizerClass::none;
        expectRows({
            {{wide, method, 40, 40, 20, 20, 1},
             method == 2 ? ResizerClass::shortBilinear : other,
             method == 2 ? ResizerClass::vectorShortBilinear : other},
            {{real, method, 40, 40, 20, 20, 1},
             bilinear ? ResizerClass::floatBilinear : other,
             bilinear ? ResizerClass::vectorFloatBilinear : other},
            {{real, method, 40, 40, 1, 1, 7},
             bilinear ? ResizerClass::floatBilinear : other,
             bilinear ? ResizerClass::vectorFloatBilinear : other},
        });
    }
}

// The scalar side takes the nearest sample for any of them, the vector side goes by type and
// method.
TEST(ResizerChoice, SourcesThatAreALine) {
    expectRows({
        {{byte, 2, 1, 40, 16, 20}, ResizerClass::nearest, ResizerClass::vectorByteBilinear},
        {{byte, 2, 40, 1, 16, 20}, ResizerClass::nearest, ResizerClass::vectorByteBilinear},
        {{byte, 2, 1, 40, 15, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{byte, 5, 1, 2, 16, 20}, ResizerClass::nearest, ResizerClass::vectorByteBilinear},
        {{byte, 5, 1, 40, 16, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{byte, 6, 1, 40, 16, 20}, ResizerClass::nearest, ResizerClass::vectorByteArea1x1},
        {{byte, 7, 1, 40, 2, 20}, ResizerClass::nearest, ResizerClass::vectorByteArea1x1},
        {{byte, 7, 1, 40, 1, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{wide, 2, 1, 40, 16, 20}, ResizerClass::nearest, ResizerClass::vectorShortBilinear},
        {{wide, 2, 1, 40, 16, 20, 2}, ResizerClass::nearest, ResizerClass::nearest},
        {{wide, 3, 1, 40, 16, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{real, 2, 40, 1, 16, 20}, ResizerClass::nearest, ResizerClass::vectorFloatBilinear},
        {{real, 6, 40, 1, 16, 20}, ResizerClass::nearest, ResizerClass::nearest},
        {{byte, 9, 1, 1, 1, 1}, ResizerClass::nearest, ResizerClass::nearest},
    });
}

TEST(ResizerChoice, BicubicOfTwoSamplesIsBilinear) {
    expectRows({
        {{byte, 5, 2, 40, 20, 20}, ResizerClass::byteBilinear, ResizerClass::vectorByteBilinear},
        {{byte, 5, 40, 2, 20, 20}, ResizerClass::byteBilinear, ResizerClass::vectorByteBilinear},
        {{byte, 5, 2, 2, 15, 20}, ResizerClass::byteBilinear, ResizerClass::byteBilinear},
        {{byte, 5, 3, 3, 20, 20}, ResizerClass::byteBicubic, ResizerClass::byteBicubic},
        {{byte, 5, 40, 40, 2, 2}, ResizerClass::byteBicubic, ResizerClass::byteBicubic},
        {{wide, 5, 2, 2, 20, 20}, ResizerClass::none, ResizerClass::none},
        {{real, 5, 2, 2, 20, 20}, ResizerClass::none, ResizerClass::none},
    });
}

TEST(ResizerChoice, VectorByteBilinearNeedsSixteenColumns) {
    expectRows({
        {{byte, 2, 40, 40, 0, 20}, ResizerClass::byteBilinear, ResizerClass::byteBilinear},
        {{byte, 2, 40, 40, 15, 20}, ResizerClass::byteBilinear, ResizerClass::byteBilinear},
        {{byte, 2, 40, 40, 15, 20, 4}, ResizerClass::byteBilinear, ResizerClass::byteBilinear},
        {{byte, 2, 40, 40, 16, 1}, ResizerClass::byteBilinear, ResizerClass::vectorByteBilinear},
        {{byte, 2, 40, 40, 16, 1, 5}, ResizerClass::byteBilinear, ResizerClass::vectorByteBilinear},
        {{byte, 2, 40, 40, std::uint64_t{1} << 32, 1},
         ResizerClass::byteBilinear,
         ResizerClass::vectorByteBilinear},
    });
}

TEST(ResizerChoice, FastAreaNeedsBothSidesHalved) {
    constexpr auto squares = ResizerClass::byteArea2x2;
    constexpr auto scalar = ResizerClass::byteArea1x1;
    constexpr auto vector = ResizerClass::vectorByteArea1x1;
    expectRows({
        {{byte, 7, 40, 30, 20, 15}, squares, squares},
        {{byte, 7, 40, 30, 21, 15}, scalar, vector},
        {{byte, 7, 40, 30, 20, 16}, scalar, vector},
        {{byte, 7, 41, 31, 21, 16}, squares, squares},
        {{byte, 7, 41, 31, 22, 16}, scalar, vector},
        {{byte, 7, 41, 31, 21, 17}, scalar, vector},
        {{byte, 7, 2, 2, 1, 1}, squares, squares},
        {{byte, 6, 40, 30, 20, 15}, scalar, vector},
        {{byte, 7, std::uint64_t{1} << 33, 30, (std::uint64_t{1} << 32) + 1, 15}, scalar, vector},
    });
}

TEST(ResizerChoice, VectorShortsAreOfOneChannel) {
    for (std::uint64_t channels = 0; channels < 6; ++channels) {
        ResizerClass const vector =
            channels == 1 ? ResizerClass::vectorShortBilinear : ResizerClass::shortBilinear;
        expectRows({{{wide, 2, 40, 40, 20, 20, channels}, ResizerClass::shortBilinear, vector}});
    }
}

// Calls `check` with requests of every type and method around every size that decides.
template <class Check>
void forEachRequest(Check const& check) {
    for (int type = byte; type <= real; ++type) {
        for (int method = -1; method <= 8; ++method) {
            for (std::uint64_t const src : {1U, 2U, 3U, 31U, 32U}) {
                for (std::uint64_t const dst : {1U, 2U, 15U, 16U, 17U}) {
                    for (std::uint64_t const channels : {1U, 2U, 5U}) {
                        check(model::Resize{type, method, src, 32, dst, 16, channels});
                        check(model::Resize{type, method, 32, src, 16, dst, channels});
                        check(model::Resize{type, method, src, src, dst, dst, channels});
                    }
                }
            }
        }
    }
}

ResizerSubject const* subjectOf(model::ResizeClass model) {
    auto const* const found =
        std::find_if(std::begin(resizerSubjects), std::end(resizerSubjects),
                     [&](ResizerSubject const* subject) { return subject->model == model; });
    return found == std::end(resizerSubjects) ? nullptr : *found;
}

// That the class and no other was chosen and made, with the buffers of its side.
void expectMade(model::Resize const& request, model::ResizeClass expected, ResizerClass chosen,
                Simd::Resizer* made) {
    ResizerPointer const resizer(made);
    ResizerSubject const* const subject = subjectOf(expected);
    if (subject == nullptr) {
        EXPECT_EQ(chosen, ResizerClass::none) << textOf(nearestResizer, request);
        EXPECT_EQ(made, nullptr) << textOf(nearestResizer, request);
        return;
    }
    EXPECT_EQ(chosen, subject->choice) << textOf(*subject, request);
    ASSERT_NE(made, nullptr) << textOf(*subject, request);
    EXPECT_TRUE(subject->isClassOf(*resizer)) << textOf(*subject, request);
    Simd::ResizerParam const& param = Probe::paramOf(*resizer);
    EXPECT_EQ(param.align, subject->align) << textOf(*subject, request);
    EXPECT_EQ(param.type, request.type);
    EXPECT_EQ(param.method, request.method);
    EXPECT_EQ(param.srcW, request.src_w);
    EXPECT_EQ(param.srcH, request.src_h);
    EXPECT_EQ(param.dstW, request.dst_w);
    EXPECT_EQ(param.dstH, request.dst_h);
    EXPECT_EQ(param.channels, request.channels);
}

TEST(ResizerChoice, ScalarObjectsAreOfTheChosenClass) {
    forEachRequest([](model::Resize const& r) {
        expectMade(r, model::scalarChoice(r), chosenScalar(r),
                   Simd::Base::CreateResizer(r.src_w, r.src_h, r.dst_w, r.dst_h, r.channels,
                                             static_cast<Simd::ResizerType>(r.type),
                                             static_cast<Simd::ResizerMethod>(r.method)));
    });
}

TEST(ResizerChoice, VectorObjectsAreOfTheChosenClass) {
    forEachRequest([](model::Resize const& r) {
        expectMade(r, model::vectorChoice(r), chosenVector(r),
                   Simd::Neon::CreateResizer(r.src_w, r.src_h, r.dst_w, r.dst_h, r.channels,
                                             static_cast<Simd::ResizerType>(r.type),
                                             static_cast<Simd::ResizerMethod>(r.method)));
    });
}

}  // namespace
}  // namespace ox::test::resizer_choice
