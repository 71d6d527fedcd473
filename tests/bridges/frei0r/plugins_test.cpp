#include <gtest/gtest.h>

#include <unistd.h>

#include <atomic>
#include <barrier>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <set>
#include <thread>

#include "host/catalogue/catalogue.h"
#include "tests/bridges/frei0r/in_process.h"
#include "tests/bridges/frei0r/plugin_object.h"

namespace Nifikral::Frei0r {
namespace {

std::vector<std::string> FrameEffects() {
    std::vector<std::string> names;
    for (const EffectInfo& info : Catalogue())
        if (!(info.traits & generator)) names.emplace_back(info.name);
    return names;
}

void ExchangeBlueAndRed(Bytes& pictures) {
    for (std::size_t i = 0; i < pictures.size(); i += 4) std::swap(pictures[i], pictures[i + 2]);
}

class EveryFilter : public testing::TestWithParam<std::string> {
 protected:
    PluginObject m_object{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(All, EveryFilter, testing::ValuesIn(FrameEffects()),
                         [](const auto& test) { return test.param; });

TEST_P(EveryFilter, DescribesItself) {
    const PluginInfo info = m_object.Info();
    EXPECT_EQ(info.name, "nifikral " + GetParam());
    EXPECT_EQ(info.type, filterPlugin);
    EXPECT_STREQ(info.explanation, FindEffect(GetParam())->summary);
    std::set<std::string> names;
    for (const ParameterInfo& parameter : m_object.Parameters()) {
        names.insert(parameter.name);
        EXPECT_GT(std::string(parameter.explanation).size(), 5u) << parameter.name;
    }
    EXPECT_EQ(names.size(), std::size_t(info.parameterCount)) << "a name stands twice";
}

TEST_P(EveryFilter, DoesWhatTheModuleDoesAtAnySize) {
    Settings settings;
    if (FindEffect(GetParam())->traits & variesWithTime) settings = {{"duration", "50"}};
    for (const auto& [width, height] : {std::pair(1u, 1u), {7u, 5u}, {64u, 48u}, {33u, 1u}}) {
        const Bytes input = RandomBytes(std::size_t(width) * height * 4);
        PluginInstance instance(m_object, width, height);
        // Twice: the second frame may replay what the first one prepared.
        for (const int frame : {3, 4}) {
            const Bytes expected = InProcess(GetParam(), settings, input, width, height, frame);
            EXPECT_EQ(instance.Picture(frame / 25.0, input), expected) << width << "x" << height;
            Bytes inPlace = input;
            instance.Update(frame / 25.0, inPlace.data(), inPlace.data());
            EXPECT_EQ(inPlace, expected) << "in place, " << width << "x" << height;
        }
    }
}

TEST_P(EveryFilter, KeepsEveryValueAndTakesAnyNumber) {
    constexpr unsigned width = 31, height = 17;
    const Bytes input = RandomBytes(width * height * 4);
    PluginInstance instance(m_object, width, height);
    for (const ParameterInfo& parameter : m_object.Parameters()) {
        if (parameter.type == colourParameter) {
            instance.Set(parameter.name, Colour{1, 0, 0.2F});
            EXPECT_EQ(instance.Get<Colour>(parameter.name).blue, 0.2F);
            instance.Set(parameter.name, Colour{NAN, -5, 1e30F});
            EXPECT_EQ(instance.Get<Colour>(parameter.name).blue, 1);
            continue;
        }
        const double usual = instance.Get(parameter.name);
        EXPECT_TRUE(usual >= 0 && usual <= 1) << parameter.name << " " << usual;
        instance.Set(parameter.name, 1.0);
        EXPECT_EQ(instance.Get(parameter.name), 1);
        for (const double odd : {double(-INFINITY), -1e300, double(NAN), 1e300, double(INFINITY)})
            instance.Set(parameter.name, odd);
        EXPECT_EQ(instance.Get(parameter.name), 1) << parameter.name;
        instance.Picture(0.2, input);
        instance.Set(parameter.name, 0.0);
        instance.Picture(0.24, input);
    }
}

// Random settings, so that the claim holds for more than the defaults.
TEST_P(EveryFilter, ClaimsEitherOrderOfColoursOnlyWhenItIsSo) {
    constexpr unsigned width = 61, height = 47;
    std::mt19937 random(7);
    bool alike = true;
    for (int round = 0; round < 12; ++round) {
        PluginInstance instance(m_object, width, height);
        for (const ParameterInfo& parameter : m_object.Parameters()) {
            // Passes cost time and change nothing here.
            if (std::string(parameter.name).find("count") != std::string::npos) {
                instance.Set(parameter.name, 0.02);
            } else if (parameter.type == colourParameter) {
                instance.Set(parameter.name, Colour{0.9F, 0.3F, 0.1F});
            } else {
                instance.Set(parameter.name, double(random() % 21) / 20);
            }
        }
        Bytes picture = RandomBytes(width * height * 4, unsigned(round)), exchanged = picture;
        ExchangeBlueAndRed(exchanged);
        exchanged = instance.Picture(-1, exchanged);
        ExchangeBlueAndRed(exchanged);
        // The same call of an instance of its own: calls without a time are counted.
        PluginInstance twin(m_object, width, height);
        for (const ParameterInfo& parameter : m_object.Parameters()) {
            if (parameter.type == colourParameter)
                twin.Set(parameter.name, instance.Get<Colour>(parameter.name));
            else
                twin.Set(parameter.name, instance.Get(parameter.name));
        }
        alike = alike && twin.Picture(-1, picture) == exchanged;
    }
    EXPECT_EQ(m_object.Info().colourModel, alike ? modelRgba : modelBgra);
}

TEST(Filter, MapsZeroToOneOntoTheTrueRange) {
    constexpr unsigned width = 200, height = 100;
    const Bytes input = RandomBytes(width * height * 4);
    const PluginObject object("spherize");
    PluginInstance instance(object, width, height);
    instance.Set("x", 0.5);
    instance.Set("y", 0.5);
    instance.Set("r", 0.2);
    instance.Set("scale", 0.75);
    EXPECT_EQ(instance.Picture(0, input),
              InProcess("spherize",
                        {{"spherize_x", "100"}, {"spherize_y", "50"}, {"spherize_r", "40"}, {"spherize_scale", "2"}},
                        input, width, height));
    EXPECT_STREQ(object.Parameters()[1].explanation, "row of the lens's centre; 0 to 1 is 0 to the picture's height");
    EXPECT_STREQ(object.Parameters()[3].explanation, "strength: above 0 bulges, below 0 pinches; 0 to 1 is -4 to 4");
}

TEST(Filter, TakesColoursSwitchesAndChoices) {
    constexpr unsigned width = 20, height = 10;
    const Bytes input = RandomBytes(width * height * 4);
    const PluginObject filter("colorfilter"), reverse("reverse"), stereo("2D_3D_TransForm");
    PluginInstance coloured(filter, width, height);
    coloured.Set("color", Colour{0xFF / 255.0F, 0x80 / 255.0F, 0x40 / 255.0F});
    EXPECT_EQ(coloured.Picture(0, input),
              InProcess("colorfilter", {{"colorfilter_color", std::to_string(0xFF8040)}}, input, width, height));

    PluginInstance flipped(reverse, width, height);
    flipped.Set("mirror", 1.0);
    // As a host passes that keeps switches as whole numbers: the bits of 1, read as a double.
    flipped.Set("vertical", 4.9406564584124654e-324);
    EXPECT_EQ(flipped.Picture(0, input),
              InProcess("reverse", {{"mirror", "1"}, {"vertical", "1"}}, input, width, height));

    PluginInstance pair(stereo, width, height);
    pair.Set("output", 0.5);
    EXPECT_EQ(pair.Picture(0, input),
              InProcess("2D_3D_TransForm", {{"2D_3D_TransForm_output", "1"}}, input, width, height));
}

TEST(Filter, BeginsWhereItIsSet) {
    constexpr unsigned width = 8, height = 8;
    const Bytes input = RandomBytes(width * height * 4);
    const PluginObject object("directfadeout");
    PluginInstance instance(object, width, height);
    instance.Set("duration", 0.001);  // 10 frames
    instance.Set("begin", 0.0001);    // frame 100
    instance.Set("fps", 0.05);        // 50 a second
    EXPECT_EQ(instance.Picture(1.98, input), input);
    EXPECT_EQ(instance.Picture(2.1, input), InProcess("directfadeout", {{"duration", "10"}}, input, width, height, 5));
}

// A fresh instance each time: its first frame makes the table that all later ones read.
TEST(Filter, ServesTwoThreadsAtOnce) {
    constexpr unsigned width = 1200, height = 800;
    const PluginObject object("tilereflect");
    const Bytes inputs[] = {RandomBytes(width * height * 4, 1), RandomBytes(width * height * 4, 2)};
    for (int round = 0; round < 10; ++round) {
        PluginInstance instance(object, width, height);
        std::barrier together(2);
        Bytes outputs[2];
        const auto work = [&](std::size_t i) {
            together.arrive_and_wait();
            outputs[i] = instance.Picture(0, inputs[i]);
        };
        std::thread other(work, 1);
        work(0);
        other.join();
        for (const std::size_t i : {0u, 1u})
            ASSERT_EQ(outputs[i], InProcess("tilereflect", {}, inputs[i], width, height)) << "round " << round;
    }
}

// Programs end the preview of one effect while another is being encoded.
TEST(Filter, EndsWhileAnotherWorks) {
    constexpr unsigned width = 160, height = 90;
    const PluginObject object("tilereflect"), other("rotate");
    const Bytes input = RandomBytes(width * height * 4, 1);
    const Bytes expected = InProcess("tilereflect", {}, input, width, height);
    std::atomic<bool> ends = false;
    std::thread comesAndGoes([&] {
        while (!ends)
            for (const PluginObject* const each : {&object, &other})
                PluginInstance(*each, width, height).Picture(0, input);
    });
    PluginInstance instance(object, width, height);
    for (int i = 0; i < 30; ++i) EXPECT_EQ(instance.Picture(i, input), expected) << "picture " << i;
    ends = true;
    comesAndGoes.join();
}

TEST(Source, IsThereForEveryMenu) {
    for (const EffectInfo& info : Catalogue()) {
        if (!(info.traits & menu)) continue;
        const PluginObject object(info.name);
        EXPECT_EQ(object.Info().name, std::string("nifikral ") + info.name);
        EXPECT_EQ(object.Info().type, sourcePlugin);
        EXPECT_EQ(object.Find("project"), 0);
    }
}

// A white square that goes 2 pixels to the right with each of 10 frames.
class MenuSource : public testing::Test {
 protected:
    static constexpr unsigned width = 32, height = 16;

    MenuSource() {
        std::filesystem::create_directories(m_folder);
        std::ofstream(m_folder / "square.ppm") << "P6 2 2 255\n" << std::string(12, '\xFF');
        std::ofstream(m_project) << R"({"width": 32, "height": 16, "frameRate": 10, "duration": 1,
            "additionSourcePaths": ["square.ppm"], "startPositions": [[0, 0]], "endPositions": [[30, 0]],
            "moveSpeeds": [2], "moveFormulas": [[0, 0]]})";
        m_instance.Set("project", m_project.c_str());
    }
    ~MenuSource() override { std::filesystem::remove_all(m_folder); }

    // The column where the square begins at a time; -1 when there is none.
    int Column(double time) {
        const Bytes picture = m_instance.Picture(time, {});
        for (unsigned x = 0; x < width; ++x)
            if (picture[x * 4] > 200) return int(x);
        return -1;
    }

    const std::filesystem::path m_folder =
        std::filesystem::temp_directory_path() / ("nifikral_menu_" + std::to_string(getpid()));
    const std::string m_project = m_folder / "menu.json";
    PluginObject m_object{"menu_common"};
    PluginInstance m_instance{m_object, width, height};
};

TEST_F(MenuSource, JumpsToAnyTimeAndStaysAtTheEnd) {
    const int first = Column(0);
    EXPECT_GE(first, 0);
    EXPECT_EQ(Column(0.3), first + 6);
    EXPECT_EQ(Column(0.3), first + 6);
    EXPECT_EQ(Column(0.1), first + 2);
    EXPECT_EQ(Column(0.9), first + 18);
    EXPECT_EQ(Column(1.3), first + 18);
}

TEST_F(MenuSource, IsScaledToTheProgramsPicture) {
    PluginInstance twice(m_object, 2 * width, 2 * height);
    twice.Set("project", m_project.c_str());
    const Bytes picture = twice.Picture(0.3, {});
    const auto column = std::size_t(2 * Column(0.3));
    EXPECT_GT(picture[(column + 1) * 4 + 2], 200);
    EXPECT_LT(picture[(column + 8) * 4 + 2], 100) << "the background is dark";
}

TEST_F(MenuSource, ShowsNothingOfAProjectThatIsMissing) {
    EXPECT_EQ(m_instance.Get<const char*>("project"), m_project);
    m_instance.Set("project", "/nowhere/menu.json");
    EXPECT_EQ(m_instance.Picture(0, {}), Bytes(width * height * 4));
    m_instance.Set("project", m_project.c_str());
    EXPECT_GE(Column(0), 0);
}

TEST_F(MenuSource, ShowsNothingOfAProjectWithAPictureThatIsCutShort) {
    const std::string photo = m_folder / "photo.jpg", project = m_folder / "photo.json";
    ASSERT_EQ(std::system(("ffmpeg -v error -f lavfi -i testsrc=size=32x16 -frames:v 1 " + photo).c_str()), 0);
    std::ofstream(project) << R"({"width": 32, "height": 16, "sourcePath": "photo.jpg"})";
    m_instance.Set("project", project.c_str());
    EXPECT_NE(m_instance.Picture(0, {}), Bytes(width * height * 4));
    const auto size = std::filesystem::file_size(photo);
    for (const auto left : {size - 2, size / 2}) {
        std::filesystem::resize_file(photo, left);
        m_instance.Set("project", m_project.c_str());
        m_instance.Set("project", project.c_str());
        EXPECT_EQ(m_instance.Picture(0, {}), Bytes(width * height * 4)) << left << " of " << size << " bytes";
    }
}

}  // namespace
}  // namespace Nifikral::Frei0r
