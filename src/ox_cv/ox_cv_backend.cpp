#include "ox_cv/ox_cv_backend.h"

namespace ox {

ICvBackend::~ICvBackend() = default;

}  // namespace ox
