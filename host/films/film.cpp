#include "host/films/film.h"

#include <tbb/enumerable_thread_specific.h>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <sstream>

#include "TarvoBased/ITarvoException.h"
#include "host/run/chunks.h"
#include "host/base/errors.h"
#include "host/media/frame_adapter.h"
#include "host/media/frame_range.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/run/pipeline.h"
#include "host/media/sound_track.h"

namespace Nifikral {
namespace {

FrameRange RangeWithin(const Film& film, const RunOptions& options) {
    FrameRange range = ParseRange(options.frames);
    const std::string has =
        "the film has " + std::to_string(film.frames) + " frames, 0 to " + std::to_string(film.frames - 1);
    if (range.first >= film.frames)
        throw HostError(ExitCode::Usage, "--frames lies past the end: " + has + "; choose among these");
    if (range.last != FrameRange::noEnd && range.last >= film.frames) PrintWarning("--frames ends earlier: " + has);
    range.last = std::min(range.last, film.frames - 1);
    return range;
}

void RefuseManyFramesInOnePicture(const RunOptions& options, const FrameRange& range) {
    const std::string& path = options.output.path;
    if (IsPictureOutput(options.output) && !IsNumberedOutput(options.output) && range.first != range.last)
        throw HostError(ExitCode::Usage, path +
                                             " is one picture and the film has more; name them as in frame_%06d.png" +
                                             ", or pick one with --frames N");
}

// How the output has the film: pictures in square pixels, videos as the profile wants them.
OutputTraits StoredTraits(const Film& film, const OutputOptions& output, AVPixelFormat preferred) {
    const FilmProfile* const profile = IsPictureOutput(output) ? nullptr : film.profile;
    if (IsProgramStream(output) && !(profile && profile->dvd))
        PrintWarning(output.path + " is not as video DVDs want it; --profile pal-16:9, ntsc-4:3 and so on make it so");
    if (!profile) return TraitsOfFilm(film.width, film.height, film.frameRate, preferred);
    OutputTraits traits = TraitsOfFilm(profile->width, profile->height, film.frameRate, preferred);
    traits.pixelAspect = profile->PixelAspect();
    traits.dvd = profile->dvd;
    return traits;
}

// The sound beside the range of the film; null when none is asked for or the output holds none.
std::unique_ptr<SoundTrack> OpenSound(const Film& film, const FilmOptions& options, const FrameRange& range) {
    if (options.sound.empty() || !options.run.chunk.empty()) return nullptr;
    const AVCodec* const encoder = SoundEncoder(options.run.output, film.profile && film.profile->dvd);
    if (!encoder) {
        PrintWarning(options.run.output.path + " holds no sound; --audio is left out");
        return nullptr;
    }
    const double rate = av_q2d(film.frameRate), begin = double(range.first) / rate;
    const double end = double(range.last + 1) / rate, filmEnd = double(film.frames) / rate;
    return std::make_unique<SoundTrack>(options.sound, *encoder, SoundCut{begin, end, filmEnd, options.fade});
}

// Calls the generator for one frame after the other.
class FilmSource {
 public:
    /// Times count from the frame `begin`. `sound` is null where there is none.
    FilmSource(AVBased::IVideoProc& generator, const Film& film, unsigned formatCode, long long begin,
               const FrameRange& range, SoundTrack* sound)
        : m_generator(generator),
          m_film(film),
          m_formatCode(formatCode),
          m_begin(begin),
          m_range(range),
          m_sound(sound) {}

    std::optional<SourceStep> Next() {
        if (m_film.seeks && m_number < m_range.first) {
            m_number = m_range.first;
            m_generator.Seek(unsigned(m_number));
        }
        // What a frame shows may follow from those before it, so the generator makes these as well.
        while (m_number < m_range.first) Make();
        if (m_number > m_range.last) return std::nullopt;
        SourceStep step;
        step.number = m_number;
        step.frame = Make();
        step.frame->pts = step.number - m_begin;
        if (m_sound) {
            const bool last = m_number > m_range.last;
            step.audio = m_sound->Until(last ? std::numeric_limits<double>::infinity()
                                             : double(m_number - m_begin) / av_q2d(m_film.frameRate));
        }
        return step;
    }

 private:
    FramePtr Make() {
        ThrowIfInterrupted();
        const AVPixelFormat format = FfmpegFormat(m_formatCode);
        FramePtr frame = NewPicture(format, m_film.width, m_film.height);
        frame->colorspace = IsRgb(format) ? AVCOL_SPC_RGB : UsualMatrix(m_film.height);
        frame->color_range = IsRgb(format) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
        frame->pkt_duration = 1;
        const std::ptrdiff_t pitches[4] = {frame->linesize[0], frame->linesize[1], frame->linesize[2],
                                           frame->linesize[3]};
        av_image_fill_black(frame->data, pitches, format, frame->color_range, frame->width, frame->height);
        FrameAdapter adapter(*frame, m_formatCode, int(m_number));
        AVBased::ImagePostion record{0, 0, unsigned(frame->width), unsigned(frame->height)};
        TarvoBased::GetTarvoException()->Clear();
        m_generator.ProcFrameInPlace(&record, int(m_number), &adapter);
        ThrowIfInterrupted();
        if (const std::optional<std::string> error = TakeModuleError())
            throw HostError(ExitCode::Failed, std::string(m_generator.GetName()) + " fails at frame " +
                                                  std::to_string(m_number) + ": " + *error);
        ++m_number;
        return frame;
    }

    AVBased::IVideoProc& m_generator;
    Film m_film;
    unsigned m_formatCode;
    long long m_begin;
    FrameRange m_range;
    SoundTrack* m_sound;
    long long m_number = 0;
};

}  // namespace

std::optional<double> FilmOptions::Seconds() const {
    if (length.empty()) return std::nullopt;
    if (length == "audio") {
        if (sound.empty()) throw HostError(ExitCode::Usage, "--length audio needs a sound; name it with --audio FILE");
        return SoundSeconds(sound);
    }
    constexpr double longest = 24 * 3600;
    double seconds = 0;
    const char* const end = length.data() + length.size();
    if (const auto [rest, error] = std::from_chars(length.data(), end, seconds);
        error != std::errc() || rest != end || !(seconds > 0 && seconds <= longest))
        throw HostError(ExitCode::Usage, "--length " + length + " is no length; give seconds up to 86400, or audio");
    return seconds;
}

long long Film::FramesIn(double seconds) const {
    // A sound's length in whole frames is not to become one more by the last digit of a division.
    return std::max(1LL, std::llround(std::ceil(seconds * av_q2d(frameRate) - 1e-6)));
}

std::string OddSide(const Film& film, const OutputOptions& output) {
    if (film.profile || output.path == "-" || IsPictureOutput(output)) return {};
    return film.width % 2 ? "width" : film.height % 2 ? "height" : "";
}

void SetProperties(AVBased::IVideoProc& generator, const std::vector<std::pair<std::string, std::string>>& properties,
                   const std::function<void(const std::string&, const std::string&)>& refuse) {
    for (const auto& [name, value] : properties) {
        const bool taken = generator.SetProperty(name.c_str(), value.c_str());
        const std::optional<std::string> error = TakeModuleError();
        if (!taken || error) refuse(name, error.value_or("no reason given"));
    }
}

void RenderFilm(AVBased::IVideoProc& generator, const Film& film, const FilmOptions& filmOptions,
                const std::string& name) {
    const RunOptions& options = filmOptions.run;
    const FrameRange range = RangeWithin(film, options);
    FrameRange made = options.Chunk(range);
    if (options.joinTo) made.last = *options.joinTo;
    RefuseManyFramesInOnePicture(options, range);
    AVPixelFormat preferred = IsPictureOutput(options.output) ? AV_PIX_FMT_BGRA : AV_PIX_FMT_YUV420P;
    if (!options.pixelFormat.empty()) preferred = FfmpegFormat(ParseFormat(options.pixelFormat));
    const OutputOptions output = options.OutputFor(made);
    if (options.skipExisting && IsMadeAlready(output, made)) {
        PrintDetail(output.path + ": complete already");
        return;
    }
    OutputTraits traits = StoredTraits(film, output, preferred);
    const std::unique_ptr<SoundTrack> sound = OpenSound(film, filmOptions, range);
    if (sound) traits.audio = {&sound->Stream()};
    const std::unique_ptr<MediaSink> sink = OpenSink(output, traits, options.dryRun || options.plan);
    if (options.plan) return options.plan(range);
    const PictureShape shape = sink->Shape();
    const unsigned formatCode =
        options.pixelFormat.empty() ? EffectFormat(shape.format, false) : ParseFormat(options.pixelFormat);
    const bool overBlack = HasAlpha(FfmpegFormat(formatCode)) && !HasAlpha(shape.format);

    std::ostringstream summary;
    summary << name << ": frames " << made.first << " to " << made.last << " of " << film.frames << ", "
            << av_q2d(film.frameRate) << " a second, made as " << av_get_pix_fmt_name(FfmpegFormat(formatCode))
            << " (code " << formatCode << "); " << options.output.path << ": " << sink->Description();
    if (options.dryRun) {
        std::fprintf(stderr, "%s\n", summary.str().c_str());
        return;
    }
    PrintDetail(summary.str());
    if (options.joinTo) {
        const auto soundUntil = [&](double s) { return sound ? sound->Until(s) : std::vector<PacketPtr>(); };
        return JoinChunks(output, made, soundUntil, *sink);
    }

    FilmSource source(generator, film, formatCode, range.first, made, sound.get());
    tbb::enumerable_thread_specific<PictureConverter> converters([&] { return PictureConverter(shape); });
    const Stages stages{[&] { return source.Next(); },
                        [&](SourceStep& step) {
                            if (overBlack) LayOverBlack(*step.frame);
                            converters.local().Convert(step.frame);
                        }};
    RunReport report;
    {
        Progress progress(made.Count());
        report = RunPipeline(stages, *sink, output.threads, progress);
    }
    std::ostringstream spent;
    spent << report.frames << " frames; seconds of work: making " << report.nextSeconds << ", encoding "
          << report.encodeSeconds;
    PrintDetail(spent.str());
}

}  // namespace Nifikral
