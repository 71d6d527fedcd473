#pragma once

#include <memory>
#include <string>
#include <vector>

#include "dvd_effects/compositor.h"
#include "dvd_effects/menu_frames.h"
#include "dvd_effects/menu_records.h"
#include "effects/CBasedVideoEffect.h"

namespace AVBased {

/// The base of every menu: a background, pictures and videos ("sources"), and texts over them, composed on each frame
/// that comes. It holds the properties, opens what they name through the host, reads videos frame by frame and counts
/// frames; a template says where a source is at a frame and how it is drawn.
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
    /// The frame in work: 1 is the first one. Counts every processed frame; nothing sets it back.
    std::int32_t FrameNumber() const { return std::int32_t(m_frameNumber); }
    /// Where a source's fade stands: startTrans on the first frame, then |fadeSpeed| nearer to endTrans on each one.
    std::uint8_t OpacityOf(const additionsource_t& source) const;
    /// Where a source's motion stands.
    point_t PositionOf(const additionsource_t& source) const;

    /// Draws a source that has a picture. `picture` fills its box as far as its aspect ratio allows, `inBox` is where
    /// in the box it then lies.
    virtual void DrawSource(Canvas& canvas, const additionsource_t& source, const Layer& picture, point_t inBox) = 0;

 private:
    struct Property;
    static const Property properties[18];

    // What the frames of a menu have in common.
    struct FrameKind {
        unsigned format = 0;
        FrameSize size;
        bool operator==(const FrameKind&) const = default;
    };
    // A picture as it is drawn, and what makes it.
    struct Picture {
        explicit Picture(const FrameKind& kind);
        void MakeMask(IRawVideoFrame& frame, FrameSize size);
        // Makes the layer, with the part of the mask that starts at a place of it.
        void Make(IRawVideoFrame& frame, FrameSize size, std::int32_t xInMask = 0, std::int32_t yInMask = 0);

        LayerMaker maker, maskMaker;
        Layer layer, mask;
        point_t inBox;
    };
    struct Text {
        text_t item;
        Layer layer;
    };

    void OpenBackground(const std::string& path);
    void OpenBackgroundMask(const std::string& path);
    void SetSourceCount(std::int32_t count);
    void ForgetBackground();

    // Opens what is not open yet, all anew for frames of another kind.
    void Prepare(const FrameKind& kind);
    void OpenSources();
    void OpenTexts();
    void OpenText(const std::string& info);

    FrameSize MenuSize() const;
    void DrawBackground(Canvas& canvas);
    void AdvanceBackground();
    void PlaceBackground(IRawVideoFrame& frame, FrameSize menu);
    void LayBackground(IRawVideoFrame& frame, FrameSize menu);

    void DrawSources(Canvas& canvas);
    void AdvanceSource(unsigned index);
    FrameSize BoxOf(unsigned index, FrameSize own) const;

    void DrawTexts(Canvas& canvas);

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
    bool m_backgroundReady = false;

    std::int32_t m_textNumber = 0;
    std::string m_textInfos;
    std::vector<Text> m_texts;
    bool m_textsReady = false;

    unsigned m_sourceCount = 0;
    std::unique_ptr<additionsource_t[]> m_sources;
    std::vector<std::int32_t> m_sourceSizes;
    std::string m_sourcePaths, m_maskPaths;
    std::vector<Picture> m_pictures;
    bool m_sourcesReady = false;
};

}  // namespace AVBased
