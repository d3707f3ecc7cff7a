// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_frame_to_tensor.h"

#include <array>
#include <utility>

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_impl_tensor_fit.h"
#include "ox_cv/ox_impl_tensor_recipe.h"
#include "ox_cv/ox_impl_tensor_source.h"
#include "ox_cv/ox_impl_tensor_target.h"
#include "rows/rows_routines.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_frame_to_tensor"};

[[noreturn]] void refuse(Status status, char const* text) {
    here.fail({status, "run"}, "Failure in FrameToTensor::run(...) : %s.", text);
}

/// @return the region that is read
Rect checkSource(Frame const& src, Rect region) {
    if (!src.initialized()) {
        refuse(StatusInputNotInitialized, "'src' is not initialized");
    }
    if (!impl::isTensorSource(src.format())) {
        refuse(StatusNotSupported, "format of 'src' isn't supported");
    }
    if (src.size().empty()) {
        refuse(StatusInvalidParameter, "'src' has no pixels");
    }
    if (src.deviceContext() != DeviceContext::cpuContext()) {
        refuse(StatusInvalidParameter, "'src' isn't on the CPU");
    }
    if (region.empty()) {
        return {0, 0, src.width(), src.height()};
    }
    Rect inside = region;
    inside.crop(src.size());
    if (inside != region) {
        refuse(StatusOutOfRange, "parameter 'region' is out of range");
    }
    return impl::readRegion(src.format(), region);
}

}  // namespace

struct FrameToTensor::State {
    TensorRecipe recipe;
    bool initialized = false;
    /// In the tensor's order.
    std::array<rows::ChannelNumbers, 3> channels;
    impl::TensorSource source;

    void requireRecipe(char const* function) const;
    template <class FindPlace>
    PictureMapping run(Frame const& src, Rect region, FindPlace find_place);
    void arm(Frame const& src, PictureMapping const& mapping);
    void write(Rect inner, impl::TensorRows rows);
    void writeRow(Rect inner, impl::TensorRows const& rows, bool swaps);
};

void FrameToTensor::State::requireRecipe(char const* function) const {
    if (!initialized) {
        here.fail({StatusNotInitialized, function},
                  "FrameToTensor is not initialized. Call FrameToTensor::reuse(...) first.");
    }
}

/// Nothing is written before all is checked and armed.
template <class FindPlace>
PictureMapping FrameToTensor::State::run(Frame const& src, Rect region, FindPlace find_place) {
    requireRecipe("run");
    Rect const read = checkSource(src, region);
    impl::TensorPlace const place = find_place();
    PictureMapping const mapping = impl::fitPicture(recipe, src.format(), read);
    arm(src, mapping);
    write(mapping.inner, {recipe, place, channels});
    return mapping;
}

void FrameToTensor::State::arm(Frame const& src, PictureMapping const& mapping) {
    Frame frame = src;
    source.reuse(getRegion(frame, mapping.source),
                 {{mapping.inner.width, mapping.inner.height},
                  impl::scaleMethodOf(recipe, mapping),
                  recipe.kernel,
                  recipe.precision},
                 recipe.colour == TENSOR_COLOUR_GRAY, impl::matrixOf(recipe));
}

void FrameToTensor::State::write(Rect inner, impl::TensorRows rows) {
    bool const swaps = (recipe.colour == TENSOR_COLOUR_RGB) != source.isRedFirst();
    rows.writeBarRows(inner.y);
    for (std::int32_t y = 0; y < inner.height; ++y, rows.next()) {
        writeRow(inner, rows, swaps);
    }
    rows.writeBarRows(recipe.height - inner.y - inner.height);
}

/// @param swaps whether the last channel of the source's rows is the tensor's first
void FrameToTensor::State::writeRow(Rect inner, impl::TensorRows const& rows, bool swaps) {
    rows.writeBars(0, inner.x);
    rows.writeBars(inner.x + inner.width, recipe.width);
    std::array<std::uint8_t*, 3> dst = rows.at(inner.x);
    rows::PixelNumbers numbers{&channels[0], &channels[1], &channels[2]};
    rows::Channels order = rows::Channels::One;
    if (recipe.colour != TENSOR_COLOUR_GRAY) {
        bool const planes = impl::hasPlanes(recipe);
        order = planes ? rows::Channels::Planes
                       : (swaps ? rows::Channels::Swapped : rows::Channels::Packed);
        if (swaps) {
            std::swap(numbers[0], numbers[2]);
        }
        if (swaps && planes) {
            std::swap(dst[0], dst[2]);
        }
    }
    rows::NormaliseRow* const normalise =
        rows::routines()
            .tensor.normalise[rows::indexOf(impl::numberOf(recipe))][rows::indexOf(order)];
    normalise(source.row(), static_cast<std::size_t>(inner.width), numbers, dst.data());
    source.next();
}

FrameToTensor::FrameToTensor() : _state(impl::makeState<State>(here)) {}

FrameToTensor::~FrameToTensor() = default;

void FrameToTensor::reuse(TensorRecipe const& recipe) {
    impl::checkRecipe(recipe);
    _state->recipe = recipe;
    impl::fillNumbers(recipe, _state->channels);
    _state->initialized = true;
}

bool FrameToTensor::initialized() const {
    return _state->initialized;
}

TensorLayout FrameToTensor::layout(std::int32_t batch) const {
    _state->requireRecipe("layout");
    return impl::layoutOf(_state->recipe, batch);
}

PictureMapping FrameToTensor::run(Frame const& src, Rect region, Tensor& dst, std::int32_t index) {
    return _state->run(src, region, [&] { return impl::placeIn(_state->recipe, dst, index); });
}

PictureMapping FrameToTensor::run(Frame const& src, Rect region, void* dst, std::int64_t row_stride,
                                  std::int64_t channel_stride) {
    return _state->run(src, region, [&] {
        return impl::placeAt(_state->recipe, dst, row_stride, channel_stride);
    });
}

}  // namespace ox
