// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/placed_image.h"

#include <algorithm>
#include <cstring>
#include <limits>

namespace ox::test {

namespace {

std::size_t spanOf(model::Plane const& plane, std::size_t stride) {
    return plane.rows == 0 ? 0
                           : (static_cast<std::size_t>(plane.rows) - 1) * stride + plane.row_bytes;
}

// A plane's memory as it is if nobody writes outside its rows.
std::vector<std::uint8_t> laidOut(model::Plane const& plane, std::size_t lead, std::size_t stride) {
    std::vector<std::uint8_t> bytes(lead + spanOf(plane, stride), GuardedMemory::poison);
    for (std::size_t y = 0; y < static_cast<std::size_t>(plane.rows); ++y) {
        std::copy_n(plane.bytes.data() + y * plane.row_bytes, plane.row_bytes,
                    bytes.data() + lead + y * stride);
    }
    return bytes;
}

}  // namespace

Placements everywhere(PlanePlacement placement) {
    return {placement, placement, placement, placement};
}

Placements drawPlacements(Random& random) {
    auto const draw = [&random] {
        constexpr std::size_t gaps[] = {0, 0, 1, 4, 12, 13, 64};
        PlanePlacement placement{0, gaps[random.next() % std::size(gaps)], Guard::None};
        int const kind = random.between(0, 9);
        if (kind < 2) {
            placement.guard = kind == 0 ? Guard::AtStart : Guard::AtEnd;
        } else if (kind < 6) {
            placement.lead = random.next() % 16;
        }
        return placement;
    };
    Placements result = everywhere(draw());
    if (oneIn(random, 2)) {
        std::generate(result.begin() + 1, result.end(), draw);
    }
    return result;
}

PlacedImage::PlacedImage(model::Image const& image, Placements const& placements) {
    FrameLayout layout(formatOf(image.geometry()), sizeOf(image.geometry()), 1);
    unsigned char* addresses[4]{};
    for (std::size_t p = 0; p < image.planes.size(); ++p) {
        model::Plane const& plane = image.planes[p];
        auto const& [lead, gap, guard] = placements[p];
        std::size_t const stride = plane.row_bytes + gap;
        std::vector<std::uint8_t> const bytes = laidOut(plane, lead, stride);
        _planes.push_back({std::make_unique<GuardedMemory>(bytes.size(), guard), lead, stride});
        unsigned char* const data = _planes.back().memory->data();
        std::copy(bytes.begin(), bytes.end(), data);
        addresses[p] = data + lead;
        layout.plane[p].stride = static_cast<std::int64_t>(stride);
    }
    _frame = Frame::wrap(layout, addresses);
}

std::vector<std::uint8_t> PlacedImage::memoryOf(int plane) const {
    GuardedMemory const& memory = *_planes[static_cast<std::size_t>(plane)].memory;
    return {memory.data(), memory.data() + memory.size()};
}

bool PlacedImage::untouchedAround() const {
    return std::all_of(_planes.begin(), _planes.end(),
                       [](PlaneMemory const& plane) { return plane.memory->touched() == 0; });
}

testing::AssertionResult PlacedImage::holds(model::Image const& expected) const {
    for (std::size_t p = 0; p < _planes.size(); ++p) {
        auto const& [memory, lead, stride] = _planes[p];
        std::vector<std::uint8_t> const wanted = laidOut(expected.planes[p], lead, stride);
        auto const difference =
            std::mismatch(wanted.begin(), wanted.end(), memory->data()).first - wanted.begin();
        auto const at = static_cast<std::size_t>(difference);
        if (at != wanted.size()) {
            return testing::AssertionFailure()
                   << "plane " << p << " of " << expected.planes[p].row_bytes
                   << " bytes a row, row "
                   << static_cast<std::int64_t>(at - lead) / static_cast<std::int64_t>(stride)
                   << ", byte " << (at - lead) % stride << ": got " << int{memory->data()[at]}
                   << ", the model has " << int{wanted[at]};
        }
        if (memory->touched() != 0) {
            return testing::AssertionFailure()
                   << "plane " << p << ": byte " << memory->touched() << " around it was written";
        }
    }
    return testing::AssertionSuccess();
}

model::Image imageOf(Frame const& frame) {
    model::Image image =
        model::makeImage(static_cast<int>(frame.format()), frame.width(), frame.height(), 0);
    for (std::size_t p = 0; p < image.planes.size(); ++p) {
        model::Plane& plane = image.planes[p];
        for (int y = 0; y < plane.rows; ++y) {
            std::copy_n(rowOf(frame, static_cast<int>(p), y), plane.row_bytes,
                        plane.bytes.data() + static_cast<std::size_t>(y) * plane.row_bytes);
        }
    }
    return image;
}

testing::AssertionResult sameImage(model::Image const& got, model::Image const& expected) {
    if (got.geometry() != expected.geometry()) {
        return testing::AssertionFailure() << "got " << describe(got.geometry()) << ", expected "
                                           << describe(expected.geometry());
    }
    for (std::size_t p = 0; p < got.planes.size(); ++p) {
        auto const& bytes = got.planes[p].bytes;
        auto const [left, right] =
            std::mismatch(bytes.begin(), bytes.end(), expected.planes[p].bytes.begin());
        if (left != bytes.end()) {
            return testing::AssertionFailure()
                   << describe(got.geometry()) << ", plane " << p << ", pixel byte "
                   << left - bytes.begin() << ": got " << int{*left} << ", expected "
                   << int{*right};
        }
    }
    return testing::AssertionSuccess();
}

float drawFloat(Random& random) {
    using Limits = std::numeric_limits<float>;
    constexpr float outliers[] = {-0.0F,
                                  0.0F,
                                  -1.0F,
                                  -0.5F,
                                  0.999999F,
                                  1.9F,
                                  254.0F,
                                  254.99F,
                                  255.0F,
                                  255.5F,
                                  256.0F,
                                  300.0F,
                                  1e9F,
                                  5e9F,
                                  -1e20F,
                                  Limits::max(),
                                  Limits::min(),
                                  Limits::denorm_min(),
                                  -1e-45F,
                                  1e38F,
                                  Limits::lowest(),
                                  Limits::infinity(),
                                  -Limits::infinity(),
                                  Limits::quiet_NaN()};
    int const kind = random.between(0, 7);
    if (kind == 0) {
        return outliers[random.next() % std::size(outliers)];
    }
    if (kind == 1) {
        auto const bits = static_cast<std::uint32_t>(random.next());
        float value = 0;
        std::memcpy(&value, &bits, sizeof value);
        return value;
    }
    return random.real(-20.0F, 280.0F);
}

model::Image drawPicture(Random& random, model::Geometry geometry) {
    if (geometry.format < model::Gray32f) {
        return drawImage(random, geometry);
    }
    model::Image image = model::makeImage(geometry.format, geometry.width, geometry.height, 0);
    for (model::Plane& plane : image.planes) {
        for (std::size_t i = 0; i < plane.bytes.size(); i += sizeof(float)) {
            float const value = drawFloat(random);
            std::memcpy(&plane.bytes[i], &value, sizeof value);
        }
    }
    return image;
}

}  // namespace ox::test
