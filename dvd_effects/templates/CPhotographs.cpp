#include "dvd_effects/templates/CPhotographs.h"

#include "dvd_effects/canvas/painting.h"
#include "dvd_effects/templates/scenery.h"

namespace AVBased {

CPhotographs::Pose CPhotographs::PoseBetween(const Pose& a, const Pose& b, double part) {
    const auto mixed = [part](double from, double to) { return Mixed(from, to, part); };
    return {{mixed(a.centre.x, b.centre.x), mixed(a.centre.y, b.centre.y)},
            mixed(a.scale, b.scale),
            mixed(a.degrees, b.degrees),
            mixed(a.lift, b.lift),
            mixed(a.opacity, b.opacity)};
}

CPhotographs::Pose CPhotographs::Within(const Region& region, const ShownPicture& picture, Pose pose) const {
    if (HasPlaces()) return pose;
    const auto length = [](double side) { return side < 0 ? -side : side; };
    const double sine = length(Wave(pose.degrees / 360)), cosine = length(Wave(pose.degrees / 360 + 0.25));
    const double width = picture.layer.Width(), height = picture.layer.Height();
    const double across = width * cosine + height * sine, down = width * sine + height * cosine;
    pose.scale = std::min(pose.scale, region.ScaleOf(across, down));
    const auto kept = [](double middle, double begin, double room, double size) {
        return std::clamp(middle, begin + size / 2, std::max(begin + size / 2, begin + room - size / 2));
    };
    pose.centre.x = kept(pose.centre.x, region.left, region.width, across * pose.scale);
    pose.centre.y = kept(pose.centre.y, region.top, region.height, down * pose.scale);
    return pose;
}

void CPhotographs::MakeScenery() { m_shadow = SoftShadow(Kind(), 0); }

void CPhotographs::FinishPicture(Layer& layer, unsigned) const {
    const unsigned border = std::max(1u, std::min(layer.Width(), layer.Height()) / 18);
    layer = Framed(layer, Kind(), border, {250, 247, 240});
}

void CPhotographs::ShowPhotograph(Pile& pile, const ShownPicture& picture, const Pose& pose) const {
    const double width = picture.layer.Width() * pose.scale, height = picture.layer.Height() * pose.scale;
    const double away = std::min(width, height) * (0.025 + 0.14 * pose.lift);
    const double depth = 0.6 * (1 - 0.45 * std::clamp(pose.lift, 0.0, 1.0)) * pose.opacity * picture.opacity;
    const Spot shade{pose.centre.x + away * 0.6, pose.centre.y + away};
    pile.Put(m_shadow, Placement::Turned(shade, width * shadowStretch, height * shadowStretch, pose.degrees),
             ByteOf(depth));
    Show(pile, picture, Placement::Turned(pose.centre, width, height, pose.degrees), pose.opacity);
}

}  // namespace AVBased
