#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuFullScreenName[] = "menu_fullscreen";

/// One picture at a time fills the screen, slowly drawn nearer or let go, and dissolves into the next one. Meanwhile a
/// fine line draws itself round the screen, a part for each picture. A shade rises from the lower edge, for titles to
/// stand on. Sizes and places of the sources do not count.
class CFullScreen : public CAnimatedMenu {
 public:
    explicit CFullScreen(IAVManager* manager) : CAnimatedMenu(effectMenuFullScreenName, manager) {}

 protected:
    FrameSize UsualBox() const override { return MenuSize(); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Stage; }
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    Placement PlaceAt(const ShownPicture& picture, double part) const;
    void DrawRound(Canvas& canvas) const;
    void DrawLine(Canvas& canvas, const Layer& ink, double from, double to, double opacity) const;

    Layer m_shade, m_track, m_done;
};

}  // namespace AVBased
