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

SlideTimeline::Frame SlideTimeline::At(std::uint64_t position) const {
    const auto period = std::uint64_t(alone + together), last = pictures - 1;
    const std::int64_t life = alone + 2 * together;
    const auto moment = [&](std::uint64_t index, std::uint64_t since) {
        return SlideMoment{index, FixedShare(std::int64_t(std::min(since, std::uint64_t(life))), life)};
    };
    // The last picture stays.
    const bool ends = !loops || pictures == 1;
    if (ends && position / period >= last)
        return {moment(last, std::uint64_t(together) + (position - last * period)), {}, 0};
    const std::uint64_t index = position / period % pictures, since = position % period;
    Frame frame{moment(index, std::uint64_t(together) + since), {}, 0};
    if (since < std::uint64_t(alone)) return frame;
    const auto done = std::int64_t(since) - alone;
    frame.second = moment((index + 1) % pictures, std::uint64_t(done));
    frame.t = FixedEased(FixedShare(done + 1, together + 1));
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
