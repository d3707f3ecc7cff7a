// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The resizer classes, as the two creation functions choose them, against the model.
#include <memory>

#include "fuzz/planes.h"
#include "model/resize.h"
#include "simd/number_draws.h"
#include "simd/resizers/resizer.h"

namespace ox::fuzz {

namespace {

template <class Element>
std::vector<Element> drawElements(Input& input, std::uint64_t count) {
    std::vector<Element> elements(count);
    if constexpr (std::is_same_v<Element, float>) {
        bool const wild = input.oneIn(3);
        test::Random numbers = input.random();
        for (float& each : elements) {
            each =
                wild ? test::drawAround({-300.0F, 300.0F}, numbers) : numbers.real(-300.0F, 300.0F);
        }
    } else {
        std::vector<std::uint8_t> bytes(count * sizeof(Element));
        input.fill(bytes);
        if (count != 0) {
            std::memcpy(elements.data(), bytes.data(), bytes.size());
        }
    }
    return elements;
}

template <class Element>
std::vector<std::uint8_t> bytesOf(std::vector<Element> const& elements) {
    std::vector<std::uint8_t> bytes(elements.size() * sizeof(Element));
    if (!bytes.empty()) {
        std::memcpy(bytes.data(), elements.data(), bytes.size());
    }
    return bytes;
}

model::Resize drawRequest(Input& input) {
    model::Resize request;
    request.type = input.between(0, 2);
    request.method = input.between(0, 8);
    auto const side = [&] {
        std::uint8_t const kind = input.byte();
        return static_cast<std::uint64_t>(kind < 200   ? 1 + kind % 40
                                          : kind < 240 ? 1 + kind % 5
                                                       : input.between(1, 200));
    };
    request.src_w = side();
    request.src_h = side();
    bool const halves = input.oneIn(4);
    request.dst_w = halves ? (request.src_w + 1) / 2 : side();
    request.dst_h = halves ? (request.src_h + 1) / 2 : side();
    request.channels = static_cast<std::uint64_t>(input.between(0, 5));
    return request;
}

using Create = Simd::Resizer*(std::uint64_t, std::uint64_t, std::uint64_t, std::uint64_t,
                              std::uint64_t, Simd::ResizerType, Simd::ResizerMethod);

// One object on two planes.
template <class Element>
void check(Input& input, Create* create, model::ResizeClass chosen, model::Resize const& request,
           char const* what) {
    std::unique_ptr<Simd::Resizer> const resizer(
        create(request.src_w, request.src_h, request.dst_w, request.dst_h, request.channels,
               static_cast<Simd::ResizerType>(request.type),
               static_cast<Simd::ResizerMethod>(request.method)));
    if ((resizer == nullptr) != (chosen == model::ResizeClass::None)) {
        fail("%s: class %d, but %s", what, static_cast<int>(chosen),
             resizer == nullptr ? "there is none" : "there is one");
    }
    std::size_t const unit =
        chosen == model::ResizeClass::Nearest ? std::size_t{1} : sizeof(Element);
    std::size_t const pixel = request.channels * sizeof(Element);
    for (int i = input.between(1, 2); i > 0 && resizer != nullptr; --i) {
        auto const elements =
            drawElements<Element>(input, request.src_w * request.src_h * request.channels);
        Plane const src(input, {request.src_w * pixel, request.src_h}, unit);
        src.store(bytesOf(elements));
        Plane const dst(input, {request.dst_w * pixel, request.dst_h}, unit);
        std::vector<std::uint8_t> wanted = dst.bytes();
        if (model::writesChannels(chosen, request.channels)) {
            wanted = bytesOf(model::resized(chosen, request, elements));
        }
        resizer->Run(src.data(), src.stride(), dst.data(), dst.stride());
        (std::is_same_v<Element, float> ? expectFloats : expectBytes)(dst.bytes(), wanted, what);
        dst.expectUntouchedAround(what);
    }
}

template <class Element>
void checkBoth(Input& input, model::Resize const& request) {
    check<Element>(input, Simd::Base::CreateResizer, model::scalarChoice(request), request,
                   "scalar resizer");
    check<Element>(input, Simd::Neon::CreateResizer, model::vectorChoice(request), request,
                   "vector resizer");
}

}  // namespace

void resizers(Input& input) {
    model::Resize const request = drawRequest(input);
    switch (request.type) {
        case Simd::ResizerTypeByte:
            return checkBoth<std::uint8_t>(input, request);
        case Simd::ResizerTypeShort:
            return checkBoth<std::uint16_t>(input, request);
        default:
            return checkBoth<float>(input, request);
    }
}

}  // namespace ox::fuzz
