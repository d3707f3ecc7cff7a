// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "model/stream.h"

#include <algorithm>

namespace model {

void refuse(int status, std::string const& text) {
    throw Failure{status, text};
}

void refuseAssertion(std::string const& expression) {
    refuse(AssertionFailed, "Assertion failed: " + expression);
}

void copyRow(SourceRow const& from, Row const& to) {
    for (std::size_t p = 0; p < to.size(); ++p) {
        if (!to[p].empty()) {
            std::copy_n(from[p].begin(), to[p].size(), to[p].begin());
        }
    }
}

void Copy::read(int row, Row const& out) {
    if (_source->stream) {
        _source->stream->read(row, out);
    } else {
        copyRow(_source->frame->shown(row), out);
    }
}

Outcome drain(std::function<void()> const& arm, Stream& stream, Image& image) {
    try {
        arm();
        for (int row = 0; row < image.height; ++row) {
            stream.read(row, image.writable(row));
        }
        return {};
    } catch (Failure const& failure) {
        return {false, failure.status, failure.text};
    }
}

}  // namespace model
