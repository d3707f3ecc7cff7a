// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "notes.h"

#include <cstdio>

namespace oxcv {

void Notes::say(std::string const& remark) {
    if (_wanted && _said.insert(remark).second) {
        std::fprintf(stderr, "oxcv: %s\n", remark.c_str());
    }
}

}  // namespace oxcv
