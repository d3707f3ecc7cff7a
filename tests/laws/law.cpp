// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "laws/law.h"

namespace ox::test {

FrameFormat drawFormat(Random& random) {
    static std::vector<FrameFormat> const formats = allFormats();
    return formats[static_cast<std::size_t>(
        random.between(0, static_cast<int>(formats.size()) - 1))];
}

FrameFormat drawByteFormat(Random& random) {
    constexpr FrameFormat formats[]{FRAME_GRAY8,  FRAME_RGB24, FRAME_BGR24,
                                    FRAME_YUV444, FRAME_C2_8U, FRAME_C4_8U};
    return formats[random.between(0, 5)];
}

Size drawSize(Random& random, int longest) {
    return {random.between(1, longest), random.between(1, longest)};
}

Rect drawRegion(Random& random, Size size) {
    int const x = random.between(0, size.width - 1);
    int const y = random.between(0, size.height - 1);
    return {x, y, random.between(1, size.width - x), random.between(1, size.height - y)};
}

ResizeMethod drawMethod(Random& random) {
    return static_cast<ResizeMethod>(random.between(0, ResizeArea));
}

TestFrame drawPicture(FrameFormat format, Size size, Random& random, std::size_t gap) {
    TestFrame picture(format, size, Placement{gap, Guard::None});
    fillFloats(picture.frame(), random, -300, 300);
    return picture;
}

}  // namespace ox::test
