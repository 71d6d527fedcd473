#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuVignetteName[] = "menu_vignette";

/// One picture at a time in a wide oval whose edges melt into the dark, drifting slowly, dissolving into the next one.
/// A fine ring is around it, which takes the shape of each, and on which a bead of light runs round once for each. In
/// columns on both sides all pictures are small ovals, of which the one that is shown stands out; of more than eight,
/// those about it. "additionSourceSizes" are the sizes of the large oval; places do not count.
class CVignette : public CAnimatedMenu {
 public:
    explicit CVignette(IAVManager* manager) : CAnimatedMenu(effectMenuVignetteName, manager) {}

 protected:
    FrameSize UsualBox() const override { return FractionOfMenu(4, 5); }
    PictureFit Fit() const override { return PictureFit::Cover; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    Region Stage() const;
    FrameSize LargestOf(const ShownPicture& picture) const;
    void ShowLarge(Canvas& canvas, const ShownPicture& picture, double part, double opacity) const;
    void DrawRing(Canvas& canvas, const ShownPicture& now, const ShownPicture& next, const Turn& turn,
                  double change) const;
    void ShowSmall(Canvas& canvas, const ShownPicture& picture, const Turn& turn, double share) const;

    Layer m_ring, m_bead;
};

}  // namespace AVBased
