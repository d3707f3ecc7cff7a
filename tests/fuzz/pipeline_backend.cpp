// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// One pipeline backend over several calls, with regions, against the model.
#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "model/backend.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"

namespace ox::fuzz {

namespace {

model::Region regionOf(Rect region) {
    return {region.x, region.y, region.width, region.height};
}

class PipelineCalls {
  public:
    explicit PipelineCalls(Input& input) : _input(input) {}

    void run() {
        model::Geometry from = drawGeometry(_input);
        int const method = _input.between(0, 2);
        int const operation = _input.between(0, 2);
        Rect const region = drawRegion(_input, {from.width, from.height});
        model::Geometry to = drawGeometry(_input);
        if (_input.byte() % 4 != 0) {
            (region.empty() ? to = {to.format, from.width, from.height}
                            : to = {to.format, region.width, region.height});
        }
        if (operation == 1 && _input.byte() % 16 != 0) {
            to.format = from.format;
        }
        // The direct route takes one stride for both planes, and this scaling leaves bytes
        // undefined before they are converted: of neither has the model anything to say.
        bool const direct = from.format == model::Nv12 && to.format == model::Bgr24;
        if (direct) {
            from.width += from.width % 2;
            to.width += to.width % 2;
        }
        if (operation == 2 && from.format == model::Uyvy && method == 2) {
            return;
        }
        model::Image const src = drawImage(_input, from);
        model::Image expected = model::makeImage(to.format, to.width, to.height, untouched);
        Picture const source(src, direct ? Places{} : drawPlaces(_input));
        Picture target(expected, drawPlaces(_input));
        Rect const part = operation == 1 ? drawRegion(_input, {to.width, to.height}) : Rect{};
        _library.setIntProperty(PropertyResizeMethod, method);
        _model.method = method;
        model::Outcome wanted;
        model::Outcome const got = outcomeOf([&] {
            switch (operation) {
                case 0:
                    wanted = _model.colorCvt(src, expected, regionOf(region));
                    return _library.colorCvt(source.frame(), target.frame(), region);
                case 1:
                    wanted = _model.resize(src, expected, regionOf(region), regionOf(part));
                    return _library.resize(source.frame(), target.frame(), region, part);
                default:
                    wanted = _model.convert(src, expected, regionOf(region));
                    return _library.convert(source.frame(), target.frame(), region);
            }
        });
        expectAlike(got, wanted, "pipeline backend");
        target.expect(expected, "the pipeline backend's picture");
        source.expect(src, "the pipeline backend's source");
    }

  private:
    Input& _input;
    CvBackendBase _library;
    model::Backend _model;
};

}  // namespace

void pipeline_backend(Input& input) {
    PipelineCalls calls(input);
    for (int i = input.between(1, 3); i > 0; --i) {
        calls.run();
    }
}

}  // namespace ox::fuzz
