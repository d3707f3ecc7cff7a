// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/upstream.h"

namespace ox::test {

namespace {

// A format that a converter makes into the one that is wanted, and that one if there is none.
int convertible(int wanted, Random& random) {
    if (wanted >= model::I420 && wanted <= model::Yuv444Planar) {
        int const roots[] = {model::Gray8, model::Bgr24, model::Nv12, model::I420, model::Yuyv};
        return roots[random.between(0, 4)];
    }
    if (wanted == model::Bgr24) {
        return model::Nv12;
    }
    return wanted == model::Gray8 ? model::Bgr24 : wanted;
}

model::Image drawRoot(model::Geometry geometry, SourceKind kind, Random& random) {
    if (kind == SourceKind::Scaler) {
        geometry.width = random.between(1, geometry.width + 4);
        geometry.height = random.between(1, geometry.height + 4);
    } else if (kind == SourceKind::Converter) {
        geometry.format = convertible(geometry.format, random);
    }
    return drawImage(random, geometry);
}

}  // namespace

std::string describe(SourceKind kind) {
    char const* const names[] = {"frame", "copier", "converter", "scaler"};
    return names[static_cast<int>(kind)];
}

Upstream::Upstream(model::Geometry geometry, SourceKind kind, Random& random)
    : _kind(kind),
      _geometry(geometry),
      _method(random.between(0, 2)),
      _root(drawRoot(geometry, kind, random)),
      _root_frame(_root, drawPlacement(random)) {}

IRowProducer& Upstream::armLibrary() {
    switch (_kind) {
        case SourceKind::Converter:
            _converter.reuse(frame(), formatOf(_geometry));
            return _converter;
        case SourceKind::Scaler:
            _scaler.reuse(frame(), sizeOf(_geometry), static_cast<ScaleMethod>(_method));
            return _scaler;
        default:
            _copier.reuse(frame());
            return _copier;
    }
}

model::Source Upstream::armModel() {
    switch (_kind) {
        case SourceKind::Frame:
            return _root;
        case SourceKind::Converter:
            _model_converter.arm(_root, _geometry.format);
            return _model_converter;
        case SourceKind::Scaler:
            _model_scaler.arm(_root, _geometry.width, _geometry.height, _method);
            return _model_scaler;
        default:
            _model_copier.arm(_root);
            return _model_copier;
    }
}

}  // namespace ox::test
