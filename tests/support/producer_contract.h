// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// What every row producer owes its consumer, as one check; and a source that watches its consumer.
#pragma once

#include <array>
#include <functional>
#include <string>
#include <vector>

#include "ox_cv/ox_row_producer.h"
#include "support/test_frame.h"

namespace ox::test {

// A producer of a frame's rows that records what is asked of it. A test fails if a row is produced
// twice, or one behind the end. The rows lie in a copy of the frame and are poisoned as soon as the
// producer moves on, so that nobody profits from addresses that it held on to.
class ProbeProducer : public IRowProducer {
  public:
    explicit ProbeProducer(Frame const& frame);

    FrameLayout const& layout() override { return _layout; }
    void produce(RowData& row) override;
    bool next() override;

    // Starts again at row 0 with fresh rows and records.
    void rewind();

    int produceCalls() const { return static_cast<int>(_produced.size()); }
    int nextCalls() const { return _next_calls; }
    // Frame rows that were produced, and those that were passed by.
    std::vector<int> const& produced() const { return _produced; }
    std::vector<int> const& skipped() const { return _skipped; }
    // Which planes were wanted, per produced row.
    std::vector<std::array<bool, 4>> const& wanted() const { return _wanted; }
    // Where the row of a plane was to be written, per produced row.
    std::vector<RowData> const& destinations() const { return _destinations; }

  private:
    unsigned char* rowAt(int plane) const;
    void poisonPassedRows();

    Frame _original;
    TestFrame _rows;
    FrameLayout _layout;
    std::uint32_t _masks[4]{};
    int _row = 0;
    int _next_calls = 0;
    bool _produced_current = false;
    std::vector<int> _produced;
    std::vector<int> _skipped;
    std::vector<std::array<bool, 4>> _wanted;
    std::vector<RowData> _destinations;
};

// Which rows a consumer may pass by with the same later rows as its reward.
enum class Skips {
    Any,        // all
    EvenPairs,  // pairs that start at an even row, so that no chroma row is lost
    None,       // windows over producers that were served before, or that jump
};

struct ProducerContract {
    // Arms the producer from scratch and returns it; called once per pass.
    std::function<IRowProducer&()> arm;
    FrameFormat format;
    Size size;
    Skips skips = Skips::Any;
    // Chroma comes whole or not at all, as in the conversions to YUV.
    bool chroma_together = false;
};

// Fails the test unless the producer has that geometry, writes its rows and nothing else, leaves
// null planes alone, gives the same rows again and the same later rows after skipped ones.
// @return the rows that it yields, on tight strides
Frame checkProducer(ProducerContract const& contract);

}  // namespace ox::test
