// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every resizer, sizes of all kinds and every placement in memory, against the model.
#include <gtest/gtest.h>

#include "simd/number_draws.h"
#include "simd/resizer_check.h"

namespace ox::test::resizer_sweep {
namespace {

constexpr int largestChannels = 5;

// How many sizes a test draws.
constexpr int draws(int natively) {
    return emulated() ? std::max(natively / 20, 3) : natively;
}

template <class Element>
Element drawElement(bool extreme, Random& random) {
    constexpr std::uint32_t extremes[]{0,    1,      0x7F,   0x80,   0xFE,
                                       0xFF, 0x7FFF, 0x8000, 0xFFFE, 0xFFFF};
    if constexpr (std::is_same_v<Element, float>) {
        return extreme ? drawAround({-300.0F, 300.0F}, random) : random.real(-300.0F, 300.0F);
    } else {
        return static_cast<Element>(extreme ? extremes[random.between(0, 9)] : random.next() >> 40);
    }
}

template <class Element>
std::vector<Element> drawElements(std::uint64_t count, Random& random) {
    bool const extreme = random.between(0, 2) == 0;
    std::vector<Element> elements(count);
    std::generate(elements.begin(), elements.end(),
                  [&] { return drawElement<Element>(extreme, random); });
    return elements;
}

// A plane and the stride that a class is told, whose bytes below a unit don't count.
struct PlacedPlane {
    PlacedPlane(PlaneSize size, std::size_t unit, Random& random)
        : plane(size, placement(unit, random)),
          stride(plane.stride() +
                 static_cast<std::size_t>(random.between(0, static_cast<int>(unit) - 1))) {}

    static PlanePlacement placement(std::size_t unit, Random& random) {
        PlanePlacement placement = drawPlanePlacement(random);
        placement.gap *= unit;
        return placement;
    }

    GuardedPlane plane;
    std::size_t stride;
};

template <class Element>
class ResizerCheck {
  public:
    // Nearest samples are copied by bytes; the other classes count strides in elements.
    ResizerCheck(ResizerSubject const& subject, model::Resize const& request, Random& random)
        : _subject(subject),
          _request(request),
          _random(random),
          _stride_unit(subject.model == model::ResizeClass::Nearest ? 1 : sizeof(Element)),
          _resizer(makeResizer(subject, request)) {}

    // By the same object, on a plane like no other.
    testing::AssertionResult onNextPlane() {
        auto const src =
            drawElements<Element>(_request.src_w * _request.src_h * _request.channels, _random);
        PlacedPlane const from = place(_request.src_w, _request.src_h);
        PlacedPlane const to = place(_request.dst_w, _request.dst_h);
        storeRows(src, from.plane);
        _resizer->Run(from.plane.data(), from.stride, to.plane.data(), to.stride);
        auto result = holds(to.plane, expectedOf(src));
        return result ? result : result << " (" << textOf(_subject, _request) << ")";
    }

  private:
    PlacedPlane place(std::uint64_t w, std::uint64_t h) {
        return PlacedPlane(planeSize<Element>(w, h, _request.channels), _stride_unit, _random);
    }

    std::vector<Element> expectedOf(std::vector<Element> const& src) const {
        if (model::writesChannels(_subject.model, _request.channels)) {
            return model::resized(_subject.model, _request, src);
        }
        std::vector<Element> kept(_request.dst_w * _request.dst_h * _request.channels);
        if (!kept.empty()) {
            std::memset(kept.data(), GuardedMemory::poison, kept.size() * sizeof(Element));
        }
        return kept;
    }

    ResizerSubject const& _subject;
    model::Resize const& _request;
    Random& _random;
    std::size_t _stride_unit;
    ResizerPointer _resizer;
};

template <class Element>
testing::AssertionResult agreesOn(ResizerSubject const& subject, model::Resize const& request,
                                  Random& random) {
    ResizerCheck<Element> check(subject, request, random);
    auto const result = check.onNextPlane();
    return result && random.between(0, 3) == 0 ? check.onNextPlane() : result;
}

// Whether a class gives what the model does, on a random plane and perhaps on a second one.
testing::AssertionResult agrees(ResizerSubject const& subject, model::Resize const& request,
                                Random& random) {
    switch (request.type) {
        case Simd::ResizerTypeByte:
            return agreesOn<std::uint8_t>(subject, request, random);
        case Simd::ResizerTypeShort:
            return agreesOn<std::uint16_t>(subject, request, random);
        default:
            return agreesOn<float>(subject, request, random);
    }
}

// The requests that a class is made for, and the sizes that it takes.
struct Domain {
    ResizerSubject const& subject;
    std::vector<int> types;
    std::vector<int> methods;
    int smallest_source = 1;
    int smallest_width = 1;
    bool halves = false;  // only where both sides do
};

std::vector<Domain> const& domains() {
    constexpr int byte = Simd::ResizerTypeByte;
    constexpr int wide = Simd::ResizerTypeShort;
    constexpr int real = Simd::ResizerTypeFloat;
    static std::vector<Domain> const every{
        // Methods above 1 reach the nearest sample where the source is a line.
        {nearestResizer, {byte, wide, real}, {0, 1, 2, 7}},
        {byteBilinearResizer, {byte}, {2, 5}},
        {vectorByteBilinearResizer, {byte}, {2, 5}, 1, 16},
        {shortBilinearResizer, {wide}, {2}},
        {vectorShortBilinearResizer, {wide}, {2}},
        {floatBilinearResizer, {real}, {2, 3, 4}},
        {vectorFloatBilinearResizer, {real}, {2, 3, 4}},
        {byteBicubicResizer, {byte}, {5}, 3},
        {byteArea1x1Resizer, {byte}, {6, 7}},
        {vectorByteArea1x1Resizer, {byte}, {6, 7}},
        {byteArea2x2Resizer, {byte}, {7}, 1, 1, true},
    };
    return every;
}

struct Limits {
    int source;
    int destination;
};

int oneOf(std::vector<int> const& choices, Random& random) {
    return choices[static_cast<std::size_t>(
        random.between(0, static_cast<int>(choices.size()) - 1))];
}

model::Resize drawRequest(Domain const& domain, Limits limits, Random& random) {
    auto const sourceSide = [&] {
        return static_cast<std::uint64_t>(random.between(domain.smallest_source, limits.source));
    };
    auto const side = [&](int smallest, std::uint64_t source) {
        auto const half = static_cast<int>((source + 1) / 2);
        int const largest = domain.halves ? half : smallest - 1 + limits.destination;
        return static_cast<std::uint64_t>(random.between(smallest, largest));
    };
    model::Resize request;
    request.type = oneOf(domain.types, random);
    request.method = oneOf(domain.methods, random);
    request.src_w = sourceSide();
    request.src_h = sourceSide();
    request.dst_w = side(domain.smallest_width, request.src_w);
    request.dst_h = side(1, request.src_h);
    request.channels = static_cast<std::uint64_t>(random.between(0, largestChannels));
    return request;
}

// Calls `check` with each domain, for each instruction set of its class, and numbers of its own.
template <class Check>
void forEachDomain(std::uint64_t test, Check const& check) {
    std::uint64_t seed = 1000 * test;
    for (Domain const& domain : domains()) {
        onEveryTarget({&domain.subject}, [&](ResizerSubject const&) {
            Random own(seed++);
            check(domain, own);
        });
    }
}

void checkDraws(std::uint64_t test, Limits limits, int count) {
    forEachDomain(test, [&](Domain const& domain, Random& random) {
        for (int i = 0; i < draws(count); ++i) {
            ASSERT_TRUE(agrees(domain.subject, drawRequest(domain, limits, random), random));
        }
    });
}

TEST(ResizerSweep, SmallPlanes) {
    checkDraws(1, {40, 40}, 1200);
}

TEST(ResizerSweep, TinyPlanes) {
    checkDraws(2, {5, 7}, 8000);
}

TEST(ResizerSweep, Reductions) {
    checkDraws(3, {150, 20}, 100);
}

// Heights grow 16 times and more, where 2048 / scale has more than 15 bits.
TEST(ResizerSweep, Enlargements) {
    checkDraws(4, {5, 160}, 40);
}

TEST(ResizerSweep, SourcesThatAreALine) {
    forEachDomain(5, [](Domain const& domain, Random& random) {
        for (int i = 0; i < draws(200) && domain.smallest_source == 1; ++i) {
            model::Resize request = drawRequest(domain, {40, 40}, random);
            int const line = random.between(1, 3);
            request.src_w = line != 1 ? 1 : request.src_w;
            request.src_h = line != 2 ? 1 : request.src_h;
            request.dst_w = domain.halves ? (request.src_w + 1) / 2 : request.dst_w;
            request.dst_h = domain.halves ? (request.src_h + 1) / 2 : request.dst_h;
            ASSERT_TRUE(agrees(domain.subject, request, random));
        }
    });
}

TEST(ResizerSweep, DestinationsWithoutRowsOrColumns) {
    forEachDomain(6, [](Domain const& domain, Random& random) {
        for (int i = 0; i < draws(60); ++i) {
            model::Resize request = drawRequest(domain, {20, 20}, random);
            bool const rows = domain.smallest_width > 1 || random.between(0, 1) == 0;
            (rows ? request.dst_h : request.dst_w) = 0;
            ASSERT_TRUE(agrees(domain.subject, request, random));
        }
    });
}

TEST(ResizerSweep, EveryWidth) {
    forEachDomain(7, [](Domain const& domain, Random& random) {
        for (int width = domain.smallest_width; width <= 140; width += emulated() ? 9 : 1) {
            model::Resize request = drawRequest(domain, {9, 9}, random);
            request.dst_w = static_cast<std::uint64_t>(width);
            request.src_w = static_cast<std::uint64_t>(
                domain.halves ? random.between(2 * width, 4 * width) : random.between(3, 300));
            ASSERT_TRUE(agrees(domain.subject, request, random));
        }
    });
}

TEST(ResizerSweep, TwiceEveryWidthAndHeight) {
    forEachDomain(9, [](Domain const& domain, Random& random) {
        for (int width = 3; width <= 140 && !domain.halves; width += emulated() ? 9 : 1) {
            model::Resize request = drawRequest(domain, {9, 9}, random);
            request.src_w = static_cast<std::uint64_t>(std::max(width, domain.smallest_width));
            request.dst_w = 2 * request.src_w;
            request.dst_h = 2 * request.src_h;
            ASSERT_TRUE(agrees(domain.subject, request, random));
        }
    });
}

struct Size {
    std::uint64_t src_w;
    std::uint64_t src_h;
    std::uint64_t dst_w;
    std::uint64_t dst_h;
};

bool takes(Domain const& domain, Size const& size) {
    bool const halves = size.dst_w <= (size.src_w + 1) / 2 && size.dst_h <= (size.src_h + 1) / 2;
    return (halves || !domain.halves) &&
           size.src_h >= static_cast<std::uint64_t>(domain.smallest_source);
}

TEST(ResizerSweep, LargePlanes) {
    constexpr Size sizes[]{{1920, 9, 640, 4},  {17, 3, 1424, 5},   {1280, 4, 1920, 3},
                           {1920, 6, 1919, 6}, {4096, 2, 300, 1},  {1919, 7, 960, 4},
                           {3, 1080, 17, 720}, {9, 1080, 16, 270}, {2, 5, 928, 7}};
    forEachDomain(8, [&](Domain const& domain, Random& random) {
        for (Size const& size : sizes) {
            for (std::uint64_t channels = 1; channels <= 4 && takes(domain, size);
                 channels += emulated() ? 2U : 1U) {
                model::Resize const request{domain.types.back(),
                                            domain.methods.front(),
                                            size.src_w,
                                            size.src_h,
                                            size.dst_w,
                                            size.dst_h,
                                            channels};
                ASSERT_TRUE(agrees(domain.subject, request, random));
            }
        }
    });
}

// Cells of one sample, of a few that weigh alike, and of more than a step takes.
TEST(ResizerSweep, AreaRatios) {
    constexpr Size sizes[]{{66, 3, 132, 6},   {40, 2, 160, 8}, {50, 4, 75, 6},    {44, 3, 132, 9},
                           {150, 9, 100, 6},  {151, 9, 50, 3}, {640, 32, 100, 5}, {201, 13, 64, 4},
                           {2640, 80, 66, 2}, {66, 4, 132, 4}, {66, 4, 66, 8},    {132, 4, 66, 8}};
    Random random(10);
    onEveryTarget({&byteArea1x1Resizer, &vectorByteArea1x1Resizer},
                  [&](ResizerSubject const& subject) {
                      for (Size const& size : sizes) {
                          for (std::uint64_t channels = 1; channels <= 4; ++channels) {
                              model::Resize const request{
                                  0, 6, size.src_w, size.src_h, size.dst_w, size.dst_h, channels};
                              ASSERT_TRUE(agrees(subject, request, random));
                          }
                      }
                  });
}

struct Pair {
    ResizerSubject const& scalar;
    ResizerSubject const& vector;
    int type;
    int method;
    int smallest_width;
};

Bytes run(ResizerSubject const& subject, model::Resize const& request, Bytes const& src) {
    std::size_t const pixel =
        request.channels * Simd::elementBytes(static_cast<Simd::ResizerType>(request.type));
    Bytes dst(request.dst_w * request.dst_h * pixel);
    makeResizer(subject, request)
        ->Run(src.data(), request.src_w * pixel, dst.data(), request.dst_w * pixel);
    return dst;
}

// Whether the two classes of bytes have the same weights.
bool roundsAlike(model::Resize const& request) {
    bool alike = true;
    for (std::uint64_t x = 0; x < request.dst_w; ++x) {
        alike = alike && model::bytePosition(request.src_w, request.dst_w, x).weight ==
                             model::vectorBytePosition(request.src_w, request.dst_w, x).weight;
    }
    return alike;
}

// The bytes of a plane; those of floats are numbers.
Bytes drawPlane(model::Resize const& request, Random& random) {
    std::uint64_t const count = request.src_w * request.src_h * request.channels;
    if (request.type != Simd::ResizerTypeFloat) {
        auto const type = static_cast<Simd::ResizerType>(request.type);
        return drawElements<std::uint8_t>(count * Simd::elementBytes(type), random);
    }
    Bytes bytes(count * sizeof(float));
    for (std::uint64_t i = 0; i < count; ++i) {
        storeAs(bytes.data(), i, random.real(-1.0F, 1.0F));
    }
    return bytes;
}

// At every width. Heights don't grow 16 times.
void checkScalarBytes(Pair const& pair, Random& random) {
    for (int width = pair.smallest_width; width <= 140; width += emulated() ? 13 : 1) {
        for (std::uint64_t channels = 1; channels <= 4; ++channels) {
            model::Resize const request{pair.type,
                                        pair.method,
                                        static_cast<std::uint64_t>(random.between(2, 200)),
                                        static_cast<std::uint64_t>(random.between(2, 12)),
                                        static_cast<std::uint64_t>(width),
                                        static_cast<std::uint64_t>(random.between(1, 20)),
                                        channels};
            if (pair.type != Simd::ResizerTypeByte || roundsAlike(request)) {
                Bytes const src = drawPlane(request, random);
                ASSERT_EQ(run(pair.vector, request, src), run(pair.scalar, request, src))
                    << textOf(pair.vector, request);
            }
        }
    }
}

TEST(ResizerSweep, VectorClassesGiveTheScalarBytes) {
    Pair const pairs[]{
        {byteBilinearResizer, vectorByteBilinearResizer, 0, 2, 16},
        {byteArea1x1Resizer, vectorByteArea1x1Resizer, 0, 6, 1},
        {shortBilinearResizer, vectorShortBilinearResizer, 1, 2, 1},
        {floatBilinearResizer, vectorFloatBilinearResizer, 2, 2, 1},
        {floatBilinearResizer, vectorFloatBilinearResizer, 2, 3, 1},
        {floatBilinearResizer, vectorFloatBilinearResizer, 2, 4, 1},
    };
    for (Pair const& pair : pairs) {
        onEveryTarget({&pair.vector}, [&](ResizerSubject const&) {
            Random random(9);
            checkScalarBytes(pair, random);
        });
    }
}

}  // namespace
}  // namespace ox::test::resizer_sweep
