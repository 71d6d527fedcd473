#include "host/films/menu_places.h"

#include <algorithm>
#include <array>
#include <cmath>

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
                    EXPECT_TRUE(at.Grown(markRoom).IsWithin(SafeArea(film.width, film.height)));
                    EXPECT_GE(at.height, film.height / 25) << "too small to read";
                    for (std::size_t k = 0; k < i; ++k) EXPECT_FALSE(at.Overlaps(buttons[k].at)) << i << " and " << k;
                    // The title is not hidden as long as there is room beside it.
                    EXPECT_FALSE(count < 8 && places[4].Rests() && at.Overlaps(places[4].at));
                }
            }
    }
}

double Luminance(const std::array<double, 3>& colour) {
    const auto linear = [](double part) {
        return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour[0]) + 0.7152 * linear(colour[1]) + 0.0722 * linear(colour[2]);
}

TEST_F(MenuPlaces, CaptionsAreWholeApartAndReadableOverAnything) {
    MakePhoto();
    const std::vector<std::string> titles = {"Photographers", "At the lake with Grandma", "湖のほとりで",
                                             "Von Aurich bis Zell"};
    for (const char* const name : {"menu_common", "menu_babyboy", "menu_babygirl", "menu_vignette", "submenu_common"})
        for (const char* const profile : {"pal-16:9", "ntsc-4:3"}) {
            SCOPED_TRACE(testing::Message() << name << " " << profile);
            MenuProject page = Page(profile, 3);
            page.captions = titles;
            page.texts[0].styled.text = "Summer 2026, and all that came of it";
            page.texts[0].styled.size = page.film.height / 12;
            page.placesSources = name == std::string("menu_common");
            for (std::size_t i = 0; i < 4; ++i) {
                MenuSource& source = page.sources[i];
                const int half = int(i) / 2, other = int(i) % 2;
                source.size = {160, 90};
                source.start =
                    source.end = {page.film.width * (1 + 4 * other) / 10, page.film.height * (3 + 3 * half) / 10};
            }
            const MenuWatch watch(page, name, m_module);
            const ButtonList list = LayOutButtons(page, watch);
            for (const Label& button : list.buttons)
                EXPECT_TRUE(list.hides || watch.Cover(PlaceKind::Text, button.box) == 0) << "the title is hidden";
            ASSERT_EQ(list.captions.size(), 4u);
            // All above their pictures or none, lest one is taken for that of the row above.
            const std::vector<RestingPlace> places = watch.Places();
            std::ptrdiff_t above = 0;
            for (std::size_t i = 0; i < 4; ++i) above += list.captions[i].box.top < places[i].at.top;
            EXPECT_TRUE(above == 0 || above == 4) << above;
            for (std::size_t i = 0; i < 4; ++i) {
                const Label& caption = list.captions[i];
                std::string text = caption.text.text;
                std::replace(text.begin(), text.end(), '\n', ' ');
                EXPECT_EQ(text, titles[i]);
                EXPECT_TRUE(caption.box.IsWithin(SafeArea(page.film.width, page.film.height))) << i;
                for (std::size_t k = 0; k < i; ++k) EXPECT_FALSE(caption.box.Overlaps(list.captions[k].box)) << i;
                for (const Label& button : list.buttons)
                    EXPECT_TRUE(list.hides || !caption.box.Overlaps(button.box)) << i;
            }
        }
    for (const std::array<int, 3>& colour :
         {std::array<int, 3>{255, 255, 255}, {255, 244, 220}, {31, 53, 80}, {0, 0, 0}, {255, 208, 64}}) {
        Label label{{0, 0, 90, 40}, {" ", {}, {}, 20}};
        label.text.red = std::uint8_t(colour[0]);
        label.text.green = std::uint8_t(colour[1]);
        label.text.blue = std::uint8_t(colour[2]);
        const FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, 90, 40);
        DrawLabel(*picture, label);
        const std::uint8_t* const shade = picture->data[0] + 20 * picture->linesize[0] + 45 * 4;
        for (const double under : {0.0, 0.5, 1.0}) {
            std::array<double, 3> text{}, behind{};
            for (std::size_t c = 0; c < 3; ++c) {
                text[c] = colour[c] / 255.0;
                behind[c] = (shade[2 - c] * shade[3] / 255.0 + under * (255 - shade[3])) / 255;
            }
            const double one = Luminance(text), other = Luminance(behind);
            EXPECT_GE((std::max(one, other) + 0.05) / (std::min(one, other) + 0.05), 4.5)
                << colour[0] << " over " << under;
        }
    }
}

TEST_F(MenuPlaces, LongButtonsAreBrokenBeforeTheyAreCut) {
    MakePhoto();
    MenuProject page = Page("pal-4:3", 0);
    std::string shorter = "A walk", longest = "x";
    for (int i = 0; i < 12; ++i) shorter += " along the river";
    for (int i = 0; i < 25; ++i) longest += " and then another day of rain";
    page.buttons = {"How to watch", shorter.substr(0, 100), longest};
    const std::vector<Label> buttons = LayOutButtons(page, MenuWatch(page, "menu_push", m_module)).buttons;
    EXPECT_EQ(buttons[0].text.text, "How to watch");
    EXPECT_NE(buttons[1].text.text.find('\n'), std::string::npos);
    EXPECT_EQ(buttons[1].text.text.find("\xe2\x80\xa6"), std::string::npos);
    EXPECT_TRUE(buttons[2].text.text.ends_with("\xe2\x80\xa6"));
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
