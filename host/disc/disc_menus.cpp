#include "host/disc/disc_menus.h"

#include <algorithm>
#include <cmath>

#include "host/base/errors.h"
#include "host/films/button_list.h"
#include "host/films/example_project.h"
#include "host/films/film.h"
#include "host/films/loop_seam.h"
#include "host/films/menu.h"
#include "host/films/menu_pages.h"
#include "host/films/menu_places.h"
#include "host/films/slide_pictures.h"
#include "host/films/text_renderer.h"

namespace Nifikral {
namespace {

using Kind = DiscTarget::Kind;

// Pictures that can be distinguished on a screen, and texts that can be read.
constexpr std::size_t mostPictures = 6, mostTexts = 10;
// The template that leaves it to the project where its pictures stand; they come from the left.
constexpr char placedTemplate[] = "menu_common";

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

bool Overlap(const FilmBox& a, const FilmBox& b) {
    return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
           b.top < a.top + a.height;
}

class PageMaker {
 public:
    PageMaker(const DiscProject& project, const EffectModule& module) : m_project(project), m_module(module) {}

    DiscPage Make(const std::string& name, int film, const std::string& templateName, const std::string& title,
                  const std::vector<Entry>& entries, const std::vector<Command>& commands) const {
        DiscPage page = Begin(name, film, templateName, title);
        for (const Entry& entry : entries) page.menu.sources.push_back(entry.source);
        if (templateName == placedTemplate) PlaceInRows(page.menu);
        const std::vector<RestingPlace> places = MenuWatch(page.menu, templateName, m_module).Places();
        const bool rest = std::all_of(places.begin(), places.end(), [](const RestingPlace& place) {
            return place.kind != PlaceKind::Picture || place.Rests();
        });
        std::vector<Command> all;
        for (const Entry& entry : entries) all.push_back(entry.command);
        all.insert(all.end(), commands.begin(), commands.end());
        MenuProject captioned = page.menu;
        std::vector<FilmBox> boxes = AddCaptions(captioned, places, all);
        if (rest && AddRow(captioned, boxes, commands)) {
            page.menu = captioned;
            AddButtons(page, all, boxes);
        } else {
            AddList(page, all);
        }
        return page;
    }

    DiscPage MakeInstructions(const std::string& name, const std::vector<Command>& commands) const {
        const std::vector<std::string>& lines = m_project.menus.instructions;
        DiscPage page = Begin(name, -1, m_project.menus.instructionTemplate, m_project.title);
        const std::vector<MenuText> example = Texts(page);
        if (example.size() > 1) RequireRoom(lines.size(), example[1], page.menu.film.height);
        if (example.size() > 1)
            for (std::size_t i = 0; i < lines.size(); ++i) {
                MenuText text = example[1];
                text.item = "instructions[" + std::to_string(i) + "]";
                text.styled.text = InList(lines[i]);
                const int step = text.styled.size * 3 / 2;
                text.box = {text.box[0], text.box[1] + int(i) * step, example[0].box[2], step};
                page.menu.texts.push_back(text);
            }
        AddList(page, commands);
        return page;
    }

    // Lines from the example's on, above the buttons.
    static void RequireRoom(std::size_t lines, const MenuText& first, int height) {
        const int step = first.styled.size * 3 / 2, room = std::max(1, (height * 9 / 10 - first.box[1]) / step - 1);
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
        const Slide first = ReadableSlides(FindSlides(film.pictures), false).front();
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
        const double leadSeconds = templateName == placedTemplate ? 4 : 1;
        made.loopStart = made.FramesIn(leadSeconds);
        made.frames = made.loopStart + made.FramesIn(m_project.menus.seconds);
        page.menu.background = m_project.menus.background;
        if (const MenuText text = Texts(page, title).front(); !title.empty()) page.menu.texts = {text};
        return page;
    }

    // The example's texts of the page's template, for its size.
    static std::vector<MenuText> Texts(const DiscPage& page, const std::string& title = "-") {
        constexpr double width = 1280, height = 720;
        const double across = page.menu.film.width / width, down = page.menu.film.height / height;
        std::vector<MenuText> texts = ExampleTextsOf(page.templateName, title.empty() ? "-" : InList(title));
        for (MenuText& text : texts) {
            text.styled.size = std::max(10, int(std::lround(text.styled.size * std::min(across, down))));
            text.box = {int(text.box[0] * across), int(text.box[1] * down), int(text.box[2] * across),
                        int(text.box[3] * down)};
        }
        return texts;
    }

    // In rows below the title, with room for captions and for the row of the other buttons.
    static void PlaceInRows(MenuProject& menu) {
        const int width = menu.film.width, height = menu.film.height, count = int(menu.sources.size());
        const FilmBox area{width / 10, height / 4, width * 8 / 10, height * 13 / 20};
        const int columns = count <= 2 ? count : count <= 4 ? 2 : 3;
        const int rows = columns ? (count + columns - 1) / columns : 0;
        menu.placesSources = true;
        for (int i = 0; i < count; ++i) {
            const int cellWidth = area.width / columns, cellHeight = area.height / rows;
            const int pictureWidth = std::min(cellWidth * 9 / 10, (cellHeight * 8 / 10) * 16 / 9);
            const int pictureHeight = pictureWidth * 9 / 16;
            const int left = area.left + i % columns * cellWidth + (cellWidth - pictureWidth) / 2;
            const int top = area.top + i / columns * cellHeight;
            MenuSource& source = menu.sources[std::size_t(i)];
            constexpr int speed = 16;
            source.size = {pictureWidth, pictureHeight};
            source.start = {left - width / speed * speed, top};
            source.end = {left, top};
            source.speed = speed;
            source.startTrans = 0;
            source.fadeSpeed = 4;
        }
    }

    // A line of text that shows while the menu repeats, and in the frames that dissolve into its end.
    static void AddText(MenuProject& menu, const std::string& words, int size, const FilmBox& box) {
        const Film& film = menu.film;
        MenuText text;
        text.item = words;
        text.styled = {InList(words), {}, {.bold = true, .outline = true}, size, 255, 255, 255};
        text.styleWords = "bold outline";
        text.box = {box.left, box.top, box.width, box.height};
        text.firstFrame = int(film.loopStart - LoopSeam::LengthOf(film.loopStart, film.frames, film.frameRate));
        menu.texts.push_back(text);
    }

    // Below each picture, or on its lower end where there is no room. Returns the boxes of the pictures.
    static std::vector<FilmBox> AddCaptions(MenuProject& menu, const std::vector<RestingPlace>& places,
                                            const std::vector<Command>& entries) {
        const int size = std::max(14, menu.film.height / 26), line = size * 3 / 2;
        const int safe = menu.film.height - menu.film.height / 20;
        std::vector<FilmBox> boxes;
        for (const RestingPlace& place : places) {
            if (place.kind != PlaceKind::Picture) continue;
            FilmBox box{place.at.left, place.at.top + place.at.height + 2, place.at.width, line};
            const bool covers = std::any_of(places.begin(), places.end(), [&](const RestingPlace& other) {
                return other.kind == PlaceKind::Picture && Overlap(box, other.at);
            });
            if (covers || box.top + box.height > safe) box.top = place.at.top + place.at.height - line - 2;
            AddText(menu, entries[place.index].caption, size, box);
            boxes.push_back(place.at);
        }
        return boxes;
    }

    // Sets the commands side by side where there is neither a picture nor a text, as far down as that is, and adds
    // their boxes; false where there is no such place.
    static bool AddRow(MenuProject& menu, std::vector<FilmBox>& boxes, const std::vector<Command>& commands) {
        std::vector<FilmBox> taken = boxes;
        for (const MenuText& text : menu.texts) taken.push_back({text.box[0], text.box[1], text.box[2], text.box[3]});
        // The marks around the texts are to stay where every screen shows them.
        constexpr int mark = 8;
        const int left = menu.film.width / 20 + mark, right = menu.film.width - left;
        const int safe = menu.film.height - menu.film.height / 20 - mark;
        for (int size = menu.film.height / 22; size >= menu.film.height / 40; --size) {
            const int height = size * 3 / 2, gap = 2 * size;
            std::vector<FilmBox> row;
            int across = 0;
            for (const Command& command : commands) {
                const int width = RenderText({command.caption, {}, {.bold = true, .outline = true}, size})->width + 4;
                row.push_back({across, 0, width, height});
                across += width + gap;
            }
            const int begin = (left + right - (across - gap)) / 2;
            if (begin < left) continue;
            for (int top = safe - height; top >= menu.film.height / 20; top -= 2) {
                const FilmBox whole{begin - gap / 2, top - mark, across, height + 2 * mark};
                if (std::any_of(taken.begin(), taken.end(), [&](const FilmBox& box) { return Overlap(box, whole); }))
                    continue;
                for (std::size_t i = 0; i < row.size(); ++i) {
                    row[i].left += begin;
                    row[i].top = top;
                    AddText(menu, commands[i].caption, size, row[i]);
                    boxes.push_back(row[i]);
                }
                return true;
            }
        }
        return false;
    }

    static void AddButtons(DiscPage& page, const std::vector<Command>& commands, const std::vector<FilmBox>& boxes) {
        for (std::size_t i = 0; i < commands.size(); ++i) {
            const FilmBox box = StoredBox(page.menu.film, boxes[i]);
            page.buttons.push_back(
                {commands[i].caption, box.left, box.top, box.width, box.height, commands[i].target, 0, 0, 0, 0});
        }
        LinkButtons(page.buttons);
    }

    // All buttons as a list of texts that stands still.
    void AddList(DiscPage& page, const std::vector<Command>& commands) const {
        for (const Command& command : commands) page.menu.buttons.push_back(command.caption);
        AddButtons(page, commands, LayOutButtons(page.menu, MenuWatch(page.menu, page.templateName, m_module)).boxes);
    }

    const DiscProject& m_project;
    const EffectModule& m_module;
};

std::size_t PagesFor(std::size_t count, std::size_t each) { return (count + each - 1) / each; }

// Cuts entries into pages that lead to each other.
class PageList {
 public:
    explicit PageList(const PageMaker& maker) : m_maker(maker) {}

    void Add(const std::string& name, int film, const std::string& templateName, const std::string& title,
             const std::vector<Entry>& entries, const std::vector<Command>& commands, std::size_t each) {
        const std::size_t count = PagesFor(entries.size(), each), first = m_pages.size();
        for (std::size_t i = 0; i < count; ++i) {
            const auto begin = entries.begin() + std::ptrdiff_t(i * each);
            const auto end = begin + std::ptrdiff_t(std::min(each, entries.size() - i * each));
            std::vector<Command> all = commands;
            if (i + 1 < count) all.push_back({"Next", ToPage(first + i + 1)});
            if (i > 0) all.push_back({"Previous", ToPage(first + i - 1)});
            m_pages.push_back(m_maker.Make(count > 1 ? name + std::to_string(i + 1) : name, film, templateName, title,
                                           {begin, end}, all));
        }
    }
    void Add(DiscPage page) { m_pages.push_back(std::move(page)); }
    std::vector<DiscPage> Take() { return std::move(m_pages); }

 private:
    const PageMaker& m_maker;
    std::vector<DiscPage> m_pages;
};

}  // namespace

std::vector<DiscPage> PagesOfDisc(const DiscProject& project, const EffectModule& module) {
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

    PageList pages(maker);
    std::vector<Entry> films, choices;
    for (std::size_t i = 0; i < project.films.size(); ++i) {
        const DiscFilm& film = project.films[i];
        Entry& entry = films.emplace_back();
        entry.command = {film.title, {Kind::Film, int(i), 0, 0}};
        entry.source = maker.SourceOf(film, film.thumbnail);
    }
    std::vector<Command> commands;
    if (menus.playAll && films.size() > 1) commands.push_back({"Play all", {Kind::PlayAll, 0, 0, 0}});
    if (!chaptered.empty()) commands.push_back({"Chapters", ToPage(chaptered.size() > 1 ? choice : chapterPages[0])});
    if (!menus.instructions.empty()) commands.push_back({"How to watch", ToPage(instructions)});
    pages.Add("main", -1, menus.mainTemplate, project.title, films, commands, eachFilm);

    for (std::size_t i = 0; i < chaptered.size(); ++i)
        choices.push_back({{films[chaptered[i]].command.caption, ToPage(chapterPages[i])}, films[chaptered[i]].source});
    if (choices.size() > 1)
        pages.Add("choice", -1, menus.chapterTemplate, "Chapters", choices, {{"Back", ToPage(0)}}, eachChapter);
    if (!menus.instructions.empty()) pages.Add(maker.MakeInstructions("instructions", {{"Back", ToPage(0)}}));
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
                  {{"Back", ToPage(choices.size() > 1 ? choice : 0)}}, eachChapter);
    }
    return pages.Take();
}

void MakePage(const DiscProject& project, const DiscPage& page, const EffectModule& module, const std::string& output,
              int threads) {
    FilmOptions options;
    if (!project.menus.music.empty()) options.sounds = {project.menus.music};
    options.fade = project.menus.fade;
    options.run.threads = threads;
    options.run.output.path = output;
    options.run.output.overwrite = true;
    options.run.output.silence = true;
    options.run.output.keyTimes = {PlaceOfPage(page, output).loopStart};
    RenderMenuPage(page.menu, page.templateName, options, module, page.name);
}

MadePage PlaceOfPage(const DiscPage& page, const std::string& output) {
    return {output, double(page.menu.film.loopStart) / av_q2d(page.menu.film.frameRate)};
}

}  // namespace Nifikral
