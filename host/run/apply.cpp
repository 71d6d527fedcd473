#include "host/run/apply.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <filesystem>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/nearest_names.h"
#include "host/catalogue/catalogue.h"
#include "host/media/film_profile.h"
#include "host/run/chunks.h"
#include "host/run/confinement.h"
#include "host/run/effect_workers.h"
#include "host/run/many_files.h"
#include "host/run/request_chain.h"
#include "host/run/run.h"

namespace Nifikral {
namespace {

bool HasTrait(const EffectRequest& request, EffectTraits trait) {
    const EffectInfo* const info = FindEffect(request.effect);
    return info && (info->traits & trait);
}

void RefuseGenerator(const std::string& name) {
    const EffectInfo* const info = FindEffect(name);
    if (!info || !(info->traits & generator)) return;
    std::string command = "nifikral slideshow PICTURES -o OUT";
    if (info->traits & menu)
        command = "nifikral menu " + name + " PROJECT.json -o OUT (nifikral init " + name + " writes an example)";
    else if (name == "title")
        command = "nifikral title TEXT IN OUT";
    throw HostError(ExitCode::Usage, name + " is no effect on pictures; use " + command);
}

PicturePath ChoosePath(const PreparedSource& input, const ApplyOptions& options,
                       const std::vector<EffectRequest>& requests) {
    const PictureShape source = input.Shape();
    PicturePath path{
        options.run.pixelFormat.empty() ? FormatForEffects(source, requests) : ParseFormat(options.run.pixelFormat),
        source, input.Reshape()};
    path.effectShape.format = FfmpegFormat(path.effectFormat);
    path.effectShape.matrix = AVCOL_SPC_UNSPECIFIED;
    path.overBlack = AnyChangesAlpha(requests) && HasAlpha(path.effectShape.format);
    if (Depth(source.format) > 8)
        PrintWarning("the input's " + std::to_string(Depth(source.format)) + "-bit pictures (" +
                     av_get_pix_fmt_name(source.format) + ") are dithered to 8 bits (" +
                     av_get_pix_fmt_name(path.effectShape.format) + ")");
    return path;
}

bool IsInput(const std::string& word) {
    std::error_code error;
    return word == "-" || word.find("://") != std::string::npos || av_filename_number_test(word.c_str()) ||
           std::filesystem::exists(word, error);
}

// Whether a word behind the first is the first effect and no further input.
bool IsEffect(const std::string& word, const EffectModule& module) {
    const bool named = module.Create(word) != nullptr;
    if (IsInput(word)) {
        if (!named) return false;
        throw HostError(ExitCode::Usage, word + " is an effect and a file; write ./" + word + " for the file");
    }
    if (named || word.starts_with('@') || module.Create(word.substr(0, word.find_first_of(":@")))) return true;
    std::vector<std::string> names;
    for (const EffectInfo& info : Catalogue()) names.emplace_back(info.name);
    throw HostError(ExitCode::Usage, "\"" + word + "\" is neither a file nor an effect" +
                                         DidYouMean(word.substr(0, word.find(':')), names) +
                                         " (nifikral list shows the effects)");
}

// Puts effects on the pictures of an input.
class EffectMaker final : public PictureMaker {
 public:
    EffectMaker(const std::string& input, const ApplyOptions& options, const EffectModule& module,
                PreparedSource& source, const EffectRun& run, const FramesOfRun& frames)
        : m_input(input), m_options(options), m_module(module), m_source(source), m_run(run), m_frames(frames) {}

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
        m_path.emplace(ChoosePath(m_source, m_options, m_run.requests));
        const bool forced = !m_options.run.pixelFormat.empty();
        OutputTraits traits =
            m_source.Traits(forced ? m_path->effectShape.format : OutputFormat(m_source.Shape().format));
        traits.profile = RequireProfile(m_options.run.profile);
        if (m_path->overBlack) traits.translucent = m_path->effectShape.format;
        traits.fades = !std::any_of(m_run.requests.begin(), m_run.requests.end(), [](const EffectRequest& request) {
            return HasTrait(request, changesAlpha) && !HasTrait(request, variesWithTime);
        });
        return traits;
    }

    std::string Prepare(const PictureShape& sinkShape) override {
        const PictureShape shape = m_source.Shape();
        m_path->overBlack = m_path->overBlack && !HasAlpha(sinkShape.format);
        const long long frameCount = IsStill() ? m_run.stillFrames : m_source.EstimatedFrameCount();
        m_effects = PlaceEffects(m_run.requests, m_module,
                                 {{shape.width, shape.height, av_q2d(m_source.FrameRate())},
                                  m_path->effectShape.format,
                                  m_frames.run,
                                  frameCount,
                                  [&](const FrameRange& range) { return m_source.CountFrames(range); }});
        m_workers.emplace(*m_path, sinkShape, m_module, m_effects);
        if (IsStill()) m_still = std::move(m_source.Next()->frame);
        std::ostringstream text;
        text << m_input << ": " << av_get_pix_fmt_name(shape.format) << " " << shape.width << "x" << shape.height
             << (shape.fullRange ? ", full range" : "")
             << ", frames: " << (frameCount > 0 ? std::to_string(frameCount) : "not known")
             << ", audio streams: " << m_source.AudioStreams().size() << "; effects on "
             << av_get_pix_fmt_name(m_path->effectShape.format) << " (code " << m_path->effectFormat << ")";
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
    void Finish(SourceStep& step) override { m_workers->Process(step.frame, step.number); }
    std::vector<PacketPtr> AudioUntil(double seconds) override { return m_source.AudioUntil(seconds); }
    double EffectSeconds() const override { return m_workers->EffectSeconds(); }

 private:
    bool IsStill() const { return m_run.stillFrames > 0; }

    const std::string& m_input;
    const ApplyOptions& m_options;
    const EffectModule& m_module;
    PreparedSource& m_source;
    const EffectRun& m_run;
    FramesOfRun m_frames;
    std::optional<PicturePath> m_path;
    std::vector<PlacedEffect> m_effects;
    std::optional<EffectWorkers> m_workers;
    FramePtr m_still;  // the picture that is repeated
    long long m_number = m_frames.made.first;
};

}  // namespace

void RefuseGenerators(const std::vector<EffectRequest>& requests) {
    for (const EffectRequest& request : requests) RefuseGenerator(request.effect);
}

bool AnyChangesAlpha(const std::vector<EffectRequest>& requests) {
    return std::any_of(requests.begin(), requests.end(), [](const auto& r) { return HasTrait(r, changesAlpha); });
}

unsigned FormatForEffects(const PictureShape& source, const std::vector<EffectRequest>& requests) {
    // Planar effects paint black and white of limited range, which full-range pictures would show as greys.
    const bool asColours = source.fullRange && !IsRgb(source.format) && !requests.empty();
    const AVPixelFormat seen = asColours ? AV_PIX_FMT_BGRA : source.format;
    return EffectFormat(seen, AnyChangesAlpha(requests));
}

void ReadApplyWords(const std::vector<std::string>& words, const EffectModule& module, ApplyOptions& options) {
    const bool apart = !options.run.output.path.empty();
    const std::size_t files = apart ? 1 : 2;
    if (words.size() < files + (options.preparation.IsAny() ? 0 : 1))
        throw HostError(ExitCode::Usage,
                        "apply takes IN OUT EFFECT..., or IN... -o OUT EFFECT...; nifikral apply --help describes it");
    std::size_t inputs = 1;
    while (apart && inputs < words.size() && !IsEffect(words[inputs], module)) ++inputs;
    options.run.namesMany = apart;
    if (!apart) options.run.output.path = words[1];
    options.inputs = {words.begin(), words.begin() + std::ptrdiff_t(inputs)};
    options.effects = {words.begin() + std::ptrdiff_t(apart ? inputs : files), words.end()};
    if (options.effects.empty() && !options.preparation.IsAny())
        throw HostError(ExitCode::Usage, "no effect is given; nifikral list shows them all");
    if (!apart && words.size() > 2 && IsInput(words[2]) && !module.Create(words[2]))
        throw HostError(ExitCode::Usage, words[2] + " is a file and no effect; with several inputs, give -o OUT");
}

void Apply(const ApplyOptions& options, const EffectModule& module) {
    ConfineRun(options.run);
    EffectRun run{ParseEffectRequests(options.effects, module, options.presets)};
    RefuseGenerators(run.requests);
    ApplyOptions marked = options;
    if (std::any_of(options.effects.begin(), options.effects.end(), [](const auto& e) { return e.starts_with('@'); })) {
        // Chunks under a preset of the same name and another chain are not joined.
        std::vector<std::string> texts = {options.run.output.mark};
        for (const EffectRequest& request : run.requests) texts.push_back(request.text);
        marked.run.output.mark = RunMark(texts);
    }
    RunEach(marked.inputs, marked.run, [&](const std::string& input, const RunOptions& own) {
        ApplyOptions one = marked;
        one.run = own;
        RunEffects(input, one, module, false, [&](const PreparedSource&) { return run; });
    });
}

void RunEffects(const std::string& input, const ApplyOptions& options, const EffectModule& module, bool single,
                const std::function<EffectRun(const PreparedSource&)>& effectsFor) {
    const RunOptions& given = options.run;
    FramesOfRun frames = given.Frames(0);
    given.RefuseAsOutput(input);
    MediaSource::Options opening{
        frames.run, {}, given.ThreadCount(), options.keepGoing, given.chunk.empty() && given.output.sound};
    opening.gaps = ParseGaps(options.gaps);
    if (!given.chunk.empty()) opening.chunk = frames.made;
    opening.extras = given.chunk.empty() && given.output.extras;
    // What is repeated has no range of its own.
    if (single) opening.range = opening.chunk = {};
    PreparedSource source(input, opening, options.preparation, !IsPictureOutput(given.output));
    const EffectRun run = effectsFor(source);
    if (run.stillFrames > 0) frames = given.Frames(run.stillFrames);
    EffectMaker maker(input, options, module, source, run, frames);
    MakeRun(given, frames, maker);
}

}  // namespace Nifikral
