// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The horizontal pass of convolutional scaling over small pictures.
#pragma once

#include <gtest/gtest.h>

#include "ox_cv/ox_impl_scale_conv_x.h"
#include "ox_cv/scaler_rows.h"
#include "ox_cv/test_kernels.h"
#include "support/exceptions.h"
#include "support/producer_contract.h"

namespace ox::test {

template <class Weight>
class ScaleXTest : public testing::Test {
  protected:
    using Scaler = impl::ScaleX<Weight>;

    // What a fresh pass makes of a frame.
    static Frame across(Frame const& src, IKernel& kernel, int width) {
        Scaler scaler;
        scaler.reuse(kernel, src, width);
        return pump(scaler);
    }

    Rows armedRows(TestFrame const& src, int width) {
        scaler.reuse(box, src.frame(), width);
        return rowsOf(pump(scaler));
    }

    void expectUnarmed() {
        RowData row{};
        expectException(StatusNotInitialized,
                        "Failure in ScaleX::produce(...): the scaler is not initialized.",
                        [&] { scaler.produce(row); });
        EXPECT_FALSE(scaler.next());
    }

    BoxKernel box;
    Scaler scaler;
};

}  // namespace ox::test
