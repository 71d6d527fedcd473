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
#include "avbase/IMenuPlayback.h"
#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/number_text.h"
#include "host/media/frame_adapter.h"
#include "host/media/sound_track.h"
#include "host/run/run.h"

namespace Nifikral {
namespace {

// How the output has the film: pictures in square pixels, videos as the profile wants them.
OutputTraits StoredTraits(const Film& film, const OutputOptions& output, AVPixelFormat preferred) {
    const FilmProfile* const profile = IsPictureOutput(output) ? nullptr : film.profile;
    if (!profile) return TraitsOfFilm(film.width, film.height, film.frameRate, preferred);
    OutputTraits traits = TraitsOfFilm(profile->width, profile->height, film.frameRate, preferred);
    traits.pixelAspect = profile->PixelAspect();
    return traits;
}

struct Songs {
    std::vector<SoundPiece> pieces;
    double seconds = 0;
};

// One after another, each fading into the next.
Songs SongsOf(const FilmOptions& options) {
    Songs songs;
    for (const std::string& path : options.sounds) {
        // Here, and not an hour later when it is its turn.
        RequireSound(path);
        SoundPiece song{path, songs.seconds, SoundSeconds(path)};
        if (!songs.pieces.empty()) {
            SoundPiece& before = songs.pieces.back();
            song.fadeIn = before.fadeOut = std::min({options.fade, before.length / 2, song.length / 2});
            song.begin -= song.fadeIn;
        }
        songs.seconds = song.begin + song.length;
        songs.pieces.push_back(song);
    }
    return songs;
}

// The sound beside the range of the film; null when there is none or the output holds none.
std::unique_ptr<SoundTrack> OpenSound(const Film& film, const FilmOptions& options, const FrameRange& range) {
    const bool any = !options.sounds.empty() || !film.sound.empty();
    if (!any || !options.run.output.sound || !options.run.chunk.empty()) return nullptr;
    if (IsPictureOutput(options.run.output)) {
        if (!options.sounds.empty()) PrintWarning(options.run.output.path + " holds no sound; --audio is left out");
        return nullptr;
    }
    const double rate = av_q2d(film.frameRate), begin = double(range.first) / rate;
    const double end = double(range.last + 1) / rate, filmEnd = double(film.frames) / rate;
    const SoundCut cut{begin, end, filmEnd, options.fade};
    if (options.sounds.empty()) return std::make_unique<SoundTrack>(film.sound, cut);
    const Songs songs = SongsOf(options);
    if (songs.seconds < filmEnd - 0.5)
        PrintWarning(options.sounds.back() + " ends after " + NumberText(std::round(songs.seconds)) +
                     " s and the film after " + NumberText(std::round(filmEnd)) +
                     " s; the rest is silent (--length audio makes the film as long as the sound)");
    return std::make_unique<SoundTrack>(songs.pieces, cut);
}

// Calls the generator for one frame after the other.
class FilmMaker final : public PictureMaker {
 public:
    FilmMaker(AVBased::IVideoProc& generator, const Film& film, const FilmOptions& options, const std::string& name,
              const FramesOfRun& frames)
        : m_generator(generator), m_film(film), m_options(options), m_name(name), m_frames(frames) {}

    FrameRange Existing(const FrameRange& range, bool) override { return range; }

    OutputTraits Traits(const OutputOptions& output) override {
        AVPixelFormat preferred = IsPictureOutput(output) ? AV_PIX_FMT_BGRA : AV_PIX_FMT_YUV420P;
        if (const std::string& asked = m_options.run.pixelFormat; !asked.empty())
            preferred = FfmpegFormat(ParseFormat(asked));
        OutputTraits traits = StoredTraits(m_film, output, preferred);
        m_sound = OpenSound(m_film, m_options, m_frames.run);
        if (m_sound) traits.audio = {&m_sound->Stream()};
        traits.soundIsRaw = true;
        return traits;
    }

    std::string Prepare(const PictureShape& shape) override {
        const std::string& asked = m_options.run.pixelFormat;
        const unsigned format = asked.empty() ? EffectFormat(shape.format, false) : ParseFormat(asked);
        m_overBlack = HasAlpha(FfmpegFormat(format)) && !HasAlpha(shape.format);
        m_pictures.emplace(m_generator, m_film, format);
        m_converters.emplace([shape] { return PictureConverter(shape); });
        std::ostringstream text;
        text << m_name << ": frames " << m_frames.made.first << " to " << m_frames.made.last << " of " << m_film.frames
             << ", " << av_q2d(m_film.frameRate) << " a second, made as " << av_get_pix_fmt_name(FfmpegFormat(format))
             << " (code " << format << ")";
        if (m_film.loopStart > 0)
            text << ", repeats from frame " << m_film.loopStart << " ("
                 << double(m_film.loopStart) / av_q2d(m_film.frameRate) << " s)";
        return text.str();
    }

    long long ExpectedFrames() const override { return m_frames.made.Count(); }

    std::optional<SourceStep> Next() override {
        const FrameRange& made = m_frames.made;
        if (m_pictures->Number() < made.first) static_cast<void>(m_pictures->GoTo(made.first));
        if (m_pictures->Number() > made.last) return std::nullopt;
        SourceStep step;
        step.number = m_pictures->Number();
        step.frame = m_pictures->Make();
        step.frame->pts = step.number - m_frames.run.first;
        const bool last = step.number == made.last;
        step.audio = AudioUntil(last ? std::numeric_limits<double>::infinity()
                                     : double(step.number + 1 - m_frames.run.first) / av_q2d(m_film.frameRate));
        return step;
    }

    void Finish(SourceStep& step) override {
        if (m_overBlack) LayOverBlack(*step.frame);
        m_converters->local().Convert(step.frame);
    }

    std::vector<PacketPtr> AudioUntil(double seconds) override {
        return m_sound ? m_sound->Until(seconds) : std::vector<PacketPtr>();
    }

 private:
    AVBased::IVideoProc& m_generator;
    const Film& m_film;
    const FilmOptions& m_options;
    const std::string& m_name;
    FramesOfRun m_frames;
    std::unique_ptr<SoundTrack> m_sound;
    std::optional<FilmPictures> m_pictures;
    bool m_overBlack = false;  // what is transparent has to show in an output without alpha
    std::optional<tbb::enumerable_thread_specific<PictureConverter>> m_converters;
};

}  // namespace

std::optional<double> FilmOptions::Seconds() const {
    if (length.empty()) return std::nullopt;
    if (length == "audio") {
        if (sounds.empty()) throw HostError(ExitCode::Usage, "--length audio needs a sound; name it with --audio FILE");
        return SongsOf(*this).seconds;
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

FilmPictures::FilmPictures(AVBased::IVideoProc& generator, const Film& film, unsigned formatCode)
    : m_generator(generator), m_film(film), m_format(formatCode), m_seam(film.loopStart, film.frames, film.frameRate) {
    if (film.over) m_over.emplace(*film.over, formatCode);
}

bool FilmPictures::GoTo(long long number) {
    if (number > m_seam.Lead() && !m_seam.HasLead()) {
        if (!Jump(m_seam.Lead())) return false;
        while (!m_seam.HasLead() && m_number < number) Make();
    }
    return Jump(number);
}

bool FilmPictures::Jump(long long number) {
    if (number == m_number) return true;
    TarvoBased::GetTarvoException()->Clear();
    auto* const menu = static_cast<AVBased::IMenuPlayback*>(m_generator.GetInterface(AVBased::IMenuPlayback::name));
    TarvoBased::GetTarvoException()->Clear();
    const bool gone = m_film.seeks ? m_generator.Seek(unsigned(number)) : menu && menu->GoTo(unsigned(number));
    if (gone) {
        m_number = number;
        RequireDone();
        return true;
    }
    TarvoBased::GetTarvoException()->Clear();
    if (number < m_number) return false;
    // What a frame shows may follow from those before it.
    while (m_number < number) Make();
    return true;
}

void FilmPictures::RequireDone() {
    ThrowIfInterrupted();
    const int code = FiledCode();
    if (const std::optional<std::string> error = TakeModuleError())
        throw HostError(
            ExitCode::Failed,
            std::string(m_generator.GetName()) + " fails at frame " + std::to_string(m_number) + ": " + *error, code);
}

FramePtr FilmPictures::Make() {
    ThrowIfInterrupted();
    const AVPixelFormat format = FfmpegFormat(m_format);
    FramePtr frame = NewPicture(format, m_film.width, m_film.height);
    frame->colorspace = IsRgb(format) ? AVCOL_SPC_RGB : UsualMatrix(m_film.height);
    frame->color_range = IsRgb(format) ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG;
    frame->pkt_duration = 1;
    const std::ptrdiff_t pitches[4] = {frame->linesize[0], frame->linesize[1], frame->linesize[2], frame->linesize[3]};
    av_image_fill_black(frame->data, pitches, format, frame->color_range, frame->width, frame->height);
    FrameAdapter adapter(*frame, m_format, int(m_number));
    AVBased::ImagePostion record{0, 0, unsigned(frame->width), unsigned(frame->height)};
    TarvoBased::GetTarvoException()->Clear();
    m_generator.ProcFrameInPlace(&record, int(m_number), &adapter);
    if (m_film.drawOver) m_film.drawOver(adapter, m_number);
    RequireDone();
    m_seam.Close(*frame, m_format, m_number);
    if (m_over && m_number >= m_film.overBegin) m_over->Lay(*frame);
    ++m_number;
    return frame;
}

void RenderFilm(AVBased::IVideoProc& generator, const Film& film, const FilmOptions& options, const std::string& name) {
    const FramesOfRun frames = options.run.Frames(film.frames);
    FilmMaker maker(generator, film, options, name, frames);
    ClearLeftovers(options.run);
    MakeRun(options.run, frames, maker);
}

}  // namespace Nifikral
