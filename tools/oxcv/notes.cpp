#include "notes.h"

#include <cstdio>

namespace oxcv {

void Notes::say(std::string const& remark) {
    if (_wanted && _said.insert(remark).second) {
        std::fprintf(stderr, "oxcv: %s\n", remark.c_str());
    }
}

}  // namespace oxcv
