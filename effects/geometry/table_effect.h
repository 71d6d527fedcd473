#pragma once

#include "effects/base/settings_effect.h"
#include "effects/geometry/coordinate_table.h"

namespace AVBased {

/// An effect that computes its coordinates on the first frame after its settings changed and replays them on the
/// following ones. `Settings` provides BoxIn(width, height): the part of a picture that changes, or none.
template <class Settings>
class CTableEffect : public CSettingsEffect<Settings> {
 protected:
    using CSettingsEffect<Settings>::CSettingsEffect;

    /// Runs the routines that replay, or before there is a table those that compute it.
    template <class Effect>
    void Process(Effect& effect, IRawVideoFrame& frame, void (Effect::*firstPacked)(const PackedView& picture),
                 void (Effect::*firstPlanar)(const PlanarView& picture),
                 void (Effect::*replayPacked)(const PackedView& picture),
                 void (Effect::*replayPlanar)(const PlanarView& picture)) {
        m_table.UseInstructionSet(this->Instructions());
        const bool replays = m_table.IsValid();
        ForFrame([&](const PackedView& picture) { (effect.*(replays ? replayPacked : firstPacked))(picture); },
                 [&](const PlanarView& picture) { (effect.*(replays ? replayPlanar : firstPlanar))(picture); }, frame);
        // Deliberate: also after a frame of a format that no routine knows.
        m_table.SetValid(true);
    }

    /// Computes the table of Map{settings} or Map{settings, width, height}.
    template <class Map, class Picture>
    void Compute(const Picture& picture, Outside outside) {
        const Settings& settings = this->m_settings;
        const auto& luma = LumaOf(picture);
        const auto box = settings.BoxIn(luma.width, luma.height);
        if (!box) return;
        if constexpr (requires { Map{settings, luma.width, luma.height}; })
            m_table.Build(*box, Map{settings, luma.width, luma.height}, picture, outside);
        else
            m_table.Build(*box, Map{settings}, picture, outside);
    }
    template <class Picture>
    void Replay(const Picture& picture, Outside outside) {
        if (this->m_settings.BoxIn(LumaOf(picture).width, LumaOf(picture).height)) m_table.Replay(picture, outside);
    }

    CoordinateTable m_table;

 private:
    static const PackedView& LumaOf(const PackedView& picture) { return picture; }
    static const ComponentView& LumaOf(const PlanarView& picture) { return picture.plane[0]; }
};

}  // namespace AVBased
