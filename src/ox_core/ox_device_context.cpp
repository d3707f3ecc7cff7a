#include "ox_core/ox_device_context.h"

#include <utility>

namespace ox {

DeviceContext::DeviceContext(std::uint64_t identity, std::shared_ptr<void> state)
    : _identity(identity), _state(std::move(state)) {}

DeviceContext DeviceContext::cpuContext() {
    return {};
}

}  // namespace ox
