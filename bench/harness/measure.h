#pragma once

#include <benchmark/benchmark.h>

#include <functional>

#include "bench/harness/frame_ring.h"

namespace Bench {

/// Names of the counters that a benchmark reports, in units of the in-place pass unless stated otherwise.
inline constexpr char counterCold[] = "cold", counterHot[] = "hot", counterFirst[] = "first", counterGoal[] = "goal",
                      counterCopies[] = "copies",  // cold, in units of a plain frame copy
    counterNsPixel[] = "ns/pixel";                 // cold

using Work = std::function<void(CRawVideoFrame&)>;

/// What is measured on frames of one format. `make` returns work with fresh state, whose first call may build tables;
/// an in-place pass over `unitPlane` is the unit.
struct Measured {
    unsigned format;
    std::function<Work()> make;
    double goal = 0;
    unsigned unitPlane = allPlanes;
};

/// Times the work cold and hot, each call beside an in-place pass and a copy of a frame in the same state, and reports
/// medians.
void Measure(benchmark::State& state, const Measured& measured);

}  // namespace Bench
