// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "turns.h"

#include <utility>

namespace oxcv {

bool Turns::take(std::size_t& item) {
    std::lock_guard const lock(_mutex);
    if (_stopped || _taken == _items) {
        return false;
    }
    item = _taken++;
    return true;
}

bool Turns::await(std::size_t item) {
    std::unique_lock lock(_mutex);
    _passed.wait(lock, [&] { return _stopped || _turn == item; });
    return !_stopped;
}

void Turns::pass(bool more) {
    std::lock_guard const lock(_mutex);
    ++_turn;
    _stopped = _stopped || !more;
    _passed.notify_all();
}

void Turns::stop(std::exception_ptr reason) noexcept {
    std::lock_guard const lock(_mutex);
    if (!_stopped) {
        _stopped = true;
        _reason = std::move(reason);
    }
    _passed.notify_all();
}

void Turns::rethrow() const {
    if (_reason != nullptr) {
        std::rethrow_exception(_reason);
    }
}

}  // namespace oxcv
