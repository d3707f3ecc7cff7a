// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_core/ox_frame_format.h"

#include "ox_core/ox_impl_format_facts.h"

namespace ox {

char const* toString(FrameFormat format) {
    bool const known = static_cast<std::size_t>(format) < impl::formatTable.size();
    return known ? impl::factsOf(format).name : impl::FormatFacts{}.name;
}

}  // namespace ox
