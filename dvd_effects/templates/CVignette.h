#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuVignetteName[] = "menu_vignette";

/// One picture at a time in a wide oval whose edges melt into the dark, drifting slowly, dissolving into the next one;
/// between the texts and, below it, all pictures in a row of small ovals, where the one that is shown stands out; of
/// more than seven, the row shows those about it. "additionSourceSizes" are the sizes of the large oval; places do not
/// count.
class CVignette : public CAnimatedMenu {
 public:
    explicit CVignette(IAVManager* manager) : CAnimatedMenu(effectMenuVignetteName, manager) {}

 protected:
    FrameSize UsualBox() const override { return FractionOfMenu(4, 5); }
    PictureFit Fit() const override { return PictureFit::Cover; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    void ShowLarge(Canvas& canvas, const ShownPicture& picture, double part, double opacity) const;
    void ShowSmall(Canvas& canvas, const ShownPicture& picture, const Turn& turn, double share) const;
};

}  // namespace AVBased
