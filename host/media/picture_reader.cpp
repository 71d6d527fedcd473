#include "host/media/picture_reader.h"

#include <string>
#include <utility>

#include "host/media/heif_picture.h"
#include "host/media/webp_animation.h"

namespace Nifikral {

bool IsForPictureReader(std::span<const std::uint8_t> head) { return IsHeifPicture(head) || IsWebpAnimation(head); }

void RequirePixels(long long width, long long height) {
    constexpr long long most = 260'000'000;
    if (width * height > most) throw PictureTooLarge(std::to_string(width) + "x" + std::to_string(height));
}

std::unique_ptr<PictureReader> OpenPictureReader(std::vector<std::uint8_t> file) {
    return IsWebpAnimation(file) ? OpenWebpAnimation(std::move(file)) : OpenHeifPicture(file);
}

}  // namespace Nifikral
