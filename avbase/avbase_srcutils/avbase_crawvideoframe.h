#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "avbase/IRawVideoFrame.h"

namespace AVBased {

/// Fills four lists with one entry for each plane of a format at a size: rows, row lengths in bytes, pixel groupings
/// (pixels a group x 65536 + bytes a group) and vertical sub-sampling factors. `planeCount` is the number of colour
/// components; a packed format still has one plane. Raises 10021010 for an unknown format.
void GetImageParameters(unsigned format, unsigned width, unsigned height, bool& packed, unsigned& planeCount,
                        std::vector<unsigned>& rows, std::vector<unsigned>& rowBytes, std::vector<unsigned>& grouping,
                        std::vector<unsigned>& verticalSubsampling);

/// The module's own frame. Rows and planes start at multiples of 64 bytes.
class CRawVideoFrame : public IRawVideoFrame {
 public:
    /// A plane: its place in the frame's memory and its whole, uncropped size.
    struct FrameBuffer {
        unsigned char* data = nullptr;
        unsigned rows = 0, rowBytes = 0;
        unsigned pixelsPerGroup = 1, bytesPerGroup = 1;
        unsigned verticalSubsampling = 1;
        unsigned pitch = 0;
    };

    /// Width and height in pixels. Plane memory starts as zeros. `flag` is kept for the host and reported nowhere.
    /// Raises 10021010 for an unknown format, 10021007 when there is no memory.
    CRawVideoFrame(bool flag, unsigned format, unsigned width, unsigned height, bool topDown);
    CRawVideoFrame& operator=(const CRawVideoFrame&) = delete;

    unsigned GetPixelFormat() override { return m_format; }
    void GetDimension(unsigned* width, unsigned* height) override;
    int GetTimeStamp() override { return m_attributes.timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_attributes.timeStamp = timeStamp; }
    bool IsTopDown() override { return m_attributes.topDown; }
    bool IsPacked() override { return m_packed; }
    unsigned GetBufferCount() override { return static_cast<unsigned>(m_planes.size()); }
    unsigned GetTotalSize() override { return GetRequireSize(); }
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override;
    double GetDAR() override { return m_attributes.displayAspectRatio; }
    void CropRightAndBottom(unsigned right, unsigned bottom) override;
    void Free() override { delete this; }
    unsigned GetDuration() override { return m_attributes.duration; }
    void SetDuration(unsigned duration) override { m_attributes.duration = duration; }
    unsigned GetDuplicatedCount(unsigned* total) override;
    void SetDuplicatedCount(unsigned count, unsigned total) override;
    IRawVideoFrame* Clone() override;
    bool CanBeModified() override { return m_attributes.canBeModified; }
    void SetCanBeModified(bool canBeModified) override { m_attributes.canBeModified = canBeModified; }
    bool IsInterlaced() override { return m_attributes.interlaced; }
    void SetInterlaced(bool interlaced) override { m_attributes.interlaced = interlaced; }
    bool IsTopFieldFirst() override { return m_attributes.topFieldFirst; }
    void SetTopFieldFirst(bool topFieldFirst) override { m_attributes.topFieldFirst = topFieldFirst; }
    void SetBorderData(void* data, int size) override;
    void GetBorderData(void** data, int* size) override;

    /// Ends any crop; a new size lays the planes out afresh (10021007 when there is no memory: the frame stays as it
    /// was), the same size keeps them.
    void SetSize(unsigned width, unsigned height);
    void SetDAR(double displayAspectRatio) { m_attributes.displayAspectRatio = displayAspectRatio; }
    void SetTopDown(bool topDown) { m_attributes.topDown = topDown; }
    unsigned char* GetBuffer(unsigned plane) { return GetBuffer(plane, nullptr, nullptr, nullptr); }
    /// The sum of pitch x rows over all planes, in bytes.
    unsigned GetRequireSize() const;

 private:
    // What travels with the picture unchanged, from a frame to its clone.
    struct Attributes {
        bool flag = false, topDown = true, canBeModified = true, interlaced = false, topFieldFirst = false;
        int timeStamp = 0;
        unsigned duration = 0, duplicatedCount = 0, duplicatedTotal = 0;
        double displayAspectRatio = 0;
        void* borderData = nullptr;
        int borderSize = 0;
        unsigned cropRight = 0, cropBottom = 0;
    };
    struct FreeAligned {
        void operator()(unsigned char* memory) const;
    };

    CRawVideoFrame(const CRawVideoFrame& other);
    // Gives the planes memory for a picture of this size, its bytes not yet set.
    void LayOut(unsigned width, unsigned height);

    Attributes m_attributes;
    unsigned m_format, m_width = 0, m_height = 0;
    bool m_packed = true;
    std::vector<FrameBuffer> m_planes;
    std::unique_ptr<unsigned char[], FreeAligned> m_memory;
};

}  // namespace AVBased
