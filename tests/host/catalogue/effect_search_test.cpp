#include "host/catalogue/effect_search.h"

#include "tests/host/command.h"

namespace Nifikral {
namespace {

TEST(EffectSearch, FindsEffectsByWhatPeopleCallThem) {
    const std::pair<const char*, const char*> known[] = {{"sepia", "aged_film"},
                                                         {"swirl", "rotate"},
                                                         {"pixelate", "mosaic"},
                                                         {"Old Photo", "aged_film"},
                                                         {"black and white", "gray"},
                                                         {"greyscale", "gray"},
                                                         {"pencil sketch", "stroke"},
                                                         {"blur", "simple_gauss_blur"},
                                                         {"film grain", "addnoise"},
                                                         {"anaglyph", "2D_3D_TransForm"},
                                                         {"flip", "reverse"},
                                                         {"pixelated", "mosaic"},
                                                         {"fade to black", "directfadeout"},
                                                         {"fish-eye", "spherize"},
                                                         {"oil", "oilpainting"},
                                                         {"neon", "edgelight"}};
    for (const auto& [query, effect] : known) EXPECT_TRUE(Mentions(*FindEffect(effect), query)) << query;
    EXPECT_FALSE(Mentions(*FindEffect("gray"), "swirl"));
    EXPECT_FALSE(Mentions(*FindEffect("gray"), "black swirl"));
    EXPECT_FALSE(Mentions("island", "and")) << "words are found from their beginnings";
    EXPECT_EQ(EffectsFor("sepia"), std::vector<std::string>{"aged_film"});
}

using Listing = CommandTest;

TEST_F(Listing, GroupsByCategoryAndFindsWords) {
    const std::string all = Nifikral("list").output;
    EXPECT_LT(all.find("Colour\n  gray "), all.find("  aged_film "));
    EXPECT_LT(all.find("  aged_film "), all.find("\n\nFades\n"));
    EXPECT_EQ(Nifikral("list twirl").output, "Geometry\n  rotate                    a swirl\n");
    EXPECT_EQ(Nifikral("list --names old photo").output, "aged_film\nmenu_oldage\n");
    EXPECT_NE(Nifikral("list twirl --json").output.find("\"twirl\""), std::string::npos);
    const Outcome none = Nifikral("list sepja");
    EXPECT_EQ(none.exitCode, 2);
    EXPECT_NE(none.errors.find("did you mean sepia?"), std::string::npos) << none.errors;
}

TEST_F(Listing, SaysHowEffectsStartAndShowsThemAtWork) {
    const std::string rotate = Nifikral("info rotate").output;
    EXPECT_NE(rotate.find("rotate_r (int32, default 0, started at 45%)"), std::string::npos) << rotate;
    EXPECT_NE(rotate.find("Example: nifikral apply IN OUT rotate:x=50%:y=50%:r=45%:scale=4\n"), std::string::npos);
    EXPECT_NE(Nifikral("info erode").output.find("apply IN OUT erode erode erode\n"), std::string::npos);
    EXPECT_NE(Nifikral("info rotate --json").output.find("\"start\": \"45%\""), std::string::npos);
}

}  // namespace
}  // namespace Nifikral
