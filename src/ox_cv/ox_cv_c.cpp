// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_c.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "ox_core/ox_exception.h"
#include "ox_core/ox_frame_format.h"
#include "ox_cv/ox_impl_c.h"

namespace ox::impl::c {

namespace {

constexpr Place here{"src/ox_cv/ox_cv_c"};

// Memory of the thread's own, so that an exhausted heap can be told as well.
thread_local char last_error[1024];

ox_status keep(ox_status status, char const* text) {
    std::size_t const length = std::min(std::strlen(text), sizeof last_error - 1);
    std::memcpy(last_error, text, length);
    last_error[length] = '\0';
    return status;
}

}  // namespace

ox_status keepError() noexcept {
    try {
        throw;
    } catch (Exception const& error) {
        return keep(static_cast<ox_status>(error.status), error.what());
    } catch (std::bad_alloc const&) {
        return keep(OX_STATUS_CAPACITY_EXCEEDED, "Memory is exhausted.");
    } catch (std::exception const& error) {
        return keep(OX_STATUS_FOREIGN_EXCEPTION, error.what());
    } catch (...) {
        return keep(OX_STATUS_FOREIGN_EXCEPTION, "Unknown exception.");
    }
}

void requireParameter(void const* pointer, char const* name) {
    if (pointer == nullptr) {
        here.fail({StatusNullPointer}, "Parameter '%s' is null.", name);
    }
}

void refuseValue(char const* name, int value) {
    here.fail({StatusInvalidParameter}, "Parameter '%s' is invalid %d.", name, value);
}

}  // namespace ox::impl::c

char const* ox_version(void) {
    return OX_VERSION;
}

char const* ox_last_error(void) {
    return ox::impl::c::last_error;
}

char const* ox_format_name(int32_t format) {
    return ox::toString(static_cast<ox::FrameFormat>(format));
}
