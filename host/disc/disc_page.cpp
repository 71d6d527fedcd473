#include "host/disc/disc_page.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace Nifikral {
namespace {

struct Place {
    double across, down;
};

Place MiddleOf(const DiscButton& button) { return {button.x + button.width / 2.0, button.y + button.height / 2.0}; }

// The button that the remote control reaches by going from `from` towards (right, down), one of which is 0.
int Neighbour(const std::vector<DiscButton>& buttons, std::size_t from, int right, int down) {
    const Place own = MiddleOf(buttons[from]);
    const auto ahead = [&](const Place& place) {
        return (place.across - own.across) * right + (place.down - own.down) * down;
    };
    const auto aside = [&](const Place& place) {
        return std::abs(right ? place.down - own.down : place.across - own.across);
    };
    // What lies aside is a worse choice than what lies far ahead.
    constexpr double asideCost = 3;
    const double ownSize = right ? buttons[from].height : buttons[from].width;
    int next = int(from), first = int(from);
    double nearest = std::numeric_limits<double>::infinity(), farthest = nearest;
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        if (i == from) continue;
        const Place place = MiddleOf(buttons[i]);
        const double size = right ? buttons[i].width : buttons[i].height;
        const double distance = ahead(place), cost = std::abs(distance) + asideCost * aside(place);
        if (distance >= size / 2 && cost < nearest) {
            nearest = cost;
            next = int(i);
        }
        // Going round stays in the row or column, at its other end.
        if (distance <= -size / 2 && aside(place) < ownSize / 2 && distance + aside(place) < farthest) {
            farthest = distance + aside(place);
            first = int(i);
        }
    }
    return next != int(from) ? next : first;
}

std::vector<bool> ReachedFromTheFirst(const std::vector<DiscButton>& buttons) {
    std::vector<bool> reached(buttons.size());
    std::vector<std::size_t> next = {0};
    while (!next.empty()) {
        const std::size_t from = next.back();
        next.pop_back();
        if (reached[from]) continue;
        reached[from] = true;
        for (const int to : {buttons[from].up, buttons[from].down, buttons[from].left, buttons[from].right})
            next.push_back(std::size_t(to));
    }
    return reached;
}

// Leads from the nearest button in reach to one that no arrow leads to.
void BringIntoReach(std::vector<DiscButton>& buttons, std::size_t lost, const std::vector<bool>& reached) {
    const Place to = MiddleOf(buttons[lost]);
    const auto distance = [&](std::size_t i) {
        const Place place = MiddleOf(buttons[i]);
        const double across = to.across - place.across, down = to.down - place.down;
        return across * across + down * down;
    };
    std::size_t nearest = 0;
    for (std::size_t i = 0; i < buttons.size(); ++i)
        if (reached[i] && (!reached[nearest] || distance(i) < distance(nearest))) nearest = i;
    const Place from = MiddleOf(buttons[nearest]);
    DiscButton& button = buttons[nearest];
    const bool sideways = std::abs(to.across - from.across) > std::abs(to.down - from.down);
    (sideways              ? to.across > from.across ? button.right : button.left
     : to.down > from.down ? button.down
                           : button.up) = int(lost);
}

}  // namespace

void LinkButtons(std::vector<DiscButton>& buttons) {
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        buttons[i].up = Neighbour(buttons, i, 0, -1);
        buttons[i].down = Neighbour(buttons, i, 0, 1);
        buttons[i].left = Neighbour(buttons, i, -1, 0);
        buttons[i].right = Neighbour(buttons, i, 1, 0);
    }
    for (std::size_t tries = 0; tries < buttons.size(); ++tries) {
        const std::vector<bool> reached = ReachedFromTheFirst(buttons);
        const auto lost = std::find(reached.begin(), reached.end(), false);
        if (lost == reached.end()) return;
        BringIntoReach(buttons, std::size_t(lost - reached.begin()), reached);
    }
}

}  // namespace Nifikral
