// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Producers of a caller's own that give another layout each time they are asked: links refuse them,
// since their tables would be for other rows than those that their window has.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_format_converter.h"
#include "ox_cv/ox_scaler.h"
#include "ox_cv/ox_scaler_area.h"
#include "ox_cv/ox_scaler_bilinear.h"
#include "ox_cv/ox_scaler_convolutional.h"
#include "ox_cv/ox_scaler_nn.h"
#include "ox_cv/scaler_rows.h"
#include "support/exceptions.h"

namespace ox::test {
namespace {

/// Shows the first layout a number of times, then the second, in the same object.
class Changing : public IRowProducer {
  public:
    Changing(FrameLayout first, FrameLayout second, int first_count)
        : _shown(std::move(first)), _second(std::move(second)), _left(first_count) {}

    FrameLayout const& layout() override {
        if (_left-- <= 0) {
            _shown = _second;
        }
        return _shown;
    }
    bool next() override { return true; }
    void produce(RowData& rows) override {
        for (int i = 0; i < _shown.planeCount; ++i) {
            if (rows[i] != nullptr) {
                std::memset(rows[i], 77, _shown.plane[i].rowBytes);
            }
        }
    }

  private:
    FrameLayout _shown;
    FrameLayout _second;
    int _left;
};

FrameLayout const largeRows(FRAME_BGR24, {400, 40}, 1);
FrameLayout const fewRows(FRAME_BGR24, {400, 4}, 1);
FrameLayout const narrowRows(FRAME_BGR24, {5, 40}, 1);
FrameLayout const grayRows(FRAME_GRAY8, {400, 40}, 1);
FrameLayout emptyRows() {
    FrameLayout layout = largeRows;
    layout.size = {0, 0};
    return layout;
}

FrameLayout paddedRows() {
    FrameLayout layout = narrowRows;
    layout.plane[0].rowBytes = 1200;
    layout.plane[0].stride = 1200;
    return layout;
}

/// What a link yields of a source that stays as it is.
template <class Link, class... Target>
Rows honestRows(FrameLayout const& layout, Target&&... target) {
    Changing honest(layout, layout, 0);
    Link link;
    link.reuse(honest, target...);
    return rowsOf(pump(link));
}

/// Whatever the moment of the change, the link yields the rows of one of the layouts or refuses; it
/// does refuse at one moment at least, and serves an honest source afterwards.
template <class Link, class... Target>
void expectRefused(FrameLayout const& first, FrameLayout const& second, Target&&... target) {
    Rows const of_first = honestRows<Link>(first, target...);
    Rows const of_second = honestRows<Link>(second, target...);
    int refused = 0;
    for (int count = 0; count < 8; ++count) {
        SCOPED_TRACE(count);
        Changing producer(first, second, count);
        Link link;
        try {
            link.reuse(producer, target...);
        } catch (Exception const& failure) {
            ++refused;
            // A window that is higher than the picture is refused before.
            if (failure.status != StatusOutOfRange) {
                EXPECT_EQ(failure.status, StatusInvalidParameter);
                EXPECT_TRUE(std::string(failure.what()).find("layout has changed") !=
                            std::string::npos)
                    << failure.what();
            }
            Changing honest(second, second, 0);
            link.reuse(honest, target...);
            EXPECT_EQ(rowsOf(pump(link)), of_second);
            continue;
        }
        Rows const rows = rowsOf(pump(link));
        EXPECT_TRUE(rows == of_first || rows == of_second);
    }
    EXPECT_GT(refused, 0);
}

template <class Link, class... Target>
void expectEachRefused(Target&&... target) {
    using Pair = std::pair<FrameLayout, FrameLayout>;
    for (auto const& [a, b] : {Pair(largeRows, fewRows), Pair(largeRows, narrowRows),
                               Pair(largeRows, grayRows), Pair(narrowRows, paddedRows())}) {
        expectRefused<Link>(a, b, target...);
        expectRefused<Link>(b, a, target...);
    }
}

TEST(ChangingLayout, IsRefusedByLinksAlongRows) {
    expectEachRefused<ScalerAreaX>(3, OX_SCALER_FIXED_POINT_16S);
    expectEachRefused<ScalerBilinearX>(7);
}

TEST(ChangingLayout, IsRefusedByLinksAlongColumns) {
    expectEachRefused<ScalerAreaY>(2, OX_SCALER_FIXED_POINT_16S);
    expectEachRefused<ScalerBilinearY>(3);
}

TEST(ChangingLayout, IsRefusedByLinksOfBoth) {
    expectEachRefused<ScalerNearestNeighbor>(Size{3, 2});
    expectEachRefused<ScalerBilinearXY>(Size{7, 3});
    expectEachRefused<Scaler>(Size{3, 2}, OX_SCALE_AREA);
}

/// `ScalerConvolutional` with a kernel and a precision, armed as other links are.
class Filter : public ScalerConvolutional {
  public:
    void reuse(IRowProducer& source, Size size) {
        ScalerConvolutional::reuse(_kernel, source, size, OX_SCALER_FIXED_POINT_8S);
    }

  private:
    TriangleKernel _kernel;
};

TEST(ChangingLayout, IsRefusedByFilters) {
    FrameLayout const narrower(FRAME_BGR24, {390, 30}, 1);
    expectRefused<Filter>(largeRows, narrower, Size{100, 10});
    expectRefused<Filter>(narrower, largeRows, Size{100, 10});
    expectRefused<Filter>(grayRows, largeRows, Size{100, 10});
}

TEST(ChangingLayout, IsRefusedWhereItBecomesEmpty) {
    for (int count = 0; count < 3; ++count) {  // asked by the check, for the tables, by the window
        SCOPED_TRACE(count);
        Changing producer(largeRows, emptyRows(), count);
        EXPECT_THROW(ScalerAreaX().reuse(producer, 3, OX_SCALER_FIXED_POINT_16S), Exception);
    }
}

TEST(ChangingLayout, IsRefusedByConverters) {
    expectRefused<FormatConverter>(largeRows, narrowRows, FRAME_I420);
    expectRefused<FormatConverter>(narrowRows, largeRows, FRAME_I420);
    expectRefused<FormatConverter>(largeRows, fewRows, FRAME_NV12);
    expectRefused<FormatConverter>(grayRows, largeRows, FRAME_YUV444_PLANAR);
}

}  // namespace
}  // namespace ox::test
