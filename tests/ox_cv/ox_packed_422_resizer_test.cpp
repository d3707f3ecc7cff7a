// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include "ox_cv/ox_packed_422_resizer.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_exception.h"
#include "ox_cv/ox_cv_backend_base.h"
#include "ox_cv/ox_cv_backend_simd.h"
#include "ox_cv/ox_cv_helpers.h"
#include "support/allocation_counter.h"
#include "support/exceptions.h"
#include "support/test_frame.h"

namespace ox::test::packed_422_resizer {

namespace {

constexpr FrameFormat formats[] = {FRAME_YUYV, FRAME_UYVY};
constexpr unsigned char old = 0x5A;

using RowBytes = std::vector<int>;

// Where the samples of a pair of pixels lie in its four bytes.
struct Packing {
    int y[2];
    int u;
    int v;
};

Packing packingOf(FrameFormat format) {
    return format == FRAME_YUYV ? Packing{{0, 2}, 1, 3} : Packing{{1, 3}, 0, 2};
}

// Calls visit(bytes of a pair, pair's index, its row, whether its second pixel exists).
void forEachPair(Frame const& frame,
                 std::function<void(unsigned char*, int x, int y, bool whole)> const& visit) {
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; 2 * x < frame.width(); ++x) {
            visit(rowOf(frame, 0, y) + 4 * x, x, y, 2 * x + 1 < frame.width());
        }
    }
}

// The samples of a packed picture in planes of their own, moved by hand.
TestFrame unpacked(Frame const& packed) {
    TestFrame planes(FRAME_NV16, packed.size());
    Packing const at = packingOf(packed.format());
    forEachPair(packed, [&](unsigned char const* pair, int x, int y, bool whole) {
        planes.row(0, y)[2 * x] = pair[at.y[0]];
        if (whole) {
            planes.row(0, y)[2 * x + 1] = pair[at.y[1]];
        }
        planes.row(1, y)[2 * x] = pair[at.u];
        planes.row(1, y)[2 * x + 1] = pair[at.v];
    });
    return planes;
}

// And back; bytes that no sample belongs to stay.
void pack(Frame const& planes, Frame const& packed) {
    Packing const at = packingOf(packed.format());
    forEachPair(packed, [&](unsigned char* pair, int x, int y, bool whole) {
        pair[at.y[0]] = rowOf(planes, 0, y)[2 * x];
        if (whole) {
            pair[at.y[1]] = rowOf(planes, 0, y)[2 * x + 1];
        }
        pair[at.u] = rowOf(planes, 1, y)[2 * x];
        pair[at.v] = rowOf(planes, 1, y)[2 * x + 1];
    });
}

std::unique_ptr<ICvBackend> makeBackend(bool vectors) {
    return vectors ? std::unique_ptr<ICvBackend>(std::make_unique<CvBackendSimd>())
                   : std::make_unique<CvBackendBase>();
}

struct Sides {
    Size src;
    Size dst;
};
constexpr Sides sides[] = {
    {{8, 6}, {4, 3}}, {{7, 5}, {13, 9}},  {{66, 4}, {131, 4}}, {{1, 1}, {3, 2}},
    {{9, 4}, {1, 1}}, {{10, 4}, {10, 4}}, {{130, 9}, {65, 5}}, {{5, 3}, {5, 3}},
};

}  // namespace

// One object serves all, so that nothing of one picture may show in the next.
TEST(Packed422Resizer, ScalesTheSamplesInPlanesOfTheirOwn) {
    Random random;
    for (bool const vectors : {false, true}) {
        auto const backend = makeBackend(vectors);
        Packed422Resizer resizer;
        for (FrameFormat const format : formats) {
            for (int const method : {0, 1, 2}) {
                backend->setIntProperty(1, method);
                for (auto const& [src_size, dst_size] : sides) {
                    SCOPED_TRACE(describe(format, src_size) + " to " + describe(format, dst_size) +
                                 ", method " + std::to_string(method) +
                                 (vectors ? ", vectors" : ""));
                    TestFrame const src(format, src_size, random, {3, Guard::AtEnd});
                    TestFrame dst(format, dst_size, {5, Guard::AtEnd});
                    TestFrame expected(format, dst_size);
                    fill(dst.frame(), old);
                    fill(expected.frame(), old);
                    TestFrame scaled(FRAME_NV16, dst_size);
                    backend->resize(unpacked(src.frame()).frame(), scaled.frame(), Rect(), Rect());
                    pack(scaled.frame(), expected.frame());
                    resizer.resize(*backend, src.frame(), dst.frame());
                    EXPECT_TRUE(samePixels(dst.frame(), expected.frame()));
                    dst.expectGapsUntouched();
                    fill(dst.frame(), old);
                    resizePacked422(*backend, src.frame(), dst.frame());
                    EXPECT_TRUE(samePixels(dst.frame(), expected.frame())) << "by the function";
                }
            }
        }
    }
}

// Y 10 and 20, U 100, V 200 in each pair: halved by area, Y is 15, and chroma stays.
TEST(Packed422Resizer, KeepsLumaAndChromaApart) {
    for (bool const vectors : {false, true}) {
        auto const backend = makeBackend(vectors);
        backend->setIntProperty(1, ResizeArea);
        TestFrame src(FRAME_YUYV, {8, 2});
        RowBytes row;
        for (int pair = 0; pair < 4; ++pair) {
            row.insert(row.end(), {10, 100, 20, 200});
        }
        fill(src.frame(), 0, {row, row});
        TestFrame dst(FRAME_YUYV, {4, 1});
        Packed422Resizer().resize(*backend, src.frame(), dst.frame());
        EXPECT_EQ(bytesOf(dst.frame(), 0, 0), (RowBytes{15, 100, 15, 200, 15, 100, 15, 200}));
        backend->resize(src.frame(), dst.frame(), Rect(), Rect());
        EXPECT_NE(bytesOf(dst.frame(), 0, 0), (RowBytes{15, 100, 15, 200, 15, 100, 15, 200}));
    }
}

TEST(Packed422Resizer, TakesAnotherHandleOnTheSource) {
    Random random;
    CvBackendBase backend;
    TestFrame src(FRAME_UYVY, {10, 4}, random);
    TestFrame expected(FRAME_UYVY, {10, 4});
    src.frame().copyTo(expected.frame());
    Frame dst = src.frame();
    resizePacked422(backend, src.frame(), dst);
    EXPECT_TRUE(samePixels(src.frame(), expected.frame()));
}

TEST(Packed422Resizer, AllocatesNothingForTheNextPicture) {
    CvBackendBase backend;
    Packed422Resizer resizer;
    TestFrame const src(FRAME_YUYV, {66, 8});
    TestFrame dst(FRAME_YUYV, {33, 5});
    resizer.resize(backend, src.frame(), dst.frame());
    std::uint64_t const before = allocationCalls();
    resizer.resize(backend, src.frame(), dst.frame());
    EXPECT_EQ(allocationCalls(), before);
}

namespace {

struct Refusal {
    Frame src;
    Frame dst;
    Status status;
    std::string text;
};

Frame frameOf(FrameFormat format, DeviceContext const& context = DeviceContext()) {
    Frame frame;
    frame.reuse(format, {4, 2}, context, 0);
    return frame;
}

std::vector<Refusal> refusals() {
    Frame yuyv = frameOf(FRAME_YUYV);
    Frame const gray = frameOf(FRAME_GRAY8);
    Frame const empty = getRegion(yuyv, {0, 0, 0, 2});
    Frame const elsewhere = frameOf(FRAME_YUYV, DeviceContext(7, nullptr));
    return {
        {Frame(), yuyv, StatusInvalidParameter, "'src' has no pixels."},
        {yuyv, Frame(), StatusInvalidParameter, "'dst' has no pixels."},
        {empty, yuyv, StatusInvalidParameter, "'src' has no pixels."},
        {elsewhere, yuyv, StatusInvalidParameter, "'src' isn't on the CPU."},
        {yuyv, elsewhere, StatusInvalidParameter, "'dst' isn't on the CPU."},
        {gray, gray, StatusUnsupportedFormat, "'src' is neither FRAME_YUYV nor FRAME_UYVY."},
        {yuyv, gray, StatusUnsupportedFormat, "'dst' is neither FRAME_YUYV nor FRAME_UYVY."},
        {yuyv, frameOf(FRAME_UYVY), StatusUnsupportedFormat, "'dst' hasn't the format of 'src'."},
    };
}

}  // namespace

TEST(Packed422Resizer, RefusesOtherFrames) {
    CvBackendBase backend;
    Packed422Resizer resizer;
    std::vector<Refusal> cases = refusals();
    for (Refusal& refusal : cases) {
        expectException(refusal.status,
                        "Failure in Packed422Resizer::resize(...) : " + refusal.text,
                        [&] { resizer.resize(backend, refusal.src, refusal.dst); });
    }
}

// A backend that refuses, here for its method, leaves the picture as it was.
TEST(Packed422Resizer, AFailureLeavesTheDestination) {
    Random random;
    CvBackendBase backend;
    backend.setIntProperty(1, 7);
    TestFrame const src(FRAME_YUYV, {8, 4}, random);
    TestFrame dst(FRAME_YUYV, {4, 2});
    fill(dst.frame(), old);
    EXPECT_THROW(resizePacked422(backend, src.frame(), dst.frame()), Exception);
    EXPECT_TRUE(isFilledWith(dst.frame(), old));
    backend.setIntProperty(1, 1);
    std::int64_t const live = liveAllocations();
    bool done = false;
    for (std::uint64_t k = 1; !done; ++k) {
        CvBackendBase fresh;
        try {
            FailingAllocation const failing(k);
            resizePacked422(fresh, src.frame(), dst.frame());
            done = !failing.struck();
        } catch (Exception const&) {
            EXPECT_TRUE(isFilledWith(dst.frame(), old)) << "allocation " << k;
        }
    }
    EXPECT_EQ(liveAllocations(), live);
}

}  // namespace ox::test::packed_422_resizer
