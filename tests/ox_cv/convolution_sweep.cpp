// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/convolution_sweep.h"

#include <algorithm>

#include "ox_cv/ox_row_writer.h"

namespace ox::test {

namespace {

constexpr std::uint8_t untouched = 0x3C;

std::string tell(FilterPair const& filter, ConvolutionCase const& c) {
    return describe(c.src) + " to " + std::to_string(c.target.size.width) + "x" +
           std::to_string(c.target.size.height) + " by " + filter.shape.name + " in " +
           std::to_string(c.target.precision) + " bits, from a " + describe(c.kind);
}

}  // namespace

void ConvolutionSweep::run(FilterPair& filter, ConvolutionCase const& c) {
    SCOPED_TRACE(tell(filter, c));
    if (!_subject || oneIn(_random, 8)) {
        _subject = GetParam().make();
    }
    Upstream upstream(c.src, c.kind, _random);
    model::Outcome const wanted =
        model::attempt([&] { _subject->armModel(filter.model(), upstream.armModel(), c.target); });
    model::Outcome const got = outcomeOf([&] {
        if (c.kind == SourceKind::Frame) {
            _subject->armLibrary(filter.library(), upstream.frame(), c.target);
        } else {
            _subject->armLibrary(filter.library(), upstream.armLibrary(), c.target);
        }
    });
    check(got, wanted);
    ASSERT_TRUE(filter.toldAlike());
}

void ConvolutionSweep::runAlone(ConvolutionCase const& c) {
    FilterPair filter(drawShape());
    _subject.reset();
    run(filter, c);
}

void ConvolutionSweep::runOver(model::Stream& modelled, IRowProducer& library, FilterPair& filter,
                               ConvolutionTarget target) {
    _subject = GetParam().make();
    model::Outcome const wanted =
        model::attempt([&] { _subject->armModel(filter.model(), modelled, target); });
    model::Outcome const got =
        outcomeOf([&] { _subject->armLibrary(filter.library(), library, target); });
    check(got, wanted);
}

void ConvolutionSweep::check(model::Outcome const& got, model::Outcome const& wanted) {
    ASSERT_TRUE(agree(got, wanted));
    ASSERT_TRUE(_subject->armedAlike());
    if (got.ok) {
        drain();
    } else if (!_subject->armed()) {
        expectUnarmed();
    }
}

void ConvolutionSweep::drain() {
    model::Geometry const out = _subject->modelled().geometry();
    FrameLayout const& layout = _subject->library().layout();
    ASSERT_EQ(layout.format, formatOf(out));
    ASSERT_EQ(layout.size, sizeOf(out));

    model::Image expected = model::makeImage(out.format, out.width, out.height, untouched);
    BridgedFrame actual(expected, drawPlacement(_random));
    std::vector<Step> const steps = drawSteps(out.height);
    model::Outcome const wanted = model::attempt([&] { takeModelled(steps, expected); });
    model::Outcome const got = outcomeOf([&] { take(steps, actual.frame()); });
    ASSERT_TRUE(agree(got, wanted));
    ASSERT_TRUE(actual.holds(expected));
    _drained += got.ok ? 1 : 0;
}

void ConvolutionSweep::expectUnarmed() {
    model::Outcome const wanted = model::attempt([&] { _subject->modelled().read(0, {}); });
    RowData none{};
    model::Outcome const got = outcomeOf([&] { _subject->library().produce(none); });
    ASSERT_FALSE(wanted.ok);
    ASSERT_TRUE(agree(got, wanted));
}

void ConvolutionSweep::takeModelled(std::vector<Step> const& steps, model::Image& image) {
    for (Step const& step : steps) {
        if (!step.taken) {
            continue;
        }
        model::Row out = image.writable(step.row < image.height ? step.row : 0);
        for (std::size_t p = 0; p < out.size(); ++p) {
            out[p] = step.planes[p] ? out[p] : std::span<std::uint8_t>();
        }
        _subject->modelled().read(step.row, out);
    }
}

void ConvolutionSweep::take(std::vector<Step> const& steps, Frame& frame) {
    RowWriter writer;
    writer.reuse(frame);
    for (Step const& step : steps) {
        if (step.taken) {
            RowData out{};
            for (int p = 0; p < 4; ++p) {
                if (step.planes[static_cast<std::size_t>(p)]) {
                    out[p] = step.row < frame.height() ? writer.rows[p] : frame.planeData(p);
                }
            }
            _subject->library().produce(out);
        }
        EXPECT_EQ(_subject->library().next(), _subject->hasNext(step.row));
        writer.next();
    }
}

// Mostly all rows of all planes; now and then with gaps, and beyond the end. The last row is always
// taken: the model doesn't hear of rows passed over until one is taken.
std::vector<ConvolutionSweep::Step> ConvolutionSweep::drawSteps(int height) {
    bool const plain = !oneIn(_random, 3);
    int const behind = plain ? 0 : _random.between(0, 3);
    std::vector<Step> steps;
    for (int row = 0; row < height + behind; ++row) {
        bool const taken = plain || row == height - 1 || !oneIn(_random, 6);
        Step step{row, taken, {true, true, true, true}};
        for (bool& plane : step.planes) {
            plane = plain || !oneIn(_random, 5);
        }
        steps.push_back(step);
    }
    return steps;
}

ConvolutionCase ConvolutionSweep::drawCase(FrameFormat format, Size src) {
    auto const number = static_cast<int>(format);
    ConvolutionCase c{{number, src.width, src.height}, {src, drawPrecision()}, drawKind(number)};
    if (GetParam().changes_width) {
        c.target.size.width = drawSide(src.width);
    }
    if (GetParam().changes_height) {
        c.target.size.height = drawSide(src.height);
    }
    return c;
}

ConvolutionCase ConvolutionSweep::changed(ConvolutionCase c) {
    std::vector<FrameFormat> const formats = allFormats();
    ConvolutionCase const other =
        drawCase(formats[_random.next() % formats.size()], drawSize(4, 40));
    if (oneIn(_random, 5)) {
        return other;
    }
    if (oneIn(_random, 4)) {
        c.src.format = _random.between(model::I420, model::Nv21);
    }
    auto const changeSide = [&](int& side, int to) { side = oneIn(_random, 6) ? to : side; };
    changeSide(c.src.width, other.src.width);
    changeSide(c.src.height, other.src.height);
    changeSide(c.target.size.width, std::min(other.target.size.width, c.src.width));
    changeSide(c.target.size.height, std::min(other.target.size.height, c.src.height));
    c.target.precision = drawPrecision();
    c.kind = drawKind(c.src.format);
    return c;
}

int ConvolutionSweep::drawSide(int src) {
    if (oneIn(_random, 30)) {
        return _random.between(0, src + 2);
    }
    if (oneIn(_random, 6)) {
        return oneIn(_random, 2) ? src : (src + 1) / 2;
    }
    return _random.between((src + 7) / 8, src);
}

int ConvolutionSweep::drawPrecision() {
    if (oneIn(_random, 40)) {
        return 12;
    }
    return oneIn(_random, 2) ? 8 : 16;
}

// Empty producers aren't drawn: what those of the library refuse is told by their own tests.
SourceKind ConvolutionSweep::drawKind(int format) {
    bool const empty = model::planesOf({format, 2, 2}).empty();
    if (GetParam().takes_frames && (empty || oneIn(_random, 2))) {
        return SourceKind::Frame;
    }
    return static_cast<SourceKind>(_random.between(1, 3));
}

FilterShape const& ConvolutionSweep::drawShape() {
    auto const& shapes = oneIn(_random, 5) ? wildFilters() : usualFilters();
    return shapes[_random.next() % shapes.size()];
}

Size ConvolutionSweep::drawSize(int low, int high) {
    int const width = _random.between(low, high);
    return {width, _random.between(low, high)};
}

FilterPair& ConvolutionSweep::makeFilter() {
    return *_filters.emplace_back(std::make_unique<FilterPair>(drawShape()));
}

}  // namespace ox::test
