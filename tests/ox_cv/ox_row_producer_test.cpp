// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_producer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <new>
#include <stdexcept>
#include <type_traits>
#include <vector>

#include "ox_cv/ox_scaler_area.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"
#include "support/test_frame.h"

namespace ox::test {

namespace {

static_assert(sizeof(RowData) == 4 * sizeof(unsigned char*) && std::is_aggregate_v<RowData>);
static_assert(std::is_abstract_v<IRowProducer> && std::has_virtual_destructor_v<IRowProducer>);
static_assert(sizeof(IRowProducer) == sizeof(void*));
static_assert(
    std::is_same_v<decltype(&IRowProducer::layout), FrameLayout const& (IRowProducer::*)()>);

// The place of a virtual operation among its class's, as pointers to members hold it.
template <class Member>
std::size_t slotOf(Member member) {
    std::uintptr_t words[2];
    static_assert(sizeof member == sizeof words);
    std::memcpy(words, &member, sizeof words);
    return static_cast<std::size_t>(words[0] / sizeof(void*));
}

TEST(RowData, StartsWithNulls) {
    alignas(RowData) unsigned char memory[sizeof(RowData)];
    std::memset(memory, 77, sizeof memory);
    auto const* const row = new (memory) RowData;
    for (int i = 0; i < 4; ++i) {
        EXPECT_EQ((*row)[i], nullptr);
    }
}

TEST(RowProducer, SlotsAreInOrder) {
    EXPECT_EQ(slotOf(&IRowProducer::layout), 0U);
    EXPECT_EQ(slotOf(&IRowProducer::produce), 1U);
    EXPECT_EQ(slotOf(&IRowProducer::next), 2U);
}

// Rows of a constant byte that count up; `next` always claims to be at the end.
class Ramp : public IRowProducer {
  public:
    Ramp(FrameFormat format, Size size) : _layout(format, size, 64) {}

    FrameLayout const& layout() override { return _layout; }

    void produce(RowData& row) override {
        given.push_back(row);
        if (row_index == fails_at) {
            throw std::runtime_error("no more");
        }
        for (int i = 0; i < _layout.planeCount; ++i) {
            if (row[i] != nullptr) {
                std::memset(row[i], row_index + 1, _layout.plane[i].rowBytes);
            }
        }
    }

    bool next() override {
        ++row_index;
        return false;
    }

    int row_index = 0;
    int fails_at = -1;
    std::vector<RowData> given;

  private:
    FrameLayout _layout;
};

TEST(CopyRowData, CopiesTheBytesOfARow) {
    TestFrame source(FRAME_NV12, {3, 2});
    TestFrame target(FRAME_NV12, {3, 2}, Placement{5});
    fill(source.frame(), 0, {{1, 2, 3}});
    fill(source.frame(), 1, {{4, 5, 6, 7}});
    RowData const from{{source.row(0, 0), source.row(1, 0), nullptr, nullptr}};
    RowData to{{target.row(0, 0), target.row(1, 0), nullptr, nullptr}};
    copyRowData(source.layout(), from, to);
    EXPECT_EQ(bytesOf(target.frame(), 0, 0), (std::vector<int>{1, 2, 3}));
    EXPECT_EQ(bytesOf(target.frame(), 1, 0), (std::vector<int>{4, 5, 6, 7}));
    EXPECT_EQ(bytesOf(target.frame(), 0, 1), (std::vector<int>{0, 0, 0}));
    target.expectGapsUntouched();
}

TEST(CopyRowData, SkipsNullPlanes) {
    TestFrame source(FRAME_I420, {2, 2});
    fill(source.frame(), 7);
    for (int skipped = 0; skipped < 3; ++skipped) {
        TestFrame target(FRAME_I420, {2, 2});
        RowData const from{{source.row(0, 0), source.row(1, 0), source.row(2, 0), nullptr}};
        RowData to{{target.row(0, 0), target.row(1, 0), target.row(2, 0), nullptr}};
        to[skipped] = nullptr;
        copyRowData(source.layout(), from, to);
        for (int plane = 0; plane < 3; ++plane) {
            EXPECT_EQ(*target.row(plane, 0), plane == skipped ? 0 : 7);
        }
    }
}

TEST(CopyRowData, CopiesNoPlaneOfAnEmptyLayout) {
    unsigned char byte = 1;
    RowData const from{};
    RowData to{{&byte, &byte, &byte, &byte}};
    copyRowData(FrameLayout(), from, to);
    EXPECT_EQ(byte, 1);
}

TEST(ProduceFrame, CreatesAFrame) {
    Ramp ramp(FRAME_I420, {4, 5});
    Frame frame;
    produceFrame(ramp, frame);
    EXPECT_EQ(frame.format(), FRAME_I420);
    EXPECT_EQ(frame.size(), (Size{4, 5}));
    for (int row = 0; row < 5; ++row) {
        EXPECT_EQ(bytesOf(frame, 0, row), std::vector<int>(4, row + 1));
    }
    for (int row = 0; row < 3; ++row) {
        EXPECT_EQ(bytesOf(frame, 1, row), std::vector<int>(2, 2 * row + 1));
        EXPECT_EQ(bytesOf(frame, 2, row), std::vector<int>(2, 2 * row + 1));
    }
}

TEST(ProduceFrame, AlignsTheRowsOfAFrameThatItCreates) {
    Ramp ramp(FRAME_I420, {5, 5});
    Frame frame;
    produceFrame(ramp, frame);
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(frame.layout().plane[i].stride, 64);
    }
}

TEST(ProduceFrame, WritesAFrameThatAgreesInPlace) {
    Ramp ramp(FRAME_NV12, {3, 3});
    TestFrame target(FRAME_NV12, {3, 3}, Placement{9});
    produceFrame(ramp, target.frame());
    EXPECT_EQ(target.layout().plane[0].stride, 12);
    EXPECT_EQ(bytesOf(target.frame(), 0, 2), (std::vector<int>{3, 3, 3}));
    EXPECT_EQ(bytesOf(target.frame(), 1, 1), (std::vector<int>{3, 3, 3, 3}));
    target.expectGapsUntouched();
}

TEST(ProduceFrame, AsksForEveryRowAndIgnoresTheResultOfNext) {
    Ramp ramp(FRAME_YV12, {4, 5});
    Frame frame;
    produceFrame(ramp, frame);
    ASSERT_EQ(ramp.given.size(), 5U);
    EXPECT_EQ(ramp.row_index, 5);
    for (std::size_t row = 0; row < 5; ++row) {
        RowData const& given = ramp.given[row];
        EXPECT_NE(given[0], nullptr);
        EXPECT_EQ(given[1] != nullptr, row % 2 == 0);
        EXPECT_EQ(given[2] != nullptr, row % 2 == 0);
        EXPECT_EQ(given[3], nullptr);
    }
}

TEST(ProduceFrame, ASingleRowHasAllItsPlanes) {
    Ramp ramp(FRAME_I420, {4, 1});
    Frame frame;
    produceFrame(ramp, frame);
    ASSERT_EQ(ramp.given.size(), 1U);
    for (int plane = 0; plane < 3; ++plane) {
        EXPECT_EQ(ramp.given[0][plane], frame.planeData(plane));
    }
    EXPECT_EQ(bytesOf(frame, 2, 0), (std::vector<int>{1, 1}));
}

TEST(ProduceFrame, RemakesAFrameThatDiffers) {
    struct {
        FrameFormat format;
        Size size;
    } const others[] = {{FRAME_GRAY8, {4, 4}}, {FRAME_GRAY8, {5, 3}}, {FRAME_C2_8U, {4, 3}}};
    for (auto const& other : others) {
        TestFrame wrapped(other.format, other.size);
        Frame handle = wrapped.frame();
        Ramp ramp(FRAME_GRAY8, {4, 3});
        produceFrame(ramp, handle);
        EXPECT_EQ(handle.size(), (Size{4, 3}));
        EXPECT_EQ(bytesOf(handle, 0, 2), std::vector<int>(4, 3));
        EXPECT_TRUE(isFilledWith(wrapped.frame(), 0)) << "the caller's frame was written";
    }
}

// Rows that `ScalerAreaY` writes in part: behind that part stands 0 in a frame that is made anew,
// whose storage may have been another picture's, and what was there in one that is kept.
TEST(ProduceFrame, ClearsAFrameThatItRemakesForRowsWrittenInPart) {
    for (FrameFormat const format : {FRAME_UYVY, FRAME_C2_8U, FRAME_C4_8U}) {
        SCOPED_TRACE(toString(format));
        TestFrame src(format, {6, 8});
        fill(src.frame(), 100);
        ScalerAreaY scaler;
        scaler.reuse(src.frame(), 4, OX_SCALER_FIXED_POINT_16S);

        Frame frame;
        frame.reuse(format, {60, 80}, DeviceContext(), 0);
        fill(frame, 255);
        unsigned char const* const storage = frame.planeData(0);
        produceFrame(scaler, frame);
        EXPECT_EQ(frame.planeData(0), storage);
        std::vector<int> row(frame.layout().plane[0].rowBytes);
        std::fill_n(row.begin(), 6, 100);
        EXPECT_EQ(bytesOf(frame, 0, 3), row);

        fill(frame, 255);
        scaler.reuse(src.frame(), 4, OX_SCALER_FIXED_POINT_16S);
        produceFrame(scaler, frame);
        std::fill(row.begin() + 6, row.end(), 255);
        EXPECT_EQ(bytesOf(frame, 0, 3), row);
    }
}

TEST(ProduceFrame, ARegionOfAnotherSizeIsLeftBehind) {
    Frame frame;
    frame.reuse(FRAME_GRAY8, {8, 8}, DeviceContext(), 0);
    frame.setZero();
    Frame region = getRegion(frame, {2, 2, 4, 3});
    Ramp fits(FRAME_GRAY8, {4, 3});
    produceFrame(fits, region);
    EXPECT_EQ(bytesOf(frame, 0, 4), (std::vector<int>{0, 0, 3, 3, 3, 3, 0, 0}));
    frame.setZero();
    Ramp larger(FRAME_GRAY8, {4, 4});
    produceFrame(larger, region);
    EXPECT_TRUE(isFilledWith(frame, 0));
    EXPECT_EQ(region.size(), (Size{4, 4}));
}

TEST(ProduceFrame, KeepsTheRowsBeforeAFailure) {
    Ramp ramp(FRAME_GRAY8, {4, 4});
    ramp.fails_at = 2;
    TestFrame target(FRAME_GRAY8, {4, 4});
    EXPECT_THROW(produceFrame(ramp, target.frame()), std::runtime_error);
    EXPECT_EQ(bytesOf(target.frame(), 0, 1), std::vector<int>(4, 2));
    EXPECT_EQ(bytesOf(target.frame(), 0, 2), std::vector<int>(4, 0));
}

TEST(ProduceFrame, PassesOnWhatTheFrameRefuses) {
    Ramp none(FRAME_FORMAT_NONE, {4, 4});
    Ramp flat(FRAME_GRAY8, {4, 0});
    Frame frame;
    expectStatus(StatusUnsupportedFormat, [&] { produceFrame(none, frame); });
    expectStatus(StatusInvalidParameter, [&] { produceFrame(flat, frame); });
    EXPECT_TRUE(none.given.empty());
}

TEST(ProduceFrame, RunsOnceEvenWithoutRows) {
    TestFrame source(FRAME_GRAY8, {4, 4});
    Frame region = getRegion(source.frame(), {0, 0, 4, 0});
    Ramp ramp(FRAME_GRAY8, {4, 0});
    produceFrame(ramp, region);
    ASSERT_EQ(ramp.given.size(), 1U);
    EXPECT_EQ(ramp.given[0][0], nullptr);
}

TEST(ProbeProducer, RecordsItsConsumer) {
    Random random;
    TestFrame const source(FRAME_I420, {4, 5}, random);
    ProbeProducer probe(source.frame());
    Frame frame;
    produceFrame(probe, frame);
    EXPECT_TRUE(samePixels(frame, source.frame()));
    EXPECT_EQ(probe.produced(), (std::vector<int>{0, 1, 2, 3, 4}));
    EXPECT_EQ(probe.nextCalls(), 5);
    probe.rewind();
    probe.next();
    probe.next();
    TestFrame rest(FRAME_GRAY8, {4, 1});
    RowData row{{rest.row(0, 0), nullptr, nullptr, nullptr}};
    probe.produce(row);
    EXPECT_EQ(bytesOf(rest.frame(), 0, 0), bytesOf(source.frame(), 0, 2));
    EXPECT_EQ(probe.skipped(), (std::vector<int>{0, 1}));
    EXPECT_EQ(probe.produced(), (std::vector<int>{2}));
    EXPECT_FALSE(probe.wanted()[0][1]);
}

}  // namespace

}  // namespace ox::test
