// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The classes that scale by a filter, each with its counterpart in the model.
#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "ox_cv/filter_pair.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::test {

// The passes look at their own side alone, and are made for a precision.
struct ConvolutionTarget {
    Size size;
    int precision;
};

// One class on both sides, over its whole life.
class ConvolutionSubject {
  public:
    virtual ~ConvolutionSubject() = default;
    virtual void armLibrary(IKernel& kernel, Frame const& source, ConvolutionTarget target) = 0;
    virtual void armLibrary(IKernel& kernel, IRowProducer& source, ConvolutionTarget target) = 0;
    virtual void armModel(model::Filter& filter, model::Source source,
                          ConvolutionTarget target) = 0;
    virtual IRowProducer& library() = 0;
    virtual model::Stream& modelled() = 0;
    // What the library's `next` is to say at a row.
    virtual bool hasNext(int row) const = 0;
    // Whether it is armed, and whether both sides say so alike.
    virtual bool armed() const = 0;
    virtual bool armedAlike() const = 0;
};

struct ConvolutionClass {
    char const* name;
    bool changes_width;
    bool changes_height;
    bool takes_frames;
    std::unique_ptr<ConvolutionSubject> (*make)();
};

// Names the class in test reports.
void PrintTo(ConvolutionClass const& convolution, std::ostream* out);

std::vector<ConvolutionClass> const& convolutionClasses();

}  // namespace ox::test
