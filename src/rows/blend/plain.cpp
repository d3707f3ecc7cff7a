#include "rows/blend/plain.h"

#include "rows/rows_routines.h"

namespace ox::rows {

namespace {

template <class Sample>
void blendSamples(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                  std::size_t samples, std::uint8_t* dst) {
    auto const count = static_cast<std::int64_t>(samples);
    for (std::int64_t i = 0; i < count; ++i) {
        storeSample<Sample>(
            dst, i, blend(loadSample<Sample>(upper, i), loadSample<Sample>(lower, i), weight));
    }
}

}  // namespace

void blendPlainRows(std::uint8_t const* upper, std::uint8_t const* lower, std::uint16_t weight,
                    std::size_t bytes, std::uint8_t* dst) {
    blendSamples<std::uint8_t>(upper, lower, weight, bytes, dst);
}

BlendRows* chooseBlendRows(Element element) {
    switch (element.bits) {
        case 8:
            return routines().blend.blend_rows;
        case 16:
            return blendSamples<std::uint16_t>;
        default:
            return blendSamples<std::uint32_t>;
    }
}

void takePlainBlendRoutines(BlendRoutines& routines) {
    routines.compile_blend = [](BlendAxis const& /*axis*/, BlendProgram& /*program*/) {
        return false;
    };
    routines.blend_rows = blendPlainRows;
}

}  // namespace ox::rows
