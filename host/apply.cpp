#include "host/apply.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <sstream>

#include "host/catalogue.h"
#include "host/effect_workers.h"
#include "host/errors.h"
#include "host/log.h"
#include "host/pipeline.h"

namespace Nifikral {
namespace {

bool HasTrait(const EffectRequest& request, EffectTraits trait) {
    const EffectInfo* const info = FindEffect(request.effect);
    return info && (info->traits & trait);
}

bool AnyHasTrait(const std::vector<EffectRequest>& requests, EffectTraits trait) {
    return std::any_of(requests.begin(), requests.end(), [&](const auto& r) { return HasTrait(r, trait); });
}

// The number of frames that "duration" and values over the run are built on: exact where anything depends on it.
long long FrameCount(const MediaSource& source, const FrameRange& range, const std::vector<EffectRequest>& requests) {
    const bool overRun = std::any_of(requests.begin(), requests.end(), [](const EffectRequest& request) {
        return std::any_of(request.settings.begin(), request.settings.end(),
                           [](const auto& setting) { return setting.value.NeedsFrameCount(); });
    });
    const bool fades = std::any_of(requests.begin(), requests.end(), [](const EffectRequest& request) {
        return HasTrait(request, variesWithTime) && !request.Sets("duration");
    });
    if (!overRun && !fades) return source.EstimatedFrameCount();
    long long count = source.CountFrames(range);
    if (count == 0) count = source.EstimatedFrameCount();
    if (count == 0)
        throw HostError(ExitCode::Usage, overRun ? "A..B needs the number of frames, which this input does not tell; "
                                                   "use key points, @frame:value,..."
                                                 : "the number of frames is not known; give the effect its duration=N");
    return count;
}

PicturePath ChoosePath(const PictureShape& source, const ApplyOptions& options,
                       const std::vector<EffectRequest>& requests) {
    const bool alphaShows = AnyHasTrait(requests, changesAlpha);
    // Planar effects paint black and white of limited range, which full-range pictures would show as greys.
    const AVPixelFormat seen = source.fullRange && !IsRgb(source.format) ? AV_PIX_FMT_BGRA : source.format;
    PicturePath path;
    path.effectFormat =
        options.run.pixelFormat.empty() ? EffectFormat(seen, alphaShows) : ParseFormat(options.run.pixelFormat);
    path.effectShape = source;
    path.effectShape.format = FfmpegFormat(path.effectFormat);
    path.effectShape.matrix = AVCOL_SPC_UNSPECIFIED;
    path.overBlack = alphaShows && HasAlpha(path.effectShape.format);
    if (Depth(source.format) > 8)
        PrintWarning("the input's " + std::to_string(Depth(source.format)) + "-bit pictures (" +
                     av_get_pix_fmt_name(source.format) + ") are worked on in 8 bits (" +
                     av_get_pix_fmt_name(path.effectShape.format) + ")");
    return path;
}

std::string Summary(const ApplyOptions& options, const MediaSource& source, const PicturePath& path,
                    const MediaSink& sink, long long frameCount) {
    const PictureShape shape = ShapeOf(source.FirstFrame());
    std::ostringstream text;
    text << options.input << ": " << av_get_pix_fmt_name(shape.format) << " " << shape.width << "x" << shape.height
         << (shape.fullRange ? ", full range" : "")
         << ", frames: " << (frameCount > 0 ? std::to_string(frameCount) : "not known")
         << ", audio streams: " << source.AudioStreams().size() << "; effects on "
         << av_get_pix_fmt_name(path.effectShape.format) << " (code " << path.effectFormat << "); "
         << options.run.output.path << ": " << sink.Description();
    return text.str();
}

// One picture as the frames of a video.
class StillSource {
 public:
    StillSource(FramePtr picture, long long frames, const FrameRange& range)
        : m_picture(std::move(picture)), m_frames(frames), m_range(range), m_number(range.first) {}

    std::optional<SourceStep> Next() {
        if (m_number >= m_frames || m_number > m_range.last) return std::nullopt;
        SourceStep step;
        step.frame = Require<FramePtr>(av_frame_clone(m_picture.get()));
        step.number = m_number++;
        step.frame->pts = (step.number - m_range.first) * step.frame->pkt_duration;
        return step;
    }

 private:
    FramePtr m_picture;
    long long m_frames;
    FrameRange m_range;
    long long m_number;
};

// What gives the run's pictures: the input, or its only one again and again.
std::function<std::optional<SourceStep>()> Pictures(MediaSource& source, long long stillFrames,
                                                    const FrameRange& range) {
    if (stillFrames == 0) return [&source] { return source.Next(); };
    if (range.first >= stillFrames)
        throw HostError(ExitCode::Usage, "--frames lies past the end: there are frames 0 to " +
                                             std::to_string(stillFrames - 1) + "; choose among these");
    const auto still = std::make_shared<StillSource>(std::move(source.Next()->frame), stillFrames, range);
    return [still] { return still->Next(); };
}

}  // namespace

void Apply(const ApplyOptions& options, const EffectModule& module) {
    EffectRun run;
    for (const std::string& text : options.effects) {
        run.requests.push_back(ParseEffectRequest(text, module));
        if (const std::string& name = run.requests.back().effect; HasTrait(run.requests.back(), menu))
            throw HostError(ExitCode::Usage, name + " makes a film of its own; nifikral menu " + name +
                                                 " PROJECT.json -o OUT (nifikral init " + name + " writes an example)");
    }
    RunEffects(options, module, false, [&](const MediaSource&) { return run; });
}

void RunEffects(const ApplyOptions& options, const EffectModule& module, bool single,
                const std::function<EffectRun(const MediaSource&)>& plan) {
    const FrameRange range = ParseRange(options.run.frames);
    const int threads = options.run.ThreadCount();
    options.run.RefuseAsOutput(options.input);

    MediaSource source(options.input, {single ? FrameRange() : range, threads, options.keepGoing});
    const EffectRun run = plan(source);
    const PictureShape shape = ShapeOf(source.FirstFrame());
    PicturePath path = ChoosePath(shape, options, run.requests);
    const bool keepsForced = !options.run.pixelFormat.empty();
    const OutputTraits traits = TraitsOf(source, keepsForced ? path.effectShape.format : OutputFormat(shape.format));
    OutputOptions output = options.run.output;
    output.threads = threads;
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, options.run.dryRun);
    path.overBlack = path.overBlack && !HasAlpha(sink->Shape().format);
    const long long frameCount = run.stillFrames > 0 ? run.stillFrames : FrameCount(source, range, run.requests);
    const std::string summary = Summary(options, source, path, *sink, frameCount);
    if (options.run.dryRun) {
        std::fprintf(stderr, "%s\n", summary.c_str());
        return;
    }
    PrintDetail(summary);

    EffectWorkers effects(path, sink->Shape(), module, run.requests, frameCount);
    const long long origin = run.countsFromRange ? range.first : 0;
    const Stages stages{Pictures(source, run.stillFrames, range),
                        [&](SourceStep& step) { effects.Process(step.frame, step.number - origin); }};
    RunReport report;
    {
        Progress progress(run.stillFrames > 0 ? run.stillFrames : source.EstimatedFrameCount());
        report = RunPipeline(stages, *sink, threads, progress);
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: decoding " << report.nextSeconds << ", effects "
          << effects.EffectSeconds() << ", encoding " << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
