#include "host/disc/dvd_author.h"

#include <array>
#include <cstring>
#include <map>
#include <queue>
#include <random>

#include "host/base/errors.h"
#include "host/disc/dvd_check.h"
#include "host/disc/highlights.h"
#include "tests/host/command.h"
#include "tests/host/disc/disc_walk.h"

namespace Nifikral {
namespace {

using Kind = DiscTarget::Kind;

DiscTarget ToFilm(int film) { return {Kind::Film, film, 0, 0}; }
DiscTarget ToChapter(int film, int chapter) { return {Kind::Chapter, film, chapter, 0}; }
DiscTarget ToPage(int page) { return {Kind::Page, 0, 0, page}; }
const DiscTarget playAll{Kind::PlayAll, 0, 0, 0};

// Buttons in two columns.
DiscPage Page(const std::string& name, int film, const std::vector<DiscTarget>& targets) {
    DiscPage page;
    page.name = name;
    page.film = film;
    for (std::size_t i = 0; i < targets.size(); ++i)
        page.buttons.push_back(
            {name + std::to_string(i), 80 + int(i % 2) * 300, 60 + int(i / 2) * 100, 240, 71, targets[i], 0, 0, 0, 0});
    LinkButtons(page.buttons);
    return page;
}

class DvdAuthorTest : public CommandTest {
 protected:
    // Three films, of which the first has chapters; the menus have two pages each.
    void MakeDisc(const std::string& profile, const std::string& output) {
        project.title = "Sommer & Meer";
        project.profile = FindProfile(profile);
        project.films.resize(3);
        pages = {Page("main", -1, {ToFilm(0), ToFilm(1), playAll, ToPage(1), ToPage(2)}),
                 Page("more", -1, {ToPage(0), ToFilm(2)}),
                 Page("chapters1", 0, {ToChapter(0, 0), ToChapter(0, 1), ToPage(3), ToPage(0)}),
                 Page("chapters2", 0, {ToChapter(0, 2), ToPage(2), ToPage(0)})};
        const bool isPal = project.profile->height == 576;
        const std::string target = isPal ? "pal" : "ntsc";
        const std::string aspect = IsWide(*project.profile) ? "16:9" : "4:3";
        const auto make = [&](const std::string& name, int seconds, const std::string& sounds) {
            std::string line = "-f lavfi -i color=gray:size=720x" + std::to_string(project.profile->height) +
                               ":rate=" + (isPal ? "25" : "30000/1001") + ":duration=" + std::to_string(seconds);
            for (const char sound : sounds)
                line += " -f lavfi -i sine=frequency=" + std::to_string(sound * 5) +
                        ":sample_rate=48000:duration=" + std::to_string(seconds);
            for (std::size_t i = 0; i <= sounds.size(); ++i) line += " -map " + std::to_string(i);
            Ffmpeg(line + " -ac 2 -target " + target + "-dvd -aspect " + aspect + " -force_key_frames 1,2 " + name);
            return (folder / name).string();
        };
        titles = {{AddSubtitles(make("film1.mpg", 3, "ab")), 3, {"eng", "ger"}, {"fr", ""}, {0, 1, 2}},
                  {make("film2.mpg", 2, "a"), 2, {""}, {}, {0}},
                  {make("film3.mpg", 2, "a"), 2, {"he"}, {}, {0}}};
        const MadePage led{make("led.mpg", 2, "a"), 1}, plain{make("plain.mpg", 1, "a"), 0};
        AuthorDisc(project, pages, titles, {led, plain, led, plain}, (folder / output).string(),
                   (folder / "work").string(), false);
    }

    std::string AddSubtitles(const std::string& film) {
        Ffmpeg("-f lavfi -i color=white:size=64x32 -frames:v 1 subtitle.png");
        std::ofstream(folder / "subtitle.xml") << "<subpictures format=\"PAL\"><stream><spu start=\"00:00:00.50\" "
                                                  "end=\"00:00:01.50\" image=\""
                                               << (folder / "subtitle.png").string() << "\"/></stream></subpictures>";
        const Outcome outcome = Wait(Start({"sh", "-c",
                                            "spumux -s 0 --nodvdauthor-data subtitle.xml < film1.mpg | "
                                            "spumux -s 1 --nodvdauthor-data subtitle.xml > film1s.mpg"}));
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        return film.substr(0, film.size() - 4) + "s.mpg";
    }

    DiscPlace PlaceOf(std::size_t page) const {
        const std::vector<std::size_t> own = PagesOfFilm(pages, pages[page].film);
        return MenuPlace(pages[page].film + 1, int(std::find(own.begin(), own.end(), page) - own.begin()) + 1);
    }
    DiscPlace PlaceOf(const DiscTarget& target) const {
        if (target.kind == Kind::Page) return PlaceOf(std::size_t(target.page));
        return FilmPlace(target.kind == Kind::PlayAll ? 1 : target.film + 1, target.chapter + 1);
    }

    // The buttons to press from the main menu to get to each page, by the shortest way.
    std::map<int, std::vector<int>> Ways() const {
        std::map<int, std::vector<int>> ways{{0, {}}};
        std::queue<int> next({0});
        for (; !next.empty(); next.pop())
            for (std::size_t i = 0; i < pages[std::size_t(next.front())].buttons.size(); ++i) {
                const DiscTarget& target = pages[std::size_t(next.front())].buttons[i].target;
                if (target.kind != Kind::Page || ways.count(target.page)) continue;
                ways[target.page] = ways[next.front()];
                ways[target.page].push_back(int(i) + 1);
                next.push(target.page);
            }
        return ways;
    }

    void EnterPage(DiscWalk& walk, int page) const {
        ASSERT_TRUE(walk.PlayToButtons());
        const std::vector<int> way = Ways().at(page);
        for (const int button : way) ASSERT_TRUE(walk.Press(button) && walk.PlayToButtons());
        ASSERT_EQ(walk.Place(), PlaceOf(std::size_t(page)));
    }

    void WalkEveryButton(const std::string& disc) const {
        for (std::size_t page = 0; page < pages.size(); ++page) {
            const std::vector<DiscButton>& buttons = pages[page].buttons;
            for (std::size_t i = 0; i < buttons.size(); ++i) {
                DiscWalk walk((folder / disc).string());
                EnterPage(walk, int(page));
                ASSERT_EQ(walk.Buttons(), int(buttons.size())) << pages[page].name;
                ASSERT_TRUE(walk.Press(int(i) + 1));
                EXPECT_EQ(walk.Place(), PlaceOf(buttons[i].target)) << pages[page].name << " button " << i + 1;
            }
        }
    }

    void WalkArrows(const std::string& disc) const {
        DiscWalk walk((folder / disc).string());
        EnterPage(walk, 0);
        dvdnav_t* const player = walk.Player();
        pci_t* const facts = dvdnav_get_current_nav_pci(player);
        for (std::size_t i = 0; i < pages[0].buttons.size(); ++i) {
            const DiscButton& button = pages[0].buttons[i];
            const std::pair<dvdnav_status_t (*)(dvdnav_t*, pci_t*), int> arrows[] = {
                {dvdnav_upper_button_select, button.up},
                {dvdnav_lower_button_select, button.down},
                {dvdnav_left_button_select, button.left},
                {dvdnav_right_button_select, button.right}};
            for (const auto& [arrow, other] : arrows) {
                dvdnav_button_select(player, facts, int(i) + 1);
                arrow(player, facts);
                EXPECT_EQ(walk.Chosen(), other + 1) << i;
            }
        }
    }

    // Where the player is after a film, reached from the button of a page, and which button is chosen.
    void ExpectAfterFilm(const std::string& disc, int page, int button, int nextPage, int nextButton) const {
        DiscWalk walk((folder / disc).string());
        EnterPage(walk, page);
        ASSERT_TRUE(walk.Press(button));
        ASSERT_TRUE(walk.PlayToMenu());
        EXPECT_EQ(walk.Place(), PlaceOf(std::size_t(nextPage))) << "after button " << button << " of page " << page;
        EXPECT_EQ(walk.Chosen(), nextButton) << "after button " << button << " of page " << page;
    }

    DiscProject project;
    std::vector<DiscPage> pages;
    std::vector<MadeTitle> titles;
};

TEST_F(DvdAuthorTest, AWideDiscInAnImageLeadsWhereItsButtonsSay) {
    MakeDisc("pal-16:9", "disc.iso");
    EXPECT_FALSE(std::filesystem::exists(folder / "work/author"));
    WalkEveryButton("disc.iso");
    WalkArrows("disc.iso");
    ExpectAfterFilm("disc.iso", 0, 1, 0, 2);
    ExpectAfterFilm("disc.iso", 0, 2, 1, 2);
    ExpectAfterFilm("disc.iso", 1, 2, 0, 1);
    ExpectAfterFilm("disc.iso", 2, 2, 0, 2);
    const std::string listed = Wait(Start({"lsdvd", "-x", "disc.iso"})).output;
    for (const char* const fact : {"Disc Title: SOMMER_MEER", "Format: PAL, Aspect ratio: 16/9", "DF: Letterbox",
                                   "Title: 01, Length: 00:00:03.000 Chapters: 03", "Audio: 1, Language: en",
                                   "Audio: 2, Language: de", "Subtitle: 01, Language: fr", "Title: 03", "Language: iw"})
        EXPECT_NE(listed.find(fact), std::string::npos) << fact << "\n" << listed;
}

TEST_F(DvdAuthorTest, ANarrowDiscInAFolderKnowsTheRemotesKeys) {
    MakeDisc("ntsc-4:3", "disc/");
    const std::string disc = (folder / "disc").string();
    EXPECT_EQ(Files().count("disc"), 1u);

    // All films in turn.
    DiscWalk all(disc);
    EnterPage(all, 0);
    ASSERT_TRUE(all.Press(3));
    for (const int title : {2, 3}) {
        ASSERT_TRUE(all.PlayUntil([&](int) { return all.Place() == FilmPlace(title, 1); }));
    }
    ASSERT_TRUE(all.PlayToMenu());
    EXPECT_EQ(all.Place(), PlaceOf(0));
    EXPECT_EQ(all.Chosen(), 1);
    // Not any more, when one of them is chosen.
    ASSERT_TRUE(all.Press(1) && all.PlayToMenu());
    EXPECT_EQ(all.Place(), PlaceOf(0));
    EXPECT_EQ(all.Chosen(), 2);
    // But still, when the menu was only looked at.
    ASSERT_TRUE(all.Press(3));
    ASSERT_TRUE(all.Call(DVD_MENU_Root) && all.PlayToButtons() && all.Call(DVD_MENU_Escape));
    EXPECT_EQ(all.Place(), FilmPlace(1, 1));
    ASSERT_TRUE(all.PlayUntil([&](int) { return all.Place() == FilmPlace(2, 1); }));

    // The Menu key leads to the chapter that plays, and back into it.
    DiscWalk walk(disc);
    EnterPage(walk, 3);
    ASSERT_TRUE(walk.Press(1));
    ASSERT_TRUE(walk.Call(DVD_MENU_Root) && walk.PlayToButtons());
    EXPECT_EQ(walk.Place(), PlaceOf(3));
    EXPECT_EQ(walk.Chosen(), 1);
    ASSERT_TRUE(walk.Call(DVD_MENU_Escape));
    EXPECT_EQ(walk.Place(), FilmPlace(1, 3));
    // The Title key leads to the button of the film that plays, on whichever page it is.
    ASSERT_TRUE(walk.Call(DVD_MENU_Title) && walk.PlayToButtons());
    EXPECT_EQ(walk.Place(), PlaceOf(0));
    ASSERT_TRUE(walk.Press(4) && walk.PlayToButtons());
    ASSERT_TRUE(walk.Press(2));
    for (const DVDMenuID_t key : {DVD_MENU_Title, DVD_MENU_Root}) {
        ASSERT_TRUE(walk.Call(key) && walk.PlayToButtons());
        EXPECT_EQ(walk.Place(), PlaceOf(1));
        EXPECT_EQ(walk.Chosen(), 2);
        ASSERT_TRUE(walk.Call(DVD_MENU_Escape));
        EXPECT_EQ(walk.Place(), FilmPlace(3, 1));
    }
}

TEST_F(DvdAuthorTest, MarksComeBackWithEveryRoundOfAMenu) {
    MakeDisc("pal-16:9", "disc");
    DiscWalk walk((folder / "disc").string());
    ASSERT_TRUE(walk.PlayUntil([](int event) { return event == DVDNAV_SPU_CLUT_CHANGE; }));
    // Yellow, and white.
    EXPECT_EQ(walk.Colours().count(0xC19F3A), 1u);
    EXPECT_EQ(walk.Colours().count(0xEB8080), 1u);
    ASSERT_TRUE(walk.PlayUntil([](int event) { return event == DVDNAV_SPU_STREAM_CHANGE; }));
    EXPECT_EQ(walk.MarksOfWholePictures(), 0);
    EXPECT_EQ(walk.MarksOfLetterboxedPictures(), 1);
    ASSERT_TRUE(walk.PlayToButtons());
    dvdnav_button_select(walk.Player(), dvdnav_get_current_nav_pci(walk.Player()), 3);
    // The lead, and then its loop, two times.
    for (int round = 0; round < 3; ++round) {
        std::set<int> streams;
        ASSERT_TRUE(walk.PlayUntil([&](int event) {
            if (event == DVDNAV_BLOCK_OK) streams.insert(walk.SubpictureOfBlock());
            return event == DVDNAV_CELL_CHANGE;
        }));
        if (round > 0) {
            EXPECT_TRUE(streams.count(0) && streams.count(1)) << round;
        }
        EXPECT_EQ(walk.Chosen(), 3) << round;
    }
}

TEST_F(DvdAuthorTest, FaultsAreReportedAndLeaveNothing) {
    MakeDisc("pal-4:3", "disc");
    const std::string disc = (folder / "disc").string();
    const auto reported = [](const std::function<void()>& work) -> std::string {
        try {
            work();
        } catch (const HostError& error) {
            return error.what();
        }
        return "nothing";
    };
    const auto contains = [](const std::string& text, const std::string& part) {
        return text.find(part) != std::string::npos;
    };
    // What is read back is compared with what was meant.
    const auto checked = [&](const std::function<void()>& change) {
        const auto meantPages = pages;
        const auto meantTitles = titles;
        change();
        std::string line = reported([&] { CheckDvd(disc, pages, titles); });
        pages = meantPages;
        titles = meantTitles;
        return line;
    };
    EXPECT_EQ(checked([] {}), "nothing");
    const std::string menu = checked([&] { pages[3].buttons.pop_back(); });
    EXPECT_TRUE(contains(menu, "3 buttons on the menu chapters2 instead of 2")) << menu;
    const std::string title = checked([&] { titles[0].chapters.pop_back(); });
    EXPECT_TRUE(contains(title, "3 chapters of title 1 instead of 2")) << title;
    const std::string language = checked([&] { titles[0].subtitleLanguages[0] = "spa"; });
    EXPECT_TRUE(contains(language, "\"fr\" of title 1 instead of \"spa\"")) << language;
    const std::string length = checked([&] { titles[1].seconds = 20; });
    EXPECT_TRUE(contains(length, "title 2 for 2 seconds instead of 20")) << length;

    const auto files = Files();
    const auto author = [&](const MadePage& film, const std::string& output) {
        return reported([&] {
            AuthorDisc(project, pages, titles, {film, film, film, film}, (folder / output).string(),
                       (folder / "work").string(), false);
        });
    };
    std::ofstream(folder / "broken.mpg") << "no film";
    const std::string broken = author({(folder / "broken.mpg").string(), 0}, "new.iso");
    EXPECT_TRUE(contains(broken, "main: spumux leaves out the marks")) << broken;
    // A film without the packets that a DVD's menus need.
    Ffmpeg("-f lavfi -i color=gray:size=720x576:rate=25:duration=1 -f vob plain.vob");
    const std::string plain = author({(folder / "plain.vob").string(), 0}, "new");
    EXPECT_TRUE(contains(plain, "dvdauthor fails: ERR:")) << plain;
    const std::string existing = author({(folder / "led.mpg").string(), 1}, "disc");
    EXPECT_TRUE(contains(existing, "holds a disc already; -y overwrites it")) << existing;
    std::ofstream(folder / "work/letter.txt") << "not to be lost";
    const std::string other = author({(folder / "led.mpg").string(), 1}, "work");
    EXPECT_TRUE(contains(other, "holds letter.txt, which is no part of a DVD")) << other;
    auto expected = files;
    expected.insert({"broken.mpg", "plain.vob"});
    EXPECT_EQ(Files(), expected);
}

TEST(DiscButtons, LeadToTheNearestOneAndRoundAtTheEnds) {
    // Two rows of three, the last one lower and alone, as a menu's list of texts below its pictures.
    DiscPage page;
    for (const auto& [x, y] : {std::pair(60, 60), {260, 60}, {460, 60}, {60, 220}, {260, 220}, {460, 220}, {270, 400}})
        page.buttons.push_back({"", x, y, 160, 120, {}, 0, 0, 0, 0});
    page.buttons.back().height = 40;
    LinkButtons(page.buttons);
    const auto links = [&](int number) {
        const DiscButton& button = page.buttons[std::size_t(number)];
        return std::array<int, 4>{button.up, button.down, button.left, button.right};
    };
    EXPECT_EQ(links(0), (std::array<int, 4>{3, 3, 2, 1}));
    EXPECT_EQ(links(1), (std::array<int, 4>{6, 4, 0, 2}));
    EXPECT_EQ(links(4), (std::array<int, 4>{1, 6, 3, 5}));
    EXPECT_EQ(links(6), (std::array<int, 4>{4, 1, 3, 5}));
}

TEST(DiscButtons, AreAllInReachWhereverTheyLie) {
    std::mt19937 random(7);
    for (int round = 0; round < 300; ++round) {
        std::vector<DiscButton> buttons;
        for (unsigned tries = 0, wanted = 2 + random() % 17; tries < 200 && buttons.size() < wanted; ++tries) {
            const DiscButton button{
                "", int(random() % 600), int(random() % 480), 60 + int(random() % 60), 50, {}, 0, 0, 0, 0};
            if (std::none_of(buttons.begin(), buttons.end(), [&](const DiscButton& b) {
                    return button.x < b.x + b.width && b.x < button.x + button.width && button.y < b.y + b.height &&
                           b.y < button.y + button.height;
                }))
                buttons.push_back(button);
        }
        LinkButtons(buttons);
        std::set<int> reached{0};
        for (std::queue<int> next({0}); !next.empty(); next.pop()) {
            const DiscButton& from = buttons[std::size_t(next.front())];
            for (const int to : {from.up, from.down, from.left, from.right})
                if (reached.insert(to).second) next.push(to);
        }
        EXPECT_EQ(reached.size(), buttons.size()) << round;
    }
}

TEST(Highlights, AreApartWherePicturesOverlap) {
    const FilmProfile& profile = *FindProfile("pal-4:3");
    DiscPage page;
    page.buttons = {{"a", 100, 100, 120, 80, {}, 0, 0, 0, 0},
                    {"right", 210, 104, 120, 80, {}, 0, 0, 0, 0},
                    {"below", 80, 175, 120, 80, {}, 0, 0, 0, 0}};
    const std::vector<HighlightBox> boxes = HighlightBoxes(page, DiscMenus(), profile, DiscView::Whole);
    EXPECT_EQ(boxes[0].right, 215);
    EXPECT_EQ(boxes[1].left, 215);
    EXPECT_EQ(boxes[0].bottom, 176);
    EXPECT_EQ(boxes[2].top, 176);
}

TEST(Highlights, KeepToFewColoursAndEvenRowsInEveryView) {
    const FilmProfile& profile = *FindProfile("ntsc-16:9");
    DiscPage page;
    page.buttons = {{"a", 71, 51, 201, 99, {}, 0, 0, 0, 0}, {"b", 330, 51, 201, 99, {}, 0, 0, 0, 0}};
    for (const ButtonMark mark : {ButtonMark::Frame, ButtonMark::Underline, ButtonMark::Marker})
        for (const DiscView view : {DiscView::Whole, DiscView::Letterboxed}) {
            DiscMenus menus;
            menus.mark = mark;
            const std::vector<HighlightBox> boxes = HighlightBoxes(page, menus, profile, view);
            std::set<std::uint32_t> colours;
            const FramePtr picture = DrawHighlights(boxes, mark, 0xFFD040, profile);
            std::array<int, 3> drawn{};  // outside, and in each of the boxes
            for (int y = 0; y < picture->height; ++y)
                for (int x = 0; x < picture->width; ++x) {
                    std::uint32_t pixel = 0;
                    std::memcpy(&pixel, picture->data[0] + y * picture->linesize[0] + x * 4, 4);
                    colours.insert(pixel);
                    std::size_t place = 0;
                    for (std::size_t i = 0; i < boxes.size(); ++i)
                        if (x >= boxes[i].left && x < boxes[i].right && y >= boxes[i].top && y < boxes[i].bottom)
                            place = i + 1;
                    drawn[place] += pixel != 0;
                }
            EXPECT_EQ(colours, (std::set<std::uint32_t>{0, 0xFF101010, 0xFFFFD040}));
            EXPECT_EQ(drawn[0], 0);
            EXPECT_EQ(drawn[1], drawn[2]);
            for (const HighlightBox& box : boxes) {
                EXPECT_TRUE(box.top % 2 == 0 && box.bottom % 2 == 0);
                // Black bars of an eighth of the height stand above and below what is letterboxed.
                const auto shown = [&](int row) {
                    return view == DiscView::Whole ? row : (row * 3 + profile.height / 2) / 4;
                };
                EXPECT_TRUE(box.top <= shown(51) && box.bottom >= shown(150)) << box.top << " " << box.bottom;
                EXPECT_TRUE(box.top >= shown(41) && box.bottom <= shown(160)) << box.top << " " << box.bottom;
            }
        }
    EXPECT_TRUE(OutsideTitleSafe(page, DiscMenus(), profile).empty());
    page.buttons[1].x = 500;
    EXPECT_EQ(OutsideTitleSafe(page, DiscMenus(), profile), (std::vector<std::string>{"b"}));
}

TEST(DvdLanguages, HaveTwoLettersAsDiscsStoreThem) {
    for (const auto& [given, stored] : {std::pair("eng", "en"),
                                        {"deu", "de"},
                                        {"ger", "de"},
                                        {"FR", "fr"},
                                        {"pt-BR", "pt"},
                                        {"heb", "iw"},
                                        {"und", ""},
                                        {"", ""},
                                        {"qqq", ""}})
        EXPECT_EQ(DvdLanguage(given), stored) << given;
}

TEST(DvdPages, ThatADiscCannotHoldAreAllReportedAtOnce) {
    DiscProject project;
    project.profile = FindProfile("pal-16:9");
    project.films.resize(2);
    project.films[1].item = "films[1]";
    std::vector<DiscPage> pages(97);
    for (DiscPage& page : pages) page.buttons.resize(1);
    Faults none("disc.json");
    CheckPages(project, pages, none);
    none.ThrowIfAny();
    pages.push_back(pages.back());
    DiscPage& crowded = pages.emplace_back();
    crowded.name = "chapters2-1";
    crowded.film = 1;
    crowded.buttons.resize(19);
    pages.resize(98 + 99, crowded);
    Faults faults("disc.json");
    CheckPages(project, pages, faults);
    try {
        faults.ThrowIfAny();
        FAIL();
    } catch (const HostError& error) {
        EXPECT_EQ(error.Code(), ExitCode::Usage);
        const std::string lines = error.what();
        for (const char* const words :
             {"disc.json: films: need 100 menus, and a DVD holds 99 there; choose a template",
              "disc.json: films[1].chapters: need 100 menus", "disc.json: menus: chapters2-1 has 19 buttons"})
            EXPECT_NE(lines.find(words), std::string::npos) << words << "\nin\n" << lines;
    }
}

}  // namespace
}  // namespace Nifikral
