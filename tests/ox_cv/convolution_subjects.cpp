// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/convolution_subjects.h"

#include <ostream>

#include "ox_cv/ox_impl_scale_conv_x.h"
#include "ox_cv/ox_impl_scale_conv_y.h"
#include "ox_cv/ox_scaler_convolutional.h"

namespace ox::test {

namespace {

template <class Source>
void armWith(ScalerConvolutional& scaler, IKernel& kernel, Source& source,
             ConvolutionTarget target) {
    scaler.reuse(kernel, source, target.size, static_cast<ScalerPrecision>(target.precision));
}

template <class Weight, class Source>
void armWith(impl::ScaleX<Weight>& pass, IKernel& kernel, Source& source,
             ConvolutionTarget target) {
    pass.reuse(kernel, source, target.size.width);
}

template <class Weight>
void armWith(impl::ScaleY<Weight>& pass, IKernel& kernel, IRowProducer& source,
             ConvolutionTarget target) {
    pass.reuse(kernel, source, target.size.height);
}

// Columns are only taken from producers.
template <class Weight>
void armWith(impl::ScaleY<Weight>&, IKernel&, Frame const&, ConvolutionTarget) {}

void armWith(model::Convolution& scaler, model::Filter& filter, model::Source source,
             ConvolutionTarget target) {
    scaler.arm(filter, source, target.size.width, target.size.height, target.precision);
}

void armWith(model::ConvolutionX& pass, model::Filter& filter, model::Source source,
             ConvolutionTarget target) {
    pass.arm(filter, source, target.size.width);
}

void armWith(model::ConvolutionY& pass, model::Filter& filter, model::Source source,
             ConvolutionTarget target) {
    pass.arm(filter, source, target.size.height);
}

// The horizontal pass doesn't tell whether it is armed.
template <class Library>
concept TellsArmed = requires(Library const& library) {
    library.initialized();
};

template <class Library, class Modelled, int... Precision>
class SubjectOf : public ConvolutionSubject {
  public:
    void armLibrary(IKernel& kernel, Frame const& source, ConvolutionTarget target) override {
        armWith(_library, kernel, source, target);
    }
    void armLibrary(IKernel& kernel, IRowProducer& source, ConvolutionTarget target) override {
        armWith(_library, kernel, source, target);
    }
    void armModel(model::Filter& filter, model::Source source, ConvolutionTarget target) override {
        armWith(_modelled, filter, source, target);
    }
    IRowProducer& library() override { return _library; }
    model::Stream& modelled() override { return _modelled; }
    bool hasNext(int row) const override { return _modelled.hasNext(row); }
    bool armed() const override { return _modelled.armed(); }
    bool armedAlike() const override {
        if constexpr (TellsArmed<Library>) {
            return _library.initialized() == armed();
        }
        return true;
    }

    static std::unique_ptr<ConvolutionSubject> make() { return std::make_unique<SubjectOf>(); }

  private:
    Library _library;
    Modelled _modelled{Precision...};
};

}  // namespace

void PrintTo(ConvolutionClass const& convolution, std::ostream* out) {
    *out << convolution.name;
}

std::vector<ConvolutionClass> const& convolutionClasses() {
    static std::vector<ConvolutionClass> const classes{
        {"ScalerConvolutional", true, true, true,
         SubjectOf<ScalerConvolutional, model::Convolution>::make},
        {"ScaleX8", true, false, true,
         SubjectOf<impl::ScaleX<signed char>, model::ConvolutionX, 8>::make},
        {"ScaleX16", true, false, true,
         SubjectOf<impl::ScaleX<short>, model::ConvolutionX, 16>::make},
        {"ScaleY8", false, true, false,
         SubjectOf<impl::ScaleY<signed char>, model::ConvolutionY, 8>::make},
        {"ScaleY16", false, true, false,
         SubjectOf<impl::ScaleY<short>, model::ConvolutionY, 16>::make},
    };
    return classes;
}

}  // namespace ox::test
