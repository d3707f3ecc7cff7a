// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/scaler_subjects.h"

#include <ostream>

#include "model/scale.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_nn.h"

namespace ox::test {

namespace {

int precisionOf(int variant) {
    return variant % 2 == 0 ? 16 : 8;
}

ScalerPrecision libraryPrecision(int variant) {
    return static_cast<ScalerPrecision>(precisionOf(variant));
}

void armWith(model::Scaling& scaler, model::Source source, Size size, int) {
    scaler.arm(source, size.width, size.height);
}

template <class Area>
void armArea(Area& scaler, model::Source source, Size size, int variant) {
    scaler.precision = precisionOf(variant);
    scaler.arm(source, size.width, size.height);
}

void armWith(model::AreaX& scaler, model::Source source, Size size, int variant) {
    armArea(scaler, source, size, variant);
}

void armWith(model::AreaY& scaler, model::Source source, Size size, int variant) {
    armArea(scaler, source, size, variant);
}

void armWith(model::Facade& scaler, model::Source source, Size size, int variant) {
    scaler.arm(source, size.width, size.height, variant);
}

template <class Source>
void armWith(ScalerNearestNeighbor& scaler, Source& source, Size size, int) {
    scaler.reuse(source, size);
}

template <class Source>
void armWith(ScalerBilinearX& scaler, Source& source, Size size, int) {
    scaler.reuse(source, size.width);
}

template <class Source>
void armWith(ScalerBilinearY& scaler, Source& source, Size size, int) {
    scaler.reuse(source, size.height);
}

template <class Source>
void armWith(ScalerBilinearXY& scaler, Source& source, Size size, int) {
    scaler.reuse(source, size);
}

template <class Source>
void armWith(ScalerAreaX& scaler, Source& source, Size size, int variant) {
    scaler.reuse(source, size.width, libraryPrecision(variant));
}

template <class Source>
void armWith(ScalerAreaY& scaler, Source& source, Size size, int variant) {
    scaler.reuse(source, size.height, libraryPrecision(variant));
}

void armWith(scaleAreaXY& scaler, Frame const& source, Size size, int variant) {
    scaler.reuse(source, size, libraryPrecision(variant));
}

void armWith(scaleAreaXY&, IRowProducer&, Size, int) {}

template <class Source>
void armWith(Scaler& scaler, Source& source, Size size, int variant) {
    scaler.reuse(source, size, static_cast<ScaleMethod>(variant));
}

template <class Library, class Model>
class SubjectOf : public Subject {
  public:
    static std::unique_ptr<Subject> make() { return std::make_unique<SubjectOf>(); }

    void armLibrary(Frame const& frame, Size dst_size, int variant) override {
        armWith(_library, frame, dst_size, variant);
    }
    void armLibrary(IRowProducer& producer, Size dst_size, int variant) override {
        armWith(_library, producer, dst_size, variant);
    }
    void armModel(model::Source source, Size dst_size, int variant) override {
        armWith(_model, source, dst_size, variant);
    }
    IRowProducer& library() override { return _library; }
    model::Stream& modelled() override { return _model; }

  private:
    Library _library;
    Model _model;
};

}  // namespace

void PrintTo(ScalerClass const& scaler, std::ostream* out) {
    *out << scaler.name;
}

std::vector<ScalerClass> const& scalerClasses() {
    static std::vector<ScalerClass> const classes{
        {"Nearest", true, true, true, false,
         SubjectOf<ScalerNearestNeighbor, model::Nearest>::make},
        {"BilinearX", true, false, true, false, SubjectOf<ScalerBilinearX, model::BilinearX>::make},
        {"BilinearY", false, true, true, false, SubjectOf<ScalerBilinearY, model::BilinearY>::make},
        {"BilinearXY", true, true, true, false,
         SubjectOf<ScalerBilinearXY, model::BilinearXY>::make},
        {"AreaX", true, false, true, false, SubjectOf<ScalerAreaX, model::AreaX>::make},
        {"AreaY", false, true, true, false, SubjectOf<ScalerAreaY, model::AreaY>::make},
        {"AreaXY", true, true, false, false, SubjectOf<scaleAreaXY, model::AreaXY>::make},
        {"Scaler", true, true, true, true, SubjectOf<Scaler, model::Facade>::make},
    };
    return classes;
}

}  // namespace ox::test
