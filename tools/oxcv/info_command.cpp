// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cinttypes>
#include <cstdio>

#include "commands.h"
#include "frame_bytes.h"

namespace oxcv {

void printInfo(InputRequest const& input) {
    auto const [kind, reader] = openInput(input);
    StreamInfo const& info = reader->info();
    std::printf("kind     %s\n", std::string(kind->name).c_str());
    std::printf("format   %s%s%s\n", shortName(info.format).c_str(), info.note.empty() ? "" : ", ",
                info.note.c_str());
    std::printf("size     %s\n", toText(info.size).c_str());
    if (info.frames) {
        std::printf("frames   %" PRId64 "\n", *info.frames);
    } else {
        std::printf("frames   unknown\n");
    }
    if (!info.rate.empty()) {
        std::printf("rate     %s\n", info.rate.c_str());
    }
    ox::FrameLayout const layout(info.format, info.size, 1);
    for (int i = 0; i < layout.planeCount; ++i) {
        ox::FramePlane const& plane = layout.plane[i];
        std::printf("plane %d  %dx%d, %u x %u bits, %" PRIu64 " bytes\n", i, plane.width,
                    plane.height, plane.channels, plane.bits, plane.planeBytes);
    }
}

}  // namespace oxcv
