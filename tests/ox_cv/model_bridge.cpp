// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/model_bridge.h"

#include <algorithm>

#include "ox_core/ox_exception.h"

namespace ox::test {

namespace {

std::string tell(model::Outcome const& outcome) {
    return outcome.ok ? "success"
                      : "status " + std::to_string(outcome.status) + ", \"" + outcome.text + '"';
}

}  // namespace

BridgedFrame::BridgedFrame(model::Image const& image, Placement placement) {
    if (image.planes.empty()) {
        return;
    }
    _held.emplace(formatOf(image.geometry()), sizeOf(image.geometry()), placement);
    for (std::size_t p = 0; p < image.planes.size(); ++p) {
        model::Plane const& plane = image.planes[p];
        auto row = plane.bytes.begin();
        for (int y = 0; y < plane.rows; ++y) {
            std::copy_n(row, plane.row_bytes, _held->row(static_cast<int>(p), y));
            row += static_cast<std::ptrdiff_t>(plane.row_bytes);
        }
    }
}

testing::AssertionResult BridgedFrame::holds(model::Image const& expected) const {
    if (!_held) {
        return testing::AssertionSuccess();
    }
    _held->expectGapsUntouched();
    for (std::size_t p = 0; p < expected.planes.size(); ++p) {
        model::Plane const& plane = expected.planes[p];
        auto wanted = plane.bytes.begin();
        for (int y = 0; y < plane.rows; ++y) {
            for (std::size_t i = 0; i < plane.row_bytes; ++i, ++wanted) {
                int const got = _held->row(static_cast<int>(p), y)[i];
                if (got != *wanted) {
                    return testing::AssertionFailure()
                           << "plane " << p << ", row " << y << ", byte " << i << ": got " << got
                           << ", the model has " << int{*wanted};
                }
            }
        }
    }
    return testing::AssertionSuccess();
}

model::Outcome outcomeOf(std::function<void()> const& operation) {
    try {
        operation();
        return {};
    } catch (Exception const& exception) {
        return {false, static_cast<int>(exception.status), exception.what()};
    }
}

std::string describe(model::Geometry const& geometry) {
    return describe(formatOf(geometry), sizeOf(geometry));
}

testing::AssertionResult agree(model::Outcome const& got, model::Outcome const& wanted) {
    if (got == wanted) {
        return testing::AssertionSuccess();
    }
    return testing::AssertionFailure() << "got " << tell(got) << "; the model has " << tell(wanted);
}

Size sizeOf(model::Geometry const& geometry) {
    return {geometry.width, geometry.height};
}

FrameFormat formatOf(model::Geometry const& geometry) {
    return static_cast<FrameFormat>(geometry.format);
}

model::Image drawImage(Random& random, model::Geometry geometry) {
    model::Image image = model::makeImage(geometry.format, geometry.width, geometry.height, 0);
    for (model::Plane& plane : image.planes) {
        std::generate(plane.bytes.begin(), plane.bytes.end(), [&] { return random.byte(); });
    }
    return image;
}

Placement drawPlacement(Random& random) {
    Guard const guard = !oneIn(random, 6)  ? Guard::None
                        : oneIn(random, 3) ? Guard::AtStart
                                           : Guard::AtEnd;
    return {oneIn(random, 2) ? 0 : static_cast<std::size_t>(random.between(1, 40)), guard};
}

bool oneIn(Random& random, int count) {
    return random.between(1, count) == 1;
}

int draws(int count) {
    return emulated() ? (count + 9) / 10 : count;
}

}  // namespace ox::test
