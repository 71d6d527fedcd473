#include "host/disc/film_facts.h"

#include "host/base/errors.h"
#include "host/media/ffmpeg_log.h"
#include "tests/host/command.h"

namespace Nifikral {
namespace {

class Facts : public CommandTest {
 protected:
    Facts() { CaptureFfmpegMessages(); }

    FilmFacts Of(const char* file) const { return FactsOf((folder / file).string()); }
    std::string Refusal(const char* file) const {
        try {
            Of(file);
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), ExitCode::Input);
            return error.what();
        }
        return {};
    }
};

TEST_F(Facts, NameTheTracksMarksAndShapeOfAFilm) {
    std::ofstream(folder / "marks.txt") << ";FFMETADATA1\ntitle=  The lake \n"
                                           "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2000\nEND=4500\ntitle=Rain\n"
                                           "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2200\nEND=4500\n"
                                           "[CHAPTER]\nTIMEBASE=1/1000\nSTART=4500\nEND=6000\n";
    std::ofstream(folder / "words.srt") << "1\n00:00:01,000 --> 50:00:00,000\nHello\n";
    Ffmpeg(
        "-f lavfi -i testsrc2=size=72x128:rate=25:duration=6 -f lavfi -i sine=duration=6 -i words.srt -i marks.txt "
        "-map 0 -map 1 -map 1 -map 2 -map_metadata 3 -map_chapters 3 -vf setsar=2 -c:v ffv1 -c:a flac -ac:a:1 6 "
        "-metadata:s:a:0 language=eng -metadata:s:a:1 language=deu -metadata:s:s:0 language=fra a.mkv");
    const FilmFacts film = Of("a.mkv");
    EXPECT_NEAR(film.seconds, 6, 0.1);
    EXPECT_EQ(film.title, "The lake");
    EXPECT_NEAR(film.shownAspect, 144.0 / 128, 1e-6);
    EXPECT_EQ(film.soundLanguages, (std::vector<std::string>{"eng", "deu"}));
    EXPECT_EQ(film.subtitleLanguages, (std::vector<std::string>{"fra"}));
    EXPECT_EQ(RateBeside(film), 192 + 448 + 20);
    // The beginning gets a mark of its own, and a mark right behind another goes.
    ASSERT_EQ(film.chapters.size(), 3u);
    EXPECT_EQ(film.chapters[0].begin, 0);
    EXPECT_EQ(film.chapters[1].begin, 2);
    EXPECT_EQ(film.chapters[1].title, "Rain");
    EXPECT_EQ(film.chapters[2].begin, 4.5);
    EXPECT_FALSE(film.codedForDvd);
}

TEST_F(Facts, FindFilmsThatADiscTakesAsTheyAre) {
    const std::string film = "-f lavfi -i testsrc2=size=720x576:rate=25:duration=2 ",
                      sound = "-f lavfi -i sine=duration=2:sample_rate=48000 ";
    Ffmpeg(film + sound + "-target pal-dvd -aspect 16:9 good.mpg");
    Ffmpeg(film + sound + "-target pal-dvd -aspect 16:9 -g 100 -sc_threshold 1000000000 sparse.mpg");
    Ffmpeg(film + "-target pal-dvd -aspect 16:9 silent.mpg");
    const FilmFacts good = Of("good.mpg");
    EXPECT_TRUE(IsReadyFor(*FindProfile("pal-16:9"), good));
    EXPECT_FALSE(IsReadyFor(*FindProfile("pal-4:3"), good));
    EXPECT_FALSE(IsReadyFor(*FindProfile("ntsc-16:9"), good));
    EXPECT_FALSE(Of("sparse.mpg").codedForDvd);
    EXPECT_FALSE(Of("silent.mpg").codedForDvd);
}

TEST_F(Facts, RefuseWhatIsNoFilm) {
    Ffmpeg("-f lavfi -i testsrc2=size=64x36 -frames:v 1 a.png");
    Ffmpeg("-f lavfi -i sine=duration=1 a.wav");
    std::ofstream(folder / "broken.mp4") << "not a film";
    EXPECT_NE(Refusal("a.png").find("is a picture and no film; name it among"), std::string::npos);
    EXPECT_NE(Refusal("a.wav").find("holds no picture and no video"), std::string::npos);
    EXPECT_NE(Refusal("broken.mp4").find("broken.mp4 is no picture or video"), std::string::npos);
    EXPECT_NE(Refusal("none.mp4").find("none.mp4: no such file"), std::string::npos);
    // A kind of sound that nobody knows, as that of phones may be.
    Ffmpeg(
        "-f lavfi -i testsrc2=size=64x36:duration=1 -f lavfi -i sine=duration=1 -map 0 -map 1 -map 1 -c:a:0 aac "
        "-c:a:1 pcm_s16le b.mov");
    std::string film = ReadFile(folder / "b.mov");
    film.replace(film.find("sowt"), 4, "what");
    std::ofstream(folder / "b.mov", std::ios::binary) << film;
    EXPECT_NE(Refusal("b.mov").find("b.mov: no decoder is known for sound track 2; leave it out: ffmpeg -i IN -map 0 "
                                    "-map -0:a:1 -c copy OUT"),
              std::string::npos);
}

TEST_F(Facts, MissTheEndOfAFilmThatIsCutShort) {
    Ffmpeg("-f lavfi -i testsrc2=size=160x90:rate=25:duration=12 -c:v libx264 a.mkv");
    Ffmpeg("-i a.mkv -c copy -movflags +faststart a.mp4");
    Ffmpeg("-i a.mkv -c copy a.flv");
    // Its last picture stays.
    Ffmpeg("-i a.mkv -frames:v 50 -vf setpts='if(eq(N,49),300,N)/25/TB' -c:v libx264 slow.mkv");
    EXPECT_NO_THROW(RequireEnd((folder / "slow.mkv").string(), Of("slow.mkv")));
    for (const char* const name : {"a.mkv", "a.mp4", "a.flv"}) {
        const std::string path = (folder / name).string();
        EXPECT_NO_THROW(RequireEnd(path, Of(name))) << name;
        std::filesystem::resize_file(path, std::filesystem::file_size(path) * 6 / 10);
        try {
            RequireEnd(path, Of(name));
            ADD_FAILURE() << name;
        } catch (const HostError& error) {
            EXPECT_EQ(error.Code(), ExitCode::Input);
            EXPECT_NE(std::string(error.what()).find(" is cut short: it"), std::string::npos) << error.what();
        }
    }
}

TEST_F(Facts, CutTitlesAfterAWord) {
    EXPECT_EQ(TidyTitle(" \n The lake\t"), "The lake");
    EXPECT_EQ(TidyTitle("caf\xE9"), "");
    std::string words, signs;
    for (int i = 0; i < 60; ++i) words += "été ", signs += "湖水";
    EXPECT_EQ(TidyTitle(words), words.substr(0, 23 * 6 + 5) + "…");
    EXPECT_EQ(TidyTitle(signs), signs.substr(0, 99 * 3) + "…");
}

}  // namespace
}  // namespace Nifikral
