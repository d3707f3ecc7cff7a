// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "support/test_frame.h"

#include <algorithm>
#include <cstring>
#include <sstream>

namespace ox::test {

namespace {

struct RowBytes {
    int plane;
    int y;
    unsigned char* data;
    int count;
};

// Calls visit(row) for each row of each plane until it returns false.
template <class Visitor>
void forEachRow(Frame const& frame, Visitor visit) {
    for (int plane = 0; plane < frame.layout().planeCount; ++plane) {
        FramePlane const& facts = frame.layout().plane[plane];
        for (int y = 0; y < facts.height; ++y) {
            if (!visit(
                    RowBytes{plane, y, rowOf(frame, plane, y), static_cast<int>(facts.rowBytes)})) {
                return;
            }
        }
    }
}

testing::AssertionResult differs(RowBytes const& row, int x, int expected) {
    return testing::AssertionFailure()
           << "plane " << row.plane << ", row " << row.y << ", byte " << x << " of " << row.count
           << ": got " << int{row.data[x]} << ", expected " << expected;
}

bool isFloat(FrameFormat format) {
    return format >= FRAME_GRAY_32F;
}

}  // namespace

TestFrame::TestFrame(FrameFormat format, Size size, Placement placement) {
    FrameLayout layout(format, size, 1);
    unsigned char* addresses[4]{};
    for (int i = 0; i < layout.planeCount; ++i) {
        FramePlane& plane = layout.plane[i];
        std::size_t const rows = static_cast<std::size_t>(plane.height);
        std::size_t const stride = plane.rowBytes + placement.gap;
        plane.stride = static_cast<std::int64_t>(stride);
        plane.planeBytes = rows * stride;
        std::size_t const bytes = rows == 0 ? 0 : (rows - 1) * stride + plane.rowBytes;
        _planes.push_back(std::make_unique<GuardedMemory>(bytes, placement.guard));
        addresses[i] = _planes.back()->data();
        std::memset(addresses[i], GuardedMemory::poison, bytes);
    }
    _frame = Frame::wrap(layout, addresses);
    fill(_frame, 0);
}

TestFrame::TestFrame(FrameFormat format, Size size, Random& random, Placement placement)
    : TestFrame(format, size, placement) {
    fill(_frame, random);
}

unsigned char* TestFrame::row(int plane, int y) const {
    return rowOf(_frame, plane, y);
}

void TestFrame::expectGapsUntouched(char const* file, int line) const {
    for (std::size_t i = 0; i < _planes.size(); ++i) {
        std::ptrdiff_t touched = _planes[i]->touched();
        FramePlane const& plane = layout().plane[i];
        for (int y = 0; y + 1 < plane.height && touched == 0; ++y) {
            unsigned char const* const gap =
                row(static_cast<int>(i), y) + static_cast<std::ptrdiff_t>(plane.rowBytes);
            unsigned char const* const end = row(static_cast<int>(i), y + 1);
            unsigned char const* const changed = std::find_if(
                gap, end, [](unsigned char byte) { return byte != GuardedMemory::poison; });
            touched = changed != end ? changed - _planes[i]->data() : 0;
        }
        if (touched != 0) {
            ADD_FAILURE_AT(file, line)
                << describe(_frame.format(), _frame.size()) << ", plane " << i << ": byte "
                << touched << " from the plane's start lies outside the rows and was written; a row"
                << " has " << plane.rowBytes << " bytes, the stride is " << plane.stride;
        }
    }
}

std::vector<FrameFormat> allFormats() {
    std::vector<FrameFormat> formats;
    for (std::uint32_t value = FRAME_GRAY8; value <= FRAME_BGR_32F_PLANAR; ++value) {
        if (value <= FRAME_C1_32U || value >= FRAME_GRAY_32F) {
            formats.push_back(static_cast<FrameFormat>(value));
        }
    }
    return formats;
}

std::vector<FrameFormat> unknownFormats() {
    std::vector<FrameFormat> formats;
    for (std::uint32_t const value : {0U, 21U, 22U, 23U, 27U, 255U, 0x80000001U, 0xFFFFFFFFU}) {
        formats.push_back(static_cast<FrameFormat>(value));
    }
    return formats;
}

unsigned char* rowOf(Frame const& frame, int plane, int y) {
    return frame.planeData(plane) + std::int64_t{y} * frame.layout().plane[plane].stride;
}

void fill(Frame const& frame, unsigned char value) {
    forEachRow(frame, [value](RowBytes row) {
        std::fill_n(row.data, row.count, value);
        return true;
    });
}

void fill(Frame const& frame, Random& random) {
    forEachRow(frame, [&random](RowBytes row) {
        std::generate_n(row.data, row.count, [&random] { return random.byte(); });
        return true;
    });
}

void fill(Frame const& frame, int plane, std::vector<std::vector<int>> const& rows) {
    for (std::size_t y = 0; y < rows.size(); ++y) {
        std::transform(rows[y].begin(), rows[y].end(), rowOf(frame, plane, static_cast<int>(y)),
                       [](int value) { return static_cast<unsigned char>(value); });
    }
}

void fillFloats(Frame const& frame, Random& random, float low, float high) {
    if (!isFloat(frame.format())) {
        fill(frame, random);
        return;
    }
    forEachRow(frame, [&](RowBytes row) {
        for (int x = 0; x < row.count; x += int{sizeof(float)}) {
            float const value = random.real(low, high);
            std::memcpy(row.data + x, &value, sizeof value);
        }
        return true;
    });
}

testing::AssertionResult samePixels(Frame const& got, Frame const& expected) {
    if (got.format() != expected.format() || got.size() != expected.size()) {
        return testing::AssertionFailure()
               << "got " << describe(got.format(), got.size()) << ", expected "
               << describe(expected.format(), expected.size());
    }
    testing::AssertionResult result = testing::AssertionSuccess();
    forEachRow(got, [&](RowBytes row) {
        unsigned char const* const wanted = rowOf(expected, row.plane, row.y);
        unsigned char const* const end = row.data + row.count;
        unsigned char const* const different =
            std::mismatch(const_cast<unsigned char const*>(row.data), end, wanted).first;
        if (different == end) {
            return true;
        }
        int const x = static_cast<int>(different - row.data);
        result = differs(row, x, wanted[x]);
        return false;
    });
    return result;
}

testing::AssertionResult isFilledWith(Frame const& frame, unsigned char value) {
    testing::AssertionResult result = testing::AssertionSuccess();
    forEachRow(frame, [&](RowBytes row) {
        unsigned char const* const end = row.data + row.count;
        unsigned char const* const different = std::find_if(
            row.data, row.data + row.count, [value](unsigned char byte) { return byte != value; });
        if (different == end) {
            return true;
        }
        result = differs(row, static_cast<int>(different - row.data), value);
        return false;
    });
    return result;
}

std::vector<int> bytesOf(Frame const& frame, int plane, int y) {
    unsigned char const* const row = rowOf(frame, plane, y);
    return {row, row + frame.layout().plane[plane].rowBytes};
}

std::string describe(FrameFormat format, Size size) {
    std::ostringstream text;
    text << toString(format) << " (" << static_cast<std::uint32_t>(format) << ") of " << size.width
         << " x " << size.height;
    return text.str();
}

}  // namespace ox::test
