#include "host/run/apply.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/catalogue/catalogue.h"
#include "host/run/effect_workers.h"
#include "host/run/run.h"

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

// Puts effects on the pictures of an input.
class EffectMaker final : public PictureMaker {
 public:
    EffectMaker(const ApplyOptions& options, const EffectModule& module, MediaSource& source, const EffectRun& run,
                const FramesOfRun& frames)
        : m_options(options), m_module(module), m_source(source), m_run(run), m_frames(frames) {}

    FrameRange Existing(const FrameRange& range, bool decoding) override {
        long long count = 0;
        if (decoding) {
            while (const std::optional<SourceStep> step = m_source.Next()) count += step->frame ? 1 : 0;
        } else if (count = m_source.CountFrames(range); count == 0) {
            throw HostError(ExitCode::Usage, "--skip-existing needs an input whose frames can be counted; give a file");
        }
        return {range.first, range.first + count - 1};
    }

    OutputTraits Traits(const OutputOptions&) override {
        const PictureShape shape = ShapeOf(m_source.FirstFrame());
        m_path = ChoosePath(shape, m_options, m_run.requests);
        const bool forced = !m_options.run.pixelFormat.empty();
        return TraitsOf(m_source, forced ? m_path.effectShape.format : OutputFormat(shape.format));
    }

    std::string Prepare(const PictureShape& sinkShape) override {
        const PictureShape shape = ShapeOf(m_source.FirstFrame());
        m_path.overBlack = m_path.overBlack && !HasAlpha(sinkShape.format);
        const long long frameCount = IsStill() ? m_run.stillFrames : FrameCount(m_source, m_frames.run, m_run.requests);
        m_workers.emplace(m_path, sinkShape, m_module, m_run.requests, frameCount);
        if (IsStill()) m_still = std::move(m_source.Next()->frame);
        std::ostringstream text;
        text << m_options.input << ": " << av_get_pix_fmt_name(shape.format) << " " << shape.width << "x"
             << shape.height << (shape.fullRange ? ", full range" : "")
             << ", frames: " << (frameCount > 0 ? std::to_string(frameCount) : "not known")
             << ", audio streams: " << m_source.AudioStreams().size() << "; effects on "
             << av_get_pix_fmt_name(m_path.effectShape.format) << " (code " << m_path.effectFormat << ")";
        return text.str();
    }

    long long ExpectedFrames() const override { return m_source.EstimatedFrameCount(); }
    std::optional<SourceStep> Next() override {
        if (!IsStill()) return m_source.Next();
        if (m_number > m_frames.made.last) return std::nullopt;
        SourceStep step{Require<FramePtr>(av_frame_clone(m_still.get())), m_number++, {}};
        step.frame->pts = (step.number - m_frames.run.first) * step.frame->pkt_duration;
        return step;
    }
    void Finish(SourceStep& step) override {
        m_workers->Process(step.frame, step.number - (m_run.countsFromRange ? m_frames.run.first : 0));
    }
    std::vector<PacketPtr> AudioUntil(double seconds) override { return m_source.AudioUntil(seconds); }
    double EffectSeconds() const override { return m_workers->EffectSeconds(); }

 private:
    bool IsStill() const { return m_run.stillFrames > 0; }

    const ApplyOptions& m_options;
    const EffectModule& m_module;
    MediaSource& m_source;
    const EffectRun& m_run;
    FramesOfRun m_frames;
    PicturePath m_path;
    std::optional<EffectWorkers> m_workers;
    FramePtr m_still;  // the picture that is repeated
    long long m_number = m_frames.made.first;
};

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
                const std::function<EffectRun(const MediaSource&)>& effectsFor) {
    const RunOptions& given = options.run;
    FramesOfRun frames = given.Frames(0);
    given.RefuseAsOutput(options.input);
    MediaSource::Options opening{
        frames.run, {}, given.ThreadCount(), options.keepGoing, given.chunk.empty() && given.output.sound};
    opening.gaps = ParseGaps(options.gaps);
    if (!given.chunk.empty()) opening.chunk = frames.made;
    // What is repeated has no range of its own.
    if (single) opening.range = opening.chunk = {};
    MediaSource source(options.input, opening);
    const EffectRun run = effectsFor(source);
    if (run.stillFrames > 0) frames = given.Frames(run.stillFrames);
    EffectMaker maker(options, module, source, run, frames);
    MakeRun(given, frames, maker);
}

}  // namespace Nifikral
