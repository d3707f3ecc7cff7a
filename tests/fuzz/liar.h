// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A producer of a caller's own that doesn't keep to what it says.
#pragma once

#include <vector>

#include "fuzz/input.h"
#include "ox_cv/ox_row_producer.h"

namespace ox::fuzz {

// Its layout may disagree with itself, and be another one at each question; it may throw; what its
// `next` returns means nothing. It writes no more than every layout that it has told promises,
// and no more than formats and sizes of these have: whoever makes room for less is at fault.
class Liar : public IRowProducer {
  public:
    struct Thrown {};

    explicit Liar(Input& input);

    // As it was before the lies.
    Size size() const { return _size; }

    FrameLayout const& layout() override;
    void produce(RowData& row) override;
    bool next() override;

  private:
    Size _size;
    std::vector<FrameLayout> _told;
    std::uint64_t _row_bytes[4];
    std::size_t _asked = 0;
    int _until_throw;  // calls; below 0 for never
    std::uint8_t _answers;
    bool _foreign;
};

}  // namespace ox::fuzz
