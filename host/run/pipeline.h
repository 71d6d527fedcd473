#pragma once

#include <chrono>
#include <functional>

#include "host/media/media_sink.h"
#include "host/media/media_source.h"
#include "host/base/progress.h"

namespace Nifikral {

/// What makes the pictures of a run.
struct Stages {
    /// The next picture, and behind the last one nothing. Called in order, one call at a time.
    std::function<std::optional<SourceStep>()> next;
    /// What is left to do on a picture until it is as the sink takes it; several at once, on any thread.
    std::function<void(SourceStep&)> work;
};

struct RunReport {
    long long frames = 0;
    double nextSeconds = 0, encodeSeconds = 0;
};

/// Takes pictures through both stages into the sink, in order, with a bounded number of them in flight. Throws the
/// first error of any stage.
RunReport RunPipeline(const Stages& stages, MediaSink& sink, int threads, Progress& progress);

/// Adds the time from its making to its end to a sum.
class Stopwatch {
 public:
    explicit Stopwatch(double& sum) : m_sum(sum) {}
    ~Stopwatch() { m_sum += std::chrono::duration<double>(Clock::now() - m_begin).count(); }
    Stopwatch(const Stopwatch&) = delete;
    Stopwatch& operator=(const Stopwatch&) = delete;

 private:
    using Clock = std::chrono::steady_clock;

    double& m_sum;
    Clock::time_point m_begin = Clock::now();
};

}  // namespace Nifikral
