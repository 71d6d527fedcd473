#pragma once

#include <limits>
#include <optional>
#include <span>
#include <string_view>

/// What the module cannot tell of its effects: what they are for, and what to ask for in which range. Names, types and
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
};

enum EffectTraits : unsigned {
    plain = 0,
    variesWithTime = 1,     ///< reads the position: the number of frames must be known
    changesAlpha = 2,       ///< shows in the alpha channel alone
    generator = 4,          ///< makes pictures of its own from what it opens through the host
    menu = 8,               ///< a generator with the properties of a menu
    newEachFrame = 16,      ///< draws afresh at every position, whatever the number of frames
    knowsRedFromBlue = 32,  ///< makes something else where the two are exchanged before and after it
};

struct EffectInfo {
    const char* name;
    const char* category;
    const char* summary;
    unsigned traits = plain;
    std::span<const ParameterInfo> parameters = {};
};

/// Every effect name that a module of this kind may know, in its own order.
std::span<const EffectInfo> Catalogue();
/// The catalogue's row, null for a name that is not in it.
const EffectInfo* FindEffect(std::string_view name);
/// The row of one parameter; "duration" belongs to every effect. Null for one that is not in the catalogue.
const ParameterInfo* FindParameter(std::string_view effect, std::string_view parameter);
/// Whether the value may change from frame to frame.
bool IsKeyframable(const EffectInfo& effect, const ParameterInfo& parameter);

}  // namespace Nifikral
