#include "effects/geometry/block_gather.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <vector>

namespace AVBased {
namespace {

// Sources that lie near and far from each other by turns, so that every kind of block comes up.
class ScatteredSources {
 public:
    ScatteredSources(unsigned width, unsigned height, std::mt19937& random) : m_width(width) {
        constexpr unsigned spreads[] = {1, 5, 12, 40, 1000}, shifts[] = {0, 0, 30};
        for (unsigned y = 0; y < height; ++y)
            for (unsigned x = 0; x < width; ++x) {
                const unsigned cell = y / 8 * 31 + x / 16 * 7, spread = spreads[cell % 5];
                const unsigned shift = x % blockColumns < blockColumns / 2 ? 0 : shifts[cell % 3];
                columns.push_back(std::min(x + shift + unsigned(random()) % spread, width - 1));
                rows.push_back(std::min(y + unsigned(random()) % spread, height - 1));
                white.push_back(random() % 40 == 0);
            }
    }
    std::size_t At(unsigned x, unsigned y) const { return std::size_t(y) * m_width + x; }

    std::vector<std::uint32_t> columns, rows;
    std::vector<std::uint8_t> white;

 private:
    unsigned m_width;
};

TEST(GatherBlocks, BringsEverySampleOfThePartFromItsSource) {
    constexpr unsigned width = 133, height = 391, pitch = width + 6;
    constexpr Box target{3, 128, 5, 390};
    std::mt19937 random(20241103);
    const ScatteredSources sources(width, height, random);
    std::vector<std::uint8_t> picture(pitch * height);
    for (std::uint8_t& sample : picture) sample = std::uint8_t(random());
    std::vector<std::uint8_t> expected = picture;
    for (unsigned y = target.yBegin; y < target.yEnd; ++y)
        for (unsigned x = target.xBegin; x < target.xEnd; ++x) {
            const std::size_t at = sources.At(x, y);
            expected[y * pitch + x] = sources.white[at] ? 235 : picture[sources.rows[at] * pitch + sources.columns[at]];
        }
    for (InstructionSet set : allInstructionSets) {
        if (!IsUsable(set)) continue;
        BlockPlanner planner(target, width, height, set);
        for (unsigned y = target.yBegin; y < target.yEnd; ++y) {
            const std::size_t at = sources.At(target.xBegin, y);
            const BlockPlanner::Row row = planner.Next();
            std::copy_n(&sources.columns[at], target.Width(), row.columns);
            std::copy_n(&sources.rows[at], target.Width(), row.rows);
            std::copy_n(&sources.white[at], target.Width(), row.white);
        }
        const BlockPlan plan = planner.Finish();
        std::set<SampleBlock::Kind> kinds;
        for (std::size_t i = 0; i < plan.spans.size() * plan.bandBlocks; ++i) kinds.insert(plan.blocks[i].kind);
        EXPECT_EQ(kinds.size(), set == InstructionSet::Avx2 ? 4u : 2u);
        std::vector<std::uint8_t> actual = picture;
        GatherBlocks(plan, {actual.data(), width, pitch, height}, 235, set);
        EXPECT_TRUE(actual == expected) << "instruction set " << int(set);
    }
}

}  // namespace
}  // namespace AVBased
