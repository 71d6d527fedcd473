#pragma once

#include <memory>
#include <vector>

#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"

namespace Bench {

using AVBased::CRawVideoFrame;

inline constexpr unsigned frameWidth = 1920, frameHeight = 1080;
inline constexpr unsigned formatPacked = 30, formatPlanar = 0, formatPlanarAlpha = 35;

/// The plane of a pass that means all of them.
inline constexpr unsigned allPlanes = ~0u;

/// Reads, inverts and writes back the bytes of a frame, or of one plane of it, in vectors of 32 bytes without a
/// prefetch: the unit of every figure.
void InPlacePass(CRawVideoFrame& frame, unsigned plane = allPlanes);
void CopyFrame(CRawVideoFrame& to, CRawVideoFrame& from);

/// More frames of one format than any cache holds, each a picture with slopes, edges and noise. Work on one frame after
/// another finds each of them cold.
class FrameRing {
 public:
    explicit FrameRing(unsigned format, unsigned width = frameWidth, unsigned height = frameHeight);
    /// The next frame; every full turn the pictures are renewed first, since effects wear them out.
    CRawVideoFrame& Next();
    /// One frame by itself, its picture renewed and in the cache.
    CRawVideoFrame& Renewed();

 private:
    CRawVideoFrame m_picture, m_single;
    std::vector<std::unique_ptr<CRawVideoFrame>> m_frames;
    std::size_t m_next = 0;
};

/// The ring of a format, made when first asked for.
FrameRing& RingOf(unsigned format);

}  // namespace Bench
