#include "tests/host/command.h"

namespace Nifikral {
namespace {

class NumberedInput : public CommandTest {
 protected:
    // A grey picture whose value is its number.
    void Make(int number, const std::string& name) const {
        std::ofstream(folder / name, std::ios::binary) << "P5 16 16 255\n" << std::string(16 * 16, char(number));
    }
    // The values of the pictures that a run makes; those of a gray effect stay as they are.
    std::vector<int> Values(const std::string& arguments) const {
        const Outcome outcome = Nifikral("apply " + arguments + " --encoder rawvideo out.nut gray -y");
        EXPECT_EQ(outcome.exitCode, 0) << outcome.errors;
        EXPECT_EQ(outcome.errors, "");
        const std::string bytes = RawPictures("out.nut", "gray");
        std::vector<int> values;
        for (std::size_t at = 0; at < bytes.size(); at += 16 * 16) values.push_back(bytes[at]);
        return values;
    }
};

TEST_F(NumberedInput, WithAGapIsRefusedUnlessTheGapHasAMeaning) {
    for (const int number : {7, 8, 12, 13})
        Make(number, "in_00" + std::to_string(number / 10) + std::to_string(number % 10) + ".pgm");
    Make(99, "in_9.pgm");
    Make(99, "in_0010.pgm.bak");
    const Outcome refused = Nifikral("apply in_%04d.pgm out.nut gray");
    EXPECT_EQ(refused.exitCode, 3);
    for (const char* const part :
         {"in_%04d.pgm: numbers 9 to 11 are missing", "in_0012.pgm", "--gaps skip, repeat or stop"})
        EXPECT_NE(refused.errors.find(part), std::string::npos) << refused.errors;
    EXPECT_FALSE(std::filesystem::exists(folder / "out.nut"));
    EXPECT_EQ(Values("in_%04d.pgm --gaps skip"), (std::vector<int>{7, 8, 12, 13}));
    EXPECT_EQ(Values("in_%04d.pgm --gaps repeat"), (std::vector<int>{7, 8, 8, 8, 8, 12, 13}));
    EXPECT_EQ(Values("in_%04d.pgm --gaps stop"), (std::vector<int>{7, 8}));
    EXPECT_EQ(Values("in_%04d.pgm --frames 0-1"), (std::vector<int>{7, 8})) << "a gap after what is asked for";
    EXPECT_EQ(Values("in_%04d.pgm --gaps repeat --frames 3-5 --threads 4"), (std::vector<int>{8, 8, 12}));
    EXPECT_EQ(Nifikral("apply in_%04d.pgm out.nut gray -y --gaps fill").exitCode, 2);
    EXPECT_EQ(Nifikral("apply no_%04d.pgm out.nut gray -y").exitCode, 3);
}

TEST_F(NumberedInput, ComesInTheOrderOfItsNumbersAndNamesTheFileThatIsDamaged) {
    std::vector<int> expected;
    for (int number = 8; number < 24; ++number) {
        Make(number, "p%" + std::to_string(number) + ".pgm");
        expected.push_back(number);
    }
    EXPECT_EQ(Values("p%%%d.pgm"), expected);
    EXPECT_EQ(Values("p%%%d.pgm --threads 4 --frames 2-"), std::vector<int>(expected.begin() + 2, expected.end()));
    std::filesystem::resize_file(folder / "p%19.pgm", 100);
    std::ofstream(folder / "p%21.pgm");
    for (const std::string threads : {"1", "4"}) {
        const Outcome outcome = Nifikral("apply p%%%d.pgm out.nut gray -y --threads " + threads);
        EXPECT_EQ(outcome.exitCode, 3);
        EXPECT_NE(outcome.errors.find("p%19.pgm is damaged"), std::string::npos) << outcome.errors;
    }
}

}  // namespace
}  // namespace Nifikral
