// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv_helpers.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "ox_cv/tensor_chain.h"
#include "support/allocation_counter.h"
#include "support/guarded_memory.h"
#include "support/test_frame.h"

namespace ox::test::frame_to_tensor {

namespace {

constexpr TensorFit fits[]{TENSOR_FIT_STRETCH, TENSOR_FIT_LETTERBOX, TENSOR_FIT_LETTERBOX_TOP_LEFT,
                           TENSOR_FIT_CROP};
constexpr TensorMethod methods[]{TENSOR_METHOD_NEAREST, TENSOR_METHOD_BILINEAR, TENSOR_METHOD_AREA,
                                 TENSOR_METHOD_AUTOMATIC};
constexpr TensorColour colours[]{TENSOR_COLOUR_BGR, TENSOR_COLOUR_RGB, TENSOR_COLOUR_GRAY};
constexpr TensorFormat layouts[]{TENSOR_FORMAT_NCHW, TENSOR_FORMAT_NHWC};
constexpr TensorDataType elements[]{TENSOR_UINT_8, TENSOR_INT_8, TENSOR_FLOAT_16, TENSOR_FLOAT_32};
constexpr TensorMatrix matrices[]{TENSOR_MATRIX_LIBRARY, TENSOR_MATRIX_BT601, TENSOR_MATRIX_BT709,
                                  TENSOR_MATRIX_BT2020};

std::vector<FrameFormat> sources() {
    std::vector<FrameFormat> formats;
    for (unsigned format = FRAME_GRAY8; format <= FRAME_YUV444_PLANAR; ++format) {
        formats.push_back(static_cast<FrameFormat>(format));
    }
    return formats;
}

template <class Value, std::size_t Count>
Value drawn(Random& random, Value const (&values)[Count]) {
    return values[static_cast<std::size_t>(random.between(0, static_cast<int>(Count) - 1))];
}

TensorRecipe recipeOf(Size size) {
    TensorRecipe recipe;
    recipe.width = size.width;
    recipe.height = size.height;
    return recipe;
}

// What only matters once a pixel is there.
void drawNumbers(Random& random, TensorRecipe& recipe) {
    recipe.colour = drawn(random, colours);
    recipe.layout = drawn(random, layouts);
    recipe.element = drawn(random, elements);
    recipe.matrix = drawn(random, matrices);
    recipe.range = random.between(0, 1) == 0 ? TENSOR_RANGE_LIMITED : TENSOR_RANGE_FULL;
    for (int c = 0; c < 3; ++c) {
        recipe.mean[c] = random.real(-20.0F, 200.0F);
        recipe.scale[c] = random.real(-2.0F, 2.0F);
        recipe.bars[c] = random.byte();
    }
    recipe.quantScale = random.real(0.2F, 3.0F);
    recipe.zeroPoint = random.between(-20, 150);
}

// One object for all tests of a program, so that anything that is left of a picture would show.
FrameToTensor& subject() {
    static FrameToTensor object;
    return object;
}

struct Gaps {
    std::int64_t row = 0;      // in elements
    std::int64_t channel = 0;  // in elements
};

// A picture in the caller's memory, with gaps between rows and planes.
class Picture {
  public:
    Picture(TensorRecipe const& recipe, Gaps gaps)
        : _recipe(recipe), _element(static_cast<std::int64_t>(elementBytes(recipe.element))) {
        _channels = recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
        _planes = recipe.layout == TENSOR_FORMAT_NCHW ? _channels : 1;
        _row_bytes = recipe.width * _element * _channels / _planes;
        row_stride = _row_bytes + gaps.row * _element;
        channel_stride = row_stride * recipe.height + gaps.channel * _element;
        std::int64_t const last = (_planes - 1) * channel_stride + (recipe.height - 1) * row_stride;
        _memory = std::make_unique<GuardedMemory>(static_cast<std::size_t>(last + _row_bytes),
                                                  Guard::AtEnd);
        std::memset(_memory->data(), gapByte, _memory->size());
    }

    unsigned char* data() const { return _memory->data(); }

    // The rows, one behind the other; bytes in between must be as they were.
    std::vector<std::uint8_t> rows() const {
        std::vector<std::uint8_t> bytes;
        std::vector<unsigned char> rest(_memory->data(), _memory->data() + _memory->size());
        for (std::int64_t p = 0; p < _planes; ++p) {
            for (std::int64_t y = 0; y < _recipe.height; ++y) {
                auto const row = rest.begin() + p * channel_stride + y * row_stride;
                bytes.insert(bytes.end(), row, row + _row_bytes);
                std::fill_n(row, _row_bytes, gapByte);
            }
        }
        EXPECT_EQ(std::count(rest.begin(), rest.end(), gapByte), std::ssize(rest)) << "gaps";
        EXPECT_EQ(_memory->touched(), 0);
        return bytes;
    }

    bool isUntouched() const {
        return std::count(data(), data() + _memory->size(), gapByte) ==
               static_cast<std::ptrdiff_t>(_memory->size());
    }

    std::int64_t row_stride = 0;
    std::int64_t channel_stride = 0;

  private:
    static constexpr unsigned char gapByte = 0x6B;
    TensorRecipe _recipe;
    std::int64_t _element;
    std::int64_t _channels = 0;
    std::int64_t _planes = 0;
    std::int64_t _row_bytes = 0;
    std::unique_ptr<GuardedMemory> _memory;
};

// The status and text of what was thrown, or nothing.
template <class Action>
std::string failureOf(Action action) {
    try {
        action();
    } catch (Exception const& exception) {
        return std::to_string(exception.status) + " " + exception.what();
    }
    return {};
}

void compareWithChain(TensorRecipe const& recipe, Frame const& src, Rect region, Gaps gaps = {}) {
    SCOPED_TRACE(describe(src.format(), src.size()) + " from " + std::to_string(region.x) + "," +
                 std::to_string(region.y) + " " + std::to_string(region.width) + "x" +
                 std::to_string(region.height) + " to " + describe(recipe));
    ChainResult expected;
    Rect const read = region.empty() ? Rect{0, 0, src.width(), src.height()} : region;
    std::string const refused = failureOf([&] { expected = runChain(recipe, src, read); });
    Picture const picture(recipe, gaps);
    subject().reuse(recipe);
    PictureMapping mapping;
    std::string const failure = failureOf([&] {
        mapping =
            subject().run(src, region, picture.data(), picture.row_stride, picture.channel_stride);
    });
    ASSERT_EQ(failure, refused);
    if (!refused.empty()) {
        EXPECT_TRUE(picture.isUntouched());
        return;
    }
    EXPECT_EQ(mapping.source, expected.source);
    EXPECT_EQ(mapping.inner, expected.inner);
    std::vector<std::uint8_t> const got = picture.rows();
    ASSERT_EQ(got.size(), expected.bytes.size());
    auto const [at, other] = std::mismatch(got.begin(), got.end(), expected.bytes.begin());
    ASSERT_TRUE(at == got.end()) << "byte " << at - got.begin() << " is " << int{*at}
                                 << ", expected " << int{*other};
}

Rect drawnRegion(Random& random, Size size) {
    if (random.between(0, 2) == 0) {
        return {};
    }
    int const x = random.between(0, size.width - 1);
    int const y = random.between(0, size.height - 1);
    return {x, y, random.between(1, size.width - x), random.between(1, size.height - y)};
}

class OfFormat : public testing::TestWithParam<FrameFormat> {
  protected:
    void compare(Size src_size, Size dst_size, TensorFit fit, TensorMethod method, bool by_kernel) {
        TensorRecipe recipe = recipeOf(dst_size);
        recipe.fit = fit;
        recipe.method = method;
        recipe.kernel = by_kernel ? &_kernel : nullptr;
        recipe.precision =
            random.between(0, 1) == 0 ? OX_SCALER_FIXED_POINT_8S : OX_SCALER_FIXED_POINT_16S;
        drawNumbers(random, recipe);
        TestFrame const src(GetParam(), src_size, random,
                            {static_cast<std::size_t>(random.between(0, 3)), Guard::AtEnd});
        compareWithChain(recipe, src.frame(), drawnRegion(random, src_size),
                         {random.between(0, 2), random.between(0, 2)});
    }

    Random random{20 + static_cast<std::uint64_t>(GetParam())};
    BoxKernel _kernel;
};

TEST_P(OfFormat, SmallSizes) {
    int const most = emulated() ? 3 : 9;
    for (TensorFit const fit : fits) {
        for (int i = 0; i < 4 * most * most; ++i) {
            Size const src{random.between(1, most), random.between(1, most)};
            Size const dst{random.between(1, most), random.between(1, most)};
            for (TensorMethod const method : methods) {
                compare(src, dst, fit, method, false);
            }
            compare(src, dst, fit, TENSOR_METHOD_NEAREST, true);
        }
    }
}

TEST_P(OfFormat, LargerSizes) {
    for (int i = 0; i < (emulated() ? 1 : 12); ++i) {
        Size const src{random.between(20, 260), random.between(10, 60)};
        Size const dst{random.between(1, 220), random.between(1, 50)};
        for (TensorFit const fit : fits) {
            for (TensorMethod const method : methods) {
                compare(src, dst, fit, method, false);
            }
            compare(src, dst, fit, TENSOR_METHOD_NEAREST, true);
            compare(dst, dst, fit, drawn(random, methods), false);
            compare(dst, dst, fit, TENSOR_METHOD_NEAREST, true);
        }
    }
}

TEST_P(OfFormat, EveryColourLayoutElementAndMatrix) {
    TestFrame const src(GetParam(), {75, 13}, random);
    for (Size const size : {Size{75, 13}, Size{38, 20}}) {
        for (TensorColour const colour : colours) {
            for (TensorMatrix const matrix : matrices) {
                for (TensorRange const range : {TENSOR_RANGE_LIMITED, TENSOR_RANGE_FULL}) {
                    for (TensorFormat const layout : layouts) {
                        for (TensorDataType const element : elements) {
                            TensorRecipe recipe = recipeOf(size);
                            drawNumbers(random, recipe);
                            recipe.fit = TENSOR_FIT_LETTERBOX;
                            recipe.colour = colour;
                            recipe.matrix = matrix;
                            recipe.range = range;
                            recipe.layout = layout;
                            recipe.element = element;
                            compareWithChain(recipe, src.frame(), {});
                        }
                    }
                }
            }
        }
    }
}

// The frame's own storage stays free for its `reuse`.
TEST_P(OfFormat, KeepsNoShareOfTheFrame) {
    Frame src;
    src.reuse(GetParam(), {16, 8}, DeviceContext(), 0);
    fill(src, 7);
    TensorRecipe const recipe = recipeOf({5, 3});
    subject().reuse(recipe);
    Tensor dst;
    dst.reuse(subject().layout(1), DeviceContext());
    subject().run(src, {}, dst, 0);
    unsigned char const* const pixels = src.planeData(0);
    src.reuse(GetParam(), {8, 8}, DeviceContext(), 0);
    EXPECT_EQ(src.planeData(0), pixels);
}

TEST_P(OfFormat, AllocatesNothingFromTheSecondPictureOn) {
    TestFrame const src(GetParam(), {90, 40}, random);
    for (TensorMethod const method : methods) {
        for (bool const by_kernel : {false, true}) {
            TensorRecipe recipe = recipeOf({30, 12});
            recipe.fit = TENSOR_FIT_LETTERBOX;
            recipe.method = method;
            recipe.kernel = by_kernel ? &_kernel : nullptr;
            recipe.colour = drawn(random, colours);
            FrameToTensor object;
            object.reuse(recipe);
            Tensor dst;
            dst.reuse(object.layout(2), DeviceContext());
            object.run(src.frame(), {}, dst, 0);
            std::uint64_t const before = allocationCalls();
            object.run(src.frame(), {}, dst, 1);
            object.reuse(recipe);
            object.run(src.frame(), {}, dst, 0);
            EXPECT_EQ(allocationCalls(), before) << describe(recipe);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(FrameToTensor, OfFormat, testing::ValuesIn(sources()),
                         [](auto const& parameter) {
                             return std::string(toString(parameter.param));
                         });

}  // namespace

}  // namespace ox::test::frame_to_tensor
