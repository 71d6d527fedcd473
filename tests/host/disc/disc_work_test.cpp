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
    // A poster is made anew alone.
    const auto coded = Time("web.work/film-01.json");
    const std::string poster = ReadFile(folder / "web/films/film-01.jpg");
    const std::string project = ReadFile(folder / "trip.json");
    const std::size_t moment = project.find("\"thumbnail\": ");
    Replace("trip.json", project.substr(moment, project.find_first_of(",\n", moment) - moment), "\"thumbnail\": 0.04");
    const Outcome again = Nifikral("disc trip.json -o web --format web -y");
    ASSERT_EQ(again.exitCode, 0) << again.errors;
    EXPECT_EQ(Time("web.work/film-01.json"), coded);
    EXPECT_NE(ReadFile(folder / "web/films/film-01.jpg"), poster);
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

TEST_F(DiscWorkTest, FilmsForBrowsersAreMadeInChunksThatMeet) {
    std::filesystem::create_directories(folder / "trip");
    const std::string film = " -f lavfi -i sine=duration=21 -c:v mpeg2video -q:v 2 -bf 2 -c:a flac ";
    Ffmpeg("-f lavfi -i testsrc2=size=64x64:rate=25:duration=21" + film + "trip/lake.mkv");
    // Pictures that are made of fields need those beside them.
    Ffmpeg("-f lavfi -i testsrc2=size=64x64:rate=50:duration=21" + film +
           "-vf tinterlace=interleave_top,setfield=tff -flags +ildct+ilme trip/tape.mkv");
    ASSERT_EQ(Nifikral("init disc trip -o trip.json").exitCode, 0);
    Replace("trip.json", "\"seconds\": 20", "\"seconds\": 2");
    const Outcome plan = Nifikral("plan --chunks 2 disc trip.json -o web --format web");
    ASSERT_EQ(plan.exitCode, 0) << plan.errors;
    std::vector<std::string> lines;
    std::istringstream all(plan.output);
    for (std::string line; std::getline(all, line);) lines.push_back(line);
    // Two for the first film, one each for the second, the menu, and the disc.
    ASSERT_EQ(lines.size(), 5u) << plan.output;
    EXPECT_NE(lines[0].find("--stage film-1:0-261 "), std::string::npos) << lines[0];
    EXPECT_NE(lines[2].find("--stage film-2 "), std::string::npos) << lines[2];
    const auto run = [&](const std::string& line) {
        const Outcome outcome = Wait(Start({"sh", "-c", line}));
        ASSERT_EQ(outcome.exitCode, 0) << line << outcome.errors;
    };
    run(lines[1]);
    EXPECT_TRUE(std::filesystem::exists(folder / "web.work/film-01.coded.mp4.chunks/000262-000524.nut"));
    // The first, which no machine has made, is made then.
    run(lines[4]);
    const std::string made = "web/films/film-01.mp4";
    const std::string packets =
        Wait(Start(Words("ffprobe -v error -select_streams v -show_entries packet=pts_time,flags -of csv=p=0 " + made)))
            .output;
    EXPECT_EQ(std::count(packets.begin(), packets.end(), '\n'), 525);
    EXPECT_NE(packets.find("\n10.480000,K"), std::string::npos) << "coded in one run";
    std::istringstream likeness(Ffmpeg("-i " + made + " -i trip/lake.mkv -lavfi psnr=stats_file=- -f null -"));
    for (std::string frame; std::getline(likeness, frame);) {
        const std::size_t all = frame.find("psnr_avg:");
        ASSERT_NE(all, std::string::npos) << frame;
        EXPECT_GT(std::stod(frame.substr(all + 9)), 30) << frame;
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "web.work/film-01.coded.mp4.chunks"));
    // The sound is of one piece.
    std::istringstream times(
        Wait(Start(Words("ffprobe -v error -select_streams a -show_entries packet=pts -of csv=p=0 " + made))).output);
    std::vector<long long> begins;
    for (std::string line; std::getline(times, line);)
        if (!line.empty()) begins.push_back(std::stoll(line));
    ASSERT_GT(begins.size(), 21u * 44100 / 1024);
    for (std::size_t i = 1; i < begins.size(); ++i) EXPECT_EQ(begins[i] - begins[i - 1], 1024) << i;
}

}  // namespace
}  // namespace Nifikral
