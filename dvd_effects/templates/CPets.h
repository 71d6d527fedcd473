#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuPetsName[] = "menu_pets";

/// Rounded pictures in bright frames that hop in from below, squash as they land and settle; later each one hops on the
/// spot, and in the end they hop away. A ball bounces across the meadow, or across a named background, and paw prints
/// chase it. The pictures stand where the texts leave most room; "startPositions" places them elsewhere.
class CPets : public CAnimatedMenu {
 public:
    explicit CPets(IAVManager* manager) : CAnimatedMenu(effectMenuPetsName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void FinishPicture(Layer& layer, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void DrawPaws(Canvas& canvas) const;
    void DrawBall(Canvas& canvas) const;

    Layer m_paw, m_shadow, m_ball;
};

}  // namespace AVBased
