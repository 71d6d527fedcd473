#include "host/run/request_chain.h"

#include <algorithm>
#include <optional>

#include "host/base/errors.h"
#include "host/catalogue/presets.h"

namespace Nifikral {
namespace {

class Expander {
 public:
    Expander(const EffectModule& module, const std::string& file) : m_module(module), m_file(file) {}

    std::vector<EffectRequest> Expand(const std::string& text) {
        if (!text.starts_with('@')) return {ParseEffectRequest(text, m_module)};
        RequestParts parts(text);
        if (!m_presets) m_presets.emplace(m_file);
        const Preset& preset = m_presets->Find(parts.head.substr(1));
        const std::optional<TimeWindow> window = ParseWindow(parts);
        const std::optional<Region> region = ParseRegion(parts);
        if (!parts.pairs.empty())
            throw HostError(ExitCode::Usage, parts.head + " has no parameter \"" + parts.pairs.front().first +
                                                 "\"; a preset takes a window, inside, outside and soft");
        std::vector<EffectRequest> requests;
        try {
            if (std::find(m_open.begin(), m_open.end(), preset.name) != m_open.end())
                throw HostError(ExitCode::Usage, "@" + preset.name + " contains itself");
            m_open.push_back(preset.name);
            for (const std::string& own : preset.requests)
                for (EffectRequest& request : Expand(own)) requests.push_back(std::move(request));
            m_open.pop_back();
            for (EffectRequest& request : requests) {
                if (window && request.window)
                    throw HostError(ExitCode::Usage, request.effect + " has a window of its own, so that @" +
                                                         preset.name + " takes none");
                if (window) request.window = window;
                if (region) request.regions.push_back(*region);
            }
        } catch (const HostError& error) {
            throw HostError(error.Code(), preset.place + ": " + error.what());
        }
        return requests;
    }

 private:
    const EffectModule& m_module;
    std::string m_file;
    std::optional<Presets> m_presets;
    std::vector<std::string> m_open;  // presets that are being expanded, from the outermost
};

}  // namespace

std::vector<EffectRequest> ParseEffectRequests(const std::vector<std::string>& texts, const EffectModule& module,
                                               const std::string& file) {
    Expander expander(module, file);
    std::vector<EffectRequest> requests;
    for (const std::string& text : texts)
        for (EffectRequest& request : expander.Expand(text)) requests.push_back(std::move(request));
    return requests;
}

}  // namespace Nifikral
