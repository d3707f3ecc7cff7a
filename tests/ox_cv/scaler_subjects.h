// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The scaler classes, each with its counterpart in the model.
#pragma once

#include <iosfwd>
#include <memory>
#include <vector>

#include "model/stream.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::test {

// One scaler on both sides, over its whole life. `variant` is the precision of area scalers (odd
// for 8 bits) and the method of `Scaler`; the others don't look at it.
class Subject {
  public:
    virtual ~Subject() = default;
    virtual void armLibrary(Frame const& frame, Size dst_size, int variant) = 0;
    virtual void armLibrary(IRowProducer& producer, Size dst_size, int variant) = 0;
    virtual void armModel(model::Source source, Size dst_size, int variant) = 0;
    virtual IRowProducer& library() = 0;
    virtual model::Stream& modelled() = 0;
};

struct ScalerClass {
    char const* name;
    bool changes_width;
    bool changes_height;
    bool takes_producers;
    bool selects;  // by method among the others
    std::unique_ptr<Subject> (*make)();
};

// Names the class in test reports.
void PrintTo(ScalerClass const& scaler, std::ostream* out);

std::vector<ScalerClass> const& scalerClasses();

}  // namespace ox::test
