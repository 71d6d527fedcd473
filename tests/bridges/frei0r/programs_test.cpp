// The plug-ins in the programs that they are for. What these are given and give back is packed and lossless, so the
// bytes must be those that the module makes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "tests/bridges/frei0r/in_process.h"

namespace Nifikral::Frei0r {
namespace {

namespace fs = std::filesystem;

constexpr int frameCount = 12;

class Programs : public testing::Test {
 protected:
    void SetUp() override {
        fs::create_directories(m_folder);
        fs::current_path(m_folder);
        setenv("FREI0R_PATH", NIFIKRAL_FREI0R_FOLDER, 1);
        setenv("HOME", m_folder.c_str(), 1);
        setenv("GST_REGISTRY", (m_folder / "registry").c_str(), 1);
        // Its pictures of that module need a display.
        setenv("MLT_NO_X", "1", 1);
    }
    void TearDown() override {
        fs::current_path("/");
        fs::remove_all(m_folder);
    }

    // Writes frames to in.raw for the program to read.
    void MakeInput(unsigned width, unsigned height, const std::string& format) {
        m_width = width;
        m_height = height;
        m_format = format;
        m_input = RandomBytes(std::size_t(width) * height * 4 * frameCount);
        std::ofstream("in.raw", std::ios::binary)
            .write(reinterpret_cast<const char*>(m_input.data()), std::streamsize(m_input.size()));
    }

    static void Run(const std::string& command) {
        ASSERT_EQ(std::system((command + " </dev/null").c_str()), 0) << command;
    }

    static Bytes Output() {
        std::ifstream file("out.raw", std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    std::string Size() const { return std::to_string(m_width) + "x" + std::to_string(m_height); }
    std::string RawInput() const { return " -f rawvideo -pix_fmt " + m_format + " -s " + Size() + " -r 25 -i in.raw "; }

    void ExpectModuleResult(const std::string& effect, const Settings& settings) {
        const Bytes output = Output(), expected = InProcess(effect, settings, m_input, m_width, m_height);
        ASSERT_EQ(output.size(), expected.size()) << effect;
        EXPECT_TRUE(output == expected) << effect << " at " << Size();
    }

    const fs::path m_folder = fs::temp_directory_path() / ("nifikral_frei0r_" + std::to_string(getpid()));
    unsigned m_width = 0, m_height = 0;
    std::string m_format;
    Bytes m_input;
};

class Ffmpeg : public Programs {
 protected:
    void Filter(const std::string& filter) {
        Run("ffmpeg -nostdin -v error -y" + RawInput() + "-vf frei0r=nifikral_" + filter + " -f rawvideo -pix_fmt " +
            m_format + " out.raw");
    }
};

// At 720 columns it passes no times, at 64 milliseconds. Only widths in steps of 16 are without padding.
TEST_F(Ffmpeg, FadesFrameByFrameWhateverItPassesForTime) {
    for (const auto& [width, height] : {std::pair(64u, 48u), {720u, 16u}, {1920u, 8u}, {48u, 33u}}) {
        MakeInput(width, height, "rgba");
        Filter("directfadein:'0|1|0.001'");
        ExpectModuleResult("directfadein", {{"FadeMax", "256"}, {"duration", "10"}});
    }
}

TEST_F(Ffmpeg, SetsParametersOfEveryKind) {
    MakeInput(80, 33, "bgra");
    Filter("colorfilter:'ff8040|0.25'");
    ExpectModuleResult("colorfilter", {{"colorfilter_color", "16744512"}, {"colorfilter_density", "25"}});
    MakeInput(64, 32, "rgba");
    Filter("reverse:'n|y'");
    ExpectModuleResult("reverse", {{"vertical", "1"}});
    Filter("spherize:'0.5|0.5|0.25|0.75'");
    ExpectModuleResult("spherize",
                       {{"spherize_r", "16"}, {"spherize_x", "32"}, {"spherize_y", "16"}, {"spherize_scale", "2"}});
}

TEST_F(Ffmpeg, ShowsAMenuAsTheCommandMakesIt) {
    Run(NIFIKRAL_PROGRAM " init -q menu_common project");
    Run(NIFIKRAL_PROGRAM
        " menu -q menu_common project/menu.json -o expected.nut --frames 0-4 --format bgra --encoder rawvideo");
    Run("ffmpeg -nostdin -v error -y -i expected.nut -f rawvideo -pix_fmt bgra out.raw");
    const Bytes expected = Output();
    ASSERT_EQ(expected.size(), 5u * 1280 * 720 * 4);
    Run("ffmpeg -nostdin -v error -y -f lavfi -i frei0r_src=size=1280x720:framerate=25:"
        "filter_name=nifikral_menu_common:filter_params=project/menu.json -frames:v 5 -f rawvideo -pix_fmt bgra "
        "out.raw");
    EXPECT_TRUE(Output() == expected);
}

class Melt : public Programs {
 protected:
    // The program itself has pictures in the order rgba, and exchanges colours for those plug-ins that want another.
    void MakeInput(unsigned width, unsigned height, const std::string& format) {
        Programs::MakeInput(width, height, format);
        const std::string w = std::to_string(width), h = std::to_string(height);
        std::ofstream("profile") << "description=test\nframe_rate_num=25\nframe_rate_den=1\nprogressive=1\n"
                                 << "sample_aspect_num=1\nsample_aspect_den=1\ncolorspace=709\nwidth=" << w
                                 << "\nheight=" << h << "\ndisplay_aspect_num=" << w << "\ndisplay_aspect_den=" << h
                                 << "\n";
        Run("ffmpeg -nostdin -v error -y" + RawInput() + "-c:v ffv1 in.mkv");
    }
    void Play(const std::string& arguments, const std::string& consumer = {}) {
        // On a busy machine it sometimes ends without having written anything.
        for (int tries = 0; tries < 3 && (tries == 0 || fs::file_size("out.mkv") == 0); ++tries)
            Run("melt -silent -profile ./profile " + arguments +
                " -consumer avformat:out.mkv vcodec=ffv1 pix_fmt=bgra mlt_image_format=rgba an=1 " + consumer +
                " 2>melt.log");
        Run("ffmpeg -nostdin -v error -y -i out.mkv -f rawvideo -pix_fmt " + m_format + " out.raw");
    }
};

TEST_F(Melt, GivesTheModulesBytes) {
    MakeInput(122, 68, "rgba");
    // One thread, and as many as make frames out of order.
    for (const std::string consumer : {"real_time=-1", "real_time=-4"}) {
        Play("in.mkv -filter frei0r.nifikral_directfadein duration=0.001", consumer);
        ExpectModuleResult("directfadein", {{"duration", "10"}});
        Play("in.mkv -filter frei0r.nifikral_mirrorinvert amount=0.3", consumer);
        ExpectModuleResult("mirrorinvert", {{"mirrorinvert_amount", "300"}});
    }
}

// It then calls one instance from two threads, for the halves of a picture.
TEST_F(Melt, CutsPicturesForItsThreads) {
    MakeInput(64, 48, "bgra");
    Play("in.mkv -filter frei0r.nifikral_colorfilter color=#ff8040 threads=2", "real_time=-2");
    ExpectModuleResult("colorfilter", {{"colorfilter_color", "16744512"}});
}

TEST_F(Melt, Jumps) {
    MakeInput(64, 48, "rgba");
    Play("in.mkv in=8 out=10 in.mkv in=2 out=4 -filter frei0r.nifikral_directfadein duration=0.001");
    const std::size_t size = 64 * 48 * 4;
    Bytes shown(m_input.begin() + 8 * size, m_input.begin() + 11 * size);
    shown.insert(shown.end(), m_input.begin() + 2 * size, m_input.begin() + 5 * size);
    m_input = shown;
    ExpectModuleResult("directfadein", {{"duration", "10"}});
}

class GStreamer : public Programs {
 protected:
    void Filter(const std::string& element) {
        Run("gst-launch-1.0 -q filesrc location=in.raw ! rawvideoparse format=" + m_format +
            " width=" + std::to_string(m_width) + " height=" + std::to_string(m_height) +
            " framerate=25/1 ! frei0r-filter-nifikral-" + element + " ! filesink location=out.raw");
    }
};

TEST_F(GStreamer, GivesTheModulesBytes) {
    MakeInput(121, 67, "rgba");
    // This program sets every parameter, so each default must be what the module does without it.
    Filter("oilpainting");
    ExpectModuleResult("oilpainting", {});
    Filter("directfadein duration=0.001");
    ExpectModuleResult("directfadein", {{"duration", "10"}});
    Filter("reverse mirror=true");
    ExpectModuleResult("reverse", {{"mirror", "1"}});
    MakeInput(121, 67, "bgra");
    Filter("colorfilter color-r=1.0 color-g=0.5019608 color-b=0.2509804");
    ExpectModuleResult("colorfilter", {{"colorfilter_color", "16744512"}});
}

}  // namespace
}  // namespace Nifikral::Frei0r
