#include "ox_cv/ox_row_window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "ox_cv/ox_row_copier.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(!std::is_polymorphic_v<RowWindow>);
static_assert(!std::is_copy_constructible_v<RowWindow> && !std::is_copy_assignable_v<RowWindow>);

constexpr char outOfRange[] = "Parameter 'window_size' is out of range.";
constexpr char badIndex[] =
    "Assertion failed: 0 <= row_index_in_window && row_index_in_window < _window_size";

using Bytes = std::vector<int>;

// The first byte of a plane's row in the band.
int byteAt(RowWindow& window, int index, int plane = 0) {
    return *(*window.rowData(index))[plane];
}

// A frame whose plane p has the byte 100 p + row in its rows.
TestFrame rampFrame(FrameFormat format, Size size) {
    TestFrame frame(format, size);
    for (int plane = 0; plane < frame.layout().planeCount; ++plane) {
        for (int y = 0; y < frame.layout().plane[plane].height; ++y) {
            std::fill_n(frame.row(plane, y), frame.layout().plane[plane].rowBytes,
                        static_cast<unsigned char>(100 * plane + y));
        }
    }
    return frame;
}

TEST(RowWindow, StartsEmpty) {
    RowWindow window;
    EXPECT_FALSE(window.initialized());
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(window.windowSize(), 0);
    EXPECT_EQ(window.layout().planeCount, 0);
    EXPECT_FALSE(window.next());
    expectException(StatusAssertionFailed, badIndex, [&] { window.rowData(0); });
}

TEST(RowWindow, RefusesSourcesThatAreNotInitialized) {
    RowWindow window;
    RowCopier empty;
    expectException(StatusInputNotInitialized, "Frame is not initialized.",
                    [&] { window.reuse(Frame(), 1); });
    expectException(StatusInputNotInitialized, "Row producer is not initialized.",
                    [&] { window.reuse(empty, 1); });
    EXPECT_FALSE(window.initialized());
}

TEST(RowWindow, SizeLiesBetweenOneAndTheHeight) {
    TestFrame const source(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    for (int const size :
         {0, -1, 6, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        RowWindow window;
        expectException(StatusOutOfRange, outOfRange, [&] { window.reuse(source.frame(), size); });
        expectException(StatusOutOfRange, outOfRange, [&] { window.reuse(probe, size); });
        EXPECT_FALSE(window.initialized());
    }
    for (int const size : {1, 5}) {
        RowWindow window;
        window.reuse(source.frame(), size);
        EXPECT_EQ(window.windowSize(), size);
        window.reuse(probe, size);
        EXPECT_EQ(window.windowSize(), size);
    }
}

TEST(RowWindow, ABadSizeLeavesItAsItWas) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 2);
    window.next();
    expectException(StatusOutOfRange, outOfRange, [&] { window.reuse(source.frame(), 6); });
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(window.windowSize(), 2);
    EXPECT_EQ(byteAt(window, 1), 2);
}

TEST(RowWindow, ABadIndexLeavesItAsItWas) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.next();
    for (int const index :
         {-1, 2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
        expectException(StatusAssertionFailed, badIndex, [&] { window.rowData(index); });
    }
    EXPECT_EQ(probe.produceCalls(), 0);
    EXPECT_EQ(probe.nextCalls(), 0);
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(byteAt(window, 0), 1);
}

TEST(RowWindowOfFrame, HoldsAddressesOnly) {
    TestFrame const source(FRAME_NV12, {5, 5}, Placement{3});
    RowWindow window;
    window.reuse(source.frame(), 3);
    EXPECT_TRUE(window.initialized());
    EXPECT_EQ(window.layout().plane[0].stride, 8);
    for (int first = 0; first < 3; ++first) {
        for (int index = 0; index < 3; ++index) {
            RowData const& row = *window.rowData(index);
            EXPECT_EQ(row[0], source.row(0, first + index));
            EXPECT_EQ(row[1], source.row(1, (first + index) / 2));
            EXPECT_EQ(row[2], nullptr);
            EXPECT_EQ(row[3], nullptr);
        }
        EXPECT_EQ(window.next(), first < 2);
    }
}

TEST(RowWindowOfFrame, StopsAtTheBottom) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 4});
    RowWindow window;
    window.reuse(source.frame(), 3);
    EXPECT_TRUE(window.next());
    EXPECT_FALSE(window.next());
    EXPECT_FALSE(window.next());
    EXPECT_EQ(window.firstRow(), 1);
    EXPECT_EQ(byteAt(window, 0), 1);
    EXPECT_EQ(byteAt(window, 2), 3);
}

TEST(RowWindowOfFrame, ASingleRowFollowsTheFirstRow) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 1);
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(byteAt(window, 0), row);
        EXPECT_EQ(byteAt(window, 0, 2), 200 + row / 2);
        window.next();
    }
}

TEST(RowWindowOfFrame, JumpsOverRows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 9});
    RowWindow window;
    window.reuse(source.frame(), 2);
    EXPECT_EQ(byteAt(window, 1), 1);
    window.moveTo(6);
    EXPECT_EQ(window.firstRow(), 6);
    EXPECT_EQ(byteAt(window, 0), 6);
    window.moveTo(3);
    EXPECT_EQ(window.firstRow(), 6) << "the band never moves up";
    window.moveTo(100);
    EXPECT_EQ(window.firstRow(), 7);
    EXPECT_EQ(byteAt(window, 1), 8);
}

TEST(RowWindowOfFrame, ReuseStartsAgainWithoutAnAllocation) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    TestFrame const same = rampFrame(FRAME_I420, {4, 5});
    RowWindow window;
    window.reuse(source.frame(), 3);
    window.moveTo(2);
    window.rowData(0);
    std::uint64_t const calls = allocationCalls();
    window.reuse(same.frame(), 3);
    EXPECT_EQ(allocationCalls(), calls);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ((*window.rowData(2))[0], same.row(0, 2));
    EXPECT_EQ(allocationCalls(), calls);
}

TEST(RowWindowOfFrame, ReuseTakesOtherGeometries) {
    RowWindow window;
    struct {
        FrameFormat format;
        Size size;
        int window_size;
    } const cases[] = {{FRAME_I420, {4, 5}, 3}, {FRAME_I420, {4, 5}, 2}, {FRAME_I420, {4, 6}, 2},
                       {FRAME_I420, {6, 6}, 2}, {FRAME_YV12, {6, 6}, 2}, {FRAME_GRAY8, {6, 6}, 6}};
    for (auto const& c : cases) {
        TestFrame const source(c.format, c.size);
        window.reuse(source.frame(), c.window_size);
        RowData const& row = *window.rowData(c.window_size - 1);
        EXPECT_EQ(row[0], source.row(0, c.window_size - 1));
        EXPECT_EQ(window.layout().format, c.format);
        EXPECT_EQ(window.layout().size, c.size);
        EXPECT_EQ(window.windowSize(), c.window_size);
    }
}

TEST(RowWindowOfProducer, ProducesEachRowOnce) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 3);
    EXPECT_EQ(probe.produceCalls(), 0) << "rows are loaded on demand";
    for (int first = 0; first < 4; ++first) {
        for (int index = 0; index < 3; ++index) {
            EXPECT_EQ(byteAt(window, index), first + index);
        }
        EXPECT_EQ(probe.produceCalls(), first + 3);
        EXPECT_EQ(probe.nextCalls(), first + 3);
        window.next();
    }
    EXPECT_EQ(probe.produced(), (Bytes{0, 1, 2, 3, 4, 5}));
    EXPECT_TRUE(probe.skipped().empty());
}

TEST(RowWindowOfProducer, ASecondLookLoadsNothing) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    RowData const first = *window.rowData(0);
    RowData const second = *window.rowData(0);
    EXPECT_EQ(probe.produceCalls(), 2);
    for (int plane = 0; plane < 4; ++plane) {
        EXPECT_EQ(first[plane], second[plane]);
    }
}

TEST(RowWindowOfProducer, RowsThatStayInTheBandKeepTheirPlace) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 6});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 3);
    unsigned char const* const second = (*window.rowData(1))[0];
    unsigned char const* const third = (*window.rowData(2))[0];
    window.next();
    EXPECT_EQ((*window.rowData(0))[0], second);
    EXPECT_EQ((*window.rowData(1))[0], third);
}

TEST(RowWindowOfProducer, RowsOfARingAreAligned) {
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

TEST(RowWindowOfProducer, ChromaIsSharedByAPair) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 7});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    for (int first = 0; first < 6; ++first) {
        RowData const upper = *window.rowData(0);
        RowData const lower = *window.rowData(1);
        EXPECT_EQ(*upper[0], first);
        EXPECT_EQ(*lower[0], first + 1);
        EXPECT_EQ(*upper[1], 100 + first / 2);
        EXPECT_EQ(*lower[2], 200 + (first + 1) / 2);
        EXPECT_EQ(upper[1] == lower[1], first % 2 == 0);
        EXPECT_EQ(upper[2] == lower[2], first % 2 == 0);
        window.next();
    }
    for (std::size_t row = 0; row < 7; ++row) {
        EXPECT_TRUE(probe.wanted()[row][0]);
        EXPECT_EQ(probe.wanted()[row][1], row % 2 == 0);
        EXPECT_EQ(probe.wanted()[row][2], row % 2 == 0);
    }
}

TEST(RowWindowOfProducer, AJumpBehindTheBandSkipsRows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 9});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.rowData(0);
    window.moveTo(5);
    EXPECT_EQ(probe.nextCalls(), 2);
    EXPECT_EQ(byteAt(window, 0), 5);
    EXPECT_EQ(byteAt(window, 1), 6);
    EXPECT_EQ(probe.produced(), (Bytes{0, 1, 5, 6}));
    EXPECT_EQ(probe.skipped(), (Bytes{2, 3, 4}));
}

TEST(RowWindowOfProducer, ChromaOfASkippedPairIsAnOlderSlot) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 8});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 2);
    window.moveTo(1);
    EXPECT_EQ(byteAt(window, 0), 1);
    EXPECT_EQ(byteAt(window, 0, 1), 0) << "rings start as zeros";
    EXPECT_EQ(byteAt(window, 1, 1), 101);
    window.moveTo(5);
    EXPECT_EQ(byteAt(window, 0), 5);
    EXPECT_EQ(byteAt(window, 0, 1), 101) << "what the slot held";
    EXPECT_EQ(byteAt(window, 1, 1), 103);
}

TEST(RowWindowOfProducer, ReuseKeepsTheRings) {
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

TEST(RowWindowOfProducer, ReuseKeepsTheContentsOfTheRings) {
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
TEST(RowWindowOfProducer, DoesNotSkipInASecondStream) {
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
        EXPECT_EQ(probe.produced(), (Bytes{0}));
        EXPECT_TRUE(probe.skipped().empty());
    }
}

TEST(RowWindowOfProducer, ASecondStreamIsWholeWithoutJumps) {
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

TEST(RowWindowOfProducer, OtherGeometriesGetNewRings) {
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

TEST(RowWindowOfProducer, TurnsToAFrameAndBack) {
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

TEST(RowWindowOfProducer, FollowsAFrameOfTheSameGeometry) {
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

TEST(RowWindowOfProducer, ASingleRow) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 1});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(probe, 1);
    EXPECT_EQ(byteAt(window, 0, 2), 200);
    EXPECT_FALSE(window.next());
    EXPECT_EQ(probe.produceCalls(), 1);
}

// Fails once, at a row of the caller's choice.
class Faulty : public ProbeProducer {
  public:
    using ProbeProducer::ProbeProducer;
    void produce(RowData& row) override {
        if (nextCalls() == fails_at) {
            fails_at = -1;
            throw std::runtime_error("lost");
        }
        ProbeProducer::produce(row);
    }
    int fails_at = -1;
};

TEST(RowWindowOfProducer, PassesOnWhatTheSourceThrows) {
    TestFrame const source = rampFrame(FRAME_GRAY8, {4, 5});
    Faulty faulty(source.frame());
    faulty.fails_at = 0;
    RowWindow window;
    window.reuse(faulty, 2);
    EXPECT_THROW(window.rowData(0), std::runtime_error);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(byteAt(window, 0), 0) << "the row is asked for again";
    EXPECT_EQ(byteAt(window, 1), 1);
}

TEST(RowWindow, ClearGivesEverythingUp) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    std::int64_t const before = liveAllocations();
    RowWindow window;
    window.reuse(probe, 2);
    EXPECT_GT(liveAllocations(), before);
    window.clear();
    EXPECT_EQ(liveAllocations(), before);
    EXPECT_FALSE(window.initialized());
    EXPECT_EQ(window.windowSize(), 0);
    EXPECT_EQ(window.firstRow(), 0);
    EXPECT_EQ(window.layout().planeCount, 0);
    EXPECT_FALSE(window.next());
    window.reuse(source.frame(), 2);
    EXPECT_EQ(byteAt(window, 1), 1);
}

TEST(RowWindow, IsEmptyAfterAFailedAllocation) {
    TestFrame const source = rampFrame(FRAME_I420, {4, 5});
    ProbeProducer probe(source.frame());
    RowWindow window;
    window.reuse(source.frame(), 1);
    for (std::uint64_t k = 1; k <= 4; ++k) {  // the row arrays, then a ring per plane
        expectTextAfter(StatusCapacityExceeded, "Data buffer allocation failure: ", [&] {
            FailingAllocation const failing(k);
            window.reuse(probe, 3);
        });
        EXPECT_FALSE(window.initialized());
        EXPECT_EQ(window.layout().planeCount, 0);
        EXPECT_EQ(probe.produceCalls(), 0);
    }
    expectTextAfter(StatusCapacityExceeded, "Buffer allocation failure: ", [&] {
        FailingAllocation const failing(1);
        window.reuse(source.frame(), 3);
    });
    EXPECT_FALSE(window.initialized());
    window.reuse(probe, 3);
    EXPECT_EQ(byteAt(window, 2), 2);
}

}  // namespace

}  // namespace ox::test
