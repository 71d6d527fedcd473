#pragma once

// What the module imports from the host's library `avbase`. Ordinary dynamic references: where a host defines these
// functions itself, its own are called.

namespace AVBased {

/// Bits of AVBasedGetCPUFeatures: either one selects the vectorised routines.
inline constexpr unsigned cpuFeatureMmx = 1;
inline constexpr unsigned cpuFeatureSse2 = 4;
constexpr bool HasVectorUnit(unsigned cpuFeatures) { return (cpuFeatures & (cpuFeatureMmx | cpuFeatureSse2)) != 0; }

extern "C" {
/// The processor's features as a bit mask.
unsigned AVBasedGetCPUFeatures();
/// Copies `length` bytes between ranges that do not overlap; returns `destination`.
void* AVBasedMemCopy(void* destination, const void* source, unsigned length);
}

}  // namespace AVBased
