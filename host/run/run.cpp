#include "host/run/run.h"

#include <cstdio>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/run/chunks.h"

namespace Nifikral {
namespace {

void RefuseManyFramesInOnePicture(const OutputOptions& output, const FrameRange& range) {
    if (IsPictureOutput(output) && !IsNumberedOutput(output) && range.first != range.last)
        throw HostError(ExitCode::Usage, output.path +
                                             " is one picture and the film has more; name them as in frame_%06d.png" +
                                             ", or pick one with --frames N");
}

}  // namespace

void MakeRun(const RunOptions& options, const FramesOfRun& frames, PictureMaker& maker) {
    const OutputOptions output = options.OutputFor(frames.made);
    if (frames.certain) RefuseManyFramesInOnePicture(output, frames.run);
    if (options.skipExisting &&
        IsMadeAlready(output, frames.certain ? frames.made : maker.Existing(frames.run, false))) {
        PrintDetail(output.path + ": complete already");
        return;
    }
    const std::unique_ptr<MediaSink> sink =
        OpenSink(output, maker.Traits(output), options.dryRun || options.reportFrames);
    if (options.reportFrames)
        return options.reportFrames(frames.certain ? frames.run : maker.Existing(frames.run, true));
    const std::string summary = maker.Prepare(sink->Shape()) + "; " + output.path + ": " + sink->Description();
    if (options.dryRun) {
        std::fprintf(stderr, "%s\n", summary.c_str());
        return;
    }
    PrintDetail(summary);
    if (options.joinTo)
        return JoinChunks(
            output, frames.made, [&](double seconds) { return maker.AudioUntil(seconds); }, *sink);
    RunReport report;
    {
        Progress progress(frames.certain ? frames.made.Count() : maker.ExpectedFrames());
        report = RunPipeline(maker, *sink, output.threads, progress);
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: pictures " << report.nextSeconds << ", effects "
          << maker.EffectSeconds() << ", encoding " << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
