#include "host/run/apply.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <sstream>

#include "host/catalogue/catalogue.h"
#include "host/run/chunks.h"
#include "host/run/effect_workers.h"
#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/run/pipeline.h"

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
    // Times count from the frame `begin`.
    StillSource(FramePtr picture, long long begin, const FrameRange& range)
        : m_picture(std::move(picture)), m_begin(begin), m_range(range), m_number(range.first) {}

    std::optional<SourceStep> Next() {
        if (m_number > m_range.last) return std::nullopt;
        SourceStep step;
        step.frame = Require<FramePtr>(av_frame_clone(m_picture.get()));
        step.number = m_number++;
        step.frame->pts = (step.number - m_begin) * step.frame->pkt_duration;
        return step;
    }

 private:
    FramePtr m_picture;
    long long m_begin;
    FrameRange m_range;
    long long m_number;
};

// What gives the pictures of a chunk: the input, or its only one again and again.
std::function<std::optional<SourceStep>()> Pictures(MediaSource& source, bool still, const FrameRange& range,
                                                    const FrameRange& chunk) {
    if (!still) return [&source] { return source.Next(); };
    const auto pictures = std::make_shared<StillSource>(std::move(source.Next()->frame), range.first, chunk);
    return [pictures] { return pictures->Next(); };
}

// Which frames a run has, and which of them are made now.
struct FramesOfRun {
    FrameRange run, made;
    bool certain = false;  // that all of `made` are there
};

FramesOfRun FramesOf(const RunOptions& options, long long stillFrames) {
    FramesOfRun frames{ParseRange(options.frames), {}, stillFrames > 0 || !options.chunk.empty() || options.joinTo};
    if (stillFrames > 0 && frames.run.first >= stillFrames)
        throw HostError(ExitCode::Usage, "--frames lies past the end: there are frames 0 to " +
                                             std::to_string(stillFrames - 1) + "; choose among these");
    if (stillFrames > 0) frames.run.last = std::min(frames.run.last, stillFrames - 1);
    frames.made = options.Chunk(frames.run);
    if (options.joinTo) frames.made.last = *options.joinTo;
    return frames;
}

// The frames of a range that there are, by decoding them all: a container may tell another number.
FrameRange CountedRange(MediaSource& source, FrameRange range) {
    range.last = range.first - 1;
    while (const std::optional<SourceStep> step = source.Next())
        if (step->frame) ++range.last;
    return range;
}

// The same by looking into the container alone.
FrameRange FoundRange(const MediaSource& source, FrameRange range) {
    const long long count = source.CountFrames(range);
    if (count == 0)
        throw HostError(ExitCode::Usage, "--skip-existing needs an input whose frames can be counted; give a file");
    range.last = range.first + count - 1;
    return range;
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
    const RunOptions& given = options.run;
    FramesOfRun frames = FramesOf(given, 0);
    const int threads = given.ThreadCount();
    given.RefuseAsOutput(options.input);

    MediaSource::Options opening{frames.run, {}, threads, options.keepGoing, given.chunk.empty()};
    if (!given.chunk.empty()) opening.chunk = frames.made;
    // What is repeated has no range of its own.
    if (single) opening.range = opening.chunk = {};
    MediaSource source(options.input, opening);
    const EffectRun run = plan(source);
    const bool still = run.stillFrames > 0;
    if (still) frames = FramesOf(given, run.stillFrames);
    const OutputOptions output = given.OutputFor(frames.made);
    if (given.skipExisting && IsMadeAlready(output, frames.certain ? frames.made : FoundRange(source, frames.run))) {
        PrintDetail(output.path + ": complete already");
        return;
    }

    const PictureShape shape = ShapeOf(source.FirstFrame());
    PicturePath path = ChoosePath(shape, options, run.requests);
    const bool keepsForced = !given.pixelFormat.empty();
    const OutputTraits traits = TraitsOf(source, keepsForced ? path.effectShape.format : OutputFormat(shape.format));
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, given.dryRun || given.plan);
    path.overBlack = path.overBlack && !HasAlpha(sink->Shape().format);
    if (given.plan) return given.plan(still ? frames.run : CountedRange(source, frames.run));
    const long long frameCount = still ? run.stillFrames : FrameCount(source, frames.run, run.requests);
    const std::string summary = Summary(options, source, path, *sink, frameCount);
    if (given.dryRun) {
        std::fprintf(stderr, "%s\n", summary.c_str());
        return;
    }
    PrintDetail(summary);
    if (given.joinTo)
        return JoinChunks(
            output, frames.made, [&](double until) { return source.AudioUntil(until); }, *sink);

    EffectWorkers effects(path, sink->Shape(), module, run.requests, frameCount);
    const long long origin = run.countsFromRange ? frames.run.first : 0;
    const Stages stages{Pictures(source, still, frames.run, frames.made),
                        [&](SourceStep& step) { effects.Process(step.frame, step.number - origin); }};
    RunReport report;
    {
        Progress progress(frames.certain ? frames.made.Count() : source.EstimatedFrameCount());
        report = RunPipeline(stages, *sink, threads, progress);
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: decoding " << report.nextSeconds << ", effects "
          << effects.EffectSeconds() << ", encoding " << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
