#pragma once

#include <optional>

#include "dvd_effects/canvas/pile.h"
#include "dvd_effects/menu/CBasedMenu.h"
#include "dvd_effects/templates/moods.h"
#include "dvd_effects/templates/picture_rows.h"
#include "dvd_effects/templates/turns.h"

namespace AVBased {

/// The base of the templates that arrange and move their pictures by themselves, in a loop: every frame follows from
/// its place in the loop alone, and the last one leads into the first. "duration" is the length of the loop, in frames;
/// 1 or less makes it 300.
///
/// Pictures whose size "additionSourceSizes" gives have that size, all others the one that the template likes. Sources
/// are opaque unless one of "startTrans", "endTrans" and "fadeSpeeds" is set; then their fades count too.
///
/// "mood" chooses the colours of what the template paints: its own, light or dark ones.
class CAnimatedMenu : public CBasedMenu {
 public:
    /// `manager` is borrowed; without one, opening anything fails.
    CAnimatedMenu(const char* name, IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;

 protected:
    /// A source at the frame in work.
    struct ShownPicture {
        const Layer& layer;
        bool isOpaque = false;
        unsigned index = 0;  ///< among those that have a picture
        double opacity = 1;  ///< what its own fade leaves
        Spot middle;         ///< of its box, from the box's corner
        const additionsource_t& source;
        std::deque<Layer>& smaller;  ///< the picture at a half, a quarter... of its size, made when needed
        const MenuText* caption;     ///< its name; null: none
        double named = 1;            ///< how far its name shows
    };

    /// Where the frame in work stands in the loop: 0 at its first frame, never 1.
    double Phase() const;
    /// The turns since the loop began of what turns about once in so many frames: whole ones at its end, at least one.
    /// So motion has its pace in loops of any length.
    double Turns(double frames) const;
    double Width() const { return MenuSize().width; }
    double Height() const { return MenuSize().height; }
    /// The menu within its margins, a part of its sides, less the texts that stand still: of the bands above, below and
    /// beside them the largest; all of it where they leave less than half.
    Region FreeRegion(double margin = 0.05) const;
    /// The menu up to its edges and a little away from those texts, for pictures that fill all of it.
    Region StageBesideTexts() const;
    /// Parts of the menu's width and height, at least a pixel.
    FrameSize PartOfMenu(double across, double down) const;
    /// `part` of `of` of the menu in whole pixels, at least one.
    FrameSize FractionOfMenu(unsigned part, unsigned of) const;
    /// How large a picture is shown: as "additionSourceSizes" says, else `usual` times its size.
    double ScaleOf(const ShownPicture& picture, double usual) const { return HasSizeOf(picture.index) ? 1 : usual; }
    /// What a colour of the template becomes in the mood that is set.
    Colour InMood(Colour own) const { return m_colours ? m_colours->Of(own) : own; }
    bool IsLight() const { return m_colours && m_colours->dark.green > 128; }
    /// The colours of that mood; null for the template's own.
    const MoodColours* MoodColoursSet() const { return m_colours; }
    /// The measure of everything that is neither the menu nor a picture: a ninth of the height, of a wide menu.
    double Unit() const { return std::min(Width() / 16, Height() / 9); }
    /// So many units in whole pixels, at least one.
    unsigned Units(double count) const { return unsigned(std::max(1.0, count * Unit() + 0.5)); }
    /// Places for all pictures in rows.
    PictureRows RowsOf(const std::vector<ShownPicture>& pictures, const Region& region, double gap) const;
    /// As large as a picture may become in rows of all of them.
    FrameSize BoxInRows() const;
    /// All sources that have a picture, in their order.
    std::vector<ShownPicture> ShownPictures() const;
    /// Where the middle of a picture that is shown `scale` times its size stands: as its start position
    /// says, or at `usual` when none was ever set.
    Spot PlaceOf(const ShownPicture& picture, Spot usual, double scale = 1) const;
    /// Lays a picture with its corners at any places, and its name on its lower end; `opacity` from 0 to 1 is
    /// multiplied with its own. A picture shown small is as smooth as one in its own size. Nothing is drawn outside the
    /// window.
    void Show(Canvas& canvas, const ShownPicture& picture, const Placement& placement, double opacity = 1,
              const Box& window = everything) const;
    /// The same on a pile.
    void Show(Pile& pile, const ShownPicture& picture, const Placement& placement, double opacity = 1) const;
    /// Lays a picture's name alone on the lower end of that place, as far as the window reaches.
    void ShowCaption(Canvas& canvas, const ShownPicture& picture, const Placement& placement, double opacity = 1,
                     const Box& window = everything) const;
    /// Lays a picture so that it fills a rectangle of whole pixels, `zoom` (1 or more) times as large as that
    /// takes; what stands out is left out.
    void ShowWithin(Canvas& canvas, const ShownPicture& picture, const Box& window, double zoom,
                    double opacity = 1) const;

    /// Lets the pictures stand in for one another: calls show(picture, opacity) for the one whose turn it is, and
    /// before it, within the first `ramp` of a turn, for the one that was before.
    template <class Draw>
    void ShowInTurn(double ramp, Draw show) const {
        const std::vector<ShownPicture> pictures = ShownPictures();
        if (pictures.empty()) return;
        const Turn turn = TurnAt(Phase(), unsigned(pictures.size()));
        const double come = InTurn(Phase(), turn.index, turn.count, ramp);
        if (come < 1) show(pictures[turn.Before()], std::min(1.0, 2 - 2 * come));
        show(pictures[turn.index], come);
    }
    /// The same where each is on its way for longer than its turn: calls show(picture, part, opacity), with the part of
    /// its way, for the one whose turn it is, and after it, within the last `dissolve` of a turn, for the next one. A
    /// single one goes its way there and back.
    template <class Draw>
    void ShowDissolving(double dissolve, Draw show) const {
        std::vector<ShownPicture> pictures = ShownPictures();
        if (pictures.empty()) return;
        if (pictures.size() == 1) return show(pictures[0], ThereAndBack(Phase()), 1.0);
        const Turn turn = TurnAt(Phase(), unsigned(pictures.size()));
        HandOverNames(pictures, turn, dissolve);
        show(pictures[turn.index], (turn.part + dissolve) / (1 + dissolve), 1.0);
        const double begun = turn.part - (1 - dissolve);
        if (begun > 0) show(pictures[turn.Next()], begun / (1 + dissolve), Eased(begun / dissolve));
    }

    /// Lets the name of the one whose turn it is go before the next one's comes, within the last `dissolve` of a turn.
    static void HandOverNames(std::vector<ShownPicture>& pictures, const Turn& turn, double dissolve) {
        if (pictures.size() < 2) return;
        const double begun = (turn.part - (1 - dissolve)) / dissolve;
        pictures[turn.index].named = 1 - Passed(begun, 0, 0.4);
        pictures[turn.Next()].named = Passed(begun, 0.6, 1);
    }

    /// The size that pictures have when none is given for them: a third of the menu. Those that would cover it are
    /// narrower where their shape is, down to three quarters of its height.
    virtual FrameSize UsualBox() const;
    FrameSize BoxOf(unsigned index, FrameSize own) const override;
    bool HasOwnBackground() const override { return true; }
    void FinishBackground(Canvas& canvas) const override;
    /// Fills a background with colours that go over into each other from its top to its bottom.
    void PaintGradient(Canvas& canvas, Colour top, Colour bottom) const;

 private:
    static const Property<CAnimatedMenu> ownProperties[1];

    int Loop() const;
    std::optional<Placement> CaptionPlace(const Layer& caption, const Placement& picture, const Box& window) const;

    const MoodColours* m_colours = nullptr;
};

}  // namespace AVBased
