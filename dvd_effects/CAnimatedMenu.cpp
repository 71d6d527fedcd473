#include "dvd_effects/CAnimatedMenu.h"

namespace AVBased {

namespace {

constexpr int usualLoop = 300;

}  // namespace

double CAnimatedMenu::Phase() const {
    const int duration = const_cast<CAnimatedMenu*>(this)->GetDuration(), loop = duration > 1 ? duration : usualLoop;
    return double((std::uint32_t(FrameNumber()) - 1) % std::uint32_t(loop)) / loop;
}

std::vector<CAnimatedMenu::Actor> CAnimatedMenu::Actors() const {
    std::vector<Actor> actors;
    for (const Shown& shown : ShownSources()) {
        const double opacity = HasFades() ? OpacityOf(shown.source) / 255.0 : 1;
        actors.push_back({shown.picture, unsigned(actors.size()), opacity, shown.source});
    }
    return actors;
}

void CAnimatedMenu::Show(Canvas& canvas, const Actor& actor, const Placement& placement, double opacity) const {
    const double shown = std::clamp(opacity, 0.0, 1.0) * actor.opacity;
    canvas.LayTransformed(actor.picture, placement, std::uint8_t(shown * 255 + 0.5));
}

FrameSize CAnimatedMenu::UsualBox() const {
    const FrameSize menu = MenuSize();
    return {std::max(1u, menu.width / 3), std::max(1u, menu.height / 3)};
}

FrameSize CAnimatedMenu::BoxOf(unsigned index, FrameSize own) const {
    return HasSizeOf(index) ? CBasedMenu::BoxOf(index, own) : UsualBox();
}

}  // namespace AVBased
