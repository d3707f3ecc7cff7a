// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Camera frames made into what networks take. `FrameToTensor` stands in the pipeline's column, the
// same by several calls of the vector backend in the other.

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "camera_peers.h"
#include "operation.h"
#include "ox_cv/ox_cv.h"
#include "ox_cv/ox_impl_rules.h"
#include "pictures.h"
#include "roads.h"

namespace ox::benchmarks {

namespace {

/// What a caller without `FrameToTensor` does: whole pictures between the steps, planes in B,G,R,
/// one factor for all channels. Other numbers, therefore, but no less work than is needed.
class SeveralCalls {
  public:
    explicit SeveralCalls(CameraTask const& task)
        : _task(task),
          _region(getRegion(*task.src, task.mapping.source)),
          _small(blankPicture(task.src->format(),
                              {task.mapping.inner.width, task.mapping.inner.height})),
          _packed(blankPicture(FRAME_BGR24, {task.recipe.width, task.recipe.height})),
          _inside(getRegion(*_packed, task.mapping.inner)),
          _result(blankPicture(
              task.recipe.element == TENSOR_UINT_8 ? FRAME_RGB24 : FRAME_BGR_32F_PLANAR,
              _packed->size())),
          _halves(static_cast<std::size_t>(3 * task.recipe.width * task.recipe.height)) {
        _vectors.setIntProperty(PropertyResizeMethod, static_cast<int>(task.recipe.method));
    }

    void run() {
        scale();
        colours().colorCvt(*_small, _inside, Rect{0, 0, _small->width(), _small->height()});
        paintBars();
        _vectors.colorCvt(*_packed, *_result, Rect{});
        TensorDataType const element = _task.recipe.element;
        if (element != TENSOR_UINT_8) {
            _vectors.add(*_result, -_task.recipe.mean[0], Rect{});
            _vectors.mul(*_result, _task.recipe.scale[0], Rect{});
        }
        if (element == TENSOR_FLOAT_16) {
            auto const* const floats = reinterpret_cast<float const*>(_result->planeData(0));
            convertFp32ToFp16(floats, _halves.size(), _halves.data());
        }
    }

  private:
    void scale() {
        if (_small->format() == FRAME_YUYV) {
            _packed_resizer.resize(_vectors, _region, *_small);
        } else {
            _vectors.resize(_region, *_small, Rect{}, Rect{});
        }
    }

    ICvBackend& colours() {
        if (impl::vectorConverts(_small->format(), FRAME_BGR24)) {
            return _vectors;
        }
        return _pipeline;
    }

    /// Bars are gray.
    void paintBars() {
        Rect const inner = _task.mapping.inner;
        std::int64_t const stride = _packed->layout().plane[0].stride;
        auto const paint = [&](int from, int to) {
            std::memset(_packed->planeData(0) + from * stride, _task.recipe.bars[0],
                        static_cast<std::size_t>((to - from) * stride));
        };
        paint(0, inner.y);
        paint(inner.y + inner.height, _packed->height());
    }

    CameraTask _task;
    CvBackendSimd _vectors;
    CvBackendBase _pipeline;
    Packed422Resizer _packed_resizer;
    Frame _region;
    Picture _small;
    Picture _packed;
    Frame _inside;
    Picture _result;
    std::vector<unsigned short> _halves;
};

/// A tensor of one picture, and what fills it.
struct OnePass {
    FrameToTensor to_tensor;
    Tensor tensor;

    explicit OnePass(TensorRecipe const& recipe) {
        to_tensor.reuse(recipe);
        tensor.reuse(to_tensor.layout(1), DeviceContext::cpuContext());
    }
};

/// What the class makes is right if it is what it makes without vector code.
Road onePassRoad(CameraTask const& task) {
    auto const pass = std::make_shared<OnePass>(task.recipe);
    auto const run = [=] { pass->to_tensor.run(*task.src, Rect{}, pass->tensor, 0); };
    auto const is_right = [=] {
        PlainLoops const plain;
        OnePass expected(task.recipe);
        expected.to_tensor.run(*task.src, Rect{}, expected.tensor, 0);
        return std::memcmp(pass->tensor.data(), expected.tensor.data(),
                           expected.tensor.layout().totalBytes()) == 0;
    };
    return {pipelineRoad, run, is_right};
}

struct NamedRecipe {
    char const* name;
    TensorRecipe recipe;
};

std::vector<NamedRecipe> recipesOf(TensorMethod method) {
    TensorRecipe letterbox;
    letterbox.width = letterbox.height = 640;
    letterbox.fit = TENSOR_FIT_LETTERBOX;
    letterbox.method = method;
    std::fill_n(letterbox.bars, 3, std::uint8_t{114});
    std::fill_n(letterbox.scale, 3, 1.0F / 255.0F);
    TensorRecipe crop;
    crop.width = crop.height = 224;
    crop.fit = TENSOR_FIT_CROP;
    crop.method = method;
    crop.element = TENSOR_FLOAT_16;
    std::fill_n(crop.mean, 3, 127.5F);
    std::fill_n(crop.scale, 3, 1.0F / 58.0F);
    TensorRecipe stretch;
    stretch.width = stretch.height = 300;
    stretch.method = method;
    stretch.layout = TENSOR_FORMAT_NHWC;
    stretch.element = TENSOR_UINT_8;
    return {{"640x640 float planes", letterbox},
            {"224x224 half planes", crop},
            {"300x300 packed bytes", stretch}};
}

Operation cameraToTensor(FrameFormat format, Size size, NamedRecipe const& named) {
    TensorRecipe const& recipe = named.recipe;
    Picture const src = randomPicture(format, size);
    Road const one_pass = onePassRoad({src, recipe, {}});
    OnePass pass(recipe);
    CameraTask const task{src, recipe, pass.to_tensor.run(*src, Rect{}, pass.tensor, 0)};
    auto const calls = std::make_shared<SeveralCalls>(task);
    std::string const name = std::string(toString(format) + std::string("FRAME_").size()) +
                             (recipe.method == TENSOR_METHOD_AREA ? " area" : " bilinear") +
                             " to " + named.name;
    return {name,
            Family::Camera,
            pixelBytes(*src) + pass.tensor.layout().totalBytes(),
            {{vectorRoad, [=] { calls->run(); }, [] { return true; }}, one_pass},
            cameraPeers(task)};
}

}  // namespace

std::vector<Operation> cameraOperations(Size size) {
    std::vector<Operation> operations;
    for (TensorMethod const method : {TENSOR_METHOD_BILINEAR, TENSOR_METHOD_AREA}) {
        for (NamedRecipe const& recipe : recipesOf(method)) {
            for (FrameFormat const format : {FRAME_NV12, FRAME_I420, FRAME_YUYV, FRAME_BGR24}) {
                operations.push_back(cameraToTensor(format, size, recipe));
            }
        }
    }
    return operations;
}

}  // namespace ox::benchmarks
