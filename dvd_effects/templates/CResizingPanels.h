#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuResizingPanelsName[] = "menu_resizingpanels";

/// Panels divide what the texts leave of the screen, a picture in each; the lines between them move, so that each panel
/// in turn becomes the large, bright one. Sizes and places of the sources do not count.
class CResizingPanels : public CAnimatedMenu {
 public:
    explicit CResizingPanels(IAVManager* manager) : CAnimatedMenu(effectMenuResizingPanelsName, manager) {}

 protected:
    // Whole, as panels of all shapes show parts of it: upright ones about as wide as others.
    FrameSize UsualBox() const override { return PartOfMenu(0.72, 1.2); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void DrawPanel(Canvas& canvas, const ShownPicture& picture, const Box& panel, double share);

    Layer m_shade;
};

}  // namespace AVBased
