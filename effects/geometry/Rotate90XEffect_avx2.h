#pragma once

#include <cstddef>
#include <cstdint>

#include "effects/geometry/axis_scaling.h"

/// Quarter turns for AVX2.
namespace AVBased {

/// The sum of rows that are `pitch` bytes apart, weighted by two taps or more. What lies `ahead` bytes from the first
/// two is fetched on the way.
void MixRowsAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t pitch, const AxisScaling::Taps& taps,
                 unsigned bytes, std::ptrdiff_t ahead);
/// The same of cache lines that follow one another, for all places of a scaling from `begin` up to `end`: the sum for
/// place i goes to to + i x step.
void MixLinesAvx2(std::uint8_t* to, std::ptrdiff_t step, const std::uint8_t* lines, const AxisScaling& scaling,
                  unsigned begin, unsigned end);
/// Turns a stripe of as many rows of pixels as fill a cache line: its columns become lines.
void TransposePixelsAvx2(std::uint8_t* to, const std::uint8_t* from, std::size_t fromPitch, unsigned width);

}  // namespace AVBased
