// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_row_copier.h"

#include "ox_core/ox_impl_place.h"

namespace ox {

namespace {

constexpr impl::Place here{"src/ox_cv/ox_row_copier"};

}  // namespace

RowCopier::~RowCopier() = default;

void RowCopier::reuse(Frame const& src_frame) {
    OX_ASSERT(src_frame.initialized());
    _layout = src_frame.layout();
    _reader.reuse(src_frame);
    _producer = nullptr;
}

void RowCopier::reuse(IRowProducer& src_producer) {
    OX_ASSERT(!src_producer.layout().size.empty());
    _layout = src_producer.layout();
    _producer = &src_producer;
    _reader.clear();
}

void RowCopier::clear() {
    _layout.clear();
    _reader.clear();
    _producer = nullptr;
}

void RowCopier::produce(RowData& row) {
    if (_producer != nullptr) {
        _producer->produce(row);
    } else if (_reader.row < _reader.height) {
        copyRowData(_layout, _reader.rows, row);
    }
}

bool RowCopier::next() {
    return _producer != nullptr ? _producer->next() : _reader.next();
}

}  // namespace ox
