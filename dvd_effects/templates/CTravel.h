#pragma once

#include "dvd_effects/templates/CPhotographs.h"

namespace AVBased {

inline constexpr char effectMenuTravelName[] = "menu_travel";

/// A journey on an old map: photographs stand along a dashed route that closes, and travel it from stop to stop. The
/// one that reaches the front is the largest. A small plane flies the route without a stop, and a compass trembles in
/// the corner. Places of the sources do not count. The route is drawn over a named background too.
class CTravel : public CPhotographs {
 public:
    explicit CTravel(IAVManager* manager) : CPhotographs(effectMenuTravelName, manager) {}

 protected:
    FrameSize UsualBox() const override { return PartOfMenu(0.4, 0.4); }
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    class Route;

    Spot Compass() const;
    void DrawRoute(Canvas& canvas, const Route& route) const;

    Layer m_dash, m_stop, m_needle, m_plane, m_planeShadow;
};

}  // namespace AVBased
