#pragma once

#include <gst/video/video.h>

#include <optional>

#include "bridges/common/borrowed_frame.h"
#include "host/catalogue/catalogue.h"

/// GStreamer's pictures as the module's frames.
namespace Nifikral::Gst {

/// What an effect takes and gives; the caller owns it. An effect that shows in the alpha channel alone takes no format
/// without one, so that it never silently does nothing.
GstCaps* CapsOf(const EffectInfo& effect);

/// A mapped picture of one of these formats as a frame, in place.
BorrowedFrame FrameOf(GstVideoFrame& picture, int timeStamp);

/// Whether each plane's rows, padding included, lie in the picture's memory and belong to no other plane. Effects may
/// use the padding, so they cannot work on other pictures.
bool PlanesStandAlone(const GstVideoFrame& picture);

/// A copy of a picture whose planes stand alone. Threads: one at a time.
class ScratchPicture {
 public:
    /// Null without memory; valid until the next call or this object's end.
    GstVideoFrame* CopyOf(const GstVideoFrame& picture);

    ScratchPicture() = default;
    ScratchPicture(const ScratchPicture&) = delete;
    ScratchPicture& operator=(const ScratchPicture&) = delete;
    ~ScratchPicture() { Release(); }

 private:
    void Release();

    GstVideoFrame m_picture{};
    bool m_mapped = false;
};

}  // namespace Nifikral::Gst
