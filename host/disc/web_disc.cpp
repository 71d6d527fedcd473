#include "host/disc/web_disc.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>

#include "host/base/errors.h"
#include "host/base/language_code.h"
#include "host/disc/disc_folder.h"
#include "host/disc/web_page.h"
#include "host/media/part_file.h"

namespace Nifikral {
namespace fs = std::filesystem;
namespace {

using Json = nlohmann::ordered_json;

std::string ReadText(const std::string& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string ColourText(unsigned colour) {
    char text[8];
    std::snprintf(text, sizeof text, "#%06x", colour & 0xFFFFFF);
    return text;
}

// Puts a finished file into a folder of the disc, and returns its name as the page has it.
class Store {
 public:
    explicit Store(fs::path folder) : m_folder(std::move(folder)) {}

    std::string Put(const char* part, const std::string& file) const {
        const fs::path name = fs::path(part) / fs::path(file).filename(), to = m_folder / name;
        std::error_code error;
        fs::create_directories(to.parent_path(), error);
        fs::create_hard_link(file, to, error);
        // Not every file system has links, and none has them to another.
        if (error) fs::copy_file(file, to, error);
        if (error) ThrowWriteError(to.string(), -error.value());
        return name.generic_string();
    }

 private:
    fs::path m_folder;
};

Json TrackJson(const WebTrack& track, const std::string& file) {
    const std::string code = LanguageCode(track.language);
    return {{"file", file}, {"language", code.empty() ? track.language : code}, {"title", track.title}};
}

Json FilmJson(const DiscFilm& film, const WebFilm& made, const Store& store) {
    Json json = {{"title", film.title},
                 {"poster", store.Put("films", made.poster)},
                 {"sounds", Json::array()},
                 {"subtitles", Json::array()}};
    for (const WebTrack& track : made.sounds)
        json["sounds"].push_back(TrackJson(track, store.Put("films", track.file)));
    for (const WebTrack& track : made.subtitles) {
        Json subtitles = TrackJson(track, store.Put("films", track.file));
        // A page from a file may not read other files.
        subtitles["text"] = ReadText(track.file);
        json["subtitles"].push_back(subtitles);
    }
    json["chapters"] = Json::array();
    for (const DiscChapter& chapter : film.chapters)
        json["chapters"].push_back({{"begin", chapter.begin}, {"title", chapter.title}});
    if (film.chapters.empty()) json["chapters"].push_back({{"begin", 0}, {"title", ""}});
    return json;
}

const char* KindName(DiscTarget::Kind kind) {
    switch (kind) {
        case DiscTarget::Kind::Film:
            return "film";
        case DiscTarget::Kind::Chapter:
            return "chapter";
        case DiscTarget::Kind::PlayAll:
            return "all";
        case DiscTarget::Kind::Page:
            break;
    }
    return "page";
}

Json ButtonJson(const DiscButton& button, const FilmProfile& profile) {
    const auto share = [](int length, int whole) { return std::round(length * 1e5 / whole) / 1e3; };
    const DiscTarget& target = button.target;
    return {{"caption", button.caption},
            {"kind", KindName(target.kind)},
            {"film", target.film},
            {"chapter", target.chapter},
            {"page", target.page},
            {"place",
             {share(button.x, profile.width), share(button.y, profile.height), share(button.width, profile.width),
              share(button.height, profile.height)}},
            {"links", {button.up, button.down, button.left, button.right}}};
}

Json PageJson(const DiscPage& page, const WebMenu& made, const FilmProfile& profile, const Store& store) {
    Json json = {{"film", page.film},
                 {"file", store.Put("menus", made.film)},
                 {"poster", store.Put("menus", made.poster)},
                 {"loopStart", made.loopStart},
                 {"texts", Json::array()},
                 {"buttons", Json::array()}};
    // What the pictures show in letters, for those who do not see them. Captions are the buttons' names.
    for (const MenuText& text : page.menu.texts)
        if (std::none_of(page.buttons.begin(), page.buttons.end(),
                         [&](const DiscButton& button) { return button.caption == text.styled.text; }))
            json["texts"].push_back(text.styled.text);
    for (const DiscButton& button : page.buttons) json["buttons"].push_back(ButtonJson(button, profile));
    return json;
}

const char* MarkName(ButtonMark mark) {
    return mark == ButtonMark::Frame ? "frame" : mark == ButtonMark::Underline ? "underline" : "marker";
}

// JSON that stands within a script's tags, which no text may end.
std::string WithinScript(const Json& json) {
    std::string text;
    for (const char c : json.dump(-1, ' ', false, Json::error_handler_t::replace))
        c == '<' ? text += "\\u003c" : text += c;
    return text;
}

}  // namespace

void CheckWebOutput(const std::string& output, bool overwrite) {
    std::error_code error;
    if (fs::exists(output, error) && !fs::is_directory(output, error))
        throw HostError(ExitCode::Output, output + " is a file; name a folder");
    CheckDiscFolder(output, {"index.html", "films", "menus"}, "a disc for browsers", overwrite);
}

void WriteWebDisc(const DiscProject& project, const std::vector<DiscPage>& pages, const std::vector<WebFilm>& films,
                  const std::vector<WebMenu>& menus, const std::string& output, bool overwrite) {
    CheckWebOutput(output, overwrite);
    const TemporaryFolder folder(FolderBeside(output));
    const Store store(folder.Path());
    const FilmProfile& profile = *project.profile;
    Json disc = {{"title", project.title},
                 {"aspect", std::round(av_q2d(profile.shownAspect) * 1e4) / 1e4},
                 {"language", project.menus.language},
                 {"words", Json::object()},
                 {"mark", MarkName(project.menus.mark)},
                 {"chosen", ColourText(project.menus.chosen)},
                 {"pressed", ColourText(project.menus.pressed)},
                 {"pages", Json::array()},
                 {"films", Json::array()}};
    for (const auto& [name, text] : discWords) disc["words"][name] = project.menus.words.*text;
    for (std::size_t i = 0; i < pages.size(); ++i)
        disc["pages"].push_back(PageJson(pages[i], menus.at(i), profile, store));
    for (std::size_t i = 0; i < project.films.size(); ++i)
        disc["films"].push_back(FilmJson(project.films[i], films.at(i), store));
    std::string page(webPage);
    page.replace(page.find(webPageMark), webPageMark.size(), WithinScript(disc));
    PartFile index((folder.Path() / "index.html").string(), false);
    index.Write(page);
    index.Commit();
    MoveFolder(folder.Path(), output);
}

}  // namespace Nifikral
