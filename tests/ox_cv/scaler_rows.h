// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Pictures small enough to be written out as numbers, and what becomes of them.
#pragma once

#include <cstdint>
#include <cstring>
#include <numeric>
#include <type_traits>
#include <vector>

#include "ox_cv/ox_row_producer.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/refusal_texts.h"
#include "support/test_frame.h"

namespace ox::test {

using Bytes = std::vector<int>;
using Rows = std::vector<Bytes>;

// A frame with those rows, one element per plane. What lies behind its last byte can't be read.
inline TestFrame picture(FrameFormat format, Size size, std::vector<Rows> const& planes,
                         Placement placement = {3, Guard::AtEnd}) {
    TestFrame result(format, size, placement);
    for (std::size_t i = 0; i < planes.size(); ++i) {
        fill(result.frame(), static_cast<int>(i), planes[i]);
    }
    return result;
}

// A gray frame as high and wide as its rows.
inline TestFrame grayPicture(Rows const& rows) {
    return picture(FRAME_GRAY8, {static_cast<int>(rows[0].size()), static_cast<int>(rows.size())},
                   {rows});
}

inline Rows rowsOf(Frame const& frame, int plane = 0) {
    Rows rows;
    for (int y = 0; y < frame.layout().plane[plane].height; ++y) {
        rows.push_back(bytesOf(frame, plane, y));
    }
    return rows;
}

inline std::vector<Rows> planesOf(Frame const& frame) {
    std::vector<Rows> planes;
    for (int i = 0; i < frame.layout().planeCount; ++i) {
        planes.push_back(rowsOf(frame, i));
    }
    return planes;
}

// All that a producer yields, on fresh memory.
inline Frame pump(IRowProducer& producer) {
    Frame frame;
    produceFrame(producer, frame);
    return frame;
}

// Arms any scaler; those of one axis look at its side of the size alone.
template <class Scaler, class Source>
void arm(Scaler& scaler, Source& src, Size size,
         ScalerPrecision precision = OX_SCALER_FIXED_POINT_16S) {
    if constexpr (std::is_same_v<Scaler, ScalerBilinearX>) {
        scaler.reuse(src, size.width);
    } else if constexpr (std::is_same_v<Scaler, ScalerBilinearY>) {
        scaler.reuse(src, size.height);
    } else if constexpr (std::is_same_v<Scaler, ScalerAreaX>) {
        scaler.reuse(src, size.width, precision);
    } else if constexpr (std::is_same_v<Scaler, ScalerAreaY>) {
        scaler.reuse(src, size.height, precision);
    } else if constexpr (std::is_same_v<Scaler, scaleAreaXY>) {
        scaler.reuse(src, size, precision);
    } else {
        scaler.reuse(src, size);
    }
}

// What a fresh scaler makes of a frame.
template <class Scaler>
Frame scaled(Frame const& src, Size size, ScalerPrecision precision = OX_SCALER_FIXED_POINT_16S) {
    Scaler scaler;
    arm(scaler, src, size, precision);
    return pump(scaler);
}

// A row of samples wider than a byte.
template <class Sample>
void setSamples(TestFrame const& frame, int y, std::vector<Sample> const& samples) {
    std::memcpy(frame.row(0, y), samples.data(), samples.size() * sizeof(Sample));
}

template <class Sample>
std::vector<Sample> samplesOf(Frame const& frame, int y) {
    std::vector<Sample> samples(frame.layout().plane[0].rowBytes / sizeof(Sample));
    std::memcpy(samples.data(), rowOf(frame, 0, y), samples.size() * sizeof(Sample));
    return samples;
}

// A frame whose bytes are 20 per row of their plane plus the column: sums of two rows never carry
// from byte to byte, whatever the samples are.
inline TestFrame ramp(FrameFormat format, Size size) {
    TestFrame result(format, size, {3, Guard::AtEnd});
    for (int plane = 0; plane < result.layout().planeCount; ++plane) {
        FramePlane const& facts = result.layout().plane[plane];
        for (int y = 0; y < facts.height; ++y) {
            unsigned char* const row = result.row(plane, y);
            std::iota(row, row + facts.rowBytes, static_cast<unsigned char>(20 * y));
        }
    }
    return result;
}

// What scalers make of the first ramp row, four pixels wide, when they halve it: one row per plane.
struct HalvedFormat {
    FrameFormat format;
    Rows picked;    // elements 1 and 3; a half-width plane of two elements keeps the second
    Rows averaged;  // elements 0 and 1, 2 and 3, fractions dropped
};

// The formats that scalers can compute with. The packed 4:2:2 rows of 8 bytes are taken for 3-byte
// and 4-byte elements: FRAME_YUYV's second result mixes bytes 6 and 9, or picks byte 9, which isn't
// there, so byte 3 of the last whole element stands in; 4 bytes are all that its row holds.
inline std::vector<HalvedFormat> makeHalvedFormats() {
    Bytes const one{1, 3};
    Bytes const one_mean{0, 2};
    Bytes const two{2, 3, 6, 7};
    Bytes const two_mean{1, 2, 5, 6};
    Bytes const three{3, 4, 5, 9, 10, 11};
    Bytes const three_mean{1, 2, 3, 7, 8, 9};
    Bytes const four{4, 5, 6, 7, 12, 13, 14, 15};
    Bytes const four_mean{2, 3, 4, 5, 10, 11, 12, 13};
    Rows const full_planes{one, one, one};
    Rows const full_means{one_mean, one_mean, one_mean};
    Rows const half_planes{one, {1}, {1}};
    Rows const half_means{one_mean, {0}, {0}};
    Rows const pair_planes{one, {2, 3}};
    Rows const pair_means{one_mean, {1, 2}};
    return {
        {FRAME_GRAY8, {one}, {one_mean}},
        {FRAME_BGR24, {three}, {three_mean}},
        {FRAME_BGR_PLANAR, full_planes, full_means},
        {FRAME_I420, half_planes, half_means},
        {FRAME_YV12, half_planes, half_means},
        {FRAME_NV12, pair_planes, pair_means},
        {FRAME_NV21, pair_planes, pair_means},
        {FRAME_YV16, half_planes, half_means},
        {FRAME_YUYV, {{3, 4, 5, 3}}, {{1, 2, 3, 4}}},
        {FRAME_UYVY, {{4, 5, 6, 7}}, {{2, 3, 4, 5}}},
        {FRAME_NV16, pair_planes, pair_means},
        {FRAME_YUV444, {three}, {three_mean}},
        {FRAME_YUV444_PLANAR, full_planes, full_means},
        {FRAME_C2_8U, {two}, {two_mean}},
        {FRAME_C3_8U, {three}, {three_mean}},
        {FRAME_C4_8U, {four}, {four_mean}},
        // 0x0100 and 0x0302 have the mean 0x0201; 32 bits alike
        {FRAME_C1_16U, {two}, {two_mean}},
        {FRAME_C1_32U, {four}, {four_mean}},
    };
}

inline std::vector<HalvedFormat> const& halvedFormats() {
    static std::vector<HalvedFormat> const formats = makeHalvedFormats();
    return formats;
}

// Formats that frames can have and scalers can only copy.
inline std::vector<FrameFormat> const& unscalableFormats() {
    static std::vector<FrameFormat> const formats{FRAME_RGB24, FRAME_RGB_PLANAR, FRAME_GRAY_32F,
                                                  FRAME_BGR_32F, FRAME_BGR_32F_PLANAR};
    return formats;
}

inline Bytes plus(Bytes bytes, int offset) {
    for (int& byte : bytes) {
        byte += offset;
    }
    return bytes;
}

// A producer that claims any layout and writes nothing.
class ClaimingProducer : public IRowProducer {
  public:
    explicit ClaimingProducer(FrameLayout const& layout) : _layout(layout) {}
    static ClaimingProducer ofSize(Size size) {
        return ClaimingProducer(FrameLayout(FRAME_GRAY8, size, 64));
    }
    static ClaimingProducer ofFormat(FrameFormat format) {
        FrameLayout layout(FRAME_GRAY8, {4, 4}, 64);
        layout.format = format;
        return ClaimingProducer(layout);
    }
    static ClaimingProducer withoutPlanes() {
        return ClaimingProducer(FrameLayout(FRAME_FORMAT_NONE, {4, 4}, 64));
    }

    FrameLayout const& layout() override { return _layout; }
    void produce(RowData& /*row*/) override {}
    bool next() override { return false; }

  private:
    FrameLayout _layout;
};

}  // namespace ox::test
