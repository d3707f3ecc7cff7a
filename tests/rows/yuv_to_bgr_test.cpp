// The vector routines from YUV to BGR, of every instruction set that this processor has.
#include <array>
#include <memory>

#include "rows/row_targets.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test {

namespace {

using rows::YuvLayout;

std::array<int, 3> bgrOf(int y, int u, int v) {
    int const luma = 297 * (y - 16);
    auto const byte = [](int sum) { return std::clamp(sum, 0, 65535) / 256; };
    return {byte(luma + 516 * (u - 128)), byte(luma - 207 * (v - 128) - 100 * (u - 128)),
            byte(luma + 408 * (v - 128))};
}

// Where the samples of a layout lie: plane, offset and step of Y, U and V.
struct Place {
    std::size_t plane;
    std::size_t offset;
    std::size_t step;
};

struct LayoutCase {
    YuvLayout layout;
    std::size_t pixels_per_chroma;
    Place y;
    Place u;
    Place v;
};

constexpr LayoutCase layouts[]{
    {YuvLayout::HalfPlanes, 2, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}},
    {YuvLayout::PairsUv, 2, {0, 0, 1}, {1, 0, 2}, {1, 1, 2}},
    {YuvLayout::PairsVu, 2, {0, 0, 1}, {1, 1, 2}, {1, 0, 2}},
    {YuvLayout::PackedYuyv, 2, {0, 0, 2}, {0, 1, 4}, {0, 3, 4}},
    {YuvLayout::PackedUyvy, 2, {0, 1, 2}, {0, 0, 4}, {0, 2, 4}},
    {YuvLayout::FullPlanes, 1, {0, 0, 1}, {1, 0, 1}, {2, 0, 1}},
    {YuvLayout::PackedYuv, 1, {0, 0, 3}, {0, 1, 3}, {0, 2, 3}},
};
static_assert(std::size(layouts) == rows::yuvLayouts);

// Random planes of exactly the bytes that a row has.
class YuvRow {
  public:
    YuvRow(LayoutCase const& layout, std::size_t width, Guard guard, Random& random)
        : _layout(layout) {
        for (std::size_t plane = 0; plane < 3; ++plane) {
            _planes[plane] = std::make_unique<GuardedMemory>(bytesOf(plane, width), guard);
            std::generate_n(_planes[plane]->data(), _planes[plane]->size(),
                            [&] { return random.byte(); });
        }
    }

    rows::YuvSamples<std::uint8_t const> samples() const {
        return {at(_layout.y, 0), at(_layout.u, 0), at(_layout.v, 0)};
    }
    std::array<int, 3> bgr(std::size_t x) const {
        std::size_t const chroma = x / _layout.pixels_per_chroma;
        return bgrOf(*at(_layout.y, x), *at(_layout.u, chroma), *at(_layout.v, chroma));
    }

  private:
    // The luma plane's row, or that of chroma samples.
    std::size_t bytesOf(std::size_t plane, std::size_t width) const {
        if (plane == _layout.y.plane) {
            return width * _layout.y.step;
        }
        return (width + _layout.pixels_per_chroma - 1) / _layout.pixels_per_chroma * _layout.u.step;
    }
    std::uint8_t const* at(Place place, std::size_t index) const {
        return _planes[place.plane]->data() + place.offset + index * place.step;
    }

    LayoutCase const& _layout;
    std::array<std::unique_ptr<GuardedMemory>, 3> _planes;
};

class YuvToBgrRoutines : public RowRoutines {
  protected:
    void check(LayoutCase const& layout, std::size_t width, Guard guard) {
        YuvRow const row(layout, width, guard, _random);
        GuardedMemory bgr(3 * width, guard);
        routines.yuv_to_bgr[static_cast<std::size_t>(layout.layout)](row.samples(), width,
                                                                     bgr.data());
        for (std::size_t x = 0; x < width; ++x) {
            std::array<int, 3> const expected = row.bgr(x);
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_EQ(bgr.data()[3 * x + c], expected[c])
                    << "pixel " << x << " of " << width << ", channel " << c << ", layout "
                    << static_cast<int>(layout.layout);
            }
        }
        EXPECT_EQ(bgr.touched(), 0);
    }

  private:
    Random _random{5};
};

TEST_P(YuvToBgrRoutines, EveryLayoutAndWidth) {
    for (LayoutCase const& layout : layouts) {
        std::size_t const step = layout.pixels_per_chroma;
        for (std::size_t more = 0; more <= 140; more += step) {
            check(layout, routines.least_pixels + more,
                  more % 4 == 0 ? Guard::AtEnd : Guard::AtStart);
            if (HasFatalFailure()) {
                return;
            }
        }
    }
}

TEST_P(YuvToBgrRoutines, EveryColour) {
    constexpr std::size_t width = 256;
    int const step = emulated() ? 15 : 1;
    std::array<std::uint8_t, width> y{};
    std::array<std::uint8_t, width> u{};
    std::array<std::uint8_t, width> v{};
    std::array<std::uint8_t, 3 * width> bgr{};
    for (std::size_t x = 0; x < width; ++x) {
        y[x] = static_cast<std::uint8_t>(x);
    }
    for (int cu = 0; cu < 256; cu += step) {
        u.fill(static_cast<std::uint8_t>(cu));
        for (int cv = 0; cv < 256; cv += step) {
            v.fill(static_cast<std::uint8_t>(cv));
            routines.yuv_to_bgr[static_cast<std::size_t>(YuvLayout::FullPlanes)](
                {y.data(), u.data(), v.data()}, width, bgr.data());
            for (std::size_t x = 0; x < width; ++x) {
                std::array<int, 3> const expected = bgrOf(static_cast<int>(x), cu, cv);
                bool const right = bgr[3 * x] == expected[0] && bgr[3 * x + 1] == expected[1] &&
                                   bgr[3 * x + 2] == expected[2];
                ASSERT_TRUE(right) << "Y, U, V " << x << ", " << cu << ", " << cv;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, YuvToBgrRoutines, testing::ValuesIn(vectorTargets()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test
