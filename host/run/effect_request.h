#pragma once

#include <optional>
#include <string>
#include <vector>

#include "host/catalogue/effect_module.h"
#include "host/run/parameter_value.h"
#include "host/run/region.h"
#include "host/run/time_window.h"

namespace Nifikral {

struct ParameterSetting {
    std::string property;  ///< the full name
    ParameterValue value;
};

/// One effect of the chain as asked for on the command line, checked against the module.
struct EffectRequest {
    std::string effect;
    std::vector<ParameterSetting> settings;
    std::string text = {};                  ///< what asked for it
    std::optional<TimeWindow> window = {};  ///< outside, pictures stay as they are
    std::vector<Region> regions = {};       ///< outside of any, pixels stay as they are

    bool Sets(const std::string& property) const;
    /// Whether it depends on how many frames it works on.
    bool NeedsFrameCount() const;
    /// The same for pictures of another size, on which it shows the same as on those it is meant for.
    EffectRequest Resized(const Scale& from, const Scale& to) const;
};

/// What every request may have besides the effect's own parameters, as "inside=".
extern const std::vector<std::string> regionOptions;

/// A request taken apart: "rotate@2s-5s:x=50%" has the head "rotate", the window "2s-5s" and a pair.
struct RequestParts {
    RequestParts() = default;
    explicit RequestParts(const std::string& text);

    std::string head, window;
    std::vector<std::pair<std::string, std::string>> pairs;
};

/// The window of a request, if it has one; its region, whose options are taken out of the pairs. Both throw usage
/// errors.
std::optional<TimeWindow> ParseWindow(const RequestParts& parts);
std::optional<Region> ParseRegion(RequestParts& parts);

/// Reads "EFFECT[@WINDOW][:name=value]...". What an effect needs to show anything at all, and what the request leaves
/// out, is taken from the catalogue. Throws a usage error that names the thing and the remedy.
EffectRequest ParseEffectRequest(const std::string& text, const EffectModule& module);
/// The same for one that is taken apart already; its values may hold any character.
EffectRequest CheckedRequest(RequestParts parts, const EffectModule& module);

}  // namespace Nifikral
