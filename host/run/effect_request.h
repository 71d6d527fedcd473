#pragma once

#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"

namespace Nifikral {

/// A parameter's value over the run: one text, or numbers at key points with straight lines between them.
class ParameterValue {
 public:
    /// `text` is a value, `A..B` (from the first frame of the run to the last), or `@frame:value,...`.
    /// Throws std::invalid_argument, saying what is wrong, for a text that does not fit the type.
    ParameterValue(const std::string& text, PropertyType type);

    bool Varies() const { return m_overRun || m_points.size() > 1; }
    /// Whether the value depends on how many frames the run has.
    bool NeedsFrameCount() const { return m_overRun; }
    /// The text to set for a frame of the run.
    std::string At(long long frame, long long frameCount) const;
    /// The numbers it is made of; none for a text property.
    std::vector<double> Numbers() const;

 private:
    struct Point {
        double frame, value;
    };

    PropertyType m_type;
    std::string m_text;
    std::vector<Point> m_points;
    bool m_overRun = false;  // the two points stand at the ends of the run
};

struct ParameterSetting {
    std::string property;  ///< the full name
    ParameterValue value;
};

/// One effect of the chain as asked for on the command line, checked against the module.
struct EffectRequest {
    std::string effect;
    std::vector<ParameterSetting> settings;
    long long begin = 0;  ///< the position of its first frame; earlier ones stay as they are

    bool Varies() const;
    bool Sets(const std::string& property) const;
};

/// A parameter's name without the effect's own prefix, as a request may give it: "r" for "rotate_r", "count" for the
/// "blur_count" of "simple_gauss_blur".
std::string ShortName(const std::string& effect, const std::string& property);

/// Reads "EFFECT[:name=value]...". Throws a usage error that names the thing and the remedy.
EffectRequest ParseEffectRequest(const std::string& text, const EffectModule& module);

}  // namespace Nifikral
