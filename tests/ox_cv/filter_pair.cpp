// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/filter_pair.h"

#include <cmath>
#include <cstddef>
#include <iterator>
#include <limits>

namespace ox::test {

namespace {

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float not_a_number = std::numeric_limits<float>::quiet_NaN();

// `Numerator` / `Denominator`, at any scale or times the scale.
template <int Numerator, int Denominator = 1>
float fixed(float) {
    return static_cast<float>(Numerator) / static_cast<float>(Denominator);
}

template <int Numerator, int Denominator = 1>
float times(float scale) {
    return scale * fixed<Numerator, Denominator>(scale);
}

template <int Value>
float constant(float, float) {
    return static_cast<float>(Value);
}

// One more, rounded, is four.
float justOverThree(float) {
    return 3.0000002F;
}

float hair(float) {
    return 1e-8F;
}

float endless(float) {
    return infinity;
}

float endlesslyNegative(float) {
    return -infinity;
}

float undefined(float) {
    return not_a_number;
}

float box(float x, float scale) {
    return std::fabs(x) <= scale * 0.5F + 0.001F ? 1.0F : 0.0F;
}

float triangle(float x, float scale) {
    return std::fmax(0.0F, 1.0F - std::fabs(x) / scale);
}

// Four samples wide, with negative lobes.
float cubic(float x, float scale) {
    float const t = std::fabs(x) / scale;
    if (t < 1.0F) {
        return (1.5F * t - 2.5F) * t * t + 1.0F;
    }
    return t < 2.0F ? ((-0.5F * t + 2.5F) * t - 4.0F) * t + 2.0F : 0.0F;
}

// The sine of pi t by its series, which is all that this takes: libraries differ in the last bits.
float sineOfPi(float t) {
    float const whole = std::floor(t + 0.5F);
    float const rest = (t - whole) * 3.1415927F;
    float const square = rest * rest;
    float const series =
        rest * (1.0F - square / 6.0F * (1.0F - square / 20.0F * (1.0F - square / 42.0F)));
    return std::fmod(whole, 2.0F) == 0.0F ? series : -series;
}

// Six lobes under a parabola.
float windowedSinc(float x, float scale) {
    float const t = x / scale;
    if (std::fabs(t) < 0.001F) {
        return 1.0F;
    }
    return sineOfPi(t) / (3.1415927F * t) * (1.0F - t * t / 9.0F);
}

float bell(float x, float scale) {
    float const t = 2.0F * x / scale;
    float const root = 1.0F + t * t;
    return 1.0F / (root * root);
}

// Of no symmetry: it tells left from right.
float ramp(float x, float scale) {
    return x / scale + 0.875F;
}

template <std::size_t Count>
float pick(float const (&values)[Count], float x) {
    return values[static_cast<std::size_t>(std::fabs(x) * 3.0F + (x < 0.0F ? 1.0F : 0.0F)) % Count];
}

// Sums close to zero make for weights of any size.
float jagged(float x, float) {
    constexpr float values[] = {1.0F, -0.9F, 0.0F, 3.0F, -2.5F, 0.25F, -0.75F};
    return pick(values, x);
}

float steep(float x, float) {
    constexpr float values[] = {1e9F, -0.9e9F, 1e4F, -1.0F, 3e-9F};
    return pick(values, x);
}

float huge(float x, float) {
    constexpr float values[] = {3e38F, -2.9e38F, 1e30F, 1e-40F};
    return pick(values, x);
}

// Its last step is what makes a sum infinite.
float nearlyEndless(float, float) {
    return 1.1e37F;
}

// Halves that cancel out leave weights of 32 bits and more.
float balanced(float x, float) {
    return x < 0.0F ? -8191.9844F : 8192.0156F;
}

// Where both halves are whole pixels, two weights that are as large as they get: 32640 is the least
// that isn't 256 times a signed byte plus another.
float twoParts(float x, float) {
    if (x == 0.0F) {
        return 0.0F;
    }
    return x < 0.0F ? 32640.0F : -16256.0F;
}

float boundless(float x, float) {
    constexpr float values[] = {1.0F, 2.0F, infinity, 0.5F};
    return pick(values, x);
}

float holed(float x, float) {
    constexpr float values[] = {1.0F, not_a_number, 2.0F, 0.5F};
    return pick(values, x);
}

}  // namespace

std::vector<FilterShape> const& usualFilters() {
    static std::vector<FilterShape> const shapes{
        {"box", times<1>, box},
        {"triangle", times<2>, triangle},
        {"cubic", times<4>, cubic},
        {"windowed sinc", times<6>, windowedSinc},
        {"bell", times<3>, bell},
        {"ramp", times<7, 4>, ramp},
        {"narrow constant", fixed<1, 3>, constant<1>},
        {"constant of five", fixed<5>, constant<1>},
        {"constant of a little more than three", justOverThree, constant<1>},
        {"constant of forty and a half", fixed<81, 2>, constant<1>},
    };
    return shapes;
}

std::vector<FilterShape> const& wildFilters() {
    static std::vector<FilterShape> const shapes{
        {"jagged", times<5, 2>, jagged},
        {"steep", fixed<3>, steep},
        {"huge", times<3>, huge},
        {"boundless", times<2>, boundless},
        {"holed", times<2>, holed},
        {"negative on less than nothing", fixed<-1, 2>, constant<-1>},
        {"steep and wide", fixed<41>, steep},
        {"nearly endless", times<2>, nearlyEndless},
        {"two parts", fixed<2>, twoParts},
        {"balanced", times<3>, balanced},
        {"balanced on four", fixed<4>, balanced},
        {"hair", hair, constant<1'000'000>},
    };
    return shapes;
}

std::vector<FilterShape> const& refusedFilters() {
    static std::vector<FilterShape> const shapes{
        {"zero", times<2>, constant<0>},
        {"negative", times<2>, constant<-1>},
        {"no aperture", fixed<0>, constant<1>},
        {"less than no aperture", fixed<-1, 2>, constant<1>},
        {"aperture of -0.999", fixed<-999, 1000>, constant<-1>},
        {"aperture of -1", fixed<-1>, constant<1>},
        {"aperture of -7", fixed<-7>, constant<1>},
        {"aperture of 63.5", fixed<127, 2>, constant<1>},
        {"aperture of 64", fixed<64>, constant<1>},
        {"aperture of 64.25", fixed<257, 4>, constant<1>},
        {"aperture of 70", fixed<70>, constant<1>},
        {"aperture of 16385", fixed<16385>, constant<1>},
        {"aperture of 2e9", fixed<2'000'000'000>, constant<1>},
        {"endless", endless, constant<1>},
        {"endlessly negative", endlesslyNegative, constant<1>},
        {"undefined", undefined, constant<1>},
    };
    return shapes;
}

bool FilterPair::toldAlike() {
    bool const alike = _library.scales == _model.scales;
    _library.scales.clear();
    _model.scales.clear();
    return alike;
}

}  // namespace ox::test
