#pragma once

#include "dvd_effects/canvas/prepared_layer.h"
#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuVideoWallName[] = "menu_videowall";

/// A wall of screens that breathes, beside the texts, the pictures on it again and again; each in turn comes out of the
/// wall and covers its middle, while the others grow dim. Sizes and places of the sources do not count.
class CVideoWall : public CAnimatedMenu {
 public:
    explicit CVideoWall(IAVManager* manager) : CAnimatedMenu(effectMenuVideoWallName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Stage; }
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    // A rectangle about its middle.
    struct Screen {
        Spot centre;
        double width, height;
    };
    struct Wall {
        Region region;
        unsigned columns = 0, rows = 0;
    };
    Wall WallOf(unsigned count) const;
    Screen ScreenAt(unsigned cell, const Wall& wall) const;

    PreparedLayer m_shadow;
};

}  // namespace AVBased
