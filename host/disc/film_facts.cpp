#include "host/disc/film_facts.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/number_text.h"
#include "host/disc/disc_json.h"
#include "host/films/text_renderer.h"
#include "host/media/disc_subtitles.h"
#include "host/media/media_input.h"
#include "host/media/output_sound.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {
namespace {

constexpr int mostRate = 9'800'000;  // bits a second of pictures and sound together

std::string Entry(const AVDictionary* metadata, const char* key) {
    const AVDictionaryEntry* const entry = av_dict_get(metadata, key, nullptr, 0);
    return entry ? entry->value : "";
}

// Found when a disc is planned, not after hours of encoding.
void RequireDecoder(const std::string& path, const AVStream& sound, std::size_t number) {
    if (avcodec_find_decoder(sound.codecpar->codec_id)) return;
    throw HostError(ExitCode::Input, path + ": no decoder is known for sound track " + std::to_string(number + 1) +
                                         "; leave it out: ffmpeg -i IN -map 0 -map -0:a:" + std::to_string(number) +
                                         " -c copy OUT");
}

bool IsSoundOfDvd(const AVCodecParameters& sound) {
    constexpr AVCodecID codecs[] = {AV_CODEC_ID_AC3, AV_CODEC_ID_DTS, AV_CODEC_ID_PCM_DVD, AV_CODEC_ID_MP2};
    return sound.sample_rate == 48000 &&
           std::find(std::begin(codecs), std::end(codecs), sound.codec_id) != std::end(codecs);
}

// Whether players find a key frame as often as they expect. The beginning shows how the film was coded.
bool HasShortGroups(const std::string& path, int video, double frameRate) {
    constexpr int enough = 750;
    const double longest = 0.6 * frameRate + 0.5;  // 15 pictures of PAL, 18 of NTSC
    const FfmpegListener listener;
    const InputPtr input = OpenInput(path, nullptr, nullptr, listener);
    const PacketPtr packet = NewPacket();
    int group = 0;
    for (int count = 0; count < enough && av_read_frame(input.get(), packet.get()) >= 0;
         av_packet_unref(packet.get())) {
        if (packet->stream_index != video) continue;
        ++count;
        group = packet->flags & AV_PKT_FLAG_KEY ? 1 : group + 1;
        if (group > longest) return false;
    }
    return true;
}

bool IsCodedForDvd(const std::string& path, const MediaSource& film, const FilmFacts& facts) {
    const AVCodecParameters& video = *film.VideoStream().codecpar;
    const auto sound = film.AudioStreams();
    return video.codec_id == AV_CODEC_ID_MPEG2VIDEO && video.format == AV_PIX_FMT_YUV420P && !sound.empty() &&
           std::all_of(sound.begin(), sound.end(), [](const AVStream* s) { return IsSoundOfDvd(*s->codecpar); }) &&
           facts.seconds > 0 && double(facts.bytes) * 8 / facts.seconds <= mostRate && video.bit_rate <= mostRate &&
           HasShortGroups(path, film.VideoStream().index, av_q2d(facts.frameRate));
}

}  // namespace

std::vector<DiscChapter> MarksOf(const MediaSource& film) {
    constexpr double shortest = 1;  // seconds; players skip over shorter ones
    const double start = film.Window().first;
    std::vector<DiscChapter> chapters;
    for (const AVChapter* const mark : film.Chapters()) {
        const double begin = std::max(0.0, double(mark->start) * av_q2d(mark->time_base) - start);
        if (begin >= film.Length() - shortest || chapters.size() == mostChapters) break;
        if (chapters.empty() && begin >= shortest) chapters.emplace_back();
        if (!chapters.empty() && begin < chapters.back().begin + shortest) continue;
        chapters.push_back({chapters.empty() ? 0 : begin, TidyTitle(Entry(mark->metadata, "title"))});
    }
    if (chapters.size() < 2) chapters.clear();
    return chapters;
}

FilmFacts FactsOf(const std::string& path) {
    MediaSource::Options options;
    options.extras = true;
    const MediaSource film(path, options);
    if (!film.Photographs().empty())
        throw HostError(ExitCode::Input, path + " is a picture and no film; name it among the pictures of a slideshow");
    FilmFacts facts;
    facts.seconds = film.Length();
    if (facts.seconds <= 0)
        throw HostError(ExitCode::Input,
                        path + " does not say how long it is; convert it first: ffmpeg -i IN -c copy OUT");
    const AVFrame& first = film.FirstFrame();
    facts.width = first.width;
    facts.height = first.height;
    const AVRational pixel =
        first.sample_aspect_ratio.num ? first.sample_aspect_ratio : film.VideoStream().sample_aspect_ratio;
    facts.shownAspect = double(first.width) / first.height * (pixel.num > 0 && pixel.den > 0 ? av_q2d(pixel) : 1);
    facts.frameRate = film.FrameRate();
    facts.title = TidyTitle(Entry(film.Metadata(), "title"));
    facts.chapters = MarksOf(film);
    for (const AVStream* const sound : film.AudioStreams()) {
        RequireDecoder(path, *sound, facts.soundLanguages.size());
        facts.soundLanguages.push_back(Entry(sound->metadata, "language"));
        if (facts.soundLanguages.size() <= mostSounds) facts.soundRate += DvdBitRate(*sound->codecpar) / 1000;
    }
    for (const AVStream* const extra : film.ExtraStreams())
        if (DiscSubtitles::Takes(*extra->codecpar))
            facts.subtitleLanguages.push_back(Entry(extra->metadata, "language"));
    std::error_code error;
    facts.bytes = (long long)(std::filesystem::file_size(path, error));
    facts.codedForDvd = IsCodedForDvd(path, film, facts);
    return facts;
}

FilmFacts FactsOf(const DiscFilm& film) {
    FilmFacts facts = FactsOf(film.path);
    for (const std::string& file : film.subtitles) facts.subtitleLanguages.push_back(LanguageOfName(file));
    return facts;
}

void RequireEnd(const std::string& path, const FilmFacts& film) {
    constexpr double enough = 2, most = 1;  // seconds that are read, and that may be missing unnoticed
    const FfmpegListener listener;
    const InputPtr input = OpenInput(path, nullptr, nullptr, listener);
    const int video = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0) return;
    const double base = av_q2d(input->streams[video]->time_base);
    for (unsigned i = 0; i < input->nb_streams; ++i)
        if (int(i) != video) input->streams[i]->discard = AVDISCARD_ALL;
    const std::int64_t start = input->start_time == AV_NOPTS_VALUE ? 0 : input->start_time;
    const std::int64_t time = start + std::llround((film.seconds - enough) * AV_TIME_BASE);
    avformat_seek_file(input.get(), -1, INT64_MIN, time, time, 0);
    double end = 0;
    bool any = false;
    const PacketPtr packet = NewPacket();
    for (; av_read_frame(input.get(), packet.get()) >= 0; av_packet_unref(packet.get())) {
        any = any || packet->stream_index == video;
        if (packet->stream_index == video && packet->pts != AV_NOPTS_VALUE)
            end = std::max(end, double(packet->pts + packet->duration) * base - double(start) / AV_TIME_BASE);
    }
    ThrowIfInterrupted();
    // Matroska does not say how long the last picture is shown, and misses its own end.
    const bool saysLengths = std::string_view(input->iformat->name).find("matroska") == std::string_view::npos;
    if (any && !listener.EndedEarly() && !(saysLengths && end > 0 && end < film.seconds - most)) return;
    const auto tenths = [](double seconds) { return NumberText(std::round(seconds * 10) / 10); };
    const std::string lacks = end <= 0 || tenths(end) == tenths(film.seconds)
                                  ? "its end is missing"
                                  : "it ends at " + tenths(end) + " of " + tenths(film.seconds) + " seconds";
    throw HostError(ExitCode::Input, path + " is cut short: " + lacks +
                                         "; copy it anew, or keep what there is: ffmpeg -i IN -c copy OUT");
}

int RateBeside(const FilmFacts& film) {
    constexpr int subtitleRate = 20;
    return (film.soundLanguages.empty() ? silenceRate : film.soundRate) +
           subtitleRate * int(std::min(film.subtitleLanguages.size(), mostSubtitles));
}

bool IsReadyFor(const FilmProfile& profile, const FilmFacts& film) {
    constexpr double alike = 0.03;  // the shape of 704 columns and that of 720 differ by less
    return film.codedForDvd && (film.width == profile.width || film.width == 704) && film.height == profile.height &&
           av_cmp_q(film.frameRate, profile.frameRate) == 0 &&
           std::abs(film.shownAspect / av_q2d(profile.shownAspect) - 1) < alike;
}

std::string TidyTitle(const std::string& text) {
    constexpr char blanks[] = " \t\r\n";
    const std::size_t begin = text.find_first_not_of(blanks);
    if (begin == std::string::npos || FirstInvalidByte(text)) return {};
    std::string title = text.substr(begin, text.find_last_not_of(blanks) + 1 - begin);
    if (CountCharacters(title) <= longestTitle) return title;
    constexpr char ellipsis[] = "…";
    while (CountCharacters(title) >= longestTitle) title.pop_back();
    if (const std::size_t word = title.find_last_of(blanks); word != std::string::npos) title.erase(word);
    return title + ellipsis;
}

}  // namespace Nifikral
