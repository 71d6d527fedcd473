#include "host/catalogue/catalogue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <set>
#include <string>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "host/catalogue/effect_module.h"

namespace Nifikral {
namespace {

struct FreeFrame {
    void operator()(AVBased::IRawVideoFrame* frame) const { frame->Free(); }
};
using FramePtr = std::unique_ptr<AVBased::IRawVideoFrame, FreeFrame>;

class CatalogueTest : public ::testing::Test {
 protected:
    // Calls use(effect's row, parameter's row, the module's description) for every parameter of every effect.
    template <class Use>
    void ForEachParameter(Use use) const {
        for (const EffectInfo& effect : Catalogue())
            for (const PropertyInfo& property : Properties(*module.Create(effect.name))) {
                SCOPED_TRACE(std::string(effect.name) + " " + property.name);
                const ParameterInfo* const row = FindParameter(effect.name, property.name);
                ASSERT_NE(row, nullptr);
                use(effect, *row, property);
            }
    }

    // What a fresh effect makes of the same noise, every byte of it; `change` gets the effect first.
    template <class Change>
    std::string Picture(const EffectInfo& info, unsigned format, unsigned width, unsigned height, Change change) const {
        const EffectPtr effect = module.Create(info.name);
        effect->SetProperty("duration", "10");
        change(*effect);
        const FramePtr frame(new AVBased::CRawVideoFrame(false, format, width, height, true));
        std::mt19937 random(5);
        std::string bytes;
        const auto forEachRow = [&](auto use) {
            for (unsigned p = 0; p < frame->GetBufferCount(); ++p) {
                unsigned rowBytes = 0, pitch = 0, rows = 0;
                unsigned char* const data = frame->GetBuffer(p, &rowBytes, &pitch, &rows);
                for (unsigned y = 0; y < rows; ++y) use(data + std::size_t(y) * pitch, rowBytes);
            }
        };
        forEachRow([&](unsigned char* row, unsigned count) {
            std::generate_n(row, count, [&] { return static_cast<unsigned char>(random()); });
        });
        AVBased::ImagePostion record{0, 0, width, height};
        effect->ProcFrameInPlace(&record, 3, frame.get());
        TakeModuleError();
        forEachRow([&](unsigned char* row, unsigned count) { bytes.append(reinterpret_cast<char*>(row), count); });
        return bytes;
    }

    static std::string Text(double value) {
        return value == std::trunc(value) && std::abs(value) < 1e15 ? std::to_string((long long)value)
                                                                    : std::to_string(value);
    }

    EffectModule module{NIFIKRAL_MODULE_FILE};
};

TEST_F(CatalogueTest, CoversTheModulesPropertiesAndNoOthers) {
    EXPECT_EQ(Catalogue().size(), 63u);
    for (const EffectInfo& info : Catalogue()) {
        const EffectPtr effect = module.Create(info.name);
        ASSERT_TRUE(effect) << info.name;
        std::multiset<std::string> present, known = {"duration"};
        for (const PropertyInfo& property : Properties(*effect)) present.insert(property.name);
        for (const ParameterInfo& row : info.parameters) known.insert(row.name);
        EXPECT_EQ(present, known) << info.name;
    }
}

TEST_F(CatalogueTest, RangesHoldWhatStandsInThem) {
    ForEachParameter([](const EffectInfo&, const ParameterInfo& row, const PropertyInfo& property) {
        if (property.type == PropertyType::Text) return;
        const double start = row.initial.value_or(std::stod(property.defaultText));
        EXPECT_TRUE(row.sensible.Contains(start)) << start;
        EXPECT_TRUE(!std::isfinite(row.sensible.low) || row.bearable.Contains(row.sensible.low));
        EXPECT_TRUE(!std::isfinite(row.sensible.high) || row.bearable.Contains(row.sensible.high));
        for (const Choice& choice : row.choices) EXPECT_TRUE(row.sensible.Contains(choice.value)) << choice.value;
        EXPECT_EQ(std::isfinite(row.sensible.low + row.sensible.high), row.kind != Kind::Seed);
        EXPECT_GT(row.step, 0);
    });
}

TEST_F(CatalogueTest, AFormHasEachGroupOnce) {
    for (const EffectInfo& info : Catalogue()) {
        std::vector<std::string> groups;
        for (const ParameterInfo& row : info.parameters)
            if (groups.empty() || groups.back() != row.group) groups.emplace_back(row.group);
        EXPECT_EQ(std::set<std::string>(groups.begin(), groups.end()).size(), groups.size()) << info.name;
    }
}

TEST_F(CatalogueTest, KnowsWhatAnUntouchedEffectWorksWith) {
    ForEachParameter([&](const EffectInfo& effect, const ParameterInfo& row, const PropertyInfo& property) {
        // No angle and no size of the tiles gives what the untouched effect shows.
        const bool hasNone = property.name == "tilereflect_angle" || property.name == "tilereflect_size";
        if ((effect.traits & generator) || property.name == "duration" || hasNone) return;
        for (const unsigned format : {30u, 0u}) {
            const auto set = [&](AVBased::IVideoProc& made) {
                const std::string text = row.initial ? Text(*row.initial) : property.defaultText;
                EXPECT_TRUE(made.SetProperty(property.name.c_str(), text.c_str()));
            };
            EXPECT_TRUE(Picture(effect, format, 322, 310, set) == Picture(effect, format, 322, 310, [](auto&) {}))
                << "format " << format;
        }
    });
}

TEST_F(CatalogueTest, KnowsWhichEffectsDoNothingUntilOneIsSet) {
    for (const EffectInfo& effect : Catalogue()) {
        if (effect.traits & (generator | variesWithTime)) continue;
        bool changes = false;
        for (const unsigned format : {30u, 35u})
            changes = changes || Picture(effect, format, 322, 310, [](auto&) {}) !=
                                     Picture(*FindEffect("reverse"), format, 322, 310, [](auto&) {});
        EXPECT_EQ(!changes, (effect.traits & idleAtDefaults) != 0) << effect.name;
    }
}

TEST_F(CatalogueTest, ShownSettingsNameParameters) {
    for (const EffectInfo& effect : Catalogue()) {
        std::size_t found = 0;
        for (const ParameterInfo& row : effect.parameters) found += ShownValue(effect, row.name).empty() ? 0 : 1;
        const std::string shown = effect.shown;
        EXPECT_EQ(found, std::size_t(std::count(shown.begin(), shown.end(), '='))) << effect.name;
    }
}

TEST_F(CatalogueTest, WordsAreThoseThatTheModuleTakes) {
    ForEachParameter([&](const EffectInfo& effect, const ParameterInfo& row, const PropertyInfo& property) {
        EXPECT_EQ(row.kind == Kind::Word, !row.words.empty());
        if (row.words.empty()) return;
        const EffectPtr made = module.Create(effect.name);
        std::string all;
        for (const char* const word : row.words) {
            EXPECT_TRUE(made->SetProperty(property.name.c_str(), word)) << word;
            all += (all.empty() ? "" : row.separator) + std::string(word);
        }
        EXPECT_EQ(made->SetProperty(property.name.c_str(), all.c_str()), *row.separator != '\0') << all;
        TakeModuleError();
    });
}

// With an unlimited pass count among them, this would not end.
TEST_F(CatalogueTest, EffectsBearWhatItSaysTheyBear) {
    ForEachParameter([&](const EffectInfo& effect, const ParameterInfo& row, const PropertyInfo& property) {
        if (property.type == PropertyType::Text) return;
        const bool isReal = property.type == PropertyType::Real;
        const double most = isReal ? 1e9 : std::numeric_limits<std::int32_t>::max(), least = isReal ? -1e9 : -most - 1;
        for (const double value : {std::max(row.bearable.low, least), std::min(row.bearable.high, most)})
            for (const unsigned format : {30u, 0u})
                Picture(effect, format, 18, 14, [&](AVBased::IVideoProc& made) {
                    EXPECT_TRUE(made.SetProperty(property.name.c_str(), Text(value).c_str())) << value;
                });
    });
}

}  // namespace
}  // namespace Nifikral
