#include "host/films/slide_pictures.h"

#include <tbb/parallel_for.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <mutex>
#include <random>

#include "host/base/errors.h"
#include "host/base/interruption.h"
#include "host/base/log.h"
#include "host/base/natural_order.h"
#include "host/base/progress.h"
#include "host/base/turn.h"
#include "host/catalogue/effect_module.h"
#include "host/films/media_manager.h"
#include "host/films/slide_list.h"
#include "host/media/jpeg_picture.h"
#include "host/media/media_source.h"
#include "host/media/sound_track.h"

namespace Nifikral {
namespace {

namespace fs = std::filesystem;

// Kinds that no decoder may know are among them: such a picture is reported and not passed over.
constexpr std::string_view pictureExtensions[] = {
    ".jpg",  ".jpeg", ".jpe", ".jfif", ".png", ".apng", ".gif", ".bmp", ".tif", ".tiff", ".webp", ".avif",
    ".heic", ".heif", ".jxl", ".jp2",  ".j2k", ".tga",  ".ppm", ".pgm", ".pbm", ".pnm",  ".pam",  ".pcx",
    ".sgi",  ".ras",  ".xbm", ".xpm",  ".dds", ".exr",  ".hdr", ".psd", ".qoi", ".ico",  ".dpx"};

constexpr double longestSeconds = 86400;

constexpr std::string_view filmExtensions[] = {".mp4", ".m4v",  ".mov", ".mkv", ".webm", ".avi", ".mts", ".m2ts",
                                               ".mpg", ".mpeg", ".vob", ".ogv", ".wmv",  ".flv", ".3gp", ".ts",
                                               ".3g2", ".asf",  ".dv",  ".m2t", ".mod",  ".tod", ".mxf"};

template <std::size_t count>
bool EndsIn(const std::string_view (&list)[count], const fs::path& path) {
    std::string extension = path.extension().string();
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char c) { return std::tolower(c); });
    return std::find(std::begin(list), std::end(list), extension) != std::end(list);
}

std::vector<std::string> SlidesIn(const std::string& folder) {
    std::error_code error;
    std::vector<std::string> names;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
        const std::string name = entry.path().filename().string();
        std::error_code unreadable;
        // Programs keep previews and notes under hidden names.
        const bool hidden = name.starts_with('.');
        const bool shows = IsPictureName(entry.path()) || IsFilmName(entry.path());
        if (!hidden && shows && !entry.is_directory(unreadable))
            names.push_back(name);
        else
            PrintDetail(entry.path().string() + " is no picture or film by its name; it is left out");
    }
    if (error) throw HostError(ExitCode::Input, folder + " cannot be read (" + error.message() + "); make it readable");
    if (names.empty())
        throw HostError(ExitCode::Input,
                        folder + " holds no pictures; name a folder with .jpg, .png or other picture files");
    std::sort(names.begin(), names.end(), ComesBefore);
    for (std::string& name : names) name = (fs::path(folder) / name).string();
    return names;
}

double SecondsOf(const MediaSource& film) {
    const AVStream& stream = film.VideoStream();
    if (stream.duration > 0) return double(stream.duration) * av_q2d(stream.time_base);
    const long long estimated = film.EstimatedFrameCount();
    return double(estimated > 0 ? estimated : film.CountFrames({})) / av_q2d(film.FrameRate());
}

// "2026-07-14 15:02:11" of a container's "2026-07-14T15:02:11.000000Z".
std::string DateOf(const MediaSource& film) {
    const AVDictionaryEntry* const entry = av_dict_get(film.Metadata(), "creation_time", nullptr, 0);
    std::string date = entry ? entry->value : "";
    if (date.size() < 19) return {};
    date.resize(19);
    date[10] = ' ';
    return date;
}

// What hinders a slide, "" for nothing; else its facts are stored.
std::string TrySlide(Slide& slide, const SlideTrial& trial) {
    if (trial.headsOnly && HasJpegHead(slide.path)) {
        slide.facts = ReadPhotograph(slide.path);
        return {};
    }
    MediaManager manager(trial.store);
    AVBased::IAVSource* const source = manager.OpenSource(PathInList(slide.path).c_str(), "");
    if (!source) return TakeFiledMessage().value_or(slide.path + " cannot be read");
    slide.plays = !source->IsStill();
    source->Free();
    TakeFiledMessage();
    slide.facts = ReadPhotograph(slide.path);
    if (!slide.plays || EndsIn(pictureExtensions, slide.path)) return {};
    try {
        const MediaSource film(slide.path, {.range = {}});
        slide.filmSeconds = SecondsOf(film);
        if (slide.filmSeconds > longestSeconds)
            return slide.path + " says that it lasts " + std::to_string(std::llround(slide.filmSeconds)) +
                   " seconds, and no more than a day is shown; cut it, or repair it: ffmpeg -i IN -c copy OUT";
        slide.hasSound = !film.AudioStreams().empty();
        if (slide.facts.date.empty()) slide.facts.date = DateOf(film);
    } catch (const HostError& error) {
        return error.what();
    }
    try {
        if (slide.hasSound) RequireSound(slide.path);
    } catch (const HostError&) {
        PrintWarning(slide.path + " plays without its sound, which cannot be decoded");
        slide.hasSound = false;
    }
    return {};
}

}  // namespace

bool IsPictureName(const fs::path& path) { return EndsIn(pictureExtensions, path); }
bool IsFilmName(const fs::path& path) { return EndsIn(filmExtensions, path); }

std::vector<Slide> FindSlides(const std::vector<std::string>& inputs) {
    std::vector<Slide> slides;
    for (const std::string& input : inputs) {
        std::error_code error;
        std::vector<Slide> found;
        if (fs::is_directory(input, error))
            for (const std::string& file : SlidesIn(input)) found.emplace_back().path = file;
        else if (fs::exists(input, error))
            found.emplace_back().path = input;
        else if (input.starts_with('@'))
            found = ReadSlideList(input.substr(1));
        else
            throw HostError(ExitCode::Input, input + ": no such file or folder; check the name");
        std::move(found.begin(), found.end(), std::back_inserter(slides));
    }
    return slides;
}

std::vector<Slide> ReadableSlides(std::vector<Slide> slides, const SlideTrial& trial) {
    std::vector<std::string> faults(slides.size());
    {
        Progress progress((long long)slides.size(), "picture", "checking ");
        std::mutex mutex;
        static char checking;
        const auto check = [&](std::size_t i) {
            const Turn turn(&checking);
            if (IsInterrupted()) return;
            faults[i] = TrySlide(slides[i], trial);
            const std::lock_guard lock(mutex);
            progress.Advance();
        };
        { const Turn before(&checking); }
        tbb::parallel_for(std::size_t(0), slides.size(), check);
        const Turn behind(&checking);
    }
    ThrowIfInterrupted();
    std::vector<Slide> good;
    std::string lines;
    for (std::size_t i = 0; i < slides.size(); ++i) {
        if (faults[i].empty()) {
            good.push_back(std::move(slides[i]));
            continue;
        }
        lines += faults[i] + "\n";
        if (!trial.strict) PrintWarning(faults[i] + " (skipped)");
    }
    if (trial.strict && !lines.empty()) throw HostError(ExitCode::Input, lines);
    if (good.empty())
        throw HostError(ExitCode::Input,
                        "none of the pictures can be read (" + std::to_string(slides.size()) + " tried); name others");
    return good;
}

std::vector<std::string> SlideOrders() { return {"given", "name", "date", "random"}; }

void OrderSlides(std::vector<Slide>& slides, const std::string& order, std::uint32_t seed) {
    const auto sort = [&](auto comesBefore) { std::stable_sort(slides.begin(), slides.end(), comesBefore); };
    if (order == "name")
        sort([](const Slide& a, const Slide& b) {
            return ComesBefore(fs::path(a.path).filename().string(), fs::path(b.path).filename().string());
        });
    if (order == "date") {
        sort([](const Slide& a, const Slide& b) {
            const std::string &first = a.facts.date, &second = b.facts.date;
            return !first.empty() && (second.empty() || first < second);
        });
        const auto undated = std::ranges::count_if(slides, [](const Slide& slide) { return slide.facts.date.empty(); });
        if (undated > 0)
            PrintWarning(std::to_string(undated) + " of " + std::to_string(slides.size()) +
                         " pictures hold no date; they come last");
    }
    if (order == "random") {
        // The same on every system, which the library's own shuffle is not.
        std::mt19937 random(seed);
        for (std::size_t i = slides.size(); i > 1; --i) std::swap(slides[i - 1], slides[random() % i]);
    }
}

}  // namespace Nifikral
