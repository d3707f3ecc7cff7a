// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "support/producer_contract.h"

#include <algorithm>

#include "ox_cv/ox_row_writer.h"

namespace ox::test {

namespace {

// Moves on by a row, as a consumer does that has to deal with planes of half the rows.
bool hasRow(int row, std::uint32_t mask) {
    return (static_cast<std::uint32_t>(row) & mask) == 0;
}

void checkPlane(FramePlane const& got, FramePlane const& expected, int index) {
    EXPECT_EQ(got.width, expected.width) << "plane " << index;
    EXPECT_EQ(got.height, expected.height) << "plane " << index;
    EXPECT_EQ(got.bits, expected.bits) << "plane " << index;
    EXPECT_EQ(got.channels, expected.channels) << "plane " << index;
    EXPECT_EQ(got.rowBytes, expected.rowBytes) << "plane " << index;
    EXPECT_GE(got.stride, static_cast<std::int64_t>(expected.rowBytes)) << "plane " << index;
}

void checkLayout(IRowProducer& producer, ProducerContract const& contract) {
    FrameLayout const& layout = producer.layout();
    FrameLayout const expected(contract.format, contract.size, 64);
    EXPECT_EQ(&layout, &producer.layout()) << "the layout moved between two calls";
    EXPECT_EQ(layout.format, contract.format);
    EXPECT_EQ(layout.size.width, contract.size.width);
    EXPECT_EQ(layout.size.height, contract.size.height);
    ASSERT_EQ(layout.planeCount, expected.planeCount);
    for (int i = 0; i < layout.planeCount; ++i) {
        checkPlane(layout.plane[i], expected.plane[i], i);
    }
}

// Drains with `use(row)` telling which planes are wanted at a row; a row without any is passed by.
template <class Use>
void drain(IRowProducer& producer, Frame& target, Use use) {
    RowWriter writer;
    writer.reuse(target);
    for (int row = 0; row < target.height(); ++row) {
        RowData wanted = writer.rows;
        bool any = false;
        for (int plane = 0; plane < 4; ++plane) {
            if (!use(row, plane)) {
                wanted[plane] = nullptr;
            }
            any = any || wanted[plane] != nullptr;
        }
        if (any) {
            RowData const given = wanted;
            producer.produce(wanted);
            EXPECT_TRUE(std::equal(given.plane, given.plane + 4, wanted.plane))
                << "the destination's addresses changed at row " << row;
        }
        producer.next();
        writer.next();
    }
}

// Compares the rows that were wanted and expects the others to be 0 still.
template <class Use>
void checkRows(Frame const& got, Frame const& expected, Use use, char const* pass) {
    Frame wanted;
    expected.copyTo(wanted);
    for (int plane = 0; plane < expected.layout().planeCount; ++plane) {
        FramePlane const& facts = expected.layout().plane[plane];
        std::uint32_t const mask = rowMask(expected.height(), facts.height);
        int y = 0;
        for (int row = 0; row < expected.height(); ++row) {
            if (!hasRow(row, mask)) {
                continue;
            }
            if (!use(row, plane)) {
                std::fill_n(rowOf(wanted, plane, y), facts.rowBytes, static_cast<unsigned char>(0));
            }
            ++y;
        }
    }
    EXPECT_TRUE(samePixels(got, wanted)) << pass;
}

// One pass over a freshly armed producer.
template <class Use>
void checkPass(ProducerContract const& contract, Frame const& expected, Use use, char const* pass) {
    TestFrame target(contract.format, contract.size, Placement{12});
    drain(contract.arm(), target.frame(), use);
    target.expectGapsUntouched();
    checkRows(target.frame(), expected, use, pass);
}

void checkPump(ProducerContract const& contract, Frame const& expected) {
    TestFrame target(contract.format, contract.size, Placement{20});
    unsigned char* const storage = target.frame().planeData(0);
    produceFrame(contract.arm(), target.frame());
    EXPECT_EQ(target.frame().planeData(0), storage) << "the pump left the frame";
    target.expectGapsUntouched();
    EXPECT_TRUE(samePixels(target.frame(), expected)) << "second use";
}

void checkNullPlanes(ProducerContract const& contract, Frame const& expected) {
    auto const group = [&](int plane) {
        return contract.chroma_together ? std::min(plane, 1) : plane;
    };
    // Rows without a plane count as passed by: only luma has a row on each step.
    int const planes = contract.skips == Skips::None ? 1 : expected.layout().planeCount;
    for (int only = 0; only < planes; ++only) {
        checkPass(
            contract, expected, [=](int, int plane) { return group(plane) == only; },
            "a single plane");
    }
    checkPass(
        contract, expected,
        [=](int row, int plane) { return plane == 0 || row / 2 % 2 == group(plane) % 2; },
        "luma with one plane in turn");
}

void checkSkips(ProducerContract const& contract, Frame const& expected) {
    if (contract.skips == Skips::None) {
        return;
    }
    checkPass(
        contract, expected, [](int row, int) { return row / 2 % 2 != 0; }, "skipped pairs");
    if (contract.skips == Skips::EvenPairs) {
        return;
    }
    checkPass(
        contract, expected, [](int row, int) { return row % 2 == 0; }, "skipped odd rows");
    checkPass(
        contract, expected, [](int row, int) { return row % 2 != 0; }, "skipped even rows");
    checkPass(
        contract, expected, [](int row, int) { return row % 3 == 2; }, "skipped two of three");
    checkPass(
        contract, expected, [&](int row, int) { return row == contract.size.height - 1; },
        "last row alone");
}

}  // namespace

ProbeProducer::ProbeProducer(Frame const& frame)
    : _original(frame), _rows(frame.format(), frame.size(), Placement{4}), _layout(frame.layout()) {
    rewind();
}

void ProbeProducer::rewind() {
    _original.copyTo(_rows.frame());
    for (int i = 0; i < _layout.planeCount; ++i) {
        _masks[i] = rowMask(_layout.size.height, _layout.plane[i].height);
    }
    _row = 0;
    _next_calls = 0;
    _produced_current = false;
    _produced.clear();
    _skipped.clear();
    _wanted.clear();
    _destinations.clear();
}

unsigned char* ProbeProducer::rowAt(int plane) const {
    return _rows.row(plane, _masks[plane] == 0 ? _row : _row / 2);
}

void ProbeProducer::produce(RowData& row) {
    EXPECT_LT(_row, _layout.size.height) << "a row behind the end was asked for";
    EXPECT_FALSE(_produced_current) << "row " << _row << " was asked for twice";
    if (_row >= _layout.size.height) {
        return;
    }
    std::array<bool, 4> wanted{};
    for (int i = 0; i < _layout.planeCount; ++i) {
        wanted[static_cast<std::size_t>(i)] = row[i] != nullptr;
        if (row[i] != nullptr) {
            std::copy_n(rowAt(i), _layout.plane[i].rowBytes, row[i]);
        }
    }
    _produced_current = true;
    _produced.push_back(_row);
    _wanted.push_back(wanted);
    _destinations.push_back(row);
}

bool ProbeProducer::next() {
    ++_next_calls;
    if (_row >= _layout.size.height) {
        return false;
    }
    if (!_produced_current) {
        _skipped.push_back(_row);
    }
    poisonPassedRows();
    _produced_current = false;
    ++_row;
    return _row < _layout.size.height;
}

void ProbeProducer::poisonPassedRows() {
    for (int i = 0; i < _layout.planeCount; ++i) {
        bool const passed = _masks[i] == 0 || _row % 2 != 0;
        if (passed) {
            std::fill_n(rowAt(i), _layout.plane[i].rowBytes, GuardedMemory::poison);
        }
    }
}

Frame checkProducer(ProducerContract const& contract) {
    SCOPED_TRACE("producer of " + describe(contract.format, contract.size));
    auto const everything = [](int, int) { return true; };
    Frame expected;
    expected.reuse(contract.format, contract.size, DeviceContext(), 1);
    fill(expected, 0);
    {
        IRowProducer& producer = contract.arm();
        checkLayout(producer, contract);
        drain(producer, expected, everything);
    }
    checkPump(contract, expected);
    checkPass(contract, expected, everything, "third use");
    checkNullPlanes(contract, expected);
    checkSkips(contract, expected);
    return expected;
}

}  // namespace ox::test
