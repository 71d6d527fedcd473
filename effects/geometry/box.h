#pragma once

#include <algorithm>
#include <cstddef>

namespace AVBased {

/// A part of a picture; the ends are exclusive.
struct Box {
    unsigned xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;

    std::size_t Width() const { return xEnd - xBegin; }
    std::size_t Height() const { return yEnd - yBegin; }
    Box ClippedTo(unsigned width, unsigned height) const {
        return {std::min(xBegin, width), std::min(xEnd, width), std::min(yBegin, height), std::min(yEnd, height)};
    }
};

}  // namespace AVBased
