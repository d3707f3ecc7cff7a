// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The pipeline backend with its regions against the plain model.
#include <gtest/gtest.h>

#include "model/backend.h"
#include "ox_cv/model_bridge.h"
#include "ox_cv/ox_cv_backend_base.h"

namespace ox::test::backend_sweep {
namespace {

constexpr std::uint8_t untouched = 0x3C;

Rect rectOf(model::Region region) {
    return {region.x, region.y, region.width, region.height};
}

std::string tell(model::Region region) {
    return region.whole() ? "whole"
                          : std::to_string(region.width) + " x " + std::to_string(region.height) +
                                " at " + std::to_string(region.x) + ", " + std::to_string(region.y);
}

// Random calls on one backend, which keeps its chains from call to call.
class BackendSweep : public testing::Test {
  protected:
    using LibraryCall = std::function<void(Frame const& src, Frame& dst)>;
    using ModelCall = std::function<model::Outcome(model::Image const& src, model::Image& dst)>;

    void compare(model::Geometry src, model::Geometry dst, LibraryCall const& library_call,
                 ModelCall const& model_call) {
        model::Image const source = drawImage(_random, src);
        model::Image expected = model::makeImage(dst.format, dst.width, dst.height, untouched);
        BridgedFrame const source_frame(source, drawPlacement(_random));
        BridgedFrame actual(expected, drawPlacement(_random));
        model::Outcome const wanted = model_call(source, expected);
        model::Outcome const got =
            outcomeOf([&] { library_call(source_frame.frame(), actual.frame()); });
        ASSERT_TRUE(agree(got, wanted));
        ASSERT_TRUE(actual.holds(expected));
    }

    void colorCvt(model::Geometry src, model::Geometry dst, model::Region region) {
        SCOPED_TRACE("colorCvt " + tellSizes(src, dst) + ", region " + tell(region));
        compare(
            src, dst,
            [&](Frame const& from, Frame& to) { _library.colorCvt(from, to, rectOf(region)); },
            [&](auto& from, auto& to) { return _model.colorCvt(from, to, region); });
    }

    // The source in storage of the library's own, where both planes have the same stride.
    void colorCvtOwned(model::Geometry src, model::Geometry dst) {
        SCOPED_TRACE("colorCvt " + tellSizes(src, dst) + ", from the library's storage");
        compare(
            src, dst,
            [&](Frame const& from, Frame& to) {
                Frame owned;
                from.copyTo(owned);
                _library.colorCvt(owned, to, {});
            },
            [&](auto& from, auto& to) { return _model.colorCvt(from, to, {}); });
    }

    void resize(model::Geometry src, model::Geometry dst, model::Region src_region,
                model::Region dst_region) {
        SCOPED_TRACE("resize " + tellSizes(src, dst) + ", regions " + tell(src_region) + " and " +
                     tell(dst_region));
        compare(
            src, dst,
            [&](Frame const& from, Frame& to) {
                _library.resize(from, to, rectOf(src_region), rectOf(dst_region));
            },
            [&](auto& from, auto& to) { return _model.resize(from, to, src_region, dst_region); });
    }

    void convert(model::Geometry src, model::Geometry dst, model::Region region) {
        SCOPED_TRACE("convert " + tellSizes(src, dst) + ", region " + tell(region));
        compare(
            src, dst,
            [&](Frame const& from, Frame& to) { _library.convert(from, to, rectOf(region)); },
            [&](auto& from, auto& to) { return _model.convert(from, to, region); });
    }

    void setMethod(int method) {
        ASSERT_EQ(_library.setIntProperty(PropertyResizeMethod, method), 1);
        _model.method = method;
    }

    int drawFormat() {
        std::vector<FrameFormat> const formats = allFormats();
        auto const last = static_cast<int>(formats.size()) - 1;
        return static_cast<int>(formats[static_cast<std::size_t>(_random.between(0, last))]);
    }

    model::Geometry drawGeometry(int format, int largest) {
        return {format, _random.between(1, largest), _random.between(1, largest)};
    }

    // Half of the draws are the whole image.
    model::Region drawRegion(model::Geometry image) {
        if (oneIn(_random, 2)) {
            return {};
        }
        model::Region region{_random.between(0, image.width - 1),
                             _random.between(0, image.height - 1), 0, 0};
        region.width = _random.between(1, image.width - region.x);
        region.height = _random.between(1, image.height - region.y);
        return region;
    }

    static model::Geometry withSizeOf(int format, model::Geometry image, model::Region region) {
        return region.whole() ? model::Geometry{format, image.width, image.height}
                              : model::Geometry{format, region.width, region.height};
    }

    Random _random{23};

  private:
    std::string tellSizes(model::Geometry src, model::Geometry dst) const {
        return describe(src) + " to " + describe(dst) + ", method " + std::to_string(_model.method);
    }

    CvBackendBase _library;
    model::Backend _model;
};

// The direct routine for this pair takes one stride for both planes of the source; frames whose
// gaps are equal have one at even widths only.
bool isDirect(model::Geometry src, model::Geometry dst, model::Region region) {
    return region.whole() && src.format == model::Nv12 && dst.format == model::Bgr24;
}

TEST_F(BackendSweep, ColorCvt) {
    for (int i = 0; i < draws(20000) && !HasFailure(); ++i) {
        model::Geometry src = drawGeometry(drawFormat(), oneIn(_random, 8) ? 40 : 12);
        model::Region const region = drawRegion(src);
        model::Geometry dst = withSizeOf(drawFormat(), src, region);
        if (isDirect(src, dst, region)) {
            src.width = dst.width = (src.width + 1) / 2 * 2;
        }
        if (oneIn(_random, 30)) {
            ++dst.height;
        }
        colorCvt(src, dst, region);
    }
}

TEST_F(BackendSweep, DirectRoute) {
    for (int height = 1; height <= 6; ++height) {
        for (int width = 1; width <= 40 && !HasFailure(); ++width) {
            model::Geometry const src{model::Nv12, width, height};
            model::Geometry const dst{model::Bgr24, width, height};
            colorCvtOwned(src, dst);
            colorCvt(src, dst, {0, 0, width, height});
        }
    }
}

TEST_F(BackendSweep, Resize) {
    for (int i = 0; i < draws(20000) && !HasFailure(); ++i) {
        if (oneIn(_random, 3)) {
            setMethod(oneIn(_random, 20) ? 7 : _random.between(0, 2));
        }
        int const format = drawFormat();
        model::Geometry const src = drawGeometry(format, 16);
        model::Geometry const dst = drawGeometry(oneIn(_random, 30) ? drawFormat() : format, 16);
        resize(src, dst, drawRegion(src), drawRegion(dst));
    }
}

TEST_F(BackendSweep, Convert) {
    for (int i = 0; i < draws(20000) && !HasFailure(); ++i) {
        int const method = _random.between(0, 2);
        setMethod(method);
        model::Geometry src = drawGeometry(drawFormat(), 16);
        // This scaling leaves bytes of the scaled frame undefined before they are converted.
        if (src.format == model::Uyvy && method == ResizeArea) {
            continue;
        }
        model::Region const region = drawRegion(src);
        int const format = drawFormat();
        model::Geometry dst =
            oneIn(_random, 4) ? withSizeOf(format, src, region) : drawGeometry(format, 16);
        if (isDirect(src, dst, region)) {
            src.width = dst.width = (src.width + 1) / 2 * 2;
        }
        convert(src, dst, region);
    }
}

}  // namespace
}  // namespace ox::test::backend_sweep
