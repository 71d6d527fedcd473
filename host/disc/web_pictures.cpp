#include "host/disc/web_pictures.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <string_view>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/disc/film_facts.h"
#include "host/films/slideshow.h"
#include "host/media/browser_media.h"
#include "host/media/chunk_file.h"
#include "host/media/encoder.h"
#include "host/media/part_file.h"
#include "host/run/apply.h"
#include "host/run/chunks.h"
#include "host/run/plan.h"
#include "host/run/run.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

constexpr double slideTransition = 1;

// The pictures that a coder of H.264 holds decide what its run takes in memory: those that it looks ahead at, and those
// of each of its threads. Several films are made at once, so that few threads keep all cores busy.
std::vector<std::string> EncoderOptions(int threads) {
    constexpr int mostThreads = 6;
    std::vector<std::string> options = {"threads=" + std::to_string(std::min(threads, mostThreads))};
    if (FindEncoder("", AV_CODEC_ID_H264).name == std::string_view("libx264"))
        options.emplace_back("x264-params=rc-lookahead=10:sync-lookahead=0");
    return options;
}

// Square pixels within the most that there may be, as "WxH"; empty where the pictures are so already.
std::string SquareSize(const FilmFacts& facts) {
    const double aspect = facts.shownAspect;
    double width = facts.width, height = width / aspect;
    // No detail is lost: one side stays, the other grows.
    if (height < facts.height) {
        height = facts.height;
        width = height * aspect;
    }
    const bool lies = width >= height;
    const double shrink = std::min({1.0, (lies ? webAcross : webDown) / width, (lies ? webDown : webAcross) / height});
    const auto even = [&](double side) { return std::max(2, 2 * int(std::lround(side * shrink / 2))); };
    const auto isNear = [](int side, int stored) { return stored > 1 && std::abs(side - stored) <= 1; };
    if (isNear(even(width), facts.width) && isNear(even(height), facts.height)) return {};
    return std::to_string(even(width)) + "x" + std::to_string(even(height));
}

void EncodeFilm(const DiscFilm& film, RunOptions run, const EffectModule& module) {
    ApplyOptions apply;
    for (const DiscChapter& chapter : film.chapters) run.output.keyTimes.push_back(chapter.begin);
    // They stand beside the pictures.
    run.output.extras = false;
    apply.run = std::move(run);
    apply.keepGoing = true;
    apply.preparation.scale = SquareSize(FactsOf(film.path));
    RunEffects(film.path, apply, module, false, [](const PreparedSource&) { return EffectRun{}; });
}

void EncodeShow(const DiscFilm& film, const FilmProfile& profile, RunOptions run, const EffectModule& module) {
    SlideshowOptions show;
    show.inputs = film.pictures;
    show.transitionSeconds = std::min(slideTransition, film.pictureSeconds / 2);
    show.pictureSeconds = film.pictureSeconds - show.transitionSeconds;
    show.size =
        std::to_string(2 * int(std::lround(webDown * av_q2d(profile.shownAspect) / 2))) + "x" + std::to_string(webDown);
    show.frameRate = std::to_string(profile.frameRate.num) + "/" + std::to_string(profile.frameRate.den);
    show.film.run = std::move(run);
    if (!film.music.empty()) show.film.sounds = {film.music};
    MakeSlideshow(show, module);
}

const DiscFilm& FilmOf(const WebCoding& coding) { return coding.project->films.at(std::size_t(coding.film)); }

RunOptions RunOf(const WebCoding& coding) {
    RunOptions run = RunForWeb(coding.output, coding.threads);
    run.output.mark = RunMark({coding.key});
    return run;
}

void Encode(const WebCoding& coding, const RunOptions& run, const EffectModule& module) {
    const DiscFilm& film = FilmOf(coding);
    if (film.path.empty())
        EncodeShow(film, *coding.project->profile, run, module);
    else
        EncodeFilm(film, run, module);
}

// All frames; none where chunks would not meet.
FrameRange CountFrames(const WebCoding& coding, const EffectModule& module) {
    FrameRange frames{0, -1};
    RunOptions run = RunOf(coding);
    run.reportFrames = [&](const OutputOptions&, const FrameRange& all) { frames = all; };
    try {
        Encode(coding, run, module);
    } catch (const HostError& error) {
        if (error.Code() != ExitCode::Usage) throw;
        PrintDetail(error.what());
    }
    return frames;
}

// Says which chunks there are to be: the mark of what they are made from, and a line for each.
std::string PlanPath(const WebCoding& coding) { return coding.output + ".plan"; }

std::vector<FrameRange> PlannedChunks(const WebCoding& coding) {
    std::ifstream file(PlanPath(coding));
    std::string line;
    std::vector<FrameRange> chunks;
    if (std::getline(file, line) && line == RunOf(coding).output.mark)
        while (std::getline(file, line)) chunks.push_back(ParseRange(line));
    return chunks;
}

std::vector<FrameRange> ShareOut(long long frames, long long chunks) {
    constexpr long long fewest = 250;  // what the coder takes into one group of pictures
    chunks = std::min(chunks, frames / fewest);
    return chunks < 2 ? std::vector<FrameRange>() : ChunksOf({0, frames - 1}, chunks);
}

}  // namespace

RunOptions RunForWeb(const std::string& output, int threads) {
    RunOptions run;
    run.output.path = output;
    run.output.overwrite = true;
    run.output.progressive = true;
    run.output.audioEncoder = "aac";
    run.threads = threads;
    run.output.encoderOptions = EncoderOptions(run.ThreadCount());
    return run;
}

void CodeForWeb(const WebCoding& coding, const EffectModule& module) {
    RunOptions run = RunOf(coding);
    const std::vector<FrameRange> chunks = PlannedChunks(coding);
    for (const FrameRange& chunk : chunks) CodeWebChunk(coding, chunk, module);
    if (!chunks.empty()) run.joinTo = chunks.back().last;
    Encode(coding, run, module);
    std::error_code error;
    fs::remove(PlanPath(coding), error);
    fs::remove_all(ChunkFolder(coding.output), error);
}

std::vector<FrameRange> PlanWebChunks(const WebCoding& coding, long long chunks, const EffectModule& module) {
    const DiscFilm& film = FilmOf(coding);
    if (chunks < 2 || (!film.path.empty() && BrowserTracksOf(film.path, webAcross, webDown).pictures)) return {};
    const std::vector<FrameRange> before = PlannedChunks(coding);
    const long long frames = before.empty() ? CountFrames(coding, module).Count() : before.back().last + 1;
    std::vector<FrameRange> planned = ShareOut(frames, chunks);
    if (!before.empty() && planned.size() == before.size()) return planned;
    std::error_code error;
    fs::remove(PlanPath(coding), error);
    fs::remove_all(ChunkFolder(coding.output), error);
    if (planned.empty()) return {};
    PartFile file(PlanPath(coding), true);
    file.Write(RunOf(coding).output.mark + "\n");
    for (const FrameRange& chunk : planned) file.Write(RangeText(chunk) + "\n");
    file.Commit();
    return planned;
}

void CodeWebChunk(const WebCoding& coding, const FrameRange& chunk, const EffectModule& module) {
    RunOptions run = RunOf(coding);
    run.chunk = RangeText(chunk);
    run.skipExisting = true;
    ClearLeftovers(run);
    Encode(coding, run, module);
}

}  // namespace Nifikral
