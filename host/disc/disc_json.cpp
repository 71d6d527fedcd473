#include "host/disc/disc_json.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <iterator>
#include <regex>

#include "host/base/colour_text.h"
#include "host/base/errors.h"
#include "host/base/nearest_names.h"
#include "host/catalogue/catalogue.h"
#include "host/films/menu_project.h"

namespace Nifikral {
namespace {

constexpr int version = 1;
constexpr double longestFilm = 24 * 3600, bytesOfGigabyte = 1e9;
constexpr const char* marks[] = {"frame", "underline", "marker"};  // in the order of ButtonMark

struct DiscKey {
    const char* name;
    const char* value;
};
constexpr DiscKey discKeys[] = {
    {"version", "of this form of file: 1"},
    {"title", "of the disc"},
    {"profile", "pal-4:3, pal-16:9, ntsc-4:3 or ntsc-16:9"},
    {"gigabytes", "that the disc holds: 4.7 unless given, 8.5 for two layers"},
    {"videoRate", "of the films, in kbit/s; as the disc's space allows unless given"},
    {"films", "[{...}, ...] in their order"},
    {"menus", "{...}"},
};
constexpr DiscKey filmKeys[] = {
    {"title", "what its button says"},
    {"path", "a film's file; or for a slideshow:"},
    {"pictures", "[folder or picture, ...] in their order"},
    {"pictureSeconds", "how long each picture shows; 5 unless given"},
    {"music", "a file with sound for the slideshow"},
    {"subtitles", "[file, ...] for a film; names give the languages, as lake.de.srt does"},
    {"chapters", "[second, ...] at which they begin, or [{\"begin\": second, \"title\": text}, ...]"},
    {"thumbnail", "the second at which the film's picture in the menu begins; 0 unless given"},
};
constexpr DiscKey menuKeys[] = {
    {"template", "of the main menu; nifikral list shows all"},
    {"chapterTemplate", "submenu_common or submenu_festival"},
    {"instructionTemplate", "instructionmenu_common or instructionmenu_festival"},
    {"mood", "own, light or dark: the colours of what the templates paint, and of texts; own unless given"},
    {"background", "a picture behind the menus; the template's own unless given"},
    {"music", "a file with sound; silence unless given"},
    {"seconds", "after which a menu starts over; 20 unless given"},
    {"fade", "seconds in which the music fades out before that; 2 unless given"},
    {"playAll", "true or false: a button for all films in turn"},
    {"chapters", "true or false: menus for the chapters of films"},
    {"instructions", "[line, ...] of a page of instructions; none unless given"},
    {"words", "{\"playAll\": \"Alles\", ...} on the buttons; the names of all:"},
    {"language", "of the words, such as de, for readers of a page for browsers; en unless given"},
    {"mark", "how the chosen button is marked: frame, underline or marker"},
    {"chosen", "colour of a chosen button, \"#rrggbb\""},
    {"pressed", "colour of a pressed button"},
};
constexpr const char* chapterKeys[] = {"begin", "title"};

template <std::size_t count>
std::vector<const char*> Names(const DiscKey (&keys)[count]) {
    std::vector<const char*> names;
    for (const DiscKey& key : keys) names.push_back(key.name);
    return names;
}

std::string Title(const ProjectItem& item) {
    std::string title = item.Text();
    if (const std::size_t count = CountCharacters(title); count > longestTitle)
        item.Fault("has " + std::to_string(count) + " characters; give " + std::to_string(longestTitle) + " at most");
    return title;
}

// Whether a button can be read that says this.
void RefuseEmpty(const ProjectItem& item, const std::string& text) {
    if (item && text.empty()) item.Fault("is empty; write something");
}

std::string File(const ProjectItem& item, const std::string& project) {
    const std::string file = item.Text();
    if (file.empty()) item.Fault("names no file");
    return ProjectPath(project, file);
}

std::vector<DiscChapter> ReadChapters(const ProjectItem& list) {
    std::vector<DiscChapter> chapters;
    for (const ProjectItem& entry : list.Entries()) {
        DiscChapter chapter;
        if (const ProjectItem begin = entry["begin"]) {
            entry.RefuseOtherKeys(chapterKeys);
            chapter.begin = begin.Real(0, longestFilm);
            if (const ProjectItem title = entry["title"]) chapter.title = Title(title);
        } else {
            chapter.begin = entry.Real(0, longestFilm);
        }
        if (!chapters.empty() && chapter.begin <= chapters.back().begin)
            entry.Fault("does not begin after the chapter before it; put chapters in order");
        else if (chapters.empty() && chapter.begin > 0)
            chapters.emplace_back();
        chapters.push_back(chapter);
    }
    if (chapters.size() > mostChapters)
        list.Fault("are " + std::to_string(chapters.size()) + ", and a title of a DVD has " +
                   std::to_string(mostChapters) + " at most; leave some out");
    return chapters;
}

DiscFilm ReadFilm(const ProjectItem& item, const std::string& project) {
    item.RefuseOtherKeys(Names(filmKeys));
    DiscFilm film;
    film.item = item.Name();
    film.title = Title(item["title"]);
    RefuseEmpty(item["title"], film.title);
    if (item["path"]) film.path = File(item["path"], project);
    for (const ProjectItem& entry : item["pictures"].Entries()) film.pictures.push_back(File(entry, project));
    const bool isShow = bool(item["pictures"]);
    if (isShow && film.pictures.empty()) item["pictures"].Fault("are none; name a folder or pictures");
    if (isShow == bool(item["path"]))
        item.Fault(isShow ? "has a path and pictures; leave one of them out" : "has no path; name a film, or pictures");
    for (const char* const key : {"music", "pictureSeconds"})
        if (!isShow && item[key]) item[key].Fault("is for slideshows; leave it out, or name pictures in place of path");
    if (item["music"]) film.music = File(item["music"], project);
    if (item["pictureSeconds"]) film.pictureSeconds = item["pictureSeconds"].Real(0.04, 3600);
    for (const ProjectItem& entry : item["subtitles"].Entries()) film.subtitles.push_back(File(entry, project));
    if (isShow && item["subtitles"]) item["subtitles"].Fault("are for films; leave them out");
    film.chapters = ReadChapters(item["chapters"]);
    if (item["thumbnail"]) film.thumbnail = item["thumbnail"].Real(0, longestFilm);
    return film;
}

// The name of a template of one of the three roles, which shows in how it begins.
void ReadTemplate(const ProjectItem& item, const char* begin, std::string& name) {
    if (!item) return;
    name = item.Text();
    std::vector<std::string> known;
    for (const EffectInfo& effect : Catalogue())
        if ((effect.traits & menu) && std::string_view(effect.name).starts_with(begin)) known.emplace_back(effect.name);
    if (std::find(known.begin(), known.end(), name) != known.end()) return;
    const std::string meant = DidYouMean(name, known);
    item.Fault("\"" + name + "\" is no template for this" +
               (meant.empty() ? "; give one such as " + known.front() : meant));
}

DiscWords ReadWords(const ProjectItem& item) {
    std::vector<const char*> names;
    for (const DiscWord& word : discWords) names.push_back(word.name);
    item.RefuseOtherKeys(names);
    DiscWords words;
    for (const auto& [name, text] : discWords)
        if (const ProjectItem own = item[name]) {
            words.*text = Title(own);
            RefuseEmpty(own, words.*text);
        }
    return words;
}

DiscMenus ReadMenus(const ProjectItem& item, const std::string& project) {
    item.RefuseOtherKeys(Names(menuKeys));
    DiscMenus menus;
    ReadTemplate(item["template"], "menu_", menus.mainTemplate);
    ReadTemplate(item["chapterTemplate"], "submenu_", menus.chapterTemplate);
    ReadTemplate(item["instructionTemplate"], "instructionmenu_", menus.instructionTemplate);
    if (item["mood"]) menus.mood = ReadMood(item["mood"]);
    if (item["background"]) menus.background = File(item["background"], project);
    if (item["music"]) menus.music = File(item["music"], project);
    if (item["seconds"]) menus.seconds = item["seconds"].Real(2, 600);
    if (item["fade"]) menus.fade = item["fade"].Real(0, 60);
    if (item["playAll"]) menus.playAll = item["playAll"].Boolean();
    if (item["chapters"]) menus.chapters = item["chapters"].Boolean();
    for (const ProjectItem& line : item["instructions"].Entries()) menus.instructions.push_back(Title(line));
    menus.words = ReadWords(item["words"]);
    if (const ProjectItem language = item["language"]) {
        menus.language = language.Text();
        if (!std::regex_match(menus.language, std::regex("[A-Za-z]{2,8}(-[A-Za-z0-9]{1,8})*")))
            language.Fault("\"" + menus.language + "\" names no language; give one such as de or pt-BR");
    }
    if (const ProjectItem mark = item["mark"]) {
        const std::string name = mark.Text();
        const auto* const found = std::find(std::begin(marks), std::end(marks), name);
        if (found == std::end(marks)) mark.Fault("\"" + name + "\" is no mark; give frame, underline or marker");
        menus.mark = ButtonMark(found - std::begin(marks));
    }
    if (item["chosen"]) menus.chosen = item["chosen"].Colour();
    if (item["pressed"]) menus.pressed = item["pressed"].Colour();
    if (menus.pressed == menus.chosen)
        item[item["pressed"] ? "pressed" : "chosen"].Fault("is the colour of buttons that are " +
                                                           std::string(item["pressed"] ? "chosen" : "pressed") +
                                                           "; give another, so that one sees the difference");
    return menus;
}

const FilmProfile* ReadDiscProfile(const ProjectItem& item) {
    const std::string name = item ? item.Text() : "pal-16:9";
    const FilmProfile* const profile = FindProfile(name);
    if (profile && profile->dvd) return profile;
    item.Fault("\"" + name + "\" is no profile of DVDs; give pal-4:3, pal-16:9, ntsc-4:3 or ntsc-16:9");
    return FindProfile("pal-16:9");
}

// Whole numbers without a fraction, others to a thousandth.
Json Number(double value) {
    const double rounded = std::round(value * 1000) / 1000;
    if (rounded == std::floor(rounded)) return Json((long long)(rounded));
    return Json(rounded);
}

Json WriteChapters(const std::vector<DiscChapter>& chapters) {
    Json list = Json::array();
    for (const DiscChapter& chapter : chapters) {
        const Json begin = Number(chapter.begin);
        list.push_back(chapter.title.empty() ? begin : Json{{"begin", begin}, {"title", chapter.title}});
    }
    return list;
}

}  // namespace

std::size_t CountCharacters(const std::string& text) {
    return std::size_t(std::count_if(text.begin(), text.end(), [](char c) { return (c & 0xC0) != 0x80; }));
}

DiscProject ReadDiscProject(const std::string& path, Faults& faults) {
    return ReadDiscProject(LoadProject(path), path, faults);
}

DiscProject ReadDiscProject(const Json& json, const std::string& path, Faults& faults) {
    const ProjectItem root(&json, "", faults);
    // What else a later version writes is not for this one to judge.
    if (const ProjectItem own = root["version"]; own && own.Integer({1}) > version)
        throw HostError(ExitCode::Input,
                        path + ": version: is " + std::to_string(own.Integer()) + ", and this nifikral reads version " +
                            std::to_string(version) +
                            "; use a newer nifikral, or write the project anew with nifikral init disc");
    root["version"].Integer({version, version});
    root.RefuseOtherKeys(Names(discKeys));
    DiscProject project;
    if (root["title"]) project.title = Title(root["title"]);
    project.profile = ReadDiscProfile(root["profile"]);
    if (root["gigabytes"]) project.capacity = std::llround(root["gigabytes"].Real(0.1, 8.5) * bytesOfGigabyte);
    if (root["videoRate"]) project.videoRate = root["videoRate"].Integer({lowestVideoRate, highestVideoRate});
    for (const ProjectItem& entry : root["films"].Entries()) project.films.push_back(ReadFilm(entry, path));
    if (project.films.empty()) root["films"].Fault("are none; name at least one film, or let nifikral init disc do it");
    if (project.films.size() > mostTitles) root["films"].Fault(TooManyTitles(project.films.size()));
    project.menus = ReadMenus(root["menus"], path);
    return project;
}

std::string TooManyTitles(std::size_t count) {
    return "are " + std::to_string(count) + ", and a DVD holds " + std::to_string(mostTitles) +
           " titles; leave some out, or make several discs";
}

std::string DiscJson(const DiscProject& project, const std::string& path) {
    namespace fs = std::filesystem;
    const fs::path folder = fs::absolute(path).parent_path();
    const auto file = [&](const std::string& name) { return fs::absolute(name).lexically_proximate(folder).string(); };
    Json films = Json::array();
    for (const DiscFilm& film : project.films) {
        Json entry{{"title", film.title}};
        if (film.pictures.empty()) {
            entry["path"] = file(film.path);
            for (const std::string& subtitles : film.subtitles) entry["subtitles"].push_back(file(subtitles));
        } else {
            entry["pictures"] = Json::array();
            for (const std::string& picture : film.pictures) entry["pictures"].push_back(file(picture));
            entry["pictureSeconds"] = Number(film.pictureSeconds);
            if (!film.music.empty()) entry["music"] = file(film.music);
        }
        if (!film.chapters.empty()) entry["chapters"] = WriteChapters(film.chapters);
        entry["thumbnail"] = Number(film.thumbnail);
        films.push_back(std::move(entry));
    }
    const DiscMenus& own = project.menus;
    Json menus{{"template", own.mainTemplate},
               {"chapterTemplate", own.chapterTemplate},
               {"instructionTemplate", own.instructionTemplate}};
    if (own.mood != Mood::Own) menus["mood"] = moodNames[int(own.mood)];
    if (!own.background.empty()) menus["background"] = file(own.background);
    if (!own.music.empty()) menus["music"] = file(own.music);
    menus["seconds"] = Number(own.seconds);
    menus["fade"] = Number(own.fade);
    menus["playAll"] = own.playAll;
    menus["chapters"] = own.chapters;
    if (!own.instructions.empty()) menus["instructions"] = own.instructions;
    const DiscWords usual;
    for (const auto& [name, text] : discWords)
        if (own.words.*text != usual.*text) menus["words"][name] = own.words.*text;
    if (own.language != DiscMenus().language) menus["language"] = own.language;
    menus["mark"] = marks[int(own.mark)];
    menus["chosen"] = ColourText(own.chosen);
    menus["pressed"] = ColourText(own.pressed);

    Json json{{"version", version}, {"title", project.title}, {"profile", project.profile->name}};
    json["gigabytes"] = Number(double(project.capacity) / bytesOfGigabyte);
    if (project.videoRate > 0) json["videoRate"] = project.videoRate;
    json["films"] = std::move(films);
    json["menus"] = std::move(menus);
    // A list of numbers stands in one line.
    const std::regex numbers(R"(\[\n([-0-9.,\n ]+)\])"), blanks(R"(\s+)");
    std::string text = json.dump(2), tidy;
    for (std::smatch found; std::regex_search(text, found, numbers); text = found.suffix()) {
        const std::string line = std::regex_replace(found[1].str(), blanks, " ");
        tidy += found.prefix().str() + "[" + line.substr(1, line.size() - 2) + "]";
    }
    return tidy + text + "\n";
}

namespace {

std::string WordNames() {
    std::string names;
    for (const DiscWord& word : discWords) names += std::string(names.empty() ? "      " : ", ") + word.name;
    return names + "\n";
}

}  // namespace

std::string DescribeDiscKeys() {
    std::string text;
    const auto add = [&](const std::string& before, const DiscKey& key) {
        text.append(before).append(key.name) += std::string(": ") + key.value + "\n";
    };
    for (const DiscKey& key : discKeys) {
        add("  ", key);
        if (std::string_view(key.name) == "films")
            for (const DiscKey& inner : filmKeys) add("    ", inner);
        if (std::string_view(key.name) == "menus")
            for (const DiscKey& inner : menuKeys) {
                add("    ", inner);
                if (std::string_view(inner.name) == "words") text += WordNames();
            }
    }
    return text;
}

}  // namespace Nifikral
