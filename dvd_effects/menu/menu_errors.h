#pragma once

#include "dvd_effects/canvas/errors.h"

namespace AVBased {

/// The name beside every error that a menu files.
inline constexpr char basedMenuName[] = "CBasedMenu";

/// A step of a menu's frame: what fails is filed, and the frame goes on without it.
template <class Work>
void Attempt(int line, Work&& work) {
    TarvoBased::AtBoundary(line, basedMenuName, std::forward<Work>(work));
}

}  // namespace AVBased
