#pragma once

#include "avbase/IMenuPlayback.h"
#include "dvd_effects/menu/menu_background.h"
#include "dvd_effects/menu/menu_motion.h"
#include "dvd_effects/menu/menu_sources.h"
#include "dvd_effects/menu/menu_texts.h"
#include "dvd_effects/menu/resting_places.h"
#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/property_table.h"

namespace AVBased {

/// The base of every menu: a background, pictures and videos ("sources"), and texts over them, composed on each frame
/// that comes. It holds the properties, opens what they name through the host, reads videos frame by frame and counts
/// frames; a template says how large its pictures are, what is done to them once, and how a frame is drawn.
///
/// What a frame lacks because a file, a mask or a text failed is filed, and the rest is still composed.
class CBasedMenu : public CBasedVideoImageEffect, public IMenuPlaces, public IMenuPlayback, protected PictureRules {
 public:
    /// `manager` is borrowed; without one, opening anything fails.
    CBasedMenu(const char* name, IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

    bool Watch(unsigned first, unsigned end) override;
    bool GetPlace(int kind, unsigned index, MenuPlace* place) override;
    double GetCover(int kind, int left, int top, int width, int height) override;
    bool GoTo(unsigned frame) override;

 protected:
    /// Draws the sources and the texts over the background. What it raises is filed. It may be called for any frame
    /// number, in any order, with a canvas that only watches.
    virtual void DrawScene(Canvas& canvas) = 0;
    /// The one that "additionSourceSizes" gives, else its own.
    FrameSize BoxOf(unsigned index, FrameSize own) const override { return m_sources.SizeOf(index, own); }
    /// Whether a menu that names no background has one of its own, and paints it: once for every size of frame.
    virtual bool HasOwnBackground() const { return false; }
    virtual void PaintBackground(Canvas&) const {}
    /// Changes such a background once it is painted.
    virtual void FinishBackground(Canvas&) const {}
    /// Makes what a template draws beside its pictures: before the first frame, and anew when frames or menu change
    /// their size or kind. The background is painted after it.
    virtual void MakeScenery() {}

    /// The frame in work: 1 is the first one. Counts every processed frame.
    std::uint32_t FrameNumber() const { return m_frameNumber; }
    /// The size of the menu, which begins at the frame's top-left corner.
    FrameSize MenuSize() const;
    /// What layers of this menu are made for.
    LayerKind Kind() const { return m_kind.Layers(); }
    /// The sources that have a picture, in their order. Valid during DrawScene.
    std::vector<ShownSource> ShownSources() const { return m_sources.Shown(); }
    const std::vector<MenuText>& Texts() const { return m_texts.All(); }
    /// The name of a source; null where it has none.
    const MenuText* CaptionOf(unsigned source) const { return m_texts.CaptionOf(source); }
    /// How many sources there are, with a picture or without.
    unsigned SourceCount() const { return m_sources.Count(); }
    /// Whether "additionSourceSizes" has an entry for a source.
    bool HasSizeOf(unsigned index) const { return m_sources.HasSizeOf(index); }
    /// Whether the property of the sources' start positions, or one of their fades, was ever set.
    bool HasPlaces() const { return m_hasPlaces; }
    bool HasFades() const { return m_hasFades; }
    /// Makes the pictures, the background and what the template draws beside them anew for the next frame.
    void MakeAnew() {
        ForgetBackground();
        m_sources.Forget();
    }
    /// Draws the texts at their places.
    void DrawTexts(Canvas& canvas) const { m_texts.Draw(canvas, m_frameNumber); }

 private:
    static const Property<CBasedMenu> properties[18];

    template <std::int32_t CBasedMenu::*side>
    static void SetSide(CBasedMenu& menu, std::int32_t value);
    template <MenuSources::ParseList parse>
    static void SetList(CBasedMenu& menu, const std::string& list);
    template <MenuSources::ParseList parse>
    static void SetFades(CBasedMenu& menu, const std::string& list);
    // Also what the template draws beside its pictures.
    void ForgetBackground();
    std::vector<RestingPlaces::Subject> Subjects() const;

    IAVManager* m_manager;
    IAVImporter* m_textImporter;
    std::uint32_t m_frameNumber = 0;
    FrameKind m_kind;
    std::int32_t m_width = 0, m_height = 0;
    MenuBackground m_background;
    MenuSources m_sources;
    MenuTexts m_texts;
    std::optional<RestingPlaces> m_places;
    bool m_hasScenery = false, m_hasPlaces = false, m_hasFades = false;
};

}  // namespace AVBased
