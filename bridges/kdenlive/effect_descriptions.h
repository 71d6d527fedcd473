#pragma once

#include <filesystem>

#include "host/catalogue/effect_module.h"

namespace Nifikral::Kdenlive {

/// Writes what Kdenlive shows of each effect that is a frei0r plug-in, a file each: its name and group, and its
/// parameters with their true ranges, units and key frames. Throws HostError for a file that cannot be written.
void WriteEffectDescriptions(const std::filesystem::path& folder, const EffectModule& module);

}  // namespace Nifikral::Kdenlive
