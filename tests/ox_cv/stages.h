// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Every producer class of the library behind one face, for tests that treat them all alike.
#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "ox_core/ox_frame.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::test {

// What a stage is to yield; each class looks at what it changes.
struct Target {
    FrameFormat format;
    Size size;
};

class Stage {
  public:
    virtual ~Stage() = default;
    // A new object of the class in place of the old one.
    virtual void construct() = 0;
    virtual void destroy() = 0;
    virtual void arm(Frame const& source, Target const& target) = 0;
    virtual void arm(IRowProducer& source, Target const& target) = 0;
    virtual void renew() = 0;
    virtual IRowProducer& producer() = 0;
};

struct StageClass {
    char const* name;
    bool changes_format;
    bool changes_width;
    bool changes_height;
    bool takes_producers;
    // A window over a producer lies inside, which skips no rows once it has served a stream.
    bool chained;
    // A second stream shows traces of the first, on purpose: whoever compares streams takes a new
    // object for each.
    bool remembers;
    std::unique_ptr<Stage> (*make)();  // with an object constructed

    // `wanted` with the source's own values where the class changes nothing.
    Target targetFor(FrameLayout const& source, Target const& wanted) const {
        return {changes_format ? wanted.format : source.format,
                {changes_width ? wanted.size.width : source.size.width,
                 changes_height ? wanted.size.height : source.size.height}};
    }
};

// Names the class in test reports.
void PrintTo(StageClass const& stage, std::ostream* out);

std::vector<StageClass> const& stageClasses();
// Those that take producers.
std::vector<StageClass> linkClasses();

}  // namespace ox::test
