#include "host/run/placed_effect.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>

#include "host/base/errors.h"
#include "host/catalogue/catalogue.h"
#include "host/catalogue/effect_details.h"
#include "host/run/effect_check.h"

namespace Nifikral {
namespace {

constexpr char durationName[] = "duration";

class Placing {
 public:
    Placing(const EffectRequest& request, const Extent& extent) : m_request(request), m_extent(extent) {}

    PlacedEffect Place(const EffectModule& module) const {
        PlacedEffect placed{m_request.effect, {}, {}};
        if (m_request.window)
            PlaceInWindow(placed);
        else
            PlaceInRun(placed);
        const EffectPtr trial = CreateKnown(module, m_request.effect);
        for (const ParameterSetting& setting : m_request.settings) {
            placed.settings.push_back({setting.property, setting.value.On(m_extent.scale)});
            RequireAcceptable(*trial, placed.settings.back());
            WarnWhereOdd(m_request.effect, placed.settings.back(), m_extent.scale);
        }
        if (placed.frameCount > 0 && !m_request.Sets(durationName)) {
            const EffectInfo* const info = FindEffect(m_request.effect);
            const bool leavesNothing = info && (info->traits & fadesOut);
            const long long duration = std::max(1LL, placed.frameCount - (leavesNothing ? 1 : 0));
            placed.settings.push_back({durationName, ParameterValue(std::to_string(duration), PropertyType::Int32)});
        }
        for (const Region& region : m_request.regions)
            placed.regions.push_back(region.On(m_extent.scale, m_extent.format));
        return placed;
    }

    [[noreturn]] void Refuse(const std::string& what) const {
        const std::string window = m_request.window ? "@" + m_request.window->Text() : "";
        throw HostError(ExitCode::Usage, m_request.effect + window + ": " + what);
    }

 private:
    void PlaceInRun(PlacedEffect& placed) const {
        placed.frames.first = m_extent.run.first;
        placed.frameCount = m_request.NeedsFrameCount() ? Count(m_extent.run) : m_extent.estimatedFrames;
    }

    // Counts from the input's first frame, so that a part of a run shows what the whole shows there.
    void PlaceInWindow(PlacedEffect& placed) const {
        const TimeWindow& window = *m_request.window;
        const bool needsEnd = window.CountsFromEnd() || (window.IsOpen() && m_request.NeedsFrameCount());
        const long long whole = needsEnd ? Count({}) : 0;
        FrameRange& frames = placed.frames;
        frames = window.Frames(m_extent.scale.frameRate, whole);
        if (frames.last < frames.first) Refuse("the window ends before it begins");
        RequireBegun(frames.first, whole);
        if (needsEnd) frames.last = std::min(frames.last, whole - 1);
        if (frames.last != FrameRange::noEnd) placed.frameCount = frames.Count();
    }

    // Asks the input where the run goes on to its end, and the end is not known to lie behind.
    void RequireBegun(long long begin, long long whole) const {
        const long long end = m_extent.run.first + m_extent.estimatedFrames;
        const bool suspect = m_extent.run.last == FrameRange::noEnd && begin > 0 && begin >= end;
        if (whole == 0 && suspect) whole = m_extent.count({});
        if (whole == 0 || begin < whole) return;
        std::ostringstream line;
        line << "the window begins behind the end of the input, which has " << whole << " frames ("
             << double(whole) / m_extent.scale.frameRate << " seconds); choose an earlier time";
        Refuse(line.str());
    }

    long long Count(const FrameRange& range) const {
        long long count = m_extent.count(range);
        if (count == 0) count = m_extent.estimatedFrames;
        if (count == 0)
            Refuse(
                "this needs the number of frames, which the input does not give; give the effect its duration=N, a "
                "value key points, @frame:value,..., and a window times from the beginning");
        return count;
    }

    const EffectRequest& m_request;
    const Extent& m_extent;
};

}  // namespace

bool PlacedEffect::Varies() const {
    return std::any_of(settings.begin(), settings.end(), [](const auto& setting) { return setting.value.Varies(); });
}

std::vector<PlacedEffect> PlaceEffects(const std::vector<EffectRequest>& requests, const EffectModule& module,
                                       const Extent& extent) {
    std::vector<PlacedEffect> placed;
    for (const EffectRequest& request : requests) {
        const Placing placing(request, extent);
        try {
            placed.push_back(placing.Place(module));
        } catch (const std::invalid_argument& error) {
            placing.Refuse(error.what());
        }
    }
    return placed;
}

}  // namespace Nifikral
