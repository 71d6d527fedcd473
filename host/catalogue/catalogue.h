#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>

/// What the module does not say of its effects: what they are for, and what to ask for in which range. Names, types and
/// defaults come from the module itself.
namespace Nifikral {

struct Choice {
    int value;
    const char* meaning;
};

struct ValueRange {
    double low = -std::numeric_limits<double>::infinity(), high = std::numeric_limits<double>::infinity();

    bool Contains(double value) const { return value >= low && value <= high; }
};

/// How a form asks for a value.
enum class Kind {
    Number,
    Column,  ///< a place on the picture's width, in pixels
    Row,     ///< a place on its height
    Length,  ///< a distance on it
    Switch,
    Choice,  ///< one of `choices`
    Word,    ///< one of `words`, or with a separator several
    Colour,  ///< 0xRRGGBB of a number property, #rrggbb of a text
    Seed,    ///< any number; another one gives another picture of the same kind
    File,
    Text,
};

struct ParameterInfo {
    const char* name;
    const char* group;  ///< what stands together in a form
    const char* meaning;
    const char* unit = "";
    ValueRange sensible = {};  ///< outside: the command warns
    double step = 1;           ///< between values that differ visibly
    Kind kind = Kind::Number;
    std::span<const Choice> choices = {};
    std::span<const char* const> words = {};
    const char* separator = "";  ///< of several words
    ValueRange bearable = {};  ///< outside: the command refuses, since the effect would, or since the run would not end
    std::optional<double> initial = {};  ///< what the effect works with until a value is set, where not the default
    /// Of the picture's shorter side: a longer length does nothing.
    double largestShare = std::numeric_limits<double>::infinity();
    bool actsAlone = false;  ///< does something whatever the others are: who sets it wants the others left as they are
};

/// What of a picture a value may be given relative to, as in 50%.
enum class Measure { None, Width, Height, ShorterSide };
Measure MeasureOf(const ParameterInfo& parameter);

enum EffectTraits : unsigned {
    plain = 0,
    variesWithTime = 1,     ///< reads the position: the number of frames must be known
    changesAlpha = 2,       ///< shows in the alpha channel alone
    generator = 4,          ///< makes pictures of its own from what it opens through the host
    menu = 8,               ///< a generator with the properties of a menu
    newEachFrame = 16,      ///< draws afresh at every position, whatever the number of frames
    knowsRedFromBlue = 32,  ///< makes something else where the two are exchanged before and after it
    idleAtDefaults = 64,  ///< leaves pictures as they are until something is set: the command starts it as it is shown
    fadesOut = 128,       ///< has nothing left of the picture when its duration is over
};

struct EffectInfo {
    const char* name;
    const char* category;
    const char* summary;
    const char* synonyms = "";  ///< other words that people look for it by, joined by ", "
    unsigned traits = plain;
    std::span<const ParameterInfo> parameters = {};
    const char* shown = "";  ///< "name=value:..." at which it shows well on any picture; "" for its defaults
    int times = 1;           ///< how often it is shown, where a single pass hardly shows
};

/// Every effect name that a module of this kind may know, in its own order.
std::span<const EffectInfo> Catalogue();
/// The catalogue's row, null for a name that is not in it.
const EffectInfo* FindEffect(std::string_view name);
/// The row of one parameter; "duration" belongs to every effect. Null for one that is not in the catalogue.
const ParameterInfo* FindParameter(std::string_view effect, std::string_view parameter);
/// A parameter's name without the effect's own prefix, as a request may give it: "r" for "rotate_r", "count" for the
/// "blur_count" of "simple_gauss_blur".
std::string ShortName(std::string_view effect, std::string_view property);
/// A parameter's value among those at which its effect is shown; "" for its default.
std::string ShownValue(const EffectInfo& effect, std::string_view property);
/// What asks for the effect as it is shown: "rotate:x=50%:y=50%:r=45%:scale=4".
std::string ShownRequest(const EffectInfo& effect);
/// Whether the value may change from frame to frame.
bool IsKeyframable(const EffectInfo& effect, const ParameterInfo& parameter);

}  // namespace Nifikral
