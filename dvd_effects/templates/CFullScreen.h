#pragma once

#include "dvd_effects/canvas/prepared_layer.h"
#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuFullScreenName[] = "menu_fullscreen";

/// One picture at a time fills the screen, slowly drawn nearer or let go, and dissolves into the next one. A shade
/// rises from the lower edge, for titles to stand on. Sizes and places of the sources do not count.
class CFullScreen : public CAnimatedMenu {
 public:
    explicit CFullScreen(IAVManager* manager) : CAnimatedMenu(effectMenuFullScreenName, manager) {}

 protected:
    FrameSize UsualBox() const override { return MenuSize(); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Cover; }
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    Placement PlaceAt(const ShownPicture& picture, double part) const;
    void DrawShade(Canvas& canvas);

    PreparedLayer m_shade;
};

}  // namespace AVBased
