#include "dvd_effects/templates/mounts.h"

namespace AVBased {

void Mounts::SetIn(const Mount& mount, Layer& picture) {
    const Layer& frame = mount.frame;
    Layer set = Cropped(frame, 0, 0, {frame.Width(), frame.Height()});
    MultiplyCoverage(picture, mount.shape);
    LayOver(set, picture, (frame.Width() - picture.Width()) / 2, (frame.Height() - picture.Height()) / 2);
    picture = std::move(set);
}

}  // namespace AVBased
