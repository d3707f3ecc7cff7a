// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The routines that fill rows of tensors, of every instruction set that this processor has.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <utility>
#include <vector>

#include "rows/row_targets.h"
#include "rows/yuv_layouts.h"
#include "support/guarded_memory.h"
#include "support/random.h"

namespace ox::test::tensor_routines {

namespace {

using rows::Channels;
using rows::Number;

constexpr std::array numbers{Number::Byte, Number::SignedByte, Number::Half, Number::Float};
constexpr std::array orders{Channels::One, Channels::Planes, Channels::Packed, Channels::Swapped};

std::size_t longest() {
    return emulated() ? 40 : 200;
}

// By the formula in its own words: a sum in 14 fractional bits, rounded to nearest.
std::array<int, 3> bgrOf(rows::YuvMatrix const& matrix, int y, int u, int v) {
    auto const byte = [&](rows::ChromaFactors chroma) {
        int const sum =
            matrix.luma * (y - matrix.luma_zero) + chroma.u * (u - 128) + chroma.v * (v - 128);
        return std::clamp(static_cast<int>(std::floor(sum / 16384.0 + 0.5)), 0, 255);
    };
    return {byte(matrix.blue), byte(matrix.green), byte(matrix.red)};
}

class TensorRoutinesTest : public RowRoutines {
  protected:
    // Channels whose elements are lookups, or shifts of the byte.
    void drawChannels(Number number, bool shifts) {
        for (rows::ChannelNumbers& channel : channels) {
            channel.mean = shifts ? 0.0F : random.real(0.0F, 200.0F);
            channel.scale = shifts ? 1.0F : random.real(-2.0F, 2.0F);
            channel.quant_scale = shifts ? 1.0F : random.real(0.3F, 2.0F);
            bool const moves = number == Number::SignedByte;
            channel.zero_point = moves ? -128.0F : 0.0F;
            channel.fill(number);
            ASSERT_EQ(channel.shifts, shifts && rows::bytesOf(number) == 1);
        }
    }

    // Where channel c of pixel x goes: row of the destination and element in it.
    static std::pair<std::size_t, std::size_t> placeOf(Channels order, std::size_t c,
                                                       std::size_t x) {
        switch (order) {
            case Channels::Planes:
                return {c, x};
            case Channels::Packed:
                return {0, 3 * x + c};
            case Channels::Swapped:
                return {0, 3 * x + 2 - c};
            case Channels::One:
                break;
        }
        return {0, x};
    }

    void check(Number number, Channels order, std::size_t pixels, Guard guard) {
        std::size_t const bytes = rows::bytesOf(number);
        std::size_t const count = order == Channels::One ? 1 : 3;
        std::size_t const planes = order == Channels::Planes ? 3 : 1;
        GuardedMemory row(count * pixels, guard);
        std::generate_n(row.data(), row.size(), [&] { return random.byte(); });
        std::vector<std::unique_ptr<GuardedMemory>> dst;
        std::array<std::uint8_t*, 3> to{};
        for (std::size_t p = 0; p < planes; ++p) {
            dst.push_back(std::make_unique<GuardedMemory>(count / planes * pixels * bytes, guard));
            to[p] = dst[p]->data();
        }
        routines.tensor.normalise[rows::indexOf(number)][rows::indexOf(order)](
            row.data(), pixels, {&channels[0], &channels[1], &channels[2]}, to.data());
        for (std::size_t x = 0; x < pixels; ++x) {
            for (std::size_t c = 0; c < count; ++c) {
                auto const [plane, element] = placeOf(order, c, x);
                std::size_t const byte = row.data()[count * x + c];
                ASSERT_EQ(std::memcmp(dst[plane]->data() + element * bytes,
                                      channels[c].elements.data() + byte * bytes, bytes),
                          0)
                    << "channel " << c << " of pixel " << x << " of " << pixels;
            }
        }
        for (auto const& memory : dst) {
            EXPECT_EQ(memory->touched(), 0);
        }
    }

    void checkMatrix(rows::YuvMatrix const& matrix, LayoutCase const& layout, std::size_t width) {
        Guard const guard = width % 2 == 0 ? Guard::AtEnd : Guard::AtStart;
        YuvPlanes row(layout, width, guard);
        row.draw(random);
        auto const [y, u, v] = row.samples();
        GuardedMemory bgr(3 * width, guard);
        routines.tensor.matrix_to_bgr[indexOf(layout.layout)]({y, u, v}, width, matrix, bgr.data());
        for (std::size_t x = 0; x < width; ++x) {
            std::size_t const chroma = x / layout.pixels_per_chroma;
            std::array<int, 3> const expected =
                bgrOf(matrix, *row.y(x), *row.u(chroma), *row.v(chroma));
            for (std::size_t c = 0; c < 3; ++c) {
                ASSERT_EQ(bgr.data()[3 * x + c], expected[c])
                    << "channel " << c << " of pixel " << x << " of " << width << ", layout "
                    << static_cast<int>(layout.layout);
            }
        }
        EXPECT_EQ(bgr.touched(), 0);
    }

    Random random{3};
    std::array<rows::ChannelNumbers, 3> channels;
};

TEST_P(TensorRoutinesTest, EveryNumberOrderAndWidth) {
    for (Number const number : numbers) {
        for (Channels const order : orders) {
            for (bool const shifts : {false, true}) {
                SCOPED_TRACE(testing::Message() << "number " << static_cast<int>(number)
                                                << ", order " << static_cast<int>(order));
                drawChannels(number, shifts);
                for (std::size_t pixels = 0; pixels <= longest(); ++pixels) {
                    check(number, order, pixels, pixels % 2 == 0 ? Guard::AtEnd : Guard::AtStart);
                }
            }
        }
    }
}

// A channel that needs looking up beside two that don't.
TEST_P(TensorRoutinesTest, AChannelApart) {
    for (std::size_t apart = 0; apart < 3; ++apart) {
        drawChannels(Number::Byte, true);
        channels[apart].mean = 1.0F;
        channels[apart].fill(Number::Byte);  // 0 stays, so that not all bytes are moved
        for (Channels const order : orders) {
            check(Number::Byte, order, longest(), Guard::AtEnd);
        }
    }
}

// Numbers that no table was made for: a mean and a scale far from a byte's.
TEST_P(TensorRoutinesTest, NumbersOfAnyKind) {
    constexpr float kinds[]{0.0F,   -0.0F, 1e-30F, -1e-38F,  3e38F,    -3e38F,
                            257.0F, 1e-5F, -6e-8F, 65504.0F, 5.96e-8F, 0.333F};
    for (float const mean : kinds) {
        for (float const scale : kinds) {
            for (Number const number : {Number::Half, Number::Float}) {
                for (rows::ChannelNumbers& channel : channels) {
                    channel.mean = mean;
                    channel.scale = scale;
                    channel.fill(number);
                }
                for (Channels const order : {Channels::One, Channels::Planes, Channels::Packed}) {
                    check(number, order, longest(), Guard::AtEnd);
                }
            }
        }
    }
}

TEST_P(TensorRoutinesTest, EveryMatrixLayoutAndWidth) {
    for (rows::YuvMatrix const& matrix : {rows::bt601Limited, rows::bt601Full, rows::bt709Limited,
                                          rows::bt709Full, rows::bt2020Limited, rows::bt2020Full}) {
        for (LayoutCase const& layout : yuvLayoutCases) {
            for (std::size_t width = 0; width <= longest(); ++width) {
                checkMatrix(matrix, layout, width);
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(, TensorRoutinesTest, testing::ValuesIn(targetsAndNone()),
                         [](auto const& parameter) { return parameter.param; });

}  // namespace

}  // namespace ox::test::tensor_routines
