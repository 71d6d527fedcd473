#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuOldAgeName[] = "menu_oldage";

/// An old film: portraits in oval frames on a papered wall, each in turn a little nearer; "startPositions" places them
/// elsewhere. All of the menu, including named backgrounds and texts, is sepia, dark towards its edges, flickers and
/// weaves, and shows dust and scratches.
class COldAge : public CAnimatedMenu {
 public:
    explicit COldAge(IAVManager* manager) : CAnimatedMenu(effectMenuOldAgeName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void FinishPicture(Layer& layer, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void DrawPortraits(Canvas& canvas, unsigned step) const;
    // Dust, scratches and the lamp's flicker of one exposure.
    void DrawFilm(Canvas& canvas, unsigned step) const;

    Layer m_shadow, m_vignette, m_scratch, m_speck, m_hair;
};

}  // namespace AVBased
