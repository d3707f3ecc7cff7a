// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "fuzz/links.h"

#include "model/convert.h"
#include "model/convolution.h"
#include "model/scale.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_row_copier.h"
#include "ox_cv/ox_row_window.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"

namespace ox::fuzz {

namespace {

// A window as a link of a caller's own would use it: each row is taken from its top, or from
// further down where it stands at the bottom.
class WindowReader : public IRowProducer {
  public:
    template <class Source>
    void reuse(Source& source, int rows) {
        _window.reuse(source, rows);
        _row = 0;
    }
    void renew() { _window.renew(); }
    FrameLayout const& layout() override { return _window.layout(); }
    void produce(RowData& out) override {
        _window.moveTo(_row);
        copyRowData(_window.layout(), *_window.rowData(_row - _window.firstRow()), out);
    }
    bool next() override { return ++_row < _window.layout().size.height; }

  private:
    RowWindow _window;
    int _row = 0;
};

class WindowModel : public model::Stream {
  public:
    void arm(model::Source source, int rows) {
        _band.arm(source, rows);
        _geometry = source.geometry();
    }
    model::Geometry geometry() const override { return _geometry; }
    void read(int row, model::Row const& out) override {
        _band.advanceTo(row);
        model::copyRow(_band.at(row - _band.first()), out);
    }

  private:
    model::Band _band;
    model::Geometry _geometry;
};

int precisionOf(LinkTarget const& target) {
    return target.variant % 2 == 0 ? 16 : 8;
}

ScalerPrecision libraryPrecision(LinkTarget const& target) {
    return static_cast<ScalerPrecision>(precisionOf(target));
}

// The model's side.

void arm(model::Copy& link, model::Source source, LinkTarget const&) {
    link.arm(source);
}

void arm(WindowModel& link, model::Source source, LinkTarget const& target) {
    link.arm(source, target.variant);
}

void arm(model::Converter& link, model::Source source, LinkTarget const& target) {
    link.arm(source, target.format);
}

void arm(model::Scaling& link, model::Source source, LinkTarget const& target) {
    link.arm(source, target.size.width, target.size.height);
}

template <class Area>
void armArea(Area& link, model::Source source, LinkTarget const& target) {
    link.precision = precisionOf(target);
    link.arm(source, target.size.width, target.size.height);
}

void arm(model::AreaX& link, model::Source source, LinkTarget const& target) {
    armArea(link, source, target);
}

void arm(model::AreaY& link, model::Source source, LinkTarget const& target) {
    armArea(link, source, target);
}

void arm(model::Facade& link, model::Source source, LinkTarget const& target) {
    link.arm(source, target.size.width, target.size.height, target.variant);
}

void arm(model::Convolution& link, model::Source source, LinkTarget const& target) {
    link.arm(target.filter->model(), source, target.size.width, target.size.height,
             precisionOf(target));
}

// The library's.

template <class Source>
void arm(RowCopier& link, Source& source, LinkTarget const&) {
    link.reuse(source);
}

template <class Source>
void arm(WindowReader& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.variant);
}

template <class Source>
void arm(FormatConverter& link, Source& source, LinkTarget const& target) {
    link.reuse(source, static_cast<FrameFormat>(target.format));
}

template <class Source>
void arm(ScalerNearestNeighbor& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size);
}

template <class Source>
void arm(ScalerBilinearX& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size.width);
}

template <class Source>
void arm(ScalerBilinearY& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size.height);
}

template <class Source>
void arm(ScalerBilinearXY& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size);
}

template <class Source>
void arm(ScalerAreaX& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size.width, libraryPrecision(target));
}

template <class Source>
void arm(ScalerAreaY& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size.height, libraryPrecision(target));
}

void arm(scaleAreaXY& link, Frame const& source, LinkTarget const& target) {
    link.reuse(source, target.size, libraryPrecision(target));
}

void arm(scaleAreaXY&, IRowProducer&, LinkTarget const&) {}

template <class Source>
void arm(Scaler& link, Source& source, LinkTarget const& target) {
    link.reuse(source, target.size, static_cast<ScaleMethod>(target.variant));
}

template <class Source>
void arm(ScalerConvolutional& link, Source& source, LinkTarget const& target) {
    link.reuse(target.filter->library(), source, target.size, libraryPrecision(target));
}

template <class Library, class Model>
class LinkOf : public Link {
  public:
    static std::unique_ptr<Link> make() { return std::make_unique<LinkOf>(); }

    void armLibrary(Frame const& source, LinkTarget const& target) override {
        arm(_library, source, target);
    }
    void armLibrary(IRowProducer& source, LinkTarget const& target) override {
        arm(_library, source, target);
    }
    void armModel(model::Source source, LinkTarget const& target) override {
        arm(*_model, source, target);
    }
    IRowProducer& library() override { return _library; }
    model::Stream& modelled() override { return *_model; }
    void renew() override {
        _library.renew();
        _model = std::make_unique<Model>();
    }

  private:
    Library _library;
    std::unique_ptr<Model> _model = std::make_unique<Model>();
};

constexpr LinkKind kinds[]{
    {"RowCopier", true, LinkOf<RowCopier, model::Copy>::make},
    {"RowWindow", true, LinkOf<WindowReader, WindowModel>::make},
    {"FormatConverter", true, LinkOf<FormatConverter, model::Converter>::make},
    {"ScalerNearestNeighbor", true, LinkOf<ScalerNearestNeighbor, model::Nearest>::make},
    {"ScalerBilinearX", true, LinkOf<ScalerBilinearX, model::BilinearX>::make},
    {"ScalerBilinearY", true, LinkOf<ScalerBilinearY, model::BilinearY>::make},
    {"ScalerBilinearXY", true, LinkOf<ScalerBilinearXY, model::BilinearXY>::make},
    {"ScalerAreaX", true, LinkOf<ScalerAreaX, model::AreaX>::make},
    {"ScalerAreaY", true, LinkOf<ScalerAreaY, model::AreaY>::make},
    {"scaleAreaXY", false, LinkOf<scaleAreaXY, model::AreaXY>::make},
    {"Scaler", true, LinkOf<Scaler, model::Facade>::make},
    {"ScalerConvolutional", true, LinkOf<ScalerConvolutional, model::Convolution>::make},
};

}  // namespace

std::span<LinkKind const> linkKinds() {
    return kinds;
}

}  // namespace ox::fuzz
