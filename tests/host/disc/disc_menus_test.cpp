#include "host/disc/disc_menus.h"

#include <algorithm>
#include <cmath>

#include "host/disc/dvd_author.h"
#include "host/films/media_manager.h"
#include "host/films/menu_places.h"
#include "tests/host/command.h"
#include "tests/host/disc/disc_walk.h"

namespace Nifikral {
namespace {

using Kind = DiscTarget::Kind;

class DiscMenusTest : public CommandTest {
 protected:
    // A page is the same when it alone is laid out.
    void ExpectTheSameAlone(const std::vector<DiscPage>& pages) const {
        for (std::size_t i = 0; i < pages.size(); ++i) {
            const std::vector<DiscPage> alone = PagesOfDisc(project, module, int(i));
            ASSERT_EQ(alone.size(), pages.size());
            EXPECT_EQ(alone[i].name, pages[i].name);
            EXPECT_EQ(MenuProperties(alone[i].menu), MenuProperties(pages[i].menu)) << pages[i].name;
            ASSERT_EQ(alone[i].buttons.size(), pages[i].buttons.size()) << pages[i].name;
            for (std::size_t k = 0; k < pages[i].buttons.size(); ++k) {
                EXPECT_EQ(alone[i].buttons[k].y, pages[i].buttons[k].y) << pages[i].name;
                EXPECT_TRUE(alone[i].buttons[k].target == pages[i].buttons[k].target) << pages[i].name;
            }
            EXPECT_TRUE(alone[(i + 1) % pages.size()].buttons.empty());
        }
    }
    // Films of a second in one colour, and of another one behind it.
    void MakeProject(const std::string& profile, std::size_t films) {
        Ffmpeg(
            "-f lavfi -i color=red:size=160x90:rate=25:duration=2 -f lavfi -i "
            "color=lime:size=160x90:rate=25:duration=2 "
            "-filter_complex concat -g 25 film.mp4");
        project.title = "Home; a \\ film";
        project.profile = FindProfile(profile);
        project.menus.seconds = 1;
        for (std::size_t i = 0; i < films; ++i) {
            DiscFilm& film = project.films.emplace_back();
            film.item = "films[" + std::to_string(i) + "]";
            film.title = "Film " + std::to_string(i + 1) + "; \\";
            film.path = (folder / "film.mp4").string();
            film.thumbnail = 2.5;
        }
    }

    static bool Apart(const DiscButton& a, const DiscButton& b) {
        return a.x + a.width <= b.x || b.x + b.width <= a.x || a.y + a.height <= b.y || b.y + b.height <= a.y;
    }

    void ExpectUsable(const std::vector<DiscPage>& pages) const {
        for (const DiscPage& page : pages) {
            EXPECT_LE(int(page.buttons.size()), MostButtons(*project.profile)) << page.name;
            for (std::size_t i = 0; i < page.buttons.size(); ++i) {
                const DiscButton& button = page.buttons[i];
                EXPECT_TRUE(button.x >= 0 && button.y >= 0 && button.width >= 20 && button.height >= 16 &&
                            button.x + button.width <= project.profile->width &&
                            button.y + button.height <= project.profile->height)
                    << page.name << " " << i;
                for (std::size_t j = 0; j < i; ++j)
                    EXPECT_TRUE(Apart(button, page.buttons[j])) << page.name << " " << i << " " << j;
            }
        }
    }

    MediaManager manager;
    EffectModule module{NIFIKRAL_MODULE_FILE, &manager};
    DiscProject project;
};

TEST_F(DiscMenusTest, PagesLeadToEveryFilmAndChapter) {
    MakeProject("pal-16:9", 12);
    project.menus.instructions = {"Enter plays."};
    for (const int film : {1, 4}) {
        for (int i = 0; i < 8; ++i) project.films[std::size_t(film)].chapters.push_back({i * 0.5, ""});
    }
    // Pictures that rest and stand where the host says, those that rest where the template says, and a list.
    for (const char* const mainTemplate : {"menu_common", "submenu_common", "menu_travel"}) {
        project.menus.mainTemplate = mainTemplate;
        const std::vector<DiscPage> pages = PagesOfDisc(project, module);
        ExpectUsable(pages);
        const bool isList = mainTemplate == std::string("menu_travel");
        EXPECT_EQ(pages[0].menu.captions.empty(), isList) << mainTemplate;
        std::set<std::pair<int, int>> chapters;
        std::set<int> films, reached{0};
        // A page's number lies above that of the one that leads down to it.
        for (std::size_t i = 0; i < pages.size(); ++i) {
            EXPECT_TRUE(reached.count(int(i))) << mainTemplate << " " << pages[i].name;
            for (const DiscButton& button : pages[i].buttons) {
                if (button.target.kind == Kind::Film) films.insert(button.target.film);
                if (button.target.kind == Kind::Chapter) {
                    EXPECT_EQ(button.target.film, pages[i].film);
                    chapters.insert({button.target.film, button.target.chapter});
                }
                if (button.target.kind == Kind::Page) reached.insert(button.target.page);
            }
        }
        EXPECT_EQ(films.size(), 12u) << mainTemplate;
        EXPECT_EQ(chapters.size(), 16u) << mainTemplate;
        if (isList) ExpectTheSameAlone(pages);
    }
}

TEST_F(DiscMenusTest, InstructionPagesHaveTheirButtonsOnTheirPanels) {
    MakeProject("pal-16:9", 1);
    project.menus.instructions = {"Arrows choose.", "Enter plays."};
    project.menus.mood = Mood::Light;
    // Their panels are at the left and at the right.
    for (const char* const name : {"instructionmenu_common", "instructionmenu_festival"}) {
        project.menus.instructionTemplate = name;
        const DiscPage page = PagesOfDisc(project, module).at(1);
        const MenuText& title = page.menu.texts.at(0);
        EXPECT_EQ(page.menu.texts.at(1).styled.red, StyledMenuText(StyleOf(name, Mood::Light), {}, 1).styled.red);
        const FilmBox panel =
            StoredBox(page.menu.film, {title.box[0], title.box[1], title.box[2], page.menu.film.height});
        EXPECT_GE(page.buttons.at(0).x, panel.left) << name;
        EXPECT_LT(page.buttons.at(0).x, panel.left + panel.width / 4) << name;
    }
}

TEST_F(DiscMenusTest, AMadeDiscShowsItsMenusAndLoopsWithoutASeam) {
    MakeProject("ntsc-4:3", 2);
    project.films[0].chapters = {{0, "Begin"}, {1, ""}};
    const std::vector<DiscPage> pages = PagesOfDisc(project, module);
    ASSERT_EQ(pages.size(), 2u);
    std::vector<MadePage> made;
    for (const DiscPage& page : pages) {
        made.push_back(PlaceOfPage(page, (folder / (page.name + ".mpg")).string()));
        MakePage(project, page, module, made.back().path, 2);
    }
    Ffmpeg(
        "-f lavfi -i color=gray:size=720x480:rate=30000/1001:duration=2 -f lavfi -i sine=sample_rate=48000:duration=2 "
        "-ac 2 -target ntsc-dvd -aspect 4:3 -force_key_frames 1 title.mpg");
    const std::string title = (folder / "title.mpg").string();
    AuthorDisc(project, pages, {{title, 2, {""}, {}, {0, 1}}, {title, 2, {""}, {}, {0}}}, made,
               (folder / "disc.iso").string(), (folder / "work").string(), false);
    for (std::size_t i = 0; i < pages[0].buttons.size(); ++i) {
        DiscWalk walk((folder / "disc.iso").string());
        ASSERT_TRUE(walk.PlayToButtons() && walk.Press(int(i) + 1));
        const DiscTarget& target = pages[0].buttons[i].target;
        EXPECT_EQ(walk.Place(), target.kind == Kind::Page ? MenuPlace(1, 1) : FilmPlace(target.film + 1, 1)) << i;
    }

    const std::string pictures = RawPictures("main.mpg", "gray");
    constexpr std::size_t size = 720 * 480;
    const std::size_t count = pictures.size() / size, begin = std::size_t(pages[0].menu.film.loopStart);
    ASSERT_EQ(count, std::size_t(pages[0].menu.film.frames));
    const auto difference = [&](std::size_t one, std::size_t other) {
        double sum = 0;
        for (std::size_t i = 0; i < size; ++i)
            sum += std::abs(std::uint8_t(pictures[one * size + i]) - std::uint8_t(pictures[other * size + i]));
        return sum / double(size);
    };
    EXPECT_LT(difference(count - 1, begin), 2);
    // The loop begins with a picture of its own, and the lead is none of it.
    EXPECT_GT(difference(0, begin), 5);
    const std::string keys =
        Wait(Start(Words("ffprobe -v error -select_streams v -show_entries frame=pict_type -of csv=p=0 "
                         "main.mpg")))
            .output;
    const std::vector<std::string> kinds = Words(keys);
    ASSERT_GT(kinds.size(), begin);
    EXPECT_EQ(kinds[begin].substr(0, 1), "I");
    // The thumbnail of the first film is what it shows at its moment, green.
    const DiscButton& button = pages[0].buttons[0];
    const std::string colours = RawPictures("main.mpg", "rgb24");
    const std::size_t middle =
        (begin * size + std::size_t(button.y + button.height / 2) * 720 + std::size_t(button.x + button.width / 2)) * 3;
    EXPECT_LT(std::uint8_t(colours[middle]), 60);
    EXPECT_GT(std::uint8_t(colours[middle + 1]), 180);
}

}  // namespace
}  // namespace Nifikral
