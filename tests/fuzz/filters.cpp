// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Scaling by filters, of an input's own among them, by both passes and by the class that has both.
#include <array>
#include <memory>
#include <vector>

#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "model/convolution.h"
#include "ox_cv/convolution_subjects.h"
#include "ox_cv/ox_row_copier.h"

namespace ox::fuzz {

namespace {

// A function of steps, whose aperture is a factor times the scale, and a constant.
struct Steps {
    std::array<float, 8> values{};
    float per_scale = 1;
    float constant = 0;

    float value(float x, float scale) const {
        float const place = (x / scale + 2.0F) * 2.0F;
        bool const inside = place >= 0.0F && place < static_cast<float>(values.size());
        return inside ? values[static_cast<std::size_t>(place)] : 0.0F;
    }
    float aperture(float scale) const { return per_scale * scale + constant; }
};

template <class Interface>
class StepFilter : public Interface {
  public:
    explicit StepFilter(Steps const& steps) : _steps(steps) {}
    void setScale(float scale) override { _scale = scale; }
    float value(float x) override { return _steps.value(x, _scale); }
    float aperture() override { return _steps.aperture(_scale); }

  private:
    Steps const& _steps;
    float _scale = 1;
};

Steps drawSteps(Input& input) {
    Steps steps;
    bool const wild = input.byte() % 4 == 0;
    for (float& value : steps.values) {
        value = wild ? input.number<float>() : input.real(-2.0F, 4.0F);
    }
    steps.per_scale = input.pick(std::array{1.0F, 2.0F, 3.0F, 4.0F, 0.5F, 1.75F});
    std::uint8_t const kind = input.byte();
    steps.constant = kind % 8 == 0    ? input.real(-70.0F, 70.0F)
                     : kind % 32 == 1 ? input.number<float>()
                                      : 0.0F;
    return steps;
}

// The same filter on both sides: one that has a name, or one of the input's.
class Filter {
  public:
    explicit Filter(Input& input)
        : _steps(drawSteps(input)), _named(input.pick(list(input))), _is_named(input.oneIn(2)) {}

    IKernel& library() { return _is_named ? _named.library() : _library; }
    model::Filter& model() { return _is_named ? _named.model() : _model; }

  private:
    static std::vector<test::FilterShape> const& list(Input& input) {
        switch (input.between(0, 3)) {
            case 0:
                return test::wildFilters();
            case 1:
                return test::refusedFilters();
            default:
                return test::usualFilters();
        }
    }

    Steps _steps;
    StepFilter<IKernel> _library{_steps};
    StepFilter<model::Filter> _model{_steps};
    test::FilterPair _named;
    bool _is_named;
};

test::ConvolutionTarget drawTarget(Input& input, Size src, test::ConvolutionClass const& of) {
    auto const side = [&](int from) {
        std::uint8_t const kind = input.byte();
        return kind % 16 == 0  ? input.between(0, from + 2)
               : kind % 16 < 4 ? (from + 1) / 2
                               : input.between((from + 7) / 8, from);
    };
    test::ConvolutionTarget target{src, input.byte() % 2 == 0 ? 16 : 8};
    if (of.changes_width) {
        target.size.width = side(src.width);
    }
    if (of.changes_height) {
        target.size.height = side(src.height);
    }
    if (input.oneIn(32)) {
        target.precision = input.byte();
    }
    return target;
}

void drain(Input& input, test::ConvolutionSubject& subject) {
    model::Geometry const out = subject.modelled().geometry();
    model::Image expected = model::makeImage(out.format, out.width, out.height, untouched);
    Picture target(expected, drawPlaces(input));
    model::Outcome const wanted = model::drain([] {}, subject.modelled(), expected);
    model::Outcome const got = outcomeOf([&] { produceFrame(subject.library(), target.frame()); });
    expectAlike(got, wanted, "filtering");
    target.expect(expected, "filtered");
}

void run(Input& input, test::ConvolutionClass const& of, test::ConvolutionSubject& subject,
         Filter& filter) {
    model::Image const src = drawImage(input, drawGeometry(input));
    Picture const source(src, drawPlaces(input));
    test::ConvolutionTarget const target = drawTarget(input, {src.width, src.height}, of);
    bool const streamed = !of.takes_frames || input.oneIn(2);
    RowCopier copier;
    model::Copy copy;
    model::Outcome const wanted = model::attempt([&] {
        copy.arm(src);
        subject.armModel(filter.model(), streamed ? model::Source(copy) : model::Source(src),
                         target);
    });
    model::Outcome const got = outcomeOf([&] {
        copier.reuse(source.frame());
        if (streamed) {
            subject.armLibrary(filter.library(), copier, target);
        } else {
            subject.armLibrary(filter.library(), source.frame(), target);
        }
    });
    expectAlike(got, wanted, "arming a filter");
    if (!subject.armedAlike()) {
        fail("one side is armed");
    }
    if (got.ok) {
        drain(input, subject);
    }
    source.expect(src, "the source of a filter");
}

}  // namespace

void filters(Input& input) {
    Filter first(input);
    Filter second(input);
    test::ConvolutionClass const& of = input.pick(test::convolutionClasses());
    std::unique_ptr<test::ConvolutionSubject> const subject = of.make();
    for (int i = input.between(1, 3); i > 0; --i) {
        run(input, of, *subject, input.oneIn(3) ? second : first);
    }
}

}  // namespace ox::fuzz
