#pragma once

#include <string>

#include "host/media/picture_reader.h"

/// JPEG files by libjpeg-turbo, which is several times as fast at single ones as FFmpeg's own code.
namespace Nifikral {

/// A whole and healthy file of grey or YCbCr in 8 bits, decoded to BGRA. Null for every other: FFmpeg decodes them, or
/// says what is wrong. `enoughSide`: a longer side of at least this is enough, for a picture that is looked at small;
/// 0: the picture comes as it is.
std::unique_ptr<PictureReader> OpenJpegPicture(std::span<const std::uint8_t> file, int enoughSide = 0);

/// Whether a file begins as one that libjpeg-turbo takes; what follows may be damaged.
bool HasJpegHead(const std::string& path);

/// Writes pictures of BGR0 or of full-range planes. Threads: one at a time.
class JpegWriter {
 public:
    /// For files that are kept; or for pictures that are looked at once, which have to be there at once.
    enum class Care { Kept, Passing };

    /// `sampling`: how the file has the colours: yuv420p, yuv422p or yuv444p. Planes have to come in that format.
    explicit JpegWriter(AVPixelFormat sampling, Care care = Care::Kept);
    ~JpegWriter();
    /// A file with the frame's time and the shape of its pixels.
    PacketPtr Write(const AVFrame& frame);

 private:
    struct Parts;
    std::unique_ptr<Parts> m_parts;
};

}  // namespace Nifikral
