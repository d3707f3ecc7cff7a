// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A step of the model that makes its rows one by one from a band of source rows.
#pragma once

#include "model/band.h"

namespace model {

class Stage : public Stream {
  public:
    Geometry geometry() const override { return _out; }
    void read(int row, Row const& out) override;

  protected:
    // The source row that the band moves to when the step comes to a row of its own.
    virtual int target(int row) const = 0;

    // Writes the row that the step has come to.
    virtual void produce(Row const& out) = 0;

    // Begins at the top; the band is newly armed, and target() ready.
    void begin(Geometry out);

    int row() const { return _row; }
    std::vector<PlaneShape> const& outPlanes() const { return _out_planes; }
    Band& band() { return _band; }

  private:
    Geometry _out;
    std::vector<PlaneShape> _out_planes;
    int _row = 0;
    Band _band;
};

}  // namespace model
