#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuRectanglesName[] = "menu_rectangles";

/// Rectangles of different size cross the screen at different depth, the nearer the larger and faster, with thin
/// outlines: pictures in some, others empty. Pictures keep off the texts. "additionSourceSizes" are the sizes of the
/// nearest; places do not count.
class CRectangles : public CAnimatedMenu {
 public:
    explicit CRectangles(IAVManager* manager) : CAnimatedMenu(effectMenuRectanglesName, manager) {}

 protected:
    PictureFit Fit() const override { return PictureFit::Cover; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    FrameSize UsualBox() const override { return FractionOfMenu(2, 5); }
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void Outline(Canvas& canvas, Spot centre, double width, double height, double thickness, double opacity);

    Layer m_ink;
};

}  // namespace AVBased
