#pragma once

#include "avbase/IRawVideoFrame.h"
#include "host/media/ffmpeg_handles.h"

namespace Nifikral {

/// An FFmpeg picture as the module sees it: the picture's own planes and line sizes, never a copy. Chroma sizes are as
/// FFmpeg has them, rounded up, so that an odd picture's last column has its chroma sample.
class FrameAdapter final : public AVBased::IRawVideoFrame {
 public:
    /// Borrows `frame`, which must be in a state that PrepareForEffects leaves, for this object's life.
    FrameAdapter(AVFrame& frame, unsigned formatCode, int timeStamp);
    /// Owns `frame`, and copies it first where its planes are not as the module sees planes. It may be read; where
    /// others hold the same picture, as decoders do, CanBeModified() is false and only Clone() gives one to change.
    FrameAdapter(FramePtr frame, unsigned formatCode, int timeStamp);

    unsigned GetPixelFormat() override { return m_formatCode; }
    void GetDimension(unsigned* width, unsigned* height) override;
    int GetTimeStamp() override { return m_timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_timeStamp = timeStamp; }
    bool IsTopDown() override { return true; }
    bool IsPacked() override { return GetBufferCount() == 1; }
    unsigned GetBufferCount() override;
    unsigned GetTotalSize() override;
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override;
    double GetDAR() override;
    void CropRightAndBottom(unsigned right, unsigned bottom) override;
    void Free() override { delete this; }
    unsigned GetDuration() override { return m_duration; }
    void SetDuration(unsigned duration) override { m_duration = duration; }
    unsigned GetDuplicatedCount(unsigned* total) override;
    void SetDuplicatedCount(unsigned count, unsigned total) override;
    /// A deep copy that owns its planes; null, with 10021007 filed, when there is no memory.
    IRawVideoFrame* Clone() override;
    bool CanBeModified() override { return m_canBeModified; }
    void SetCanBeModified(bool canBeModified) override { m_canBeModified = canBeModified; }
    bool IsInterlaced() override { return m_frame->interlaced_frame; }
    void SetInterlaced(bool interlaced) override { m_frame->interlaced_frame = interlaced; }
    bool IsTopFieldFirst() override { return m_frame->top_field_first; }
    void SetTopFieldFirst(bool topFieldFirst) override { m_frame->top_field_first = topFieldFirst; }
    void SetBorderData(void* data, int size) override;
    void GetBorderData(void** data, int* size) override;

 private:
    FramePtr m_owned;
    AVFrame* m_frame;
    unsigned m_formatCode;
    int m_timeStamp;
    unsigned m_duration = 1, m_duplicatedCount = 0, m_duplicatedTotal = 0;
    unsigned m_cropRight = 0, m_cropBottom = 0;
    bool m_canBeModified = true;
    void* m_borderData = nullptr;
    int m_borderSize = 0;
};

/// Makes a picture fit to be changed in place. Decoders keep their reference pictures, so one that is shared is copied
/// first; so is one whose rows run upwards in memory, or whose padding is not its own. Behind each row comes the next
/// row's first sample, padding or not.
void PrepareForEffects(FramePtr& frame);

}  // namespace Nifikral
