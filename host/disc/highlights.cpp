#include "host/disc/highlights.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "host/films/menu_places.h"

namespace Nifikral {
namespace {

// Thin lines flicker on screens that show a field at a time, so that what lies flat takes four rows.
constexpr int lineColumns = 5, lineRows = 4, edge = 2;
constexpr int markerWidth = 24, markerHeight = 32, markerRoom = markerWidth + 2 * edge;

int Even(int row) { return row & ~1; }

bool Touch(const HighlightBox& a, const HighlightBox& b) {
    return a.left < b.right && b.left < a.right && a.top < b.bottom && b.top < a.bottom;
}

HighlightBox Grown(const DiscButton& button, int left, int others, const FilmProfile& profile) {
    constexpr int border = 2;
    return {std::max(border, button.x - left), Even(std::max(border, button.y - others)),
            std::min(profile.width - border, button.x + button.width + others),
            Even(std::min(profile.height - border, button.y + button.height + others + 1))};
}

// Parts boxes in the middle of what they share: players show all that is marked within a button.
void Part(HighlightBox& a, HighlightBox& b) {
    const int left = std::max(a.left, b.left), right = std::min(a.right, b.right);
    const int top = std::max(a.top, b.top), bottom = std::min(a.bottom, b.bottom);
    if (right - left < bottom - top)
        (a.left < b.left ? a.right : a.left) = (a.left < b.left ? b.left : b.right) = (left + right) / 2;
    else
        (a.top < b.top ? a.bottom : a.top) = (a.top < b.top ? b.top : b.bottom) = Even((top + bottom) / 2);
}

// Each grown as much as keeps it off the others.
std::vector<HighlightBox> AllGrown(const DiscPage& page, int left, int others, const FilmProfile& profile) {
    std::vector<HighlightBox> boxes, grown;
    for (const DiscButton& button : page.buttons) boxes.push_back(Grown(button, 0, 0, profile));
    for (std::size_t i = 0; i < boxes.size(); ++i)
        for (std::size_t j = 0; j < i; ++j)
            if (Touch(boxes[i], boxes[j])) Part(boxes[i], boxes[j]);
    grown = boxes;
    for (std::size_t i = 0; i < boxes.size(); ++i)
        for (const auto& [more, around] : {std::pair(left, others), {others, others}, {left, 0}}) {
            const HighlightBox box = Grown(page.buttons[i], more, around, profile);
            bool touches = false;
            for (std::size_t j = 0; j < boxes.size(); ++j) touches |= j != i && Touch(box, grown[j]);
            if (touches) continue;
            grown[i] = box;
            break;
        }
    return grown;
}

class Pen {
 public:
    Pen(AVFrame& picture, unsigned colour) : m_picture(picture), m_colour(0xFF000000 | colour) {}

    void Rectangle(const HighlightBox& box, unsigned colour) const {
        for (int y = box.top; y < box.bottom; ++y) Row(y, box.left, box.right, colour);
    }
    // A dark bar with a light one within.
    void Bar(const HighlightBox& box) const {
        Rectangle(box, dark);
        Rectangle({box.left + edge, box.top + edge, box.right - edge, box.bottom - edge}, m_colour);
    }
    void Frame(const HighlightBox& box) const {
        const auto ring = [&](int inset, int columns, int rows, unsigned colour) {
            const HighlightBox at{box.left + inset, box.top + inset, box.right - inset, box.bottom - inset};
            Rectangle({at.left, at.top, at.right, at.top + rows}, colour);
            Rectangle({at.left, at.bottom - rows, at.right, at.bottom}, colour);
            Rectangle({at.left, at.top, at.left + columns, at.bottom}, colour);
            Rectangle({at.right - columns, at.top, at.right, at.bottom}, colour);
        };
        ring(0, lineColumns + 2 * edge, lineRows + 2 * edge, dark);
        ring(edge, lineColumns, lineRows, m_colour);
    }
    // A triangle that points to the right, at the left of the box.
    void Marker(const HighlightBox& box) const {
        const int height = std::min(markerHeight, Even(box.bottom - box.top));
        // Narrow beside the text of a low button.
        const int top = Even((box.top + box.bottom - height) / 2),
                  width = std::min(markerWidth, (box.bottom - box.top) / 3);
        const auto triangle = [&](int inset, unsigned colour) {
            for (int y = inset; y < height - inset; ++y) {
                const int depth = std::min(y, height - 1 - y) - inset + 1;
                const int length = depth * width * 2 / height;
                Row(top + y, box.left + inset, box.left + inset + length, colour);
            }
        };
        triangle(0, dark);
        triangle(2 * edge, m_colour);
    }

 private:
    static constexpr unsigned dark = 0xFF101010;

    void Row(int y, int begin, int end, unsigned colour) const {
        if (y < 0 || y >= m_picture.height) return;
        std::uint8_t* const row = m_picture.data[0] + std::ptrdiff_t(y) * m_picture.linesize[0];
        for (int x = std::max(0, begin); x < std::min(end, m_picture.width); ++x)
            for (int byte = 0; byte < 4; ++byte) row[x * 4 + byte] = std::uint8_t(colour >> (byte * 8));
    }

    AVFrame& m_picture;
    unsigned m_colour;
};

}  // namespace

std::vector<HighlightBox> HighlightBoxes(const DiscPage& page, const DiscMenus& menus, const FilmProfile& profile,
                                         DiscView view) {
    constexpr int usual = 6;
    std::vector<HighlightBox> boxes =
        AllGrown(page, menus.mark == ButtonMark::Marker ? markerRoom : usual, usual, profile);
    if (view == DiscView::Letterboxed)
        for (HighlightBox& box : boxes) {
            const auto squeezed = [&](int row) { return Even(row * 3 / 4 + profile.height / 8); };
            box.top = squeezed(box.top);
            box.bottom = squeezed(box.bottom);
        }
    return boxes;
}

FramePtr DrawHighlights(const std::vector<HighlightBox>& boxes, ButtonMark mark, unsigned colour,
                        const FilmProfile& profile) {
    FramePtr picture = NewPicture(AV_PIX_FMT_BGRA, profile.width, profile.height);
    for (int y = 0; y < picture->height; ++y)
        std::memset(picture->data[0] + std::ptrdiff_t(y) * picture->linesize[0], 0, std::size_t(picture->width) * 4);
    const Pen pen(*picture, colour);
    for (const HighlightBox& box : boxes) {
        if (mark == ButtonMark::Frame) pen.Frame(box);
        if (mark == ButtonMark::Underline) pen.Bar({box.left, box.bottom - lineRows - 2 * edge, box.right, box.bottom});
        if (mark == ButtonMark::Marker) pen.Marker(box);
    }
    return picture;
}

std::vector<std::string> OutsideTitleSafe(const DiscPage& page, const DiscMenus& menus, const FilmProfile& profile) {
    const FilmBox safe = SafeArea(profile.width, profile.height);
    const std::vector<HighlightBox> boxes = HighlightBoxes(page, menus, profile, DiscView::Whole);
    std::vector<std::string> captions;
    for (std::size_t i = 0; i < boxes.size(); ++i) {
        const HighlightBox& box = boxes[i];
        if (!FilmBox{box.left, box.top, box.right - box.left, box.bottom - box.top}.IsWithin(safe))
            captions.push_back(page.buttons[i].caption);
    }
    return captions;
}

}  // namespace Nifikral
