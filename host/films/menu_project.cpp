#include "host/films/menu_project.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <memory>
#include <sstream>
#include <stdexcept>

#include "avbase/IAVManager.h"
#include "host/base/log.h"
#include "host/base/nearest_names.h"
#include "host/films/button_list.h"
#include "host/films/manager_sources.h"
#include "host/films/media_manager.h"
#include "host/films/menu_pages.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

struct ProjectKey {
    const char* name;
    const char* value;
};
constexpr ProjectKey projectKeys[] = {
    {"template", "the template's name, as a check"},
    {"profile", "pal-4:3, pal-16:9, ntsc-4:3, ntsc-16:9, hd or uhd: size, frame rate and shape of the pixels"},
    {"width", "of the menu, in square pixels; the profile's unless given"},
    {"height", "the same"},
    {"frameRate", "frames a second: 25, 29.97, \"30000/1001\"; the profile's or 25 unless given"},
    {"duration", "seconds; 10 unless given"},
    {"loopStart", "seconds that lead to the part that players repeat; 0, the whole film, unless given"},
    {"mood", "own, light or dark: the colours of what the template paints, and of its texts; own unless given"},
    {"sourcePath", "the picture or video behind everything"},
    {"backgroundMask", "a picture that is white where that shows"},
    {"additionSourcePaths", "[file, ...]: pictures and videos; every list below has one entry for each of them"},
    {"perPage",
     "how many of them a page shows; the template's own number, or all where they have places, unless given"},
    {"isAdditionSourceImages", "[true or false, ...]: false for a video; follows from the file unless given"},
    {"additionSourceSizes", "[[width, height], ...] to fit into; the template's or the picture's own unless given"},
    {"captions", "[text, ...]: their names, which the template shows on them, \"\" for none"},
    {"maskPaths", "[file, ...]: a picture that is white where the entry shows, \"\" for none"},
    {"startPositions", "[[x, y], ...] of the top-left corner; the template's own unless given"},
    {"endPositions", "[[x, y], ...]; the start unless given"},
    {"moveSpeeds", "[number, ...]: pixels to the right a frame"},
    {"moveFormulas", "[[slope, intercept], ...]: frame n moves y by n (slope x + intercept)"},
    {"startTrans", "[0 to 255, ...]: opacity on the first frame; 255 unless given"},
    {"endTrans", "[0 to 255, ...]: opacity at the end of the fade; 255 unless given"},
    {"fadeSpeeds", "[number, ...]: steps of the opacity a frame"},
    {"textInfos",
     "[{\"text\": ...}, ...]; in the template's style, or each also with \"face\" (font families, the first one that "
     "is "
     "installed counts), \"fontstyle\" (words of bold italic underline outline shadow halo), \"size\" (pixels), "
     "\"spacing\" (between letters, thousandths of the size), \"color\" (\"#rrggbb\"), \"box\" ([x, y] or [x, y, "
     "width, "
     "height]), \"align\" in it (left, center, right), and either \"move\" ({\"end\": [x, y], \"formula\": [slope, "
     "intercept], \"speed\": n}) or \"show\" ([first, last] frame, from 0)"},
    {"buttons",
     "[text, ...]: up to 36 texts in a list that stands still over the menu, in the colour of its first text"},
    {"textNumber", "follows from textInfos"},
    {"additionSourceNumber", "follows from additionSourcePaths"},
};
constexpr Limits sides{1, largestSide}, trans{0, 255};

std::vector<std::string> ReadButtons(const ProjectItem& list) {
    std::vector<std::string> buttons;
    for (const ProjectItem& entry : list.Entries()) {
        buttons.push_back(entry.Text());
        const bool isBlank = buttons.back().find_first_not_of(" \t\n\r") == std::string::npos;
        if (isBlank) entry.Fault("is empty; write something or leave the entry out");
        if (buttons.back().find('\n') != std::string::npos) entry.Fault("has several lines; give one");
    }
    if (buttons.size() > mostButtons)
        list.Fault("has " + std::to_string(buttons.size()) + " entries; a page of a menu holds up to " +
                   std::to_string(mostButtons));
    return buttons;
}

// Calls `read` with each source and its entry of a list that has one for each.
void ForEachSource(const ProjectItem& list, std::vector<MenuSource>& sources, const char* shape,
                   const std::function<void(MenuSource&, const ProjectItem&)>& read) {
    if (!list) return;
    const std::vector<ProjectItem> entries = list.Entries();
    if (entries.size() != sources.size())
        list.Fault("has " + std::to_string(entries.size()) + " entries for " + std::to_string(sources.size()) +
                   " additionSourcePaths; give " + shape + " for each of them");
    for (std::size_t i = 0; i < std::min(entries.size(), sources.size()); ++i) read(sources[i], entries[i]);
}

// As many as the module takes.
constexpr int mostSources = 4096;

std::vector<MenuSource> ReadSources(const ProjectItem& root, const std::string& project) {
    std::vector<MenuSource> sources;
    const ProjectItem paths = root["additionSourcePaths"];
    const std::vector<ProjectItem> entries = paths.Entries();
    // Before any is opened.
    if (entries.size() > mostSources) {
        paths.Fault("names " + std::to_string(entries.size()) + " files; a menu takes at most " +
                    std::to_string(mostSources));
        return sources;
    }
    for (const ProjectItem& entry : entries) {
        MenuSource& source = sources.emplace_back();
        source.item = entry.Name();
        source.path = ProjectPath(project, entry.Text());
        if (source.path.empty()) entry.Fault("names no file; give a picture or a video");
    }
    using Item = const ProjectItem&;
    const auto each = [&](const char* key, const char* shape, const std::function<void(MenuSource&, Item)>& read) {
        ForEachSource(root[key], sources, shape, read);
    };
    const auto number = [&](const char* key, int MenuSource::*member, const Limits& limits) {
        each(key, "a whole number", [&](MenuSource& source, Item item) { source.*member = item.Integer(limits); });
    };
    const auto pair = [&](const char* key, const char* shape, std::vector<int> MenuSource::*member,
                          const Limits& limits = {}) {
        each(key, shape, [&](MenuSource& source, Item item) { source.*member = item.Integers(shape, limits); });
    };
    each("maskPaths", "a picture's name or \"\"", [&](MenuSource& source, Item item) {
        if (!item) return;
        source.maskItem = item.Name();
        source.mask = ProjectPath(project, item.Text());
    });
    each("captions", "a text or \"\"", [&](MenuSource& source, Item item) {
        source.caption = item.Text();
        RefuseSeparators(item, source.caption, ";\\");
    });
    pair("additionSourceSizes", "[width, height]", &MenuSource::size, sides);
    pair("startPositions", "[x, y]", &MenuSource::start);
    pair("endPositions", "[x, y]", &MenuSource::end);
    pair("moveFormulas", "[slope, intercept]", &MenuSource::formula);
    number("moveSpeeds", &MenuSource::speed, {});
    number("startTrans", &MenuSource::startTrans, trans);
    number("endTrans", &MenuSource::endTrans, trans);
    number("fadeSpeeds", &MenuSource::fadeSpeed, {});
    for (MenuSource& source : sources)
        if (source.end.empty()) source.end = source.start;
    return sources;
}

void CheckNumber(const ProjectItem& number, std::size_t count, const char* list) {
    if (number && number.Integer() != int(count))
        number.Fault("is " + std::to_string(number.Integer()) + " and not the " + std::to_string(count) +
                     " entries of " + list + "; leave it out, it follows from them");
}

struct FreeSource {
    void operator()(AVBased::IAVSource* source) const { source->Free(); }
};
using SourcePtr = std::unique_ptr<AVBased::IAVSource, FreeSource>;

// Opens a file as the module will. Null, and a fault filed, when that fails.
SourcePtr TryFile(const std::string& item, const std::string& path, const char* importer, AVBased::IAVManager& files,
                  Faults& faults) {
    if (path.empty()) return nullptr;
    SourcePtr source(files.OpenSource(path.c_str(), importer));
    if (const std::optional<std::string> error = TakeFiledMessage()) faults.AddInput(item, *error);
    return source;
}

void TryFiles(MenuProject& project, const ProjectItem& root, AVBased::IAVManager& files, Faults& faults) {
    const SourcePtr background = TryFile("sourcePath", project.background, "", files, faults);
    project.backgroundMoves = background && !background->IsStill();
    TryFile("backgroundMask", project.backgroundMask, AVBased::importerImage, files, faults);
    const std::vector<ProjectItem> kinds = root["isAdditionSourceImages"].Entries();
    for (std::size_t i = 0; i < project.sources.size(); ++i) {
        MenuSource& source = project.sources[i];
        const SourcePtr opened = TryFile(source.item, source.path, "", files, faults);
        const bool still = !opened || opened->IsStill();
        source.isImage = i < kinds.size() ? kinds[i].Boolean() : still;
        if (source.isImage && !still)
            PrintWarning(source.path +
                         " is a video, and isAdditionSourceImages says picture: only its first frame shows");
        TryFile(source.maskItem, source.mask, source.isImage ? AVBased::importerImage : "", files, faults);
    }
}

// The captions of the sources, as texts.
std::vector<MenuText> NamesOf(const MenuProject& project) {
    std::vector<MenuText> names;
    for (std::size_t i = 0; i < project.sources.size(); ++i) {
        if (project.sources[i].caption.empty()) continue;
        MenuText& name = names.emplace_back(project.names);
        name.item = "captions[" + std::to_string(i) + "]";
        name.styled.text = project.sources[i].caption;
        name.box = {};
        name.isAligned = false;
        name.ofSource = int(i);
    }
    return names;
}

// Rendering reports which fonts and characters are missing.
void TryTexts(const MenuProject& project, Faults& faults) {
    const auto render = [&](const std::string& item, StyledText text, int width) {
        try {
            if (width > 0) text.text = BreakLines(text, width, true);
            RenderText(text);
        } catch (const std::runtime_error& error) {
            faults.Add(item, error.what());
        }
    };
    for (const MenuText& text : project.texts)
        if (!text.styled.text.empty()) render(text.item, text.styled, text.box[2]);
    for (const MenuText& name : NamesOf(project)) render(name.item, name.styled, 0);
    for (std::size_t i = 0; i < project.buttons.size(); ++i) {
        StyledText button = project.labels;
        button.text = project.buttons[i];
        button.size = 16;
        render("buttons[" + std::to_string(i) + "]", button, 0);
    }
}

const FilmProfile* ReadProfile(const ProjectItem& item) {
    if (!item) return nullptr;
    const std::string name = item.Text();
    const FilmProfile* const profile = FindProfile(name);
    if (!profile) item.Fault("\"" + name + "\"" + NoProfile(name));
    return profile;
}

// `asked` is the profile that the command names, which outdoes the project's.
Film ReadFilm(const ProjectItem& root, const FilmProfile* asked) {
    constexpr double usualSeconds = 10, longestSeconds = 24 * 3600;
    Film film;
    const FilmProfile* const profile = film.profile = asked ? asked : ReadProfile(root["profile"]);
    if (profile) film.frameRate = profile->frameRate;
    if (const ProjectItem rate = root["frameRate"]; rate && !asked) {
        film.frameRate = rate.FrameRate();
        if (profile && profile->dvd && av_cmp_q(film.frameRate, profile->frameRate) != 0)
            rate.Fault("is not the rate of the profile " + std::string(profile->name) + "; leave it out");
    }
    if (root["loopStart"])
        film.loopStart = std::llround(root["loopStart"].Real(0, longestSeconds) * av_q2d(film.frameRate));
    film.frames = film.FramesIn(root["duration"] ? root["duration"].Real(0.001, longestSeconds) : usualSeconds);
    if (profile && !root["width"] && !root["height"]) {
        film.width = profile->SquareWidth();
        film.height = profile->height;
        return film;
    }
    film.width = root["width"].Integer(sides);
    film.height = root["height"].Integer(sides);
    constexpr double alike = 0.02;
    if (profile && std::abs(film.width / (film.height * av_q2d(profile->shownAspect)) - 1) > alike)
        root["width"].Fault("and height have another shape than the profile " + std::string(profile->name) + "; give " +
                            std::to_string(profile->SquareWidth()) + " and " + std::to_string(profile->height));
    return film;
}

// The colours of a background that neither the template nor its project paints.
std::string PlainBackground(const Film& film, Mood mood) {
    constexpr unsigned colours[][2] = {{0x3A4E68, 0x101622}, {0xF4F1EC, 0xD3DAE2}, {0x23262E, 0x08090C}};
    const auto& [from, to] = colours[int(mood)];
    return PlainPicture(film.width, film.height, from, to);
}

// Items of one list, a separator between them.
template <class Items, class Write>
std::string Join(const Items& items, char separator, Write write) {
    std::string list;
    for (std::size_t i = 0; i < items.size(); ++i) {
        if (i > 0) list += separator;
        list += write(items[i]);
    }
    return list;
}

}  // namespace

void CheckLoop(const Film& film, Faults& faults) {
    if (film.loopStart >= film.frames)
        faults.Add("loopStart", "lies past the end of the film; give less, or 0 to repeat the whole of it");
}

MenuProject ReadMenuProject(const std::string& path, const std::string& templateName, const FilmProfile* profile,
                            Faults& faults) {
    MediaManager manager;
    return ReadMenuProject(LoadProject(path), path, templateName, profile, manager, faults);
}

MenuProject ReadMenuProject(const Json& json, const std::string& path, const std::string& templateName,
                            const FilmProfile* profile, AVBased::IAVManager& files, Faults& faults) {
    const ProjectItem root(&json, "", faults);
    std::vector<const char*> keys;
    for (const ProjectKey& key : projectKeys) keys.push_back(key.name);
    root.RefuseOtherKeys(keys);
    if (const ProjectItem own = root["template"]; own && own.Text() != templateName)
        own.Fault("is \"" + own.Text() + "\", and the command names " + templateName + "; make them agree");

    MenuProject project;
    project.film = ReadFilm(root, profile);
    if (root["sourcePath"]) project.background = ProjectPath(path, root["sourcePath"].Text());
    if (root["backgroundMask"]) project.backgroundMask = ProjectPath(path, root["backgroundMask"].Text());
    if (root["mood"]) project.mood = ReadMood(root["mood"]);
    project.paintsNothing = IsPlacedMenu(templateName);
    const TemplateStyle style = StyleOf(templateName, project.mood);
    for (const ProjectItem& entry : root["textInfos"].Entries())
        project.texts.push_back(ReadMenuText(entry, StyledMenuText(style, project.film, project.texts.size())));
    project.names = StyledMenuText(style.caption, project.film);
    project.names.styleWords += " plate";
    project.names.styled.style.plate = true;
    project.labels = LabelStyle(style, project.texts);
    project.sources = ReadSources(root, path);
    project.buttons = ReadButtons(root["buttons"]);
    for (const char* const key : {"startPositions", "endPositions", "moveSpeeds", "moveFormulas"})
        project.placesSources |= bool(root[key]);
    if (root["perPage"])
        project.perPage = root["perPage"].Integer({1, mostSources});
    else if (!project.placesSources)
        project.perPage = UsualPerPage(templateName);
    CheckNumber(root["textNumber"], project.texts.size(), "textInfos");
    CheckNumber(root["additionSourceNumber"], project.sources.size(), "additionSourcePaths");
    ForEachSource(root["isAdditionSourceImages"], project.sources, "true or false", [](auto&, const auto&) {});

    TryFiles(project, root, files, faults);
    TryTexts(project, faults);
    return project;
}

void ComeIn(MenuSource& source, int left, int top, int index) {
    const int way = 40 + 2 * index;
    source.start = {left - way, top};
    source.end = {left, top};
    source.speed = 1;
    source.startTrans = 0;
    // It has come before it is all there, so that one does not see it stop.
    source.fadeSpeed = std::max(3, 6 - index / 2);
}

Mood ReadMood(const ProjectItem& item) {
    const std::string name = item.Text();
    const std::optional<Mood> mood = FindMood(name);
    if (!mood) item.Fault("is \"" + name + "\"; give own, light or dark");
    return mood.value_or(Mood::Own);
}

StyledText LabelStyle(const TemplateStyle& style, const std::vector<MenuText>& texts) {
    StyledText label = StyledMenuText(style.caption, {}).styled;
    if (texts.empty()) return label;
    const StyledText& first = texts.front().styled;
    label.red = first.red;
    label.green = first.green;
    label.blue = first.blue;
    return label;
}

std::string DescribeProjectKeys() {
    std::string text;
    for (const ProjectKey& key : projectKeys)
        text.append("  ").append(key.name) += std::string(": ") + key.value + "\n";
    return text;
}

std::vector<std::pair<std::string, std::string>> MenuProperties(const MenuProject& project) {
    std::vector<std::pair<std::string, std::string>> properties = {{"duration", std::to_string(project.film.frames)},
                                                                   {"width", std::to_string(project.film.width)},
                                                                   {"height", std::to_string(project.film.height)}};
    const auto add = [&](const char* name, const std::string& value) { properties.emplace_back(name, value); };
    // Videos show the moments of the menu's frames, whatever their own rate.
    const auto path = [&](const std::string& file, bool isImage, double begin = 0) {
        return PathInList(file, isImage ? Playback() : Playback{project.film.frameRate, true, int(begin * 1000)});
    };
    if (project.mood != Mood::Own && !project.paintsNothing) add("mood", std::to_string(int(project.mood)));
    if (!project.background.empty())
        add("sourcePath", path(project.background, !project.backgroundMoves));
    else if (project.paintsNothing)
        add("sourcePath", PlainBackground(project.film, project.mood));
    if (!project.backgroundMask.empty()) add("backgroundMask", project.backgroundMask);
    std::vector<MenuText> texts = project.texts;
    for (MenuText& name : NamesOf(project)) texts.push_back(std::move(name));
    if (!texts.empty()) {
        add("textNumber", std::to_string(texts.size()));
        add("textInfos", Join(texts, '\\', [](const MenuText& text) { return TextInListOf(LaidOut(text)); }));
    }
    const std::vector<MenuSource>& sources = project.sources;
    if (sources.empty()) return properties;
    const auto addAll = [&](const char* name, const std::function<std::string(const MenuSource&)>& write) {
        add(name, Join(sources, ';', write));
    };
    const auto addNumbers = [&](const char* name, int MenuSource::*member) {
        addAll(name, [&](const MenuSource& source) { return std::to_string(source.*member); });
    };
    const auto addPairs = [&](const char* name, std::vector<int> MenuSource::*member) {
        addAll(name, [&](const MenuSource& source) { return NumberList(source.*member); });
    };
    // The number comes first: it makes the records that the lists fill.
    add("additionSourceNumber", std::to_string(sources.size()));
    addAll("isAdditionSourceImages", [](const MenuSource& source) { return source.isImage ? "true" : "false"; });
    addAll("additionSourcePaths",
           [&](const MenuSource& source) { return path(source.path, source.isImage, source.begin); });
    if (!sources.front().size.empty()) addPairs("additionSourceSizes", &MenuSource::size);
    if (std::any_of(sources.begin(), sources.end(), [](const MenuSource& source) { return !source.mask.empty(); }))
        addAll("maskPaths", [&](const MenuSource& source) { return path(source.mask, source.isImage); });
    if (project.placesSources) {
        addPairs("startPositions", &MenuSource::start);
        addPairs("endPositions", &MenuSource::end);
        addPairs("moveFormulas", &MenuSource::formula);
        addNumbers("moveSpeeds", &MenuSource::speed);
    }
    addNumbers("startTrans", &MenuSource::startTrans);
    addNumbers("endTrans", &MenuSource::endTrans);
    addNumbers("fadeSpeeds", &MenuSource::fadeSpeed);
    return properties;
}

}  // namespace Nifikral
