#pragma once

#include "host/catalogue/effect_module.h"
#include "host/disc/disc_page.h"
#include "host/disc/disc_project.h"

namespace Nifikral {

/// Seconds that this machine takes to encode one second of a film for the disc, in one pass, as its first of its
/// `seconds` took. Throws what encoding them throws.
double TryFilm(const DiscProject& project, const DiscFilm& film, double seconds, int videoRate,
               const EffectModule& module);

/// The same for the film of a page of the menus.
double TryPage(const DiscProject& project, const DiscPage& page, const EffectModule& module);

}  // namespace Nifikral
