// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Laws of steps: chains of links, objects that are used again, and what the backends are made of.

#include <memory>
#include <vector>

#include "laws/law.h"
#include "ox_cv/ox_classic_kernels.h"
#include "ox_cv/ox_cv.h"
#include "ox_cv/scaler_rows.h"

namespace ox::test {
namespace {

bool hasHalfHeightChroma(FrameFormat format) {
    return FrameLayout(format, {2, 2}, 1).plane[1].height == 1;
}

TEST(LawOfChains, AreTheirLinksStepByStep) {
    Law law(11);
    law.holds(150, [&] {
        FrameFormat const from = drawFormat(law.random);
        FrameFormat const to = drawFormat(law.random);
        Size const size = drawSize(law.random);
        Size const scaled_size = drawSize(law.random);
        auto const method = static_cast<ScaleMethod>(drawMethod(law.random));
        bool const converts_first = law.random.between(0, 1) == 0;
        if (converts_first && hasHalfHeightChroma(to)) {
            return;  // the second exception below
        }
        FrameFormat const scaled_format = converts_first ? to : from;
        if (method == OX_SCALE_AREA &&
            (scaled_format == FRAME_UYVY || scaled_format == FRAME_C2_8U ||
             scaled_format == FRAME_C4_8U)) {
            return;  // leaves a part of each row as it is, on purpose
        }
        law.tell(from, to, size, scaled_size, static_cast<int>(method));
        TestFrame const src = drawPicture(from, size, law.random);
        auto const chain = outcomeOf(to, scaled_size, [&](Frame& dst) {
            Scaler scaler;
            FormatConverter converter;
            if (converts_first) {
                converter.reuse(src.frame(), to);
                scaler.reuse(converter, scaled_size, method);
                produceFrame(scaler, dst);
            } else {
                scaler.reuse(src.frame(), scaled_size, method);
                converter.reuse(scaler, to);
                produceFrame(converter, dst);
            }
        });
        auto const steps = outcomeOf(to, scaled_size, [&](Frame& dst) {
            Scaler scaler;
            FormatConverter converter;
            if (converts_first) {
                TestFrame const between(to, size);
                converter.reuse(src.frame(), to);
                Frame picture = between.frame();
                produceFrame(converter, picture);
                scaler.reuse(picture, scaled_size, method);
                produceFrame(scaler, dst);
            } else {
                TestFrame const between(from, scaled_size);
                scaler.reuse(src.frame(), scaled_size, method);
                Frame picture = between.frame();
                produceFrame(scaler, picture);
                converter.reuse(picture, to);
                produceFrame(converter, dst);
            }
        });
        if (chain.status == StatusOutOfRange || steps.status == StatusOutOfRange) {
            return;  // the first exception below
        }
        // Who refuses first may differ, and so may the status.
        ASSERT_EQ(chain.served, steps.served) << toString(from) << " to " << toString(to);
        if (chain.served) {
            law.expectSame(chain, steps);
        }
    });
}

// On purpose: a bilinear link needs two rows of a producer, but one of a frame.
TEST(LawOfChains, ExceptBilinearLinksOverASingleRow) {
    TestFrame const row(FRAME_GRAY8, {4, 1});
    RowCopier copier;
    copier.reuse(row.frame());
    Scaler scaler;
    EXPECT_THROW(scaler.reuse(copier, {4, 3}, OX_SCALE_BILINEAR), Exception);
    EXPECT_NO_THROW(Scaler().reuse(row.frame(), {4, 3}, OX_SCALE_BILINEAR));
}

// On purpose: where a scaler skips rows of a producer, an odd row has the chroma of the last row
// that was produced, not that of the row before it.
TEST(LawOfChains, ExceptChromaOfRowsThatAreSkipped) {
    TestFrame const src(FRAME_BGR24, {2, 33});
    for (int y = 0; y < 33; ++y) {
        src.row(0, y)[0] = src.row(0, y)[3] = static_cast<unsigned char>(7 * y);
    }
    FormatConverter converter;
    converter.reuse(src.frame(), FRAME_I420);
    Scaler scaler;
    scaler.reuse(converter, {2, 21}, OX_SCALE_NEAREST);
    Frame const chain = pump(scaler);

    FormatConverter again;
    again.reuse(src.frame(), FRAME_I420);
    Frame const between = pump(again);
    Scaler of_frame;
    of_frame.reuse(between, {2, 21}, OX_SCALE_NEAREST);
    Frame const steps = pump(of_frame);
    // Rows 0 to 4 of the result are rows 0, 2, 3, 5 and 7 of the picture, of which rows 0 and 2
    // have chroma of their own.
    EXPECT_EQ(rowsOf(steps, 1)[2], rowsOf(between, 1)[3]);
    EXPECT_EQ(rowsOf(chain, 1)[2], rowsOf(between, 1)[1]);
}

// A link with a method of its own, which is armed over frames or over a copier.
class Subject {
  public:
    explicit Subject(Random& random) : _kind(random.between(0, 4)) {}

    int kind() const { return _kind; }
    void renew() {
        _scaler.renew();
        _converter.renew();
        _filter.renew();
    }
    void run(Frame const& src, Size size, FrameFormat format, Frame& dst) {
        switch (_kind) {
            case 3:
                _converter.reuse(src, format);
                return produceFrame(_converter, dst);
            case 4:
                _filter.reuse(_kernel, src, size, OX_SCALER_FIXED_POINT_16S);
                return produceFrame(_filter, dst);
            default:
                _scaler.reuse(src, size, static_cast<ScaleMethod>(_kind));
                return produceFrame(_scaler, dst);
        }
    }

  private:
    int _kind;
    Scaler _scaler;
    FormatConverter _converter;
    ScalerConvolutional _filter;
    CatmullRomKernel _kernel;
};

TEST(LawOfReuse, ALinkThatHasServedEqualsANewOne) {
    Law law(12);
    law.holds(300, [&] {
        Random choice(law.random.next());
        Random same_choice = choice;
        Subject kept(choice);
        Subject fresh(same_choice);
        law.tell(kept.kind());
        for (int i = 0; i < 3; ++i) {  // whatever becomes of these
            TestFrame const other =
                drawPicture(drawFormat(law.random), drawSize(law.random), law.random);
            Size const size = drawSize(law.random);
            FrameFormat const format = drawFormat(law.random);
            outcomeOf(format, size,
                      [&](Frame& dst) { kept.run(other.frame(), size, format, dst); });
            kept.renew();
        }
        bool const converts = kept.kind() == 3;
        FrameFormat const from = drawFormat(law.random);
        FrameFormat const to = converts ? drawFormat(law.random) : from;
        TestFrame const src = drawPicture(from, drawSize(law.random), law.random);
        Size size = drawSize(law.random);
        if (converts) {
            size = src.frame().size();
        } else if (kept.kind() == 4) {
            size = {(src.frame().width() + 1) / 2, (src.frame().height() + 1) / 2};
        }
        law.tell(from, to, src.frame().size(), size);
        auto const of_kept =
            outcomeOf(to, size, [&](Frame& dst) { kept.run(src.frame(), size, to, dst); });
        auto const of_fresh =
            outcomeOf(to, size, [&](Frame& dst) { fresh.run(src.frame(), size, to, dst); });
        law.expectSame(of_kept, of_fresh);
    });
}

TEST(LawOfBackends, ConvertIsResizeAndThenColour) {
    Law law(13);
    law.holds(100, [&] {
        FrameFormat const from = drawFormat(law.random);
        FrameFormat const to = drawFormat(law.random);
        TestFrame const src = drawPicture(from, drawSize(law.random), law.random);
        Size const size = drawSize(law.random);
        if (from == to || size == src.frame().size()) {
            return;  // one of the two alone
        }
        if (from == FRAME_NV12 && to == FRAME_BGR24) {
            return;  // which way colours go depends on strides, on purpose
        }
        int const method = static_cast<int>(drawMethod(law.random));
        law.tell(from, to, src.frame().size(), size, method);
        CvBackendBase base;
        CvBackendSimd simd;
        ICvBackend& backend = law.random.between(0, 1) == 0 ? static_cast<ICvBackend&>(base) : simd;
        backend.setIntProperty(PropertyResizeMethod, method);
        auto const at_once =
            outcomeOf(to, size, [&](Frame& dst) { backend.convert(src.frame(), dst, emptyRoi()); });
        auto const by_parts = outcomeOf(to, size, [&](Frame& dst) {
            TestFrame const between(from, size);
            Frame scaled_picture = between.frame();
            backend.resize(src.frame(), scaled_picture, emptyRoi(), emptyRoi());
            backend.colorCvt(scaled_picture, dst, emptyRoi());
        });
        law.expectSame(at_once, by_parts);
    });
}

TEST(LawOfBackends, ThePipelinesBackendIsItsLinks) {
    Law law(14);
    law.holds(300, [&] {
        FrameFormat const format = drawFormat(law.random);
        TestFrame const src = drawPicture(format, drawSize(law.random), law.random);
        Size const size = drawSize(law.random);
        int const method = static_cast<int>(drawMethod(law.random));
        law.tell(format, src.frame().size(), size, method);
        auto const by_backend = outcomeOf(format, size, [&](Frame& dst) {
            CvBackendBase backend;
            backend.setIntProperty(PropertyResizeMethod, method);
            backend.resize(src.frame(), dst, emptyRoi(), emptyRoi());
        });
        auto const by_link = outcomeOf(format, size, [&](Frame& dst) {
            Scaler scaler;
            scaler.reuse(src.frame(), size, static_cast<ScaleMethod>(method));
            produceFrame(scaler, dst);
        });
        law.expectSame(by_backend, by_link);
    });
}

TEST(LawOfTensors, PlanesHoldWhatPackedPixelsDo) {
    constexpr FrameFormat sources[]{FRAME_NV12, FRAME_YUYV, FRAME_BGR24, FRAME_I420, FRAME_GRAY8};
    Random random(15);
    for (int i = 0; i < drawCount && !HasFailure(); ++i) {
        FrameFormat const format = sources[random.between(0, 4)];
        TestFrame const src = drawPicture(format, drawSize(random, 60), random);
        TensorRecipe recipe;
        recipe.width = random.between(1, 40);
        recipe.height = random.between(1, 30);
        recipe.fit = static_cast<TensorFit>(random.between(0, TENSOR_FIT_CROP));
        recipe.colour = static_cast<TensorColour>(random.between(0, TENSOR_COLOUR_GRAY));
        recipe.method = static_cast<TensorMethod>(random.between(0, TENSOR_METHOD_AUTOMATIC));
        recipe.scale[1] = 0.25F;
        recipe.mean[2] = 100.0F;
        FrameToTensor to_tensor;
        Tensor tensors[2];
        for (int packed = 0; packed < 2; ++packed) {
            recipe.layout = packed == 1 ? TENSOR_FORMAT_NHWC : TENSOR_FORMAT_NCHW;
            to_tensor.reuse(recipe);
            tensors[packed].reuse(to_tensor.layout(1), DeviceContext());
            to_tensor.run(src.frame(), Rect{}, tensors[packed], 0);
        }
        auto const* const planes = reinterpret_cast<float const*>(tensors[0].data());
        auto const* const pixels = reinterpret_cast<float const*>(tensors[1].data());
        int const channels = recipe.colour == TENSOR_COLOUR_GRAY ? 1 : 3;
        int const count = recipe.width * recipe.height;
        for (int k = 0; k < count * channels; ++k) {
            ASSERT_EQ(pixels[k], planes[k % channels * count + k / channels])
                << "draw " << i << ", number " << k << " of " << toString(format);
        }
    }
}

}  // namespace
}  // namespace ox::test
