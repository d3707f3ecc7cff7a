// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The vertical pass of convolutional scaling over small pictures.
#pragma once

#include <gtest/gtest.h>

#include "ox_cv/ox_impl_scale_conv_y.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test {

// Rows of a single sample.
inline Rows column(Bytes const& samples) {
    Rows rows;
    for (int const sample : samples) {
        rows.push_back({sample});
    }
    return rows;
}

inline Rows const eightRows = column({10, 20, 30, 40, 50, 60, 70, 80});

template <class Weight>
class ScaleYTest : public testing::Test {
  protected:
    using Scaler = impl::ScaleY<Weight>;

    Frame armed(TestFrame const& src, IKernel& filter, int height) {
        ProbeProducer probe(src.frame());
        scaler.reuse(filter, probe, height);
        return pump(scaler);
    }

    Rows armedRows(Rows const& rows, int height) {
        return rowsOf(armed(grayPicture(rows), box, height));
    }

    // What a fresh pass makes of a frame.
    static Frame down(TestFrame const& src, IKernel& filter, int height) {
        ProbeProducer probe(src.frame());
        Scaler fresh;
        fresh.reuse(filter, probe, height);
        return pump(fresh);
    }

    // The first plane's current row, of a single sample.
    int sample() {
        unsigned char byte = 0;
        RowData row{{&byte, nullptr, nullptr, nullptr}};
        scaler.produce(row);
        return byte;
    }

    void expectUnarmed() {
        RowData row{};
        EXPECT_FALSE(scaler.initialized());
        expectException(StatusNotInitialized, "The scaler is not initialized.",
                        [&] { scaler.produce(row); });
    }

    BoxKernel box;
    Scaler scaler;
};

}  // namespace ox::test
