// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "frame_converter.h"

namespace oxgst {

namespace {

bool isPlanarColour(ox::FrameFormat format) {
    return format == ox::FRAME_RGB_PLANAR || format == ox::FRAME_BGR_PLANAR;
}

bool isColour(ox::FrameFormat format) {
    return format == ox::FRAME_RGB24 || format == ox::FRAME_BGR24 || isPlanarColour(format);
}

bool isPacked422(ox::FrameFormat format) {
    return format == ox::FRAME_YUYV || format == ox::FRAME_UYVY;
}

ox::TensorColour colourOrderOf(ox::FrameFormat format) {
    if (format == ox::FRAME_GRAY8) {
        return ox::TENSOR_COLOUR_GRAY;
    }
    return format == ox::FRAME_RGB24 || format == ox::FRAME_RGB_PLANAR ? ox::TENSOR_COLOUR_RGB
                                                                       : ox::TENSOR_COLOUR_BGR;
}

/// Bytes as they are.
ox::TensorRecipe recipeOf(Conversion const& conversion, ox::FrameFormat format, ox::Size size) {
    ox::TensorRecipe recipe;
    recipe.width = size.width;
    recipe.height = size.height;
    recipe.method = conversion.method;
    recipe.kernel = conversion.kernel.get();
    recipe.colour = colourOrderOf(format);
    recipe.layout = isPlanarColour(format) ? ox::TENSOR_FORMAT_NCHW : ox::TENSOR_FORMAT_NHWC;
    recipe.element = ox::TENSOR_UINT_8;
    recipe.matrix = conversion.colour.matrix;
    recipe.range = conversion.colour.range;
    return recipe;
}

/// The last pair of an odd width has a second Y, which belongs to no pixel. It repeats the first
/// one, so that nothing older is handed out.
void completeLastPairs(ox::Frame const& frame) {
    if (!isPacked422(frame.format()) || frame.width() % 2 == 0) {
        return;
    }
    ox::FramePlane const& plane = frame.layout().plane[0];
    int const first = frame.format() == ox::FRAME_UYVY ? 1 : 0;
    unsigned char* pair = frame.planeData(0) + plane.rowBytes - 4;
    for (int y = 0; y < plane.height; ++y, pair += plane.stride) {
        pair[first + 2] = pair[first];
    }
}

/// Whether the planes of a frame follow one another as the channels of a tensor do.
bool isEvenlySpaced(ox::Frame const& frame) {
    auto const* const first = frame.planeData(0);
    auto const* const second = frame.planeData(1);
    auto const* const third = frame.planeData(2);
    ox::FramePlane const* const planes = frame.layout().plane;
    return planes[0].stride == planes[1].stride && planes[1].stride == planes[2].stride &&
           second > first && third - second == second - first;
}

ox::ScaleMethod methodFor(ox::TensorMethod method, ox::Size from, ox::Size to) {
    if (method != ox::TENSOR_METHOD_AUTOMATIC) {
        return static_cast<ox::ScaleMethod>(method);
    }
    bool const halved = 2 * to.width <= from.width && 2 * to.height <= from.height;
    return halved ? ox::OX_SCALE_AREA : ox::OX_SCALE_BILINEAR;
}

}  // namespace

/// The last link so far: a producer, or as long as there is none, the frame that is read.
struct FrameConverter::Chain {
    ox::Frame const* frame;
    ox::IRowProducer* producer;

    /// @param arm called with the last link
    template <class Link, class Arm>
    void append(Link& link, Arm const& arm) {
        link.renew();
        if (producer != nullptr) {
            arm(*producer);
        } else {
            arm(*frame);
        }
        producer = &link;
    }

    void convert(ox::FormatConverter& converter, ox::FrameFormat format) {
        append(converter, [&](auto& source) { converter.reuse(source, format); });
    }
};

void FrameConverter::run(Conversion const& conversion, ox::Frame& src, ox::Frame& dst) {
    ox::FrameFormat const format = dst.format();
    if (format == ox::FRAME_GRAY8 || isColour(format)) {
        toColour(conversion, src, dst);
    } else {
        ox::Frame const region = ox::getRegion(src, conversion.region);
        toRows(conversion, region, dst);
        completeLastPairs(dst);
    }
}

void FrameConverter::toColour(Conversion const& conversion, ox::Frame const& src, ox::Frame& dst) {
    ox::TensorRecipe recipe = recipeOf(conversion, dst.format(), dst.size());
    if (ox::Size{conversion.region.width, conversion.region.height} == dst.size()) {
        recipe.kernel = nullptr;
    }
    _to_tensor.reuse(recipe);
    ox::Frame* target = &dst;
    if (isPlanarColour(dst.format()) && !isEvenlySpaced(dst)) {
        _planes.reuse(dst.format(), dst.size(), ox::DeviceContext(), 0);
        target = &_planes;
    }
    std::int64_t const channel_stride = target->planeData(1) - target->planeData(0);
    _to_tensor.run(src, conversion.region, target->planeData(0), target->layout().plane[0].stride,
                   channel_stride);
    if (target != &dst) {
        target->copyTo(dst);
    }
}

void FrameConverter::toRows(Conversion const& conversion, ox::Frame const& src, ox::Frame& dst) {
    Chain chain{&src, nullptr};
    bool const scales = src.size() != dst.size();
    ox::FrameFormat format = src.format();
    if (format == ox::FRAME_RGB_PLANAR) {
        format = ox::FRAME_RGB24;
        chain.convert(_converters[0], format);
    }
    if (isColour(format) && format != ox::FRAME_BGR24) {
        format = ox::FRAME_BGR24;
        chain.convert(_converters[1], format);
    } else if (scales && isPacked422(format)) {
        format = ox::FRAME_NV16;
        chain.convert(_converters[1], format);
    }
    if (scales) {
        scale(chain, conversion, src.size(), dst.size());
    }
    if (format == ox::FRAME_GRAY8) {
        // `FormatConverter` gives gray the chroma 0, which is green.
        chain.convert(_converters[2], ox::FRAME_BGR24);
    }
    chain.convert(_converters[3], dst.format());
    if (!_converters[3].produceAtOnce(dst)) {
        ox::produceFrame(_converters[3], dst);
    }
}

void FrameConverter::scale(Chain& chain, Conversion const& conversion, ox::Size from, ox::Size to) {
    if (chain.producer != nullptr && from.height == 1) {
        // Bilinear scalers refuse producers of one row.
        _unpacked.reuse(chain.producer->layout().format, from, ox::DeviceContext(), 0);
        ox::produceFrame(*chain.producer, _unpacked);
        chain = {&_unpacked, nullptr};
    }
    if (conversion.kernel != nullptr) {
        chain.append(_filter, [&](auto& source) {
            _filter.reuse(*conversion.kernel, source, to, ox::OX_SCALER_FIXED_POINT_16S);
        });
    } else {
        ox::ScaleMethod const method = methodFor(conversion.method, from, to);
        chain.append(_scaler, [&](auto& source) { _scaler.reuse(source, to, method); });
    }
}

}  // namespace oxgst
