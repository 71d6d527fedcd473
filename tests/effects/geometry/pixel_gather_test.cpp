#include "effects/geometry/pixel_gather.h"

#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "effects/geometry/sorted_gather.h"

namespace AVBased {
namespace {

constexpr unsigned width = 533, height = 391;
constexpr std::uint32_t whitePosition = width * height;

std::vector<Rgba32> RandomPixels(std::size_t count, std::mt19937& random) {
    std::vector<Rgba32> pixels(count);
    for (Rgba32& pixel : pixels) StoreWord(&pixel, std::uint32_t(random()));
    return pixels;
}

PixelPlan PlanOf(const std::vector<std::uint32_t>& from, const Box& target, InstructionSet set, PixelPlan spent = {}) {
    PixelPlanner planner(target, width, height, set, std::move(spent));
    for (unsigned y = target.yBegin; y < target.yEnd; ++y) {
        std::copy_n(&from[y * width + target.xBegin], target.Width(), planner.Row());
        planner.AddRow();
    }
    return planner.Finish({0, width, 0, height});
}

// Calls gather(picture, set) for a picture whose rows are `pitch` pixels apart and begin lines or do not, and expects
// every pixel of the target to come from its position, and the others to stay.
template <class Gather>
void ExpectGathered(const std::vector<std::uint32_t>& from, const Box& target, unsigned pitch, Gather gather) {
    std::mt19937 random(20241103);
    const std::vector<Rgba32> before = RandomPixels(std::size_t(pitch) * height, random);
    std::vector<Rgba32> expected = before;
    for (unsigned y = target.yBegin; y < target.yEnd; ++y)
        for (unsigned x = target.xBegin; x < target.xEnd; ++x) {
            const std::uint32_t at = from[y * width + x];
            expected[y * pitch + x] =
                at == whitePosition ? Rgba32{255, 255, 255, 255} : before[at / width * pitch + at % width];
        }
    for (const InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        std::vector<Rgba32> actual = before;
        gather(PackedView{reinterpret_cast<unsigned char*>(actual.data()), width, unsigned(pitch * sizeof(Rgba32)),
                          height},
               set);
        EXPECT_TRUE(actual == expected) << "instruction set " << int(set) << ", pitch " << pitch;
    }
}

constexpr Box targets[] = {{3, 128, 5, 390}, {0, 528, 0, 391}, {16, 21, 7, 8}};

TEST(GatherPixels, BringsEveryPixelOfThePartFromItsSource) {
    std::mt19937 random(20241103);
    // Sources at home, far away and near by turns, and some white.
    std::vector<std::uint32_t> from(whitePosition);
    for (std::size_t i = 0; i < from.size(); ++i) {
        const std::size_t run = i / 29 % 4;
        const std::size_t source = run == 0 ? i : run == 1 ? random() % from.size() : i + random() % 9000;
        from[i] = random() % 50 ? std::uint32_t(std::min(source, from.size() - 1)) : whitePosition;
    }
    PixelPlan plan;
    for (const Box& target : targets)
        for (const unsigned pitch : {width, 544u})
            ExpectGathered(from, target, pitch, [&](const PackedView& picture, InstructionSet set) {
                plan = PlanOf(from, target, set, std::move(plan));
                GatherPixels(plan, picture, {255, 255, 255, 255}, set);
            });
}

TEST(GatherSorted, BringsEveryPixelFromItsSourceWhereTheseAreScattered) {
    std::mt19937 random(20241103);
    std::vector<std::uint32_t> from(whitePosition);
    for (std::uint32_t& position : from) position = std::uint32_t(random() % from.size());
    for (const Box& target : targets)
        for (const unsigned pitch : {width, 544u})
            ExpectGathered(from, target, pitch, [&](const PackedView& picture, InstructionSet set) {
                const auto sorted = Sorted(PlanOf(from, target, set));
                ASSERT_TRUE(sorted);
                GatherSorted(*sorted, picture, set);
            });
    from[width * 100 + 50] = whitePosition;
    EXPECT_FALSE(Sorted(PlanOf(from, targets[1], InstructionSet::Baseline)));
    for (std::size_t i = 0; i < from.size(); ++i) from[i] = std::uint32_t(i);
    EXPECT_FALSE(Sorted(PlanOf(from, targets[1], InstructionSet::Baseline)));
}

}  // namespace
}  // namespace AVBased
