// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "step_runner.h"

#include <string>

#include "library_calls.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_impl_tensor_fit.h"
#include "working_formats.h"

namespace oxcv {

namespace {

/// The option that asks for a warp; nothing if none does.
char const* warpOption(Steps const& steps) {
    char const* const warp = steps.warp ? "--warp" : nullptr;
    return steps.rotate ? "--rotate" : warp;
}

}  // namespace

StepRunner::StepRunner(Steps const& steps, Backend& backend,
                       ox::FrameFormat (*stored_as)(ox::FrameFormat))
    : _steps(steps),
      _backend(backend),
      _stored_as(stored_as),
      _before_reduction(backend),
      _before_bars(backend),
      _before_warp(backend),
      _conversion(backend),
      _output_conversion(backend) {
    char const* const option = warpOption(steps);
    if (option != nullptr && !backend.offer().warps) {
        throw UsageError(std::string(option) + ": the pipeline backend has no warps, only " +
                         backendNames().front() + " has");
    }
    backend.setMethods(steps.method, steps.warp_method);
}

ox::Frame StepRunner::run(ox::Frame& frame) {
    ox::Frame current = frame;
    ox::FrameFormat const target = targetOf(frame.format());
    if (_steps.roi) {
        attempt("--roi", [&] { current = ox::getRegion(frame, *_steps.roi); });
    }
    if (_steps.size) {
        current = resized(current, target);
    }
    if (warpOption(_steps) != nullptr) {
        current = warped(current, target);
    }
    current = _conversion.run(current, target);
    arithmetic(current);
    return _output_conversion.run(current, _stored_as(current.format()));
}

/// Where neither `--format` nor arithmetic asks for another, the stored format is the target.
ox::FrameFormat StepRunner::targetOf(ox::FrameFormat source) const {
    bool const arithmetic_comes = _steps.mul || _steps.add;
    return _steps.format.value_or(arithmetic_comes ? source : _stored_as(source));
}

ox::Frame StepRunner::resized(ox::Frame const& frame, ox::FrameFormat target) {
    ox::Size const size = resolveSize(*_steps.size, frame.size());
    return _steps.fit == ox::TENSOR_FIT_STRETCH ? scaled(frame, size) : fitted(frame, size, target);
}

ox::Frame StepRunner::fitted(ox::Frame const& frame, ox::Size size, ox::FrameFormat target) {
    ox::TensorRecipe recipe;
    recipe.width = size.width;
    recipe.height = size.height;
    recipe.fit = _steps.fit;
    auto const [source, inner] =
        ox::impl::fitPicture(recipe, frame.format(), {0, 0, frame.width(), frame.height()});
    if (_steps.fit == ox::TENSOR_FIT_CROP) {
        ox::Frame middle = frame;
        ox::Rect const rect = source;
        return scaled(attempt("--fit", [&] { return ox::getRegion(middle, rect); }), size);
    }
    ox::Frame const picture = scaled(frame, {inner.width, inner.height});
    ox::FrameFormat const format = formatToWarpIn(frame.format(), target);
    ox::Frame const converted = _before_bars.run(picture, format);
    ox::Rect const place = inner;
    return attempt("--fit",
                   [&] { return _letterbox.surround(converted, size, place, _steps.bars); });
}

ox::Frame StepRunner::scaled(ox::Frame const& frame, ox::Size size) {
    if (size == frame.size()) {
        return frame;
    }
    if (_steps.kernel) {
        reduce(frame, size);
    } else {
        scale(frame, size);
    }
    return _resized;
}

void StepRunner::scale(ox::Frame const& frame, ox::Size size) {
    if (_scaler == nullptr) {
        chooseScaler(frame, size);
    }
    attempt("--size", [&] {
        prepare(_resized, frame.format(), size);
        if (formatToScaleIn(frame.format()) != frame.format()) {
            _packed_scaler.resize(*_scaler, frame, _resized);
        } else {
            _scaler->resize(frame, _resized, ox::emptyRoi(), ox::emptyRoi());
        }
    });
}

/// The library itself converts packed formats to and from the format that they are scaled in, by
/// the pipeline.
void StepRunner::chooseScaler(ox::Frame const& frame, ox::Size size) {
    ox::FrameFormat const format = frame.format();
    ox::FrameFormat const within = formatToScaleIn(format);
    if (within != format) {
        _backend.forConversion(conversionName(format, within), format, within, frame.size());
    }
    _scaler = &_backend.forScaling("--size", within, _steps.method);
    if (within != format) {
        _backend.forConversion(conversionName(within, format), within, format, size);
    }
}

void StepRunner::reduce(ox::Frame const& frame, ox::Size size) {
    ox::Frame const source = _before_reduction.run(frame, formatToFilterIn(frame.format()));
    _backend.leaveToPipeline("--kernel", "the vector backend has no filters");
    attempt("--kernel", [&] { prepare(_resized, source.format(), size); });
    _reduction.run("--kernel", source, _resized, *_steps.kernel, _steps.precision);
}

ox::Frame StepRunner::warped(ox::Frame const& frame, ox::FrameFormat target) {
    std::string const option = warpOption(_steps);
    ox::Frame const source = _before_warp.run(frame, formatToWarpIn(frame.format(), target));
    if (_warper == nullptr) {
        _warper = &_backend.forWarp(option, source.layout());
    }
    Matrix const m = _steps.rotate ? rotation(*_steps.rotate, source.size()) : *_steps.warp;
    float const rows[2][3] = {{m[0], m[1], m[2]}, {m[3], m[4], m[5]}};
    attempt(option, [&] {
        prepare(_warped, source.format(), source.size());
        _warper->warpAffine(source, _warped, rows, ox::emptyRoi(), _steps.invert);
    });
    return _warped;
}

void StepRunner::arithmetic(ox::Frame& frame) {
    ox::ICvBackend& operations = _backend.forArithmetic();
    if (_steps.mul) {
        attempt("--mul", [&] { multiply(operations, frame, *_steps.mul); });
    }
    if (_steps.add) {
        attempt("--add", [&] { add(operations, frame, *_steps.add); });
    }
}

}  // namespace oxcv
