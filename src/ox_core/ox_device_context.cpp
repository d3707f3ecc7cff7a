// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_device_context.h"

#include <utility>

namespace ox {

DeviceContext::DeviceContext(std::uint64_t identity, std::shared_ptr<void> state)
    : _identity(identity), _state(std::move(state)) {}

DeviceContext::DeviceContext(DeviceContext const& other) = default;
DeviceContext& DeviceContext::operator=(DeviceContext const& other) = default;
DeviceContext::~DeviceContext() = default;

DeviceContext::DeviceContext(DeviceContext&& other) noexcept
    : _identity(std::exchange(other._identity, 0)), _state(std::move(other._state)) {}

DeviceContext& DeviceContext::operator=(DeviceContext&& other) noexcept {
    DeviceContext taken(std::move(other));
    std::swap(_identity, taken._identity);
    _state.swap(taken._state);
    return *this;
}

DeviceContext DeviceContext::cpuContext() {
    return {};
}

}  // namespace ox
