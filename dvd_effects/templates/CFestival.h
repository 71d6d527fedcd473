#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"
#include "dvd_effects/templates/picture_mount.h"
#include "dvd_effects/templates/remote_keys.h"

namespace AVBased {

inline constexpr char effectMenuFestivalName[] = "menu_festival";
inline constexpr char effectSubMenuFestivalName[] = "submenu_festival";
inline constexpr char effectInstructionMenuFestivalName[] = "instructionmenu_festival";

/// A summer night's festival: fireworks burst and paper lanterns rise in the sky, bulbs twinkle along the upper edge;
/// pictures have thin golden rims and fill their size. Without a background the sky is night blue, with stars over dark
/// hills. Its menus differ in how the pictures are shown.
class CFestivalNight : public CAnimatedMenu {
 public:
    using CAnimatedMenu::CAnimatedMenu;

 protected:
    static constexpr unsigned colours = 5;

    PictureFit Fit() const override { return PictureFit::Cover; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    void DrawScene(Canvas& canvas) final;
    /// What stands before the night, and below the texts.
    virtual void DrawPictures(Canvas& canvas) = 0;

    void DrawString(Canvas& canvas, Spot from, Spot to) const;
    /// A string across the menu that hangs through about a height, and the place on it.
    void DrawLine(Canvas& canvas, double y) const;
    Spot OnLine(double x, double y) const;
    /// A lantern hung up at a place, turned about it. `own` sets its flicker apart from those of others.
    void DrawLantern(Canvas& canvas, Spot hook, double height, double degrees, double own) const;
    /// A picture that swings about a place far above it.
    struct Pendulum {
        Spot pivot;
        double length, degrees, width, height, own;
        double line = -1;  ///< that its strings are tied to; below 0: they come from above

        /// A place of the picture, of which half the width and height are 0.5.
        Spot At(double x, double y) const;
    };
    Pendulum Hang(const ShownPicture& picture, Spot rest, double own) const;
    /// Its strings, and a lantern below it.
    void DrawHangers(Canvas& canvas, const Pendulum& hung) const;
    void ShowHung(Canvas& canvas, const ShownPicture& picture, const Pendulum& hung, double opacity = 1) const;
    /// A light behind a place, from 0 to 1.
    void DrawLight(Canvas& canvas, Spot at, double width, double height, double light) const;

 private:
    void DrawFirework(Canvas& canvas, unsigned index, double t) const;
    void DrawFireworks(Canvas& canvas) const;
    void DrawSkyLanterns(Canvas& canvas) const;
    void DrawBulbs(Canvas& canvas) const;

    mutable PictureMounts m_mounts;
    Layer m_sparks[colours], m_star, m_halo, m_lantern, m_string;
};

/// The main menu: pictures swing on strings from a line below the room for a title, a lantern below each. They stand in
/// rows; "startPositions" places them elsewhere, on strings from above.
class CFestival : public CFestivalNight {
 public:
    explicit CFestival(IAVManager* manager) : CFestivalNight(effectMenuFestivalName, manager) {}

 protected:
    FrameSize UsualBox() const override { return Rows(SourceCount()).CellSize(); }
    void DrawPictures(Canvas& canvas) override;

 private:
    PictureGrid Rows(unsigned count) const;
};

/// The sub-menu: a row of pictures on a line between lanterns, two or more above four; each in turn is lit from behind
/// and comes nearer. "startPositions" places them elsewhere.
class CFestivalSub : public CFestivalNight {
 public:
    explicit CFestivalSub(IAVManager* manager) : CFestivalNight(effectSubMenuFestivalName, manager) {}

 protected:
    FrameSize UsualBox() const override { return Rows(SourceCount()).CellSize(); }
    void DrawPictures(Canvas& canvas) override;

 private:
    PictureGrid Rows(unsigned count) const;
    void DrawLines(Canvas& canvas, const PictureGrid& rows) const;
};

/// The instruction menu: a dark panel with a golden line leaves room for texts from two fifths of the width and a sixth
/// of the height on, down to seven eighths, and shows the keys of a remote control below them; on its left swings one
/// picture, and where there are several, each has its turn there. "startPositions" places them elsewhere.
class CFestivalInstruction : public CFestivalNight {
 public:
    explicit CFestivalInstruction(IAVManager* manager) : CFestivalNight(effectInstructionMenuFestivalName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void MakeScenery() override;
    void DrawPictures(Canvas& canvas) override;

 private:
    Layer m_panel;
    RemoteKeys m_keys;
};

}  // namespace AVBased
