#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/slides/picture_view.h"

/// When which picture of a slideshow shows, and which part of it: functions of the frame's number alone.
namespace AVBased {

/// A picture at a frame: which one, how much of its time is over, from 0 to fixedOne, and how many frames of it were.
struct SlideMoment {
    std::uint64_t index = 0;
    std::int64_t share = 0;
    std::uint64_t frame = 0;
};

struct SlideTimeline {
    std::uint64_t pictures = 1;  ///< at least one
    /// Frames of a picture by itself, and of it and the next; of 32 bits, not below 0. Where both are 0, each picture
    /// has one for itself.
    std::int64_t alone = 1, together = 0;
    bool loops = false;
    /// Frames by themselves of the first pictures; below 0: as many as the others.
    std::vector<std::int64_t> own = {};

    struct Frame {
        SlideMoment first;
        /// During a transition: the next picture, and how far it has come, eased; the frames before and after the
        /// transition are its 0 and fixedOne.
        std::optional<SlideMoment> second;
        std::int64_t t = 0;
    };
    Frame At(std::uint64_t position) const;

 private:
    std::int64_t AloneOf(std::uint64_t index) const;
};

/// A way of moving over a picture that is larger than the frame, from one view of it to another.
struct SlideMotion {
    /// How close, from 0 (the whole picture) to fixedOne (its own size), and where within what is then left over, from
    /// -fixedOne (left, top) to fixedOne (right, bottom).
    struct View {
        std::int64_t closeness = 0, x = 0, y = 0;
    };
    View from, to;

    bool Moves() const { return from.closeness || to.closeness; }
    FixedRegion Shown(FrameSize picture, FrameSize frame, std::int64_t share) const;
};

/// The motion of that name: "none", "zoomin", "zoomout", "panleft", "panright", "panup", "pandown", or "random", which
/// follows from `random`. None for an unknown name.
std::optional<SlideMotion> FindSlideMotion(std::string_view name, std::uint32_t random);

}  // namespace AVBased
