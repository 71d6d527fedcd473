#pragma once

#include "host/media/picture_reader.h"

namespace Nifikral {

/// HEIC or AVIF with a still in it; those of films are for FFmpeg.
bool IsHeifPicture(std::span<const std::uint8_t> head);

/// The file's main picture in RGB, with alpha where it has any, in 8 bits a sample or 16. Throws PictureFault.
std::unique_ptr<PictureReader> OpenHeifPicture(std::span<const std::uint8_t> file);

}  // namespace Nifikral
