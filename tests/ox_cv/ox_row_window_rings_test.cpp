// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The rings in which a band over a producer keeps its rows, and what becomes of them when the
// window is armed again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "ox_cv/row_window_frames.h"
#include "support/allocation_counter.h"
#include "support/producer_contract.h"

namespace ox::test {

namespace {

TEST(RowWindowRings, RowsOfARingAreAligned) {
    Random random;
    for (FrameFormat const format : allFormats()) {
        TestFrame const source(format, {5, 5}, random);
        ProbeProducer probe(source.frame());
        RowWindow window;
        window.reuse(probe, 3);
        for (int index = 0; index < 3; ++index) {
            RowData const& row = *window.rowData(index);
            for (int plane = 0; plane < 4; ++plane) {
                EXPECT_EQ(reinterpret_cast<std::uintptr_t>(row[plane]) % 64, 0U);
                EXPECT_EQ(row[plane] != nullptr, plane < source.layout().planeCount);
            }
        }
    }
}

TEST(RowWindowRings, ReuseKeepsTheRings) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 3});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    unsigned char const* const first = (*window.rowData(0))[0];
    unsigned char const* const second = (*window.rowData(1))[0];
    window.next();
    EXPECT_EQ((*window.rowData(1))[0], first);
    probe.rewind();
    std::uint64_t const calls = allocationCalls();
    window.reuse(probe, 2);
    EXPECT_EQ(allocationCalls(), calls);
    // Three rows were written: the fourth goes to the second slot, whatever row it is.
    EXPECT_EQ((*window.rowData(0))[0], second);
    EXPECT_EQ((*window.rowData(1))[0], first);
    EXPECT_EQ(byteAt(window, 0), 0);
    EXPECT_EQ(byteAt(window, 1), 1);
}

TEST(RowWindowRings, ReuseKeepsTheContentsOfTheRings) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 4});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    for (int first = 0; first < 3; ++first) {
        window.rowData(0);
        window.next();
    }
    // A new stream that begins at an odd row shows the chroma of the old one.
    probe.rewind();
    window.reuse(probe, 2);
    window.moveTo(1);
    EXPECT_EQ(byteAt(window, 0, 1), 100);
    EXPECT_EQ(byteAt(window, 0, 2), 200);
}

// The count of the rows passed by is never reset: a window that served a whole stream doesn't skip
// rows of the next one.
TEST(RowWindowRings, DoesNotSkipInASecondStream) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 6});
    for (bool const cleared : {false, true}) {
        ProbeProducer probe(source.frame());
        RowWindow window;
        window.reuse(probe, 1);
        for (int row = 0; row < 6; ++row) {
            EXPECT_EQ(byteAt(window, 0), row);
            window.next();
        }
        probe.rewind();
        if (cleared) {
            window.clear();
        }
        window.reuse(probe, 1);
        window.moveTo(3);
        EXPECT_EQ(byteAt(window, 0), 0);
        EXPECT_EQ(probe.produced(), (std::vector<int>{0}));
        EXPECT_TRUE(probe.skipped().empty());
    }
}

TEST(RowWindowRings, ASecondStreamIsWholeWithoutJumps) {
    TestFrame const source = rampFrame(FRAME_NV12, {4, 7});
    ProbeProducer probe(source.frame());
    RowWindow window;
    for (int stream = 0; stream < 3; ++stream) {
        probe.rewind();
        window.reuse(probe, 2);
        for (int first = 0; first < 6; ++first) {
            EXPECT_EQ(byteAt(window, 0), first);
            EXPECT_EQ(byteAt(window, 1), first + 1);
            EXPECT_EQ(byteAt(window, 0, 1), 100 + first / 2);
            EXPECT_EQ(byteAt(window, 1, 1), 100 + (first + 1) / 2);
            window.next();
        }
    }
}

TEST(RowWindowRings, OtherGeometriesGetNewRings) {
    RowWindow window;
    TestFrame const small = rampFrame(FRAME_GRAY8, {4, 4});
    TestFrame const large = rampFrame(FRAME_BGR_32F, {70, 4});
    for (TestFrame const* source : {&small, &large, &small}) {
        ProbeProducer probe(source->frame());
        window.reuse(probe, 2);
        EXPECT_EQ(byteAt(window, 1), 1);
        std::size_t const bytes = source->layout().plane[0].rowBytes;
        EXPECT_EQ((*window.rowData(0))[0][bytes - 1], 0);
    }
}

TEST(RowWindowRings, TurnsToAFrameAndBack) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 4});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    EXPECT_EQ(byteAt(window, 1), 1);
    window.reuse(source.frame(), 2);
    EXPECT_EQ((*window.rowData(1))[0], source.row(0, 1));
    EXPECT_EQ((*window.rowData(1))[2], source.row(2, 0));
    window.next();
    EXPECT_EQ((*window.rowData(1))[2], source.row(2, 1));
    EXPECT_EQ(probe.produceCalls(), 2);
    probe.rewind();
    window.reuse(probe, 2);
    EXPECT_NE((*window.rowData(1))[0], source.row(0, 1));
    EXPECT_EQ(byteAt(window, 1), 1);
}

TEST(RowWindowRings, FollowsAFrameOfTheSameGeometry) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 4});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(source.frame(), 2);
    window.rowData(0);
    window.reuse(probe, 2);
    EXPECT_EQ(byteAt(window, 1), 1);
    EXPECT_EQ(byteAt(window, 1, 2), 200);
    EXPECT_NE((*window.rowData(0))[0], source.row(0, 0));
}

// Rows of any length; every byte of row y is y + 1.
class PlainRows : public IRowProducer {
  public:
    PlainRows(Size size, std::uint64_t row_bytes, std::int64_t stride)
        : _layout(FRAME_GRAY8, size, 64) {
        _layout.plane[0].rowBytes = row_bytes;
        _layout.plane[0].stride = stride;
    }

    FrameLayout const& layout() override { return _layout; }
    void produce(RowData& row) override {
        std::fill_n(row[0], _layout.plane[0].rowBytes, static_cast<unsigned char>(_row + 1));
    }
    bool next() override { return ++_row < _layout.size.height; }

  private:
    FrameLayout _layout;
    int _row = 0;
};

// Expects rows 0 and 1 side by side, whole.
void expectTwoRows(RowWindow& window, std::size_t row_bytes) {
    for (int index = 0; index < 2; ++index) {
        unsigned char const* const row = (*window.rowData(index))[0];
        EXPECT_EQ(std::vector<int>(row, row + row_bytes), std::vector<int>(row_bytes, index + 1));
    }
}

// A producer of the caller's own may claim any stride; its rows have their bytes all the same.
TEST(RowWindowRings, HoldRowsLongerThanTheirStride) {
    for (std::int64_t const stride : {std::int64_t{4}, std::int64_t{0}, std::int64_t{-64},
                                      std::numeric_limits<std::int64_t>::min()}) {
        PlainRows rows({4, 3}, 300, stride);
        RowWindow window;
        window.reuse(rows, 2);
        expectTwoRows(window, 300);
    }
}

// Format and size alone don't tell that rings fit.
TEST(RowWindowRings, AreMadeAnewForLongerRows) {
    RowWindow window;
    PlainRows usual({4, 3}, 4, 64);
    window.reuse(usual, 2);
    expectTwoRows(window, 4);
    PlainRows longer({4, 3}, 300, 300);
    window.reuse(longer, 2);
    expectTwoRows(window, 300);
}

}  // namespace

}  // namespace ox::test
