// SPDX-FileCopyrightText: The libox authors
// SPDX-License-Identifier: Apache-2.0

// The kernel layer, for programs that have the library's objects: resizers and warps with all their
// methods, and each kernel.

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <tuple>
#include <type_traits>
#include <vector>

#include "determinism/digest.h"
#include "determinism/families.h"
#include "simd/simd.h"
#include "support/random.h"
#include "support/test_target.h"

namespace ox::test {

namespace {

using ByteVector = std::vector<std::uint8_t>;

ByteVector randomBytes(std::size_t count, Random& random) {
    ByteVector bytes(count);
    for (std::uint8_t& byte : bytes) {
        byte = random.byte();
    }
    return bytes;
}

// Calls a kernel on pictures of this width, by the shape of its arguments. All strides have room
// for four bytes a pixel.
class KernelRun {
  public:
    KernelRun(std::size_t width, Random& random) : _width(width), _random(random) {}

    template <class Kernel>
    void operator()(Kernel const& kernel, Digest& digest) {
        using Shape = typename Kernel::Shape;
        ByteVector const a = plane();
        ByteVector const b = plane();
        ByteVector const c = plane();
        ByteVector x = plane();
        ByteVector y = plane();
        ByteVector z = plane();
        std::size_t const s = stride();
        if constexpr (std::is_base_of_v<Simd::PlaneToPlane, Shape>) {
            kernel(a.data(), _width, height, s, x.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::SplitTwo, Shape>) {
            kernel(a.data(), s, _width, height, x.data(), s, y.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::SplitThree, Shape>) {
            kernel(a.data(), s, _width, height, x.data(), s, y.data(), s, z.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::MergeTwo, Shape> ||
                             std::is_base_of_v<Simd::SemiPlanarToPacked, Shape>) {
            kernel(a.data(), s, b.data(), s, _width, height, x.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::MergeThree, Shape> ||
                             std::is_base_of_v<Simd::YuvToPacked, Shape>) {
            kernel(a.data(), s, b.data(), s, c.data(), s, _width, height, x.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::PackedToYuv, Shape>) {
            kernel(a.data(), _width, height, s, x.data(), s, y.data(), s, z.data(), s);
        } else if constexpr (std::is_base_of_v<Simd::PackedToSemiPlanar, Shape>) {
            kernel(a.data(), _width, height, s, x.data(), s, y.data(), s);
        } else {
            return runOnFloats<Shape>(kernel, digest);
        }
        digest.addBytes(x.data(), x.size());
        digest.addBytes(y.data(), y.size());
        digest.addBytes(z.data(), z.size());
    }

  private:
    static constexpr std::size_t height = 4;

    std::size_t stride() const { return 4 * _width + 3; }
    ByteVector plane() { return randomBytes(stride() * height, _random); }

    std::vector<float> floats() {
        std::vector<float> values(_width);
        ByteVector const bytes = randomBytes(_width * sizeof(float), _random);
        std::memcpy(values.data(), bytes.data(), bytes.size());
        return values;
    }

    template <class Shape, class Kernel>
    void runOnFloats(Kernel const& kernel, Digest& digest) {
        float const lower = -1.5F;
        float const upper = 2.25F;
        std::vector<float> const src = floats();
        std::vector<float> dst = floats();
        ByteVector bytes = randomBytes(_width, _random);
        std::vector<std::uint16_t> halves(_width);
        for (std::uint16_t& half : halves) {
            half = static_cast<std::uint16_t>(_random.next());
        }
        if constexpr (std::is_base_of_v<Simd::BytesToFloats, Shape>) {
            kernel(bytes.data(), _width, &lower, &upper, dst.data());
        } else if constexpr (std::is_base_of_v<Simd::FloatsToBytes, Shape>) {
            kernel(src.data(), _width, &lower, &upper, bytes.data());
        } else if constexpr (std::is_base_of_v<Simd::FloatsToHalfBits, Shape>) {
            kernel(src.data(), _width, halves.data());
        } else if constexpr (std::is_base_of_v<Simd::HalfBitsToFloats, Shape>) {
            kernel(halves.data(), _width, dst.data());
        } else if constexpr (std::is_base_of_v<Simd::ConstantIntoFloats, Shape>) {
            kernel(&upper, dst.data(), _width);
        } else {
            static_assert(std::is_base_of_v<Simd::FloatsIntoFloats, Shape>);
            kernel(src.data(), _width, &upper, dst.data());
        }
        digest.addBytes(bytes.data(), bytes.size());
        digest.addHalves(halves.data(), halves.size());
        digest.addFloats(dst.data(), dst.size());
    }

    std::size_t _width;
    Random& _random;
};

template <class Kernel>
void digestKernel(Table& table, Kernel const& kernel) {
    Random random(5);
    Digest digest;
    for (std::size_t const width : {2U, 16U, 34U, 64U, 130U, 400U}) {
        KernelRun(width, random)(kernel, digest);
    }
    table.add(std::string("kernel ") + kernel.name, digest.value());
}

void digestResizers(Table& table) {
    using namespace Simd;
    constexpr std::uint64_t sides[][4]{{60, 9, 20, 3},   {60, 9, 61, 14}, {61, 8, 30, 4},
                                       {64, 8, 128, 16}, {7, 5, 3, 9},    {1, 1, 5, 2}};
    for (int method = ResizerMethodNearest; method <= ResizerMethodAreaFast; ++method) {
        for (int type = ResizerTypeByte; type <= ResizerTypeFloat; ++type) {
            Random random(static_cast<std::uint64_t>(10 * method + type));
            Digest digest;
            for (auto const& [src_w, src_h, dst_w, dst_h] : sides) {
                for (std::uint64_t channels = 1; channels <= 4; ++channels) {
                    std::unique_ptr<Resizer> const resizer(Neon::CreateResizer(
                        src_w, src_h, dst_w, dst_h, channels, static_cast<ResizerType>(type),
                        static_cast<ResizerMethod>(method)));
                    digest.add(resizer ? 1 : 0);
                    if (!resizer) {
                        continue;
                    }
                    std::size_t const pixel =
                        channels * elementBytes(static_cast<ResizerType>(type));
                    ByteVector const src = randomBytes(src_w * src_h * pixel, random);
                    ByteVector dst = randomBytes(dst_w * dst_h * pixel, random);
                    resizer->Run(src.data(), src_w * pixel, dst.data(), dst_w * pixel);
                    if (type == ResizerTypeFloat) {
                        digest.addFloats(dst.data(), dst.size() / sizeof(float));
                    } else {
                        digest.addBytes(dst.data(), dst.size());
                    }
                }
            }
            table.add("resizer " + std::to_string(method) + " of type " + std::to_string(type),
                      digest.value());
        }
    }
}

void digestWarpFlags(Table& table) {
    for (std::uint32_t flags = 0; flags < 8; ++flags) {
        Random random(flags);
        Digest digest;
        for (int i = 0; i < 40; ++i) {
            std::uint64_t const channels = 1 + static_cast<std::uint64_t>(i) % 4;
            std::uint64_t const width = 90;
            std::uint64_t const height = 20;
            float matrix[6];
            for (float& value : matrix) {
                value = static_cast<float>(random.between(-128, 128)) / 64.0F;
            }
            std::uint8_t const border[4]{1, 20, 130, 255};
            std::unique_ptr<Simd::WarpAffine> const warp(
                Simd::Base::CreateWarpAffine(width, height, width * channels, width, height,
                                             width * channels, channels, matrix, flags, border));
            digest.add(warp ? 1 : 0);
            if (!warp) {
                continue;
            }
            ByteVector const src = randomBytes(width * height * channels, random);
            ByteVector dst = randomBytes(src.size(), random);
            warp->Run(src.data(), dst.data());
            digest.addBytes(dst.data(), dst.size());
        }
        table.add("warp with flags " + std::to_string(flags), digest.value());
    }
}

}  // namespace

void digestPrivate(Table& table) {
    std::apply([&](auto const&... kernel) { (digestKernel(table, kernel), ...); }, Simd::kernels);
    digestResizers(table);
    digestWarpFlags(table);
}

int takeTarget() {
    char const* const target = std::getenv("OX_TEST_TARGET");
    if (target == nullptr) {
        return 0;
    }
    switch (takeTestTarget(target)) {
        case TargetChoice::Taken:
            return 0;
        case TargetChoice::Lacking:
            std::fprintf(stderr, "Skipped: this processor lacks %s.\n", target);
            return 77;
        default:
            std::fprintf(stderr, "OX_TEST_TARGET: nothing is compiled for '%s'.\n", target);
            return 2;
    }
}

}  // namespace ox::test
