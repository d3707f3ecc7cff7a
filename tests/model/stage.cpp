// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/stage.h"

namespace model {

void Stage::begin(Geometry out) {
    _out = out;
    _out_planes = planesOf(out);
    _row = 0;
    _band.advanceTo(target(0));
}

void Stage::read(int row, Row const& out) {
    while (_row < row && _row < _out.height - 1) {
        ++_row;
        _band.advanceTo(target(_row));
    }
    produce(out);
}

}  // namespace model
