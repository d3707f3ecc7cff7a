// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Work that is done at once, and handed over in order.

#pragma once

#include <condition_variable>
#include <cstddef>
#include <exception>
#include <mutex>

namespace oxcv {

/// Hands out items by their numbers, and lets each thread hand over its item when all items before
/// are done. So what comes out, and which failure comes first, doesn't depend on who is quicker.
class Turns {
  public:
    explicit Turns(std::size_t items) : _items(items) {}

    /// Takes the next item.
    /// @return false if there is none, or work has stopped
    bool take(std::size_t& item);
    /// Waits until it is the item's turn.
    /// @return false if work has stopped
    bool await(std::size_t item);
    /// Ends a turn, and all work if there is no more to do: nobody has the next turn then.
    void pass(bool more);

    /// Ends a turn, and all work.
    /// @param reason thrown by `rethrow`, unless work has stopped before
    void stop(std::exception_ptr reason) noexcept;
    /// After all work: throws what has stopped it.
    void rethrow() const;

  private:
    std::mutex _mutex;
    std::condition_variable _passed;
    std::size_t const _items;
    std::size_t _taken = 0;
    std::size_t _turn = 0;
    bool _stopped = false;
    std::exception_ptr _reason;
};

}  // namespace oxcv
