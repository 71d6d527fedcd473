#include "bench/harness/measure.h"

#include <time.h>

#include <algorithm>
#include <vector>

namespace Bench {
namespace {

// The thread's own processor time: what other programs on the machine take from a call does not count.
double Now() {
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return double(time.tv_sec) + double(time.tv_nsec) * 1e-9;
}

template <class F>
double Seconds(F&& f) {
    const double begin = Now();
    f();
    return Now() - begin;
}

double Median(std::vector<double>& values) {
    const auto middle = values.begin() + std::ptrdiff_t(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

constexpr int minHotCalls = 5, maxHotCalls = 50, firstCalls = 5;

}  // namespace

void Measure(benchmark::State& state, const Measured& measured) {
    FrameRing& ring = RingOf(measured.format);
    const Work work = measured.make();
    work(ring.Renewed());

    std::vector<double> cold, coldPass, coldCopy;
    for (auto _ : state) {
        CRawVideoFrame& frame = ring.Next();
        cold.push_back(Seconds([&] { work(frame); }));
        CRawVideoFrame& passed = ring.Next();
        coldPass.push_back(Seconds([&] { InPlacePass(passed, measured.unitPlane); }));
        CRawVideoFrame &from = ring.Next(), &to = ring.Next();
        coldCopy.push_back(Seconds([&] { CopyFrame(to, from); }));
        // All three, so that the time asked for on the command line is the time that a job takes.
        state.SetIterationTime(cold.back() + coldPass.back() + coldCopy.back());
    }

    std::vector<double> hot, hotPass, first;
    for (int i = std::clamp(int(cold.size()), minHotCalls, maxHotCalls); i > 0; --i) {
        CRawVideoFrame& frame = ring.Renewed();
        hot.push_back(Seconds([&] { work(frame); }));
        ring.Renewed();
        hotPass.push_back(Seconds([&] { InPlacePass(frame, measured.unitPlane); }));
    }
    for (int i = 0; i < firstCalls; ++i) {
        const Work fresh = measured.make();
        CRawVideoFrame& frame = ring.Renewed();
        first.push_back(Seconds([&] { fresh(frame); }));
    }

    const double call = Median(cold), hotUnit = Median(hotPass);
    state.counters[counterCold] = call / Median(coldPass);
    state.counters[counterHot] = Median(hot) / hotUnit;
    state.counters[counterFirst] = Median(first) / hotUnit;
    state.counters[counterGoal] = measured.goal;
    state.counters[counterCopies] = call / Median(coldCopy);
    state.counters[counterNsPixel] = call * 1e9 / (double(frameWidth) * frameHeight);
}

}  // namespace Bench
