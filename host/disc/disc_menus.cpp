#include "host/disc/disc_menus.h"

#include <algorithm>
#include <functional>

#include "host/base/errors.h"
#include "host/films/button_list.h"
#include "host/films/film.h"
#include "host/films/menu.h"
#include "host/films/menu_pages.h"
#include "host/films/menu_places.h"
#include "host/films/slide_pictures.h"

namespace Nifikral {
namespace {

using Kind = DiscTarget::Kind;

// Pictures that can be distinguished on a screen, and texts that can be read.
constexpr std::size_t mostPictures = 6, mostTexts = 10;

struct Command {
    std::string caption;
    DiscTarget target;
};
// A button with a picture of what it plays.
struct Entry {
    Command command;
    MenuSource source;
};

DiscTarget ToPage(std::size_t page) { return {Kind::Page, 0, 0, int(page)}; }

// Menus carry their texts in lists, whose marks these are.
std::string InList(std::string text) {
    std::replace(text.begin(), text.end(), ';', ',');
    std::replace(text.begin(), text.end(), '\\', '/');
    return text;
}

class PageMaker {
 public:
    PageMaker(const DiscProject& project, const EffectModule& module) : m_project(project), m_module(module) {}

    DiscPage Make(const std::string& name, int film, const std::string& templateName, const std::string& title,
                  const std::vector<Entry>& entries, const std::vector<Command>& commands) const {
        DiscPage page = Begin(name, film, templateName, title);
        for (const Entry& entry : entries) page.menu.sources.push_back(entry.source);
        if (IsPlacedMenu(templateName)) PlaceInRows(page.menu);
        const MenuWatch watch(page.menu, templateName, m_module);
        const std::vector<RestingPlace> places = watch.Places();
        const bool rest = std::all_of(places.begin(), places.end(), [](const RestingPlace& place) {
            return place.kind != PlaceKind::Picture || place.Rests();
        });
        std::vector<Command> all;
        for (const Entry& entry : entries) all.push_back(entry.command);
        all.insert(all.end(), commands.begin(), commands.end());
        if (!rest || !AddOnPictures(page, watch, places, entries, commands)) AddList(page, all, watch);
        return page;
    }

    DiscPage MakeInstructions(const std::string& name, const std::vector<Command>& commands) const {
        const std::vector<std::string>& lines = m_project.menus.instructions;
        DiscPage page = Begin(name, -1, m_project.menus.instructionTemplate, m_project.title);
        const TemplateStyle style = StyleOf(page.templateName, m_project.menus.mood);
        RequireRoom(lines.size(), StyledMenuText(style.line, page.menu.film), page.menu.film.height);
        for (std::size_t i = 0; i < lines.size(); ++i) {
            MenuText text = StyledMenuText(style, page.menu.film, i + 1);
            text.item = "instructions[" + std::to_string(i) + "]";
            text.styled.text = InList(lines[i]);
            page.menu.texts.push_back(text);
        }
        AddList(page, commands, MenuWatch(page.menu, page.templateName, m_module));
        return page;
    }

    // From the first one on, above the buttons.
    static void RequireRoom(std::size_t lines, const MenuText& first, int height) {
        const int step = first.box[3], room = std::max(1, (height * 9 / 10 - first.box[1]) / step - 1);
        if (lines > std::size_t(room))
            throw HostError(ExitCode::Usage, "menus.instructions: are " + std::to_string(lines) +
                                                 " lines, and the page holds " + std::to_string(room) +
                                                 "; leave some out or write them shorter");
    }

    // How many entries a page of a template shows.
    std::size_t PerPage(const std::string& templateName) const {
        if (!PicturesRest(templateName, m_module)) return mostTexts;
        const auto usual = std::size_t(UsualPerPage(templateName));
        return usual ? std::min(usual, mostPictures) : mostPictures;
    }

    MenuSource SourceOf(const DiscFilm& film, double begin) const {
        MenuSource source;
        source.item = film.item;
        source.path = film.path;
        source.isImage = false;
        source.begin = begin;
        if (!film.path.empty()) return source;
        const Slide first = ReadableSlides(FindSlides(film.pictures), {}).front();
        source.path = first.path;
        source.isImage = !first.plays;
        source.begin = 0;
        return source;
    }

 private:
    DiscPage Begin(const std::string& name, int film, const std::string& templateName, const std::string& title) const {
        RequireMenuTemplate(templateName, m_module);
        DiscPage page;
        page.name = name;
        page.film = film;
        page.templateName = templateName;
        Film& made = page.menu.film;
        made.profile = m_project.profile;
        made.width = made.profile->SquareWidth();
        made.height = made.profile->height;
        made.frameRate = made.profile->frameRate;
        // What comes in has come to rest then.
        const double leadSeconds = IsPlacedMenu(templateName) ? 4 : 1;
        made.loopStart = made.FramesIn(leadSeconds);
        made.frames = made.loopStart + made.FramesIn(m_project.menus.seconds);
        page.menu.background = m_project.menus.background;
        page.menu.mood = m_project.menus.mood;
        page.menu.paintsNothing = IsPlacedMenu(templateName);
        const TemplateStyle style = StyleOf(templateName, page.menu.mood);
        page.menu.labels = LabelStyle(style, {StyledMenuText(style.title, made)});
        if (title.empty()) return page;
        MenuText text = StyledMenuText(style.title, made);
        text.styled.text = InList(title);
        page.menu.texts = {text};
        return page;
    }

    // In rows below the title, with room for captions and for the row of the other buttons.
    static void PlaceInRows(MenuProject& menu) {
        const int width = menu.film.width, height = menu.film.height, count = int(menu.sources.size());
        const FilmBox area{width / 15, height * 23 / 100, width * 13 / 15, height * 61 / 100};
        const int columns = count <= 2 ? count : count <= 4 ? 2 : 3;
        const int rows = columns ? (count + columns - 1) / columns : 0;
        menu.placesSources = true;
        for (int i = 0; i < count; ++i) {
            const int inRow = std::min(columns, count - i / columns * columns);
            const int cellWidth = area.width / columns, cellHeight = area.height / rows;
            const int pictureHeight = std::min(cellWidth * 9 / 10 * 9 / 16, cellHeight - height / 11);
            const int pictureWidth = pictureHeight * 16 / 9;
            const int left = area.left + (area.width - inRow * cellWidth) / 2 + i % columns * cellWidth +
                             (cellWidth - pictureWidth) / 2;
            const int top = area.top + i / columns * cellHeight;
            MenuSource& source = menu.sources[std::size_t(i)];
            source.size = {pictureWidth, pictureHeight};
            ComeIn(source, left, top, i);
        }
    }

    // Buttons on the pictures, which have captions, and a list of the others beside them; false where that has no room.
    static bool AddOnPictures(DiscPage& page, const MenuWatch& watch, const std::vector<RestingPlace>& places,
                              const std::vector<Entry>& entries, const std::vector<Command>& commands) {
        MenuProject menu = page.menu;
        for (const Entry& entry : entries) menu.captions.push_back(entry.command.caption);
        for (const Command& command : commands) menu.buttons.push_back(command.caption);
        // Captions come when their pictures have come to rest.
        menu.film.overBegin = menu.film.loopStart;
        const ButtonList list = LayOutButtons(menu, watch);
        if (list.hides) return false;
        page.menu = menu;
        for (const RestingPlace& place : places)
            if (place.kind == PlaceKind::Picture) AddButton(page, entries[place.index].command, place.Reach(menu.film));
        for (std::size_t i = 0; i < commands.size(); ++i) AddButton(page, commands[i], list.buttons[i].box);
        LinkButtons(page.buttons);
        return true;
    }

    // All buttons as a list of texts that stands still.
    static void AddList(DiscPage& page, const std::vector<Command>& commands, const MenuWatch& watch) {
        for (const Command& command : commands) page.menu.buttons.push_back(command.caption);
        const ButtonList list = LayOutButtons(page.menu, watch);
        for (std::size_t i = 0; i < commands.size(); ++i) AddButton(page, commands[i], list.buttons[i].box);
        LinkButtons(page.buttons);
    }

    static void AddButton(DiscPage& page, const Command& command, const FilmBox& place) {
        const FilmBox box = StoredBox(page.menu.film, place);
        page.buttons.push_back({command.caption, box.left, box.top, box.width, box.height, command.target, 0, 0, 0, 0});
    }

    const DiscProject& m_project;
    const EffectModule& m_module;
};

std::size_t PagesFor(std::size_t count, std::size_t each) { return (count + each - 1) / each; }

// Cuts entries into pages that lead to each other.
class PageList {
 public:
    PageList(const PageMaker& maker, const DiscWords& words, int only) : m_maker(maker), m_words(words), m_only(only) {}

    void Add(const std::string& name, int film, const std::string& templateName, const std::string& title,
             const std::vector<Entry>& entries, const std::vector<Command>& commands, std::size_t each) {
        const std::size_t count = PagesFor(entries.size(), each), first = m_pages.size();
        for (std::size_t i = 0; i < count; ++i) {
            if (SkipsNext()) continue;
            const auto begin = entries.begin() + std::ptrdiff_t(i * each);
            const auto end = begin + std::ptrdiff_t(std::min(each, entries.size() - i * each));
            std::vector<Command> all = commands;
            if (i + 1 < count) all.push_back({m_words.next, ToPage(first + i + 1)});
            if (i > 0) all.push_back({m_words.previous, ToPage(first + i - 1)});
            m_pages.push_back(m_maker.Make(count > 1 ? name + std::to_string(i + 1) : name, film, templateName, title,
                                           {begin, end}, all));
        }
    }
    void Add(const std::function<DiscPage()>& make) {
        if (!SkipsNext()) m_pages.push_back(make());
    }
    std::vector<DiscPage> Take() { return std::move(m_pages); }

 private:
    // Laying out a page takes much longer than leaving it empty.
    bool SkipsNext() {
        if (m_only < 0 || m_pages.size() == std::size_t(m_only)) return false;
        m_pages.emplace_back();
        return true;
    }

    const PageMaker& m_maker;
    const DiscWords& m_words;
    int m_only;
    std::vector<DiscPage> m_pages;
};

}  // namespace

std::vector<DiscPage> PagesOfDisc(const DiscProject& project, const EffectModule& module, int only) {
    const PageMaker maker(project, module);
    const DiscMenus& menus = project.menus;
    std::vector<std::size_t> chaptered;
    for (std::size_t i = 0; i < project.films.size(); ++i)
        if (menus.chapters && project.films[i].chapters.size() > 1) chaptered.push_back(i);
    const std::size_t eachFilm = maker.PerPage(menus.mainTemplate), eachChapter = maker.PerPage(menus.chapterTemplate);
    const std::size_t choice = PagesFor(project.films.size(), eachFilm);
    const std::size_t instructions = choice + (chaptered.size() > 1 ? PagesFor(chaptered.size(), eachChapter) : 0);
    // The first page of each film's chapters.
    std::vector<std::size_t> chapterPages = {instructions + !menus.instructions.empty()};
    for (const std::size_t film : chaptered)
        chapterPages.push_back(chapterPages.back() + PagesFor(project.films[film].chapters.size(), eachChapter));

    const DiscWords& words = menus.words;
    PageList pages(maker, words, only);
    std::vector<Entry> films, choices;
    for (std::size_t i = 0; i < project.films.size(); ++i) {
        const DiscFilm& film = project.films[i];
        Entry& entry = films.emplace_back();
        entry.command = {film.title, {Kind::Film, int(i), 0, 0}};
        entry.source = maker.SourceOf(film, film.thumbnail);
    }
    std::vector<Command> commands;
    if (menus.playAll && films.size() > 1) commands.push_back({words.playAll, {Kind::PlayAll, 0, 0, 0}});
    if (!chaptered.empty())
        commands.push_back({words.chapters, ToPage(chaptered.size() > 1 ? choice : chapterPages[0])});
    if (!menus.instructions.empty()) commands.push_back({words.instructions, ToPage(instructions)});
    pages.Add("main", -1, menus.mainTemplate, project.title, films, commands, eachFilm);

    for (std::size_t i = 0; i < chaptered.size(); ++i)
        choices.push_back({{films[chaptered[i]].command.caption, ToPage(chapterPages[i])}, films[chaptered[i]].source});
    if (choices.size() > 1)
        pages.Add("choice", -1, menus.chapterTemplate, words.chapters, choices, {{words.back, ToPage(0)}}, eachChapter);
    if (!menus.instructions.empty())
        pages.Add([&] { return maker.MakeInstructions("instructions", {{words.back, ToPage(0)}}); });
    for (const std::size_t i : chaptered) {
        const DiscFilm& film = project.films[i];
        std::vector<Entry> chapters;
        for (std::size_t chapter = 0; chapter < film.chapters.size(); ++chapter) {
            const std::string& title = film.chapters[chapter].title;
            Entry& entry = chapters.emplace_back();
            entry.command = {title.empty() ? std::to_string(chapter + 1) : title,
                             {Kind::Chapter, int(i), int(chapter), 0}};
            // The picture at a cut may be black.
            entry.source = maker.SourceOf(film, film.chapters[chapter].begin + 1);
        }
        pages.Add("chapters" + std::to_string(i + 1) + "-", int(i), menus.chapterTemplate, film.title, chapters,
                  {{words.back, ToPage(choices.size() > 1 ? choice : 0)}}, eachChapter);
    }
    return pages.Take();
}

void RenderPage(const DiscProject& project, const DiscPage& page, const EffectModule& module, FilmOptions options) {
    if (!project.menus.music.empty()) options.sounds = {project.menus.music};
    options.fade = project.menus.fade;
    RenderMenuPage(page.menu, page.templateName, options, module, page.name);
}

void MakePage(const DiscProject& project, const DiscPage& page, const EffectModule& module, const std::string& output,
              int threads) {
    FilmOptions options;
    options.run.threads = threads;
    options.run.output.path = output;
    options.run.output.overwrite = true;
    options.run.output.silence = true;
    options.run.output.keyTimes = {PlaceOfPage(page, output).loopStart};
    RenderPage(project, page, module, options);
}

MadePage PlaceOfPage(const DiscPage& page, const std::string& output) {
    return {output, double(page.menu.film.loopStart) / av_q2d(page.menu.film.frameRate)};
}

}  // namespace Nifikral
