#include "host/films/picture_captions.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace Nifikral {
namespace {

constexpr int mostLines = 2, gap = 2;

class CaptionLayout {
 public:
    CaptionLayout(const MenuProject& page, const std::vector<RestingPlace>& places)
        : m_page(page), m_places(places), m_safe(SafeArea(page.film.width, page.film.height)), m_style(page.labels) {}

    std::vector<Label> Make() {
        const int largest = std::max(14, m_page.film.height / 26), least = std::max(13, m_page.film.height / 36);
        // Below one picture and above another, it would not be clear whose caption is which.
        for (const bool whole : {true, false}) {
            m_wholeWords = whole;
            for (const Side side : {Side::Below, Side::Above, Side::BelowOrWithin})
                for (int size = largest; size >= least; --size)
                    if (TryAll(size, side, false)) return m_labels;
        }
        TryAll(least, Side::BelowOrWithin, true);
        return m_labels;
    }

 private:
    enum class Side { Below, Above, BelowOrWithin };

    bool IsCaptioned(const RestingPlace& place) const {
        return place.kind == PlaceKind::Picture && place.Rests() && place.index < m_page.captions.size();
    }

    bool TryAll(int size, Side side, bool cuts) {
        m_labels.clear();
        m_style.size = size;
        for (const RestingPlace& place : m_places)
            if (IsCaptioned(place) && !Try(place, side, cuts)) return false;
        return true;
    }

    bool Try(const RestingPlace& place, Side side, bool cuts) {
        const FilmBox reach = place.Reach(m_page.film);
        const int wide = WidthBeside(place);
        if (std::optional<Label> label = Written(place, wide, cuts)) {
            label->box.top = side == Side::Above ? reach.top - gap - label->box.height : reach.top + reach.height + gap;
            if (label->box.IsWithin(m_safe) && !Hides(label->box, place)) {
                m_labels.push_back(*label);
                return true;
            }
        }
        if (side != Side::BelowOrWithin) return false;
        std::optional<Label> label = Written(place, std::min(wide, place.at.width), cuts);
        if (!label) return false;
        const int lowest = std::min(place.at.top + place.at.height, m_safe.top + m_safe.height);
        label->box.top = lowest - 2 * gap - label->box.height;
        m_labels.push_back(*label);
        return true;
    }

    // Half way to the next picture beside it.
    int WidthBeside(const RestingPlace& place) const {
        const int middle = MiddleOf(place.at);
        int half = std::min(middle - m_safe.left, m_safe.left + m_safe.width - middle);
        for (const RestingPlace& other : m_places) {
            if (!IsCaptioned(other) || other.index == place.index) continue;
            const FilmBox a = place.Reach(m_page.film), b = other.Reach(m_page.film);
            const bool isBeside = a.top < b.top + b.height && b.top < a.top + a.height;
            if (isBeside) half = std::min(half, std::abs(MiddleOf(other.at) - middle) / 2 - 2);
        }
        return 2 * half;
    }

    static int MiddleOf(const FilmBox& box) { return box.left + box.width / 2; }

    std::optional<Label> Written(const RestingPlace& place, int width, bool cuts) const {
        const int room = width - 2 * LabelPadding(m_style.size);
        if (room < m_style.size) return std::nullopt;
        Label label{{}, m_style, true};
        const std::string& words = m_page.captions[place.index];
        label.text.text = cuts ? CutInto(m_style, words, room, mostLines, "the caption")
                               : BrokenInto(m_style, words, room, mostLines, m_wholeWords);
        if (label.text.text.empty()) return std::nullopt;
        const auto lines = int(std::count(label.text.text.begin(), label.text.text.end(), '\n')) + 1;
        const int own = TextWidth(m_style, label.text.text, m_style.size) + 2 * LabelPadding(m_style.size);
        label.box = {MiddleOf(place.at) - own / 2, 0, own, LabelHeight(m_style.size, lines)};
        return label;
    }

    bool Hides(const FilmBox& box, const RestingPlace& own) const {
        const auto hidden = [&](const RestingPlace& place) {
            const bool isOwn = place.kind == own.kind && place.index == own.index;
            return !isOwn && place.Rests() && box.Overlaps(place.Reach(m_page.film));
        };
        return std::any_of(m_places.begin(), m_places.end(), hidden) ||
               std::any_of(m_labels.begin(), m_labels.end(), [&](const Label& l) { return box.Overlaps(l.box); });
    }

    const MenuProject& m_page;
    const std::vector<RestingPlace>& m_places;
    FilmBox m_safe;
    StyledText m_style;
    bool m_wholeWords = true;
    std::vector<Label> m_labels;
};

}  // namespace

std::vector<Label> LayOutCaptions(const MenuProject& page, const std::vector<RestingPlace>& places) {
    return page.captions.empty() ? std::vector<Label>() : CaptionLayout(page, places).Make();
}

}  // namespace Nifikral
