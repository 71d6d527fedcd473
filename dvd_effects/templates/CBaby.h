#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"
#include "dvd_effects/templates/picture_mount.h"

namespace AVBased {

inline constexpr char effectMenuBabyGirlName[] = "menu_babygirl";
inline constexpr char effectMenuBabyBoyName[] = "menu_babyboy";

/// A nursery: pictures with soft white rims float and bob, each in turn comes a little nearer, and bubbles and toys
/// drift up behind them, some bubbles before them, over a pastel sky with dots and clouds where no background is named.
///
/// Pictures fill their size and are placed by "startPositions", else in rows below the room for a title.
class CBaby : public CAnimatedMenu {
 protected:
    struct Style {
        Colour skyTop, skyBottom, cloud, shadow, toy;
        double shape;  ///< a picture's width by its height
        bool (*isToy)(double x, double y);
        void (*cut)(const Layer& layer);  ///< to the pictures' outline
    };
    CBaby(const char* name, IAVManager* manager, const Style& style) : CAnimatedMenu(name, manager), m_style(style) {}

    PictureFit Fit() const override { return PictureFit::Cover; }
    FrameSize UsualBox() const override { return Rows(SourceCount()).CellSize(); }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) final;
    /// What stands behind the pictures beside the bubbles.
    virtual void DrawPlaything(Canvas& canvas) const = 0;

    Layer m_toy, m_cloud;  // a disc, for anything that is round and white

 private:
    PictureGrid Rows(unsigned count) const;
    // Those from `first` up to, but not, `last`.
    void DrawToys(Canvas& canvas, unsigned first, unsigned last) const;

    const Style& m_style;
    mutable PictureMounts m_mounts;
    Layer m_bubble, m_backCloud;
};

/// Pink, with oval pictures, and hearts between the bubbles. Two mobiles of hearts and moons turn above.
class CBabyGirl : public CBaby {
 public:
    explicit CBabyGirl(IAVManager* manager) : CBaby(effectMenuBabyGirlName, manager, style) {}

 protected:
    void MakeScenery() override;
    void DrawPlaything(Canvas& canvas) const override;

 private:
    static const Style style;

    void DrawMobile(Canvas& canvas, Spot hub, double turns) const;

    Layer m_moon, m_string;
};

/// Light blue, with round-cornered pictures, and stars between the bubbles. A toy train steams over the clouds.
class CBabyBoy : public CBaby {
 public:
    explicit CBabyBoy(IAVManager* manager) : CBaby(effectMenuBabyBoyName, manager, style) {}

 protected:
    void MakeScenery() override;
    void DrawPlaything(Canvas& canvas) const override;

 private:
    static const Style style;
    static constexpr unsigned wagons = 3;

    Layer m_engine, m_wagons[wagons], m_wheel;
};

}  // namespace AVBased
