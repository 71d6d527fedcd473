#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "dvd_effects/canvas/layer.h"
#include "dvd_effects/slides/picture_view.h"

namespace AVBased {

/// How one picture gives way to the next. `t` runs from 0, where only the first picture shows, to fixedOne, where only
/// the second one does.
struct Transition {
    const char* name;
    /// Where on the frame the pictures stand.
    FixedRegion (*placeFirst)(FrameSize frame, std::int64_t t);
    FixedRegion (*placeSecond)(FrameSize frame, std::int64_t t);
    /// Which picture is drawn over the other.
    bool firstOnTop;
    /// Puts `top` over the other picture, which `frame` holds; both stand at their places, and what `top` holds beside
    /// its place is not used.
    void (*compose)(IRawVideoFrame& frame, IRawVideoFrame& top, std::int64_t t, InstructionSet set);
};

/// All of them, those for random choice first and the plain cut last.
std::span<const Transition> Transitions();
/// Null for an unknown name.
const Transition* FindTransition(std::string_view name);

}  // namespace AVBased
