#pragma once

namespace AVBased {

/// An uncompressed picture in one of the formats of PixelFormat, held as one packed plane or as several planes.
///
/// Ownership: whoever received the frame from Clone() or from a factory releases it with Free(). Plane memory belongs
/// to the frame. Threads: one thread at a time.
class IRawVideoFrame {
 public:
    virtual unsigned GetPixelFormat() = 0;
    /// The picture's size in pixels, after cropping. Both pointers may be null.
    virtual void GetDimension(unsigned* width, unsigned* height) = 0;
    /// The time stamp, in the host's unit: the one that effects count their "duration" in.
    virtual int GetTimeStamp() = 0;
    virtual void SetTimeStamp(int timeStamp) = 0;
    virtual bool IsTopDown() = 0;
    virtual bool IsPacked() = 0;
    /// The number of planes: 1 to 4.
    virtual unsigned GetBufferCount() = 0;
    /// The sum of pitch x rows over all planes, in bytes.
    virtual unsigned GetTotalSize() = 0;
    /// A plane's first byte, with the row length in bytes, the distance between the starts of two rows in bytes and the
    /// number of rows; each of the three pointers may be null. pitch x rows bytes may be touched, the first rowBytes of
    /// each row are picture. A plane that does not exist gives null (10021000) and zeros.
    virtual unsigned char* GetBuffer(unsigned plane, unsigned* rowBytes, unsigned* pitch, unsigned* rows) = 0;
    /// The display aspect ratio, width over height; 0 when unknown.
    virtual double GetDAR() = 0;
    /// Hides `right` columns and `bottom` rows (in pixels of the whole picture) from GetDimension and GetBuffer,
    /// replacing an earlier crop; values beyond the picture hide all of it.
    virtual void CropRightAndBottom(unsigned right, unsigned bottom) = 0;
    virtual void Free() = 0;
    virtual unsigned GetDuration() = 0;
    virtual void SetDuration(unsigned duration) = 0;
    /// How often the host shows this frame again, and a second number of the host's own (null: not wanted).
    virtual unsigned GetDuplicatedCount(unsigned* total) = 0;
    virtual void SetDuplicatedCount(unsigned count, unsigned total) = 0;
    /// A new frame with the same format, size, flags and times and a copy of every plane; null on failure (10021007).
    virtual IRawVideoFrame* Clone() = 0;
    virtual bool CanBeModified() = 0;
    virtual void SetCanBeModified(bool canBeModified) = 0;
    virtual bool IsInterlaced() = 0;
    virtual void SetInterlaced(bool interlaced) = 0;
    virtual bool IsTopFieldFirst() = 0;
    virtual void SetTopFieldFirst(bool topFieldFirst) = 0;
    /// Data of the host's that travels with the frame; borrowed, never interpreted. `size` in bytes.
    virtual void SetBorderData(void* data, int size) = 0;
    virtual void GetBorderData(void** data, int* size) = 0;
    virtual ~IRawVideoFrame() = default;
};

}  // namespace AVBased
