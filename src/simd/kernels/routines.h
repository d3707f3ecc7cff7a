/// @file
/// The routines of the kernels: scalar ones, which define the results, vector ones for every
/// processor, and plain loops with the results of the vector ones.

#pragma once

#include "simd/kernels/list.h"

namespace Simd::Base {

// `FloatsToHalves` truncates. `MultiplyFloats` gives what `AccumulateScaledFloats` makes of a copy
// of `data` and zeros: products, with +0 for -0.
#define OX_DECLARE(name, shape, ...) shape::Function name;
OX_KERNELS(OX_DECLARE)
#undef OX_DECLARE

}  // namespace Simd::Base

/// The vector routines give the bytes of the scalar ones, with three exceptions. `FloatsToHalves`
/// rounds to nearest, ties to even. `HalvesToFloats` quiets signalling NaNs. `ScaleFloatsToBytes`
/// takes NaN for 0.
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

/// For processors and builds without vector code, and for rows shorter than a register.
namespace Simd::Plain {

// Kernels that aren't declared here: their scalar routine has the vector routine's results.
using namespace Base;

/// NaN gives 0, whatever the range.
FloatsToBytes::Function ScaleFloatsToBytes;
FloatsToHalfBits::Function FloatsToHalves;
HalfBitsToFloats::Function HalvesToFloats;

Neon::Routines routines();

}  // namespace Simd::Plain
