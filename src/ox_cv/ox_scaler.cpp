// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler.h"

#include "ox_core/ox_impl_place.h"
#include "ox_cv/ox_impl_state.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_nn.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler"};

}  // namespace

struct Scaler::State {
    ScalerNearestNeighbor _nearest;
    ScalerBilinearXY _bilinear_xy;
    ScalerBilinearX _bilinear_x;
    ScalerBilinearY _bilinear_y;
    ScalerAreaX _area_x;
    ScalerAreaY _area_y;
    RowCopier _copier;
    IRowProducer* _active = nullptr;  ///< armed by the last `reuse`

    void renew();
    template <class Source>
    void arm(Source& source, Size src_size, Size dst_size, ScaleMethod method);
    template <class Source>
    IRowProducer& armBilinear(Source& source, Size src_size, Size dst_size);
    template <class Source>
    IRowProducer& armArea(Source& source, Size src_size, Size dst_size);
    IRowProducer& active() const;
};

void Scaler::State::renew() {
    _nearest.renew();
    _bilinear_xy.renew();
    _bilinear_x.renew();
    _bilinear_y.renew();
    _area_x.renew();
    _area_y.renew();
    _copier.renew();
    _active = nullptr;
}

template <class Source>
IRowProducer& Scaler::State::armBilinear(Source& source, Size src_size, Size dst_size) {
    if (src_size.width == dst_size.width) {
        _bilinear_y.reuse(source, dst_size.height);
        return _bilinear_y;
    }
    if (src_size.height == dst_size.height) {
        _bilinear_x.reuse(source, dst_size.width);
        return _bilinear_x;
    }
    _bilinear_xy.reuse(source, dst_size);
    return _bilinear_xy;
}

template <class Source>
IRowProducer& Scaler::State::armArea(Source& source, Size src_size, Size dst_size) {
    constexpr ScalerPrecision precision = OX_SCALER_FIXED_POINT_16S;
    if (src_size.width == dst_size.width) {
        _area_y.reuse(source, dst_size.height, precision);
        return _area_y;
    }
    _area_x.reuse(source, dst_size.width, precision);
    if (src_size.height == dst_size.height) {
        return _area_x;
    }
    _area_y.reuse(_area_x, dst_size.height, precision);
    return _area_y;
}

template <class Source>
void Scaler::State::arm(Source& source, Size src_size, Size dst_size, ScaleMethod method) {
    if (dst_size == src_size) {
        _copier.reuse(source);
        _active = &_copier;
        return;
    }
    _copier.clear();
    switch (method) {
        case OX_SCALE_NEAREST:
            _nearest.reuse(source, dst_size);
            _active = &_nearest;
            break;
        case OX_SCALE_BILINEAR:
            _active = &armBilinear(source, src_size, dst_size);
            break;
        case OX_SCALE_AREA:
            _active = &armArea(source, src_size, dst_size);
            break;
        default:
            here.fail({StatusInvalidParameter, "reuse"},
                      "Failure in Scaler::reuse(...) : parameter 'method' is invalid %u.",
                      static_cast<unsigned>(method));
    }
}

IRowProducer& Scaler::State::active() const {
    if (_active == nullptr) {
        here.fail({StatusNotInitialized, "produce"},
                  "Scaler is not initialized. Call Scaler::reuse(...) first.");
    }
    return *_active;
}

Scaler::Scaler() : _state(impl::makeState<State>(here)) {}

Scaler::~Scaler() = default;

void Scaler::renew() {
    _state->renew();
}

void Scaler::reuse(Frame const& src_frame, Size dst_size, ScaleMethod method) {
    OX_ASSERT(src_frame.initialized());
    OX_ASSERT(!dst_size.empty());
    _state->arm(src_frame, src_frame.size(), dst_size, method);
}

void Scaler::reuse(IRowProducer& src_producer, Size dst_size, ScaleMethod method) {
    OX_ASSERT(!src_producer.layout().size.empty());
    OX_ASSERT(!dst_size.empty());
    _state->arm(src_producer, src_producer.layout().size, dst_size, method);
}

bool Scaler::initialized() const {
    return _state->_active == nullptr;
}

FrameLayout const& Scaler::layout() {
    return _state->active().layout();
}

void Scaler::produce(RowData& dst) {
    _state->active().produce(dst);
}

bool Scaler::next() {
    return _state->active().next();
}

}  // namespace ox
