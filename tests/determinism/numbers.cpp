// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

#include <cstring>
#include <limits>
#include <vector>

#include "determinism/families.h"
#include "determinism/pictures.h"
#include "ox_cv/ox_cv.h"

namespace ox::test {

namespace {

using Limits = std::numeric_limits<float>;

constexpr float constants[]{0.0F,
                            -0.0F,
                            1.0F,
                            -2.5F,
                            1.0F / 3.0F,
                            Limits::max(),
                            Limits::min(),
                            Limits::denorm_min(),
                            Limits::infinity(),
                            Limits::quiet_NaN()};

// Adds and multiplies frames of floats in place.
void digestArithmetic(Table& table, std::string const& name, ICvBackend& backend) {
    for (FrameFormat const format : formats()) {
        Random random(format);
        Digest sums;
        Digest products;
        for (float const constant : constants) {
            for (Rect const region : {emptyRoi(), Rect{3, 1, 60, 4}}) {
                Frame frame = randomFrame(format, {77, 6}, random);
                attempt(sums, [&] { backend.add(frame, constant, region); });
                addFrame(sums, frame);
                frame = randomFrame(format, {77, 6}, random);
                attempt(products, [&] { backend.mul(frame, constant, region); });
                addFrame(products, frame);
            }
        }
        table.add(name + " add " + nameOf(format), sums.value());
        table.add(name + " multiply " + nameOf(format), products.value());
    }
}

void digestPlanes(Table& table) {
    Random random(1);
    Digest digest;
    for (int i = 0; i < 50; ++i) {
        Frame one = randomFrame(FRAME_GRAY_32F, {random.between(1, 100), 5}, random);
        Frame three = randomFrame(FRAME_BGR_32F, one.size(), random);
        float values[3];
        for (float& value : values) {
            value = moderateFloat(random);
        }
        Rect const all{0, 0, one.width(), one.height()};
        std::int64_t const stride = one.layout().plane[0].stride;
        addConstant_32f_C1(values[0], one.planeData(0), static_cast<int>(stride), all);
        mulConstant_32f_C1(values[1], one.planeData(0), static_cast<int>(stride), all);
        auto const wide = static_cast<unsigned long>(three.layout().plane[0].stride);
        addConstant_32f_C3(values, three.planeData(0), wide, all);
        mulConstant_32f_C3(values, three.planeData(0), wide, all);
        addFrame(digest, one);
        addFrame(digest, three);
    }
    table.add("float planes add and multiply", digest.value());
}

// All halves as floats, and the floats at, beside and between them as halves.
void digestHalves(Table& table) {
    std::vector<unsigned short> halves(65536);
    for (std::size_t i = 0; i < halves.size(); ++i) {
        halves[i] = static_cast<unsigned short>(i);
    }
    std::vector<float> floats(halves.size());
    convertFp16ToFp32(halves.data(), halves.size(), floats.data());
    Digest to_floats;
    to_floats.addFloats(floats.data(), floats.size());
    table.add("helper halves to floats", to_floats.value());

    Random random(2);
    std::vector<float> near;
    for (float const value : floats) {
        for (int const distance : {-1, 0, 1, random.between(-8192, 8192)}) {
            std::uint32_t bits = 0;
            std::memcpy(&bits, &value, sizeof bits);
            bits += static_cast<std::uint32_t>(distance);
            float other = 0;
            std::memcpy(&other, &bits, sizeof other);
            near.push_back(other);
        }
    }
    std::vector<unsigned short> back(near.size());
    convertFp32ToFp16(near.data(), near.size(), back.data());
    Digest to_halves;
    to_halves.addHalves(back.data(), back.size());
    table.add("helper floats to halves", to_halves.value());
}

void digestMatrices(Table& table) {
    Random random(3);
    Digest inverses;
    Digest similarities;
    Digest boxes;
    for (int i = 0; i < 1000; ++i) {
        float matrix[6];
        float inverse[6];
        for (float& value : matrix) {
            value = moderateFloat(random);
        }
        inverses.add(invertAffineTransform(matrix, inverse) ? 1 : 0);
        inverses.addFloats(inverse, 6);

        float from[5][2];
        float to[5][2];
        for (int k = 0; k < 5; ++k) {
            for (int axis = 0; axis < 2; ++axis) {
                from[k][axis] = moderateFloat(random);
                to[k][axis] = moderateFloat(random);
            }
        }
        float fitted[2][3]{};
        attempt(similarities, [&] { fitSimilarity(from, to, random.between(1, 5), fitted); });
        similarities.addFloats(fitted, 6);

        PictureMapping const mapping{{random.between(0, 9), random.between(0, 9), 640, 363},
                                     {0, random.between(0, 99), 224, 127}};
        PictureBox const box = mapping.toSource(mapping.toInput({1.5, 2.25, 33.0, 47.75}));
        boxes.addBytes(&box, sizeof box);
    }
    table.add("helper inverse", inverses.value());
    table.add("helper similarity", similarities.value());
    table.add("helper boxes", boxes.value());
}

void digestDirect(Table& table) {
    Random random(4);
    Digest digest;
    for (Size const size : {Size{8, 2}, Size{70, 6}, Size{200, 11}}) {
        Frame src = randomFrame(FRAME_NV12, size, random);
        src.reuse(FRAME_NV12, size, DeviceContext(), 64);  // both planes with the same stride
        for (int i = 0; i < 2; ++i) {
            FramePlane const& plane = src.layout().plane[i];
            for (std::uint64_t k = 0; k < plane.planeBytes; ++k) {
                src.planeData(i)[k] = random.byte();
            }
        }
        Frame dst = randomFrame(FRAME_BGR24, size, random);
        NV12toBGR_neon(src.planeData(0), src.planeData(1), dst.planeData(0), size.width,
                       size.height, static_cast<int>(src.layout().plane[0].stride),
                       static_cast<int>(dst.layout().plane[0].stride));
        addFrame(digest, dst);
    }
    table.add("helper NV12 to BGR24", digest.value());
}

}  // namespace

void digestNumbers(Table& table) {
    CvBackendBase base;
    digestArithmetic(table, "base", base);
    CvBackendSimd simd;
    digestArithmetic(table, "simd", simd);
    digestPlanes(table);
    digestHalves(table);
    digestMatrices(table);
    digestDirect(table);
}

}  // namespace ox::test
