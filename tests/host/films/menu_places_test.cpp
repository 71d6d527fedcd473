#include "host/films/menu_places.h"

#include <algorithm>

#include "host/base/errors.h"
#include "host/catalogue/catalogue.h"
#include "host/films/button_list.h"
#include "host/films/media_manager.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class MenuPlaces : public CommandTest {
 protected:
    MenuProject Page(const char* profile, std::size_t buttons) const {
        MenuProject page;
        page.film.profile = FindProfile(profile);
        page.film.width = page.film.profile->SquareWidth();
        page.film.height = page.film.profile->height;
        page.film.frames = 50;
        for (std::size_t i = 0; i < buttons; ++i) page.buttons.push_back("Chapter " + std::to_string(i + 1));
        MenuText& title = page.texts.emplace_back();
        title.styled = {"Summer", "DejaVu Sans", {}, 50, 255, 240, 220};
        title.box = {page.film.width / 10, page.film.height / 10, 0, 0};
        for (int i = 0; i < 4; ++i) page.sources.emplace_back().path = (folder / "photo.png").string();
        return page;
    }
    std::vector<RestingPlace> PlacesOf(const MenuProject& page, const std::string& name) const {
        return RestingPlacesOf(page, name, m_module);
    }
    void MakePhoto() const { Ffmpeg("-f lavfi -i testsrc=size=160x90 -frames:v 1 photo.png"); }

    MediaManager m_manager;
    EffectModule m_module{NIFIKRAL_MODULE_FILE, &m_manager};
};

bool Overlap(const FilmBox& a, const FilmBox& b) {
    return a.left < b.left + b.width && b.left < a.left + a.width && a.top < b.top + b.height &&
           b.top < a.top + a.height;
}

TEST_F(MenuPlaces, HoldButtonsThatDoNotTouchWithinTheSafeArea) {
    MakePhoto();
    for (const EffectInfo& info : Catalogue()) {
        if (!(info.traits & menu)) continue;
        for (const char* const profile : {"pal-16:9", "ntsc-4:3"})
            for (const std::size_t count : {7, 36}) {
                SCOPED_TRACE(testing::Message() << info.name << " " << profile << " " << count);
                const MenuProject page = Page(profile, count);
                const Film& film = page.film;
                const std::vector<RestingPlace> places = PlacesOf(page, info.name);
                ASSERT_EQ(places.size(), 4 + 1 + count);
                const std::vector<RestingPlace> buttons(places.begin() + 5, places.end());
                for (std::size_t i = 0; i < count; ++i) {
                    const FilmBox& at = buttons[i].at;
                    EXPECT_TRUE(buttons[i].kind == PlaceKind::Button && buttons[i].index == i);
                    EXPECT_GE(at.left * 10, film.width);
                    EXPECT_GE(at.top * 10, film.height);
                    EXPECT_LE((at.left + at.width) * 10, film.width * 9);
                    EXPECT_LE((at.top + at.height) * 10, film.height * 9);
                    EXPECT_GE(at.height, film.height / 25) << "too small to read";
                    for (std::size_t k = 0; k < i; ++k) EXPECT_FALSE(Overlap(at, buttons[k].at)) << i << " and " << k;
                    // The title is not hidden as long as there is room beside it.
                    EXPECT_FALSE(count < 8 && places[4].Rests() && Overlap(at, places[4].at));
                }
            }
    }
}

TEST_F(MenuPlaces, HoldWhatStandsStillInEveryFrame) {
    MakePhoto();
    const auto write = [&](const char* file, const char* more) {
        std::ofstream(folder / file) << R"({"width": 320, "height": 180, "duration": 0.4, "additionSourcePaths": [)"
                                     << R"("photo.png", "photo.png"])" << more << "}";
    };
    write("plain.json", "");
    write("list.json", R"(, "buttons": ["Play all", "Page {page} of {pages}"])");
    Faults faults("list.json");
    const MenuProject page = ReadMenuProject((folder / "list.json").string(), "menu_push", nullptr, faults);
    const std::vector<RestingPlace> places = PlacesOf(page, "menu_push");
    const auto inBox = [&](std::size_t x, std::size_t y) {
        return std::any_of(places.begin(), places.end(), [&](const RestingPlace& place) {
            // Chroma samples belong to several pixels.
            constexpr int more = 4;
            const FilmBox& at = place.at;
            const int column = int(x), row = int(y);
            return column >= at.left - more && column < at.left + at.width + more && row >= at.top - more &&
                   row < at.top + at.height + more;
        });
    };
    for (const std::string format : {"bgra", "yuv420p"}) {
        const auto play = [&](const char* project) {
            const std::string name = std::string(project) + "_" + format + ".mkv";
            const Outcome outcome = Nifikral("menu menu_push " + std::string(project) + " --format " + format +
                                             " --encoder " + (format == "bgra" ? "png" : "ffv1") + " -o " + name);
            EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
            return RawPictures(name, "bgr24");
        };
        const std::string plain = play("plain.json"), list = play("list.json");
        constexpr std::size_t frame = std::size_t(320) * 180 * 3;
        ASSERT_EQ(list.size(), 10 * frame);
        std::size_t changed = 0, still = 0, moving = 0;
        for (std::size_t i = 0; i < frame; ++i) {
            const std::size_t x = i / 3 % 320, y = i / 960;
            bool isStill = true;
            for (std::size_t n = 0; n < 10; ++n) {
                const std::size_t at = n * frame + i;
                changed += list[at] != plain[at];
                isStill &= list[at] == list[i];
                ASSERT_TRUE(inBox(x, y) || list[at] == plain[at]) << x << ", " << y << " in " << n;
            }
            if (inBox(x, y)) ++(isStill ? still : moving);
        }
        EXPECT_GT(changed, 0u);
        EXPECT_GT(still, 300u) << "no letters stand still";
        EXPECT_GT(moving, 300u) << "pictures do not show through the shade";
    }
}

TEST_F(MenuPlaces, AreThoseOfThePartThatRepeats) {
    MakePhoto();
    MenuProject page = Page("pal-16:9", 0);
    page.placesSources = true;
    page.film.frames = 100;
    for (MenuSource& source : page.sources) {
        source.size = {160, 90};
        source.start = {0, 300};
        source.end = {300, 300};
        source.speed = 10;
    }
    page.sources.resize(1);
    const auto place = [&](long long loopStart) {
        page.film.loopStart = loopStart;
        return PlacesOf(page, "menu_common")[0];
    };
    EXPECT_FALSE(place(0).Rests());
    EXPECT_FALSE(place(29).Rests()) << "the half second before the loop is dissolved into its end";
    // It arrives with frame 29.
    EXPECT_EQ(place(41).drift, 10);
    EXPECT_EQ(place(42).drift, 0);
    const FilmBox at = PlacesOf(page, "menu_common")[0].at, stored = StoredBox(page.film, at);
    EXPECT_TRUE(at.left == 300 && at.top == 300 && at.width == 160 && at.height == 90);
    EXPECT_TRUE(stored.left == 211 && stored.top == 300 && stored.width == 112 && stored.height == 90)
        << stored.left << " " << stored.width;
}

TEST_F(MenuPlaces, AreReportedForEveryTemplate) {
    for (const auto& [name, buttons] : {std::pair("menu_common", "on its pictures"),
                                        {"submenu_festival", "on its pictures"},
                                        {"menu_travel", "a list of texts"},
                                        {"menu_videowall", "a list of texts"}}) {
        const std::string text = Nifikral("info " + std::string(name)).output;
        EXPECT_NE(text.find("\nbuttons: " + std::string(buttons) + "\n"), std::string::npos) << text;
    }
    EXPECT_EQ(Nifikral("info title").output.find("buttons"), std::string::npos);
}

TEST_F(MenuPlaces, RefuseButtonsThatAreNone) {
    const auto run = [&](const std::string& buttons, const char* size = R"("width": 320, "height": 180)") {
        std::ofstream(folder / "bad.json") << "{" << size << R"(, "buttons": [)" << buttons << "]}";
        return Nifikral("menu menu_common bad.json -o out.mkv");
    };
    std::string many = "\"1\"";
    for (int i = 1; i < 37; ++i) many += ", \"" + std::to_string(i) + "\"";
    for (const auto& [buttons, line] :
         {std::pair<std::string, const char*>{many, "buttons: has 37 entries; a page of a menu holds up to 36"},
          {R"("a", " ")", "buttons[1]: is empty; write something or leave the entry out"},
          {R"("a\nb")", "buttons[0]: has several lines; give one"},
          {"7", "buttons[0]: is 7; give a text"}}) {
        const Outcome outcome = run(buttons);
        EXPECT_EQ(outcome.exitCode, 2);
        EXPECT_NE(outcome.errors.find(line), std::string::npos) << outcome.errors;
        EXPECT_EQ(std::count(outcome.errors.begin(), outcome.errors.end(), '\n'), 1) << outcome.errors;
    }
    const Outcome small = run(R"("a", "b", "c", "d", "e")", R"("width": 40, "height": 30)");
    EXPECT_EQ(small.exitCode, 2);
    EXPECT_NE(small.errors.find("5 buttons do not fit a menu of 40 x 30; give fewer, or a larger menu"),
              std::string::npos)
        << small.errors;
    const Outcome cut = run("\"" + std::string(300, 'm') + "\"");
    EXPECT_EQ(cut.exitCode, 0) << cut.errors;
    EXPECT_NE(cut.errors.find("is too long for its place and cut"), std::string::npos) << cut.errors;
}

}  // namespace
}  // namespace Nifikral
