#include "host/run/pipeline.h"

#include <tbb/global_control.h>
#include <tbb/parallel_pipeline.h>
#include <tbb/task_arena.h>

#include "host/base/interruption.h"
#include "host/base/turn.h"

namespace Nifikral {
namespace {

// Stand for what the first and the last stage do.
char reading, writing;

// The thread that runs a pipeline has its turn at everything before all others and behind them, also where one throws.
class TurnsAround {
 public:
    explicit TurnsAround(std::vector<SourceStep>& places) : m_places(places) { Take(); }
    ~TurnsAround() { Take(); }
    TurnsAround(const TurnsAround&) = delete;
    TurnsAround& operator=(const TurnsAround&) = delete;

 private:
    void Take() const {
        const Turn reader(&reading), writer(&writing);
        for (SourceStep& place : m_places) const Turn own(&place);
    }

    std::vector<SourceStep>& m_places;
};

}  // namespace

RunReport RunPipeline(PictureMaker& maker, MediaSink& sink, int threads, Progress& progress) {
    using Step = SourceStep*;
    RunReport report;

    // The steps in flight live here: the pipeline forgets what it holds when a stage throws. They leave in the order in
    // which they come, so that the oldest one's place is free when the next is let in.
    std::vector<SourceStep> places(2 * std::size_t(threads) + 1);
    std::size_t taken = 0;

    const auto next = [&](tbb::flow_control& control) -> Step {
        const Turn turn(&reading);
        const Stopwatch watch(report.nextSeconds);
        std::optional<SourceStep> step = maker.Next();
        if (!step) {
            control.stop();
            return nullptr;
        }
        SourceStep& place = places[taken++ % places.size()];
        const Turn own(&place);
        place = std::move(*step);
        return &place;
    };
    const auto work = [&](Step step) -> Step {
        const Turn own(step);
        ThrowIfInterrupted();
        if (step->frame) maker.Finish(*step);
        return step;
    };
    const auto encode = [&](Step step) {
        const Turn turn(&writing), own(step);
        const Stopwatch watch(report.encodeSeconds);
        for (PacketPtr& packet : step->audio) sink.WriteAudio(std::move(packet));
        if (!step->frame) return;
        sink.Write(std::move(step->frame), step->number);
        ++report.frames;
        progress.Advance();
    };

    const tbb::global_control limit(tbb::global_control::max_allowed_parallelism, std::size_t(threads));
    tbb::task_arena arena(threads);
    arena.execute([&] {
        const TurnsAround turns(places);
        tbb::parallel_pipeline(places.size(),
                               tbb::make_filter<void, Step>(tbb::filter_mode::serial_in_order, next) &
                                   tbb::make_filter<Step, Step>(tbb::filter_mode::parallel, work) &
                                   tbb::make_filter<Step, void>(tbb::filter_mode::serial_in_order, encode));
    });
    ThrowIfInterrupted();
    const Stopwatch watch(report.encodeSeconds);
    sink.Finish();
    return report;
}

}  // namespace Nifikral
