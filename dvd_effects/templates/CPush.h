#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuPushName[] = "menu_push";

/// A glowing bar sweeps over the screen, and with it each picture pushes off the one before it, to the left, up, to the
/// right and down in turn; on the way both draw back a little from the edges. A line of as many parts shows how far the
/// round has got. Texts have a strip of their own, which no picture crosses. Sizes and places of the sources do not
/// count.
class CPush : public CAnimatedMenu {
 public:
    explicit CPush(IAVManager* manager) : CAnimatedMenu(effectMenuPushName, manager) {}

 protected:
    FrameSize UsualBox() const override { return MenuSize(); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Stage; }
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void DrawPush(Canvas& canvas, const ShownPicture& leaving, const ShownPicture& coming, double push) const;
    void DrawProgress(Canvas& canvas, const Turn& turn) const;

    Layer m_track, m_done;
};

}  // namespace AVBased
