// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_cv_backend.h"

namespace ox {

ICvBackend::~ICvBackend() = default;

}  // namespace ox
