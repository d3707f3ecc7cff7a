#include "ox_core/ox_device_context.h"

#include <utility>

namespace ox {

DeviceContext::DeviceContext(std::uint64_t identity, std::shared_ptr<void> state)
    : _identity(identity), _state(std::move(state)) {}

DeviceContext::DeviceContext(DeviceContext const& other) = default;
DeviceContext::DeviceContext(DeviceContext&& other) noexcept = default;
DeviceContext& DeviceContext::operator=(DeviceContext const& other) = default;
DeviceContext& DeviceContext::operator=(DeviceContext&& other) noexcept = default;
DeviceContext::~DeviceContext() = default;

DeviceContext DeviceContext::cpuContext() {
    return {};
}

}  // namespace ox
