#pragma once

#include <array>
#include <cstddef>
#include <memory>
#include <span>

#include "avbase/IRawVideoFrame.h"

namespace Nifikral {

/// A plane in memory of another program: pitch x rows bytes may be touched.
struct BorrowedPlane {
    unsigned char* data = nullptr;
    unsigned rowBytes = 0, pitch = 0, rows = 0;
};

/// A picture of another program as the module sees it, never a copy. Chroma sizes are the program's, so an odd
/// picture's last column may have its own chroma sample. Cheap enough to be made for each frame.
class BorrowedFrame final : public AVBased::IRawVideoFrame {
 public:
    /// `format` is a code of pixel_formats.h, `planes` are as many as it has (4 at most); their memory is borrowed for
    /// this object's life.
    BorrowedFrame(unsigned format, unsigned width, unsigned height, std::span<const BorrowedPlane> planes,
                  int timeStamp = 0);

    unsigned GetPixelFormat() override { return m_state.format; }
    void GetDimension(unsigned* width, unsigned* height) override;
    int GetTimeStamp() override { return m_state.timeStamp; }
    void SetTimeStamp(int timeStamp) override { m_state.timeStamp = timeStamp; }
    bool IsTopDown() override { return true; }
    bool IsPacked() override { return m_state.planeCount == 1; }
    unsigned GetBufferCount() override { return m_state.planeCount; }
    unsigned GetTotalSize() override;
    unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) override;
    /// Of square pixels, unless SetDAR says otherwise.
    double GetDAR() override { return m_state.displayAspectRatio; }
    void SetDAR(double displayAspectRatio) { m_state.displayAspectRatio = displayAspectRatio; }
    void CropRightAndBottom(unsigned right, unsigned bottom) override;
    /// Ends a clone; a borrowed frame belongs to whoever made it.
    void Free() override;
    unsigned GetDuration() override { return m_state.duration; }
    void SetDuration(unsigned duration) override { m_state.duration = duration; }
    unsigned GetDuplicatedCount(unsigned* total) override;
    void SetDuplicatedCount(unsigned count, unsigned total) override;
    /// A deep copy that owns its planes; null, with 10021007 filed, when there is no memory.
    IRawVideoFrame* Clone() override;
    bool CanBeModified() override { return m_state.canBeModified; }
    void SetCanBeModified(bool canBeModified) override { m_state.canBeModified = canBeModified; }
    bool IsInterlaced() override { return m_state.interlaced; }
    void SetInterlaced(bool interlaced) override { m_state.interlaced = interlaced; }
    bool IsTopFieldFirst() override { return m_state.topFieldFirst; }
    void SetTopFieldFirst(bool topFieldFirst) override { m_state.topFieldFirst = topFieldFirst; }
    void SetBorderData(void* data, int size) override;
    void GetBorderData(void** data, int* size) override;

 private:
    // All of a frame but the memory of a clone's planes.
    struct State {
        unsigned format = 0, width = 0, height = 0;
        std::array<BorrowedPlane, 4> planes;
        unsigned planeCount = 0;
        int timeStamp = 0;
        double displayAspectRatio = 0;
        unsigned duration = 1, duplicatedCount = 0, duplicatedTotal = 0;
        unsigned cropRight = 0, cropBottom = 0;
        bool canBeModified = true, interlaced = false, topFieldFirst = false;
        void* borderData = nullptr;
        int borderSize = 0;
    };

    explicit BorrowedFrame(const State& original);
    static std::size_t Bytes(const BorrowedPlane& plane) { return std::size_t(plane.pitch) * plane.rows; }
    // What a crop leaves of a plane.
    BorrowedPlane Cropped(unsigned plane) const;

    State m_state;
    std::unique_ptr<unsigned char[]> m_memory;
};

}  // namespace Nifikral
