#include "dvd_effects/templates/CAnimatedMenu.h"

#include <algorithm>
#include <cmath>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr int usualLoop = 300;

double Length(Spot from, Spot to) { return std::hypot(to.x - from.x, to.y - from.y); }

// The picture itself, or the halved one that is still as large as it is to be shown: a pixel of the frame takes only
// four of a picture's, and so none may be left out.
const Layer& Reduced(const Layer& picture, std::deque<Layer>& halves, const Placement& at) {
    const double width = std::max(Length(at.topLeft, at.topRight), Length(at.bottomLeft, at.bottomRight));
    const double height = std::max(Length(at.topLeft, at.bottomLeft), Length(at.topRight, at.bottomRight));
    double scale = std::max(width / picture.Width(), height / picture.Height());
    const Layer* layer = &picture;
    for (std::size_t i = 0; scale <= 0.5 && layer->Width() > 1 && layer->Height() > 1; ++i, scale *= 2) {
        if (halves.size() == i) {
            Layer half = Halved(*layer);
            halves.push_back(std::move(half));
        }
        layer = &halves[i];
    }
    return *layer;
}

std::uint8_t ShownOf(double own, double opacity) { return ByteOf(std::clamp(opacity, 0.0, 1.0) * own); }

struct Span {
    double begin = 0, end = 0;
    double Length() const { return end - begin; }
};

// The longest part of 0 to `length` that no span reaches into.
Span LongestGap(std::vector<Span> spans, double length) {
    std::sort(spans.begin(), spans.end(), [](const Span& a, const Span& b) { return a.begin < b.begin; });
    spans.push_back({length, length});
    Span longest;
    double reached = 0;
    for (const Span& span : spans) {
        const double end = std::min(span.begin, length);
        if (end - reached > longest.Length()) longest = {reached, end};
        reached = std::max(reached, span.end);
    }
    return longest;
}

}  // namespace

int CAnimatedMenu::Loop() const {
    const int duration = const_cast<CAnimatedMenu*>(this)->GetDuration();
    return duration > 1 ? duration : usualLoop;
}

double CAnimatedMenu::Phase() const {
    const int loop = Loop();
    return double((std::uint32_t(FrameNumber()) - 1) % std::uint32_t(loop)) / loop;
}

StageArea CAnimatedMenu::Stage() const {
    constexpr double margin = 0.05;
    std::vector<Span> columns, rows;
    for (const Text& text : Texts()) {
        if (text.item.moves) continue;
        const point_t at = text.item.boxPosition;
        columns.push_back({double(at.x), double(at.x) + text.layer.Width()});
        rows.push_back({double(at.y), double(at.y) + text.layer.Height()});
    }
    const Span across = LongestGap(columns, Width()), down = LongestGap(rows, Height());
    const double partAcross = across.Length() / Width(), partDown = down.Length() / Height();
    StageArea area{0, 0, Width(), Height()};
    if (std::max(partAcross, partDown) >= 0.5)
        area = partAcross > partDown ? StageArea{across.begin, 0, across.Length(), Height()}
                                     : StageArea{0, down.begin, Width(), down.Length()};
    return area.Shrunk(margin * area.width, margin * area.height);
}

FrameSize CAnimatedMenu::PartOfMenu(double across, double down) const {
    const auto side = [](double length) { return unsigned(std::clamp(length, 1.0, double(largestSide))); };
    return {side(Width() * across), side(Height() * down)};
}

double CAnimatedMenu::Turns(double frames) const { return Phase() * std::max(1.0, WholePart(Loop() / frames + 0.5)); }

std::vector<CAnimatedMenu::Actor> CAnimatedMenu::Actors() const {
    std::vector<Actor> actors;
    for (const Shown& shown : ShownSources()) {
        const double opacity = HasFades() ? OpacityOf(shown.source) / 255.0 : 1;
        const Spot middle{shown.inBox.x + shown.picture.Width() / 2.0, shown.inBox.y + shown.picture.Height() / 2.0};
        actors.push_back(
            {shown.picture, shown.isOpaque, unsigned(actors.size()), opacity, middle, shown.source, shown.halves});
    }
    return actors;
}

Spot CAnimatedMenu::PlaceOf(const Actor& actor, Spot usual, double scale) const {
    const point_t corner = actor.source.startPosition;
    return HasPlaces() ? Spot{corner.x + actor.middle.x * scale, corner.y + actor.middle.y * scale} : usual;
}

void CAnimatedMenu::Show(Canvas& canvas, const Actor& actor, const Placement& placement, double opacity,
                         Window window) const {
    canvas.LayTransformed(Reduced(actor.picture, actor.halves, placement), placement, ShownOf(actor.opacity, opacity),
                          window);
}

void CAnimatedMenu::Show(Pile& pile, const Actor& actor, const Placement& placement, double opacity) const {
    pile.Put(Reduced(actor.picture, actor.halves, placement), placement, ShownOf(actor.opacity, opacity),
             actor.isOpaque);
}

void CAnimatedMenu::ShowWithin(Canvas& canvas, const Actor& actor, Window window, double zoom, double opacity) const {
    const double width = window.right - window.left, height = window.bottom - window.top;
    const double own = actor.picture.Width(), ownHeight = actor.picture.Height();
    const double scale = zoom * std::max(width / own, height / ownHeight);
    Show(canvas, actor,
         Placement::Turned({window.left + width / 2, window.top + height / 2}, own * scale, ownHeight * scale), opacity,
         window);
}

FrameSize CAnimatedMenu::UsualBox() const { return PartOfMenu(1.0 / 3, 1.0 / 3); }

FrameSize CAnimatedMenu::BoxOf(unsigned index, FrameSize own) const {
    return HasSizeOf(index) ? CBasedMenu::BoxOf(index, own) : UsualBox();
}

}  // namespace AVBased
