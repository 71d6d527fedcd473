#include "host/media/picture_reader.h"

#include <utility>

#include "host/media/heif_picture.h"
#include "host/media/webp_animation.h"

namespace Nifikral {

bool IsForPictureReader(std::span<const std::uint8_t> head) { return IsHeifPicture(head) || IsWebpAnimation(head); }

std::unique_ptr<PictureReader> OpenPictureReader(std::vector<std::uint8_t> file) {
    return IsWebpAnimation(file) ? OpenWebpAnimation(std::move(file)) : OpenHeifPicture(file);
}

}  // namespace Nifikral
