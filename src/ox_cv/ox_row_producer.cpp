// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_producer.h"

#include <cstring>

#include "ox_cv/ox_impl_rules.h"
#include "ox_cv/ox_row_writer.h"

namespace ox {

IRowProducer::~IRowProducer() = default;

void copyRowData(FrameLayout const& layout, RowData const& src, RowData& dst) {
    for (int i = 0; i < layout.planeCount; ++i) {
        if (dst[i] != nullptr) {
            // A frame may be copied onto itself.
            std::memmove(dst[i], src[i], layout.plane[i].rowBytes);
        }
    }
}

void produceFrame(IRowProducer& producer, Frame& frame) {
    RowWriter writer;
    FrameLayout const& layout = producer.layout();
    if (!frame.initialized() || frame.size() != layout.size || frame.format() != layout.format) {
        frame.reuse(layout.format, layout.size, DeviceContext(), 0);
        if (impl::hasShortAreaRows(layout.format)) {
            frame.setZero();  // so that unwritten bytes don't show old memory
        }
    }
    writer.reuse(frame);
    do {
        producer.produce(writer.rows);
        producer.next();
    } while (writer.next());
}

}  // namespace ox
