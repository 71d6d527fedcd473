#include "host/disc/dvd_title.h"

#include <algorithm>
#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>

#include "host/base/errors.h"
#include "host/base/language_code.h"
#include "host/base/log.h"
#include "host/base/version.h"
#include "host/disc/film_facts.h"
#include "host/disc/stages.h"
#include "host/disc/subtitle_text.h"
#include "host/disc/title_copy.h"
#include "host/films/slideshow.h"
#include "host/media/disc_subtitles.h"
#include "host/media/media_input.h"
#include "host/media/part_file.h"
#include "host/run/apply.h"

namespace Nifikral {
namespace {

// kbit/s. A player reads pictures, sound and subtitles at 9800 together, at most.
constexpr int mostInAll = 9800, mostVideo = 9000;
constexpr double slideTransition = 1;

using Json = nlohmann::ordered_json;

std::string ReportPath(const std::string& output) { return output + ".json"; }

const DiscFilm& FilmOf(const TitleJob& job) { return job.project->films.at(std::size_t(job.film)); }

std::vector<std::string> LanguageCodes(const std::vector<std::string>& languages, std::size_t most) {
    std::vector<std::string> codes;
    for (const std::string& language : languages)
        if (codes.size() < most) codes.push_back(LanguageCode(language));
    return codes;
}

// Seconds of what was made: until its last picture, which lies in its last bytes, has been shown.
double SecondsOf(const std::string& file, AVRational rate) {
    constexpr std::int64_t tail = 4 << 20;
    const FfmpegListener listener;
    const InputPtr input = OpenInput(file, nullptr, nullptr, listener);
    const int video = av_find_best_stream(input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (video < 0) throw HostError(ExitCode::Failed, file + " came out without pictures; try nifikral apply");
    const AVStream& stream = *input->streams[video];
    av_seek_frame(input.get(), -1, std::max<std::int64_t>(0, avio_size(input->pb) - tail), AVSEEK_FLAG_BYTE);
    const std::int64_t frame = av_rescale_q(1, av_inv_q(rate), stream.time_base);
    std::int64_t last = stream.start_time;
    const PacketPtr packet = NewPacket();
    for (; av_read_frame(input.get(), packet.get()) >= 0; av_packet_unref(packet.get()))
        // The last to be shown may have no other time than that of its decoding, a picture earlier.
        if (packet->stream_index == video) last = std::max({last, packet->pts, packet->dts + frame});
    const double seconds = double(last - stream.start_time) * av_q2d(stream.time_base);
    return std::round(seconds * av_q2d(rate) + 1) / av_q2d(rate);
}

// Where chapters begin, at whole pictures.
std::vector<double> ChapterTimes(const DiscFilm& film, AVRational rate) {
    std::vector<double> times = {0};
    for (const DiscChapter& chapter : film.chapters) {
        const double time = std::round(chapter.begin * av_q2d(rate)) / av_q2d(rate);
        if (time > times.back()) times.push_back(time);
    }
    return times;
}

std::vector<std::string> EncoderOptions(const TitleJob& job, const FilmFacts& facts) {
    const int most = std::min(mostVideo, mostInAll - RateBeside(facts)), rate = std::min(job.videoRate, most);
    // The encoder closes its groups only where it looks for no changes of scene.
    return {"b=" + std::to_string(rate) + "k", "maxrate=" + std::to_string(most) + "k", "flags=+cgop",
            "sc_threshold=1000000000"};
}

RunOptions OptionsFor(const TitleJob& job, const FilmFacts& facts) {
    RunOptions run;
    run.profile = job.project->profile->name;
    run.threads = job.threads;
    run.output.path = job.output;
    run.output.format = "dvd";
    run.output.overwrite = true;
    run.output.silence = true;
    run.output.paintSubtitle = PaintSubtitle;
    run.output.subtitleFiles = FilmOf(job).subtitles;
    run.output.encoderOptions = EncoderOptions(job, facts);
    run.output.keyTimes = ChapterTimes(FilmOf(job), job.project->profile->frameRate);
    return run;
}

// Goes through the pictures for what the second pass is to know of them. What there is to be said is said then.
void EncodeFirst(const DiscFilm& film, RunOptions run, const EffectModule& module) {
    struct Quiet {
        Verbosity before = GetVerbosity();
        Quiet() { SetVerbosity(Verbosity::Quiet); }
        ~Quiet() { SetVerbosity(before); }
    };
    const Quiet quiet;
    run.output.path = "/dev/null";
    run.output.sound = run.output.silence = false;
    run.output.subtitleFiles.clear();
    EncodeFilm(film, run, module);
}

void EncodeInPasses(const TitleJob& job, RunOptions run, const EffectModule& module) {
    StatisticsOfPass statistics;
    if (PassesOf(job) > 1) {
        run.output.firstPass = &statistics;
        EncodeFirst(FilmOf(job), run, module);
    }
    EncodeFilm(FilmOf(job), run, module);
}

void WriteReport(const TitleReport& report, const std::string& output) {
    const Json json = {{"seconds", report.seconds},
                       {"audioLanguages", report.audioLanguages},
                       {"subtitleLanguages", report.subtitleLanguages},
                       {"chapters", report.chapters},
                       {"copied", report.copied}};
    PartFile file(ReportPath(output), true);
    file.Write(json.dump(2) + "\n");
    file.Commit();
}

// The nearest places from which a film that is coded already can be played.
std::vector<double> ChaptersAt(const std::vector<double>& keys, const std::vector<double>& wanted) {
    std::vector<double> chapters = {0};
    for (const double time : wanted) {
        const double nearest = *std::min_element(
            keys.begin(), keys.end(), [&](double a, double b) { return std::abs(a - time) < std::abs(b - time); });
        if (nearest > chapters.back()) chapters.push_back(nearest);
    }
    return chapters;
}

}  // namespace

void EncodeFilm(const DiscFilm& film, const RunOptions& run, const EffectModule& module) {
    if (film.path.empty()) {
        SlideshowOptions show;
        show.inputs = film.pictures;
        show.transitionSeconds = std::min(slideTransition, film.pictureSeconds / 2);
        show.pictureSeconds = film.pictureSeconds - show.transitionSeconds;
        show.film.run = run;
        if (run.output.sound && !film.music.empty()) show.film.sounds = {film.music};
        MakeSlideshow(show, module);
    } else {
        ApplyOptions apply;
        apply.run = run;
        apply.keepGoing = true;
        RunEffects(film.path, apply, module, false, [](const PreparedSource&) { return EffectRun{}; });
    }
}

int PassesOf(const TitleJob& job) { return job.videoRate < twoPassesBelow ? 2 : 1; }

std::string KeyOfTitle(const TitleJob& job) {
    const DiscFilm& film = FilmOf(job);
    const FilmProfile& profile = *job.project->profile;
    std::ostringstream key;
    key << Version() << '\n' << profile.name << '\n' << job.videoRate << (job.copy ? " copied\n" : "\n");
    if (film.path.empty()) key << film.pictureSeconds << '\n';
    for (const double begin : ChapterTimes(film, profile.frameRate)) key << begin << ' ';
    key << '\n' << KeyOfFile(film.path) << KeyOfFile(film.music);
    for (const std::vector<std::string>* const files : {&film.pictures, &film.subtitles})
        for (const std::string& file : *files) key << KeyOfFile(file);
    return key.str();
}

TitleReport MakeTitle(const TitleJob& job, const EffectModule& module) {
    const DiscFilm& film = FilmOf(job);
    const FilmFacts facts = film.path.empty() ? FilmFacts() : FactsOf(film);
    const RunOptions run = OptionsFor(job, facts);
    std::vector<double> chapters = run.output.keyTimes;
    bool copied = false;
    if (job.copy && IsReadyFor(*job.project->profile, facts))
        if (const auto keys = CopyTitle(film.path, run.OutputFor({}), *job.project->profile)) {
            chapters = ChaptersAt(*keys, chapters);
            copied = true;
        }
    if (!copied) EncodeInPasses(job, run, module);
    TitleReport report{SecondsOf(job.output, job.project->profile->frameRate),
                       LanguageCodes(facts.soundLanguages, mostSounds),
                       LanguageCodes(facts.subtitleLanguages, mostSubtitles), chapters, copied};
    if (report.audioLanguages.empty()) report.audioLanguages.emplace_back();
    // A chapter behind the end would lead nowhere.
    std::erase_if(report.chapters, [&](double begin) { return begin > 0 && begin >= report.seconds; });
    WriteReport(report, job.output);
    return report;
}

TitleReport ReadTitleReport(const std::string& output) {
    std::ifstream file(ReportPath(output));
    TitleReport report;
    try {
        const Json json = Json::parse(file);
        json.at("seconds").get_to(report.seconds);
        json.at("audioLanguages").get_to(report.audioLanguages);
        json.at("subtitleLanguages").get_to(report.subtitleLanguages);
        json.at("chapters").get_to(report.chapters);
        json.at("copied").get_to(report.copied);
    } catch (const Json::exception&) {
        throw HostError(ExitCode::Input,
                        ReportPath(output) + " is missing or damaged; remove " + output + " and run the command again");
    }
    return report;
}

}  // namespace Nifikral
