#include "host/films/template_style.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "host/catalogue/catalogue.h"
#include "host/films/media_manager.h"
#include "host/films/menu.h"
#include "host/films/menu_places.h"
#include "host/films/readable_shade.h"
#include "host/films/text_renderer.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

// Templates whose pictures fill the frame, so that texts lie on them.
bool FillsFrame(const std::string& name) { return name == "menu_fullscreen" || name == "menu_layeredtitles"; }

class TemplateType : public CommandTest {
 protected:
    TemplateType() {
        // The worst that can lie behind a text, of either kind.
        Ffmpeg("-f lavfi -i color=white:s=96x64 -frames:v 1 white.png");
        Ffmpeg("-f lavfi -i color=black:s=96x64 -frames:v 1 black.png");
    }

    // With texts that have the template's style.
    MenuProject Page(const std::string& name, int width, int height, std::size_t pictures,
                     Mood mood = Mood::Own) const {
        MenuProject page;
        page.mood = mood;
        page.film.width = width;
        page.film.height = height;
        page.film.frames = 120;
        for (const char* const words : {"Summer 2026", "Four places"}) {
            page.texts.push_back(StyledMenuText(StyleOf(name, mood), page.film, page.texts.size()));
            page.texts.back().styled.text = words;
        }
        page.placesSources = page.paintsNothing = name == "menu_common";
        for (std::size_t i = 0; i < pictures; ++i) {
            MenuSource& source = page.sources.emplace_back();
            source.path = (folder / (i % 2 ? "black.png" : "white.png")).string();
            source.start = source.end = {width * (1 + int(i)) / 12, height / 2};
            if (page.placesSources) source.size = {width / 14, height / 14};
        }
        return page;
    }

    void ExpectContrast(Mood mood);

    MediaManager m_manager;
    EffectModule m_module{NIFIKRAL_MODULE_FILE, &m_manager};
};

std::vector<std::string> Templates() {
    std::vector<std::string> names;
    for (const EffectInfo& info : Catalogue())
        if (info.traits & menu) names.emplace_back(info.name);
    return names;
}

// Pixels of a frame that belong to a text's letters, and those close around them, by what the text looks like without
// its decoration.
struct Glyphs {
    explicit Glyphs(const MenuText& text) : laid(LaidOut(text)) {
        StyledText plain = laid.styled;
        plain.style.halo = plain.style.outline = plain.style.shadow = false;
        const FramePtr letters = RenderText(plain);
        const TextExtent whole = MeasureText(laid.styled), own = MeasureText(plain);
        const int left = laid.box[0] + whole.left - own.left, top = laid.box[1] + whole.top - own.top;
        const int near = std::max(2, plain.size / 12), step = 2 * plain.size;
        const auto alpha = [&](int x, int y) {
            const bool isIn = x >= 0 && y >= 0 && x < letters->width && y < letters->height;
            return isIn ? letters->data[0][y * letters->linesize[0] + x * 4 + 3] : 0;
        };
        windows.resize(std::size_t((letters->width + 2 * near) / step + 1));
        for (int y = -near; y < letters->height + near; ++y)
            for (int x = -near; x < letters->width + near; ++x) {
                Window& window = windows[std::size_t((x + near) / step)];
                if (alpha(x, y) == 255) window.letters.push_back({left + x, top + y});
                if (alpha(x, y) != 0) continue;
                // A pixel beside the edge is mixed with it where the picture is scaled.
                int most = 0;
                for (int dy = -near; dy <= near; ++dy)
                    for (int dx = -near; dx <= near; ++dx) most = std::max(most, alpha(x + dx, y + dy) + 0);
                if (most == 255) window.around.push_back({left + x, top + y});
            }
    }

    struct Pixel {
        int x, y;
    };
    // About two letters.
    struct Window {
        std::vector<Pixel> letters, around;
    };
    MenuText laid;
    std::vector<Window> windows;
};

// How well letters stand out from what is around them: of that, from the tenth which is most like them.
double ContrastIn(const AVFrame& frame, const Glyphs::Window& window) {
    const auto luminances = [&](const std::vector<Glyphs::Pixel>& pixels) {
        std::vector<double> values;
        for (const auto& [x, y] : pixels) {
            if (x < 0 || x >= frame.width || y < 0 || y >= frame.height) continue;
            const std::uint8_t* const at = frame.data[0] + y * frame.linesize[0] + x * 4;
            values.push_back(Luminance(at[2], at[1], at[0]));
        }
        std::sort(values.begin(), values.end());
        return values;
    };
    const std::vector<double> letters = luminances(window.letters), around = luminances(window.around);
    if (letters.size() < 8 || around.size() < 8) return 21;
    const double own = letters[letters.size() / 2];
    std::vector<double> contrasts;
    for (const double other : around) contrasts.push_back(Contrast(own, other));
    std::nth_element(contrasts.begin(), contrasts.begin() + std::ptrdiff_t(contrasts.size() / 10), contrasts.end());
    return contrasts[contrasts.size() / 10];
}

// Whether a text of this colour that comes and goes is at its place.
bool IsThere(const AVFrame& frame, const Glyphs& glyphs) {
    const StyledText& text = glyphs.laid.styled;
    std::size_t all = 0, alike = 0;
    for (const Glyphs::Window& window : glyphs.windows)
        for (const auto& [x, y] : window.letters) {
            const std::uint8_t* const at = frame.data[0] + y * frame.linesize[0] + x * 4;
            alike += std::abs(at[2] - text.red) + std::abs(at[1] - text.green) + std::abs(at[0] - text.blue) < 60;
            ++all;
        }
    return all > 0 && alike * 10 > all * 8;
}

// At moments of the whole loop of each template.
void TemplateType::ExpectContrast(Mood mood) {
    constexpr int moments = 12;
    for (const std::string& name : Templates()) {
        const MenuProject page = Page(name, 640, 360, 4, mood);
        const PreparedFilm menu = PrepareMenuPage(page, name, m_module, name);
        FilmPictures pictures(*menu.generator, menu.film, AVBased::formatRgba32);
        const std::vector<Glyphs> texts(page.texts.begin(), page.texts.end());
        std::vector<double> least(texts.size(), 21);
        std::vector<int> seen(texts.size());
        for (int moment = 0; moment < moments; ++moment) {
            ASSERT_TRUE(pictures.GoTo(page.film.frames * moment / moments));
            const FramePtr frame = pictures.Make();
            for (std::size_t i = 0; i < texts.size(); ++i) {
                if (name == "menu_layeredtitles" && !IsThere(*frame, texts[i])) continue;
                ++seen[i];
                for (const Glyphs::Window& window : texts[i].windows)
                    least[i] = std::min(least[i], ContrastIn(*frame, window));
            }
        }
        for (std::size_t i = 0; i < texts.size(); ++i) {
            const StyledText& text = texts[i].laid.styled;
            const bool isLarge = text.size * 576 / page.film.height >= (text.style.bold ? 24 : 32);
            EXPECT_GE(least[i], isLarge ? 3 : 4.5) << name << " text " << i;
            EXPECT_GE(seen[i], moments / 2) << name << " text " << i;
            RecordProperty(name + std::to_string(i), std::to_string(least[i]));
        }
    }
}

TEST_F(TemplateType, CanBeReadAtEveryMomentOfTheLoop) { ExpectContrast(Mood::Own); }

TEST_F(TemplateType, CanBeReadInLightAndDarkMoods) {
    ExpectContrast(Mood::Light);
    ExpectContrast(Mood::Dark);
}

TEST_F(TemplateType, FollowsTheMoodThatAProjectNames) {
    const auto made = [&](const std::string& template_, const std::string& mood) {
        return Nifikral("init " + template_ + " made -y -q --mood " + mood).exitCode;
    };
    EXPECT_EQ(made("menu_pets", "dark"), 0);
    const Json project = LoadProject((folder / "made/menu.json").string());
    EXPECT_EQ(project["mood"], "dark");
    EXPECT_EQ(project["textInfos"][0]["color"], "#fff6e8");
    EXPECT_EQ(made("menu_pets", "sad"), 2);
    // One that paints nothing has a picture behind it in the mood.
    const auto background = [&](const std::string& mood) {
        EXPECT_EQ(made("menu_common", mood), 0);
        std::ifstream file(folder / "made/background.png", std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    EXPECT_EQ((std::set{background("own"), background("light"), background("dark")}.size()), 3u);
    std::ofstream(folder / "sad.json") << R"({"mood": "sad", "width": 320, "height": 180})";
    const Outcome sad = Nifikral("menu menu_pets sad.json -o out.png -y --dry-run");
    EXPECT_EQ(sad.exitCode, 2);
    EXPECT_NE(sad.errors.find("mood: is \"sad\"; give own, light or dark"), std::string::npos) << sad.errors;
}

TEST_F(TemplateType, KeepsTitlesAndRestingPicturesApart) {
    for (const std::string& name : Templates())
        for (const int width : {640, 480})
            for (const std::size_t count : {1, 2, 5, 9}) {
                if (width == 480 && count < 5) continue;
                SCOPED_TRACE(testing::Message() << name << " " << width << " " << count);
                const MenuProject page = Page(name, width, 360, count);
                const MenuWatch watch(page, name, m_module);
                const std::vector<RestingPlace> places = watch.Places();
                for (const MenuText& text : page.texts) {
                    const MenuText laid = LaidOut(text);
                    const TextExtent letters = MeasureText(laid.styled);
                    const FilmBox box{laid.box[0] + letters.left, laid.box[1] + letters.top, letters.width,
                                      letters.height};
                    EXPECT_TRUE(box.IsWithin(SafeArea(width, 360)));
                    if (FillsFrame(name)) {
                        // Faces are in the middle and above it.
                        EXPECT_GE(box.top, name == "menu_layeredtitles" ? 180 : 260);
                        continue;
                    }
                    for (const RestingPlace& place : places)
                        EXPECT_FALSE(place.kind == PlaceKind::Picture && place.Rests() && box.Overlaps(place.at))
                            << text.styled.text;
                    // Moving ones pass behind it.
                    const bool rest = std::ranges::all_of(places, &RestingPlace::Rests);
                    EXPECT_LE(watch.Cover(PlaceKind::Picture, box), rest ? 0.01 : 0.1) << text.styled.text;
                }
            }
}

// The smallest box with all pixels in which two frames differ.
FilmBox Difference(const AVFrame& one, const AVFrame& other) {
    FilmBox box{one.width, one.height, 0, 0};
    int right = 0, bottom = 0;
    for (int y = 0; y < one.height; ++y)
        for (int x = 0; x < one.width; ++x) {
            const int at = y * one.linesize[0] + x * 4;
            if (std::equal(one.data[0] + at, one.data[0] + at + 3, other.data[0] + at)) continue;
            box.left = std::min(box.left, x);
            box.top = std::min(box.top, y);
            right = std::max(right, x + 1);
            bottom = std::max(bottom, y + 1);
        }
    box.width = right - box.left;
    box.height = bottom - box.top;
    return box;
}

TEST_F(TemplateType, ShowsTheNamesOfPicturesOnThem) {
    for (const std::string& name : Templates()) {
        SCOPED_TRACE(name);
        MenuProject page = Page(name, 640, 360, 3);
        page.names = StyledMenuText(StyleOf(name).caption, page.film);
        const PreparedFilm plain = PrepareMenuPage(page, name, m_module, name);
        MenuProject changed = page;
        changed.sources[1].path = page.sources[0].path;
        const PreparedFilm other = PrepareMenuPage(changed, name, m_module, name);
        page.sources[1].caption = "The lake";
        const PreparedFilm named = PrepareMenuPage(page, name, m_module, name);
        FilmPictures without(*plain.generator, plain.film, AVBased::formatRgba32);
        FilmPictures replaced(*other.generator, other.film, AVBased::formatRgba32);
        FilmPictures with(*named.generator, named.film, AVBased::formatRgba32);
        bool isSeen = false;
        for (const int frame : {10, 30, 50, 70, 90, 110}) {
            ASSERT_TRUE(without.GoTo(frame) && replaced.GoTo(frame) && with.GoTo(frame));
            const FramePtr shown = without.Make();
            const FilmBox box = Difference(*shown, *with.Make());
            if (box.IsEmpty()) continue;
            isSeen = true;
            // On what the picture shows then, or close below it.
            EXPECT_TRUE(box.IsWithin(Difference(*shown, *replaced.Make()).Grown(24))) << frame;
        }
        EXPECT_TRUE(isSeen);
    }
}

TEST_F(TemplateType, IsUsedForTextsThatGiveNoneAndNamesThePackageOfAMissingTypeface) {
    const auto write = [&](const char* file, const std::string& text) {
        std::ofstream(folder / file) << R"({"width": 320, "height": 180, "duration": 1,
            "additionSourcePaths": ["white.png"], "textInfos": [)"
                                     << text << "]}";
    };
    write("plain.json", R"({"text": "Summer"})");
    write("whole.json", R"({"text": "Summer", "face": "Quicksand, DejaVu Sans", "fontstyle": "bold halo", "size": 19,
                            "spacing": 10, "color": "#8a1c54", "align": "center", "box": [19, 10, 282, 23]})");
    write("other.json", R"({"text": "Summer", "align": "right", "spacing": 300})");
    write("wrong.json", R"({"text": "Summer", "align": "top", "spacing": 5000})");
    const auto picture = [&](const std::string& project) {
        const Outcome made = Nifikral("menu menu_babygirl " + project + " -o out.png -y --frames 3");
        EXPECT_EQ(made.exitCode, 0) << made.errors;
        EXPECT_EQ(made.errors, "");
        return RawPictures("out.png", "rgb24");
    };
    EXPECT_EQ(picture("plain.json"), picture("whole.json"));
    EXPECT_NE(picture("plain.json"), picture("other.json"));
    const Outcome wrong = Nifikral("menu menu_babygirl wrong.json -o out.png -y --frames 3 --dry-run");
    EXPECT_EQ(wrong.exitCode, 2);
    for (const char* const line :
         {"textInfos[0].align: is \"top\"; give left, center or right", "textInfos[0].spacing: is 5000"})
        EXPECT_NE(wrong.errors.find(line), std::string::npos) << wrong.errors;

    std::ofstream(folder / "fonts.conf") << "<fontconfig><dir>/usr/share/fonts/truetype/dejavu</dir><cachedir>"
                                         << scratch.string() << "</cachedir></fontconfig>";
    const Outcome missing = Nifikral("menu menu_babygirl plain.json -o out.png -y --frames 3 --dry-run",
                                     [&] { setenv("FONTCONFIG_FILE", (folder / "fonts.conf").c_str(), 1); });
    EXPECT_EQ(missing.exitCode, 0) << missing.errors;
    EXPECT_NE(missing.errors.find("the font \"Quicksand\" is not installed, \"DejaVu Sans\" is used instead; install "
                                  "the package fonts-quicksand"),
              std::string::npos)
        << missing.errors;
}

}  // namespace
}  // namespace Nifikral
