#pragma once

#include "dvd_effects/canvas/prepared_layer.h"
#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuResizingPanelsName[] = "menu_resizingpanels";

/// Panels divide the screen, a picture in each; the lines between them move, so that each panel in turn becomes the
/// large, bright one. Sizes and places of the sources do not count.
class CResizingPanels : public CAnimatedMenu {
 public:
    explicit CResizingPanels(IAVManager* manager) : CAnimatedMenu(effectMenuResizingPanelsName, manager) {}

 protected:
    FrameSize UsualBox() const override { return FractionOfMenu(7, 10); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Cover; }
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void DrawPanel(Canvas& canvas, const ShownPicture& picture, const Box& panel, double share);

    PreparedLayer m_shade;
};

}  // namespace AVBased
