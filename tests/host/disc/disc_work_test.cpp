#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/command.h"
#include "tests/host/disc/disc_walk.h"

namespace Nifikral {
namespace {

class DiscWorkTest : public CommandTest {
 protected:
    std::filesystem::file_time_type Time(const std::string& name) const {
        return std::filesystem::last_write_time(folder / name);
    }
    // Never back, in steps small enough to watch, and up to the end.
    static void ExpectOneProgress(const std::string& printed) {
        std::istringstream lines(printed);
        double done = 0;
        for (std::string line; std::getline(lines, line);) {
            if (!line.starts_with("{\"done\"")) continue;
            const double now = nlohmann::json::parse(line)["done"];
            EXPECT_GE(now, done);
            EXPECT_LT(now, done + 0.25);
            done = now;
        }
        EXPECT_EQ(done, 1);
    }
    void Replace(const std::string& name, const std::string& old, const std::string& text) const {
        std::string all = ReadFile(folder / name);
        const std::size_t at = all.find(old);
        ASSERT_NE(at, std::string::npos) << all;
        std::ofstream(folder / name, std::ios::binary) << all.replace(at, old.size(), text);
    }
};

TEST_F(DiscWorkTest, AFolderBecomesADiscAndAChangeMakesOnlyWhatItTouches) {
    std::filesystem::create_directories(folder / "trip" / "Photos");
    Ffmpeg("-f lavfi -i testsrc2=size=160x90:rate=25:duration=1 -f lavfi -i sine=duration=1 trip/beach.mp4");
    Ffmpeg("-f lavfi -i mandelbrot=size=160x90:rate=25 -t 1 trip/home.mp4");
    Ffmpeg("-f lavfi -i testsrc=size=160x120:duration=2:rate=1 trip/Photos/%d.png");
    ASSERT_EQ(Nifikral("init disc trip -o trip.json").exitCode, 0);
    Replace("trip.json", "\"seconds\": 20", "\"seconds\": 2");
    const Outcome made = Nifikral("disc trip.json -o trip.iso --progress json");
    ASSERT_EQ(made.exitCode, 0) << made.errors;
    ExpectOneProgress(made.errors);
    for (int film = 1; film <= 3; ++film) {
        DiscWalk walk((folder / "trip.iso").string());
        ASSERT_TRUE(walk.PlayToButtons() && walk.Press(film));
        EXPECT_EQ(walk.Place(), FilmPlace(film, 1));
    }
    const auto film = Time("trip.iso.work/film-1.mpg"), page = Time("trip.iso.work/page-1.mpg"),
               disc = Time("trip.iso");
    EXPECT_EQ(Nifikral("disc trip.json -o trip.iso").exitCode, 4) << "it is there already";
    Replace("trip.json", "\"home\"", "\"back home\"");
    ASSERT_EQ(Nifikral("disc trip.json -o trip.iso -y").exitCode, 0);
    EXPECT_EQ(Time("trip.iso.work/film-1.mpg"), film);
    EXPECT_NE(Time("trip.iso.work/page-1.mpg"), page);
    EXPECT_NE(Time("trip.iso"), disc);
    // What would be refused at the end is refused before hours of encoding.
    for (const std::string format : {"dvd", "web"}) {
        const Outcome refused = Nifikral("disc trip.json -o trip -y --format " + format);
        EXPECT_EQ(refused.exitCode, 4);
        EXPECT_NE(refused.errors.find("is no part of"), std::string::npos) << refused.errors;
        EXPECT_FALSE(std::filesystem::exists(folder / "trip.work"));
    }
    // The same project makes a folder for browsers.
    const Outcome web = Nifikral("disc trip.json -o web --format web");
    ASSERT_EQ(web.exitCode, 0) << web.errors;
    EXPECT_NE(ReadFile(folder / "web" / "index.html").find("back home"), std::string::npos);
    EXPECT_EQ(Nifikral("disc trip.iso.work/disc.json -o trip.iso.work --stage film-4").exitCode, 2);
}

TEST_F(DiscWorkTest, APlanMakesTheStagesApartAndItsLastCommandMakesNoneAgain) {
    std::filesystem::create_directories(folder / "my $trip");
    Ffmpeg("-f lavfi -i testsrc2=size=160x90:rate=25:duration=1 film.mkv");
    std::filesystem::rename(folder / "film.mkv", folder / "my $trip/film.mkv");
    ASSERT_EQ(Wait(Start({NIFIKRAL_PROGRAM, "init", "disc", "my $trip", "-o", "trip.json"})).exitCode, 0);
    Replace("trip.json", "\"seconds\": 20", "\"seconds\": 2");
    const Outcome plan = Nifikral("plan --format make disc trip.json -o trip.iso");
    ASSERT_EQ(plan.exitCode, 0) << plan.errors;
    std::ofstream(folder / "plan.mk") << plan.output;
    EXPECT_FALSE(std::filesystem::exists(folder / "trip.iso"));
    const Outcome parts = Wait(Start(Words("make -s -j2 -f plan.mk part-0 part-1")));
    ASSERT_EQ(parts.exitCode, 0) << parts.errors;
    const auto film = Time("trip.iso.work/film-1.mpg"), page = Time("trip.iso.work/page-1.mpg");
    for (int run = 0; run < 2; ++run) {
        const Outcome made = Wait(Start(Words("make -s -j2 -f plan.mk")));
        ASSERT_EQ(made.exitCode, 0) << made.errors;
        EXPECT_EQ(Time("trip.iso.work/film-1.mpg"), film);
        EXPECT_EQ(Time("trip.iso.work/page-1.mpg"), page);
    }
    DiscWalk walk((folder / "trip.iso").string());
    ASSERT_TRUE(walk.PlayToButtons() && walk.Press(1));
    EXPECT_EQ(walk.Place(), FilmPlace(1, 1));
    EXPECT_EQ(Nifikral("concat --last 3 disc trip.json -o trip.iso").exitCode, 2);
}

}  // namespace
}  // namespace Nifikral
