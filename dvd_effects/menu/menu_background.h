#pragma once

#include <functional>
#include <string>

#include "dvd_effects/canvas/compositor.h"
#include "dvd_effects/menu/menu_picture.h"

namespace AVBased {

/// What lies under everything else of a menu: a picture or a video in the middle, as large as its aspect ratio allows,
/// where its mask lets it show, or what the menu paints.
class MenuBackground {
 public:
    /// Both raise the host's errors; an empty path names nothing.
    void Open(IAVManager* manager, const std::string& path);
    void OpenMask(IAVManager* manager, const std::string& path);
    /// Composes it anew for the next frame.
    void Forget();
    bool HasVideo() const { return m_source && !m_source->IsStill(); }
    /// Reads past so many frames of a video; errors are filed.
    void Pass(std::int64_t frames);

    /// Fills a frame with it, in its top-left corner `menu` large. `paint` paints the one of a menu that names none; it
    /// may be empty. Errors are filed.
    void Draw(Canvas& canvas, const FrameKind& kind, FrameSize menu, const std::function<void(Canvas&)>& paint);
    /// Raises "Invalid Param Value" for a menu that is larger than anything is drawn.
    static void RequireSize(FrameSize menu);

 private:
    std::unique_ptr<CRawVideoFrame> Empty(const FrameKind& kind, FrameSize menu) const;
    void Paint(const FrameKind& kind, FrameSize menu, const std::function<void(Canvas&)>& paint);
    void Advance(const FrameKind& kind, FrameSize menu);
    void Place(IRawVideoFrame& frame, FrameSize menu);
    void Lay(IRawVideoFrame& frame, const FrameKind& kind, FrameSize menu);

    SourceOwner m_source;
    FrameOwner m_mask;
    std::unique_ptr<CRawVideoFrame> m_composed;  // null when there is none
    std::unique_ptr<MenuPicture> m_picture;      // of one that has a mask or transparent parts
    ConverterOwner m_converter;                  // of any other
    bool m_isReady = false;
};

}  // namespace AVBased
