#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"

namespace AVBased {

inline constexpr char effectMenuPerformanceName[] = "menu_performance";

/// Three screens on a stage, the outer ones turned towards the viewer, mirrored in the floor before a curtain of light;
/// beams swing over it. The pictures fill the screens and go on from each to the next. The screens have a size of their
/// own: "additionSourceSizes" does not count.
class CPerformance : public CAnimatedMenu {
 public:
    explicit CPerformance(IAVManager* manager) : CAnimatedMenu(effectMenuPerformanceName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    FrameSize BoxOf(unsigned, FrameSize) const override { return UsualBox(); }
    PictureFit Fit() const override { return PictureFit::Stage; }
    void FinishPicture(Layer& layer, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) override;

 private:
    // A panel whose sides stand upright, in pixels of the menu.
    struct Panel {
        double left = 0, right = 0, leftTop = 0, rightTop = 0, leftBottom = 0, rightBottom = 0;

        // With its corners moved outwards, both ways by so many pixels.
        Placement Grown(double by) const {
            return {{left - by, leftTop - by},
                    {right + by, rightTop - by},
                    {right + by, rightBottom + by},
                    {left - by, leftBottom + by}};
        }
    };
    // The map of a picture into a panel.
    struct Warp {
        std::vector<unsigned char> coverage, side;
        std::vector<int> columns, rows;
        std::int32_t x = 0, y = 0;
        FrameSize size;

        void Lay(Canvas& canvas, const Layer& picture, double opacity) const;
    };
    struct Screen {
        Panel panel;
        Warp picture, reflection;
    };
    // Where the floor mirrors a panel, upright.
    static Panel MirroredOf(const Panel& panel);
    static Warp WarpOf(const Panel& panel, FrameSize size, bool upsideDown);
    void ShowPictures(Canvas& canvas, std::vector<ShownPicture> pictures, unsigned screen) const;
    void DrawBeams(Canvas& canvas) const;
    void DrawFrame(Canvas& canvas, const Panel& panel) const;

    std::vector<Screen> m_screens;
    Layer m_beams[3], m_metal;
};

}  // namespace AVBased
