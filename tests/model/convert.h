// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Conversion between pixel formats.
#pragma once

#include "model/stage.h"

namespace model {

// One converter over its whole life. It remembers the last YUV format that it was asked for: that
// format's places are used when YUV is to become a format that has no such places of its own.
class Converter : public Stage {
  public:
    void arm(Source source, int format);
    Outcome run(Source source, Image& dst);

    Geometry geometry() const override;
    void read(int row, Row const& out) override;

  protected:
    int target(int row) const override { return row; }
    void produce(Row const& out) override;

  private:
    int selectWindow(int from, int to);

    Copy _copy;
    int _from = 0;
    int _yuv = 0;  // 0 for none
};

// A new converter over a frame.
Outcome convert(Image const& src, Image& dst);

// The direct routine for NV12 to BGR24: whole blocks of eight pixels in two rows, nothing else. It
// takes one stride for both planes of the source, which the planes' rows must fit.
void nv12ToBgrDirect(Image const& src, Image& dst);

}  // namespace model
