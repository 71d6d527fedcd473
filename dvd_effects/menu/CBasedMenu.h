#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/menu/menu_frames.h"
#include "dvd_effects/menu/menu_records.h"
#include "effects/base/CBasedVideoEffect.h"
#include "effects/base/property_table.h"

namespace AVBased {

/// How a picture of another shape fills its box: as far as its aspect ratio allows, or all of it, with what then stands
/// out on two sides cut off.
enum class PictureFit { Contain, Cover };

/// The base of every menu: a background, pictures and videos ("sources"), and texts over them, composed on each frame
/// that comes. It holds the properties, opens what they name through the host, reads videos frame by frame and counts
/// frames; a template says how large its pictures are, what is done to them once, and how a frame is drawn.
///
/// What a frame lacks because a file, a mask or a text failed is filed, and the rest is still composed. A file that
/// cannot be opened is told once; a video that gives no frame any more keeps showing its last one.
class CBasedMenu : public CBasedVideoImageEffect {
 public:
    /// `manager` is borrowed; without one, opening anything fails.
    CBasedMenu(const char* name, IAVManager* manager);

    void OnSetProperty(const std::string& name, PropertyNode& node) override;
    void InnerProcFrame(ImagePostion* record, int position, IRawVideoFrame* frame) override;

 protected:
    /// A source that has a picture.
    struct ShownSource {
        const additionsource_t& source;
        const Layer& layer;
        bool isOpaque;               ///< whether all of the picture is
        point_t inBox;               ///< where in its box the picture lies
        std::deque<Layer>& smaller;  ///< a place for copies of the picture, kept for as long as it stays the same
    };
    struct Text {
        text_t item;
        Layer layer;
    };

    /// Draws the sources and the texts over the background. What it raises is filed.
    virtual void DrawScene(Canvas& canvas) = 0;
    /// The box of a source whose picture has the size `own`: the one that "additionSourceSizes" gives, else `own`. A
    /// box of 0 or above largestSide is an "Invalid Param Value".
    virtual FrameSize BoxOf(unsigned index, FrameSize own) const;
    virtual PictureFit Fit() const { return PictureFit::Contain; }
    /// Changes a source's picture before it is drawn: once, and each new frame of a video.
    virtual void FinishPicture(Layer&, unsigned /*index*/) const {}
    /// Whether a menu that names no background has one of its own, and paints it: once for every size of frame.
    virtual bool HasOwnBackground() const { return false; }
    virtual void PaintBackground(Canvas&) const {}
    /// Makes what a template draws beside its pictures: before the first frame, and anew when frames or menu change
    /// their size or kind. The background is painted after it.
    virtual void MakeScenery() {}

    /// The frame in work: 1 is the first one. Counts every processed frame; nothing sets it back.
    std::int32_t FrameNumber() const { return std::int32_t(m_frameNumber); }
    /// The size of the menu, which begins at the frame's top-left corner.
    FrameSize MenuSize() const;
    /// What layers of this menu are made for.
    LayerKind Kind() const { return m_kind.Layers(); }
    /// The sources that have a picture, in their order. Valid during DrawScene.
    std::vector<ShownSource> ShownSources() const;
    const std::vector<Text>& Texts() const { return m_texts; }
    /// How many sources there are, with a picture or without.
    unsigned SourceCount() const { return m_sourceCount; }
    /// Whether "additionSourceSizes" reaches as far as a source.
    bool HasSizeOf(unsigned index) const { return std::size_t(index) * 2 + 1 < m_sourceSizes.size(); }
    /// Whether the property of the sources' start positions, or one of their fades, was ever set.
    bool HasPlaces() const { return m_hasPlaces; }
    bool HasFades() const { return m_hasFades; }

    /// Where a source's fade stands: startTrans on the first frame, then |fadeSpeed| nearer to endTrans on each one.
    std::uint8_t OpacityOf(const additionsource_t& source) const;
    /// Where a source's or a text's motion stands.
    point_t PositionOf(const additionsource_t& source) const;
    point_t PositionOf(const text_t& item) const;
    /// Whether a text is shown at the frame in work.
    bool IsShown(const text_t& item) const;
    /// Draws the texts at their places.
    void DrawTexts(Canvas& canvas) const;

 private:
    static const Property<CBasedMenu> properties[18];

    // What the frames of a menu have in common.
    struct FrameKind {
        unsigned format = 0;
        FrameSize size;
        LayerKind Layers() const { return {format == formatRgba32, size.height}; }
        bool operator==(const FrameKind&) const = default;
    };
    // A picture as it is drawn, and what makes it.
    struct Picture {
        explicit Picture(LayerKind kind);
        void MakeMask(IRawVideoFrame& frame, FrameSize size, InstructionSet set);
        // Makes the layer, with the part of the mask that starts at a place of it.
        void Make(IRawVideoFrame& frame, FrameSize size, InstructionSet set, point_t inMask = {});
        void CropTo(FrameSize box);

        LayerMaker maker, maskMaker;
        Layer layer, mask;
        bool isOpaque = false;
        point_t inBox;
        mutable std::deque<Layer> smaller;
    };
    // What setting a list does that one of the parsers takes apart.
    template <int (*parse)(additionsource_t*, const std::string&, unsigned)>
    static void SetList(CBasedMenu& menu, const std::string& list);
    template <int (*parse)(additionsource_t*, const std::string&, unsigned)>
    static void SetFades(CBasedMenu& menu, const std::string& list);
    void OpenBackground(const std::string& path);
    void OpenBackgroundMask(const std::string& path);
    void SetSourceCount(std::int32_t count);
    void ForgetBackground();

    // Opens what is not open yet, all anew for frames of another kind.
    void Prepare(const FrameKind& kind);
    void OpenSources();
    void OpenTexts();
    void OpenText(const std::string& info);
    FrameOwner RenderText(const text_t& item) const;

    void RequireMenuSize() const;
    void DrawBackground(Canvas& canvas);
    std::unique_ptr<CRawVideoFrame> EmptyBackground() const;
    void PaintOwnBackground();
    void AdvanceBackground();
    void PlaceBackground(IRawVideoFrame& frame, FrameSize menu);
    void LayBackground(IRawVideoFrame& frame, FrameSize menu);

    void AdvanceSource(unsigned index);

    IAVManager* m_manager;
    IAVImporter* m_textImporter;
    std::uint32_t m_frameNumber = 0;
    FrameKind m_kind;

    std::int32_t m_width = 0, m_height = 0;
    SourceOwner m_backgroundSource;
    FrameOwner m_backgroundMask;
    std::unique_ptr<CRawVideoFrame> m_background;  // composed; null when there is none
    std::unique_ptr<Picture> m_backgroundPicture;
    ConverterOwner m_backgroundConverter;
    bool m_backgroundReady = false, m_hasScenery = false;

    std::int32_t m_textNumber = 0;
    std::string m_textInfos;
    std::vector<Text> m_texts;
    bool m_textsReady = false;

    unsigned m_sourceCount = 0;
    std::unique_ptr<additionsource_t[]> m_sources;
    std::vector<std::int32_t> m_sourceSizes;
    std::string m_sourcePaths, m_maskPaths;
    std::vector<Picture> m_pictures;
    bool m_sourcesReady = false, m_hasPlaces = false, m_hasFades = false;
};

}  // namespace AVBased
