// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The row scalers.
#pragma once

#include "model/elements.h"
#include "model/stage.h"

namespace model {

// A scaler over its whole life: what one use leaves behind for the next is kept.
class Scaling : public Stage {
  public:
    // Takes its size from the destination; scalers of one axis look at that side alone.
    virtual void arm(Source source, int width, int height) = 0;
    Outcome run(Source source, Image& dst);
};

class Nearest : public Scaling {
  public:
    void arm(Source source, int width, int height) override;

  protected:
    int target(int row) const override { return _ys[static_cast<std::size_t>(row)]; }
    void produce(Row const& out) override;

  private:
    int _src_width = 0;
    std::vector<std::uint16_t> _xs;
    std::vector<std::uint16_t> _ys;
};

class BilinearX : public Scaling {
  public:
    void arm(Source source, int width, int height) override;

  protected:
    int target(int row) const override { return row; }
    void produce(Row const& out) override;

  private:
    Geometry _src;
    std::vector<std::int32_t> _xs;
};

// What the two scalers with a vertical step share.
class BilinearRows : public Scaling {
  protected:
    struct TwoRows {
        SourceRow upper;
        SourceRow lower;
        std::uint64_t weight;  // of the lower row
    };

    int target(int row) const override { return _ys[static_cast<std::size_t>(row)] >> 16; }
    void armBand(Source source, Geometry out);
    void makeYs(Geometry src, int height, std::string const& limit);
    int place();

    // The two rows to blend. Planes behind the first skip a row, as the chroma rows of a source
    // with half-height planes do, and where the band doesn't reach so far, they stay on one row.
    TwoRows rowsFor(std::size_t plane);

  private:
    std::vector<std::int32_t> _ys;
};

class BilinearY : public BilinearRows {
  public:
    void arm(Source source, int width, int height) override;

  protected:
    void produce(Row const& out) override;

  private:
    Geometry _src;
};

class BilinearXY : public BilinearRows {
  public:
    void arm(Source source, int width, int height) override;

  protected:
    void produce(Row const& out) override;

  private:
    std::vector<PlaneShape> _src_planes;
    std::vector<std::int32_t> _xs;
};

// The weights of one axis.
struct AreaTable {
    struct Entry {
        std::uint16_t index;
        std::uint16_t weight;
    };

    // The entries are kept while the extents stay, also under a new precision.
    void make(int src, int dst, int precision);

    int shift = 16;
    std::uint16_t full = 0;
    std::vector<Entry> entries;

  private:
    int _src = 0;
    int _dst = 0;
};

class AreaX : public Scaling {
  public:
    void arm(Source source, int width, int height) override;

    int precision = 16;

  protected:
    int target(int row) const override { return row; }
    void produce(Row const& out) override;

  private:
    std::uint64_t sumUp(std::span<std::uint8_t const> row, Cut cut, std::size_t element,
                        std::size_t channel) const;
    std::uint64_t sumDown(std::span<std::uint8_t const> row, Cut cut, std::size_t element,
                          std::size_t channel) const;

    Geometry _src;
    AreaTable _table;
};

class AreaY : public Scaling {
  public:
    void arm(Source source, int width, int height) override;

    int precision = 16;

  protected:
    int target(int row) const override;
    void produce(Row const& out) override;

  private:
    // The rows that a plane's sums run over, with the table entries that belong to them.
    struct Rows {
        AreaTable::Entry begin;
        AreaTable::Entry end;
        int place;
        int step;
    };

    Rows rowsOf(std::size_t plane);
    std::vector<std::pair<std::span<std::uint8_t const>, std::uint64_t>> weightedRows(
        std::size_t plane);

    Geometry _src;
    AreaTable _table;
    bool _subsampled = false;
};

// Both axes at once, downwards only, over frames only.
class AreaXY : public Scaling {
  public:
    void arm(Source source, int width, int height) override;

  protected:
    int target(int row) const override;
    void produce(Row const& out) override;

  private:
    struct WeightedRow {
        std::span<std::uint8_t const> row;
        std::int32_t weight;
    };

    std::vector<WeightedRow> rowsOf(std::size_t plane);
    std::uint64_t element(std::vector<WeightedRow> const& rows, Cut cut, std::size_t element,
                          std::size_t channel) const;

    Geometry _src;
    Geometry _dst;
    std::int32_t _step_x = 0;
    std::int32_t _step_y = 0;
    std::int32_t _chroma_step = 0;
    int _count = 0;
};

// Selects among the scalers by method: 0 nearest, 1 bilinear, 2 area.
class Facade : public Stream {
  public:
    Geometry geometry() const override { return _active->geometry(); }
    void read(int row, Row const& out) override { _active->read(row, out); }

    void arm(Source source, int width, int height, int method);
    Outcome run(Source source, Image& dst, int method);

  private:
    Nearest _nearest;
    BilinearX _bilinear_x;
    BilinearY _bilinear_y;
    BilinearXY _bilinear_xy;
    AreaX _area_x;
    AreaY _area_y;
    Copy _copy;
    Stream* _active = nullptr;
};

}  // namespace model
