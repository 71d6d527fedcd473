#include "host/run/pipeline.h"

#include "host/base/interruption.h"
#include "host/run/step_flow.h"

namespace Nifikral {

RunReport RunPipeline(PictureMaker& maker, MediaSink& sink, int threads, Progress& progress) {
    RunReport report;
    FlowStages stages;
    stages.read = [&] {
        const Stopwatch watch(report.nextSeconds);
        return maker.Next();
    };
    stages.work = [&](SourceStep& step) {
        ThrowIfInterrupted();
        if (step.frame) maker.Finish(step);
    };
    stages.write = [&](SourceStep& step) {
        const Stopwatch watch(report.encodeSeconds);
        for (PacketPtr& packet : step.audio) sink.WriteAudio(std::move(packet));
        if (!step.frame) return;
        sink.Write(std::move(step.frame), step.number);
        ++report.frames;
        progress.Advance();
    };
    StepFlow(threads, std::move(stages)).Run();
    ThrowIfInterrupted();
    const Stopwatch watch(report.encodeSeconds);
    sink.Finish();
    return report;
}

}  // namespace Nifikral
