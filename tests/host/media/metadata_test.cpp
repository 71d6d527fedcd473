#include <exiv2/exiv2.hpp>

#include "tests/host/command.h"

namespace Nifikral {
namespace {

// Only the header of a colour profile, which is all that programs check before they keep it.
std::string Profile(const std::string& space) {
    std::string profile(140, '\0');
    profile[3] = char(140);
    return profile.replace(12, 4, "mntr").replace(16, 4, space).replace(36, 4, "acsp");
}

class PhotographTest : public CommandTest {
 protected:
    // A photograph that lies on its side, 64x48 as it is stored, with all that cameras and people write into files.
    void MakePhotograph(const std::string& name, const std::string& date, const std::string& profile) const {
        Ffmpeg("-f lavfi -i testsrc2=s=64x48 -frames:v 1 " + name);
        const auto image = Exiv2::ImageFactory::open((folder / name).string());
        image->readMetadata();
        Exiv2::ExifData exif;
        exif["Exif.Image.Orientation"] = std::uint16_t(6);
        exif["Exif.Image.Copyright"] = "Mine";
        exif["Exif.Photo.DateTimeOriginal"] = date;
        exif["Exif.Photo.PixelXDimension"] = std::uint32_t(64);
        exif["Exif.GPSInfo.GPSLatitude"] = "48/1 12/1 30/1";
        Exiv2::ExifThumb(exif).setJpegThumbnail(reinterpret_cast<const Exiv2::byte*>("\xFF\xD8\xFF\xD9"), 4);
        image->setExifData(exif);
        Exiv2::IptcData iptc;
        iptc["Iptc.Application2.Caption"] = "Caption";
        image->setIptcData(iptc);
        Exiv2::XmpData xmp;
        xmp["Xmp.dc.source"] = "Source";
        xmp["Xmp.tiff.Orientation"] = "6";
        image->setXmpData(xmp);
        Exiv2::DataBuf bytes(reinterpret_cast<const Exiv2::byte*>(profile.data()), long(profile.size()));
        image->setIccProfile(bytes);
        image->writeMetadata();
    }

    struct Said {
        std::string exif, iptc, xmp, profile;
    };

    Said Read(const std::string& name) const {
        const auto image = Exiv2::ImageFactory::open((folder / name).string());
        image->readMetadata();
        Said said;
        for (const char* const key : {"Exif.Image.Orientation", "Exif.Image.Copyright", "Exif.Photo.DateTimeOriginal",
                                      "Exif.Photo.PixelXDimension", "Exif.GPSInfo.GPSLatitude"})
            if (const auto found = image->exifData().findKey(Exiv2::ExifKey(key)); found != image->exifData().end())
                said.exif += found->toString() + "|";
        if (Exiv2::ExifThumbC(image->exifData()).copy().size_ > 0) said.exif += "thumbnail";
        for (const auto& entry : image->iptcData()) said.iptc += entry.toString();
        for (const char* const key : {"Xmp.dc.source", "Xmp.tiff.Orientation"})
            if (const auto found = image->xmpData().findKey(Exiv2::XmpKey(key)); found != image->xmpData().end())
                said.xmp += found->toString() + "|";
        const Exiv2::DataBuf& profile = *image->iccProfile();
        said.profile = {reinterpret_cast<const char*>(profile.pData_), std::size_t(profile.size_)};
        return said;
    }
};

TEST_F(PhotographTest, WhatItSaysStaysInEveryFormatThatHoldsIt) {
    MakePhotograph("photo.jpg", "2020:01:02 03:04:05", Profile("RGB "));
    for (const std::string name : {"out.jpg", "out.png", "out.tiff", "out.webp"}) {
        const Outcome outcome = Nifikral("apply photo.jpg " + name + " gray");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const Said said = Read(name);
        // The picture has been turned.
        EXPECT_EQ(said.exif, "1|Mine|2020:01:02 03:04:05|48|48/1 12/1 30/1|") << name;
        EXPECT_EQ(said.xmp, "Source|1|") << name;
        EXPECT_EQ(said.profile, Profile("RGB ")) << name;
        const bool webp = name == "out.webp";
        EXPECT_EQ(said.iptc, webp ? "" : "Caption") << name;
        EXPECT_EQ(
            outcome.errors,
            webp ? "nifikral: warning: out.webp does not hold what photo.jpg says beside its picture: IPTC\n" : "");
        EXPECT_EQ(Probe(name, "stream=width,height"), "48|64\n");
        Ffmpeg("-xerror -i " + name + " -f null -");
        // And what is written can be read by the next run.
        ASSERT_EQ(Nifikral("apply " + name + " again.png invert -y -q").exitCode, 0) << name;
        EXPECT_EQ(Read("again.png").exif, said.exif) << name;
    }
    const Outcome bare = Nifikral("apply photo.jpg out.bmp gray");
    EXPECT_NE(bare.errors.find("EXIF, IPTC, XMP, its colour profile"), std::string::npos) << bare.errors;
}

TEST_F(PhotographTest, LosesTagsThatAreNoLongerTrue) {
    // Inks and greys are RGB here, so that their profiles would give wrong colours.
    MakePhotograph("grey.jpg", "2020:01:02 03:04:05", Profile("GRAY"));
    const Outcome outcome = Nifikral("apply grey.jpg out.png gray");
    EXPECT_EQ(Read("out.png").profile, "");
    EXPECT_NE(outcome.errors.find("its colour profile"), std::string::npos) << outcome.errors;
    // Each of numbered pictures has its own date.
    MakePhotograph("in_1.jpg", "2021:01:01 00:00:00", Profile("RGB "));
    MakePhotograph("in_2.jpg", "2022:02:02 00:00:00", Profile("RGB "));
    ASSERT_EQ(Nifikral("apply in_%d.jpg out_%d.jpg gray").exitCode, 0);
    EXPECT_NE(Read("out_0.jpg").exif.find("2021"), std::string::npos);
    EXPECT_NE(Read("out_1.jpg").exif.find("2022"), std::string::npos);
    // A truncated file is not reported as a strange tag.
    ASSERT_EQ(Nifikral("apply in_1.jpg cut.tiff gray").exitCode, 0);
    std::filesystem::resize_file(folder / "cut.tiff", std::filesystem::file_size(folder / "cut.tiff") / 2);
    EXPECT_EQ(Nifikral("apply cut.tiff out.jpg gray").exitCode, 3);
}

class ExtrasTest : public CommandTest {
 protected:
    void MakeFilm() const {
        std::ofstream(folder / "texts.srt")
            << "1\n00:00:00,500 --> 00:00:01,500\nFirst\n\n2\n00:00:02,500 --> 00:00:03,500\nSecond\n";
        std::ofstream(folder / "tags") << ";FFMETADATA1\ntitle=My film\ncopyright=Mine\nlocation=+48.2+016.3/\n"
                                          "[CHAPTER]\nTIMEBASE=1/1000\nSTART=0\nEND=2000\ntitle=One\n"
                                          "[CHAPTER]\nTIMEBASE=1/1000\nSTART=2000\nEND=4000\ntitle=Two\n";
        Ffmpeg("-f lavfi -i color=red:s=16x16 -frames:v 1 cover.png");
        Ffmpeg(
            "-f lavfi -i testsrc2=s=64x48:r=10:d=4 -f lavfi -i sine=d=4 -i texts.srt -i tags -map 0 -map 1 -map 2 "
            "-map_metadata 3 -map_chapters 3 -c:v libx264 -bf 0 -c:a pcm_s16le -c:s srt -metadata:s:s:0 language=eng "
            "-attach cover.png -metadata:s:t:0 mimetype=image/png in.mkv");
    }

    std::string Probe(const std::string& file, const std::string& entries) const {
        return Wait(Start(Words("ffprobe -v error -of csv=p=0 " + entries + " " + file))).output;
    }

    std::string Texts(const std::string& file) const { return Ffmpeg("-i " + file + " -map 0:s:0 -f srt -"); }
};

TEST_F(ExtrasTest, StayWhereTheContainerHoldsThemAndAreNamedElsewhere) {
    MakeFilm();
    struct Container {
        const char *extension, *texts;
        bool cover, chapters;
    };
    for (const auto& [extension, texts, cover, chapters] :
         {Container{"mkv", "subrip", true, true}, Container{"mp4", "mov_text", true, true},
          Container{"mov", "mov_text", false, true}, Container{"webm", "webvtt", false, true},
          Container{"avi", "", false, false}, Container{"ts", "", false, false}}) {
        const std::string file = std::string("out.") + extension;
        const Outcome outcome = Nifikral("apply in.mkv " + file + " gray");
        ASSERT_EQ(outcome.exitCode, 0) << outcome.errors;
        const std::string kind = *texts ? std::string(texts) + ",eng" : "";
        EXPECT_EQ(Words(Probe(file, "-select_streams s -show_entries stream=codec_name:stream_tags=language")),
                  Words(kind))
            << file;
        EXPECT_EQ(Probe(file, "-show_entries stream_disposition=attached_pic").find('1') != std::string::npos, cover)
            << file;
        EXPECT_EQ(Probe(file, "-show_entries chapter=start_time:chapter_tags=title"),
                  chapters ? "0.000000,One\n2.000000,Two\n" : "")
            << file;
        const auto named = [&](const char* what) { return outcome.errors.find(what) != std::string::npos; };
        EXPECT_EQ(named("subtitles subrip (eng)"), !*texts) << outcome.errors;
        EXPECT_EQ(named("cover picture png"), !cover) << outcome.errors;
        EXPECT_EQ(named("chapters"), !chapters) << outcome.errors;
        if (*texts) {
            EXPECT_NE(Texts(file).find(":01,5"), std::string::npos) << Texts(file);
        }
        if (cover) {
            EXPECT_EQ(Ffmpeg("-i " + file + " -map 0:v:1 -f rawvideo -"), Ffmpeg("-i cover.png -f rawvideo -")) << file;
        }
    }
    EXPECT_NE(Probe("out.mp4", "-show_entries format_tags").find("+48.2"), std::string::npos);
    Ffmpeg(
        "-i in.mkv -map 0:v:0 -c copy -map_metadata -1 -movflags use_metadata_tags -metadata "
        "com.apple.quicktime.location.ISO6709=+48.2+016.3/ phone.mov");
    ASSERT_EQ(Nifikral("apply phone.mov phone.mp4 gray").exitCode, 0);
    EXPECT_NE(Probe("phone.mp4", "-show_entries format_tags=location").find("+48.2"), std::string::npos);
    EXPECT_EQ(Nifikral("apply out.mp4 back.mkv gray").errors, "");
    EXPECT_NE(Texts("back.mkv").find("Second"), std::string::npos);
}

TEST_F(ExtrasTest, AreOfTheRangeAndJoinedChunksHaveThem) {
    MakeFilm();
    ASSERT_EQ(Nifikral("apply in.mkv part.mp4 gray --frames 10-29").exitCode, 0);
    EXPECT_EQ(Texts("part.mp4"),
              "1\n00:00:00,000 --> 00:00:00,500\nFirst\n\n2\n00:00:01,500 --> 00:00:02,000\nSecond\n\n");
    EXPECT_EQ(Probe("part.mp4", "-show_entries chapter=start_time,end_time:chapter_tags=title"),
              "0.000000,1.000000,One\n1.000000,2.000000,Two\n");
    const Outcome plan = Nifikral("plan --chunks 2 apply in.mkv joined.mp4 gray --frames 10-29");
    ASSERT_EQ(Wait(Start({"sh", "-ec", plan.output})).exitCode, 0);
    EXPECT_EQ(Texts("joined.mp4"), Texts("part.mp4"));
    EXPECT_EQ(Probe("joined.mp4", "-show_entries stream=codec_name"),
              Probe("part.mp4", "-show_entries stream=codec_name"));
}

}  // namespace
}  // namespace Nifikral
