#include "dvd_effects/slides/slide_timeline.h"

#include <algorithm>

#include "dvd_effects/canvas/animation.h"

namespace AVBased {

namespace {

struct NamedMotion {
    const char* name;
    SlideMotion motion;
};

constexpr std::int64_t one = fixedOne;
// A pan is named by where the view goes.
constexpr NamedMotion motions[] = {
    {"none", {}},
    {"zoomin", {{0, 0, 0}, {one, 0, 0}}},
    {"zoomout", {{one, 0, 0}, {0, 0, 0}}},
    {"panleft", {{one, one, 0}, {one, -one, 0}}},
    {"panright", {{one, -one, 0}, {one, one, 0}}},
    {"panup", {{one, 0, one}, {one, 0, -one}}},
    {"pandown", {{one, 0, -one}, {one, 0, one}}},
};

// Towards or away from a place beside the middle, or across.
SlideMotion RandomMotion(std::uint32_t random) {
    const SlideMotion::View whole, close{one, (random & 8 ? one : -one) * 3 / 4, (random & 16 ? one : -one) / 2};
    switch (random % 4) {
        case 0:
            return {close, {one, -close.x, -close.y / 2}};
        case 1:
            return {close, whole};
        default:
            return {whole, close};
    }
}

}  // namespace

std::int64_t SlideTimeline::AloneOf(std::uint64_t index) const {
    const std::int64_t frames = index < own.size() && own[index] >= 0 ? own[index] : alone;
    return std::max<std::int64_t>(frames, together ? 0 : 1);
}

SlideTimeline::Frame SlideTimeline::At(std::uint64_t position) const {
    const std::uint64_t last = pictures - 1;
    // The last picture stays.
    const bool ends = !loops || pictures == 1;
    const auto period = [&](std::uint64_t index) { return std::uint64_t(AloneOf(index) + together); };
    std::uint64_t index = 0, since = position, whole = 0;
    if (!ends) {
        for (std::uint64_t i = 0; i < pictures; ++i) whole += period(i);
        since %= whole;
    }
    while (since >= period(index) && !(ends && index == last)) since -= period(index++);
    // Nothing leads to the first picture of a show.
    const std::uint64_t unseen = ends ? std::uint64_t(together) : 0;
    const auto moment = [&](std::uint64_t picture, std::uint64_t done) {
        const std::int64_t life = AloneOf(picture) + 2 * together;
        return SlideMoment{picture, FixedShare(std::int64_t(std::min(done, std::uint64_t(life))), life),
                           done - (picture == 0 ? unseen : 0)};
    };
    Frame frame{moment(index, std::uint64_t(together) + since), {}, 0};
    if ((ends && index == last) || since < std::uint64_t(AloneOf(index))) return frame;
    const std::uint64_t done = since - std::uint64_t(AloneOf(index));
    frame.second = moment((index + 1) % pictures, done);
    frame.t = FixedEased(FixedShare(std::int64_t(done) + 1, together + 1));
    return frame;
}

FixedRegion SlideMotion::Shown(FrameSize picture, FrameSize frame, std::int64_t share) const {
    const View view{FixedMixed(from.closeness, to.closeness, share), FixedMixed(from.x, to.x, share),
                    FixedMixed(from.y, to.y, share)};
    const auto along = [&](unsigned whole, unsigned closest, std::int64_t place) {
        const std::int64_t length = FixedMixed(whole * fixedOne, closest * fixedOne, view.closeness);
        return FixedSpan{(whole * fixedOne - length) * (fixedOne + place) / (2 * fixedOne), length};
    };
    return {along(picture.width, frame.width, view.x), along(picture.height, frame.height, view.y)};
}

std::optional<SlideMotion> FindSlideMotion(std::string_view name, std::uint32_t random) {
    if (name == "random") return RandomMotion(random);
    for (const NamedMotion& row : motions)
        if (name == row.name) return row.motion;
    return {};
}

}  // namespace AVBased
