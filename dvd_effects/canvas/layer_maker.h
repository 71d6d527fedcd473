#pragma once

#include <memory>

#include "avbase/IImageConverter.h"
#include "dvd_effects/canvas/layer.h"
#include "effects/base/instruction_sets.h"

/// Scaling and converting the host's pictures into layers.
namespace AVBased {

/// The largest width and height of a picture that a menu scales.
inline constexpr unsigned largestSide = 16384;

/// The size of a picture that fills a box as far as its aspect ratio allows: rounded up, so that no line is left where
/// less than a pixel is missing. Never 0, unless either size is.
FrameSize FitInto(FrameSize picture, FrameSize box);
/// The same, rounded down.
FrameSize FitWithin(FrameSize picture, FrameSize box);
/// The least size of a picture that hides a box and keeps its aspect ratio.
FrameSize FitOver(FrameSize picture, FrameSize box);

struct FreeConverter {
    void operator()(IImageConverter* converter) const { converter->Free(); }
};
using ConverterOwner = std::unique_ptr<IImageConverter, FreeConverter>;

/// A frame's shape, as a converter is asked for it.
ImageShape ShapeOf(IRawVideoFrame& frame, ColourMatrix matrix = ColourMatrix::Automatic);
/// Raises "Create Image Converter Failed" with `line`.
ConverterOwner MakeConverter(const ImageShape& from, const ImageShape& to, int line);
/// A frame of four full planes, for a converter to fill; InterleaveInto makes it a layer of the same size.
std::unique_ptr<CRawVideoFrame> PlanarLayerFrame(FrameSize size);
void InterleaveInto(const Layer& layer, CRawVideoFrame& planar, InstructionSet set);

/// Converts and scales frames, with one converter for as long as their sizes and formats stay.
class PictureConverter {
 public:
    /// Raises "Create Image Converter Failed" or "Converter Frame Failed".
    void Convert(IRawVideoFrame& from, IRawVideoFrame& to, ColourMatrix matrix);

 private:
    ConverterOwner m_converter;
    ImageShape m_from, m_to;
};

/// Makes layers out of the host's frames, again and again into the same memory where sizes stay.
class LayerMaker {
 public:
    explicit LayerMaker(LayerKind kind) : m_packed(kind.packed), m_matrix(MatrixOfRows(kind.rows)) {}

    /// Makes `layer` show the picture, scaled to `size`. Raises as PictureConverter does, "Invalid Param Value" for a
    /// size of 0 or above largestSide, 10021007 when there is no memory.
    void Make(IRawVideoFrame& picture, FrameSize size, Layer& layer, InstructionSet set);

 private:
    bool m_packed;
    ColourMatrix m_matrix;
    PictureConverter m_converter;
    std::unique_ptr<CRawVideoFrame> m_planar;
};

}  // namespace AVBased
