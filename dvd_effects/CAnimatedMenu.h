#pragma once

#include "dvd_effects/CBasedMenu.h"
#include "dvd_effects/animation.h"
#include "dvd_effects/stage.h"

namespace AVBased {

/// The base of the templates that arrange and move their pictures by themselves, in a loop: every frame follows from
/// its place in the loop alone, and the last one leads into the first. "duration" is the length of the loop, in frames;
/// 1 or less makes it 300.
///
/// Pictures whose size "additionSourceSizes" gives have that size, all others the one that the template likes. Sources
/// are opaque unless one of "startTrans", "endTrans" and "fadeSpeeds" is set; then their fades count too.
class CAnimatedMenu : public CBasedMenu {
 public:
    using CBasedMenu::CBasedMenu;

 protected:
    /// A source at the frame in work.
    struct Actor {
        const Layer& picture;
        unsigned index = 0;  ///< among those that have a picture
        double opacity = 1;  ///< what its own fade leaves
        const additionsource_t& source;
        std::vector<Layer>& halves;  ///< the picture at a half, a quarter... of its size, as far as they were needed
    };

    /// Where the frame in work stands in the loop: 0 at its first frame, never 1.
    double Phase() const;
    double Width() const { return MenuSize().width; }
    double Height() const { return MenuSize().height; }
    /// The menu within its margins, less the texts that stand still: of the bands above, below and beside them the
    /// largest; all of it where they leave less than half.
    StageArea Stage() const;
    /// Parts of the menu's width and height, at least a pixel.
    FrameSize PartOfMenu(double across, double down) const;
    /// All sources that have a picture, in their order.
    std::vector<Actor> Actors() const;
    /// How large an actor's picture is shown: as "additionSourceSizes" tells, else `usual` times its size.
    double ScaleOf(const Actor& actor, double usual) const { return HasSizeOf(actor.index) ? 1 : usual; }
    /// Lays an actor's picture with its corners at any places; `opacity` from 0 to 1 is multiplied with its own. A
    /// picture shown small is as smooth as one in its own size. Nothing is drawn outside the window.
    void Show(Canvas& canvas, const Actor& actor, const Placement& placement, double opacity = 1,
              Window window = {}) const;
    /// Lays an actor's picture so that it fills a rectangle of whole pixels, `zoom` (1 or more) times as large as that
    /// takes; what stands out is left out.
    void ShowWithin(Canvas& canvas, const Actor& actor, Window window, double zoom, double opacity = 1) const;

    /// The size that pictures have when none is given for them: a third of the menu.
    virtual FrameSize UsualBox() const;
    FrameSize BoxOf(unsigned index, FrameSize own) const override;
};

}  // namespace AVBased
