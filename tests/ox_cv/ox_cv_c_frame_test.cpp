// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// Frames of the C interface, and what all its functions do with failures.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "ox_core/ox_status.h"
#include "ox_cv/c_handles.h"
#include "support/allocation_counter.h"
#include "support/test_frame.h"

namespace ox::test::c_frame {

namespace {

constexpr std::int32_t unknown_format = 99;

ox_frame_info infoOf(ox_frame const* frame) {
    ox_frame_info info{};
    expectTaken(ox_frame_get_info(frame, &info));
    return info;
}

CFrame made(std::int32_t format, std::int32_t width, std::int32_t height) {
    ox_frame* frame = nullptr;
    expectTaken(ox_frame_create(format, width, height, 0, &frame));
    return CFrame(frame);
}

void expectSameGeometry(ox_frame_info const& info, Frame const& frame) {
    EXPECT_EQ(info.format, static_cast<std::int32_t>(frame.format()));
    EXPECT_EQ(info.width, frame.width());
    EXPECT_EQ(info.height, frame.height());
    ASSERT_EQ(info.plane_count, frame.layout().planeCount);
    for (int i = 0; i < 4; ++i) {
        FramePlane const& plane = frame.layout().plane[i];
        EXPECT_EQ(info.planes[i].width, plane.width);
        EXPECT_EQ(info.planes[i].height, plane.height);
        EXPECT_EQ(info.planes[i].channels, plane.channels);
        EXPECT_EQ(info.planes[i].bits, plane.bits);
        EXPECT_EQ(info.planes[i].stride, plane.stride);
        EXPECT_EQ(info.planes[i].row_bytes, plane.rowBytes);
    }
}

TEST(CFrame, HasTheFormatsOfFrames) {
    for (FrameFormat const format : allFormats()) {
        EXPECT_STREQ(ox_format_name(static_cast<std::int32_t>(format)), toString(format));
        if (format == FRAME_FORMAT_NONE) {
            continue;
        }
        Frame expected;
        expected.reuse(format, {7, 5}, DeviceContext(), 0);
        CFrame const frame = made(static_cast<std::int32_t>(format), 7, 5);
        expectSameGeometry(infoOf(frame.get()), expected);
    }
    EXPECT_STREQ(ox_format_name(-1), "unknown");
    EXPECT_EQ(OX_FRAME_BGR_32F_PLANAR, static_cast<int>(FRAME_BGR_32F_PLANAR));
}

TEST(CFrame, IsAlignedAsAsked) {
    ox_frame* frame = nullptr;
    expectTaken(ox_frame_create(OX_FRAME_NV12, 9, 4, 32, &frame));
    CFrame const owner(frame);
    EXPECT_EQ(infoOf(frame).planes[0].stride, 32);
}

TEST(CFrame, WrapsMemoryOfTheCallers) {
    TestFrame pixels(FRAME_I420, {9, 7}, Placement{5, Guard::AtEnd});
    CFrame const frame = handleOn(pixels.frame());
    ox_frame_info const info = infoOf(frame.get());
    expectSameGeometry(info, pixels.frame());
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(info.planes[i].data, pixels.frame().planeData(i));
    }
    EXPECT_EQ(info.planes[3].data, nullptr);
    fill(pixels.frame(), 17);
    expectTaken(ox_frame_set_zero(frame.get()));
    EXPECT_TRUE(isFilledWith(pixels.frame(), 0));
    pixels.expectGapsUntouched();
}

TEST(CFrame, WrapsRowsWithoutGapsIfNoStridesAreGiven) {
    unsigned char bytes[5 * 2 * 3]{};
    void* const planes[]{bytes};
    ox_frame* frame = nullptr;
    expectTaken(ox_frame_wrap(OX_FRAME_BGR24, 5, 2, planes, nullptr, 1, &frame));
    CFrame const owner(frame);
    EXPECT_EQ(infoOf(frame).planes[0].stride, 15);
}

TEST(CFrame, RegionsShareStorageThatOutlivesTheWhole) {
    CFrame whole = made(OX_FRAME_NV12, 16, 8);
    expectTaken(ox_frame_set_zero(whole.get()));
    ox_rect const rect{4, 2, 8, 4};
    ox_frame* part = nullptr;
    expectTaken(ox_frame_region(whole.get(), &rect, &part));
    CFrame const owner(part);
    ox_frame_info const outer = infoOf(whole.get());
    ox_frame_info const inner = infoOf(part);
    EXPECT_EQ(inner.planes[0].data, outer.planes[0].data + 2 * outer.planes[0].stride + 4);
    EXPECT_EQ(inner.planes[1].data, outer.planes[1].data + outer.planes[1].stride + 4);
    outer.planes[0].data[2 * outer.planes[0].stride + 4] = 200;
    whole.reset();
    EXPECT_EQ(inner.planes[0].data[0], 200);

    ox_frame* same = nullptr;
    expectTaken(ox_frame_region(part, nullptr, &same));
    CFrame const second(same);
    EXPECT_EQ(infoOf(same).planes[0].data, inner.planes[0].data);
}

TEST(CFrame, CopiesHaveMemoryOfTheirOwn) {
    Random random;
    TestFrame const pixels(FRAME_YUYV, {10, 3}, random, Placement{3});
    CFrame const source = handleOn(pixels.frame());
    ox_frame* copied = nullptr;
    expectTaken(ox_frame_copy(source.get(), &copied));
    CFrame const owner(copied);
    ox_frame_info const info = infoOf(copied);
    EXPECT_NE(info.planes[0].data, pixels.frame().planeData(0));
    for (int y = 0; y < 3; ++y) {
        EXPECT_EQ(std::memcmp(info.planes[0].data + y * info.planes[0].stride, pixels.row(0, y),
                              info.planes[0].row_bytes),
                  0);
    }
}

TEST(CFrame, RefusesWhatCantBeAFrame) {
    ox_frame* frame = nullptr;
    expectRefused(ox_frame_create(OX_FRAME_NV12, 0, 4, 0, &frame), OX_STATUS_INVALID_PARAMETER,
                  "Failure in Frame::reuse(...) : size is empty.");
    expectRefused(ox_frame_create(unknown_format, 4, 4, 0, &frame), OX_STATUS_UNSUPPORTED_FORMAT,
                  "Failure in Frame::reuse(...) : unsupported format.");
    EXPECT_EQ(frame, nullptr);
    unsigned char bytes[64]{};
    void* const planes[]{bytes, nullptr};
    std::int64_t const strides[]{8, 8};
    auto const wrap = [&](std::int32_t format, std::int32_t width, std::int32_t count) {
        frame = reinterpret_cast<ox_frame*>(bytes);  // what was there is not to be read
        ox_status const status = ox_frame_wrap(format, width, 2, planes, strides, count, &frame);
        EXPECT_EQ(frame, nullptr);
        return status;
    };
    expectRefused(wrap(OX_FRAME_NV12, 8, 3), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'plane_count' is invalid 3.");
    expectRefused(wrap(unknown_format, 8, 1), OX_STATUS_INVALID_PARAMETER,
                  "Parameter 'plane_count' is invalid 1.");
    expectRefused(wrap(unknown_format, 8, 0), OX_STATUS_INVALID_PARAMETER,
                  "Failure in Frame::wrap(...) : layout has no planes.");
    expectRefused(wrap(OX_FRAME_NV12, 8, 2), OX_STATUS_NULL_POINTER,
                  "Failure in Frame::wrap(...) : plane address is null.");
    expectRefused(wrap(OX_FRAME_GRAY8, 9, 1), OX_STATUS_INVALID_PARAMETER,
                  "Failure in Frame::wrap(...) : stride is smaller than the row's bytes.");
    expectRefused(wrap(OX_FRAME_GRAY8, -1, 1), OX_STATUS_INVALID_PARAMETER,
                  "Failure in Frame::wrap(...) : size is below zero.");
    CFrame const whole = made(OX_FRAME_GRAY8, 8, 8);
    ox_rect const outside{4, 4, 5, 1};
    expectRefused(ox_frame_region(whole.get(), &outside, &frame), OX_STATUS_OUT_OF_RANGE,
                  "Failure in getRegion(...) : region is out of range.");
    EXPECT_EQ(frame, nullptr);
}

TEST(CFrame, RefusesNull) {
    CFrame const frame = made(OX_FRAME_GRAY8, 8, 8);
    ox_frame* other = nullptr;
    ox_frame_info info{};
    auto const refused = [](ox_status status, char const* name) {
        expectRefused(status, OX_STATUS_NULL_POINTER,
                      ("Parameter '" + std::string(name) + "' is null.").c_str());
    };
    refused(ox_frame_create(OX_FRAME_GRAY8, 1, 1, 0, nullptr), "frame");
    refused(ox_frame_wrap(OX_FRAME_GRAY8, 1, 1, nullptr, nullptr, 1, &other), "planes");
    refused(ox_frame_wrap(OX_FRAME_GRAY8, 1, 1, nullptr, nullptr, 1, nullptr), "frame");
    refused(ox_frame_region(nullptr, nullptr, &other), "frame");
    refused(ox_frame_region(frame.get(), nullptr, nullptr), "part");
    refused(ox_frame_copy(nullptr, &other), "frame");
    refused(ox_frame_copy(frame.get(), nullptr), "copy");
    refused(ox_frame_set_zero(nullptr), "frame");
    refused(ox_frame_get_info(nullptr, &info), "frame");
    refused(ox_frame_get_info(frame.get(), nullptr), "info");
    ox_frame_destroy(nullptr);
    ox_backend_destroy(nullptr);
    ox_to_tensor_destroy(nullptr);
}

TEST(CFrame, SuccessKeepsTheTextOfTheLastFailure) {
    EXPECT_EQ(ox_frame_set_zero(nullptr), OX_STATUS_NULL_POINTER);
    CFrame const frame = made(OX_FRAME_GRAY8, 8, 8);
    EXPECT_STREQ(ox_last_error(), "Parameter 'frame' is null.");
}

// Calls `make` with each of its allocations failing, until none does.
template <class Make>
void expectNothingIsLeft(Make make) {
    std::int64_t const live = liveAllocations();
    bool struck = true;
    for (std::uint64_t k = 1; struck; ++k) {
        ox_frame* frame = nullptr;
        ox_status status = OX_STATUS_OK;
        {
            FailingAllocations const failing(k);
            status = make(&frame);
            struck = failing.struck();
        }
        CFrame made(frame);
        EXPECT_EQ(status, struck ? OX_STATUS_CAPACITY_EXCEEDED : OX_STATUS_OK);
        EXPECT_EQ(frame == nullptr, struck);
        made.reset();
        EXPECT_EQ(liveAllocations(), live) << "allocation " << k;
    }
}

TEST(CFrame, FailedAllocationsLeaveNothing) {
    CFrame const source = made(OX_FRAME_NV12, 8, 8);
    unsigned char bytes[64]{};
    void* const planes[]{bytes};
    expectNothingIsLeft(
        [](ox_frame** out) { return ox_frame_create(OX_FRAME_I420, 9, 9, 0, out); });
    expectNothingIsLeft([&](ox_frame** out) {
        return ox_frame_wrap(OX_FRAME_GRAY8, 8, 8, planes, nullptr, 1, out);
    });
    expectNothingIsLeft(
        [&](ox_frame** out) { return ox_frame_region(source.get(), nullptr, out); });
    expectNothingIsLeft([&](ox_frame** out) { return ox_frame_copy(source.get(), out); });
    ox_frame* frame = nullptr;
    ox_status status = OX_STATUS_OK;
    {
        FailingAllocations const failing(1);
        status = ox_frame_region(source.get(), nullptr, &frame);
    }
    expectRefused(status, OX_STATUS_CAPACITY_EXCEEDED, "Memory is exhausted.");
}

TEST(CFrame, StatusesAreThoseOfTheLibrary) {
    EXPECT_EQ(OX_STATUS_ASSERTION_FAILED, static_cast<int>(StatusAssertionFailed));
    EXPECT_EQ(OX_STATUS_NULL_POINTER, static_cast<int>(StatusNullPointer));
    EXPECT_EQ(OX_STATUS_OUT_OF_RANGE, static_cast<int>(StatusOutOfRange));
    EXPECT_EQ(OX_STATUS_INVALID_PARAMETER, static_cast<int>(StatusInvalidParameter));
    EXPECT_EQ(OX_STATUS_NOT_INITIALIZED, static_cast<int>(StatusNotInitialized));
    EXPECT_EQ(OX_STATUS_NOT_SUPPORTED, static_cast<int>(StatusNotSupported));
    EXPECT_EQ(OX_STATUS_INPUT_NOT_INITIALIZED, static_cast<int>(StatusInputNotInitialized));
    EXPECT_EQ(OX_STATUS_CAPACITY_EXCEEDED, static_cast<int>(StatusCapacityExceeded));
    EXPECT_EQ(OX_STATUS_UNSUPPORTED_FORMAT, static_cast<int>(StatusUnsupportedFormat));
}

}  // namespace

}  // namespace ox::test::c_frame
