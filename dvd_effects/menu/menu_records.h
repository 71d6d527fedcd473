#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "avbase/IAVManager.h"
#include "effects/base/fixed_point.h"
#include "effects/base/frame_copy.h"

/// What the list properties of a menu describe.
namespace AVBased {

struct FreeSource {
    void operator()(IAVSource* source) const { source->Free(); }
};
using SourceOwner = std::unique_ptr<IAVSource, FreeSource>;

/// A straight line y = slope * x + intercept; x grows to the right, y downwards.
struct formula_t {
    double slope = 0, intercept = 0;
};

/// A place on the menu frame, in pixels.
struct point_t {
    std::int32_t x = 0, y = 0;
    bool operator==(const point_t&) const = default;
    /// Stops at the limits of 32 bits.
    point_t operator+(const point_t& other) const {
        return {TruncateToInt32(double(x) + other.x), TruncateToInt32(double(y) + other.y)};
    }
};

/// Eight numbers: the ends of a panel's top edge and then of its bottom edge; or the bounds of its four soft borders.
struct position_t {
    std::int32_t at[8] = {};
};

/// One text item of a menu.
struct text_t {
    std::string text, face, fontstyle;
    std::int32_t size = 0;  ///< of the font, in pixels
    std::uint8_t red = 0, green = 0, blue = 0;
    point_t boxPosition, boxSize;

    bool moves = false;  ///< towards the end position, as the formula and the speed say
    point_t endPosition;
    formula_t moveFormula;
    std::int32_t moveSpeed = 0;  ///< pixels a frame

    bool hasStillTail = false;  ///< a still text may bring two more numbers
    std::int32_t stillTail[2] = {};

    std::int32_t ofSource = -1;  ///< the number of the source that it names, and is shown with; -1: none
};

/// One picture or video that a menu shows. A picture's sources are released as soon as it is read, those of a video
/// stay open; the frames are the ones read last, until they have been made a layer.
struct additionsource_t {
    bool isImage = false;
    SourceOwner source;
    FrameOwner frame;
    SourceOwner maskSource;
    FrameOwner maskFrame;
    point_t startPosition, endPosition;
    formula_t moveFormula;
    std::int32_t moveSpeed = 0;  ///< pixels a frame
    std::int32_t startTrans = 0, endTrans = 0, fadeSpeed = 0;
};

}  // namespace AVBased
