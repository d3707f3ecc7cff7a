// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "picture_maker.h"

#include "filter.h"
#include "library_calls.h"
#include "ox_cv/ox_cv_helpers.h"

namespace oxcv {

PictureMaker::PictureMaker(TensorOptions const& options)
    : _options(options),
      _kernel(options.kernel.empty() ? nullptr : makeKernel(options.kernel)),
      _recipe(options.recipe) {
    if (_recipe.width == 0) {
        throw UsageError("tensor needs --size or --recipe");
    }
    _recipe.kernel = _kernel.get();
    useRange(options.range.value_or(_recipe.range));
    _layout = attempt("--size", [&] { return _to_tensor.layout(1); });
    attempt("--size", [&] { _picture.reuse(_layout, ox::DeviceContext::cpuContext()); });
}

void PictureMaker::useRange(ox::TensorRange range) {
    if (!_to_tensor.initialized() || _recipe.range != range) {
        _recipe.range = range;
        attempt("the recipe", [&] { _to_tensor.reuse(_recipe); });
    }
}

void PictureMaker::open(std::string const& path) {
    InputRequest const request = requestFor(_options, path);
    _name = nameOf(request);
    _reader = openInput(request).reader;
    StreamInfo const& info = _reader->info();
    checkPixels(_name, info.size, _options.max_pixels);
    useRange(_options.range.value_or(info.range.value_or(_options.recipe.range)));
}

bool PictureMaker::next() {
    return attempt(_name, [&] {
        if (!_reader->read(_frame)) {
            return false;
        }
        if (!_options.roi.empty()) {
            attempt(_name + ": --roi",
                    [&] { static_cast<void>(ox::getRegion(_frame, _options.roi)); });
        }
        std::string const step = _kernel == nullptr ? _name : _name + ": --kernel";
        _mapping = attempt(step, [&] { return _to_tensor.run(_frame, _options.roi, _picture, 0); });
        return true;
    });
}

InputRequest requestFor(TensorOptions const& options, std::string const& path) {
    InputRequest request = options.input;
    request.path = path;
    return request;
}

}  // namespace oxcv
