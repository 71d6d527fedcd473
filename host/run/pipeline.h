#pragma once

#include <chrono>
#include <optional>
#include <string>
#include <vector>

#include "host/base/progress.h"
#include "host/media/media_sink.h"
#include "host/media/media_source.h"

namespace Nifikral {

/// What makes the pictures of a run: effects on an input, or a generator. Threads: Finish on any, several at once; all
/// else one call at a time, in this order.
class PictureMaker {
 public:
    virtual ~PictureMaker() = default;
    /// The frames of a range that there are, where the options alone do not say; `decoding` them is slow, but sure.
    virtual FrameRange Existing(const FrameRange& range, bool decoding) = 0;
    /// What the output inherits; streams are borrowed.
    virtual OutputTraits Traits(const OutputOptions& output) = 0;
    /// Fixes how pictures are made, for a sink that takes them in this shape, and returns a line that describes it.
    virtual std::string Prepare(const PictureShape& shape) = 0;
    /// How many pictures Next has; 0 when that is not known.
    virtual long long ExpectedFrames() const = 0;
    /// The next picture, and behind the last one nothing.
    virtual std::optional<SourceStep> Next() = 0;
    /// What is left to do on a picture until it is as the sink takes it.
    virtual void Finish(SourceStep& step) = 0;
    /// The sound alone, up to a time or further, for one who has the pictures already.
    virtual std::vector<PacketPtr> AudioUntil(double seconds) = 0;
    /// Seconds of Finish that went into effects, of all threads together.
    virtual double EffectSeconds() const { return 0; }
};

struct RunReport {
    long long frames = 0;
    double nextSeconds = 0, encodeSeconds = 0;
};

/// Takes pictures from the maker into the sink, in order, with a bounded number of them in flight. Throws the first
/// error of any stage.
RunReport RunPipeline(PictureMaker& maker, MediaSink& sink, int threads, Progress& progress);

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
