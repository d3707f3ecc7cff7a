// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Drives the classes that scale by a filter through cases, on the library's side and on the
// model's.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <vector>

#include "ox_cv/convolution_subjects.h"
#include "ox_cv/upstream.h"

namespace ox::test {

struct ConvolutionCase {
    model::Geometry src;
    ConvolutionTarget target;
    SourceKind kind;
};

// Objects and filters are kept from case to case, as a caller with many frames would keep them, and
// objects now and then made anew.
class ConvolutionSweep : public testing::TestWithParam<ConvolutionClass> {
  protected:
    void run(FilterPair& filter, ConvolutionCase const& c);
    // By a filter of its own, on a new object.
    void runAlone(ConvolutionCase const& c);
    // On a new object, over a source that is alike on both sides.
    void runOver(model::Stream& modelled, IRowProducer& library, FilterPair& filter,
                 ConvolutionTarget target);
    void expectUnarmed();

    // A case that mostly can be served.
    ConvolutionCase drawCase(FrameFormat format, Size src);
    // Another case now and then, and else the same one but for some of its numbers.
    ConvolutionCase changed(ConvolutionCase c);
    Size drawSize(int low, int high);
    FilterShape const& drawShape();
    // One more filter that lives as long as the fixture.
    FilterPair& makeFilter();

    Random _random{7};
    std::unique_ptr<ConvolutionSubject> _subject;
    std::vector<std::unique_ptr<FilterPair>> _filters;
    int _drained = 0;

  private:
    // A row that is taken or passed over. Rows behind the last one are written over the first.
    struct Step {
        int row;
        bool taken;
        std::array<bool, 4> planes;
    };

    // What arming came to on both sides, and the rows of what is armed.
    void check(model::Outcome const& got, model::Outcome const& wanted);
    void drain();
    void takeModelled(std::vector<Step> const& steps, model::Image& image);
    void take(std::vector<Step> const& steps, Frame& frame);
    std::vector<Step> drawSteps(int height);
    int drawSide(int src);
    int drawPrecision();
    SourceKind drawKind(int format);
};

}  // namespace ox::test
