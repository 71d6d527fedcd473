#include "host/disc/disc_budget.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <sstream>
#include <stdexcept>

#include "host/base/errors.h"
#include "host/base/log.h"
#include "host/base/number_text.h"
#include "host/base/progress.h"
#include "host/disc/disc_folder.h"
#include "host/disc/disc_trial.h"
#include "host/disc/dvd_author.h"
#include "host/disc/dvd_title.h"
#include "host/disc/film_facts.h"
#include "host/disc/web_disc.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"
#include "host/media/sound_track.h"
#include "host/media/subtitle_file.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

// What a second takes beside pictures and sound: packs have heads, and each group of pictures one of its own, in which
// players find their way.
constexpr double packing = 1.02, navigationRate = 40, bytesOfKilobit = 125;
// Of the capacity for tables and for what encoders exceed their rate by.
constexpr double spare = 0.01;
constexpr int picturesOfPage = 6;

std::string ClockText(double seconds) {
    const long long whole = std::llround(seconds);
    char text[40];
    std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60, whole % 60);
    return text;
}

std::string Counted(std::size_t count, const std::string& what) {
    return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// Does what may fail for a file that an item names; the fault is filed.
template <class Work>
bool Try(const std::string& item, Faults& faults, Work work) {
    try {
        work();
        return true;
    } catch (const HostError& error) {
        if (error.Code() != ExitCode::Input) throw;
        std::istringstream lines(error.what());
        for (std::string line; std::getline(lines, line);) faults.AddInput(item, line);
        return false;
    }
}

void Note(const DiscFilm& film, const std::string& what) { PrintWarning(film.title + ": " + what); }

// What a video DVD holds otherwise than the film has it.
void NoteForDvd(const DiscFilm& film, const FilmFacts& facts, const FilmProfile& profile) {
    const std::size_t sounds = facts.soundLanguages.size(), subtitles = facts.subtitleLanguages.size();
    const auto tooMany = [&](std::size_t count, const char* what, std::size_t most) {
        if (count > most) Note(film, "has " + Counted(count, what) + "; a DVD holds the first " + std::to_string(most));
    };
    if (sounds == 0) Note(film, "has no sound; it gets a silent track");
    tooMany(sounds, "sound track", mostSounds);
    tooMany(subtitles, "subtitle track", mostSubtitles);
    const double shape = facts.shownAspect / av_q2d(profile.shownAspect);
    constexpr double muchOther = 1.6;
    if (shape > muchOther || shape < 1 / muchOther)
        Note(film, "is shaped " + NumberText(std::round(facts.shownAspect * 100) / 100) +
                       " to 1; it gets wide black borders");
}

PlannedTitle PlanFilm(const DiscFilm& film, const FilmProfile& profile, DiscFormat format) {
    const FilmFacts facts = FactsOf(film);
    RequireEnd(film.path, facts);
    const std::size_t sounds = facts.soundLanguages.size(), subtitles = facts.subtitleLanguages.size();
    const bool isDvd = format == DiscFormat::Dvd;
    PlannedTitle title;
    title.seconds = facts.seconds;
    title.copied = isDvd && IsReadyFor(profile, facts);
    // Browsers get films of about the size that they have.
    title.bytes = title.copied || !isDvd ? facts.bytes : 0;
    title.besideRate = RateBeside(facts);
    title.description = std::to_string(facts.width) + "x" + std::to_string(facts.height) + ", " +
                        NumberText(std::round(av_q2d(facts.frameRate) * 100) / 100) + " frames a second, " +
                        (sounds == 0 ? "no sound" : Counted(sounds, "sound track"));
    if (subtitles > 0) title.description += ", " + Counted(subtitles, "subtitle track");
    if (title.copied) title.description += ", copied";
    if (isDvd) NoteForDvd(film, facts, profile);
    return title;
}

PlannedTitle PlanShow(const DiscFilm& film) {
    PlannedTitle title;
    const std::vector<Slide> slides = ReadableSlides(FindSlides(film.pictures), {});
    for (const Slide& slide : slides)
        title.seconds += slide.seconds.value_or(slide.filmSeconds > 0 ? slide.filmSeconds : film.pictureSeconds);
    title.description =
        "slideshow of " + Counted(slides.size(), "picture") + (film.music.empty() ? ", no music" : ", music");
    return title;
}

// What the project says of a film beyond its end.
void CheckTimes(const DiscFilm& film, double seconds, Faults& faults) {
    const std::string end = ", and the film ends at " + NumberText(std::round(seconds * 100) / 100) + " seconds; ";
    if (film.thumbnail >= seconds)
        faults.Add(film.item + ".thumbnail", "is " + NumberText(film.thumbnail) + end + "give an earlier moment");
    if (!film.chapters.empty() && film.chapters.back().begin >= seconds)
        faults.Add(film.item + ".chapters",
                   "go to " + NumberText(film.chapters.back().begin) + end + "leave out those behind it");
}

// Rendering reports which fonts and characters are missing.
void CheckTitle(const std::string& item, const std::string& text, Faults& faults) {
    constexpr int size = 24;
    if (text.empty()) return;
    try {
        RenderText({text, "", {}, size, 0, 0, 0});
    } catch (const std::runtime_error& error) {
        faults.Add(item, error.what());
    }
}

int PagesOfMenus(const DiscProject& project) {
    const auto pages = [](std::size_t pictures) { return int((pictures + picturesOfPage - 1) / picturesOfPage); };
    int count = pages(project.films.size()) + (project.menus.instructions.empty() ? 0 : 1);
    for (const DiscFilm& film : project.films)
        if (project.menus.chapters && film.chapters.size() > 1) count += pages(film.chapters.size());
    return count;
}

double TitleRate(const PlannedTitle& title) { return title.besideRate + navigationRate; }
long long BytesOf(double seconds, double rate) { return std::llround(seconds * rate * packing * bytesOfKilobit); }

}  // namespace

std::string Gigabytes(long long bytes) {
    char text[40];
    std::snprintf(text, sizeof text, "%.2f GB", double(bytes) / 1e9);
    return text;
}

DiscPlan PlanDisc(const DiscProject& project, DiscFormat format, Faults& faults) {
    DiscPlan plan;
    {
        Progress progress((long long)project.films.size(), "film", "checking ");
        for (const DiscFilm& film : project.films) {
            PlannedTitle title;
            const bool isShow = film.path.empty();
            const bool known = Try(film.item + (isShow ? ".pictures" : ".path"), faults,
                                   [&] { title = isShow ? PlanShow(film) : PlanFilm(film, *project.profile, format); });
            if (known) CheckTimes(film, title.seconds, faults);
            for (std::size_t i = 0; i < film.subtitles.size(); ++i)
                Try(film.item + ".subtitles[" + std::to_string(i) + "]", faults,
                    [&] { SubtitleFile{film.subtitles[i]}; });
            if (!film.music.empty()) Try(film.item + ".music", faults, [&] { SoundSeconds(film.music); });
            CheckTitle(film.item + ".title", film.title, faults);
            plan.titles.push_back(title);
            progress.Advance();
        }
    }
    const DiscMenus& menus = project.menus;
    if (!menus.music.empty()) Try("menus.music", faults, [&] { SoundSeconds(menus.music); });
    if (!menus.background.empty())
        Try("menus.background", faults, [&] { ReadableSlides(FindSlides({menus.background}), {.strict = true}); });
    for (std::size_t i = 0; i < menus.instructions.size(); ++i)
        CheckTitle("menus.instructions[" + std::to_string(i) + "]", menus.instructions[i], faults);
    if (format == DiscFormat::Dvd)
        ShareSpace(plan, project, faults);
    else
        for (const PlannedTitle& title : plan.titles) plan.usedBytes += title.bytes;
    return plan;
}

void ShareSpace(DiscPlan& plan, const DiscProject& project, Faults& faults) {
    plan.menuPages = PagesOfMenus(project);
    plan.menuBytes = BytesOf(plan.menuPages * project.menus.seconds, menuVideoRate + silenceRate + navigationRate);
    double space = double(project.capacity) * (1 - spare) - double(plan.menuBytes);
    double seconds = 0, others = 0;  // of what is encoded, and kbits that are not its pictures'
    for (const PlannedTitle& title : plan.titles) {
        if (title.copied) space -= double(title.bytes);
        if (title.copied) continue;
        seconds += title.seconds;
        others += title.seconds * TitleRate(title);
    }
    const double room = seconds > 0 ? (space / (packing * bytesOfKilobit) - others) / seconds : 0;
    plan.videoRate = project.videoRate;
    if (project.videoRate == 0)
        plan.videoRate = int(std::clamp<double>(room, lowestVideoRate, highestVideoRate)) / 10 * 10;
    if (seconds <= 0) plan.videoRate = 0;
    plan.usedBytes = plan.menuBytes;
    for (PlannedTitle& title : plan.titles) {
        if (!title.copied) title.bytes = BytesOf(title.seconds, plan.videoRate + TitleRate(title));
        plan.usedBytes += title.bytes;
    }
    const std::string remedy = std::string(project.capacity < 8'000'000'000 ? "give \"gigabytes\": 8.5, " : "") +
                               "leave films out, or make several discs";
    if (space < 0 || (seconds > 0 && room < plan.videoRate))
        faults.Add("films", "take " + Gigabytes(plan.usedBytes) + " at " + std::to_string(plan.videoRate) +
                                " kbit/s, and the disc holds " + Gigabytes(project.capacity) + "; " +
                                (project.videoRate > 0 ? "leave out \"videoRate\", " : "") + remedy);
    else if (plan.videoRate > 0 && plan.videoRate < lowestGoodRate)
        PrintWarning("the films get " + std::to_string(plan.videoRate) + " kbit/s and will look coarse; " +
                     (project.videoRate > 0 ? "leave out \"videoRate\"" : remedy));
}

void CheckDiscOutput(const std::string& output, DiscFormat format, bool overwrite, const DiscPlan& plan,
                     Faults& faults) {
    const fs::path path = output.ends_with('/') ? fs::path(output).parent_path() : fs::path(output);
    const bool isImage = format == DiscFormat::Dvd && IsImage(output);
    std::error_code error;
    try {
        (format == DiscFormat::Web ? CheckWebOutput : CheckDvdOutput)(output, overwrite);
    } catch (const HostError& fault) {
        faults.AddOutput(fault.what());
        return;
    }
    // The titles and the folder of the disc, and the image of that.
    const long long needed = plan.usedBytes * (isImage ? 3 : 2), made = (long long)SizeOfFilesIn(WorkFolder(output));
    const fs::path folder = path.has_parent_path() ? path.parent_path() : fs::path(".");
    const fs::space_info space = fs::space(folder, error);
    if (!error && (long long)space.available < needed - made)
        faults.AddOutput(output + " needs " + Gigabytes(needed - made) + " while it is made, and " + folder.string() +
                         " has " + Gigabytes((long long)space.available) + " free; make room or name another place");
}

void EstimateTime(DiscPlan& plan, const DiscProject& project, const std::vector<DiscPage>& pages,
                  const EffectModule& module) {
    TitleJob job;
    job.project = &project;
    job.videoRate = plan.videoRate;
    for (const bool shows : {false, true}) {
        const PlannedTitle* longest = nullptr;
        double seconds = 0;
        for (std::size_t i = 0; i < plan.titles.size(); ++i) {
            const PlannedTitle& title = plan.titles[i];
            if (title.copied || title.seconds <= 0 || project.films[i].path.empty() != shows) continue;
            seconds += title.seconds;
            if (longest && longest->seconds >= title.seconds) continue;
            longest = &title;
            job.film = int(i);
        }
        if (!longest) continue;
        const DiscFilm& film = project.films[std::size_t(job.film)];
        plan.makingSeconds +=
            seconds * PassesOf(job) * TryFilm(project, film, longest->seconds, plan.videoRate, module);
    }
    double seconds = 0;
    for (const DiscPage& page : pages) seconds += double(page.menu.film.frames) / av_q2d(page.menu.film.frameRate);
    plan.makingSeconds += seconds * TryPage(project, pages.front(), module);
}

std::string DescribePlan(const DiscProject& project, DiscFormat format, const DiscPlan& plan) {
    std::ostringstream text;
    double seconds = 0;
    for (const PlannedTitle& title : plan.titles) seconds += title.seconds;
    text << (project.title.empty() ? "The disc" : project.title) << ": " << Counted(plan.titles.size(), "title") << ", "
         << ClockText(seconds) << ", " << project.profile->name << ", " << project.menus.mainTemplate << "\n";
    for (std::size_t i = 0; i < plan.titles.size(); ++i) {
        const DiscFilm& film = project.films[i];
        text << "  " << i + 1 << ". " << film.title << ": " << ClockText(plan.titles[i].seconds) << ", "
             << plan.titles[i].description;
        if (film.chapters.size() > 1) text << ", " << film.chapters.size() << " chapters";
        text << "\n";
    }
    if (format == DiscFormat::Web) return text.str();
    if (plan.videoRate > 0)
        text << "Video: " << plan.videoRate << " kbit/s"
             << "\n";
    text << "Space: " << Gigabytes(plan.usedBytes) << " of " << Gigabytes(project.capacity) << ", "
         << Gigabytes(plan.menuBytes) << " of that for about " << Counted(std::size_t(plan.menuPages), "menu page")
         << "\n";
    if (plan.makingSeconds > 0)
        text << "Time: about " << ClockText(plan.makingSeconds) << ", as the beginnings of films and menus took\n";
    return text.str();
}

}  // namespace Nifikral
