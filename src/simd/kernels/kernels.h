/// @file
/// The kernels of list.h: for each a record, which callers call like a function.

#pragma once

#include <tuple>
#include <type_traits>

#include "simd/kernels/routines.h"

namespace Simd {

template <class KernelShape, class Function = typename KernelShape::Function>
struct Kernel;

/// A scalar and a vector routine behind one call, which takes the vector routine for rows (or
/// arrays) of at least `threshold` elements.
template <class KernelShape, class... Arguments>
struct Kernel<KernelShape, void(Arguments...)> {
    using Shape = KernelShape;
    using Routine = void(Arguments...);

    char const* name;
    Routine* base;
    Neon::Routine<Shape> neon;
    std::size_t threshold;

    Routine* routine(std::size_t size) const {
        return size >= threshold && Neon::KernelsEnabled ? neon.get() : base;
    }

    void operator()(Arguments... arguments) const {
        routine(std::get<Shape::sizeArgument>(std::tie(arguments...)))(arguments...);
    }
};

/// A kernel that picks its routine on the first call and keeps it, whatever the size.
/// @tparam base_routine one per kernel, so that each kernel has a type and a choice of its own
template <class KernelShape, auto base_routine, auto neon_routine>
struct FirstUseKernel {
    using Shape = KernelShape;
    static constexpr auto* base = base_routine;
    static constexpr auto const& neon = *neon_routine;

    char const* name;

    static auto* routine() {
        static auto* const chosen = Neon::KernelsEnabled ? neon.get() : base;
        return chosen;
    }

    template <class... Arguments>
    void operator()(Arguments... arguments) const {
        routine()(arguments...);
    }
};

template <class Shape, auto base_routine, auto neon_routine, class Block>
constexpr auto makeKernel(char const* name, [[maybe_unused]] Block block) {
    if constexpr (std::is_same_v<Block, OnFirstUse>) {
        return FirstUseKernel<Shape, base_routine, neon_routine>{name};
    } else {
        return Kernel<Shape>{name, base_routine, *neon_routine, block};
    }
}

#define OX_KERNEL(name, shape, block) \
    inline constexpr auto name = makeKernel<shape, Base::name, &Neon::name>(#name, block);
OX_KERNELS(OX_KERNEL)
#undef OX_KERNEL

/// Every kernel, for tests.
#define OX_NAME(name, ...) name,
inline constexpr std::tuple kernels{OX_KERNELS(OX_NAME)};
#undef OX_NAME

/// Copies `height` rows of `width` pixels of `pixel_size` bytes.
void CopyPlaneRows(ConstBytes src, std::size_t src_stride, std::size_t width, std::size_t height,
                   std::size_t pixel_size, Bytes dst, std::size_t dst_stride);

}  // namespace Simd
