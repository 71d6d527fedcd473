#pragma once

#include "host/catalogue/effect_module.h"
#include "host/disc/disc.h"
#include "host/run/plan.h"

namespace Nifikral {

/// Makes a disc, or prints its plan. Its films and those of its menus are made in runs of their own, several at once,
/// and stay in the folder OUTPUT.work: a later run makes only what has changed, or what is missing after a kill.
/// `options.stage` names what such a run makes. Throws host errors.
void RunDisc(const DiscOptions& options, const EffectModule& module);

/// Writes the project of the disc into its work folder, and returns the runs that make its films and those of its
/// menus there, and the run that puts the disc together. A film for browsers is made in `chunks` runs. Throws host
/// errors.
CommandPlan ShareOutDisc(const DiscOptions& options, long long chunks, const EffectModule& module);

}  // namespace Nifikral
