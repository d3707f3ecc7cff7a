// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// A number for many bytes.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace ox::test {

// FNV-1a of 64 bits. All NaNs count as the same: which of them an operation gives isn't promised.
class Digest {
  public:
    void add(unsigned char byte) { _value = (_value ^ byte) * 0x100000001B3U; }

    void addBytes(void const* data, std::size_t count) {
        auto const* const bytes = static_cast<unsigned char const*>(data);
        for (std::size_t i = 0; i < count; ++i) {
            add(bytes[i]);
        }
    }

    // Low byte first, on any processor.
    void addNumber(std::uint64_t number) {
        for (int i = 0; i < 8; ++i) {
            add(static_cast<unsigned char>(number >> (8 * i)));
        }
    }

    void addFloat(float value) {
        std::uint32_t bits = 0;
        std::memcpy(&bits, &value, sizeof bits);
        addNumber(std::isnan(value) ? 0x7FC00000U : bits);
    }

    void addHalf(std::uint16_t bits) { addNumber((bits & 0x7FFFU) > 0x7C00U ? 0x7E00U : bits); }

    void addFloats(void const* data, std::size_t count) {
        forEach<float>(data, count, [this](float value) { addFloat(value); });
    }

    void addHalves(void const* data, std::size_t count) {
        forEach<std::uint16_t>(data, count, [this](std::uint16_t bits) { addHalf(bits); });
    }

    std::uint64_t value() const { return _value; }

  private:
    // The elements needn't be aligned.
    template <class Element, class Visitor>
    static void forEach(void const* data, std::size_t count, Visitor visit) {
        for (std::size_t i = 0; i < count; ++i) {
            Element element;
            std::memcpy(&element, static_cast<unsigned char const*>(data) + i * sizeof element,
                        sizeof element);
            visit(element);
        }
    }

    std::uint64_t _value = 0xCBF29CE484222325U;
};

}  // namespace ox::test
