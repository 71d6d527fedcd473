#pragma once

#include <optional>
#include <string>

#include "host/media/ffmpeg_handles.h"
#include "host/media/matrix_change.h"
#include "host/standins/ffmpeg_formats.h"

/// Which layouts a picture passes through on its way from the decoder to the encoder.
namespace Nifikral {

/// Full-range twins (yuvj420p and so on) become their plain format; `fullRange` is set for them.
AVPixelFormat PlainFormat(AVPixelFormat format, bool& fullRange);
/// A picture's layout and colours under plain formats.
PictureShape ShapeOf(const AVFrame& frame);

bool HasAlpha(AVPixelFormat format);
bool IsRgb(AVPixelFormat format);
/// Bits of the deepest component.
int Depth(AVPixelFormat format);

/// What "--format" names: a pixel format code or an FFmpeg format that has one. Throws a usage error otherwise.
unsigned ParseFormat(const std::string& text);

/// The code of the layout in which effects see pictures of `format`: its own, or the nearest that they know.
unsigned EffectFormat(AVPixelFormat format, bool withAlpha);
/// The layout to hand to the encoder when it takes any: the source's own where that has room for what effects make.
AVPixelFormat OutputFormat(AVPixelFormat source);

/// Converts pictures of one run. What is deeper than 8 bits a sample is dithered, by a pattern that depends on the
/// place alone. Threads: one at a time.
class PictureConverter {
 public:
    /// Where `to` names no matrix, YUV stays as it is coded and RGB takes the usual one.
    explicit PictureConverter(const PictureShape& to) : m_to(to) {}
    /// Leaves a picture as it is that has the wanted shape already; otherwise replaces it.
    void Convert(FramePtr& frame);

 private:
    PictureShape m_from, m_to;
    ScalerPtr m_scaler;
    std::optional<MatrixChange> m_matrixChange;  // of what the scaler makes
};

/// Lays a picture with alpha over black, in place. Knows the effects' three formats with alpha.
void LayOverBlack(AVFrame& frame);

}  // namespace Nifikral
