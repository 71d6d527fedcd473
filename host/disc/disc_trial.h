#pragma once

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_project.h"

namespace Nifikral {

/// Seconds that this machine takes to encode one second of a film for the disc, in one pass, as its first seconds took.
/// Throws what encoding them throws.
double TryEncoding(const DiscProject& project, const DiscFilm& film, int videoRate, const EffectModule& module);

}  // namespace Nifikral
