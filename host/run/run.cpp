#include "host/run/run.h"

#include <filesystem>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/standard_output.h"
#include "host/media/chunk_file.h"
#include "host/media/part_file.h"
#include "host/run/chunks.h"

namespace Nifikral {
namespace {

void RefuseManyFramesInOnePicture(const OutputOptions& output, const FrameRange& range) {
    if (IsPictureOutput(output) && !IsNumberedOutput(output) && range.first != range.last)
        throw HostError(ExitCode::Usage, output.path +
                                             " is one picture and the film has more; name them as in frame_%06d.png" +
                                             ", or pick one with --frames N");
}

// Chunks go away when they are joined, so that a complete output stands for them.
bool IsJoinedAlready(const RunOptions& options) {
    std::error_code error;
    return !options.chunk.empty() && !IsPictureOutput(options.output) && !options.output.overwrite &&
           std::filesystem::is_regular_file(options.output.path, error);
}

}  // namespace

void ClearLeftovers(const RunOptions& options) {
    if (options.dryRun || options.reportFrames || options.output.path == "-") return;
    ClearDeadParts(options.output.path);
    ClearDeadParts(ChunkFolder(options.output.path) + "/");
}

void MakeRun(const RunOptions& options, const FramesOfRun& frames, PictureMaker& maker) {
    const OutputOptions output = options.OutputFor(frames.made);
    if (frames.certain) RefuseManyFramesInOnePicture(output, frames.run);
    if (options.skipExisting &&
        (IsJoinedAlready(options) ||
         IsMadeAlready(output, frames.certain ? frames.made : maker.Existing(frames.run, false)))) {
        PrintDetail(output.path + ": complete already");
        return;
    }
    const std::unique_ptr<MediaSink> sink =
        OpenSink(output, maker.Traits(output), options.dryRun || options.reportFrames);
    if (!sink->KeepsFrames() && (options.reportFrames || options.joinTo || !options.chunk.empty()))
        throw HostError(ExitCode::Usage, output.path +
                                             " makes its pictures of several of its input's (another frame rate, or "
                                             "fields made whole), so that chunks do not meet; make it in one run");
    if (options.reportFrames)
        return options.reportFrames(options.output, frames.certain ? frames.run : maker.Existing(frames.run, true));
    const std::string summary = maker.Prepare(sink->Shape()) + "; " + output.path + ": " + sink->Description();
    if (options.dryRun) return PrintResult(summary + "\n");
    PrintDetail(summary);
    RunReport report;
    try {
        if (options.joinTo)
            return JoinChunks(
                output, frames.made, [&](double seconds) { return maker.AudioUntil(seconds); }, *sink);
        Progress progress(frames.certain ? frames.made.Count() : maker.ExpectedFrames(), "frame",
                          options.progressPrefix, options.showsProgress);
        report = RunPipeline(maker, *sink, output.threads, progress);
    } catch (const HostError& error) {
        if (error.Code() != ExitCode::Interrupted) throw;
        throw HostError(ExitCode::Interrupted,
                        std::string(error.what()) + "; " + sink->Kept() + (options.joinTo ? ", the chunks stay" : ""));
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: pictures " << report.nextSeconds << ", effects "
          << maker.EffectSeconds() << ", encoding " << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
