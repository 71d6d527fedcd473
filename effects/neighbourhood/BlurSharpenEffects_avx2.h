#pragma once

#include "effects/neighbourhood/blur_sharpen_planes.h"

/// Blur and sharpen for AVX2.
namespace AVBased {

/// For either kernel, and for bytes and pixels.
template <class Kernel, class Pixel>
void FilterPlaneAvx2(PlaneView<Pixel> plane);

}  // namespace AVBased
