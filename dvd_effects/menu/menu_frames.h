#pragma once

#include "dvd_effects/canvas/layer_maker.h"
#include "dvd_effects/menu/menu_records.h"

/// Working frames of the menus, and drawing the host's texts.
namespace AVBased {

/// The size of a text in its box: its own one, made smaller where a side of the box is positive and less.
FrameSize FitText(FrameSize rendered, point_t box);
// The operations below return 1, or 0 after filing their error: 10021008, with "Null Pointer" where a pointer to a
// frame or a converter is null, or with a message given below.

/// Gives a working frame the pixel memory of a size. "Malloc Failed".
int CreateCRawVideoFrame(CRawVideoFrame* frame, int width, int height);

/// Gives a rendered text another colour, in place: every glyph pixel (alpha 255) and its eight neighbours take it and
/// keep their alpha; what lies farther out, as a shadow, stays. "Malloc Failed"; "Get Text Frame Buffer Failed" for a
/// frame that is not of format 30 or has no memory.
int ChangeTextFrame(IRawVideoFrame* frame, unsigned char red, unsigned char green, unsigned char blue);

/// Draws a rendered text at the top-left corner of its item's box; `alpha` runs from 0 (invisible) to 1. The converter
/// scales the text to the size that FitText returns and converts it to format 30 for a packed, 60 for a planar
/// destination; one made for other frames is a "Converter Frame Failed". A destination that a canvas does not take
/// stays as it is.
int DrawText(IRawVideoFrame* destination, IRawVideoFrame* text, const text_t& item, double alpha,
             IImageConverter* converter);

/// Puts a picture into `frame`, made `width` x `height` large, as large as its aspect ratio allows: at the top-left
/// corner when `centred` is 0, else in the middle. The rest is black. A picture that has the frame's format and fits
/// as it is needs no converter; any other is scaled by `converter`, which is created on first use and stays the
/// caller's. "Clone Frame Failed", "Create Image Converter Failed", "Converter Frame Failed".
int AddBlack(IRawVideoFrame* picture, unsigned width, unsigned height, IImageConverter*& converter, int& placedWidth,
             int& placedHeight, CRawVideoFrame* frame, int centred);

}  // namespace AVBased
