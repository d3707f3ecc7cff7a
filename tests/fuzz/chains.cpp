// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Chains of up to three links, kept from picture to picture, against the model's; and the same over
// producers that lie about themselves, where nothing beside rows may be touched.
#include <array>
#include <optional>
#include <vector>

#include "fuzz/liar.h"
#include "fuzz/links.h"
#include "fuzz/pictures.h"
#include "fuzz/targets.h"
#include "model/convolution.h"
#include "ox_core/ox_exception.h"

namespace ox::fuzz {

namespace {

// The model knows no sides below 1.
LinkTarget drawTarget(Input& input, Size source, int least, test::FilterPair& filter) {
    LinkTarget target;
    target.format = drawFormat(input);
    std::uint8_t const kind = input.byte();
    auto const side = [&](int from) {
        return kind % 8 == 0   ? from
               : kind % 8 == 1 ? input.between(least, 3)
               : kind % 8 < 5  ? input.between(1, from < 1 ? 1 : from)
                               : drawSide(input);
    };
    target.size.width = side(source.width);
    target.size.height = side(source.height);
    target.variant = input.between(0, 4);
    target.filter = &filter;
    return target;
}

// A picture's way through the chain, on both sides.
class Run {
  public:
    Run(Input& input, std::span<std::unique_ptr<Link> const> links, bool failed,
        test::FilterPair& filter)
        : _links(links),
          _src(drawImage(input, drawGeometry(input))),
          _source(_src, drawPlaces(input)),
          _renewed(input.oneIn(2) || failed) {
        for (std::size_t i = 0; i < links.size(); ++i) {
            _targets.push_back(drawTarget(input, {_src.width, _src.height}, 1, filter));
        }
    }

    // Whether all went well, so that the links can go on without being renewed.
    bool run(Input& input) {
        if (_renewed) {
            for (auto const& link : _links) {
                link->renew();
            }
        }
        model::Outcome const wanted = model::attempt([&] { armModel(); });
        expectAlike(outcomeOf([&] { armLibrary(); }), wanted, "arming");
        if (wanted.ok) {
            return drain(input);
        }
        return false;
    }

  private:
    void armModel() {
        std::optional<model::Source> source(_src);
        for (std::size_t i = 0; i < _links.size(); ++i) {
            _links[i]->armModel(*source, _targets[i]);
            source.emplace(_links[i]->modelled());
        }
    }

    void armLibrary() {
        _links[0]->armLibrary(_source.frame(), _targets[0]);
        for (std::size_t i = 1; i < _links.size(); ++i) {
            _links[i]->armLibrary(_links[i - 1]->library(), _targets[i]);
        }
    }

    bool drain(Input& input) {
        model::Stream& modelled = _links.back()->modelled();
        IRowProducer& library = _links.back()->library();
        model::Geometry const out = modelled.geometry();
        Size const size = library.layout().size;
        if (formatOf(out.format) != library.layout().format ||
            size != Size{out.width, out.height}) {
            fail("layout: format %d, %dx%d; the model has format %d, %dx%d",
                 static_cast<int>(library.layout().format), size.width, size.height, out.format,
                 out.width, out.height);
        }
        model::Image expected = model::makeImage(out.format, out.width, out.height, untouched);
        Picture target(expected, drawPlaces(input));
        model::Outcome const wanted = model::drain([] {}, modelled, expected);
        model::Outcome const got = outcomeOf([&] { produceFrame(library, target.frame()); });
        expectAlike(got, wanted, "draining");
        target.expect(expected, "the chain's picture");
        _source.expect(_src, "the chain's source");
        return got.ok;
    }

    std::span<std::unique_ptr<Link> const> _links;
    model::Image _src;
    Picture _source;
    bool _renewed;
    std::vector<LinkTarget> _targets;
};

std::vector<std::unique_ptr<Link>> drawLinks(Input& input, bool takes_frames) {
    std::vector<std::unique_ptr<Link>> links;
    for (int i = input.between(1, 3); i > 0; --i) {
        LinkKind const& kind = input.pick(linkKinds());
        if (kind.takes_producers || (takes_frames && links.empty())) {
            links.push_back(kind.make());
        }
    }
    if (links.empty()) {
        links.push_back(linkKinds()[0].make());
    }
    return links;
}

void overFrames(Input& input, test::FilterPair& filter) {
    std::vector<std::unique_ptr<Link>> const links = drawLinks(input, true);
    bool failed = false;
    for (int i = input.between(1, 3); i > 0; --i) {
        failed = !Run(input, links, failed, filter).run(input);
    }
}

// The most pixels that are taken of what a liar's chain promises.
constexpr std::int64_t mostPixels = 1 << 16;

void overLiars(Input& input, test::FilterPair& filter) {
    std::vector<std::unique_ptr<Link>> const links = drawLinks(input, false);
    for (int picture = input.between(1, 3); picture > 0; --picture) {
        Liar liar(input);
        bool const renewed = input.oneIn(2);
        try {
            IRowProducer* source = &liar;
            for (auto const& link : links) {
                if (renewed) {
                    link->renew();
                }
                link->armLibrary(*source, drawTarget(input, liar.size(), -1, filter));
                source = &link->library();
            }
            Size const size = source->layout().size;
            if (std::int64_t{size.width} * size.height <= mostPixels) {
                Frame frame;
                produceFrame(*source, frame);
            }
        } catch (Exception const&) {
        } catch (Liar::Thrown const&) {
        }
    }
}

}  // namespace

void chains(Input& input) {
    auto const& filters = input.oneIn(4) ? test::wildFilters() : test::usualFilters();
    test::FilterPair filter(input.pick(filters));
    if (input.oneIn(3)) {
        overLiars(input, filter);
    } else {
        overFrames(input, filter);
    }
}

}  // namespace ox::fuzz
