#pragma once

#include <algorithm>
#include <climits>
#include <cstddef>

namespace AVBased {

/// A part of an axis; the end is exclusive.
struct Span {
    unsigned begin = 0, end = 0;

    unsigned Size() const { return end - begin; }
    bool IsEmpty() const { return begin >= end; }
    Span Within(Span other) const { return {std::max(begin, other.begin), std::min(end, other.end)}; }
};

/// A part of a picture; the ends are exclusive.
struct Box {
    unsigned xBegin = 0, xEnd = 0, yBegin = 0, yEnd = 0;

    std::size_t Width() const { return xEnd - xBegin; }
    std::size_t Height() const { return yEnd - yBegin; }
    Box ClippedTo(unsigned width, unsigned height) const {
        return {std::min(xBegin, width), std::min(xEnd, width), std::min(yBegin, height), std::min(yEnd, height)};
    }
    Box Within(const Box& other) const {
        return {std::max(xBegin, other.xBegin), std::min(xEnd, other.xEnd), std::max(yBegin, other.yBegin),
                std::min(yEnd, other.yEnd)};
    }
    /// The smallest box around both.
    Box JoinedTo(const Box& other) const {
        return {std::min(xBegin, other.xBegin), std::max(xEnd, other.xEnd), std::min(yBegin, other.yBegin),
                std::max(yEnd, other.yEnd)};
    }
};

/// What to join boxes to.
inline constexpr Box nothing{UINT_MAX, 0, UINT_MAX, 0};
/// All of any picture.
inline constexpr Box everything{0, UINT_MAX, 0, UINT_MAX};

}  // namespace AVBased
