#pragma once

#include <memory>

#include "avbase/IImageConverter.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "effects/base/frame_views.h"

namespace AVBased {

/// A frame's width and height, in pixels.
struct FrameSize {
    unsigned width = 0, height = 0;
    bool operator==(const FrameSize&) const = default;
};
inline FrameSize SizeOf(IRawVideoFrame& frame) {
    FrameSize size;
    frame.GetDimension(&size.width, &size.height);
    return size;
}

/// A picture that can be laid on a frame: four bytes a pixel, the three components of the frame's colours and the
/// coverage (0 lets the frame through, 255 hides it). On a packed frame the components are blue, green and red, on a
/// planar one luma and both chroma, a full sample of each for every pixel: so a layer fits any position of any chroma
/// grid, and whatever changes layers is written once. Colours are not multiplied by the coverage.
class Layer {
 public:
    /// No picture.
    Layer() = default;
    /// Wholly transparent. Raises 10021007 when there is no memory.
    Layer(unsigned width, unsigned height)
        : m_frame(std::make_unique<CRawVideoFrame>(false, formatRgba32, width, height, true)) {}

    explicit operator bool() const { return m_frame != nullptr; }
    unsigned Width() const { return View().width; }
    unsigned Height() const { return View().height; }
    FrameSize Size() const { return {Width(), Height()}; }
    PackedView View() const { return m_frame ? ViewPacked(*m_frame) : PackedView{}; }
    /// The same memory as a frame of format 30, to convert into; null without a picture.
    CRawVideoFrame* Frame() const { return m_frame.get(); }

 private:
    std::unique_ptr<CRawVideoFrame> m_frame;
};

/// How YUV numbers of a menu with so many rows stand for colours, whatever the size of the pictures on it.
ColourMatrix MatrixOfRows(unsigned rows);

/// What the components of a layer stand for.
struct LayerKind {
    bool packed = true;
    unsigned rows = 0;  ///< of the frame that it is laid on
    bool operator==(const LayerKind&) const = default;
};

/// A colour to paint layers with.
struct Colour {
    std::uint8_t red = 0, green = 0, blue = 0, alpha = 255;
};
/// The pixel that shows a colour: as it is on a packed layer, in limited range by the matrix of MatrixOfRows on a
/// planar one.
std::uint32_t PixelOf(LayerKind kind, Colour colour);

/// Whether all pixels of a layer are.
bool IsOpaque(const Layer& layer);

/// The part of a layer that begins at (x, y), which must lie within it.
Layer Cropped(const Layer& layer, unsigned x, unsigned y, FrameSize size);

/// Lets a layer show only where the mask does: multiplies its coverage by the coverage of the mask at (x, y) + its own
/// place; where the mask has no pixel, nothing is left. The mask's colours do not count.
void MultiplyCoverage(const Layer& layer, const Layer& mask, std::int32_t x = 0, std::int32_t y = 0);

/// Turns a packed picture into a mask, in place: its brightness (the mean of the three colours) times its alpha becomes
/// its coverage.
void BrightnessToCoverage(const Layer& picture);

}  // namespace AVBased
