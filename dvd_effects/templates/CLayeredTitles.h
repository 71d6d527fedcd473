#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuLayeredTitlesName[] = "menu_layeredtitles";

/// Pictures softly in the back, one dissolving into the other; the texts come on translucent bands that slide in over
/// each other from both sides, rest at the texts' places and leave on the other side. Without texts there are bands all
/// the same. Sizes and places of the sources do not count.
class CLayeredTitles : public CAnimatedMenu {
 public:
    explicit CLayeredTitles(IAVManager* manager) : CAnimatedMenu(effectMenuLayeredTitlesName, manager) {}

 protected:
    FrameSize UsualBox() const override { return FractionOfMenu(1, 4); }
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Stage; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    // What a band carries: nothing when there is no text.
    struct Title {
        double left, top, width, height;
        const Layer* text;
    };
    std::vector<Title> Titles() const;
    void DrawBands(Canvas& canvas, const Title& title, unsigned index, unsigned count);
    void Band(Canvas& canvas, unsigned colour, double centre, double middle, double width, double height,
              double opacity);

    static constexpr unsigned colours = 4;
    Layer m_inks[colours];
};

}  // namespace AVBased
