#pragma once

#include <algorithm>

#include "effects/neighbourhood/oil_brush.h"
#include "effects/neighbourhood/oil_picture.h"

namespace AVBased {

/// A brush that reaches past every edge is no different for reaching further.
inline std::uint32_t RadiusIn(const OilPicture& picture, const OilPaintingSettings& settings) {
    return std::min(settings.radius, std::max(picture.width, picture.height));
}

/// Whether counts and classes fit the bytes in which strips hold them.
inline bool OilStripsServe(const OilPicture& picture, const OilPaintingSettings& settings) {
    return RadiusIn(picture, settings) <= 7 && settings.coarseness <= 255;
}

/// Paints many pixels at once, where strips serve.
void PaintByStripsAvx2(OilPicture& picture, const OilPaintingSettings& settings);

}  // namespace AVBased
