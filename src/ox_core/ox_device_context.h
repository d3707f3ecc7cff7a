// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

/// @file
/// Which device a piece of memory belongs to.

#pragma once

#include <cstdint>
#include <memory>

#include "ox_core/ox_api.h"

namespace ox {

/// An identity word and a shared state that is opaque here. Contexts are equal when their identity
/// words are; the state isn't compared. The CPU's identity is 0.
class OX_API DeviceContext {
  public:
    /// The CPU context.
    DeviceContext() = default;
    /// The context of another device; copies share `state`.
    DeviceContext(std::uint64_t identity, std::shared_ptr<void> state);
    DeviceContext(DeviceContext const& other);
    /// Takes the state over: `other` is then the CPU context, as newly made.
    DeviceContext(DeviceContext&& other) noexcept;
    DeviceContext& operator=(DeviceContext const& other);
    /// The same; a context moved to itself stays.
    DeviceContext& operator=(DeviceContext&& other) noexcept;
    ~DeviceContext();

    static DeviceContext cpuContext();

    bool operator==(DeviceContext const& other) const { return _identity == other._identity; }
    bool operator!=(DeviceContext const& other) const { return !(*this == other); }

  private:
    std::uint64_t _identity = 0;
    std::shared_ptr<void> _state;
};

}  // namespace ox
