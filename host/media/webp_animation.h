#pragma once

#include "host/media/picture_reader.h"

namespace Nifikral {

bool IsWebpAnimation(std::span<const std::uint8_t> head);

/// Its pictures with their own times, each composed of those before it. Throws PictureFault.
std::unique_ptr<PictureReader> OpenWebpAnimation(std::vector<std::uint8_t> file);

}  // namespace Nifikral
