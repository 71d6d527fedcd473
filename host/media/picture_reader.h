#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <stdexcept>
#include <vector>

#include "host/media/ffmpeg_handles.h"

/// Pictures in kinds of files that FFmpeg does not read.
namespace Nifikral {

/// A file that cannot be read (on); what hinders it.
class PictureFault : public std::runtime_error {
    using runtime_error::runtime_error;
};

/// A picture with too many pixels to be decoded; how many, as "20000x20000".
class PictureTooLarge : public std::runtime_error {
    using runtime_error::runtime_error;
};

/// Decodes one file. Threads: one at a time.
class PictureReader {
 public:
    static constexpr AVRational timeBase = {1, 1000};
    static constexpr std::int64_t stillDuration = 40;  ///< what a picture lasts that says nothing of it

    virtual ~PictureReader() = default;
    /// The next picture, upright, with its time and duration; null behind the last one. Throws PictureFault.
    virtual FramePtr Next() = 0;
    virtual int Count() const = 0;
    /// How the file has the pictures' colours, where they are handed out in another format.
    virtual AVPixelFormat Coded() const { return AV_PIX_FMT_NONE; }
};

/// How much of a file shows its kind.
constexpr std::size_t pictureHeadBytes = 32;

/// Whether the file that begins like this is for a PictureReader: HEIC and AVIF unless they hold films, and WebP that
/// moves.
bool IsForPictureReader(std::span<const std::uint8_t> head);

/// Throws PictureTooLarge where there are more pixels than FFmpeg decodes of other kinds.
void RequirePixels(long long width, long long height);

/// Throws PictureFault for what cannot be read, and PictureTooLarge.
std::unique_ptr<PictureReader> OpenPictureReader(std::vector<std::uint8_t> file);

}  // namespace Nifikral
