// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/scale.h"

namespace model {

Outcome Scaling::run(Source source, Image& dst) {
    return drain([&] { arm(source, dst.width, dst.height); }, *this, dst);
}

void Facade::arm(Source source, int width, int height, int method) {
    bool const wide = width != source.geometry().width;
    bool const high = height != source.geometry().height;
    if (!wide && !high) {
        _copy.arm(source);
        _active = &_copy;
        return;
    }
    _copy.clear();
    if (method < 0 || method > 2) {
        refuse(InvalidParameter, "Failure in Scaler::reuse(...) : parameter 'method' is invalid " +
                                     std::to_string(static_cast<unsigned>(method)) + ".");
    }
    Scaling& bilinear = !high   ? static_cast<Scaling&>(_bilinear_x)
                        : !wide ? static_cast<Scaling&>(_bilinear_y)
                                : _bilinear_xy;
    Scaling& area = high ? static_cast<Scaling&>(_area_y) : _area_x;
    Scaling& chosen = method == 0 ? _nearest : method == 1 ? bilinear : area;
    if (method == 2 && wide && high) {
        _area_x.arm(source, width, source.geometry().height);
        _area_y.arm(_area_x, width, height);
    } else {
        chosen.arm(source, width, height);
    }
    _active = &chosen;
}

Outcome Facade::run(Source source, Image& dst, int method) {
    return drain([&] { arm(source, dst.width, dst.height, method); }, *this, dst);
}

}  // namespace model
