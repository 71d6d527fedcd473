#include <array>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>
#include <string_view>

#include "avbase/avbase_srcutils/pixel_formats.h"
#include "bridges/common/borrowed_frame.h"
#include "bridges/common/bridged_effect.h"
#include "bridges/frei0r/frame_clock.h"
#include "bridges/frei0r/parameters.h"
#include "bridges/frei0r/plugin.h"
#include "bridges/frei0r/report.h"

namespace Nifikral::Frei0r {
namespace {

constexpr unsigned bytesPerPixel = 4;

// Most effects take blue and red in either order, and are given the one that needs no conversion in most hosts. The
// interface has a model for any order too, but with it hosts pass alpha first as well.
int ModelOf(const EffectInfo* effect) { return effect && (effect->traits & knowsRedFromBlue) ? modelBgra : modelRgba; }

// What hosts see of an effect, in memory that stays.
struct Description {
    std::string name, explanation;
    int colourModel;
    std::vector<Parameter> parameters;
};

// Hosts ask in every frame, from any thread.
const Description& DescriptionOf(const char* effect) {
    static std::mutex mutex;
    static std::map<std::string, Description, std::less<>> known;
    const std::lock_guard lock(mutex);
    if (const auto found = known.find(std::string_view(effect)); found != known.end()) return found->second;
    const EffectInfo* const info = FindEffect(effect);
    Description description{std::string("nifikral ") + effect, {}, ModelOf(info), {}};
    if (info) {
        description.explanation = info->summary;
        description.parameters = ParametersOf(*info);
    }
    return known.emplace(effect, std::move(description)).first->second;
}

std::string Text(double value, PropertyType type) {
    if (type != PropertyType::Real) return std::to_string(std::llround(value));
    std::array<char, 32> digits{};
    return {digits.data(), std::to_chars(digits.data(), digits.data() + digits.size(), value).ptr};
}

constexpr unsigned colourSteps = 255;

Colour ColourOf(long long rgb) {
    const auto share = [rgb](int shift) { return float(rgb >> shift & colourSteps) / float(colourSteps); };
    return {share(16), share(8), share(0)};
}

long long NumberOf(const Colour& colour) {
    long long rgb = 0;
    for (const float share : {colour.red, colour.green, colour.blue})
        rgb = rgb << 8 | std::lround(std::fmin(std::fmax(share, 0.0F), 1.0F) * float(colourSteps));
    return rgb;
}

// Some hosts keep a switch as a whole number in the lower half of the double that they pass, which is then tiny.
bool IsOn(double value) { return value >= 0.5 || std::fpclassify(value) == FP_SUBNORMAL; }

// A parameter of an instance.
struct Knob {
    const Parameter* parameter;
    ValueRange range;
    PropertyType type = PropertyType::Real;
    double value = 0;                  // between 0 and 1; of a colour 0xRRGGBB
    std::optional<double> given = {};  // by the host, of a number

    double TrueValue() const { return FromUnit(value, range); }
};

class FilterInstance final : public Instance {
 public:
    FilterInstance(const EffectModule& module, const char* effect, unsigned width, unsigned height)
        : m_effect(module, effect), m_width(width), m_height(height) {
        for (const Parameter& parameter : DescriptionOf(effect).parameters) AddKnob(parameter);
    }

    void Set(const void* value, int parameter) override {
        const std::lock_guard lock(m_mutex);
        Knob* const knob = Find(parameter);
        if (!knob) return;
        if (knob->parameter->type == numberParameter) knob->given = Read<double>(value);
        Take(*knob, knob->parameter->type == colourParameter ? double(NumberOf(Read<Colour>(value)))
                                                             : Settled(*knob, Read<double>(value)));
    }

    void Get(void* value, int parameter) override {
        const std::lock_guard lock(m_mutex);
        const Knob* const knob = Find(parameter);
        if (!knob) return;
        if (knob->parameter->type == colourParameter)
            Write(ColourOf(std::llround(knob->value)), value);
        else
            Write(GivesTrueValues(*knob) ? knob->TrueValue() : knob->value, value);
    }

    void Update(double time, const void* input, void* output) override {
        const std::lock_guard lock(m_mutex);
        const unsigned pitch = m_width * bytesPerPixel;
        if (input != output) std::memcpy(output, input, std::size_t(pitch) * m_height);
        const int position = Position(time);
        const BorrowedPlane plane{static_cast<unsigned char*>(output), pitch, pitch, m_height};
        BorrowedFrame frame(AVBased::formatRgba32, m_width, m_height, {&plane, 1}, position);
        ReportOnce(m_effect.Process(frame, position));
    }

 private:
    template <class T>
    static T Read(const void* from) {
        T value;
        std::memcpy(&value, from, sizeof value);
        return value;
    }
    template <class T>
    static void Write(const T& value, void* to) {
        std::memcpy(to, &value, sizeof value);
    }

    bool GivesTrueValues(const Knob& knob) const {
        return m_trueValues && knob.parameter->type == numberParameter && !knob.parameter->IsShare();
    }

    double Settled(const Knob& knob, double given) const {
        if (knob.parameter->type == switchParameter) return IsOn(given) ? 1 : 0;
        return ToUnit(given, GivesTrueValues(knob) ? knob.range : ValueRange{0, 1});
    }

    void Take(Knob& knob, double value) {
        if (std::isnan(value) || value == knob.value) return;
        knob.value = value;
        if (*knob.parameter->property) HandOn(knob);
        if (knob.parameter->role != Role::TrueValues) return;
        // Hosts set parameters in any order: numbers that they have given already mean something else now.
        m_trueValues = value != 0;
        for (Knob& other : m_knobs)
            if (other.given) Take(other, Settled(other, *other.given));
    }

    void AddKnob(const Parameter& parameter) {
        Knob knob{&parameter, parameter.RangeOn(m_width, m_height)};
        double initial = 0;
        for (const PropertyInfo& property : m_effect.Properties()) {
            if (property.name != parameter.property) continue;
            knob.type = property.type;
            initial = std::strtod(property.defaultText.c_str(), nullptr);
        }
        initial = parameter.initial.value_or(initial);
        knob.value = parameter.type == colourParameter ? initial : ToUnit(initial, knob.range);
        // The module's own is a single frame, which shows nothing.
        if (parameter.role == Role::Duration) HandOn(knob);
        m_knobs.push_back(knob);
    }

    Knob* Find(int parameter) {
        return parameter >= 0 && std::size_t(parameter) < m_knobs.size() ? &m_knobs[std::size_t(parameter)] : nullptr;
    }

    void HandOn(const Knob& knob) {
        const bool colour = knob.parameter->type == colourParameter;
        ReportOnce(m_effect.Set(knob.parameter->property, Text(colour ? knob.value : knob.TrueValue(), knob.type)));
    }

    int Position(double time) {
        double begin = 0, rate = 0, unit = 0;
        for (const Knob& knob : m_knobs) {
            if (knob.parameter->role == Role::Begin) begin = knob.TrueValue();
            if (knob.parameter->role == Role::FrameRate) rate = knob.TrueValue();
            if (knob.parameter->role == Role::TimeUnit) unit = knob.TrueValue();
        }
        return m_clock.FrameAt(time, rate, TimeUnit(std::lround(unit))) - int(std::lround(begin));
    }

    void ReportOnce(const std::optional<std::string>& error) {
        if (!error || m_reported) return;
        m_reported = true;
        Report(*error);
    }

    std::mutex m_mutex;
    BridgedEffect m_effect;
    unsigned m_width, m_height;
    std::vector<Knob> m_knobs;
    FrameClock m_clock;
    bool m_trueValues = false, m_reported = false;
};

}  // namespace

void Filter::Describe(const char* effect, PluginInfo& info) {
    const Description& description = DescriptionOf(effect);
    info = {description.name.c_str(),
            "Nifikral",
            filterPlugin,
            description.colourModel,
            interfaceMajor,
            NIFIKRAL_VERSION_MAJOR,
            NIFIKRAL_VERSION_MINOR,
            int(description.parameters.size()),
            description.explanation.c_str()};
}

void Filter::DescribeParameter(const char* effect, int parameter, ParameterInfo& info) {
    const std::vector<Parameter>& parameters = DescriptionOf(effect).parameters;
    if (parameter < 0 || std::size_t(parameter) >= parameters.size()) return;
    const Parameter& described = parameters[std::size_t(parameter)];
    info = {described.name.c_str(), described.type, described.explanation.c_str()};
}

Instance* Filter::Construct(const char* effect, unsigned width, unsigned height) {
    try {
        const BridgeModule& loaded = TheBridgeModule();
        if (loaded.module) return new FilterInstance(*loaded.module, effect, width, height);
        Report(loaded.error);
    } catch (const std::exception& error) {
        Report(error.what());
    }
    return nullptr;
}

}  // namespace Nifikral::Frei0r
