/// @file
/// The vector routines, for every processor. They give the bytes of the scalar routines, with three
/// exceptions. `FloatsToHalves` rounds to nearest, ties to even. `HalvesToFloats` quiets signalling
/// NaNs. `ScaleFloatsToBytes` takes NaN for 0.

#pragma once

#include "simd/kernels/list.h"

namespace Simd::Neon {

/// Whether the vector routines are eligible. Always true in the library; tests switch it off.
extern bool KernelsEnabled;

/// The routines of one instruction set, by their kernels' names.
struct Routines {
#define OX_MEMBER(name, shape, ...) shape::Function* name;
    OX_KERNELS(OX_MEMBER)
#undef OX_MEMBER
};

/// The routines of the instruction set in use; see vector/dispatch.h.
Routines const& routines();

// Each enters the vector routines of one source, for the instruction set in use, if it has any.
void takeBgrRoutines(Routines& routines);
void takeBgrToYuvRoutines(Routines& routines);
void takeFloatRoutines(Routines& routines);
void takeYuvToBgrRoutines(Routines& routines);

template <class Shape, class Function = typename Shape::Function>
struct Routine;

/// A vector routine, to be called as a function.
template <class Shape, class... Arguments>
struct Routine<Shape, void(Arguments...)> {
    void (*Routines::*member)(Arguments...);

    auto get() const { return routines().*member; }
    void operator()(Arguments... arguments) const { get()(arguments...); }
};

#define OX_ROUTINE(name, shape, ...) inline constexpr Routine<shape> name{&Routines::name};
OX_KERNELS(OX_ROUTINE)
#undef OX_ROUTINE

}  // namespace Simd::Neon
