#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"
#include "dvd_effects/templates/picture_mount.h"

namespace AVBased {

inline constexpr char effectMenuSpecialOccasionName[] = "menu_specialoccasion";

/// A feast in a golden frame: pictures rimmed with gold hover and swing like balloons, and one after another rises out
/// of sight and comes up again from below; balloons rise behind them, confetti falls, and sparkles run over the frame.
/// Without a background a deep red evening with lights out of focus.
///
/// Pictures fill their size and are placed by "startPositions", else in rows below the room for a title.
class CSpecialOccasion : public CAnimatedMenu {
 public:
    explicit CSpecialOccasion(IAVManager* manager) : CAnimatedMenu(effectMenuSpecialOccasionName, manager) {}

 protected:
    PictureFit Fit() const override { return PictureFit::Cover; }
    FrameSize UsualBox() const override { return Rows(SourceCount()).CellSize(); }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    static constexpr unsigned colours = 4;
    PictureGrid Rows(unsigned count) const;
    void MakeFrame();
    void DrawBalloons(Canvas& canvas) const;
    void DrawPictures(Canvas& canvas) const;
    void DrawConfetti(Canvas& canvas, unsigned first, unsigned last) const;
    void DrawFrame(Canvas& canvas) const;

    mutable PictureMounts m_mounts;
    Layer m_balloons[colours], m_confetti[colours], m_sparkle, m_light, m_ribbon;
    Layer m_frameTop, m_frameBottom, m_frameLeft, m_frameRight;
};

}  // namespace AVBased
