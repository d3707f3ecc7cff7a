/// @file
/// Operations that Highway lacks: the only place with raw intrinsics. Each has the same meaning on
/// every instruction set.
///
/// | operation | does |
/// |---|---|
/// | `LoadThree`, `StoreThree` | a block of packed pixels as three registers, in order, and back |
/// | `PackPixels` | 16-bit lanes of even and of odd pixels, clamped to the bytes of a block |
/// | `StoreThreePixels` | stores what came out of `PackPixels` |
/// | `StoreThreeSame` | stores each byte three times |
/// | `TruncateFour` | four registers of floats from 0 to 255, truncated to the bytes of a block |
/// | `MulShift13` | floor(v * factor / 2^13), for lanes of at most 256 |
/// | `AddWhereGreater` | sum + (a > b) |
/// | `LowerHalf`, `UpperHalf`, `Average` | half a block of pixels, or means of two by two, for: |
/// | `WeightedBytes` | the low bytes of (weights * pixel + 2^13) >> 14 |
/// | `WeightedPairs` | the bytes of two such sums, in pairs |
/// | `PermuteWindow` | the bytes at the given places of a window |
/// | `PermuteToWords` | the same for even bytes, whose neighbours become 0; theirs are above 127 |
/// | `MulAddWords` | sums of products of neighbours, of signed words |
/// | `MulAddWindowPairs` | sums of products of neighbours, bytes by weights below 128 |
/// | `AddWordProducts` | adds products of words to `WordSums` |
/// | `TotalOf` | the lanes of `WordSums`, each of two neighbouring products |
/// | `AddNeighbours` | sums of neighbours of both registers, in order |
/// | `StoreLaneBytes` | clamps lanes to bytes and stores them |
/// | `AddTwoRows` | adds two weighted rows of a block to `FourSums`, whose `BytesOf` clamps |

// The two files guard themselves.
#include "vector/ops_neon-inl.h"
#include "vector/ops_x86-inl.h"
