#include "effects/geometry/pixel_gather.h"

#include <gtest/gtest.h>

#include <random>

namespace AVBased {
namespace {

TEST(GatherPixels, BringsEveryPixelOfThePartFromItsSource) {
    constexpr unsigned width = 533, height = 391;
    constexpr Rgba32 white{255, 255, 255, 255};
    std::mt19937 random(20241103);
    std::vector<Rgba32> picture(std::size_t(width) * height);
    for (Rgba32& pixel : picture) StoreWord(&pixel, std::uint32_t(random()));
    // Lines of 64 bytes or not, whole runs or not.
    for (const Box& target : {Box{0, 528, 0, 391}, Box{3, 128, 5, 390}, Box{16, 21, 7, 8}}) {
        // Sources near and far, some of a row's ends at home.
        std::vector<std::uint32_t> from(picture.size());
        for (std::size_t i = 0; i < from.size(); ++i) {
            const std::size_t run = i / 29 % 4;
            const std::size_t source = run == 0 ? i : run == 1 ? random() % from.size() : i + random() % 9000;
            from[i] = std::uint32_t(random() % 50 ? std::min(source, from.size() - 1) : from.size());
        }
        std::vector<Rgba32> expected = picture;
        for (unsigned y = target.yBegin; y < target.yEnd; ++y)
            for (std::size_t at = y * width + target.xBegin; at < y * width + target.xEnd; ++at)
                expected[at] = from[at] < picture.size() ? picture[from[at]] : white;
        for (const InstructionSet set : allInstructionSets) {
            if (!IsUsable(set)) continue;
            PixelPlanner planner(target, width, height, set);
            for (unsigned y = target.yBegin; y < target.yEnd; ++y) {
                std::copy_n(&from[y * width + target.xBegin], target.Width(), planner.Row());
                planner.AddRow();
            }
            const PixelPlan plan = planner.Finish({0, width, 0, height});
            alignas(64) static Rgba32 actual[std::size_t(width) * height];
            std::copy(picture.begin(), picture.end(), actual);
            GatherPixels(plan, {reinterpret_cast<unsigned char*>(actual), width, width * 4, height}, white, set);
            EXPECT_TRUE(std::equal(expected.begin(), expected.end(), actual)) << "instruction set " << int(set);
        }
    }
}

}  // namespace
}  // namespace AVBased
