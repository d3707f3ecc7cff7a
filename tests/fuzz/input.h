// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The bytes of an input as decisions, one after the other.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

#include "support/random.h"

namespace ox::fuzz {

// Behind its end an input goes on with zeros, so that every input makes a whole run. Small changes
// of an input are small changes of a run: every decision takes a fixed number of bytes.
class Input {
  public:
    explicit Input(std::span<std::uint8_t const> bytes) : _bytes(bytes) {}

    bool atEnd() const { return _at >= _bytes.size(); }

    std::uint8_t byte() { return atEnd() ? std::uint8_t{0} : _bytes[_at++]; }

    template <class Number>
    Number number() {
        std::uint8_t raw[sizeof(Number)];
        for (std::uint8_t& each : raw) {
            each = byte();
        }
        Number value;
        std::memcpy(&value, raw, sizeof value);
        return value;
    }

    // Both ends included.
    int between(int low, int high) {
        auto const count = static_cast<std::uint64_t>(std::int64_t{high} - low + 1);
        std::uint64_t const drawn = count <= 256     ? number<std::uint8_t>()
                                    : count <= 65536 ? number<std::uint16_t>()
                                                     : number<std::uint32_t>();
        return static_cast<int>(low + static_cast<std::int64_t>(drawn % count));
    }

    // In [low, high].
    float real(float low, float high) {
        return low + (high - low) * (static_cast<float>(number<std::uint16_t>()) / 65535.0F);
    }

    // False behind the end, so that loops which go on by it end.
    bool oneIn(int count) { return !atEnd() && byte() % count == 0; }

    template <class Values>
    auto const& pick(Values const& values) {
        return values[static_cast<std::size_t>(
            between(0, static_cast<int>(std::size(values)) - 1))];
    }

    // Pixels would use an input up: they are random numbers, whose kind and seed it gives.
    test::Random random() { return test::Random(number<std::uint16_t>()); }

    void fill(std::span<std::uint8_t> bytes) {
        std::uint8_t const kind = byte();
        test::Random numbers = random();
        for (std::uint8_t& each : bytes) {
            std::uint8_t const drawn = numbers.byte();
            each = kind % 4 == 0 ? (drawn < 128 ? std::uint8_t{0} : std::uint8_t{255}) : drawn;
        }
    }

    // What is left.
    std::span<std::uint8_t const> rest() {
        std::span<std::uint8_t const> const left = _bytes.subspan(std::min(_at, _bytes.size()));
        _at = _bytes.size();
        return left;
    }

  private:
    std::span<std::uint8_t const> _bytes;
    std::size_t _at = 0;
};

}  // namespace ox::fuzz
