// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The conversion matrix: one converter over several pictures, refused pairs among them.
#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "model/convert.h"
#include "ox_cv/ox_format_converter.h"

namespace ox::fuzz {

namespace {

class Pair {
  public:
    void run(Input& input) {
        model::Image const src = drawImage(input, drawGeometry(input));
        int const to = drawFormat(input);
        bool const at_once = input.oneIn(3);
        Picture const source(src, drawPlaces(input));
        model::Image expected = model::makeImage(to, src.width, src.height, untouched);
        Picture target(expected, drawPlaces(input));

        model::Outcome const wanted = model::drain([&] { _model.arm(src, to); }, _model, expected);
        model::Outcome const got = outcomeOf([&] {
            _library.reuse(source.frame(), formatOf(to));
            if (!at_once || !_library.produceAtOnce(target.frame())) {
                produceFrame(_library, target.frame());
            }
        });
        expectAlike(got, wanted, "conversion");
        target.expect(expected, "converted");
        source.expect(src, "the source of a conversion");
    }

  private:
    FormatConverter _library;
    model::Converter _model;
};

}  // namespace

void conversions(Input& input) {
    for (int object = input.between(0, 1); object >= 0; --object) {
        Pair pair;
        for (int i = input.between(1, 4); i > 0; --i) {
            pair.run(input);
        }
    }
}

}  // namespace ox::fuzz
