#include "dvd_effects/templates/CAnimatedMenu.h"

#include <algorithm>
#include <cmath>

#include "dvd_effects/canvas/painting.h"

namespace AVBased {

namespace {

constexpr int usualLoop = 300;

// The picture itself, or the halved one that is still as large as it is to be shown: a pixel of the frame takes only
// four of a picture's, and so none may be left out.
const Layer& Reduced(const Layer& picture, std::deque<Layer>& smaller, const Placement& at) {
    const double width = std::max(Distance(at.topLeft, at.topRight), Distance(at.bottomLeft, at.bottomRight));
    const double height = std::max(Distance(at.topLeft, at.bottomLeft), Distance(at.topRight, at.bottomRight));
    double scale = std::max(width / picture.Width(), height / picture.Height());
    const Layer* layer = &picture;
    for (std::size_t i = 0; scale <= 0.5 && layer->Width() > 1 && layer->Height() > 1; ++i, scale *= 2) {
        if (smaller.size() == i) {
            Layer half = Halved(*layer);
            smaller.push_back(std::move(half));
        }
        layer = &smaller[i];
    }
    return *layer;
}

std::uint8_t ShownOf(double own, double opacity) { return ByteOf(std::clamp(opacity, 0.0, 1.0) * own); }

// A part of a side of the menu, in pixels.
struct Section {
    double begin = 0, end = 0;
    double Length() const { return end - begin; }
};

// The longest part of 0 to `length` that no section reaches into.
Section LongestGap(std::vector<Section> sections, double length) {
    std::sort(sections.begin(), sections.end(), [](const Section& a, const Section& b) { return a.begin < b.begin; });
    sections.push_back({length, length});
    Section longest;
    double reached = 0;
    for (const Section& section : sections) {
        const double end = std::min(section.begin, length);
        if (end - reached > longest.Length()) longest = {reached, end};
        reached = std::max(reached, section.end);
    }
    return longest;
}

}  // namespace

const Property<CAnimatedMenu> CAnimatedMenu::ownProperties[1] = {
    {"mood", "0",
     [](CAnimatedMenu& menu, std::int32_t mood) {
         const MoodColours* const colours = MoodOf(menu.GetName(), mood);
         if (colours != menu.m_colours) menu.MakeAnew();
         menu.m_colours = colours;
     }},
};

CAnimatedMenu::CAnimatedMenu(const char* name, IAVManager* manager) : CBasedMenu(name, manager) {
    DeclareProperties(*this, ownProperties);
}

void CAnimatedMenu::OnSetProperty(const std::string& name, PropertyNode& node) {
    CBasedMenu::OnSetProperty(name, node);
    StoreProperty(*this, ownProperties, name, node);
}

void CAnimatedMenu::FinishBackground(Canvas& canvas) const {
    if (m_colours) Recolour(canvas, Kind(), *m_colours);
}

int CAnimatedMenu::Loop() const {
    const int duration = const_cast<CAnimatedMenu*>(this)->GetDuration();
    return duration > 1 ? duration : usualLoop;
}

double CAnimatedMenu::Phase() const {
    const int loop = Loop();
    return double((FrameNumber() - 1) % std::uint32_t(loop)) / loop;
}

Region CAnimatedMenu::FreeRegion(double margin) const {
    std::vector<Section> columns, rows;
    for (const MenuText& text : Texts()) {
        if (text.item.moves) continue;
        const point_t at = text.item.boxPosition;
        columns.push_back({double(at.x), double(at.x) + text.layer.Width()});
        rows.push_back({double(at.y), double(at.y) + text.layer.Height()});
    }
    const Section across = LongestGap(columns, Width()), down = LongestGap(rows, Height());
    const double partAcross = across.Length() / Width(), partDown = down.Length() / Height();
    Region area{0, 0, Width(), Height()};
    if (std::max(partAcross, partDown) >= 0.5)
        area = partAcross > partDown ? Region{across.begin, 0, across.Length(), Height()}
                                     : Region{0, down.begin, Width(), down.Length()};
    return area.Shrunk(margin * area.width, margin * area.height);
}

Region CAnimatedMenu::StageBesideTexts() const {
    Region stage = FreeRegion(0);
    const double gap = 0.02 * Height(), right = stage.left + stage.width, bottom = stage.top + stage.height;
    if (stage.left > 0) stage.left += gap;
    if (stage.top > 0) stage.top += gap;
    stage.width = std::max(1.0, (right < Width() ? right - gap : right) - stage.left);
    stage.height = std::max(1.0, (bottom < Height() ? bottom - gap : bottom) - stage.top);
    return stage;
}

FrameSize CAnimatedMenu::PartOfMenu(double across, double down) const {
    const auto side = [](double length) { return unsigned(std::clamp(length, 1.0, double(largestSide))); };
    return {side(Width() * across), side(Height() * down)};
}

FrameSize CAnimatedMenu::FractionOfMenu(unsigned part, unsigned of) const {
    return {std::max(1u, MenuSize().width * part / of), std::max(1u, MenuSize().height * part / of)};
}

PictureRows CAnimatedMenu::RowsOf(const std::vector<ShownPicture>& pictures, const Region& region, double gap) const {
    std::vector<double> shapes;
    for (const ShownPicture& picture : pictures)
        shapes.push_back(double(picture.layer.Width()) / picture.layer.Height());
    return {region, shapes, gap};
}

FrameSize CAnimatedMenu::BoxInRows() const {
    const double count = std::max(1u, SourceCount());
    return PartOfMenu(std::min(0.62, 0.85 / std::sqrt(count)), std::min(0.68, 1.15 / std::sqrt(count)));
}

double CAnimatedMenu::Turns(double frames) const { return Phase() * std::max(1.0, WholePart(Loop() / frames + 0.5)); }

std::vector<CAnimatedMenu::ShownPicture> CAnimatedMenu::ShownPictures() const {
    std::vector<ShownPicture> pictures;
    for (const ShownSource& shown : ShownSources()) {
        const double opacity = HasFades() ? OpacityOf(shown.source, FrameNumber()) / 255.0 : 1;
        const Spot middle{shown.inBox.x + shown.layer.Width() / 2.0, shown.inBox.y + shown.layer.Height() / 2.0};
        pictures.push_back({shown.layer, shown.isOpaque, unsigned(pictures.size()), opacity, middle, shown.source,
                            shown.smaller, CaptionOf(shown.number)});
    }
    return pictures;
}

Spot CAnimatedMenu::PlaceOf(const ShownPicture& picture, Spot usual, double scale) const {
    const point_t corner = picture.source.startPosition;
    return HasPlaces() ? Spot{corner.x + picture.middle.x * scale, corner.y + picture.middle.y * scale} : usual;
}

void CAnimatedMenu::Show(Canvas& canvas, const ShownPicture& picture, const Placement& placement, double opacity,
                         const Box& window) const {
    canvas.LayTransformed(Reduced(picture.layer, picture.smaller, placement), placement,
                          ShownOf(picture.opacity, opacity), window);
    ShowCaption(canvas, picture, placement, opacity, window);
}

void CAnimatedMenu::Show(Pile& pile, const ShownPicture& picture, const Placement& placement, double opacity) const {
    pile.Put(Reduced(picture.layer, picture.smaller, placement), placement, ShownOf(picture.opacity, opacity),
             picture.isOpaque);
    if (!picture.caption) return;
    const Layer& caption = picture.caption->layer;
    if (const std::optional<Placement> at = CaptionPlace(caption, placement, everything))
        pile.Put(Reduced(caption, picture.caption->smaller, *at), *at,
                 ShownOf(picture.opacity * picture.named, opacity), false);
}

void CAnimatedMenu::ShowCaption(Canvas& canvas, const ShownPicture& picture, const Placement& placement, double opacity,
                                const Box& window) const {
    if (!picture.caption) return;
    const Layer& caption = picture.caption->layer;
    if (const std::optional<Placement> at = CaptionPlace(caption, placement, window))
        canvas.LayTransformed(Reduced(caption, picture.caption->smaller, *at), *at,
                              ShownOf(picture.opacity * picture.named, opacity), window);
}

std::optional<Placement> CAnimatedMenu::CaptionPlace(const Layer& caption, const Placement& picture,
                                                     const Box& window) const {
    // Of the picture's sides; of pictures that fill the menu it stands aside, where what all screens show ends.
    constexpr double widest = 0.84, highest = 0.3, above = 0.05, filling = 0.8, margin = 0.06;
    const double across = Distance(picture.bottomLeft, picture.bottomRight),
                 down = Distance(picture.topLeft, picture.bottomLeft);
    if (!(across > 0) || !(down > 0)) return std::nullopt;
    const Spot right{(picture.bottomRight.x - picture.bottomLeft.x) / across,
                     (picture.bottomRight.y - picture.bottomLeft.y) / across};
    const Spot up{(picture.topLeft.x - picture.bottomLeft.x) / down, (picture.topLeft.y - picture.bottomLeft.y) / down};
    const double scale = std::min({1.0, widest * across / caption.Width(), highest * down / caption.Height()});
    const double width = scale * caption.Width(), height = scale * caption.Height();
    const double lift = height / 2 + above * down;
    Spot centre{(picture.bottomLeft.x + picture.bottomRight.x) / 2 + lift * up.x,
                (picture.bottomLeft.y + picture.bottomRight.y) / 2 + lift * up.y};
    if (across > filling * Width() && down > filling * Height()) {
        const double bottom = std::min({Height() * (1 - margin), double(window.yEnd) - above * Height(),
                                        picture.bottomRight.y - above * Height()});
        // It comes and goes with the picture.
        centre = {std::max(std::min(picture.bottomRight.x, Width()) - margin * Width() - width / 2,
                           picture.bottomLeft.x + margin * Width() + width / 2),
                  std::max(bottom - height / 2, picture.topLeft.y + margin * Height() + height / 2)};
    }
    return Placement::Towards(centre, right, width, height);
}

void CAnimatedMenu::ShowWithin(Canvas& canvas, const ShownPicture& picture, const Box& window, double zoom,
                               double opacity) const {
    const auto width = double(window.Width()), height = double(window.Height());
    const double own = picture.layer.Width(), ownHeight = picture.layer.Height();
    const double scale = zoom * std::max(width / own, height / ownHeight);
    const Spot middle{window.xBegin + width / 2, window.yBegin + height / 2};
    // Of what is too high, more from its upper end, where faces are.
    const double lower = (ownHeight * scale - height) * 0.31;
    const Placement place = Placement::Turned({middle.x, middle.y + lower}, own * scale, ownHeight * scale);
    canvas.LayTransformed(Reduced(picture.layer, picture.smaller, place), place, ShownOf(picture.opacity, opacity),
                          window);
    ShowCaption(canvas, picture, Placement::Turned(middle, width, height), opacity, window);
}

void CAnimatedMenu::PaintGradient(Canvas& canvas, Colour top, Colour bottom) const {
    const Layer ground(canvas.Width(), canvas.Height());
    FillGradient(ground, Kind(), top, bottom);
    canvas.Lay(ground, 0, 0);
}

FrameSize CAnimatedMenu::UsualBox() const { return PartOfMenu(1.0 / 3, 1.0 / 3); }

FrameSize CAnimatedMenu::BoxOf(unsigned index, FrameSize own) const {
    if (HasSizeOf(index)) return CBasedMenu::BoxOf(index, own);
    FrameSize box = UsualBox();
    if (Fit() == PictureFit::Cover && own.height > 0) {
        // As wide as its picture is, within bounds.
        const double wide = double(box.height) * own.width / own.height, least = 0.75 * box.height;
        box.width = unsigned(std::clamp(wide, std::min(least, double(box.width)), double(box.width)));
    }
    return {std::max(1u, box.width), box.height};
}

}  // namespace AVBased
