#include <set>

#include "host/catalogue/catalogue.h"
#include "tests/bridges/gstreamer/element_pair.h"

namespace Nifikral::Gst::Testing {
namespace {

using AVBased::Testing::EffectOwner;
using AVBased::Testing::MakeEffect;

// Values at which small pictures show something, inside the range that the element shows.
std::string RandomText(GParamSpec* spec, std::mt19937& random) {
    const auto between = [&](double low, double high) {
        low = std::max(low, -12.0);
        return low + double(random() % 1000) / 1000 * (std::min(high, low + 24) - low);
    };
    if (G_IS_PARAM_SPEC_BOOLEAN(spec)) return std::to_string(random() % 2);
    if (G_IS_PARAM_SPEC_ENUM(spec)) return std::to_string(random() % G_PARAM_SPEC_ENUM(spec)->enum_class->n_values);
    if (G_IS_PARAM_SPEC_UINT(spec)) return std::to_string(random() % (G_PARAM_SPEC_UINT(spec)->maximum + 1));
    if (G_IS_PARAM_SPEC_DOUBLE(spec))
        return std::to_string(between(G_PARAM_SPEC_DOUBLE(spec)->minimum, G_PARAM_SPEC_DOUBLE(spec)->maximum));
    return std::to_string(int(between(G_PARAM_SPEC_INT(spec)->minimum, G_PARAM_SPEC_INT(spec)->maximum)));
}

std::vector<std::string> FrameEffects() {
    std::vector<std::string> effects;
    for (const EffectInfo& effect : Catalogue())
        if (!(effect.traits & generator)) effects.emplace_back(effect.name);
    return effects;
}
class Element : public testing::TestWithParam<std::string> {
 protected:
    bool Has(EffectTraits trait) const { return (FindEffect(GetParam())->traits & trait) != 0; }
    bool Takes(const Format& format) const { return format.HasAlpha() || !Has(changesAlpha); }

    void SetAtRandom(Pair& pair) {
        for (const std::string& property : ModuleProperties(*pair.effect))
            pair.Set(property, RandomText(FindSpec(pair.element, PropertyName(GetParam(), property)), random));
    }

    std::mt19937 random{11};
};
INSTANTIATE_TEST_SUITE_P(GStreamer, Element, testing::ValuesIn(FrameEffects()),
                         [](const auto& effect) { return "Of_" + effect.param; });

TEST_P(Element, GivesTheModulesBytes) {
    int changes = 0;
    for (const Format& format : formats) {
        if (!Takes(format)) continue;
        for (const auto& [width, height] : {std::pair(37u, 23u), std::pair(64u, 32u), std::pair(1u, 1u)})
            for (const unsigned padding : {0u, 1u, 40u}) {
                Pair pair(GetParam());
                SetAtRandom(pair);
                Picture picture(
                    format, width, height,
                    padding ? PaddedLayout(format, width, height, padding) : OwnLayout(format, width, height));
                pair.element.Begin(picture);
                for (const int position : {4, 5, 30}) {
                    picture.frame.Randomise(random);
                    changes += pair.Agree(picture, position);
                }
            }
    }
    EXPECT_GT(changes, 0);
}

// As a cropped picture lies in the whole one: its last row ends where the memory does.
TEST_P(Element, KeepsToAPictureThatSharesItsRowsWithAnother) {
    const unsigned width = 32, height = 12;
    Layout cropped{{4 * 5}, {4 * 40}, 4 * (5 + 40 * (height - 1) + width)};
    Layout sideBySide{{0, width * height, width * height + width / 2}, {width, width, width}, width * height * 3 / 2};
    for (const auto& [format, layout] : {std::pair(bgra, cropped), std::pair(i420, sideBySide)}) {
        if (!Takes(format)) continue;
        Pair pair(GetParam());
        SetAtRandom(pair);
        Picture picture(format, width, height, layout, true);
        pair.element.Begin(picture);
        picture.frame.Randomise(random);
        pair.Agree(picture, 10);
    }
}

TEST_P(Element, HasTheModulesProperties) {
    const ElementHarness element(ElementName(GetParam()));
    const EffectOwner effect = MakeEffect(GetParam().c_str());
    std::set<std::string> names;
    for (const std::string& property : ModuleProperties(*effect)) {
        const std::string name = PropertyName(GetParam(), property);
        EXPECT_TRUE(names.insert(name).second) << property;
        GParamSpec* const spec = FindSpec(element, name);
        ASSERT_TRUE(spec) << property;
        // Not one that all elements have.
        EXPECT_EQ(spec->owner_type, G_OBJECT_TYPE(element.Object())) << property;
        EXPECT_TRUE(spec->flags & GST_PARAM_CONTROLLABLE) << property;
    }
    EXPECT_EQ(FindSpec(element, "duration") != nullptr, Has(variesWithTime));
}

// What a property shows until it is set is what the effect works with.
TEST_P(Element, ShowsTrueDefaults) {
    // No values of its properties make what tilereflect works with at first.
    if (GetParam() == "tilereflect") return;
    Pair asMade(GetParam());
    for (const std::string& property : ModuleProperties(*asMade.effect)) {
        GValue value = G_VALUE_INIT;
        g_object_get_property(asMade.element.Object(), PropertyName(GetParam(), property).c_str(), &value);
        char* const text = gst_value_serialize(&value);
        asMade.element.Set(PropertyName(GetParam(), property), text);
        g_free(text);
        g_value_unset(&value);
    }
    Picture picture(bgra, 300, 260, OwnLayout(bgra, 300, 260));
    picture.frame.Randomise(random);
    asMade.element.Begin(picture);
    asMade.Agree(picture, 9);
}

TEST(GStreamerElements, HaveNamesAndPropertiesAsGStreamerWritesThem) {
    const ElementHarness stereo("nifikral-2d-3d-transform"), turn("nifikral-rotate90x"), fade("nifikral-directfadein"),
        magnifier("nifikral-magnifier"), wall("nifikral-videowall"), reverse("nifikral-reverse"),
        glass("nifikral-colorfilter");
    EXPECT_TRUE(FindSpec(turn, "turns"));
    EXPECT_TRUE(FindSpec(fade, "fade-max"));
    EXPECT_TRUE(FindSpec(wall, "hori-tiles"));
    const auto* const scale = G_PARAM_SPEC_DOUBLE(FindSpec(magnifier, "scale"));
    EXPECT_EQ(scale->minimum, 0);
    EXPECT_EQ(scale->maximum, 16);
    EXPECT_TRUE(G_IS_PARAM_SPEC_BOOLEAN(FindSpec(reverse, "mirror")));
    EXPECT_EQ(G_PARAM_SPEC_UINT(FindSpec(glass, "color"))->maximum, 0xFFFFFFu);
    const auto* const output = G_PARAM_SPEC_ENUM(FindSpec(stereo, "output"));
    EXPECT_EQ(g_enum_get_value_by_nick(output->enum_class, "side-by-side")->value, 1);
}

TEST(GStreamerElements, ThatShowInTheAlphaChannelTakeNothingWithoutOne) {
    const ElementHarness element("nifikral-fadein");
    GstCaps* const caps = gst_pad_query_caps(GST_PAD_PEER(static_cast<GstHarness*>(element)->srcpad), nullptr);
    for (const Format& format : formats) {
        const Picture picture(format, 4, 4, OwnLayout(format, 4, 4));
        GstCaps* const wanted = gst_caps_from_string(picture.Caps("1/1").c_str());
        EXPECT_EQ(gst_caps_can_intersect(caps, wanted), format.HasAlpha());
        gst_caps_unref(wanted);
    }
    gst_caps_unref(caps);
}

}  // namespace
}  // namespace Nifikral::Gst::Testing
