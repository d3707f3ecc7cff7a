// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Random pictures and recipes through one object, against the plain model.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "model/frame_to_tensor.h"
#include "ox_core/ox_exception.h"
#include "ox_cv/filter_pair.h"
#include "ox_cv/model_bridge.h"
#include "ox_cv/model_recipe.h"
#include "ox_cv/ox_frame_to_tensor.h"
#include "support/guarded_memory.h"

namespace ox::test::tensor_sweep {

namespace {

template <class Value, std::size_t count>
Value oneOf(Random& random, Value const (&values)[count]) {
    return values[random.between(0, static_cast<int>(count) - 1)];
}

void drawShape(Random& random, int most, TensorRecipe& recipe) {
    recipe.width = random.between(1, most);
    recipe.height = random.between(1, most);
    recipe.fit = oneOf(random, {TENSOR_FIT_STRETCH, TENSOR_FIT_LETTERBOX,
                                TENSOR_FIT_LETTERBOX_TOP_LEFT, TENSOR_FIT_CROP});
    recipe.method = static_cast<TensorMethod>(random.between(0, 3));
    recipe.colour = static_cast<TensorColour>(random.between(0, 2));
    recipe.layout = oneIn(random, 2) ? TENSOR_FORMAT_NHWC : TENSOR_FORMAT_NCHW;
    recipe.matrix = static_cast<TensorMatrix>(random.between(0, 3));
    recipe.range = static_cast<TensorRange>(random.between(0, 1));
}

void drawNumbers(Random& random, TensorRecipe& recipe) {
    recipe.element = tensorElements[random.between(0, 3)];
    // Some numbers overflow halves and bytes.
    float const reach = oneOf(random, {1.0F / 255.0F, 1.0F, 3.0F, 1000.0F});
    for (std::size_t c = 0; c < 3; ++c) {
        recipe.mean[c] = oneIn(random, 3) ? 0.0F : random.real(-20.0F, 280.0F);
        recipe.scale[c] = random.real(-reach, reach);
        recipe.bars[c] = random.byte();
    }
    recipe.quantScale = oneIn(random, 3) ? 1.0F : random.real(0.001F, 2.0F);
    recipe.zeroPoint = random.between(-140, 270);
}

void useFilter(FilterPair& filter, Random& random, TensorRecipe& recipe) {
    recipe.kernel = &filter.library();
    recipe.precision = oneIn(random, 2) ? OX_SCALER_FIXED_POINT_8S : OX_SCALER_FIXED_POINT_16S;
}

model::Region drawRegion(Random& random, model::Geometry size) {
    if (oneIn(random, 2)) {
        return {};
    }
    int const x = random.between(0, size.width - 1);
    int const y = random.between(0, size.height - 1);
    // Now and then beyond the frame.
    int const more = oneIn(random, 20) ? 1 : 0;
    return {x, y, random.between(1, size.width - x) + more, random.between(1, size.height - y)};
}

std::size_t bytesOf(TensorDataType element) {
    return element == TENSOR_FLOAT_32 ? 4 : element == TENSOR_FLOAT_16 ? 2 : 1;
}

constexpr unsigned char gap_byte = 0x3C;

// Memory for a picture, with gaps behind its rows, between protected pages.
class Target {
  public:
    Target(TensorRecipe const& recipe, Random& random)
        : _planes(recipe.layout == TENSOR_FORMAT_NCHW && recipe.colour != TENSOR_COLOUR_GRAY ? 3
                                                                                             : 1),
          _height(static_cast<std::size_t>(recipe.height)) {
        std::size_t const channels = recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
        std::size_t const element = bytesOf(recipe.element);
        _row = static_cast<std::size_t>(recipe.width) * element * channels / _planes;
        auto const gap = [&] {
            return element * static_cast<std::size_t>(oneIn(random, 2) ? 0 : random.between(1, 9));
        };
        _row_stride = _row + gap();
        _plane_stride = _row_stride * (_height - 1) + _row + gap();
        _memory.emplace(_plane_stride * (_planes - 1) + _row_stride * (_height - 1) + _row,
                        oneIn(random, 2) ? Guard::AtEnd : Guard::AtStart);
        std::fill_n(_memory->data(), _memory->size(), gap_byte);
    }

    PictureMapping fill(FrameToTensor& to_tensor, Frame const& src, Rect region) {
        return to_tensor.run(src, region, _memory->data(), static_cast<std::int64_t>(_row_stride),
                             static_cast<std::int64_t>(_plane_stride));
    }

    // Whether the rows hold these bytes, and the gaps none.
    testing::AssertionResult holds(std::vector<std::uint8_t> const& bytes) const {
        std::vector<std::uint8_t> expected(_memory->size(), gap_byte);
        std::size_t next = 0;
        for (std::size_t p = 0; p < _planes; ++p) {
            for (std::size_t y = 0; y < _height; ++y, next += _row) {
                std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(next), _row,
                            expected.begin() +
                                static_cast<std::ptrdiff_t>(p * _plane_stride + y * _row_stride));
            }
        }
        for (std::size_t i = 0; i < expected.size(); ++i) {
            if (_memory->data()[i] != expected[i]) {
                return testing::AssertionFailure()
                       << "byte " << i << " is " << int{_memory->data()[i]} << " instead of "
                       << int{expected[i]};
            }
        }
        if (_memory->touched() != 0) {
            return testing::AssertionFailure() << "bytes around it changed";
        }
        return testing::AssertionSuccess();
    }

    bool isUntouched() const {
        return std::all_of(_memory->data(), _memory->data() + _memory->size(),
                           [](unsigned char byte) { return byte == gap_byte; });
    }

  private:
    std::size_t _planes;
    std::size_t _height;
    std::size_t _row = 0;
    std::size_t _row_stride = 0;
    std::size_t _plane_stride = 0;
    std::optional<GuardedMemory> _memory;
};

testing::AssertionResult isAs(PictureMapping const& got, model::TensorMapping const& wanted) {
    model::TensorMapping const mapping{got.source.x,      got.source.y,    got.source.width,
                                       got.source.height, got.inner.x,     got.inner.y,
                                       got.inner.width,   got.inner.height};
    bool const same = mapping == wanted && got.toInputX(7.25) == wanted.toInputX(7.25) &&
                      got.toInputY(-3.0) == wanted.toInputY(-3.0) &&
                      got.toSourceX(7.25) == wanted.toSourceX(7.25) &&
                      got.toSourceY(-3.0) == wanted.toSourceY(-3.0);
    return same ? testing::AssertionSuccess() : testing::AssertionFailure() << "another mapping";
}

struct Sides {
    int source;
    int tensor;
};

// One object meets all of it, so that a trace of an earlier picture would show.
void sweep(Random& random, int count, Sides most, bool by_filters) {
    FrameToTensor to_tensor;
    int filled = 0;
    for (int i = 0; i < count && !testing::Test::HasFailure(); ++i) {
        model::Geometry const geometry{random.between(model::Gray8, model::Yuv444Planar),
                                       random.between(1, most.source),
                                       random.between(1, most.source)};
        model::Image const image = drawImage(random, geometry);
        BridgedFrame const src(image, drawPlacement(random));
        TensorRecipe recipe;
        drawShape(random, most.tensor, recipe);
        drawNumbers(random, recipe);
        auto const& filters = usualFilters();
        FilterPair filter(filters[static_cast<std::size_t>(
            random.between(0, static_cast<int>(filters.size()) - 1))]);
        if (by_filters) {
            useFilter(filter, random, recipe);
        }
        model::Region const region = drawRegion(random, geometry);
        SCOPED_TRACE(describe(geometry) + " to " + std::to_string(recipe.width) + "x" +
                     std::to_string(recipe.height) + ", draw " + std::to_string(i));
        model::TensorPicture const wanted =
            model::frameToTensor(modelOf(recipe, filter), image, region);
        Target target(recipe, random);
        to_tensor.reuse(recipe);
        try {
            PictureMapping const mapping = target.fill(
                to_tensor, src.frame(), {region.x, region.y, region.width, region.height});
            EXPECT_TRUE(wanted.outcome == model::Outcome{});
            EXPECT_TRUE(isAs(mapping, wanted.mapping));
            EXPECT_TRUE(target.holds(wanted.bytes));
            ++filled;
        } catch (Exception const& refusal) {
            EXPECT_EQ(wanted.outcome.status, static_cast<int>(refusal.status)) << refusal.what();
            EXPECT_TRUE(target.isUntouched());
        }
        EXPECT_TRUE(src.holds(image));
    }
    EXPECT_GT(filled, count / 20);
}

TEST(FrameToTensorSweep, TinyPictures) {
    Random random(1511);
    sweep(random, draws(6000), {9, 9}, false);
}

TEST(FrameToTensorSweep, Pictures) {
    Random random(1512);
    sweep(random, draws(1500), {150, 150}, false);
}

TEST(FrameToTensorSweep, ByFilters) {
    Random random(1513);
    sweep(random, draws(3000), {40, 20}, true);
}

}  // namespace

}  // namespace ox::test::tensor_sweep
