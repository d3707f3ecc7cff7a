// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The band of consecutive source rows that a step of the model sees.
#pragma once

#include <deque>
#include <optional>

#include "model/stream.h"

namespace model {

// Over an image the band shows the image itself. Over a stream each plane has as many slots as the
// band has rows, filled in turn; a half-height plane takes a new slot after each odd row and is
// read on even rows alone. So where the band starts at an odd row, such a plane shows what the slot
// held before.
//
// Two things outlast a re-arming, since the library's window keeps them too: the slots, as long as
// the geometry and the band's size stay, and the number of rows ever taken from streams. A stream
// is told to pass rows over only where that number is below the band's first row, so that a band
// on its second stream takes rows in sequence where the first one left some out.
class Band {
  public:
    void arm(Source source, int size);

    // Moves down towards a row, not past the last place where the band fits into the source.
    void advanceTo(int row);

    int first() const { return _first; }
    int size() const { return _size; }

    // The source row at a place of the band.
    SourceRow at(int place);

  private:
    struct Slots {
        std::vector<std::vector<std::uint8_t>> rows;
        std::size_t next = 0;
    };
    using Shown = std::array<std::size_t, 4>;  // slot of each plane

    void makeSlots();
    void load();
    void take(int row);

    Geometry _geometry;
    std::vector<PlaneShape> _planes;
    int _size = 0;
    std::optional<Source> _source;
    int _first = 0;

    std::vector<Slots> _slots;
    std::deque<Shown> _shown;  // of the rows up to _loaded_end
    int _loaded_end = 0;
    int _stream_row = 0;  // where the stream stands
    int _taken = 0;       // rows taken from streams since the band was made
};

}  // namespace model
