#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuPushName[] = "menu_push";

/// Each picture pushes the one before it off the screen, to the left, up, to the right and down in turn; on the way
/// both draw back a little from the edges. A line of as many parts shows how far the round has got. Texts have a strip
/// of their own, which no picture crosses. Sizes and places of the sources do not count.
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
    Region Stage() const;
    void DrawPush(Canvas& canvas, const ShownPicture& leaving, const ShownPicture& coming, double push) const;

    Layer m_track, m_done;
};

}  // namespace AVBased
