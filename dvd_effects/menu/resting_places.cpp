#include "dvd_effects/menu/resting_places.h"

#include <algorithm>
#include <cmath>

#include "dvd_effects/canvas/animation.h"
#include "dvd_effects/canvas/compositor.h"

namespace AVBased {

namespace {

constexpr double leastVisible = 0.5, leastCommon = 0.5;

// A place of a quadrilateral, by its parts of the way across and down.
Spot Between(const Placement& at, double across, double down) {
    const auto mixed = [&](double Spot::*axis) {
        return Mixed(Mixed(at.topLeft.*axis, at.topRight.*axis, across),
                     Mixed(at.bottomLeft.*axis, at.bottomRight.*axis, across), down);
    };
    return {mixed(&Spot::x), mixed(&Spot::y)};
}

}  // namespace

RestingPlaces::Bounds RestingPlaces::Bounds::Within(const Bounds& other) const {
    return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
            std::min(bottom, other.bottom)};
}

RestingPlaces::Bounds RestingPlaces::Bounds::JoinedTo(const Bounds& other) const {
    return {std::min(left, other.left), std::min(top, other.top), std::max(right, other.right),
            std::max(bottom, other.bottom)};
}

double RestingPlaces::Bounds::CommonArea(const Bounds& other) const {
    const Bounds common = Within(other);
    return std::max(0.0, common.Width()) * std::max(0.0, common.Height());
}

double RestingPlaces::Showing::Visible() const {
    double all = 0, seen = 0;
    for (unsigned i = 0; i < points; ++i) {
        all += own[i];
        seen += shown[i];
    }
    return all > 0 ? seen / all : 0;
}

void RestingPlaces::Begin(std::vector<Subject> subjects) {
    m_subjects = std::move(subjects);
    m_showings.clear();
}

void RestingPlaces::See(const Laying& laying) {
    Hide(laying);
    const auto shows = [&](const Subject& subject) {
        const auto isLaid = [&](const Layer& layer) { return &layer == &laying.layer; };
        return isLaid(*subject.layer) ||
               (subject.smaller && std::any_of(subject.smaller->begin(), subject.smaller->end(), isLaid));
    };
    const auto subject = std::find_if(m_subjects.begin(), m_subjects.end(), shows);
    if (subject != m_subjects.end()) Add(*subject, laying);
}

void RestingPlaces::Hide(const Laying& laying) {
    const Projection& cover = laying.projection;
    const Bounds bounds{cover.least.x, cover.least.y, cover.most.x, cover.most.y};
    for (Showing& showing : m_showings) {
        if (showing.bounds.CommonArea(bounds) <= 0) continue;
        for (unsigned i = 0; i < Showing::points; ++i) showing.shown[i] *= 1 - laying.CoverageAt(showing.at[i]);
    }
}

void RestingPlaces::Add(const Subject& subject, const Laying& laying) {
    const FrameSize whole = subject.layer->Size();
    const auto part = [](unsigned own, unsigned all) { return all > 0 ? std::min(1.0, double(own) / all) : 1; };
    const double across = part(subject.own.width, whole.width), down = part(subject.own.height, whole.height);
    const auto at = [&](double x, double y) {
        return Between(laying.placement, 0.5 + (x - 0.5) * across, 0.5 + (y - 0.5) * down);
    };
    Showing& showing = m_showings.emplace_back();
    showing.kind = subject.kind;
    showing.number = subject.number;
    const Spot first = at(0, 0);
    Bounds& bounds = showing.bounds = {first.x, first.y, first.x, first.y};
    for (const Spot corner : {at(1, 0), at(0, 1), at(1, 1)})
        bounds = bounds.JoinedTo({corner.x, corner.y, corner.x, corner.y});
    const Box& window = laying.window;
    const auto width = double(m_frame.width), height = double(m_frame.height);
    bounds = bounds.Within({double(window.xBegin), double(window.yBegin), double(window.xEnd), double(window.yEnd)})
                 .Within({0, 0, width, height});
    for (unsigned i = 0; i < Showing::points; ++i) {
        const unsigned column = i % Showing::side, row = i / Showing::side;
        const Spot point = at((column + 0.5) / Showing::side, (row + 0.5) / Showing::side);
        const bool isOnFrame = point.x >= 0 && point.y >= 0 && point.x < width && point.y < height;
        showing.at[i] = point;
        showing.shown[i] = isOnFrame ? laying.CoverageAt(point) : 0;
        // What stands out of the frame is not seen; what stands out of a window is no part of what is shown there.
        showing.own[i] = isOnFrame ? showing.shown[i] * 255 / laying.opacity : window.xEnd == everything.xEnd;
    }
}

void RestingPlaces::KeepStays() {
    std::vector<Stay> kept;
    for (const Stay& stay : m_stays) {
        const Showing* best = nullptr;
        double most = 0;
        for (const Showing& showing : m_showings) {
            if (showing.kind != stay.kind || showing.number != stay.number) continue;
            const double common = stay.common.CommonArea(showing.bounds);
            if (common <= most) continue;
            most = common;
            best = &showing;
        }
        if (best)
            kept.push_back(
                {stay.kind, stay.number, stay.common.Within(best->bounds), stay.reach.JoinedTo(best->bounds)});
    }
    m_stays = std::move(kept);
}

void RestingPlaces::End() {
    for (const Showing& showing : m_showings) m_taken.push_back({showing.kind, showing.bounds, showing.Visible()});
    std::erase_if(m_showings, [](const Showing& showing) { return showing.Visible() < leastVisible; });
    if (m_moments++)
        KeepStays();
    else
        for (const Showing& showing : m_showings)
            m_stays.push_back({showing.kind, showing.number, showing.bounds, showing.bounds});
    m_subjects.clear();
    m_showings.clear();
}

MenuPlace RestingPlaces::PlaceOf(int kind, unsigned number) const {
    MenuPlace place{};
    for (const Stay& stay : m_stays) {
        const Bounds &common = stay.common, &reach = stay.reach;
        if (stay.kind != kind || stay.number != number || common.Width() < leastCommon * reach.Width() ||
            common.Height() < leastCommon * reach.Height())
            continue;
        const int left = Rounded(common.left), top = Rounded(common.top);
        const int width = Rounded(common.right) - left, height = Rounded(common.bottom) - top;
        if (std::int64_t(width) * height <= std::int64_t(place.width) * place.height) continue;
        const double drift = std::max({common.left - reach.left, common.top - reach.top, reach.right - common.right,
                                       reach.bottom - common.bottom});
        place = {left, top, width, height, Rounded(drift)};
    }
    return place;
}

double RestingPlaces::CoverOf(int kind, int left, int top, int width, int height) const {
    if (width <= 0 || height <= 0 || !m_moments) return 0;
    const Bounds part{double(left), double(top), double(left) + width, double(top) + height};
    double sum = 0;
    for (const Taken& taken : m_taken)
        if (taken.kind == kind) sum += taken.share * taken.bounds.CommonArea(part);
    return sum / (double(width) * height * m_moments);
}

}  // namespace AVBased
