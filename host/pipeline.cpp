#include "host/pipeline.h"

#include <tbb/enumerable_thread_specific.h>
#include <tbb/global_control.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include <chrono>

#include "host/frame_adapter.h"
#include "host/interruption.h"
#include "host/picture_formats.h"

namespace Nifikral {
namespace {

// What one thread needs for itself.
struct Worker {
    EffectChain chain;
    PictureConverter toEffects, toSink;
    double seconds = 0;
};

using Step = SourceStep*;

class Stopwatch {
 public:
    explicit Stopwatch(double& sum) : m_sum(sum) {}
    ~Stopwatch() { m_sum += std::chrono::duration<double>(Clock::now() - m_begin).count(); }

 private:
    using Clock = std::chrono::steady_clock;

    double& m_sum;
    Clock::time_point m_begin = Clock::now();
};

}  // namespace

StageTimes RunPipeline(MediaSource& source, MediaSink& sink, const PicturePath& path, const EffectModule& module,
                       const std::vector<EffectRequest>& requests, long long frameCount, int threads,
                       Progress& progress, long long& frames) {
    StageTimes times;
    long long firstNumber = -1;
    tbb::enumerable_thread_specific<Worker> workers([&] {
        return Worker{EffectChain(module, requests, frameCount), PictureConverter(path.effectShape),
                      PictureConverter(sink.Shape())};
    });

    // The steps in flight live here: the pipeline forgets what it holds when a stage throws. They leave in the order in
    // which they come, so that the oldest one's place is free when the next is let in.
    std::vector<SourceStep> places(2 * std::size_t(threads) + 1);
    std::size_t taken = 0;

    const auto decode = [&](tbb::flow_control& control) -> Step {
        const Stopwatch watch(times.decode);
        std::optional<SourceStep> step = source.Next();
        if (!step) {
            control.stop();
            return nullptr;
        }
        if (firstNumber < 0) firstNumber = step->number;
        SourceStep& place = places[taken++ % places.size()];
        place = std::move(*step);
        return &place;
    };
    const auto process = [&](Step step) -> Step {
        if (!step->frame) return step;
        ThrowIfInterrupted();
        Worker& worker = workers.local();
        FramePtr& frame = step->frame;
        worker.toEffects.Convert(frame);
        {
            const Stopwatch watch(worker.seconds);
            PrepareForEffects(frame);
            worker.chain.Process(*frame, path.effectFormat, step->number - firstNumber);
        }
        if (path.overBlack) LayOverBlack(*frame);
        worker.toSink.Convert(frame);
        return step;
    };
    const auto encode = [&](Step step) {
        const Stopwatch watch(times.encode);
        for (PacketPtr& packet : step->audio) sink.WriteAudio(std::move(packet));
        if (!step->frame) return;
        sink.Write(std::move(step->frame), step->number);
        ++frames;
        progress.Advance();
    };

    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, std::size_t(threads));
    tbb::task_arena arena(threads);
    arena.execute([&] {
        tbb::parallel_pipeline(places.size(),
                               tbb::make_filter<void, Step>(tbb::filter_mode::serial_in_order, decode) &
                                   tbb::make_filter<Step, Step>(tbb::filter_mode::parallel, process) &
                                   tbb::make_filter<Step, void>(tbb::filter_mode::serial_in_order, encode));
    });
    ThrowIfInterrupted();
    const Stopwatch watch(times.encode);
    sink.Finish();
    for (const Worker& worker : workers) times.effects += worker.seconds;
    return times;
}

}  // namespace Nifikral
