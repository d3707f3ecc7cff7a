// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_scaler_convolutional.h"

#include "ox_cv/ox_impl_scale_conv_x.h"
#include "ox_cv/ox_impl_scale_conv_y.h"
#include "ox_cv/ox_impl_state.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_scaler_convolutional"};

[[noreturn]] void refuse(impl::Failure const& failure, char const* text) {
    here.fail(failure, "%s", text);
}

void checkSize(Size dst_size) {
    if (dst_size.empty()) {
        refuse({StatusInputNotInitialized, "reuse"},
               "Failure in ScalerConvolutional::reuse(...) : parameter 'dst_size' is empty.");
    }
}

template <class Weight>
struct Passes {
    impl::ScaleX<Weight> x;
    impl::ScaleY<Weight> y;

    void renew() {
        x.renew();
        y.renew();
    }
    template <class Source>
    void arm(IKernel& kernel, Source& source, Size dst_size) {
        x.reuse(kernel, source, dst_size.width);
        y.reuse(kernel, x, dst_size.height);
    }
};

}  // namespace

struct ScalerConvolutional::State {
    Passes<signed char> passes8;
    Passes<short> passes16;
    std::uint32_t precision = 0;  ///< a `ScalerPrecision`, or none

    void renew() {
        passes8.renew();
        passes16.renew();
        precision = 0;
    }
    /// Arms both passes. The precision is stored first, even if it is neither 8 nor 16.
    template <class Source>
    void arm(IKernel& kernel, Source& source, Size dst_size, ScalerPrecision wanted) {
        precision = wanted;
        impl::passOnFailure("reuse", here, [&] {
            switch (precision) {
                case OX_SCALER_FIXED_POINT_8S:
                    return passes8.arm(kernel, source, dst_size);
                case OX_SCALER_FIXED_POINT_16S:
                    return passes16.arm(kernel, source, dst_size);
                default:
                    refuse({StatusInvalidParameter, "reuse"},
                           "Parameter 'precision' is incorrect.");
            }
        });
    }

    /// The pass that yields the rows.
    IRowProducer& rows(char const* function, char const* text) {
        switch (precision) {
            case OX_SCALER_FIXED_POINT_8S:
                return passes8.y;
            case OX_SCALER_FIXED_POINT_16S:
                return passes16.y;
            default:
                refuse({StatusNotInitialized, function}, text);
        }
    }
};

ScalerConvolutional::ScalerConvolutional() : _state(impl::makeState<State>(here)) {}

ScalerConvolutional::~ScalerConvolutional() = default;

bool ScalerConvolutional::initialized() const {
    switch (_state->precision) {
        case OX_SCALER_FIXED_POINT_8S:
            return _state->passes8.y.initialized();
        case OX_SCALER_FIXED_POINT_16S:
            return _state->passes16.y.initialized();
        default:
            return false;
    }
}

void ScalerConvolutional::renew() {
    _state->renew();
}

void ScalerConvolutional::reuse(IKernel& kernel, Frame const& src_frame, Size dst_size,
                                ScalerPrecision precision) {
    if (src_frame.layout().planeCount == 0) {
        refuse(StatusInputNotInitialized,
               "Failure in ScalerConvolutional::reuse(...) : frame is not initialized.");
    }
    checkSize(dst_size);
    _state->arm(kernel, src_frame, dst_size, precision);
}

void ScalerConvolutional::reuse(IKernel& kernel, IRowProducer& src_producer, Size dst_size,
                                ScalerPrecision precision) {
    checkSize(dst_size);
    if (src_producer.layout().planeCount == 0) {
        refuse(StatusInputNotInitialized,
               "Failure in ScalerConvolutional::reuse(...) : layout is not initialized.");
    }
    _state->arm(kernel, src_producer, dst_size, precision);
}

FrameLayout const& ScalerConvolutional::layout() {
    return _state->rows("layout", "instance not initialized").layout();
}

void ScalerConvolutional::produce(RowData& dst) {
    impl::passOnFailure("produce", here, [&] {
        _state
            ->rows("produce",
                   "Failure in ScalerConvolutional::produce(...) : instance not initialized")
            .produce(dst);
    });
}

bool ScalerConvolutional::next() {
    bool more = false;
    impl::passOnFailure("next", here, [&] {
        more = _state
                   ->rows("next",
                          "Failure in ScalerConvolutional::next(...) : instance not initialized")
                   .next();
    });
    return more;
}

}  // namespace ox
