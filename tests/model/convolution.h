// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Scaling down by a filter: the weights of an axis, the two passes, and the scaler made of them.
#pragma once

#include <functional>

#include "model/band.h"

namespace model {

// What an operation of the model came to.
Outcome attempt(std::function<void()> const& operation);

// A filter as a function of the distance from its centre. Told the scale of an axis, it says how
// wide it is there.
class Filter {
  public:
    virtual ~Filter() = default;
    virtual void setScale(float scale) = 0;
    virtual float value(float x) = 0;
    virtual float aperture() = 0;
};

// The filter of the library's own: a box as wide as a destination sample.
class BoxFilter : public Filter {
  public:
    void setScale(float scale) override { _width = scale; }
    float value(float x) override;
    float aperture() override { return _width; }

  private:
    float _width = 0.0F;
};

// The taps of one axis of one plane.
class AxisTaps {
  public:
    struct Entry {
        int start;  // source index of the first tap
        int row;    // of weights: 0 to 15 are shared by phase, those from 16 on belong to one entry
    };

    // Weights have so many bits, 8 or 16, and a sum of a quarter of what so many bits can tell.
    explicit AxisTaps(int precision) : _precision(precision) {}

    // Afterwards, a refusal leaves no entries, but the aperture of the rows that were made.
    void make(Filter& filter, int src, int dst);

    std::vector<Entry> const& entries() const { return _entries; }
    std::vector<int> const& weights(Entry entry) const;
    // Taps of the widest row; every sum runs over so many.
    int aperture() const { return _aperture; }
    int unit() const { return 1 << (_precision - 2); }

  private:
    struct Axis {
        Filter& filter;
        int src;
        int dst;
        float scale;
        float aperture;
        int capacity;  // weights in a row
    };
    struct Inner {
        float phase;
        std::vector<int> weights;
    };

    void build(Axis const& axis);
    void addInner(Axis const& axis, int start, float phase);
    void addBorder(Axis const& axis, int start, float phase);
    std::vector<int> weightsAt(Axis const& axis, float phase, int& count) const;
    std::vector<float> integralsAt(Axis const& axis, float phase, int count) const;
    void correctSum(std::vector<int>& weights, int count) const;
    int roundedWeight(float weight) const;
    int narrowed(int weight) const;

    int _precision;
    int _aperture = 0;
    std::vector<Entry> _entries;
    std::vector<Inner> _inner;
    std::vector<std::vector<int>> _border;
};

// What the passes share over their whole lives: what one use leaves behind for the next is kept,
// but a failure makes the next one start anew.
class ConvolutionPass : public Stream {
  public:
    bool armed() const { return _armed; }
    Geometry geometry() const override { return _out; }

  protected:
    explicit ConvolutionPass(int precision) : _taps(4, AxisTaps(precision)) {}

    // Whether the last use ended armed, by the same filter, with rows of the same format.
    bool knows(Filter const& filter, int format) const {
        return _armed && _filter == &filter && _out.format == format;
    }
    void startArming();
    void finishArming(Source source, int band_size);

    Band _band;
    Geometry _out;
    std::vector<AxisTaps> _taps;  // one per plane that any format may have
    Filter const* _filter = nullptr;

  private:
    bool _armed = false;
};

// Resamples rows. While the filter, the format and the width stay, so do weights and geometry,
// also over a source of another size.
class ConvolutionX : public ConvolutionPass {
  public:
    explicit ConvolutionX(int precision) : ConvolutionPass(precision) {}
    void arm(Filter& filter, Source source, int width);
    void read(int row, Row const& out) override;
    // Whether the source, whose height may differ from the pass's own, has a row behind this one.
    bool hasNext(int row) const { return row + 1 < _src_height; }

  private:
    void produce(std::size_t plane, std::span<std::uint8_t> out);

    int _src_height = 0;
};

// Resamples columns of bytes. While the filter, the format and the heights stay, so do weights and
// geometry, also over a source of another width.
class ConvolutionY : public ConvolutionPass {
  public:
    explicit ConvolutionY(int precision) : ConvolutionPass(precision) {}
    void arm(Filter& filter, Source source, int height);
    void read(int row, Row const& out) override;
    bool hasNext(int row) const { return row + 1 < _out.height; }

  private:
    int tallest() const;
    void next();
    void produce(std::size_t plane, std::span<std::uint8_t> out);

    Geometry _src;
    int _row = 0;    // the height behind the last one
    int _start = 0;  // of the first plane's taps at the last step, also of an earlier use
};

// Both passes, with a pair of them for each precision.
class Convolution : public Stream {
  public:
    void arm(Filter& filter, Source source, int width, int height, int precision);
    bool armed() const;
    bool hasNext(int row) const { return row + 1 < geometry().height; }

    Geometry geometry() const override;
    void read(int row, Row const& out) override;

  private:
    struct Pair {
        ConvolutionX x;
        ConvolutionY y;
        explicit Pair(int precision) : x(precision), y(precision) {}
    };

    Pair const* selected() const;

    Pair _narrow{8};
    Pair _wide{16};
    int _precision = 0;
};

}  // namespace model
