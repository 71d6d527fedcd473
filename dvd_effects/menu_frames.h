#pragma once

#include "avbase/IImageConverter.h"
#include "avbase/avbase_srcutils/avbase_crawvideoframe.h"
#include "dvd_effects/layer.h"
#include "dvd_effects/menu_records.h"

/// Working frames of the menus: scaling, converting and drawing the host's pictures and texts.
namespace AVBased {

/// The largest width and height of a picture that a menu scales.
inline constexpr unsigned largestSide = 16384;

/// The size of a picture that fills a box as far as its aspect ratio allows: rounded up, so that no line is left where
/// less than a pixel lacks. Never 0, unless either size is.
FrameSize FitInto(FrameSize picture, FrameSize box);
/// The least size of a picture that hides a box and keeps its aspect ratio.
FrameSize FitOver(FrameSize picture, FrameSize box);
/// The size of a text in its box: its own one, made smaller where a side of the box is positive and less.
FrameSize FitText(FrameSize rendered, point_t box);
/// How YUV numbers of a menu with so many rows stand for colours, whatever the size of the pictures on it.
ColourMatrix MatrixOfRows(unsigned rows);

struct FreeConverter {
    void operator()(IImageConverter* converter) const { converter->Free(); }
};
using ConverterOwner = std::unique_ptr<IImageConverter, FreeConverter>;

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
    void Make(IRawVideoFrame& picture, FrameSize size, Layer& layer);

 private:
    bool m_packed;
    ColourMatrix m_matrix;
    PictureConverter m_converter;
    std::unique_ptr<CRawVideoFrame> m_planar;
};

// The operations below answer 1, or 0 after filing their error: 10021008, with "Null Pointer" where a pointer to a
// frame or a converter is null, or with a message told below.

/// Gives a working frame the pixel memory of a size. "Malloc Failed".
int CreateCRawVideoFrame(CRawVideoFrame* frame, int width, int height);

/// Gives a rendered text another colour, in place: every glyph pixel (alpha 255) and its eight neighbours take it and
/// keep their alpha; what lies farther out, as a shadow, stays. "Malloc Failed"; "Get Text Frame Buffer Failed" for a
/// frame that is not of format 30 or has no memory.
int ChangeTextFrame(IRawVideoFrame* frame, unsigned char red, unsigned char green, unsigned char blue);

/// Draws a rendered text at the top-left corner of its item's box; `alpha` runs from 0 (invisible) to 1. The converter
/// takes the text to the size that FitText tells and to format 30 for a packed, 60 for a planar destination; one made
/// for other frames is a "Converter Frame Failed". A destination that a canvas does not take stays as it is.
int DrawText(IRawVideoFrame* destination, IRawVideoFrame* text, const text_t& item, double alpha,
             IImageConverter* converter);

/// Puts a picture into `frame`, made `width` x `height` large, as large as its aspect ratio allows: at the top-left
/// corner when `centred` is 0, else in the middle. The rest is black. A picture that has the frame's format and fits
/// as it is needs no converter; any other is scaled by `converter`, which is created on first use and stays the
/// caller's. "Clone Frame Failed", "Create Image Converter Failed", "Converter Frame Failed".
int AddBlack(IRawVideoFrame* picture, unsigned width, unsigned height, IImageConverter*& converter, int& placedWidth,
             int& placedHeight, CRawVideoFrame* frame, int centred);

}  // namespace AVBased
