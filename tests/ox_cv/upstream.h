// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Sources of a step under test, on the library's side and on the model's.
#pragma once

#include "model/convert.h"
#include "model/scale.h"
#include "ox_cv/model_bridge.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_scaler.h"

namespace ox::test {

enum class SourceKind { Frame, Copier, Converter, Scaler };
std::string describe(SourceKind kind);

// Random rows of a geometry: a frame, or a producer over one. Serves one stream, since a producer
// stays where its reader left it.
class Upstream {
  public:
    // Where no converter yields the format, one runs that has nothing to convert.
    Upstream(model::Geometry geometry, SourceKind kind, Random& random);

    SourceKind kind() const { return _kind; }
    Frame const& frame() const { return _root_frame.frame(); }

    // Arm the producer. Both may refuse, and then alike.
    IRowProducer& armLibrary();
    model::Source armModel();

  private:
    SourceKind _kind;
    model::Geometry _geometry;
    int _method;  // of the scaler
    model::Image _root;
    BridgedFrame _root_frame;

    RowCopier _copier;
    FormatConverter _converter;
    Scaler _scaler;
    model::Copy _model_copier;
    model::Converter _model_converter;
    model::Facade _model_scaler;
};

}  // namespace ox::test
