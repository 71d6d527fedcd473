#pragma once

#include "dvd_effects/templates/CAnimatedMenu.h"
#include "dvd_effects/templates/picture_mount.h"
#include "dvd_effects/templates/remote_keys.h"

namespace AVBased {

inline constexpr char effectSubMenuCommonName[] = "submenu_common";
inline constexpr char effectInstructionMenuCommonName[] = "instructionmenu_common";

/// What the menus below the common one share: pictures that fill their size, with thin white rims, over a plain blue
/// grey where no background is named. From above the beam of a projector, with dust in it, falls on the one whose turn
/// it is.
class CCommonSheet : public CAnimatedMenu {
 public:
    using CAnimatedMenu::CAnimatedMenu;

 protected:
    PictureFit Fit() const override { return PictureFit::Cover; }
    void FinishPicture(Layer& picture, unsigned index) const override;
    void MakeScenery() override;
    void PaintBackground(Canvas& canvas) const override;
    /// The beam on a place of this size.
    void DrawBeam(Canvas& canvas, Spot at, double width, double height) const;

 private:
    mutable PictureMounts m_mounts;
    Layer m_beam, m_dust;
};

/// The sub-menu: pictures in rows, below each a strip for its number and title; each in turn is bordered and comes a
/// little nearer. "startPositions" places them elsewhere.
class CCommonSub : public CCommonSheet {
 public:
    explicit CCommonSub(IAVManager* manager) : CCommonSheet(effectSubMenuCommonName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void MakeScenery() override;
    void DrawScene(Canvas& canvas) override;

 private:
    double StripHeight() const { return 0.5 * Unit(); }
    PictureGrid Rows(unsigned count) const;
    void DrawCard(Canvas& canvas, const ShownPicture& picture, Spot at, double lit) const;

    Layer m_strip, m_accent;
};

/// The instruction menu: a light panel leaves room for texts from a fifteenth of the width and an eighth of the height
/// on, up to the middle, and shows the keys of a remote control below them; on its right one picture comes slowly
/// nearer and goes, and where there are several, each has its turn there. "startPositions" places them elsewhere.
class CCommomInstrction : public CCommonSheet {
 public:
    explicit CCommomInstrction(IAVManager* manager) : CCommonSheet(effectInstructionMenuCommonName, manager) {}

 protected:
    FrameSize UsualBox() const override;
    void MakeScenery() override;
    void DrawScene(Canvas& canvas) override;

 private:
    Layer m_panel;
    RemoteKeys m_keys;
};

}  // namespace AVBased
