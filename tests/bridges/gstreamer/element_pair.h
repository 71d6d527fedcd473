#pragma once

#include <string>
#include <vector>

#include "TarvoBased/IStrings.h"
#include "bridges/gstreamer/names.h"
#include "tests/bridges/gstreamer/element_harness.h"

namespace Nifikral::Gst::Testing {

/// The names of an effect's properties, but the duration.
inline std::vector<std::string> ModuleProperties(AVBased::IVideoProc& effect) {
    std::vector<std::string> properties;
    TarvoBased::IStrings* const names = effect.GetPropertyNames();
    for (int i = 0; i < names->GetCount(); ++i)
        if (const std::string name = names->GetString(i)->GetStr(); name != "duration") properties.push_back(name);
    names->Free();
    return properties;
}

inline GParamSpec* FindSpec(const ElementHarness& element, const std::string& name) {
    return g_object_class_find_property(G_OBJECT_GET_CLASS(element.Object()), name.c_str());
}

inline constexpr GstClockTime frameTime = GST_SECOND / 25;

/// An element and the module's own effect beside it, with the same settings.
class Pair {
 public:
    explicit Pair(const std::string& name)
        : element(ElementName(name)), effect(AVBased::Testing::MakeEffect(name.c_str())), m_name(name) {
        if (FindSpec(element, "duration")) Set("duration", "50");
    }

    void Set(const std::string& property, const std::string& text) {
        element.Set(PropertyName(m_name, property), text);
        ASSERT_TRUE(effect->SetProperty(property.c_str(), text.c_str()));
    }
    /// Runs both on a picture; true when it changed.
    bool Agree(Picture& picture, int position) { return Agree(picture, position, GstClockTime(position) * frameTime); }
    bool Agree(Picture& picture, int position, GstClockTime time) {
        const AVBased::Testing::TestFrame original = picture.frame;
        const BufferPtr made = element.Process(picture.Buffer(time));
        AVBased::Testing::Apply(*effect, picture.frame, position);
        EXPECT_TRUE(made && BytesOf(*made) == BytesOf(*picture.Buffer())) << m_name << " in " << picture.Caps("25/1");
        return !(original == picture.frame);
    }

    ElementHarness element;
    AVBased::Testing::EffectOwner effect;

 private:
    std::string m_name;
};

}  // namespace Nifikral::Gst::Testing
