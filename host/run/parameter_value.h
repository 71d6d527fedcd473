#pragma once

#include <string>
#include <vector>

#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_module.h"
#include "host/run/moment.h"

namespace Nifikral {

/// How a value moves on its way to a key point: "linear", "in" (slow first), "out" (slow last), "in-out" or "hold"
/// (it jumps when the way is over).
enum class Easing { Linear, In, Out, InOut, Hold };
/// The share of the way's height at a share of its time, both from 0 to 1.
double Eased(Easing easing, double share);

/// The pictures and the time that relative values and moments are measured by.
struct Scale {
    int width = 0, height = 0;
    double frameRate = 25;
};

/// A parameter's value over the run: one text, or numbers at key points.
class ParameterValue {
 public:
    /// `text` is a value, `A..B` (from the first frame that the effect works on to the last; more values may follow),
    /// or `@moment:value,...`. Places and lengths may be a share of the picture, as 50%. Behind a number, `~in-out` and
    /// the like say how the value moves there. Throws std::invalid_argument, saying what is wrong.
    ParameterValue(const std::string& text, PropertyType type, const ParameterInfo& info = {"", "", ""});

    bool Varies() const { return m_points.size() > 1; }
    /// Whether the value depends on how many frames the effect works on.
    bool NeedsFrameCount() const { return m_overRun; }
    bool IsRelative() const;
    /// The same for a picture of another size: places and lengths in pixels grow or shrink with it.
    ParameterValue Resized(const Scale& from, const Scale& to) const;
    /// The same in numbers alone. Throws std::invalid_argument when key points in seconds overtake others in frames.
    ParameterValue On(const Scale& scale) const;
    /// The rest is for a value that On has made, or that was not relative.
    /// The text to set for a frame of so many that the effect works on.
    std::string At(long long frame, long long frameCount) const;
    double NumberAt(long long frame, long long frameCount) const;
    /// The numbers it is made of; none for a text property.
    std::vector<double> Numbers() const;

 private:
    struct Point {
        double frame = 0;
        bool inSeconds = false;
        double value = 0;
        bool isShare = false;
        Easing easing = Easing::Linear;
    };

    static Point ReadPoint(const std::string& text, PropertyType type, const ParameterInfo& info);
    void RequireAscent() const;

    PropertyType m_type;
    Measure m_measure = Measure::None;
    bool m_isColour = false;
    std::string m_text;
    std::vector<Point> m_points;
    bool m_overRun = false;  // the points divide the run; their frames are shares of it
};

}  // namespace Nifikral
